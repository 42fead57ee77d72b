#include "EffectManager/LxEffectPass.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxEffectBuilder.h"

LxEffectPass::LxEffectPass(const LxString& name, LxEffectTechnique* technique) : m_name(name), m_pTechnique(technique)
{
}

const LxCountedPtr<LxEffectShader>& LxEffectPass::GetShader(LxShaderType type) const
{
    static const LxCountedPtr<LxEffectShader> s_none;
    return static_cast<unsigned int>(type) < LX_NUM_SHADER_TYPES ? m_shaders[type] : s_none;
}

void LxEffectPass::SetShader(LxShaderType type, const LxCountedPtr<LxEffectShader>& shader)
{
    if (static_cast<unsigned int>(type) < LX_NUM_SHADER_TYPES)
        m_shaders[type] = shader;
}

void LxEffectPass::RemoveShader(LxShaderType type)
{
    if (static_cast<unsigned int>(type) < LX_NUM_SHADER_TYPES)
        m_shaders[type] = nullptr;
}

void LxEffectPass::SetBinaryShaderPair(const LxString& fileName, const LxCountedPtr<LxMemoryBuffer>& data)
{
    m_binaryPairFile = fileName;
    m_binaryPair = data;
}

void LxEffectPass::ClearBinaryShaderPair()
{
    m_binaryPairFile.Clear();
    m_binaryPair = nullptr;
}

bool LxEffectPass::AddRenderState(const LxString& name, const LxStateValue& value)
{
    m_renderStates.Add(LxNamedState{name, value});
    return true;
}

const LxStateValue* LxEffectPass::FindRenderState(const LxString& name) const
{
    for (unsigned int i = m_renderStates.GetCount(); i-- > 0;)
        if (m_renderStates[i].name == name)
            return &m_renderStates[i].value;
    return nullptr;
}

bool LxEffectPass::SetStreamMap(LxStreamMap* map)
{
    m_pStreamMap = map;
    return true;
}

bool LxEffectPass::SetStreamOutMap(unsigned int index, LxStreamMap* map)
{
    if (index >= MAX_STREAM_OUT_MAPS)
        return false;
    m_pStreamOutMaps[index] = map;
    return true;
}

void LxEffectPass::CopyFrom(const LxEffectPass& other)
{
    for (unsigned int i = 0; i < LX_NUM_SHADER_TYPES; ++i)
        m_shaders[i] = other.m_shaders[i];
    m_renderStates = other.m_renderStates;
    m_pStreamMap = other.m_pStreamMap;
    for (unsigned int i = 0; i < MAX_STREAM_OUT_MAPS; ++i)
        m_pStreamOutMaps[i] = other.m_pStreamOutMaps[i];
    m_binaryPairFile = other.m_binaryPairFile;
    m_binaryPair = other.m_binaryPair;
}

LxEffectPass* LxEffectPass::Clone(const LxString& name, LxEffectTechnique* technique, LxEffectBuilder& factory) const
{
    LxEffectPass* pass = factory.CreatePass(name, technique);
    if (pass)
        pass->CopyFrom(*this);
    return pass;
}

bool LxEffectPass::Bind(LxEffect& effect)
{
    (void)effect;
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxEffectPass::Bind");
    return false;
}

void LxEffectPass::Unbind(LxEffect& effect)
{
    (void)effect;
}
