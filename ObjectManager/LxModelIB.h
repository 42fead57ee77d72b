// LxModelIB: an index buffer of a model archive: index size in bytes (2 or 4), index count, and count x size bytes
// of indices. Plain data; the owner (a manifest entry) deletes it.
#pragma once

#include "ObjectManager/LxModelDataItem.h"

struct LxModelIBDesc
{
    unsigned char indexSize = 0;
    unsigned int indexCount = 0;
};

class LX_API LxModelIB : public LxModelDataItem
{
public:
    LxModelIB(const LxString& name, const LxString& fileName, const LxModelIBDesc& desc)
        : LxModelDataItem(name, fileName), m_desc(desc)
    {
    }
    LxModelDataType GetType() const override { return LX_MODEL_DATA_IB; }
    const LxModelIBDesc& GetDesc() const { return m_desc; }

protected:
    void HashDescription(LxMD5Hash::Builder& builder) const override;

private:
    LxModelIBDesc m_desc;
};
