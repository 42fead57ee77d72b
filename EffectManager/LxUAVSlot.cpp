#include "EffectManager/LxUAVSlot.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxGPUResource.h"

LxUAVSlot::LxUAVSlot(const LxString& name, Type type, const LxAnnotationMap* annotations)
    : LxShaderResourceSlot(name, annotations), m_type(type)
{
}

const char* LxUAVSlot::TypeToString(Type type)
{
    static const char* const names[NUM_TYPES] = {"RWBuffer",
                                                 "RWTexture2D",
                                                 "RWTexture3D",
                                                 "RWStructuredBuffer",
                                                 "AppendStructuredBuffer",
                                                 "RWByteAddressBuffer",
                                                 "AppendByteAddressBuffer"};
    return static_cast<unsigned int>(type) < NUM_TYPES ? names[type] : "Unknown";
}

bool LxUAVSlot::CheckResourceType(const LxGPUResource& resource) const
{
    const LxGPUResource::Type kind = resource.GetType();
    if (m_type == TEXTURE_2D)
    {
        if (kind == LxGPUResource::TEXTURE_2D_ARRAY || kind == LxGPUResource::TEXTURE_CUBE_ARRAY)
            return true;
        LX_ERROR("Can only bind cubemaps and tex2D arrays to a 2D UAV slot.");
        return false;
    }
    if (m_type == TEXTURE_3D)
    {
        if (kind == LxGPUResource::TEXTURE_3D)
            return true;
        LX_ERROR("Cannot bind another resource type to a RWTexture3D UAV slot.");
        return false;
    }
    if (kind == LxGPUResource::BUFFER)
        return true;
    LX_ERROR("Cannot bind a non-buffer to a buffer UAV slot.");
    return false;
}

LxCountedPtr<LxGPUUnorderedAccessView> LxUAVSlot::CreateView(LxGPUResource& resource) const
{
    if (!CheckResourceType(resource))
        return LxCountedPtr<LxGPUUnorderedAccessView>();
    LxGPUResourceViewDescription desc = MakeViewDescription(resource, LX_VIEW_UNORDERED_ACCESS);
    if (m_type == TEXTURE_2D && resource.GetType() == LxGPUResource::TEXTURE_CUBE_ARRAY)
        desc.resourceType = LxGPUResource::TEXTURE_2D_ARRAY;
    if (m_type == APPEND_STRUCTURED_BUFFER || m_type == APPEND_RAW_BUFFER)
        desc.flags = static_cast<unsigned short>(desc.flags | LxGPUResourceViewDescription::FLAG_APPEND);
    return resource.GetUnorderedAccessView(desc);
}
