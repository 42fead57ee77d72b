// LxEffectManager: the process-wide owner of loaded effects.
//
// Loads effect files by name through its search paths, keeps one effect per file name and hands out counted
// references to it that all share one record: when the file (or a file it includes) changes on disk,
// ReloadEffects rebuilds the effect, makes that shared record point at the new effect, so every holder sees it, and
// tells the reload listeners. A failed rebuild keeps the old effect. When the last reference outside the manager
// goes, the record tells the manager (NotifyLastReference) and the effect is unloaded.
//
// It also owns the global defines (parser defines and compiler macros), the option overrides applied to every
// effect's "Options", the default effect, the override techniques, the shader cache (only after
// SetShaderCachePath), and the registries of factories that give "AppUpdate" parameters their update handlers and
// "BindRT" texture slots, "BindUAV" UAV slots and "BindStream" streams their binders. Factories and listeners are
// not owned; whoever registers one removes it before it goes away.
//
// Platform seam: CreateEffectBuilder is virtual; the platform manager returns its own builder, which compiles
// through CompileShader with its LxShaderCompiler. Install such a manager with Init before the first GetPtr.
//
// The manager is the effect system's draw context (LxEffectDrawContext): it answers the active override technique
// and records the pass an effect is drawing, which the "PassNumber" and resource-dimension updates read.
//
// Singleton: GetPtr/GetRef create the manager on first use (the generic one unless a create function is set), ShutDown
// deletes it (effects still referenced elsewhere stay alive and are no longer tracked). One thread uses the manager;
// failures are logged and answered with false or null.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxHashMap.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxSearchPath.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectDrawContext.h"
#include "EffectManager/LxShaderCompiler.h"
#include "EffectManager/LxUpdateHandler.h"

class LxEffectReloadListener;
class LxShaderCache;
class LxStreamBinderFactory;
class LxTextureSlotBinderFactory;
class LxUAVSlotBinderFactory;
class LxUpdateHandlerFactory;

class LX_API LxEffectManager : public LxUpdateHandlerProvider,
                               public LxEffectDrawContext,
                               private LxCountedPtrObserver<LxEffect>
{
public:
    enum LoadFlags : unsigned int
    {
        // The effect being loaded is the default effect: no default effect needs to be set yet, and no override
        // techniques are applied to it.
        LOAD_DEFAULT_EFFECT = 0x1,
    };

    // One file an effect depends on and its last-write time (100-ns ticks since 1601; -1 when it could not be
    // read, so that a file appearing later counts as a change).
    struct Dependency
    {
        LxString fileName;
        long long timeStamp;
    };

    // --- singleton ----------------------------------------------------------------------------------------------
    static LxEffectManager* GetPtr();
    static LxEffectManager& GetRef() { return *GetPtr(); }
    // Installs `manager` (a platform subclass, owned from now on) as the singleton. False, deleting `manager`, when
    // a manager exists already.
    static bool Init(LxEffectManager* manager);
    static void ShutDown();
    // What GetPtr creates on first use: null (the default) makes the generic manager; the platform registers its
    // own (LxD3D12EffectManager::RegisterCreateFunction). Takes effect at the next creation.
    typedef LxEffectManager* (*CreateFunction)();
    static void SetCreateFunction(CreateFunction function) { ms_pCreateFunction = function; }
    // The singleton if one exists, without creating it.
    static LxEffectManager* GetExistingPtr() { return ms_pInstance; }

    // --- search paths -------------------------------------------------------------------------------------------
    // Folders or zip archives, searched in the order added, for effect files and their includes.
    void AddSearchPath(const LxString& path);
    void ClearSearchPaths();
    const LxSearchPath& GetSearchPath() const { return m_searchPath; }

    // --- loading ------------------------------------------------------------------------------------------------
    // The effect of `fileName` (loaded once; later calls return the same shared reference), or null after
    // reporting why. `flags`: LoadFlags.
    LxCountedPtr<LxEffect> LoadEffect(const LxString& fileName, unsigned int flags = 0);
    // The effect must hold "DEFAULT_SAMPLER", "DEFAULT_TECHNIQUE" and "DEFAULT_PASS" (a pass of that technique);
    // false (the previous default stays) otherwise. Null clears the default.
    bool SetDefaultEffect(const LxCountedPtr<LxEffect>& effect);
    const LxCountedPtr<LxEffect>& GetDefaultEffect() const { return m_defaultEffect; }
    LxSampler* GetDefaultSampler() const { return m_pDefaultSampler; }
    LxEffectTechnique* GetDefaultTechnique() const { return m_pDefaultTechnique; }
    LxEffectPass* GetDefaultPass() const { return m_pDefaultPass; }

    // Rebuilds the effects whose file or included files changed since they were built (all of them when `force`).
    void ReloadEffects(bool force);
    // Logs "Loaded effect files:\n" and the names, one a line, in load order.
    void ListLoadedEffects() const;
    unsigned int GetLoadedEffectCount() const { return m_records.GetCount(); }
    bool IsEffectLoaded(const LxString& fileName) const { return FindRecord(fileName) >= 0; }
    // Appends the files `effectFileName` included when it was built, with their recorded time stamps. False when
    // the effect is not loaded.
    bool GetDependencyTimestamps(const LxString& effectFileName, LxArray<Dependency>& out) const;
    // Called by the shared record when only the manager's reference is left: the effect is unloaded.
    void NotifyLastReference(LxEffect* effect);

    // --- defines and options ------------------------------------------------------------------------------------
    // Applies to effects built from now on (reload to apply them to loaded ones). A second AddDefine of a name
    // replaces its value.
    void AddDefine(const LxString& name, const LxString& value);
    void RemoveDefine(const LxString& name);
    const LxArray<LxShaderMacro>& GetDefines() const { return m_defines; }
    void OverrideEffectOption(const LxString& name, const LxCountedPtr<LxAnnotationValue>& value);
    const LxAnnotationMap& GetOptionOverrides() const { return m_optionOverrides; }

    // --- override techniques ------------------------------------------------------------------------------------
    // Loads a file of override techniques (LxOverrideTechniqueEffectBuilder); each technique becomes an override
    // technique, numbered in load order. Effects built afterwards carry their override passes, so load these files
    // before the effects (or reload with force). A technique name already known is reported and skipped.
    bool LoadOverrideTechniqueEffect(const LxString& fileName);
    // Activates the override technique `name`; an empty name deactivates. False for an unknown name.
    bool SetOverrideTechnique(const LxString& name);
    // The active index, or -1 when none is active or they are force-disabled.
    int GetActiveOverrideTechnique() const override;
    // Empty when none is active.
    const LxString& GetActiveOverrideTechniqueName() const;
    // Empty for an index out of range.
    const LxString& GetOverrideTechniqueName(unsigned int index) const;
    unsigned int GetOverrideTechniqueCount() const { return m_overrideNames.GetCount(); }
    // While disabled no override technique is active; the chosen one comes back when enabled again.
    void ForceDisableOverrideTechniques(bool disable) { m_bOverridesDisabled = disable; }
    bool AreOverrideTechniquesDisabled() const { return m_bOverridesDisabled; }

    // --- reload listeners ---------------------------------------------------------------------------------------
    void AddReloadListener(LxEffectReloadListener* listener);
    void RemoveReloadListener(LxEffectReloadListener* listener);

    // --- factories (keyed by name; not owned) -------------------------------------------------------------------
    // Register reports a second factory under the same name and fails; Deregister is false for an unknown name.
    bool RegisterUpdateHandlerFactory(const LxString& name, LxUpdateHandlerFactory* factory);
    bool DeregisterUpdateHandlerFactory(const LxString& name);
    LxUpdateHandlerFactory* GetUpdateHandlerFactory(const LxString& name) const;
    bool RegisterTextureSlotBinderFactory(const LxString& binderType, LxTextureSlotBinderFactory* factory);
    bool DeregisterTextureSlotBinderFactory(const LxString& binderType);
    LxTextureSlotBinderFactory* GetTextureSlotBinderFactory(const LxString& binderType) const;
    bool RegisterUAVSlotBinderFactory(const LxString& binderType, LxUAVSlotBinderFactory* factory);
    bool DeregisterUAVSlotBinderFactory(const LxString& binderType);
    LxUAVSlotBinderFactory* GetUAVSlotBinderFactory(const LxString& binderType) const;
    bool RegisterStreamBinderFactory(const LxString& binderType, LxStreamBinderFactory* factory);
    bool DeregisterStreamBinderFactory(const LxString& binderType);
    LxStreamBinderFactory* GetStreamBinderFactory(const LxString& binderType) const;

    // --- app updates --------------------------------------------------------------------------------------------
    // Built in: "PassNumber", "ResourceDimensions", "ResourceInverseDimensions"; other names go to the factory
    // registered under them. Null after reporting why.
    LxCountedPtr<LxUpdateHandler> GetUpdateHandler(const LxString& name, int dataType, unsigned int count,
                                                   const LxAnnotationMap& annotations) override;
    // The process-wide switch LxEffectParameter::ExecuteUpdateHandler consults.
    void EnableAppUpdates(bool enable);
    bool AreAppUpdatesEnabled() const;
    // The draw context's record of the pass being drawn (LxEffect::BeginPass).
    void SetCurrentPass(LxEffect* effect, unsigned int passIndex) override;
    LxEffect* GetCurrentDrawEffect() const { return m_pCurrentEffect; }
    unsigned int GetCurrentPassNumber() const { return m_nCurrentPass; }

    // --- shader cache and compilation ---------------------------------------------------------------------------
    // Keeps compiled shaders under `path` from now on (replacing an earlier cache); an empty path turns the cache
    // off, and every shader is compiled every time.
    void SetShaderCachePath(const LxString& path);
    LxShaderCache* GetShaderCache() const { return m_pShaderCache; }
    // Compiles through the cache when one is set, else with `compiler` directly. False with the compiler's text.
    bool CompileShader(LxShaderCompiler& compiler, const LxShaderCompileRequest& request,
                       LxCountedPtr<LxMemoryBuffer>* code, LxString* messages);

protected:
    LxEffectManager();
    ~LxEffectManager() override;
    LxEffectManager(const LxEffectManager&) = delete;
    LxEffectManager& operator=(const LxEffectManager&) = delete;

    // A new builder for one build (owned by the caller). The generic manager returns the generic builder.
    virtual LxEffectBuilder* CreateEffectBuilder(bool isDefaultEffect);

private:
    struct Binders;
    struct Record;

    void OnOneReferenceLeft(LxEffect* object) override;
    int FindRecord(const LxString& fileName) const;
    int FindRecord(const LxEffect* effect) const;
    void RemoveRecord(unsigned int index);
    // Finds, reads and parses `fileName` with `builder`; null after reporting.
    LxEffect* ParseEffectFile(const LxString& fileName, LxEffectBuilder* builder);
    // A new builder set up with the manager's options, defines and override techniques, then ParseEffectFile and
    // the binders; null after reporting.
    LxEffect* BuildEffect(const LxString& fileName, bool isDefaultEffect, Binders& binders);
    bool CreateBinders(LxEffect& effect, Binders& binders);
    void RecordTimestamps(Record& record);
    bool HasChanged(const Record& record) const;
    long long QueryTimestamp(const LxString& name, const LxString& relativeTo) const;
    bool ReadDefaultObjects(LxEffect* effect, LxSampler** sampler, LxEffectTechnique** technique,
                            LxEffectPass** pass) const;
    void CallReloadListeners(const LxCountedPtr<LxEffect>& oldEffect, const LxCountedPtr<LxEffect>& newEffect);
    // While busy, last-reference notifications wait; the manager's own copies come and go meanwhile.
    void EndBusy();

    LxSearchPath m_searchPath;
    LxArray<Record*> m_records; // in load order
    LxArray<LxEffect*> m_pendingUnloads;
    unsigned int m_nBusy = 0;

    LxCountedPtr<LxEffect> m_defaultEffect;
    LxSampler* m_pDefaultSampler = nullptr;
    LxEffectTechnique* m_pDefaultTechnique = nullptr;
    LxEffectPass* m_pDefaultPass = nullptr;

    LxArray<LxShaderMacro> m_defines;
    LxAnnotationMap m_optionOverrides;

    LxArray<LxEffect*> m_overrideEffects; // owned
    LxArray<LxString> m_overrideNames;
    LxArray<LxEffectTechnique*> m_overrideTechniques;
    int m_nActiveOverride = -1;
    bool m_bOverridesDisabled = false;

    LxArray<LxEffectReloadListener*> m_listeners;
    LxHashMap<LxString, LxUpdateHandlerFactory*, LxStringHasher> m_updateFactories;
    LxHashMap<LxString, LxTextureSlotBinderFactory*, LxStringHasher> m_textureBinderFactories;
    LxHashMap<LxString, LxUAVSlotBinderFactory*, LxStringHasher> m_uavBinderFactories;
    LxHashMap<LxString, LxStreamBinderFactory*, LxStringHasher> m_streamBinderFactories;

    LxShaderCache* m_pShaderCache = nullptr;
    LxEffect* m_pCurrentEffect = nullptr;
    unsigned int m_nCurrentPass = 0;

    static LxEffectManager* ms_pInstance;
    static CreateFunction ms_pCreateFunction;
};
