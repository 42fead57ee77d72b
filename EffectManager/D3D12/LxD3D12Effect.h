// LxD3D12Effect: an effect built for Direct3D 12. Beside the generic effect it owns the constant buffers its
// shaders declare (LxConstantBufferCache), whose memory backs its parameters.
#pragma once

#include "EffectManager/D3D12/LxConstantBufferCache.h"
#include "EffectManager/LxEffect.h"

class LX_API LxD3D12Effect : public LxEffect
{
public:
    explicit LxD3D12Effect(const LxString& name);
    ~LxD3D12Effect() override;

    LxConstantBufferCache& GetConstantBufferCache() { return m_constantBuffers; }

private:
    LxConstantBufferCache m_constantBuffers;
};
