// LxEffectPass: one pass of a technique: a shader per stage, render states, the stream map and up to four
// stream-out maps, or a binary shader pair.
//
// The generic pass records what the effect file says; the platform pass (LxD3D12EffectPass, LxD3D12ComputePass)
// derives from it, turns the record into a root signature and a pipeline state when the builder finalizes it, and
// implements Bind/Unbind, which LxEffect::BeginPass/EndPass call. Stream maps belong to the effect; shaders are
// shared. A pass belongs to its technique, which deletes it.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffectShader.h"
#include "EffectManager/LxShaderType.h"
#include "EffectManager/LxStateValue.h"

class LxEffect;
class LxEffectBuilder;
class LxEffectTechnique;
class LxStreamMap;

class LX_API LxEffectPass
{
public:
    enum
    {
        MAX_STREAM_OUT_MAPS = 4
    };

    LxEffectPass(const LxString& name, LxEffectTechnique* technique);
    virtual ~LxEffectPass() = default;
    LxEffectPass(const LxEffectPass&) = delete;
    LxEffectPass& operator=(const LxEffectPass&) = delete;

    const LxString& GetName() const { return m_name; }
    LxEffectTechnique* GetTechnique() const { return m_pTechnique; }

    // --- shaders ------------------------------------------------------------------------------------------------
    const LxCountedPtr<LxEffectShader>& GetShader(LxShaderType type) const;
    bool HasShader(LxShaderType type) const { return GetShader(type) != nullptr; }
    virtual void SetShader(LxShaderType type, const LxCountedPtr<LxEffectShader>& shader);
    virtual void RemoveShader(LxShaderType type);

    // A precompiled vertex and pixel shader pair read from a file; replaces the two stages when present.
    void SetBinaryShaderPair(const LxString& fileName, const LxCountedPtr<LxMemoryBuffer>& data);
    void ClearBinaryShaderPair();
    bool HasBinaryShaderPair() const { return m_binaryPair != nullptr; }
    const LxString& GetBinaryShaderPairFile() const { return m_binaryPairFile; }
    const LxCountedPtr<LxMemoryBuffer>& GetBinaryShaderPair() const { return m_binaryPair; }

    // --- states and streams -------------------------------------------------------------------------------------
    // Records the state; the platform pass checks and applies it and returns false (after a message) to refuse.
    virtual bool AddRenderState(const LxString& name, const LxStateValue& value);
    unsigned int GetNumRenderStates() const { return m_renderStates.GetCount(); }
    const LxNamedState& GetRenderState(unsigned int index) const { return m_renderStates[index]; }
    // The last value given to `name`, or null.
    const LxStateValue* FindRenderState(const LxString& name) const;

    virtual bool SetStreamMap(LxStreamMap* map);
    LxStreamMap* GetStreamMap() const { return m_pStreamMap; }
    // index below MAX_STREAM_OUT_MAPS; null clears the map.
    virtual bool SetStreamOutMap(unsigned int index, LxStreamMap* map);
    LxStreamMap* GetStreamOutMap(unsigned int index) const
    {
        return index < MAX_STREAM_OUT_MAPS ? m_pStreamOutMaps[index] : nullptr;
    }

    // Copies shaders, binary pair, render states and stream maps of `other` (technique inheritance and override
    // passes). The platform pass extends it with its own state.
    virtual void CopyFrom(const LxEffectPass& other);
    // A new pass of the builder's kind (CreatePass) named `name` in `technique`, holding a copy of this pass; null
    // when the factory fails.
    LxEffectPass* Clone(const LxString& name, LxEffectTechnique* technique, LxEffectBuilder& factory) const;

    // --- drawing ------------------------------------------------------------------------------------------------
    // Makes the pass current on the device for `effect`; the generic pass cannot draw and reports so.
    virtual bool Bind(LxEffect& effect);
    virtual void Unbind(LxEffect& effect);

protected:
    LxString m_name;
    LxEffectTechnique* m_pTechnique;
    LxCountedPtr<LxEffectShader> m_shaders[LX_NUM_SHADER_TYPES];
    LxArray<LxNamedState> m_renderStates;
    LxStreamMap* m_pStreamMap = nullptr;
    LxStreamMap* m_pStreamOutMaps[MAX_STREAM_OUT_MAPS] = {nullptr, nullptr, nullptr, nullptr};
    LxString m_binaryPairFile;
    LxCountedPtr<LxMemoryBuffer> m_binaryPair;
};
