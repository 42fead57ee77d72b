#include "ScriptManager/LxScriptProfiler.h"

#include "Common/LxLogManager.h"
#include "ScriptManager/LxScriptManager.h"

extern "C"
{
#include <lua.h>
}

#include <chrono>

LxScriptProfiler* LxScriptProfiler::ms_pInstance = nullptr;

namespace
{
double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
} // namespace

LxScriptProfiler* LxScriptProfiler::GetPtr()
{
    if (!ms_pInstance)
        ms_pInstance = new LxScriptProfiler();
    return ms_pInstance;
}

void LxScriptProfiler::ShutDown()
{
    delete ms_pInstance;
    ms_pInstance = nullptr;
}

LxScriptProfiler::LxScriptProfiler() : m_pRoot(new LxCallGraphNode("<root>")) {}

LxScriptProfiler::~LxScriptProfiler()
{
    Attach(nullptr);
    delete m_pRoot;
}

void LxScriptProfiler::Attach(lua_State* state)
{
    if (m_pState)
        lua_sethook(m_pState, nullptr, 0, 0);
    m_pState = state;
    if (m_pState)
        lua_sethook(m_pState, &LxScriptProfiler::Hook, LUA_MASKCALL | LUA_MASKRET, 0);
}

void LxScriptProfiler::StartProfiling()
{
    if (m_bProfiling)
    {
        LX_ERROR("LxScriptProfiler::StartProfiling() called twice.");
        return;
    }
    delete m_pRoot;
    m_pRoot = new LxCallGraphNode("<root>");
    m_frames.Clear();
    m_bProfiling = true;
    Attach(LxScriptManager::GetRef().GetLuaState());
    LX_MESSAGE("Profiling started");
}

void LxScriptProfiler::EndProfiling()
{
    if (!m_bProfiling)
    {
        LX_ERROR("LxScriptManager::EndProfiling() called when not profiling.");
        return;
    }
    LeaveAll();
    Attach(nullptr);
    m_bProfiling = false;
    LX_MESSAGE("Profiling stopped");
}

void LxScriptProfiler::OnStateChanged(lua_State* state)
{
    if (ms_pInstance && ms_pInstance->m_bProfiling)
    {
        ms_pInstance->LeaveAll();
        // The old state is being closed (its hook goes with it) or already gone.
        ms_pInstance->m_pState = nullptr;
        ms_pInstance->Attach(state);
    }
}

void LxScriptProfiler::OnHostCall(const char* functionName)
{
    if (ms_pInstance)
        ms_pInstance->m_pCallName = functionName;
}

void LxScriptProfiler::OnOutermostCallDone()
{
    if (ms_pInstance)
        ms_pInstance->m_pCallName = nullptr;
    if (ms_pInstance && ms_pInstance->m_bProfiling)
        ms_pInstance->LeaveAll();
}

void LxScriptProfiler::Enter(const LxString& name)
{
    LxCallGraphNode* parent = m_frames.IsEmpty() ? m_pRoot : m_frames.GetLast().node;
    LxCallGraphNode* node = parent->GetOrAddChild(name);
    node->AddCall();
    m_frames.Add(Frame{node, Now(), false});
}

void LxScriptProfiler::EnterTransparent()
{
    m_frames.Add(Frame{m_frames.IsEmpty() ? m_pRoot : m_frames.GetLast().node, 0.0, true});
}

void LxScriptProfiler::Leave()
{
    // A return without a recorded call: profiling began inside that function.
    if (m_frames.IsEmpty())
        return;
    const Frame frame = m_frames.GetLast();
    m_frames.RemoveLast();
    if (!frame.transparent)
        frame.node->AddTime(Now() - frame.start);
}

void LxScriptProfiler::LeaveAll()
{
    while (!m_frames.IsEmpty())
        Leave();
}

void LxScriptProfiler::Hook(lua_State* state, lua_Debug* ar)
{
    LxScriptProfiler* self = ms_pInstance;
    if (!self || !self->m_bProfiling)
        return;
    if (ar->event != LUA_HOOKCALL)
    {
        // LUA_HOOKRET, and LUA_HOOKTAILRET once per frame a tail call replaced.
        self->Leave();
        return;
    }
    if (!lua_getinfo(state, "nS", ar))
    {
        self->Enter("?");
        return;
    }
    lua_Debug caller;
    if (ar->what && ar->what[0] == 'C' && !ar->name && !lua_getstack(state, 1, &caller))
    {
        // An unnamed C function called straight from the host is the script manager's own entry point (it calls
        // Lua functions and reads variables through such helpers): see through it.
        self->EnterTransparent();
        return;
    }
    LxString name;
    if (ar->what && ar->what[0] == 'm')
        name.Format("main chunk (%s)", ar->short_src);
    else if (ar->what && ar->what[0] == 'C')
        name.Format("%s [C]", ar->name ? ar->name : "?");
    else
    {
        // A function the host called by name has no name in Lua's call information: the manager passes it.
        const char* known = ar->name;
        if (!known && !self->m_frames.IsEmpty() && self->m_frames.GetLast().transparent)
            known = self->m_pCallName;
        name.Format("%s (%s:%d)", known ? known : "?", ar->short_src, ar->linedefined);
    }
    self->Enter(name);
}

LxString LxScriptProfiler::GetReport() const
{
    // The root has no calls or time of its own: its children are the outermost functions.
    LxString report("     calls     total ms      self ms  function\n");
    m_pRoot->AppendChildrenReport(report, 0);
    return report;
}
