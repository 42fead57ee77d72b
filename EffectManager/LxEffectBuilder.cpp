#include "EffectManager/LxEffectBuilder.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"
#include "EffectManager/LxEffectParser.h"
#include "EffectManager/LxShaderCodePreprocessor.h"

#include <cstdarg>
#include <cstring>

namespace
{
// Larger arrays are refused: a typing error in a count should not allocate gigabytes.
const unsigned int kMaxParameterArrayCount = 65536;

// One element's default value from an initializer (missing components stay zero).
void FillDefault(LxEffectParameter::DataType type, const LxArray<float>* values, unsigned char* out)
{
    std::memset(out, 0, 64);
    if (!values)
        return;
    const unsigned int n = values->GetCount() < 16 ? values->GetCount() : 16;
    if (n) // an empty initializer "()" has no data at all
        std::memcpy(out, values->GetData(), n * sizeof(float));
    (void)type;
}

void FillDefault(LxEffectParameter::DataType type, const LxArray<int>* values, unsigned char* out)
{
    std::memset(out, 0, 64);
    if (!values)
        return;
    const unsigned int n = values->GetCount() < 4 ? values->GetCount() : 4;
    if (n)
        std::memcpy(out, values->GetData(), n * sizeof(int));
    (void)type;
}

void FillDefault(LxEffectParameter::DataType type, const LxArray<bool>* values, unsigned char* out)
{
    std::memset(out, 0, 64);
    if (!values)
        return;
    int ints[4] = {0, 0, 0, 0};
    for (unsigned int i = 0; i < values->GetCount() && i < 4; ++i)
        ints[i] = (*values)[i] ? 1 : 0;
    std::memcpy(out, ints, sizeof ints);
    (void)type;
}

bool IsFloatType(LxEffectParameter::DataType t)
{
    return t == LxEffectParameter::TYPE_FLOAT || t == LxEffectParameter::TYPE_VECTOR ||
           t == LxEffectParameter::TYPE_MATRIX;
}
bool IsIntType(LxEffectParameter::DataType t)
{
    return t == LxEffectParameter::TYPE_INT || t == LxEffectParameter::TYPE_VECTOR_INT;
}
bool IsBoolType(LxEffectParameter::DataType t)
{
    return t == LxEffectParameter::TYPE_BOOL || t == LxEffectParameter::TYPE_VECTOR_BOOL;
}
template <class T>
bool ValuesFitType(LxEffectParameter::DataType t);
template <>
bool ValuesFitType<float>(LxEffectParameter::DataType t)
{
    return IsFloatType(t);
}
template <>
bool ValuesFitType<int>(LxEffectParameter::DataType t)
{
    return IsIntType(t);
}
template <>
bool ValuesFitType<bool>(LxEffectParameter::DataType t)
{
    return IsBoolType(t);
}
} // namespace

LxEffectBuilder::LxEffectBuilder() = default;

LxEffectBuilder::~LxEffectBuilder()
{
    AbandonOpenScopes();
    if (!m_bResultTaken)
        delete m_pEffect;
}

// --- bookkeeping ------------------------------------------------------------------------------------------------

void LxEffectBuilder::ParseError(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    LxString message;
    message.FormatV(fmt, args);
    va_end(args);
    m_bParseError = true;
    if (m_pParser)
        LxFormatAndLogShaderParserMessage(m_pParser, "%s", message.c_str());
    else if (!m_effectName.IsEmpty())
        LxLogManager::GetRef().LogMessage(m_effectName + " : " + message, LX_LOG_ERROR, nullptr, 0);
    else
        LxLogManager::GetRef().LogMessage(message, LX_LOG_ERROR, nullptr, 0);
}

void LxEffectBuilder::AddIncludedFile(const LxString& fileName)
{
    GetCurrentEffect()->AddIncludedFile(fileName);
}

bool LxEffectBuilder::IsFileIncluded(const LxString& fileName) const
{
    return m_pEffect && m_pEffect->IsFileIncluded(fileName);
}

bool LxEffectBuilder::CheckEffectParameterParameterCount(LxEffectParameter::DataType type, unsigned int count)
{
    switch (type)
    {
    case LxEffectParameter::TYPE_FLOAT:
    case LxEffectParameter::TYPE_INT:
    case LxEffectParameter::TYPE_BOOL:
        return count <= 1;
    case LxEffectParameter::TYPE_VECTOR:
    case LxEffectParameter::TYPE_VECTOR_INT:
    case LxEffectParameter::TYPE_VECTOR_BOOL:
        return count <= 4;
    case LxEffectParameter::TYPE_MATRIX:
        return count == 0 || count == 16;
    default:
        return false;
    }
}

LxEffect* LxEffectBuilder::GetCurrentEffect()
{
    if (!m_pEffect && !m_bResultTaken)
    {
        m_pEffect = CreateEffect(m_effectName);
        if (!m_pEffect)
        {
            // A factory that fails still leaves the builder something to record into; the build is failed.
            ParseError("Error creating effect object for \"%s\"", m_effectName.c_str());
            m_pEffect = new LxEffect(m_effectName);
        }
    }
    return m_pEffect;
}

void LxEffectBuilder::AbandonOpenScopes()
{
    // A pass joins its technique at EndPass; until then (reopened inherited passes aside) the builder owns it.
    if (m_pCurrentPass && (m_bPassOrphan || !m_pCurrentTechnique ||
                           m_pCurrentTechnique->GetPass(m_pCurrentPass->GetName()) != m_pCurrentPass))
        delete m_pCurrentPass;
    m_pCurrentPass = nullptr;
    m_bPassOrphan = false;
    if (m_pCurrentTechnique)
        delete m_pCurrentTechnique; // never added to the effect before EndTechnique
    m_pCurrentTechnique = nullptr;
    m_bTechniqueOrphan = false;
    m_inheritedPasses.Clear();
    m_passNamesOpened.Clear();
    if (m_pCurrentSampler && m_bSamplerOrphan)
        delete m_pCurrentSampler;
    m_pCurrentSampler = nullptr;
    m_bSamplerOrphan = false;
}

// --- effect-level declarations ------------------------------------------------------------------------------------

void LxEffectBuilder::SetEffectOptions(const LxAnnotationMap* options)
{
    LxEffect* effect = GetCurrentEffect();
    LxAnnotationMap merged = effect->GetOptions();
    if (options)
        merged.Merge(*options);
    merged.Merge(m_optionOverrides);
    effect->SetOptions(merged);
}

void LxEffectBuilder::AddArtNotes(const LxString& notes)
{
    GetCurrentEffect()->AppendArtNotes(notes);
}

void LxEffectBuilder::AddCodeBlock(LxShaderCodeBlock* block)
{
    if (!block)
        return;
    if (!GetCurrentEffect()->AddCodeBlock(block))
    {
        ParseError("Code block redefinition: %s", block->name.c_str());
        delete block;
    }
}

bool LxEffectBuilder::CheckParameterName(const LxString& name)
{
    if (GetCurrentEffect()->GetParameter(name))
    {
        ParseError("Effect parameter redefinition: %s", name.c_str());
        return false;
    }
    return true;
}

template <class T>
void LxEffectBuilder::AddParameterImpl(const LxString& name, LxEffectParameter::DataType type, unsigned int count,
                                       bool isArray, const LxArray<T>* values, const LxAnnotationMap* annotations)
{
    if (static_cast<unsigned int>(type) >= LxEffectParameter::NUM_DATA_TYPES)
    {
        ParseError("Effect parameter %s: unknown data type %d", name.c_str(), static_cast<int>(type));
        return;
    }
    if (!CheckParameterName(name))
        return;
    if (values && (!ValuesFitType<T>(type) || !CheckEffectParameterParameterCount(type, values->GetCount())))
    {
        ParseError("Effect parameter %s: Invalid number of parameters in initializer for this data type.",
                   name.c_str());
        return;
    }
    if (count == 0 || count > kMaxParameterArrayCount)
    {
        ParseError("Effect parameter %s: array size %u is out of range (1 to %u)", name.c_str(), count,
                   kMaxParameterArrayCount);
        return;
    }
    unsigned char defaultValue[64];
    FillDefault(type, values, defaultValue);
    LxEffectParameter* parameter = new LxEffectParameter(name, type, defaultValue, count);
    parameter->SetIsArray(isArray);
    if (annotations)
        parameter->SetAnnotations(*annotations);

    // "AppUpdate" = "Source": the value comes from a handler each draw.
    LxCountedPtr<LxAnnotationValue> appUpdate = parameter->GetAnnotations().LookupValue("AppUpdate");
    if (appUpdate)
    {
        if (!appUpdate->IsString())
            ParseError("Effect parameter %s: the 'AppUpdate' annotation must be a STRING", name.c_str());
        else if (m_pUpdateHandlerProvider)
        {
            LxCountedPtr<LxUpdateHandler> handler = m_pUpdateHandlerProvider->GetUpdateHandler(
                appUpdate->GetString(), static_cast<int>(type), count, parameter->GetAnnotations());
            if (handler)
                parameter->SetUpdateHandler(handler);
            else
                ParseError("Unsupported app-update type");
        }
    }
    GetCurrentEffect()->AddParameter(parameter);
}

void LxEffectBuilder::AddEffectParameter(const LxString& name, LxEffectParameter::DataType type,
                                         const LxArray<float>* values, const LxAnnotationMap* annotations)
{
    AddParameterImpl(name, type, 1, false, values, annotations);
}

void LxEffectBuilder::AddEffectParameter(const LxString& name, LxEffectParameter::DataType type,
                                         const LxArray<int>* values, const LxAnnotationMap* annotations)
{
    AddParameterImpl(name, type, 1, false, values, annotations);
}

void LxEffectBuilder::AddEffectParameter(const LxString& name, LxEffectParameter::DataType type,
                                         const LxArray<bool>* values, const LxAnnotationMap* annotations)
{
    AddParameterImpl(name, type, 1, false, values, annotations);
}

void LxEffectBuilder::AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type,
                                              unsigned int count, const LxArray<float>* values,
                                              const LxAnnotationMap* annotations)
{
    AddParameterImpl(name, type, count, true, values, annotations);
}

void LxEffectBuilder::AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type,
                                              unsigned int count, const LxArray<int>* values,
                                              const LxAnnotationMap* annotations)
{
    AddParameterImpl(name, type, count, true, values, annotations);
}

void LxEffectBuilder::AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type,
                                              unsigned int count, const LxArray<bool>* values,
                                              const LxAnnotationMap* annotations)
{
    AddParameterImpl(name, type, count, true, values, annotations);
}

void LxEffectBuilder::AddTexture(const LxString& name, LxTextureSlot::Type type, const LxAnnotationMap* annotations)
{
    LxEffect* effect = GetCurrentEffect();
    if (effect->GetTextureSlot(name) || effect->GetUAVSlot(name))
    {
        ParseError("Texture slot redefinition: %s", name.c_str());
        return;
    }
    effect->AddTextureSlot(new LxTextureSlot(name, type, annotations));
}

void LxEffectBuilder::AddUAV(const LxString& name, LxUAVSlot::Type type, const LxAnnotationMap* annotations)
{
    LxEffect* effect = GetCurrentEffect();
    if (effect->GetTextureSlot(name) || effect->GetUAVSlot(name))
    {
        ParseError("UAV slot redefinition: %s", name.c_str());
        return;
    }
    effect->AddUAVSlot(new LxUAVSlot(name, type, annotations));
}

// --- samplers -----------------------------------------------------------------------------------------------------

void LxEffectBuilder::StartSampler(const LxString& name, const LxAnnotationMap* annotations)
{
    LxEffect* effect = GetCurrentEffect();
    if (m_pCurrentTechnique || m_pCurrentPass)
        ParseError("Sampler declaration must be outside pass and technique blocks");
    if (m_pCurrentSampler && m_bSamplerOrphan)
        delete m_pCurrentSampler;
    m_pCurrentSampler = nullptr;
    m_bSamplerOrphan = false;

    LxSampler* sampler = CreateSampler(name, effect, annotations, nullptr);
    if (!sampler)
    {
        ParseError("Error creating sampler: %s", name.c_str());
        sampler = new LxSampler(name, effect, annotations);
        m_bSamplerOrphan = true;
    }
    else if (effect->GetSampler(name))
    {
        ParseError("Sampler redefinition: %s", name.c_str());
        m_bSamplerOrphan = true;
    }
    else
        effect->AddSampler(sampler);
    m_pCurrentSampler = sampler;
}

void LxEffectBuilder::AddSamplerTexture(const LxString& name)
{
    if (!m_pCurrentSampler)
    {
        ParseError("Trying to set sampler texture outside of a Sampler {...} block");
        return;
    }
    if (m_pCurrentSampler->GetNumTextures() > 0)
    {
        ParseError("Sampler %s already has a texture", m_pCurrentSampler->GetName().c_str());
        return;
    }
    LxTextureSlot* slot = GetCurrentEffect()->GetTextureSlot(name);
    if (!slot)
    {
        ParseError("Trying to set undefined texture \"%s\" in sampler declaration \"%s\"", name.c_str(),
                   m_pCurrentSampler->GetName().c_str());
        return;
    }
    m_pCurrentSampler->AddTexture(slot);
}

void LxEffectBuilder::AddSamplerState(const LxString& name, const LxStateValue& value)
{
    if (!m_pCurrentSampler)
    {
        ParseError("Trying to set sampler state outside of a Sampler {...} block");
        return;
    }
    if (!m_pCurrentSampler->AddState(name, value))
        SetParseError(); // the sampler reported why
}

void LxEffectBuilder::EndSampler()
{
    if (!m_pCurrentSampler)
    {
        ParseError("EndSampler() without corresponding StartSampler()");
        return;
    }
    if (!m_bSamplerOrphan && !m_pCurrentSampler->CreateResources())
        SetParseError();
    if (m_bSamplerOrphan)
        delete m_pCurrentSampler;
    m_pCurrentSampler = nullptr;
    m_bSamplerOrphan = false;
}

// --- streams ------------------------------------------------------------------------------------------------------

void LxEffectBuilder::AddStream(const LxString& name, LxArray<LxVertexElement*>& elements,
                                const LxAnnotationMap* annotations)
{
    LxEffect* effect = GetCurrentEffect();
    if (effect->GetVertexStreamDecl(name))
    {
        ParseError("Vertex stream redefinition: %s", name.c_str());
        for (LxVertexElement* e : elements)
            delete e;
        elements.Clear();
        return;
    }
    LxVertexStreamDecl* decl = new LxVertexStreamDecl(name, annotations);
    for (LxVertexElement* e : elements)
        decl->AppendVertexElement(e);
    elements.Clear();
    effect->AddVertexStreamDecl(decl);
}

void LxEffectBuilder::AddStreamMap(const LxString& name, const LxArray<LxString>& streamNames,
                                   const LxAnnotationMap* annotations)
{
    LxEffect* effect = GetCurrentEffect();
    if (effect->GetStreamMap(name))
    {
        ParseError("Stream map redefinition: %s", name.c_str());
        return;
    }
    bool ok = true;
    LxStreamMap* map = new LxStreamMap(name, annotations);
    for (const LxString& stream : streamNames)
    {
        LxVertexStreamDecl* decl = effect->GetVertexStreamDecl(stream);
        if (!decl)
        {
            ParseError("Undefined vertex stream \"%s\" in stream map definition \"%s\"", stream.c_str(), name.c_str());
            ok = false;
        }
        map->AppendVertexStreamName(stream, decl);
    }
    if (ok)
        effect->AddStreamMap(map);
    else
        delete map;
}

// --- techniques ---------------------------------------------------------------------------------------------------

void LxEffectBuilder::StartTechnique(const LxString& name, bool isBase, bool isCompute)
{
    OpenTechnique(name, isBase, isCompute, nullptr);
}

void LxEffectBuilder::OpenTechnique(const LxString& name, bool isBase, bool isCompute, LxEffectTechnique* base)
{
    LxEffect* effect = GetCurrentEffect();
    if (m_pCurrentTechnique)
    {
        ParseError("Nested techniques are not allowed. Currently active technique is \"%s\"",
                   m_pCurrentTechnique->GetName().c_str());
        AbandonOpenScopes();
    }
    m_bTechniqueOrphan = false;
    if (effect->GetTechnique(name))
    {
        ParseError("Technique redefinition: %s", name.c_str());
        m_bTechniqueOrphan = true;
    }
    m_pCurrentTechnique = CreateTechnique(name, isBase, isCompute, base);
    if (!m_pCurrentTechnique)
    {
        ParseError("Error creating technique: %s", name.c_str());
        m_pCurrentTechnique = new LxEffectTechnique(name, effect, isBase, isCompute, base);
        m_bTechniqueOrphan = true;
    }
    m_inheritedPasses.Clear();
    m_passNamesOpened.Clear();
}

void LxEffectBuilder::StartInheritedTechnique(const LxString& name, const LxString& baseName, bool isBase,
                                              bool isCompute)
{
    LxEffectTechnique* base = GetCurrentEffect()->GetTechnique(baseName);
    if (!base)
    {
        ParseError("Technique \"%s\" is trying to derive from undefined base technique \"%s\"", name.c_str(),
                   baseName.c_str());
        StartTechnique(name, isBase, isCompute);
        return;
    }
    if (base->IsCompute() != isCompute)
    {
        ParseError("Technique \"%s\" cannot derive from \"%s\": compute and graphics techniques do not mix",
                   name.c_str(), baseName.c_str());
        StartTechnique(name, isBase, isCompute);
        return;
    }
    OpenTechnique(name, isBase, isCompute, base);
    // Every pass of the base is cloned; the derived technique may reopen a pass by name to change it.
    for (unsigned int i = 0; i < base->GetNumPasses(); ++i)
    {
        const LxEffectPass* basePass = base->GetPass(i);
        LxEffectPass* clone = basePass->Clone(basePass->GetName(), m_pCurrentTechnique, *this);
        if (!clone)
        {
            ParseError("Error creating pass: %s", basePass->GetName().c_str());
            continue;
        }
        m_pCurrentTechnique->AppendPass(clone);
        m_inheritedPasses.Add(clone);
    }
}

void LxEffectBuilder::AddTechniqueProperty(const LxString& property)
{
    if (!m_pCurrentTechnique)
    {
        ParseError("Trying to add a technique property outside of a Technique {...} block");
        return;
    }
    m_pCurrentTechnique->AddProperty(property);
}

void LxEffectBuilder::EndTechnique()
{
    if (!m_pCurrentTechnique)
    {
        ParseError("EndTechnique() without corresponding StartTechnique()");
        return;
    }
    if (m_pCurrentPass)
        EndPass();
    // Inherited passes nobody reopened follow the same end-of-pass rules as the technique's own passes.
    for (LxEffectPass* pass : m_inheritedPasses)
        CheckAndFinalizePass(pass);
    m_inheritedPasses.Clear();
    m_passNamesOpened.Clear();

    LxEffectTechnique* technique = m_pCurrentTechnique;
    if (!m_bTechniqueOrphan && !technique->IsBase() && !technique->IsCompute())
        AppendOverridePasses();
    m_pCurrentTechnique = nullptr;
    if (m_bTechniqueOrphan)
        delete technique;
    else
        GetCurrentEffect()->AddTechnique(technique);
    m_bTechniqueOrphan = false;
}

void LxEffectBuilder::AppendOverridePasses()
{
    LxEffectTechnique* technique = m_pCurrentTechnique;
    for (unsigned int o = 0; o < m_overrideTechniques.GetCount(); ++o)
    {
        const LxEffectTechnique* overrideTechnique = m_overrideTechniques[o];
        const LxEffectPass* overridePass = overrideTechnique ? overrideTechnique->GetPass(0u) : nullptr;
        const LxCountedPtr<LxEffectShader> pixel =
            overridePass ? overridePass->GetShader(LX_PIXEL_SHADER) : LxCountedPtr<LxEffectShader>();
        for (unsigned int p = 0; p < technique->GetNumPasses(); ++p)
        {
            if (!pixel)
            {
                technique->AppendOverridePass(o, nullptr);
                continue;
            }
            const LxEffectPass* pass = technique->GetPass(p);
            LxEffectPass* clone = pass->Clone(pass->GetName(), technique, *this);
            bool ok = clone != nullptr;
            if (ok)
            {
                // The override's pixel shader is compiled against this effect, whose parameters it reads.
                LxCountedPtr<LxEffectShader> shader =
                    CompileShader(LX_PIXEL_SHADER, pixel->GetCode(), pixel->GetEntryPoint(), pixel->GetLanguage(),
                                  pixel->GetOptions(), m_macros);
                ok = shader != nullptr;
                if (ok)
                {
                    clone->ClearBinaryShaderPair();
                    clone->SetShader(LX_PIXEL_SHADER, shader);
                }
                for (unsigned int s = 0; ok && s < overridePass->GetNumRenderStates(); ++s)
                    ok = clone->AddRenderState(overridePass->GetRenderState(s).name,
                                               overridePass->GetRenderState(s).value);
                ok = ok && FinalizePass(clone);
            }
            if (!ok)
            {
                ParseError("Error applying override technique %s", overrideTechnique->GetName().c_str());
                delete clone;
                clone = nullptr;
            }
            technique->AppendOverridePass(o, clone);
        }
    }
}

// --- passes -------------------------------------------------------------------------------------------------------

void LxEffectBuilder::StartPass(const LxString& name)
{
    if (!m_pCurrentTechnique)
    {
        ParseError("Pass block cannot be outside a Technique block");
        return;
    }
    if (m_pCurrentPass)
    {
        ParseError("Nested passes are not allowed. Currently active pass is \"%s\"", m_pCurrentPass->GetName().c_str());
        return;
    }
    m_bVertexShaderSet = false;
    m_bBinaryPairSet = false;
    m_bPassOrphan = false;

    LxEffectPass* existing = m_pCurrentTechnique->GetPass(name);
    const int inherited = existing ? m_inheritedPasses.Find(existing) : -1;
    if (inherited >= 0)
    {
        // Reopening an inherited pass: its shaders and states may be overridden once more.
        m_inheritedPasses.RemoveAt(static_cast<unsigned int>(inherited));
        m_passNamesOpened.Add(name);
        m_pCurrentPass = existing;
        return;
    }
    LxEffectPass* pass = CreatePass(name, m_pCurrentTechnique);
    if (!pass)
    {
        ParseError("Error creating pass: %s", name.c_str());
        pass = new LxEffectPass(name, m_pCurrentTechnique);
        m_bPassOrphan = true;
    }
    else if (existing)
    {
        ParseError("Pass redefinition: %s", name.c_str());
        m_bPassOrphan = true;
    }
    m_passNamesOpened.Add(name);
    m_pCurrentPass = pass;
}

void LxEffectBuilder::SetStreamMap(const LxString& name)
{
    if (!m_pCurrentPass)
    {
        ParseError("SetStreamMap outside of a Pass {...} block");
        return;
    }
    LxStreamMap* map = GetCurrentEffect()->GetStreamMap(name);
    if (!map)
    {
        ParseError("Undefined stream map: %s", name.c_str());
        return;
    }
    if (!m_pCurrentPass->SetStreamMap(map))
        SetParseError();
}

void LxEffectBuilder::SetStreamOutMap(unsigned int index, const LxString& name)
{
    if (!m_pCurrentPass)
    {
        ParseError("SetStreamOutMap outside of a Pass {...} block");
        return;
    }
    LxStreamMap* map = GetCurrentEffect()->GetStreamMap(name);
    if (!map)
    {
        ParseError("Undefined stream map: %s", name.c_str());
        return;
    }
    if (!m_pCurrentPass->SetStreamOutMap(index, map))
        SetParseError();
}

void LxEffectBuilder::ClearStreamOutMap(unsigned int index)
{
    if (!m_pCurrentPass)
    {
        ParseError("SetStreamOutMap outside of a Pass {...} block");
        return;
    }
    if (!m_pCurrentPass->SetStreamOutMap(index, nullptr))
        SetParseError();
}

void LxEffectBuilder::AddRenderState(const LxString& name, const LxStateValue& value)
{
    if (!m_pCurrentPass)
    {
        ParseError("Trying to set render state outside of a Pass {...} block");
        return;
    }
    if (m_pCurrentTechnique && m_pCurrentTechnique->IsCompute())
    {
        ParseError("Computer Shaders do not support render state.");
        return;
    }
    if (!m_pCurrentPass->AddRenderState(name, value))
        SetParseError();
}

bool LxEffectBuilder::ValidateShaderAnnotations(LxShaderType type, const LxAnnotationMap& options,
                                                LxShadingLanguage& language, LxString& entryPoint, LxString& dumpFile)
{
    (void)type;
    bool ok = true;
    language = LX_SHADING_LANGUAGE_UNDEFINED;
    auto setLanguage = [&](LxShadingLanguage l)
    {
        if (language != LX_SHADING_LANGUAGE_UNDEFINED && language != l)
        {
            ParseError("Shading language redefinition in shader options");
            ok = false;
        }
        language = l;
    };
    bool languageNamed = false;
    if (options.ValueExists("HLSL"))
    {
        setLanguage(LX_SHADING_LANGUAGE_HLSL);
        languageNamed = true;
    }
    if (options.ValueExists("GLSL"))
    {
        setLanguage(LX_SHADING_LANGUAGE_GLSL);
        languageNamed = true;
    }
    LxCountedPtr<LxAnnotationValue> named = options.LookupValue("Language");
    if (named)
    {
        languageNamed = true;
        const LxString text = named->IsString() ? named->GetString() : LxString();
        if (text == "HLSL")
            setLanguage(LX_SHADING_LANGUAGE_HLSL);
        else if (text == "GLSL")
            setLanguage(LX_SHADING_LANGUAGE_GLSL);
    }
    if (!languageNamed)
        language = LX_SHADING_LANGUAGE_HLSL; // the default
    if (language == LX_SHADING_LANGUAGE_UNDEFINED)
    {
        ParseError("Shading language undefined for this shader");
        ok = false;
    }

    entryPoint = "main";
    LxCountedPtr<LxAnnotationValue> entry = options.LookupValue("EntryPoint");
    if (entry)
    {
        if (entry->IsString())
            entryPoint = entry->GetString();
        else
        {
            ParseError("Shader option \"EntryPoint\" must be a string");
            ok = false;
        }
    }
    dumpFile.Clear();
    LxCountedPtr<LxAnnotationValue> dump = options.LookupValue("Dump");
    if (dump)
    {
        if (dump->IsString())
            dumpFile = dump->GetString();
        else
        {
            ParseError("Shader option \"Dump\" must be a string");
            ok = false;
        }
    }
    LxCountedPtr<LxAnnotationValue> profile = options.LookupValue("Profile");
    if (profile && !profile->IsString())
    {
        // A warning: the shader still builds, with the profile the stage and feature level give.
        LxString text;
        if (m_pParser)
            text.Format("%s(%u) : ", m_pParser->GetCurrentEffectFileName().c_str(), m_pParser->GetCurrentLineNumber());
        text.Append("Ignoring shader annotation \"Profile\" because it is not of type STRING.");
        LxLogManager::GetRef().LogMessage(text, LX_LOG_WARNING, nullptr, 0);
    }
    if (options.ValueExists("AvoidFlowControl") && options.ValueExists("PreferFlowControl"))
    {
        ParseError("AvoidFlowControl and PreferFlowControl are mutually exclusive.");
        ok = false;
    }
    if (options.ValueExists("EnableD3D9Compatibility"))
    {
        ParseError("D3D9 compatibility mode is no longer supported for D3D12.");
        ok = false;
    }
    return ok;
}

LxCountedPtr<LxEffectShader> LxEffectBuilder::CompileShader(LxShaderType type, const LxShaderCodeBlock& code,
                                                            const LxString& entryPoint, LxShadingLanguage language,
                                                            const LxAnnotationMap& options,
                                                            const LxArray<LxShaderMacro>& macros)
{
    (void)macros;
    LxShaderCodePreprocessor preprocessor;
    preprocessor.SetCodeBlocks(&GetCurrentEffect()->GetCodeBlocks());
    LxString text;
    if (!preprocessor.Process(code.text, code.firstLine, code.fileName, language, text))
    {
        SetParseError();
        return LxCountedPtr<LxEffectShader>();
    }
    LxEffectShader* shader = new LxEffectShader(type, code, entryPoint, language, options);
    shader->SetPreprocessedSource(text);
    return LxCountedPtr<LxEffectShader>(shader);
}

void LxEffectBuilder::AddShader(LxShaderType type, LxShaderCodeBlock& code, const LxAnnotationMap* options)
{
    if (!m_pCurrentPass)
    {
        ParseError("Trying to create shader outside of a Pass {...} block");
        return;
    }
    const bool compute = m_pCurrentTechnique && m_pCurrentTechnique->IsCompute();
    if (compute && type != LX_COMPUTE_SHADER)
    {
        ParseError("Compute techniques can only have Compute Shader passes");
        return;
    }
    if (!compute && type == LX_COMPUTE_SHADER)
    {
        ParseError("Compute shaders are only allowed in ComputeTechnique blocks");
        return;
    }
    if (type == LX_VERTEX_SHADER)
    {
        if (m_bVertexShaderSet)
        {
            ParseError("%s", "Vertex shader redefinition in pass \"%\"");
            return;
        }
        m_bVertexShaderSet = true;
    }
    const LxAnnotationMap noOptions;
    const LxAnnotationMap& opts = options ? *options : noOptions;
    LxShadingLanguage language = LX_SHADING_LANGUAGE_HLSL;
    LxString entryPoint, dumpFile;
    if (!ValidateShaderAnnotations(type, opts, language, entryPoint, dumpFile))
        return;
    code.language = language;
    LxCountedPtr<LxEffectShader> shader = CompileShader(type, code, entryPoint, language, opts, m_macros);
    if (!shader)
    {
        SetParseError();
        return;
    }
    if (type == LX_VERTEX_SHADER || type == LX_PIXEL_SHADER)
        m_pCurrentPass->ClearBinaryShaderPair();
    m_pCurrentPass->SetShader(type, shader);
}

void LxEffectBuilder::RemoveShaderFromCurrentPass(LxShaderType type)
{
    if (m_pCurrentPass)
        m_pCurrentPass->RemoveShader(type);
}

void LxEffectBuilder::DisableShader(LxShaderType type)
{
    if (!m_pCurrentPass)
    {
        ParseError("Trying to reset a shader outside of a Pass {...} block");
        return;
    }
    RemoveShaderFromCurrentPass(type);
}

bool LxEffectBuilder::CompileBinaryShaderPair(const LxString& fileName, const LxCountedPtr<LxMemoryBuffer>& data)
{
    if (!m_pCurrentPass)
        return false;
    m_pCurrentPass->SetBinaryShaderPair(fileName, data);
    return true;
}

void LxEffectBuilder::AddBinaryShaderPair(const LxString& fileName)
{
    if (!m_pCurrentPass)
    {
        ParseError("Trying to create binary shader pair outside of a Pass {...} block");
        return;
    }
    if (m_bBinaryPairSet)
    {
        ParseError("%s", "Binary shader pair redefinition in pass \"%\"");
        return;
    }
    m_bBinaryPairSet = true;
    if (fileName.IsEmpty())
    {
        m_pCurrentPass->ClearBinaryShaderPair();
        return;
    }
    const LxString relativeTo = m_pParser ? m_pParser->GetCurrentEffectFileName() : m_effectName;
    LxString contents;
    bool found = false;
    if (!LxEffectParser::LoadEffectFileContents(m_pFileArchive, relativeTo, fileName, contents, &found))
    {
        ParseError("%s",
                   found ? "Error reading data in binary shader file \"%\"" : "Error opening binary shader file \"%\"");
        return;
    }
    if (contents.IsEmpty())
    {
        ParseError("%s", "No data in binary shader file \"%\"");
        return;
    }
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(contents.GetLength());
    if (!buffer)
    {
        ParseError("%s", "Error reading data in binary shader file \"%\"");
        return;
    }
    std::memcpy(buffer->GetData(), contents.c_str(), contents.GetLength());
    if (!CompileBinaryShaderPair(fileName, LxCountedPtr<LxMemoryBuffer>(buffer)))
        SetParseError();
}

bool LxEffectBuilder::FinalizePass(LxEffectPass* pass)
{
    (void)pass;
    return true;
}

bool LxEffectBuilder::CheckAndFinalizePass(LxEffectPass* pass)
{
    const LxEffectTechnique* technique = pass->GetTechnique();
    if (!technique || technique->IsBase())
        return true; // abstract: completed by the techniques that inherit it
    bool ok = true;
    if (technique->IsCompute())
    {
        bool graphics = false;
        for (unsigned int t = 0; t < LX_NUM_SHADER_TYPES; ++t)
            graphics = graphics || (t != LX_COMPUTE_SHADER && pass->HasShader(LxShaderType(t)));
        if (graphics || !pass->HasShader(LX_COMPUTE_SHADER) || pass->HasBinaryShaderPair())
        {
            ParseError("Compute techniques can only have Compute Shader passes");
            ok = false;
        }
    }
    else
    {
        if (!pass->HasShader(LX_VERTEX_SHADER) && !pass->HasBinaryShaderPair())
        {
            ParseError("Pass does not have a vertex shader!  All non-abstract effect passes must define or inherit a "
                       "vertex shader");
            ok = false;
        }
        if (pass->HasShader(LX_HULL_SHADER) != pass->HasShader(LX_DOMAIN_SHADER))
        {
            ParseError("Effect pass defines a hull shader without a domain shader (or vice versa).  Hull and domain "
                       "shaders must appear together");
            ok = false;
        }
    }
    if (ok && !FinalizePass(pass))
    {
        if (technique->IsCompute())
            ParseError("Error finalizing compute effect pass named: '%s' in technique named: '%s'",
                       pass->GetName().c_str(), technique->GetName().c_str());
        else
            ParseError("Error finalizing effect pass named: '%s' in technique named: '%s'", pass->GetName().c_str(),
                       technique->GetName().c_str());
        ok = false;
    }
    return ok;
}

void LxEffectBuilder::EndPass()
{
    if (!m_pCurrentPass)
    {
        ParseError("EndPass() without corresponding StartPass()");
        return;
    }
    LxEffectPass* pass = m_pCurrentPass;
    m_pCurrentPass = nullptr;
    if (m_bPassOrphan)
    {
        delete pass;
        m_bPassOrphan = false;
        return;
    }
    CheckAndFinalizePass(pass);
    if (m_pCurrentTechnique && m_pCurrentTechnique->GetPass(pass->GetName()) != pass)
        m_pCurrentTechnique->AppendPass(pass);
}

void LxEffectBuilder::EndEffect()
{
    AbandonOpenScopes();
    // Overrides apply to every effect, also to one without an "Options" block.
    if (!m_optionOverrides.IsEmpty())
    {
        LxAnnotationMap options = GetCurrentEffect()->GetOptions();
        options.Merge(m_optionOverrides);
        GetCurrentEffect()->SetOptions(options);
    }
    if (!GetCurrentEffect()->Finalize())
        SetParseError();
}

LxEffect* LxEffectBuilder::GetResult()
{
    if (m_bResultTaken)
        return nullptr;
    m_bResultTaken = true;
    LxEffect* effect = m_pEffect;
    m_pEffect = nullptr;
    if (m_bParseError)
    {
        delete effect;
        return nullptr;
    }
    return effect;
}

// --- factories ----------------------------------------------------------------------------------------------------

LxEffect* LxEffectBuilder::CreateEffect(const LxString& name)
{
    return new LxEffect(name);
}

LxEffectTechnique* LxEffectBuilder::CreateTechnique(const LxString& name, bool isBase, bool isCompute,
                                                    LxEffectTechnique* baseTechnique)
{
    return new LxEffectTechnique(name, GetCurrentEffect(), isBase, isCompute, baseTechnique);
}

LxEffectPass* LxEffectBuilder::CreatePass(const LxString& name, LxEffectTechnique* technique)
{
    return new LxEffectPass(name, technique);
}

LxSampler* LxEffectBuilder::CreateSampler(const LxString& name, LxEffect* effect, const LxAnnotationMap* annotations,
                                          const LxSampler* templateSampler)
{
    (void)templateSampler;
    return new LxSampler(name, effect, annotations);
}
