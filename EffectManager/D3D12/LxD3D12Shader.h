// LxD3D12Shader: a compiled HLSL stage of an effect: the bytecode and what reflection found in it, resolved
// against the effect: the constant buffers by register (each backed by the effect's LxConstantBufferCache), and the
// texture slots, UAV slots and samplers by register. Passes build their root signatures from these tables and bind
// from them at draw time.
//
// Built by LxD3D12EffectBuilder::CompileShader; immutable afterwards and shared by the passes that use it (inherited
// and override passes). The constant-buffer entries belong to the effect's cache.
#pragma once

#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "EffectManager/D3D12/LxConstantBufferCache.h"
#include "EffectManager/LxEffectShader.h"

#include <d3d12.h>

class LxSampler;
class LxTextureSlot;
class LxUAVSlot;

class LX_API LxD3D12Shader : public LxEffectShader
{
public:
    struct ConstantBufferBinding
    {
        unsigned int reg = 0; // register b<reg>
        LxConstantBufferCache::Entry* buffer = nullptr;
    };

    LxD3D12Shader(LxShaderType type, const LxShaderCodeBlock& code, const LxString& entryPoint,
                  LxShadingLanguage language, const LxAnnotationMap& options);

    void SetByteCode(const LxCountedPtr<LxMemoryBuffer>& code) { m_byteCode = code; }
    const LxCountedPtr<LxMemoryBuffer>& GetByteCode() const { return m_byteCode; }
    D3D12_SHADER_BYTECODE GetD3D12ByteCode() const;

    // --- reflection, filled by the builder -----------------------------------------------------------------------
    LxArray<ConstantBufferBinding>& GetConstantBuffers() { return m_constantBuffers; }
    const LxArray<ConstantBufferBinding>& GetConstantBuffers() const { return m_constantBuffers; }
    // Indexed by register (t, u, s); null where a register is unused.
    LxArray<LxTextureSlot*>& GetTextures() { return m_textures; }
    const LxArray<LxTextureSlot*>& GetTextures() const { return m_textures; }
    LxArray<LxUAVSlot*>& GetUAVs() { return m_uavs; }
    const LxArray<LxUAVSlot*>& GetUAVs() const { return m_uavs; }
    LxArray<LxSampler*>& GetSamplers() { return m_samplers; }
    const LxArray<LxSampler*>& GetSamplers() const { return m_samplers; }

private:
    LxCountedPtr<LxMemoryBuffer> m_byteCode;
    LxArray<ConstantBufferBinding> m_constantBuffers;
    LxArray<LxTextureSlot*> m_textures;
    LxArray<LxUAVSlot*> m_uavs;
    LxArray<LxSampler*> m_samplers;
};
