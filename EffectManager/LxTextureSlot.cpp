#include "EffectManager/LxTextureSlot.h"

#include "Common/LxLogManager.h"

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
