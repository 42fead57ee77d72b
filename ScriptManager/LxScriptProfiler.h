// LxScriptProfiler: records which Lua functions the script manager's state calls, from where, how often and for how
// long, as a call graph of LxCallGraphNodes under a root named "<root>". It installs a call/return debug hook on the
// state while profiling (lua_sethook) and names functions with lua_getinfo: "name (source:line)", "main chunk
// (source)" or "? (source:line)" for anonymous functions.
//
// StartProfiling clears the previous graph; the graph stays readable after EndProfiling. A Lua error unwinds frames
// without return events, so the script manager tells the profiler when an outermost call has ended and the
// profiler closes whatever frames are still open. The hook follows the state across ReloadAllScripts and stops with
// the script manager's ShutDown.
//
// Threading: main thread only (it runs inside the Lua state). Singleton: GetPtr/GetRef create it, ShutDown ends
// profiling and destroys it.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "ScriptManager/LxCallGraphNode.h"

struct lua_State;
struct lua_Debug;

class LX_API LxScriptProfiler
{
public:
    static LxScriptProfiler* GetPtr();
    static LxScriptProfiler& GetRef() { return *GetPtr(); }
    static void ShutDown();

    // A second start logs "LxScriptProfiler::StartProfiling() called twice." and keeps profiling.
    void StartProfiling();
    // Without a start logs "LxScriptManager::EndProfiling() called when not profiling.".
    void EndProfiling();
    bool IsProfiling() const { return m_bProfiling; }

    const LxCallGraphNode& GetRoot() const { return *m_pRoot; }
    // A table of the graph with a header line; empty graph: the header alone.
    LxString GetReport() const;

    // For the script manager: the state it now uses (null when closing), and the end of an outermost call.
    static void OnStateChanged(lua_State* state);
    static void OnOutermostCallDone();
    // The name under which the host is about to call a function (kept until the outermost call is done).
    static void OnHostCall(const char* functionName);

private:
    LxScriptProfiler();
    ~LxScriptProfiler();
    LxScriptProfiler(const LxScriptProfiler&) = delete;
    LxScriptProfiler& operator=(const LxScriptProfiler&) = delete;

    static void Hook(lua_State* state, lua_Debug* ar);
    void Enter(const LxString& name);
    void EnterTransparent();
    void Leave();
    void LeaveAll();
    void Attach(lua_State* state);

    struct Frame
    {
        LxCallGraphNode* node;
        double start;
        bool transparent;
    };

    LxCallGraphNode* m_pRoot;
    LxArray<Frame> m_frames;
    lua_State* m_pState = nullptr;
    const char* m_pCallName = nullptr;
    bool m_bProfiling = false;

    static LxScriptProfiler* ms_pInstance;
};
