#include "EffectManager/LxEffectManager.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxEffectParser.h"
#include "EffectManager/LxEffectReloadListener.h"
#include "EffectManager/LxOverrideTechniqueEffectBuilder.h"
#include "EffectManager/LxResourceDimUpdateHandler.h"
#include "EffectManager/LxShaderCache.h"
#include "EffectManager/LxStreamBinder.h"
#include "EffectManager/LxStreamBinderFactory.h"
#include "EffectManager/LxTextureSlotBinder.h"
#include "EffectManager/LxTextureSlotBinderFactory.h"
#include "EffectManager/LxUAVSlotBinder.h"
#include "EffectManager/LxUAVSlotBinderFactory.h"
#include "EffectManager/LxUpdateHandlerFactory.h"

#include <type_traits>
#include <utility>

namespace
{
// "PassNumber": the index of the pass the effect is drawing.
class LxPassNumberUpdateHandler : public LxUpdateHandler
{
public:
    void Update(LxEffectParameter& parameter, void* data, unsigned int size) override
    {
        (void)parameter;
        const LxEffectManager* manager = LxEffectManager::GetExistingPtr();
        if (manager && size >= sizeof(int))
            *static_cast<int*>(data) = static_cast<int>(manager->GetCurrentPassNumber());
    }
};

const LxString& EmptyString()
{
    static const LxString empty;
    return empty;
}

template <class Factory>
bool RegisterFactory(LxHashMap<LxString, Factory*, LxStringHasher>& table, const LxString& name, Factory* factory,
                     const char* secondMessage)
{
    if (!factory)
    {
        LX_ERROR("LxEffectManager.  A null factory cannot be registered for: %s", name.c_str());
        return false;
    }
    if (table.Contains(name))
    {
        LX_ERROR("%s%s", secondMessage, name.c_str());
        return false;
    }
    table.Insert(name, factory);
    return true;
}

template <class Factory>
Factory* FindFactory(const LxHashMap<LxString, Factory*, LxStringHasher>& table, const LxString& name)
{
    Factory* const* found = table.FindValue(name);
    return found ? *found : nullptr;
}

// The binder type an object's annotation names; false (after reporting) when the annotation is malformed, true
// with an empty type when it is absent.
bool ReadBinderType(const LxAnnotationMap& annotations, const char* annotation, LxString* type)
{
    LxCountedPtr<LxAnnotationValue> value = annotations.LookupValue(annotation);
    type->Clear();
    if (!value)
        return true;
    if (!value->IsString() || value->GetString().IsEmpty())
    {
        LX_ERROR("Value of '%s' annotation must be a non-empty STRING", annotation);
        return false;
    }
    *type = value->GetString();
    return true;
}
} // namespace

// The binders made for one effect; deleted before the effect they were made for.
struct LxEffectManager::Binders
{
    LxArray<LxTextureSlotBinder*> textures;
    LxArray<LxUAVSlotBinder*> uavs;
    LxArray<LxStreamBinder*> streams;

    Binders() = default;
    Binders(const Binders&) = delete;
    Binders& operator=(const Binders&) = delete;
    ~Binders() { Clear(); }
    void Clear()
    {
        for (LxTextureSlotBinder* b : textures)
            delete b;
        for (LxUAVSlotBinder* b : uavs)
            delete b;
        for (LxStreamBinder* b : streams)
            delete b;
        textures.Clear();
        uavs.Clear();
        streams.Clear();
    }
};

struct LxEffectManager::Record
{
    LxString fileName;
    LxCountedPtr<LxEffect> effect; // the shared record every holder points at; its observer is the manager
    bool isDefaultEffect = false;  // loaded with LOAD_DEFAULT_EFFECT
    long long fileTime = -1;
    LxArray<Dependency> dependencies;
    Binders* binders = nullptr;

    ~Record()
    {
        delete binders;
        effect.SetObserver(nullptr);
        effect = nullptr;
    }
};

LxEffectManager* LxEffectManager::ms_pInstance = nullptr;
LxEffectManager::CreateFunction LxEffectManager::ms_pCreateFunction = nullptr;

// --- singleton ------------------------------------------------------------------------------------------------------

LxEffectManager* LxEffectManager::GetPtr()
{
    if (!ms_pInstance)
    {
        LxEffectManager* created = ms_pCreateFunction ? ms_pCreateFunction() : nullptr;
        ms_pInstance = created ? created : new LxEffectManager();
        LxEffectDrawContext::SetGlobal(ms_pInstance);
    }
    return ms_pInstance;
}

bool LxEffectManager::Init(LxEffectManager* manager)
{
    if (!manager)
        return false;
    if (ms_pInstance)
    {
        LX_ERROR("LxEffectManager::Init.  An effect manager exists already");
        delete manager;
        return false;
    }
    ms_pInstance = manager;
    LxEffectDrawContext::SetGlobal(manager);
    return true;
}

void LxEffectManager::ShutDown()
{
    LxEffectManager* instance = ms_pInstance;
    ms_pInstance = nullptr;
    delete instance;
}

// Becomes the draw context when installed as the singleton (GetPtr, Init), not here: a manager that Init refuses
// must not take the place of the one that stays.
LxEffectManager::LxEffectManager() = default;

LxEffectManager::~LxEffectManager()
{
    // Outside holders keep their effects; nothing may call back into a manager that is going away.
    for (Record* record : m_records)
        record->effect.SetObserver(nullptr);
    m_defaultEffect = nullptr;
    for (Record* record : m_records)
        delete record;
    m_records.Clear();
    m_overrideTechniques.Clear();
    for (LxEffect* effect : m_overrideEffects)
        delete effect;
    delete m_pShaderCache;
    if (LxEffectDrawContext::GetGlobal() == this)
        LxEffectDrawContext::SetGlobal(nullptr);
}

LxEffectBuilder* LxEffectManager::CreateEffectBuilder(bool isDefaultEffect)
{
    (void)isDefaultEffect;
    return new LxEffectBuilder();
}

// --- search paths ---------------------------------------------------------------------------------------------------

void LxEffectManager::AddSearchPath(const LxString& path)
{
    m_searchPath.AddToSearchPath(path);
}

void LxEffectManager::ClearSearchPaths()
{
    m_searchPath.ClearSearchPaths();
}

// --- records --------------------------------------------------------------------------------------------------------

int LxEffectManager::FindRecord(const LxString& fileName) const
{
    for (unsigned int i = 0; i < m_records.GetCount(); ++i)
        if (m_records[i]->fileName == fileName)
            return static_cast<int>(i);
    return -1;
}

int LxEffectManager::FindRecord(const LxEffect* effect) const
{
    for (unsigned int i = 0; i < m_records.GetCount(); ++i)
        if (m_records[i]->effect.Get() == effect)
            return static_cast<int>(i);
    return -1;
}

void LxEffectManager::RemoveRecord(unsigned int index)
{
    Record* record = m_records[index];
    m_records.RemoveAt(index);
    if (m_pCurrentEffect == record->effect.Get())
        m_pCurrentEffect = nullptr;
    delete record;
}

void LxEffectManager::OnOneReferenceLeft(LxEffect* object)
{
    NotifyLastReference(object);
}

void LxEffectManager::NotifyLastReference(LxEffect* effect)
{
    const int index = FindRecord(effect);
    if (index < 0)
        return;
    if (m_nBusy)
    {
        // The manager's own temporary copies come and go while it loads or reloads; decide at the end.
        if (!m_pendingUnloads.Contains(effect))
            m_pendingUnloads.Add(effect);
        return;
    }
    RemoveRecord(static_cast<unsigned int>(index));
}

void LxEffectManager::EndBusy()
{
    if (--m_nBusy != 0)
        return;
    LxArray<LxEffect*> pending;
    std::swap(pending, m_pendingUnloads);
    for (LxEffect* effect : pending)
    {
        const int index = FindRecord(effect);
        if (index >= 0 && m_records[index]->effect.GetRefCount() == 1)
            RemoveRecord(static_cast<unsigned int>(index));
    }
}

long long LxEffectManager::QueryTimestamp(const LxString& name, const LxString& relativeTo) const
{
    long long time = 0;
    if (m_searchPath.GetFileTime(name, time))
        return time;
    // An include the parser found next to the including file rather than on the search paths.
    const LxString dir = relativeTo.GetDirectory();
    if (!dir.IsEmpty() && m_searchPath.GetFileTime(dir + "/" + name, time))
        return time;
    return -1;
}

void LxEffectManager::RecordTimestamps(Record& record)
{
    record.fileTime = QueryTimestamp(record.fileName, LxString());
    record.dependencies.Clear();
    for (const LxString& include : record.effect->GetIncludedFiles())
        record.dependencies.Add(Dependency{include, QueryTimestamp(include, record.fileName)});
}

bool LxEffectManager::HasChanged(const Record& record) const
{
    if (QueryTimestamp(record.fileName, LxString()) != record.fileTime)
        return true;
    for (const Dependency& dependency : record.dependencies)
        if (QueryTimestamp(dependency.fileName, record.fileName) != dependency.timeStamp)
            return true;
    return false;
}

bool LxEffectManager::GetDependencyTimestamps(const LxString& effectFileName, LxArray<Dependency>& out) const
{
    const int index = FindRecord(effectFileName);
    if (index < 0)
        return false;
    for (const Dependency& dependency : m_records[index]->dependencies)
        out.Add(dependency);
    return true;
}

// --- building -------------------------------------------------------------------------------------------------------

LxEffect* LxEffectManager::ParseEffectFile(const LxString& fileName, LxEffectBuilder* builder)
{
    if (!m_searchPath.FileExists(fileName, nullptr))
    {
        LX_ERROR("Effect file \"%s\" not found in search path", fileName.c_str());
        return nullptr;
    }
    LX_MESSAGE("Loading effect file: \"%s\"", fileName.c_str());
    LxString contents;
    if (!LxEffectParser::LoadEffectFileContents(&m_searchPath, LxString(), fileName, contents))
    {
        LX_ERROR("Error opening effect file \"%s\"", fileName.c_str());
        return nullptr;
    }
    LxEffectParser parser;
    parser.SetIncludeArchive(&m_searchPath);
    for (const LxShaderMacro& define : m_defines)
        parser.AddDefine(define.name, define.value);
    parser.Init(fileName, contents, builder);
    LxEffect* effect = parser.Parse();
    if (!effect)
        LX_ERROR("Invalid effect file \"%s\"", fileName.c_str());
    return effect;
}

LxEffect* LxEffectManager::BuildEffect(const LxString& fileName, bool isDefaultEffect, Binders& binders)
{
    LxEffectBuilder* builder = CreateEffectBuilder(isDefaultEffect);
    if (!builder)
    {
        LX_ERROR("LxEffectManager::LoadEffect.  No effect builder for \"%s\"", fileName.c_str());
        return nullptr;
    }
    builder->SetOptionOverrides(m_optionOverrides);
    builder->SetUpdateHandlerProvider(this);
    if (!isDefaultEffect)
        builder->SetOverrideTechniques(m_overrideTechniques);
    for (const LxShaderMacro& define : m_defines)
        builder->AddMacro(define.name, define.value);
    LxEffect* effect = ParseEffectFile(fileName, builder);
    delete builder;
    if (effect && !CreateBinders(*effect, binders))
    {
        binders.Clear();
        delete effect;
        effect = nullptr;
        LX_ERROR("Invalid effect file \"%s\"", fileName.c_str());
    }
    return effect;
}

bool LxEffectManager::CreateBinders(LxEffect& effect, Binders& binders)
{
    bool ok = true;
    LxString type;
    for (unsigned int i = 0; i < effect.GetNumTextureSlots(); ++i)
    {
        LxTextureSlot* slot = effect.GetTextureSlot(i);
        if (!ReadBinderType(slot->GetAnnotations(), "BindRT", &type))
            ok = false;
        else if (!type.IsEmpty())
        {
            LxTextureSlotBinderFactory* factory = GetTextureSlotBinderFactory(type);
            LxTextureSlotBinder* binder = factory ? factory->CreateBinder(effect, *slot) : nullptr;
            if (!factory)
                LX_ERROR("Error creating texture slot binder for BindRT value: '%s'.  No factory is set!\n",
                         type.c_str());
            if (binder)
                binders.textures.Add(binder);
            else
                ok = false;
        }
    }
    for (unsigned int i = 0; i < effect.GetNumUAVSlots(); ++i)
    {
        LxUAVSlot* slot = effect.GetUAVSlot(i);
        if (!ReadBinderType(slot->GetAnnotations(), "BindUAV", &type))
            ok = false;
        else if (!type.IsEmpty())
        {
            LxUAVSlotBinderFactory* factory = GetUAVSlotBinderFactory(type);
            LxUAVSlotBinder* binder = factory ? factory->CreateBinder(effect, *slot) : nullptr;
            if (!factory)
                LX_ERROR("Error creating UAV slot binder for BindUAV value: '%s'.  No factory is set!\n", type.c_str());
            if (binder)
                binders.uavs.Add(binder);
            else
                ok = false;
        }
    }
    for (unsigned int i = 0; i < effect.GetNumVertexStreamDecls(); ++i)
    {
        LxVertexStreamDecl* stream = effect.GetVertexStreamDecl(i);
        if (!ReadBinderType(stream->GetAnnotations(), "BindStream", &type))
            ok = false;
        else if (!type.IsEmpty())
        {
            LxStreamBinderFactory* factory = GetStreamBinderFactory(type);
            LxStreamBinder* binder = factory ? factory->CreateBinder(effect, *stream) : nullptr;
            if (!factory)
                LX_ERROR("Error creating stream binder for BindStream value: '%s'.  No factory is set!\n",
                         type.c_str());
            if (binder)
                binders.streams.Add(binder);
            else
                ok = false;
        }
    }
    return ok;
}

// --- loading --------------------------------------------------------------------------------------------------------

LxCountedPtr<LxEffect> LxEffectManager::LoadEffect(const LxString& fileName, unsigned int flags)
{
    const bool isDefault = (flags & LOAD_DEFAULT_EFFECT) != 0;
    if (!isDefault && (!m_defaultEffect || !m_pDefaultSampler || !m_pDefaultTechnique || !m_pDefaultPass))
    {
        LX_ERROR("%s: Default effect is not set. Set a default effect using LxEffectManager::SetDefaultEffect ()\n"
                 "before loading an effect, or use the LOAD_DEFAULT_EFFECT load flag",
                 "LxEffectManager::LoadEffect");
        return LxCountedPtr<LxEffect>();
    }
    const int existing = FindRecord(fileName);
    if (existing >= 0)
        return m_records[existing]->effect;

    ++m_nBusy;
    Binders* binders = new Binders();
    LxEffect* effect = BuildEffect(fileName, isDefault, *binders);
    LxCountedPtr<LxEffect> result;
    if (effect)
    {
        Record* record = new Record();
        record->fileName = fileName;
        record->effect = LxCountedPtr<LxEffect>(effect);
        record->effect.SetObserver(this);
        record->isDefaultEffect = isDefault;
        record->binders = binders;
        RecordTimestamps(*record);
        m_records.Add(record);
        result = record->effect;
    }
    else
        delete binders;
    EndBusy();
    return result;
}

bool LxEffectManager::ReadDefaultObjects(LxEffect* effect, LxSampler** sampler, LxEffectTechnique** technique,
                                         LxEffectPass** pass) const
{
    *sampler = effect->GetSampler("DEFAULT_SAMPLER");
    *technique = effect->GetTechnique("DEFAULT_TECHNIQUE");
    *pass = *technique ? (*technique)->GetPass("DEFAULT_PASS") : nullptr;
    if (!*sampler)
        LX_ERROR("Default effect doesn't contain required default sampler declaration named %s", "DEFAULT_SAMPLER");
    if (!*technique)
        LX_ERROR("Default effect doesn't contain required default technique named %s", "DEFAULT_TECHNIQUE");
    else if (!*pass)
        LX_ERROR("Default effect doesn't contain required default pass declaration named %s", "DEFAULT_PASS");
    return *sampler && *technique && *pass;
}

bool LxEffectManager::SetDefaultEffect(const LxCountedPtr<LxEffect>& effect)
{
    if (!effect)
    {
        m_pDefaultSampler = nullptr;
        m_pDefaultTechnique = nullptr;
        m_pDefaultPass = nullptr;
        m_defaultEffect = nullptr;
        return true;
    }
    LxSampler* sampler = nullptr;
    LxEffectTechnique* technique = nullptr;
    LxEffectPass* pass = nullptr;
    if (!ReadDefaultObjects(effect.Get(), &sampler, &technique, &pass))
        return false;
    m_pDefaultSampler = sampler;
    m_pDefaultTechnique = technique;
    m_pDefaultPass = pass;
    m_defaultEffect = effect; // may unload the previous default, which nobody else holds
    return true;
}

void LxEffectManager::ListLoadedEffects() const
{
    LxString text("Loaded effect files:\n");
    for (unsigned int i = 0; i < m_records.GetCount(); ++i)
    {
        if (i)
            text.Append('\n');
        text.Append(m_records[i]->fileName);
    }
    LxLogManager::GetRef().LogMessage(text, LX_LOG_MESSAGE, nullptr, 0);
}

// --- reloading ------------------------------------------------------------------------------------------------------

void LxEffectManager::CallReloadListeners(const LxCountedPtr<LxEffect>& oldEffect,
                                          const LxCountedPtr<LxEffect>& newEffect)
{
    // A listener may add or remove listeners: walk a copy and skip those removed meanwhile.
    const LxArray<LxEffectReloadListener*> listeners(m_listeners);
    for (LxEffectReloadListener* listener : listeners)
        if (m_listeners.Contains(listener))
            listener->OnEffectReload(oldEffect, newEffect);
}

void LxEffectManager::ReloadEffects(bool force)
{
    // A reload is a fresh attempt at files being edited: their errors must show again even when the text is the
    // same as last time, which the log's once-only error rule would otherwise swallow.
    LxLogManager::ResetLumexErrorLog();
    LX_MESSAGE("Starting effect re-load.....");
    ++m_nBusy;
    LxArray<Record*> changed;
    for (Record* record : m_records)
        if (force || HasChanged(*record))
            changed.Add(record);
    if (changed.IsEmpty())
    {
        LX_MESSAGE("Skipped effect re-load: No changed shader files found on disk");
        EndBusy();
        return;
    }

    bool errors = false;
    for (Record* record : changed)
    {
        // Unloads wait while busy, so every record collected above is still there.
        Binders* binders = new Binders();
        LxEffect* fresh = BuildEffect(record->fileName, record->isDefaultEffect, *binders);
        const bool isCurrentDefault = fresh && record->effect == m_defaultEffect;
        LxSampler* sampler = nullptr;
        LxEffectTechnique* technique = nullptr;
        LxEffectPass* pass = nullptr;
        if (isCurrentDefault && !ReadDefaultObjects(fresh, &sampler, &technique, &pass))
        {
            binders->Clear();
            delete fresh;
            fresh = nullptr;
        }
        if (!fresh)
        {
            delete binders;
            LX_ERROR("Effect load failure: %s", record->fileName.c_str());
            errors = true;
            continue;
        }

        LxCountedPtr<LxEffect> oldEffect(fresh);
        record->effect.SwapObjects(oldEffect); // every holder of the shared record now sees the new effect
        Binders* oldBinders = record->binders;
        record->binders = binders;
        if (isCurrentDefault)
        {
            m_pDefaultSampler = sampler;
            m_pDefaultTechnique = technique;
            m_pDefaultPass = pass;
        }
        if (m_pCurrentEffect == oldEffect.Get())
            m_pCurrentEffect = nullptr;
        RecordTimestamps(*record);
        CallReloadListeners(oldEffect, record->effect);
        delete oldBinders;
        if (oldEffect.GetRefCount() > 1)
            LX_ERROR("%s",
                     (LxString("Not all references to effect: ") + record->fileName + " were updated during re-load.")
                         .c_str());
    }
    EndBusy();
    if (errors)
        LX_ERROR("Finished effect re-load with ERRORS!!!");
    else
        LX_MESSAGE("Finished effect re-load");
}

// --- defines and options --------------------------------------------------------------------------------------------

void LxEffectManager::AddDefine(const LxString& name, const LxString& value)
{
    for (LxShaderMacro& define : m_defines)
        if (define.name == name)
        {
            define.value = value;
            return;
        }
    m_defines.Add(LxShaderMacro{name, value});
}

void LxEffectManager::RemoveDefine(const LxString& name)
{
    for (unsigned int i = 0; i < m_defines.GetCount(); ++i)
        if (m_defines[i].name == name)
        {
            m_defines.RemoveAt(i);
            return;
        }
}

void LxEffectManager::OverrideEffectOption(const LxString& name, const LxCountedPtr<LxAnnotationValue>& value)
{
    if (value)
        m_optionOverrides.SetValue(name, value);
    else
        m_optionOverrides.RemoveValue(name);
}

// --- override techniques --------------------------------------------------------------------------------------------

bool LxEffectManager::LoadOverrideTechniqueEffect(const LxString& fileName)
{
    LxOverrideTechniqueEffectBuilder builder;
    for (const LxShaderMacro& define : m_defines)
        builder.AddMacro(define.name, define.value);
    LxEffect* effect = ParseEffectFile(fileName, &builder);
    if (!effect)
        return false;
    bool ok = true;
    unsigned int added = 0;
    for (unsigned int i = 0; i < effect->GetNumTechniques(); ++i)
    {
        LxEffectTechnique* technique = effect->GetTechnique(i);
        if (m_overrideNames.Contains(technique->GetName()))
        {
            LX_ERROR("LxEffectManager::LoadOverrideTechniqueEffect.  Override technique %s is already defined",
                     technique->GetName().c_str());
            ok = false;
            continue;
        }
        m_overrideNames.Add(technique->GetName());
        m_overrideTechniques.Add(technique);
        ++added;
    }
    if (added)
        m_overrideEffects.Add(effect);
    else
        delete effect;
    return ok;
}

bool LxEffectManager::SetOverrideTechnique(const LxString& name)
{
    if (name.IsEmpty())
    {
        m_nActiveOverride = -1;
        return true;
    }
    const int index = m_overrideNames.Find(name);
    if (index < 0)
    {
        LX_ERROR("LxEffectManager::SetOverrideTechnique.  Unknown override technique: %s", name.c_str());
        return false;
    }
    m_nActiveOverride = index;
    return true;
}

int LxEffectManager::GetActiveOverrideTechnique() const
{
    return m_bOverridesDisabled ? -1 : m_nActiveOverride;
}

const LxString& LxEffectManager::GetActiveOverrideTechniqueName() const
{
    const int index = GetActiveOverrideTechnique();
    return index >= 0 ? m_overrideNames[static_cast<unsigned int>(index)] : EmptyString();
}

const LxString& LxEffectManager::GetOverrideTechniqueName(unsigned int index) const
{
    return index < m_overrideNames.GetCount() ? m_overrideNames[index] : EmptyString();
}

// --- listeners ------------------------------------------------------------------------------------------------------

void LxEffectManager::AddReloadListener(LxEffectReloadListener* listener)
{
    if (listener && !m_listeners.Contains(listener))
        m_listeners.Add(listener);
}

void LxEffectManager::RemoveReloadListener(LxEffectReloadListener* listener)
{
    m_listeners.Remove(listener);
}

// --- factories ------------------------------------------------------------------------------------------------------

bool LxEffectManager::RegisterUpdateHandlerFactory(const LxString& name, LxUpdateHandlerFactory* factory)
{
    return RegisterFactory(m_updateFactories, name, factory, "Second update handler factory defined for AppUpdate: ");
}

bool LxEffectManager::DeregisterUpdateHandlerFactory(const LxString& name)
{
    return m_updateFactories.Erase(name);
}

LxUpdateHandlerFactory* LxEffectManager::GetUpdateHandlerFactory(const LxString& name) const
{
    return FindFactory(m_updateFactories, name);
}

bool LxEffectManager::RegisterTextureSlotBinderFactory(const LxString& binderType, LxTextureSlotBinderFactory* factory)
{
    return RegisterFactory(m_textureBinderFactories, binderType, factory,
                           "Second texture binder factory defined for binder type: ");
}

bool LxEffectManager::DeregisterTextureSlotBinderFactory(const LxString& binderType)
{
    return m_textureBinderFactories.Erase(binderType);
}

LxTextureSlotBinderFactory* LxEffectManager::GetTextureSlotBinderFactory(const LxString& binderType) const
{
    return FindFactory(m_textureBinderFactories, binderType);
}

bool LxEffectManager::RegisterUAVSlotBinderFactory(const LxString& binderType, LxUAVSlotBinderFactory* factory)
{
    return RegisterFactory(m_uavBinderFactories, binderType, factory,
                           "Second UAV binder factory defined for binder type: ");
}

bool LxEffectManager::DeregisterUAVSlotBinderFactory(const LxString& binderType)
{
    return m_uavBinderFactories.Erase(binderType);
}

LxUAVSlotBinderFactory* LxEffectManager::GetUAVSlotBinderFactory(const LxString& binderType) const
{
    return FindFactory(m_uavBinderFactories, binderType);
}

bool LxEffectManager::RegisterStreamBinderFactory(const LxString& binderType, LxStreamBinderFactory* factory)
{
    return RegisterFactory(m_streamBinderFactories, binderType, factory,
                           "Second stream binder factory defined for binder type: ");
}

bool LxEffectManager::DeregisterStreamBinderFactory(const LxString& binderType)
{
    return m_streamBinderFactories.Erase(binderType);
}

LxStreamBinderFactory* LxEffectManager::GetStreamBinderFactory(const LxString& binderType) const
{
    return FindFactory(m_streamBinderFactories, binderType);
}

// --- app updates ----------------------------------------------------------------------------------------------------

LxCountedPtr<LxUpdateHandler> LxEffectManager::GetUpdateHandler(const LxString& name, int dataType, unsigned int count,
                                                                const LxAnnotationMap& annotations)
{
    if (name == "PassNumber")
    {
        if (dataType != LxEffectParameter::TYPE_INT)
        {
            LX_ERROR("PassNumber app-update can only be applied to an integer parameter.");
            return LxCountedPtr<LxUpdateHandler>();
        }
        return LxCountedPtr<LxUpdateHandler>(new LxPassNumberUpdateHandler());
    }
    if (name == "ResourceDimensions" || name == "ResourceInverseDimensions")
    {
        if (dataType != LxEffectParameter::TYPE_VECTOR)
        {
            LX_ERROR("%s app-update can only be applied to a vector parameter.", name.c_str());
            return LxCountedPtr<LxUpdateHandler>();
        }
        LxCountedPtr<LxAnnotationValue> slot = annotations.LookupValue("Slot");
        if (!slot || !slot->IsString())
        {
            LX_ERROR("%s app-update must have a string-valued 'Slot' annotation.", name.c_str());
            return LxCountedPtr<LxUpdateHandler>();
        }
        return LxCountedPtr<LxUpdateHandler>(
            new LxResourceDimUpdateHandler(slot->GetString(), name == "ResourceInverseDimensions"));
    }
    LxUpdateHandlerFactory* factory = GetUpdateHandlerFactory(name);
    if (!factory)
    {
        LX_ERROR("%s", (LxString("Don't know how to handle AppUpdate named: ") + name).c_str());
        return LxCountedPtr<LxUpdateHandler>();
    }
    return factory->CreateUpdateHandler(name, static_cast<LxEffectParameter::DataType>(dataType), count, annotations);
}

void LxEffectManager::EnableAppUpdates(bool enable)
{
    LxEffectParameter::SetAppUpdatesEnabled(enable);
}

bool LxEffectManager::AreAppUpdatesEnabled() const
{
    return LxEffectParameter::AreAppUpdatesEnabled();
}

void LxEffectManager::SetCurrentPass(LxEffect* effect, unsigned int passIndex)
{
    m_pCurrentEffect = effect;
    m_nCurrentPass = passIndex;
}

// --- shaders --------------------------------------------------------------------------------------------------------

void LxEffectManager::SetShaderCachePath(const LxString& path)
{
    delete m_pShaderCache;
    m_pShaderCache = path.IsEmpty() ? nullptr : new LxShaderCache(path);
}

bool LxEffectManager::CompileShader(LxShaderCompiler& compiler, const LxShaderCompileRequest& request,
                                    LxCountedPtr<LxMemoryBuffer>* code, LxString* messages)
{
    if (m_pShaderCache)
        return m_pShaderCache->GetCompiledShader(compiler, request, code, messages);
    LxCountedPtr<LxMemoryBuffer> compiled;
    LxString text;
    if (!compiler.Compile(request, &compiled, &text) || !compiled)
    {
        if (messages)
            *messages = text;
        return false;
    }
    *code = compiled;
    return true;
}
