#include "EffectManager/LxTextureSlot.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxGPUResource.h"

LxTextureSlot::LxTextureSlot(const LxString& name, Type type, const LxAnnotationMap* annotations)
    : LxShaderResourceSlot(name, annotations), m_type(type)
{
}

const char* LxTextureSlot::TypeToString(Type type)
{
    static const char* const names[NUM_TYPES] = {"Buffer",           "Texture2D",        "Texture3D",
                                                 "TextureCube",      "Texture2DArray",   "TextureCubeArray",
                                                 "StructuredBuffer", "ByteAddressBuffer"};
    return static_cast<unsigned int>(type) < NUM_TYPES ? names[type] : "Unknown";
}

void LxTextureSlot::CheckViewParamsForType(const LxSlotViewParams& p) const
{
    const bool wSlice = p.present[LxSlotViewParams::W_SIZE] || p.present[LxSlotViewParams::FIRST_W_SLICE];
    const bool arraySlice = p.present[LxSlotViewParams::ARRAY_SIZE] || p.present[LxSlotViewParams::FIRST_ARRAY_SLICE];
    if ((m_type == TEXTURE_2D || m_type == TEXTURE_2D_ARRAY) && wSlice)
        LX_ERROR("W slice annotations are not used on views of Texture2D slots.  Are you confused??");
    else if (m_type == TEXTURE_3D && arraySlice)
        LX_ERROR("Array slice annotations are not used on views of Texture3D slots.  Are you confused??");
    else if ((m_type == TEXTURE_CUBE || m_type == TEXTURE_CUBE_ARRAY) && wSlice)
        LX_ERROR("W slice annotations are not used on views of TextureCube slots.  Are you confused??");
}

bool LxTextureSlot::CheckResourceType(const LxGPUResource& resource) const
{
    const LxGPUResource::Type kind = resource.GetType();
    switch (m_type)
    {
    case TEXTURE_2D:
    case TEXTURE_2D_ARRAY:
        if (kind == LxGPUResource::TEXTURE_2D_ARRAY || kind == LxGPUResource::TEXTURE_CUBE_ARRAY)
            return true;
        LX_ERROR("Can only bind cubemaps and tex2D arrays to a 2D texture slot.");
        return false;
    case TEXTURE_3D:
        if (kind == LxGPUResource::TEXTURE_3D)
            return true;
        LX_ERROR("Cannot bind another resource type to a Texture3D texture slot.");
        return false;
    case TEXTURE_CUBE:
    case TEXTURE_CUBE_ARRAY:
        if (kind == LxGPUResource::TEXTURE_CUBE_ARRAY)
            return true;
        LX_ERROR("Cannot bind a non-cubemap to a TextureCube texture slot.");
        return false;
    default:
        if (kind == LxGPUResource::BUFFER)
            return true;
        LX_ERROR("Cannot bind a non-buffer to a buffer texture slot.");
        return false;
    }
}

LxCountedPtr<LxGPUSamplingResourceView> LxTextureSlot::CreateView(LxGPUResource& resource) const
{
    if (!CheckResourceType(resource))
        return LxCountedPtr<LxGPUSamplingResourceView>();
    LxGPUResourceViewDescription desc = MakeViewDescription(resource, LX_VIEW_SAMPLING);
    // A cube map bound to a 2D slot is seen as the 2D array of its faces.
    if ((m_type == TEXTURE_2D || m_type == TEXTURE_2D_ARRAY) && resource.GetType() == LxGPUResource::TEXTURE_CUBE_ARRAY)
        desc.resourceType = LxGPUResource::TEXTURE_2D_ARRAY;
    return resource.GetSamplingView(desc);
}
