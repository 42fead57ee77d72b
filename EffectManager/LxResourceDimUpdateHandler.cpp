#include "EffectManager/LxResourceDimUpdateHandler.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectManager.h"
#include "GPUResourceManager/LxGPUTexture.h"

LxResourceDimUpdateHandler::LxResourceDimUpdateHandler(const LxString& slotName, bool inverse)
    : m_slotName(slotName), m_bInverse(inverse)
{
}

bool LxResourceDimUpdateHandler::GetDimensions(const LxEffect& effect, float* dimensions) const
{
    const LxTextureSlot* slot = effect.GetTextureSlot(m_slotName);
    if (!slot)
    {
        LX_ERROR("Texture slot named: '%s' not found", m_slotName.c_str());
        return false;
    }
    const LxCountedPtr<LxGPUSamplingResourceView> view = effect.GetBoundTexture(slot);
    const LxGPUResource* resource = view ? view->GetResource() : nullptr;
    if (!resource)
    {
        LX_ERROR("No texture bound to slot: '%s'.  Cannot retrieve resource dimensions.", m_slotName.c_str());
        return false;
    }
    const LxGPUResource::Type type = resource->GetType();
    if (type != LxGPUResource::TEXTURE_2D_ARRAY && type != LxGPUResource::TEXTURE_3D &&
        type != LxGPUResource::TEXTURE_CUBE_ARRAY)
    {
        LX_ERROR("Resource bound to slot: %s is not a texture.  Retrieval of dimensions for buffers is not supported.",
                 m_slotName.c_str());
        return false;
    }
    // Every resource of a texture type is an LxGPUTexture.
    const LxGPUTexture* texture = static_cast<const LxGPUTexture*>(resource);
    dimensions[0] = static_cast<float>(texture->GetWidth());
    dimensions[1] = static_cast<float>(texture->GetHeight());
    dimensions[2] = type == LxGPUResource::TEXTURE_3D ? static_cast<float>(texture->GetDepthOrArraySize()) : 1.0f;
    return true;
}

void LxResourceDimUpdateHandler::Update(LxEffectParameter& parameter, void* data, unsigned int size)
{
    (void)parameter;
    const LxEffectManager* manager = LxEffectManager::GetExistingPtr();
    const LxEffect* effect = manager ? manager->GetCurrentDrawEffect() : nullptr;
    if (!effect)
        return; // not drawing: there is no slot to read
    if (size < 3 * sizeof(float))
    {
        LX_ERROR("Buffer for 'ResourceDimensions' app-update is too small.");
        return;
    }
    float dimensions[3];
    if (!GetDimensions(*effect, dimensions))
        return;
    float* out = static_cast<float*>(data);
    for (int i = 0; i < 3; ++i)
        out[i] = m_bInverse ? (dimensions[i] != 0.0f ? 1.0f / dimensions[i] : 0.0f) : dimensions[i];
}
