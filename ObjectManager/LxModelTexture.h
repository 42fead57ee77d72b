// LxModelTexture: a texture of a model archive: its description (kind, size, mip levels, array size and the GPU
// resource format code) and the texel data of every subresource, as the exporter laid it out. Plain data; the
// owner (a manifest entry) deletes it.
#pragma once

#include "ObjectManager/LxModelDataItem.h"

struct LxModelTextureDesc
{
    enum TextureType
    {
        TEXTURE_2D = 0, // 2D or 2D array
        TEXTURE_3D = 1,
        TEXTURE_CUBE = 2 // cube or cube array
    };
    unsigned char type = TEXTURE_2D;
    unsigned short width = 0;
    unsigned short height = 0;
    unsigned short depth = 0;
    unsigned char mipLevels = 0;
    unsigned short arraySize = 0;
    unsigned short format = 0; // an LxGPUResourceFormat value
};

class LX_API LxModelTexture : public LxModelDataItem
{
public:
    LxModelTexture(const LxString& name, const LxString& fileName, const LxModelTextureDesc& desc)
        : LxModelDataItem(name, fileName), m_desc(desc)
    {
    }
    LxModelDataType GetType() const override { return LX_MODEL_DATA_TEX; }
    const LxModelTextureDesc& GetDesc() const { return m_desc; }

protected:
    void HashDescription(LxMD5Hash::Builder& builder) const override;

private:
    LxModelTextureDesc m_desc;
};
