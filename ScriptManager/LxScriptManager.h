// LxScriptManager: the process-wide owner of the one Lua 5.1 state. It runs Lua code and script files, calls Lua
// functions with user-data arguments, reads and writes Lua variables by dotted table path ("Settings.fog.density"),
// and executes textual messages that any thread may queue, a few per frame.
//
// The state: created with the standard libraries and a table "DrawScriptEnv" whose metatable reads through to the
// globals, so draw scripts see every global while their own assignments land in DrawScriptEnv. ExecuteCommand runs
// in that table; the effect system reads "DrawScriptEnv.<name>" through LxScriptVariableSource (the manager is the
// registered source while it lives). All memory comes from the tracked allocator; SetMemoryLimit caps the state,
// and a script that would pass the cap fails with Lua's out-of-memory error instead of growing.
//
// Typed user data: a pointer passed with a type name becomes a full userdata holding the pointer, whose metatable
// is registry["LxType:" .. typeName] with the field __lxtype = typeName (bindings that create such values must use
// the same layout). With an empty type name the pointer travels as light userdata.
//
// Errors: every Lua failure is logged with Lua's own message (errors, type 3) and the call returns false, null or
// the caller's default; the Lua stack is back at its previous height after every call, success or failure.
//
// Queries: a queued message starting with '#' ("#sgetstring x", "#sgetbool x", "#sgetnum x") reads
// DrawScriptEnv.x and writes the answer, "#UNKNOWN" or "#ERROR" into the return slot that GetReturn empties. A
// query is answered only while the slot is empty; otherwise it stays at the head of the queue and the frame's
// processing stops there, so answers keep their order (an empty string is no answer: "#sgetstring" of one stays
// unanswered in the client's eyes). CallFunction also leaves a non-nil result in that slot:
// the main thread should take it with GetReturn before queries are expected to flow again.
//
// Threading: AddMessage, ClearQueue, GetReturn and GetQueuedMessageCount may be called from any thread; everything
// else, ProcessMessages included, belongs to the main thread, which owns the Lua state.
// Lifetime: GetPtr/GetRef create the singleton; ShutDown closes the state and destroys it. Library openers given
// to RegisterLibrary are run again on the new state of ReloadAllScripts, so plug-in functions survive a reload;
// a lua_State* kept from before a reload is stale.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxList.h"
#include "Common/LxMutex.h"
#include "Common/LxSearchPath.h"
#include "Common/LxString.h"
#include "EffectManager/LxScriptVariableSource.h"

#include <cstddef>

struct lua_State;

class LX_API LxScriptManager : public LxScriptVariableSource
{
public:
    typedef int (*LibraryOpener)(lua_State*);

    static LxScriptManager* GetPtr();
    static LxScriptManager& GetRef() { return *GetPtr(); }
    static void ShutDown();

    // --- scripts ----------------------------------------------------------------------------------------------
    // Folders (or zip files) searched, in the order added, before the name is tried as given.
    void AddIncludeDirectory(const LxString& directory);
    // Runs the file in the global environment; a file that ran (even with an error) is remembered for
    // ReloadAllScripts. Missing: "LxScriptManager::LoadScript.  Couldn't find script file: '%s'".
    bool LoadScript(const LxString& fileName);
    // Closes the state, opens a new one, runs the registered library openers and every remembered script again.
    // False if any of them failed (all are still attempted).
    bool ReloadAllScripts();

    // --- execution --------------------------------------------------------------------------------------------
    // Runs a chunk (named "ExecuteCode"), with the table found under `environment` (a dotted path) as its function
    // environment when one is given.
    bool ExecuteCode(const LxString& code, const LxString* environment = nullptr);
    // Runs a chunk named "ExecuteDrawScript" in the DrawScriptEnv table.
    bool ExecuteCommand(const LxString& command);
    // Calls the function found under `name` with one or two user-data arguments (see typed user data above).
    // A string, number or boolean result is left as text in the return slot.
    bool CallFunction(const LxString& name, void* argument, const LxString& argumentType);
    bool CallFunction(const LxString& name, void* argument1, void* argument2, const LxString& type1,
                      const LxString& type2);
    // Takes the text in the return slot; false (and `out` untouched) when the slot is empty.
    bool GetReturn(LxString& out);

    // --- variables (dotted table paths) ------------------------------------------------------------------------
    // Each getter writes whether the variable exists with the right type to *found (when not null) and returns
    // the default otherwise. Booleans must be booleans, numbers numbers; strings accept numbers too.
    bool GetBoolVariable(const LxString& name, bool defaultValue, bool* found = nullptr);
    float GetFloatVariable(const LxString& name, float defaultValue, bool* found = nullptr);
    LxString GetStringVariable(const LxString& name, const LxString& defaultValue, bool* found = nullptr);
    // The pointer of a user-data variable, its type name in `typeName` ("" for light user data); null and
    // `typeName` untouched when the variable is no user data.
    void* GetUserDataVariable(const LxString& name, LxString& typeName);
    // Setters create missing tables along the path; a part of the path that exists but is no table fails.
    bool SetBoolVariable(const LxString& name, bool value);
    bool SetFloatVariable(const LxString& name, float value);
    bool SetVariable(const LxString& name, const LxString& value);
    bool SetVariable(const LxString& name, void* userData, const LxString& typeName);
    // LxScriptVariableSource: the number under `name`, for effect parameters bound to script variables.
    bool GetNumber(const LxString& name, double& value) override;

    // --- state ------------------------------------------------------------------------------------------------
    // Runs `opener` on the state in protected mode and remembers it for reloads.
    bool RegisterLibrary(LibraryOpener opener);
    // Forgets `opener` for later reloads (what it did to the current state stays); a plug-in calls this before
    // its module goes away. False when it was not registered.
    bool UnregisterLibrary(LibraryOpener opener);
    void CollectGarbage();
    void DisableGarbageCollection();
    void EnableGarbageCollection();
    // Bytes the state may hold (0: no limit, the default) and the bytes it holds now.
    void SetMemoryLimit(size_t bytes);
    size_t GetMemoryUsage() const { return m_nMemoryUsage; }
    // The state, for plug-ins and bindings; valid until ReloadAllScripts or ShutDown.
    lua_State* GetLuaState() const { return m_pState; }

    // --- message queue ----------------------------------------------------------------------------------------
    // Strips leading white space from `message` in place, then queues a copy; false for an empty message.
    bool AddMessage(LxString& message);
    // Executes up to the per-frame count of queued messages (none when the count is 0).
    void ProcessMessages();
    void SetNumMsgPerFrame(unsigned int count);
    unsigned int GetNumMsgPerFrame() const { return m_nMsgPerFrame; }
    bool ClearQueue();
    unsigned int GetQueuedMessageCount() const;

    static const unsigned int DEFAULT_MSG_PER_FRAME = 10;

private:
    LxScriptManager();
    ~LxScriptManager() override;
    LxScriptManager(const LxScriptManager&) = delete;
    LxScriptManager& operator=(const LxScriptManager&) = delete;

    struct Protected;
    friend struct Protected;

    bool CreateState();
    void CloseState();
    // Pushes the value under `path` (nil when absent); false, with nothing pushed, after a logged Lua error.
    bool PushVariable(const LxString& path);
    bool SetValue(const LxString& name, int kind, bool b, double n, const LxString* s, void* p);
    bool CallWithArguments(const LxString& name, int count, void* const* arguments, const LxString* const* types);
    bool RunChunk(const char* text, size_t length, const char* chunkName, const LxString* environment);
    void AnswerQuery(const LxString& message);
    void CallDone();
    static void* Allocate(void* ud, void* block, size_t oldSize, size_t newSize);

    lua_State* m_pState = nullptr;
    int m_nHelperRefs[4] = {0, 0, 0, 0};
    unsigned int m_nCallDepth = 0;
    size_t m_nMemoryUsage = 0;
    size_t m_nMemoryLimit = 0;
    bool m_bGCStopped = false;

    LxSearchPath m_includePath;
    LxArray<LxString> m_scripts;
    LxArray<LibraryOpener> m_libraries;

    mutable LxMutex m_queueLock;
    LxList<LxString> m_queue;
    LxString m_returnSlot;
    unsigned int m_nMsgPerFrame = DEFAULT_MSG_PER_FRAME;

    static LxScriptManager* ms_pInstance;
};
