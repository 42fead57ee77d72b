#include "ScriptManager/LxScriptManager.h"

#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"
#include "ScriptManager/LxScriptProfiler.h"

extern "C"
{
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
}

#include <cstring>

LxScriptManager* LxScriptManager::ms_pInstance = nullptr;

namespace
{
const char* const kDrawScriptEnv = "DrawScriptEnv";
const char* const kTypePrefix = "LxType:";
const char* const kTypeField = "__lxtype";

enum ValueKind
{
    VALUE_BOOL,
    VALUE_NUMBER,
    VALUE_STRING,
    VALUE_USERDATA
};

// A path is one or more non-empty names separated by single dots.
bool IsValidPath(const LxString& path)
{
    if (path.IsEmpty() || path[0] == '.' || path.GetLast() == '.')
        return false;
    return path.Find("..") < 0;
}

// Lua values as text for the getters: strings as they are, numbers the way Lua prints them, without asking Lua
// (lua_tostring converts the value in place, which allocates).
bool ValueToText(lua_State* L, int index, LxString& out)
{
    if (lua_type(L, index) == LUA_TSTRING)
    {
        size_t length = 0;
        const char* text = lua_tolstring(L, index, &length);
        out.Assign(text, static_cast<unsigned int>(length));
        return true;
    }
    if (lua_type(L, index) == LUA_TNUMBER)
    {
        out.Format(LUA_NUMBER_FMT, static_cast<double>(lua_tonumber(L, index)));
        return true;
    }
    return false;
}

// Inside a protected call: pushes the value under the dotted `path` (nil when a part is missing or no table).
void PushPathValue(lua_State* L, const char* path)
{
    lua_pushvalue(L, LUA_GLOBALSINDEX);
    for (;;)
    {
        const char* dot = std::strchr(path, '.');
        const size_t length = dot ? static_cast<size_t>(dot - path) : std::strlen(path);
        if (!lua_istable(L, -1))
        {
            lua_pop(L, 1);
            lua_pushnil(L);
            return;
        }
        lua_pushlstring(L, path, length);
        lua_gettable(L, -2);
        lua_remove(L, -2);
        if (!dot)
            return;
        path = dot + 1;
    }
}

// Inside a protected call: pushes a pointer as typed user data (see the header).
void PushTypedUserData(lua_State* L, void* pointer, const char* typeName)
{
    if (!typeName || !*typeName)
    {
        lua_pushlightuserdata(L, pointer);
        return;
    }
    void** box = static_cast<void**>(lua_newuserdata(L, sizeof(void*)));
    *box = pointer;
    lua_pushstring(L, kTypePrefix);
    lua_pushstring(L, typeName);
    lua_concat(L, 2);
    if (luaL_newmetatable(L, lua_tostring(L, -1)))
    {
        lua_pushstring(L, typeName);
        lua_setfield(L, -2, kTypeField);
    }
    lua_remove(L, -2);
    lua_setmetatable(L, -2);
}

const char* ErrorText(lua_State* L)
{
    const char* text = lua_tostring(L, -1);
    return text ? text : "(error object is not a string)";
}
} // namespace

// The C functions the manager runs in protected mode. Each is created once per state and kept in the registry, so
// that calling one allocates nothing outside protection. Each receives its request as light user data; no C++
// object with a destructor lives in their frames (a Lua error unwinds them with longjmp).
struct LxScriptManager::Protected
{
    enum
    {
        GET_PATH = 0,
        SET_PATH = 1,
        CALL = 2,
        COLLECT = 3
    };

    struct SetRequest
    {
        const char* path;
        int kind;
        bool b;
        double n;
        const char* s;
        size_t sLength;
        void* p;
        const char* type;
        bool blocked;
    };

    struct CallRequest
    {
        const char* name;
        int count;
        void* const* arguments;
        const char* types[2];
        bool notFunction;
    };

    // (path) -> value
    static int GetPath(lua_State* L)
    {
        const char* path = static_cast<const char*>(lua_touserdata(L, 1));
        PushPathValue(L, path);
        return 1;
    }

    static int SetPath(lua_State* L)
    {
        SetRequest* r = static_cast<SetRequest*>(lua_touserdata(L, 1));
        lua_pushvalue(L, LUA_GLOBALSINDEX);
        const char* path = r->path;
        for (;;)
        {
            const char* dot = std::strchr(path, '.');
            const size_t length = dot ? static_cast<size_t>(dot - path) : std::strlen(path);
            lua_pushlstring(L, path, length);
            if (!dot)
                break;
            lua_pushvalue(L, -1);
            lua_gettable(L, -3);
            if (lua_isnil(L, -1))
            {
                lua_pop(L, 1);
                lua_newtable(L);
                lua_pushvalue(L, -2);
                lua_pushvalue(L, -2);
                lua_settable(L, -5);
            }
            else if (!lua_istable(L, -1))
            {
                r->blocked = true;
                return 0;
            }
            lua_remove(L, -2);
            lua_remove(L, -2);
            path = dot + 1;
        }
        switch (r->kind)
        {
        case VALUE_BOOL:
            lua_pushboolean(L, r->b);
            break;
        case VALUE_NUMBER:
            lua_pushnumber(L, static_cast<lua_Number>(r->n));
            break;
        case VALUE_STRING:
            lua_pushlstring(L, r->s, r->sLength);
            break;
        default:
            PushTypedUserData(L, r->p, r->type);
            break;
        }
        lua_settable(L, -3);
        return 0;
    }

    // (request) -> result as a string, or nil
    static int Call(lua_State* L)
    {
        CallRequest* r = static_cast<CallRequest*>(lua_touserdata(L, 1));
        PushPathValue(L, r->name);
        if (!lua_isfunction(L, -1))
        {
            r->notFunction = true;
            return 0;
        }
        for (int i = 0; i < r->count; ++i)
            PushTypedUserData(L, r->arguments[i], r->types[i]);
        lua_call(L, r->count, 1);
        if (lua_isboolean(L, -1))
            lua_pushstring(L, lua_toboolean(L, -1) ? "true" : "false");
        else if (lua_isstring(L, -1))
            lua_pushstring(L, lua_tostring(L, -1));
        else
            lua_pushnil(L);
        return 1;
    }

    static int Collect(lua_State* L)
    {
        lua_gc(L, LUA_GCCOLLECT, 0);
        return 0;
    }

    static int Panic(lua_State* L)
    {
        LX_CRITICAL("LxScriptManager.  Unprotected error in the Lua state: %s", ErrorText(L));
        return 0;
    }

    // Pushes the helper and its request and calls it; the stack then holds `results` values (status 0) or the
    // error object.
    static int Run(LxScriptManager& m, int helper, void* request, int results)
    {
        lua_rawgeti(m.m_pState, LUA_REGISTRYINDEX, m.m_nHelperRefs[helper]);
        lua_pushlightuserdata(m.m_pState, request);
        return lua_pcall(m.m_pState, 1, results, 0);
    }
};

LxScriptManager* LxScriptManager::GetPtr()
{
    if (!ms_pInstance)
        ms_pInstance = new LxScriptManager();
    return ms_pInstance;
}

void LxScriptManager::ShutDown()
{
    delete ms_pInstance;
    ms_pInstance = nullptr;
}

LxScriptManager::LxScriptManager()
{
    CreateState();
    LxScriptVariableSource::SetGlobal(this);
}

LxScriptManager::~LxScriptManager()
{
    if (LxScriptVariableSource::GetGlobal() == this)
        LxScriptVariableSource::SetGlobal(nullptr);
    CloseState();
}

void* LxScriptManager::Allocate(void* ud, void* block, size_t oldSize, size_t newSize)
{
    LxScriptManager* self = static_cast<LxScriptManager*>(ud);
    if (newSize == 0)
    {
        if (block)
        {
            LxFree(block);
            self->m_nMemoryUsage -= oldSize;
        }
        return nullptr;
    }
    if (newSize > oldSize && self->m_nMemoryLimit && self->m_nMemoryUsage + (newSize - oldSize) > self->m_nMemoryLimit)
        return nullptr;
    void* grown = LxTryMalloc(newSize);
    if (!grown)
        return newSize <= oldSize ? block : nullptr; // Lua takes a failed shrink as fatal: keep the larger block
    if (block)
    {
        std::memcpy(grown, block, oldSize < newSize ? oldSize : newSize);
        LxFree(block);
    }
    self->m_nMemoryUsage += newSize;
    self->m_nMemoryUsage -= oldSize;
    return grown;
}

bool LxScriptManager::CreateState()
{
    m_nMemoryUsage = 0;
    m_pState = lua_newstate(&LxScriptManager::Allocate, this);
    if (!m_pState)
    {
        LX_ERROR("LxScriptManager.  Couldn't create the Lua state");
        return false;
    }
    lua_State* L = m_pState;
    lua_atpanic(L, &Protected::Panic);
    // The helpers and the draw-script table are made in protected mode as well: a memory limit set before a reload
    // may already be too small for them.
    struct Setup
    {
        static int Run(lua_State* L)
        {
            int* refs = static_cast<int*>(lua_touserdata(L, 1));
            luaL_openlibs(L);
            const lua_CFunction helpers[] = {&Protected::GetPath, &Protected::SetPath, &Protected::Call,
                                             &Protected::Collect};
            for (int i = 0; i < 4; ++i)
            {
                lua_pushcfunction(L, helpers[i]);
                refs[i] = luaL_ref(L, LUA_REGISTRYINDEX);
            }
            lua_newtable(L);
            lua_newtable(L);
            lua_pushvalue(L, LUA_GLOBALSINDEX);
            lua_setfield(L, -2, "__index");
            lua_setmetatable(L, -2);
            lua_setfield(L, LUA_GLOBALSINDEX, kDrawScriptEnv);
            return 0;
        }
    };
    if (lua_cpcall(L, &Setup::Run, m_nHelperRefs) != 0)
    {
        LX_ERROR("LxScriptManager.  Couldn't set up the Lua state:\n%s", ErrorText(L));
        lua_close(L);
        m_pState = nullptr;
        return false;
    }
    if (m_bGCStopped)
        lua_gc(L, LUA_GCSTOP, 0);
    LxScriptProfiler::OnStateChanged(L);
    return true;
}

void LxScriptManager::CloseState()
{
    if (!m_pState)
        return;
    LxScriptProfiler::OnStateChanged(nullptr);
    lua_close(m_pState);
    m_pState = nullptr;
}

void LxScriptManager::CallDone()
{
    if (m_nCallDepth == 0)
        LxScriptProfiler::OnOutermostCallDone();
}

// --- scripts ------------------------------------------------------------------------------------------------------

void LxScriptManager::AddIncludeDirectory(const LxString& directory)
{
    m_includePath.AddToSearchPath(directory);
}

bool LxScriptManager::LoadScript(const LxString& fileName)
{
    if (!m_pState)
    {
        LX_ERROR("LxScriptManager::LoadScript.  There is no Lua state");
        return false;
    }
    LxFile* file = nullptr;
    LxString fullPath;
    if (m_includePath.FileExists(fileName, &fullPath))
        file = m_includePath.OpenFile(fileName, "rb");
    if (!file || !file->IsOpen())
    {
        delete file;
        fullPath = fileName;
        file = LxFile::Open(fileName, "rb");
    }
    if (!file || !file->IsOpen())
    {
        delete file;
        LX_ERROR("LxScriptManager::LoadScript.  Couldn't find script file: '%s'", fileName.c_str());
        return false;
    }
    unsigned int size = 0;
    void* text = LxFile::ReadFileToBuffer(*file, &size);
    delete file;
    if (!text)
    {
        LX_ERROR("LxScriptManager::LoadScript.  Couldn't read script file: '%s'", fullPath.c_str());
        return false;
    }
    bool known = false;
    for (const LxString& s : m_scripts)
        known = known || s == fileName;
    if (!known)
        m_scripts.Add(fileName);
    // "@path" makes Lua name the file in its messages.
    const LxString chunkName = "@" + fullPath;
    const bool ok = RunChunk(static_cast<const char*>(text), size, chunkName.c_str(), nullptr);
    LxFree(text);
    return ok;
}

bool LxScriptManager::ReloadAllScripts()
{
    CloseState();
    if (!CreateState())
        return false;
    bool ok = true;
    for (LibraryOpener opener : m_libraries)
    {
        if (lua_cpcall(m_pState, opener, nullptr) != 0)
        {
            LX_ERROR("LxScriptManager::RegisterLibrary.  %s", ErrorText(m_pState));
            lua_pop(m_pState, 1);
            ok = false;
        }
    }
    const LxArray<LxString> scripts(m_scripts);
    for (const LxString& script : scripts)
        ok = LoadScript(script) && ok;
    return ok;
}

// --- execution ----------------------------------------------------------------------------------------------------

bool LxScriptManager::RunChunk(const char* text, size_t length, const char* chunkName, const LxString* environment)
{
    if (!m_pState)
    {
        LX_ERROR("LxScriptManager.  There is no Lua state to run code in");
        return false;
    }
    lua_State* L = m_pState;
    const int top = lua_gettop(L);
    if (environment)
    {
        if (!PushVariable(*environment))
            return false;
        if (!lua_istable(L, -1))
        {
            LX_ERROR("Trying to use %s as a function environment, but it is not a table", environment->c_str());
            lua_settop(L, top);
            return false;
        }
    }
    const int loadStatus = luaL_loadbuffer(L, text, length, chunkName);
    if (loadStatus != 0)
    {
        if (loadStatus == LUA_ERRSYNTAX)
            LX_ERROR("Syntax error while executing command:\n%s", ErrorText(L));
        else if (loadStatus == LUA_ERRMEM)
            LX_ERROR("Out of memory while executing command");
        else
            LX_ERROR("Error while loading command:\n%s", ErrorText(L));
        lua_settop(L, top);
        return false;
    }
    if (environment)
    {
        lua_insert(L, -2);
        if (!lua_setfenv(L, -2))
        {
            LX_ERROR("Failed call to lua_setfenv.");
            LX_ERROR("Error using %s as a function environment", environment->c_str());
            lua_settop(L, top);
            return false;
        }
    }
    ++m_nCallDepth;
    const int callStatus = lua_pcall(L, 0, 0, 0);
    --m_nCallDepth;
    if (callStatus == LUA_ERRRUN)
        LX_ERROR("Runtime error while executing command:\n%s", ErrorText(L));
    else if (callStatus == LUA_ERRMEM)
        LX_ERROR("Out of memory while calling command!");
    else if (callStatus == LUA_ERRERR)
        LX_ERROR("Error while running the error handler!");
    lua_settop(L, top);
    CallDone();
    return callStatus == 0;
}

bool LxScriptManager::ExecuteCode(const LxString& code, const LxString* environment)
{
    return RunChunk(code.c_str(), code.GetLength(), "ExecuteCode", environment);
}

bool LxScriptManager::ExecuteCommand(const LxString& command)
{
    const LxString environment(kDrawScriptEnv);
    return RunChunk(command.c_str(), command.GetLength(), "ExecuteDrawScript", &environment);
}

bool LxScriptManager::CallWithArguments(const LxString& name, int count, void* const* arguments,
                                        const LxString* const* types)
{
    if (!m_pState)
    {
        LX_ERROR("LxScriptManager::CallFunction.  There is no Lua state");
        return false;
    }
    if (!IsValidPath(name))
    {
        LX_ERROR("LxScriptManager::CallFunction.  '%s' is not a valid function name", name.c_str());
        return false;
    }
    lua_State* L = m_pState;
    const int top = lua_gettop(L);
    Protected::CallRequest request = {name.c_str(), count, arguments, {nullptr, nullptr}, false};
    for (int i = 0; i < count; ++i)
        request.types[i] = types[i]->c_str();
    if (m_nCallDepth == 0)
        LxScriptProfiler::OnHostCall(request.name);
    ++m_nCallDepth;
    const int status = Protected::Run(*this, Protected::CALL, &request, 1);
    --m_nCallDepth;
    bool ok = status == 0 && !request.notFunction;
    if (status == LUA_ERRRUN)
        LX_ERROR("Runtime error while calling function \"%s\"\n%s\n", name.c_str(), ErrorText(L));
    else if (status == LUA_ERRMEM)
        LX_ERROR("Out of memory while calling function!");
    else if (status == LUA_ERRERR)
        LX_ERROR("Error while running the error handler!");
    else if (request.notFunction)
        LX_ERROR("LxScriptManager::CallFunction.  '%s' is not a function", name.c_str());
    else if (lua_type(L, -1) == LUA_TSTRING)
    {
        size_t length = 0;
        const char* text = lua_tolstring(L, -1, &length);
        LxMutex::ScopedLock lock(m_queueLock);
        m_returnSlot.Assign(text, static_cast<unsigned int>(length));
    }
    lua_settop(L, top);
    CallDone();
    return ok;
}

bool LxScriptManager::CallFunction(const LxString& name, void* argument, const LxString& argumentType)
{
    void* const arguments[1] = {argument};
    const LxString* const types[1] = {&argumentType};
    return CallWithArguments(name, 1, arguments, types);
}

bool LxScriptManager::CallFunction(const LxString& name, void* argument1, void* argument2, const LxString& type1,
                                   const LxString& type2)
{
    void* const arguments[2] = {argument1, argument2};
    const LxString* const types[2] = {&type1, &type2};
    return CallWithArguments(name, 2, arguments, types);
}

bool LxScriptManager::GetReturn(LxString& out)
{
    LxMutex::ScopedLock lock(m_queueLock);
    if (m_returnSlot.IsEmpty())
        return false;
    out = m_returnSlot;
    m_returnSlot.Clear();
    return true;
}

// --- variables ----------------------------------------------------------------------------------------------------

bool LxScriptManager::PushVariable(const LxString& path)
{
    lua_State* L = m_pState;
    if (!L)
        return false;
    if (!IsValidPath(path))
    {
        lua_pushnil(L);
        return true;
    }
    if (Protected::Run(*this, Protected::GET_PATH, const_cast<char*>(path.c_str()), 1) != 0)
    {
        LX_ERROR("LxScriptManager.  Error while reading '%s':\n%s", path.c_str(), ErrorText(L));
        lua_pop(L, 1);
        return false;
    }
    return true;
}

bool LxScriptManager::GetBoolVariable(const LxString& name, bool defaultValue, bool* found)
{
    bool result = defaultValue, exists = false;
    if (PushVariable(name))
    {
        if (lua_isboolean(m_pState, -1))
        {
            result = lua_toboolean(m_pState, -1) != 0;
            exists = true;
        }
        lua_pop(m_pState, 1);
    }
    if (found)
        *found = exists;
    return result;
}

float LxScriptManager::GetFloatVariable(const LxString& name, float defaultValue, bool* found)
{
    double value = 0.0;
    const bool exists = GetNumber(name, value);
    if (found)
        *found = exists;
    return exists ? static_cast<float>(value) : defaultValue;
}

bool LxScriptManager::GetNumber(const LxString& name, double& value)
{
    if (!PushVariable(name))
        return false;
    const bool exists = lua_type(m_pState, -1) == LUA_TNUMBER;
    if (exists)
        value = static_cast<double>(lua_tonumber(m_pState, -1));
    lua_pop(m_pState, 1);
    return exists;
}

LxString LxScriptManager::GetStringVariable(const LxString& name, const LxString& defaultValue, bool* found)
{
    LxString result;
    bool exists = false;
    if (PushVariable(name))
    {
        exists = ValueToText(m_pState, -1, result);
        lua_pop(m_pState, 1);
    }
    if (found)
        *found = exists;
    return exists ? result : defaultValue;
}

void* LxScriptManager::GetUserDataVariable(const LxString& name, LxString& typeName)
{
    if (!PushVariable(name))
        return nullptr;
    lua_State* L = m_pState;
    void* result = nullptr;
    if (lua_islightuserdata(L, -1))
    {
        result = lua_touserdata(L, -1);
        typeName.Clear();
    }
    else if (lua_type(L, -1) == LUA_TUSERDATA && lua_objlen(L, -1) == sizeof(void*) && lua_getmetatable(L, -1))
    {
        // Only boxes made by the manager (or bindings that follow its layout) carry the type field; the raw read
        // cannot run Lua code.
        lua_pushstring(L, kTypeField);
        lua_rawget(L, -2);
        if (lua_type(L, -1) == LUA_TSTRING)
        {
            result = *static_cast<void**>(lua_touserdata(L, -3));
            typeName = lua_tostring(L, -1);
        }
        lua_pop(L, 2);
    }
    lua_pop(L, 1);
    return result;
}

bool LxScriptManager::SetValue(const LxString& name, int kind, bool b, double n, const LxString* s, void* p)
{
    if (!m_pState)
    {
        LX_ERROR("LxScriptManager::SetVariable.  There is no Lua state");
        return false;
    }
    if (!IsValidPath(name))
    {
        LX_ERROR("LxScriptManager::SetVariable.  '%s' is not a valid variable name", name.c_str());
        return false;
    }
    Protected::SetRequest request = {
        name.c_str(), kind, b, n, s ? s->c_str() : nullptr, s ? s->GetLength() : 0u, p, s ? s->c_str() : nullptr,
        false};
    lua_State* L = m_pState;
    const int top = lua_gettop(L);
    const int status = Protected::Run(*this, Protected::SET_PATH, &request, 0);
    if (status == LUA_ERRMEM)
        LX_ERROR("LxScriptManager::SetVariable.  Out of memory while setting '%s'", name.c_str());
    else if (status != 0)
        LX_ERROR("LxScriptManager::SetVariable.  Error while setting '%s':\n%s", name.c_str(), ErrorText(L));
    else if (request.blocked)
        LX_ERROR("LxScriptManager::SetVariable.  Cannot set '%s': a part of its path is not a table", name.c_str());
    lua_settop(L, top);
    return status == 0 && !request.blocked;
}

bool LxScriptManager::SetBoolVariable(const LxString& name, bool value)
{
    return SetValue(name, VALUE_BOOL, value, 0.0, nullptr, nullptr);
}

bool LxScriptManager::SetFloatVariable(const LxString& name, float value)
{
    return SetValue(name, VALUE_NUMBER, false, value, nullptr, nullptr);
}

bool LxScriptManager::SetVariable(const LxString& name, const LxString& value)
{
    return SetValue(name, VALUE_STRING, false, 0.0, &value, nullptr);
}

bool LxScriptManager::SetVariable(const LxString& name, void* userData, const LxString& typeName)
{
    return SetValue(name, VALUE_USERDATA, false, 0.0, &typeName, userData);
}

// --- state --------------------------------------------------------------------------------------------------------

bool LxScriptManager::RegisterLibrary(LibraryOpener opener)
{
    if (!opener || !m_pState)
    {
        LX_ERROR("LxScriptManager::RegisterLibrary.  %s", opener ? "There is no Lua state" : "No opener given");
        return false;
    }
    const int top = lua_gettop(m_pState);
    const int status = lua_cpcall(m_pState, opener, nullptr);
    if (status != 0)
        LX_ERROR("LxScriptManager::RegisterLibrary.  %s", ErrorText(m_pState));
    lua_settop(m_pState, top);
    if (status != 0)
        return false;
    bool known = false;
    for (LibraryOpener o : m_libraries)
        known = known || o == opener;
    if (!known)
        m_libraries.Add(opener);
    return true;
}

bool LxScriptManager::UnregisterLibrary(LibraryOpener opener)
{
    for (unsigned int i = 0; i < m_libraries.GetCount(); ++i)
    {
        if (m_libraries[i] == opener)
        {
            m_libraries.RemoveAt(i);
            return true;
        }
    }
    return false;
}

void LxScriptManager::CollectGarbage()
{
    if (!m_pState)
        return;
    // A full collection runs __gc metamethods, which may fail.
    const int top = lua_gettop(m_pState);
    if (Protected::Run(*this, Protected::COLLECT, nullptr, 0) != 0)
        LX_ERROR("LxScriptManager::CollectGarbage.  %s", ErrorText(m_pState));
    lua_settop(m_pState, top);
}

void LxScriptManager::DisableGarbageCollection()
{
    m_bGCStopped = true;
    if (m_pState)
        lua_gc(m_pState, LUA_GCSTOP, 0);
}

void LxScriptManager::EnableGarbageCollection()
{
    m_bGCStopped = false;
    if (m_pState)
        lua_gc(m_pState, LUA_GCRESTART, 0);
}

void LxScriptManager::SetMemoryLimit(size_t bytes)
{
    m_nMemoryLimit = bytes;
}

// --- message queue ------------------------------------------------------------------------------------------------

bool LxScriptManager::AddMessage(LxString& message)
{
    message.TrimLeft();
    if (message.IsEmpty())
        return false;
    LxMutex::ScopedLock lock(m_queueLock);
    m_queue.Add(message);
    return true;
}

void LxScriptManager::ProcessMessages()
{
    for (unsigned int done = 0; done < m_nMsgPerFrame; ++done)
    {
        LxString message;
        {
            LxMutex::ScopedLock lock(m_queueLock);
            if (m_queue.IsEmpty())
                return;
            // A query waits at the head until the previous answer has been taken.
            if (m_queue.GetFirst()[0] == '#' && !m_returnSlot.IsEmpty())
                return;
            message = std::move(m_queue.GetFirst());
            m_queue.RemoveFirst();
        }
        if (message[0] == '#')
            AnswerQuery(message);
        else
            ExecuteCode(message, nullptr);
    }
}

void LxScriptManager::AnswerQuery(const LxString& message)
{
    LxArray<LxString> words;
    message.Split(" ", words);
    LxString answer("#ERROR");
    if (words.GetCount() >= 2)
    {
        const LxString variable = LxString(kDrawScriptEnv) + "." + words[1];
        bool found = false;
        if (words[0] == "#sgetstring")
        {
            answer = GetStringVariable(variable, "", &found);
            if (!found)
                answer = "#UNKNOWN";
        }
        else if (words[0] == "#sgetbool")
        {
            const bool value = GetBoolVariable(variable, false, &found);
            answer = found ? (value ? "true" : "false") : "#UNKNOWN";
        }
        else if (words[0] == "#sgetnum")
        {
            const float value = GetFloatVariable(variable, 0.0f, &found);
            if (found)
                answer.Format("%g", static_cast<double>(value));
            else
                answer = "#UNKNOWN";
        }
    }
    LxMutex::ScopedLock lock(m_queueLock);
    m_returnSlot = answer;
}

void LxScriptManager::SetNumMsgPerFrame(unsigned int count)
{
    m_nMsgPerFrame = count;
}

bool LxScriptManager::ClearQueue()
{
    LxMutex::ScopedLock lock(m_queueLock);
    m_queue.Clear();
    return true;
}

unsigned int LxScriptManager::GetQueuedMessageCount() const
{
    LxMutex::ScopedLock lock(m_queueLock);
    return m_queue.GetCount();
}
