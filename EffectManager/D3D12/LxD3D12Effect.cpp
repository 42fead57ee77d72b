#include "EffectManager/D3D12/LxD3D12Effect.h"

LxD3D12Effect::LxD3D12Effect(const LxString& name) : LxEffect(name) {}

LxD3D12Effect::~LxD3D12Effect()
{
    // The parameters outlive the buffers (the base class deletes them): they take their values back first.
    m_constantBuffers.ReleaseStorage();
}
