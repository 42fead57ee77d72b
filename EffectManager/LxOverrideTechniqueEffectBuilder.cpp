#include "EffectManager/LxOverrideTechniqueEffectBuilder.h"

void LxOverrideTechniqueEffectBuilder::AddCodeBlock(LxShaderCodeBlock* block)
{
    delete block;
    ParseError("Code blocks not supported for override technique effect files.");
}

#define LX_REFUSE_PARAMETERS                                                                                           \
    ParseError("Effect parameter declarations not supported for override technique effect files.")

void LxOverrideTechniqueEffectBuilder::AddEffectParameter(const LxString&, LxEffectParameter::DataType,
                                                          const LxArray<float>*, const LxAnnotationMap*)
{
    LX_REFUSE_PARAMETERS;
}
void LxOverrideTechniqueEffectBuilder::AddEffectParameter(const LxString&, LxEffectParameter::DataType,
                                                          const LxArray<int>*, const LxAnnotationMap*)
{
    LX_REFUSE_PARAMETERS;
}
void LxOverrideTechniqueEffectBuilder::AddEffectParameter(const LxString&, LxEffectParameter::DataType,
                                                          const LxArray<bool>*, const LxAnnotationMap*)
{
    LX_REFUSE_PARAMETERS;
}
void LxOverrideTechniqueEffectBuilder::AddEffectParameterArray(const LxString&, LxEffectParameter::DataType,
                                                               unsigned int, const LxArray<float>*,
                                                               const LxAnnotationMap*)
{
    LX_REFUSE_PARAMETERS;
}
void LxOverrideTechniqueEffectBuilder::AddEffectParameterArray(const LxString&, LxEffectParameter::DataType,
                                                               unsigned int, const LxArray<int>*,
                                                               const LxAnnotationMap*)
{
    LX_REFUSE_PARAMETERS;
}
void LxOverrideTechniqueEffectBuilder::AddEffectParameterArray(const LxString&, LxEffectParameter::DataType,
                                                               unsigned int, const LxArray<bool>*,
                                                               const LxAnnotationMap*)
{
    LX_REFUSE_PARAMETERS;
}
#undef LX_REFUSE_PARAMETERS

void LxOverrideTechniqueEffectBuilder::AddTexture(const LxString&, LxTextureSlot::Type, const LxAnnotationMap*)
{
    ParseError("Texture declarations not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::AddUAV(const LxString&, LxUAVSlot::Type, const LxAnnotationMap*)
{
    ParseError("Texture declarations not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::StartSampler(const LxString&, const LxAnnotationMap*)
{
    ParseError("Sampler declarations not supported for override technique effect files.");
    m_bInRefusedSampler = true;
}

void LxOverrideTechniqueEffectBuilder::AddSamplerTexture(const LxString& name)
{
    if (!m_bInRefusedSampler)
        LxEffectBuilder::AddSamplerTexture(name);
}

void LxOverrideTechniqueEffectBuilder::AddSamplerState(const LxString& name, const LxStateValue& value)
{
    if (!m_bInRefusedSampler)
        LxEffectBuilder::AddSamplerState(name, value);
}

void LxOverrideTechniqueEffectBuilder::EndSampler()
{
    if (m_bInRefusedSampler)
        m_bInRefusedSampler = false;
    else
        LxEffectBuilder::EndSampler();
}

void LxOverrideTechniqueEffectBuilder::AddStream(const LxString&, LxArray<LxVertexElement*>& elements,
                                                 const LxAnnotationMap*)
{
    for (LxVertexElement* e : elements)
        delete e;
    elements.Clear();
    ParseError("Vertex stream declarations not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::AddStreamMap(const LxString&, const LxArray<LxString>&, const LxAnnotationMap*)
{
    ParseError("Stream map declarations not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::StartTechnique(const LxString& name, bool isBase, bool isCompute)
{
    if (isBase)
        ParseError("Base techniques not supported for override technique effect files.");
    if (isCompute)
        ParseError("Only pixel shaders are supported for override technique effect files.");
    m_nPassesInTechnique = 0;
    LxEffectBuilder::StartTechnique(name, isBase, isCompute);
}

void LxOverrideTechniqueEffectBuilder::StartInheritedTechnique(const LxString& name, const LxString&, bool isBase,
                                                               bool isCompute)
{
    ParseError("Technique inheritance not supported for override technique effect files.");
    StartTechnique(name, isBase, isCompute);
}

void LxOverrideTechniqueEffectBuilder::AddTechniqueProperty(const LxString&)
{
    ParseError("Technique properties not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::StartPass(const LxString& name)
{
    if (GetCurrentTechnique() && ++m_nPassesInTechnique > 1)
    {
        ParseError("Only one override pass per technique is allowed in override technique effect files.");
        m_bInRefusedPass = true;
        return;
    }
    LxEffectBuilder::StartPass(name);
}

void LxOverrideTechniqueEffectBuilder::SetStreamMap(const LxString&)
{
    ParseError("StreamMap setting not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::SetStreamOutMap(unsigned int, const LxString&)
{
    ParseError("StreamOutMap setting not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::ClearStreamOutMap(unsigned int)
{
    ParseError("StreamOutMap setting not supported for override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::AddShader(LxShaderType type, LxShaderCodeBlock& code,
                                                 const LxAnnotationMap* options)
{
    if (m_bInRefusedPass)
        return;
    if (type != LX_PIXEL_SHADER)
    {
        ParseError("Only pixel shaders are supported for override technique effect files.");
        return;
    }
    LxEffectBuilder::AddShader(type, code, options);
}

void LxOverrideTechniqueEffectBuilder::DisableShader(LxShaderType)
{
    ParseError("Setting shader stages to NULL isn't currently supported in override technique effect files.");
}

void LxOverrideTechniqueEffectBuilder::EndPass()
{
    if (m_bInRefusedPass)
    {
        m_bInRefusedPass = false;
        return;
    }
    LxEffectPass* pass = GetCurrentPass();
    if (pass && !pass->HasShader(LX_PIXEL_SHADER))
        ParseError("Only pixel shaders are supported for override technique effect files.");
    LxEffectBuilder::EndPass();
}

bool LxOverrideTechniqueEffectBuilder::CheckAndFinalizePass(LxEffectPass* pass)
{
    (void)pass;
    return true;
}

void LxOverrideTechniqueEffectBuilder::EndTechnique()
{
    m_nPassesInTechnique = 0;
    LxEffectBuilder::EndTechnique();
}

LxCountedPtr<LxEffectShader>
LxOverrideTechniqueEffectBuilder::CompileShader(LxShaderType type, const LxShaderCodeBlock& code,
                                                const LxString& entryPoint, LxShadingLanguage language,
                                                const LxAnnotationMap& options, const LxArray<LxShaderMacro>&)
{
    return LxCountedPtr<LxEffectShader>(new LxEffectShader(type, code, entryPoint, language, options));
}
