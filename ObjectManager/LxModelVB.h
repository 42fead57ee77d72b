// LxModelVB: a vertex buffer of a model archive: vertex count and vertex size in bytes, and count x size bytes of
// vertex data. Plain data; the owner (a manifest entry) deletes it.
#pragma once

#include "ObjectManager/LxModelDataItem.h"

struct LxModelVBDesc
{
    unsigned int vertexSize = 0;
    unsigned int vertexCount = 0;
};

class LX_API LxModelVB : public LxModelDataItem
{
public:
    LxModelVB(const LxString& name, const LxString& fileName, const LxModelVBDesc& desc)
        : LxModelDataItem(name, fileName), m_desc(desc)
    {
    }
    LxModelDataType GetType() const override { return LX_MODEL_DATA_VB; }
    const LxModelVBDesc& GetDesc() const { return m_desc; }

protected:
    void HashDescription(LxMD5Hash::Builder& builder) const override;

private:
    LxModelVBDesc m_desc;
};
