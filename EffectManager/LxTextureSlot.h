// LxTextureSlot: a read-only shader resource an effect declares ("Texture2D tDiffuse < ... >"); the platform pass
// binds the view the effect holds for it (LxEffect::BindTexture).
#pragma once

#include "Common/LxCountedPtr.h"
#include "EffectManager/LxShaderResourceSlot.h"
#include "GPUResourceManager/LxGPUSamplingResourceView.h"

class LX_API LxTextureSlot : public LxShaderResourceSlot
{
public:
    enum Type
    {
        TEXTURE_BUFFER = 0,      // "Buffer"
        TEXTURE_2D = 1,          // "Texture2D"
        TEXTURE_3D = 2,          // "Texture3D"
        TEXTURE_CUBE = 3,        // "TextureCube"
        TEXTURE_2D_ARRAY = 4,    // "Texture2DArray"
        TEXTURE_CUBE_ARRAY = 5,  // "TextureCubeArray"
        STRUCTURED_BUFFER = 6,   // "StructuredBuffer"
        BYTE_ADDRESS_BUFFER = 7, // "ByteAddressBuffer"
        NUM_TYPES = 8
    };

    LxTextureSlot(const LxString& name, Type type, const LxAnnotationMap* annotations = nullptr);

    Type GetType() const { return m_type; }
    bool IsBuffer() const
    {
        return m_type == TEXTURE_BUFFER || m_type == STRUCTURED_BUFFER || m_type == BYTE_ADDRESS_BUFFER;
    }
    // The effect-file keyword of the type.
    static const char* TypeToString(Type type);

    // True when a resource of that kind may be bound here (2D slots take 2D arrays and the faces of cube maps);
    // otherwise reports why.
    bool CheckResourceType(const LxGPUResource& resource) const;
    // The sampling view of `resource` this slot's view parameters describe; null after reporting a failure.
    LxCountedPtr<LxGPUSamplingResourceView> CreateView(LxGPUResource& resource) const;

protected:
    void CheckViewParamsForType(const LxSlotViewParams& params) const override;

private:
    Type m_type;
};
