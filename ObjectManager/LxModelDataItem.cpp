#include "ObjectManager/LxModelDataItem.h"

LxModelDataItem::~LxModelDataItem() = default;

void LxModelDataItem::ComputeHash(LxMD5Hash* out) const
{
    LxMD5Hash::Builder builder;
    const unsigned char type = static_cast<unsigned char>(GetType());
    builder.Update(&type, 1);
    HashDescription(builder);
    // Sizes first, so that moving bytes from one block to the other changes the digest.
    const unsigned int sizes[2] = {GetMetaDataSize(), GetDataSize()};
    builder.Update(sizes, sizeof(sizes));
    if (m_metaData)
        builder.Update(m_metaData->GetData(), m_metaData->GetSize());
    if (m_data)
        builder.Update(m_data->GetData(), m_data->GetSize());
    builder.Finish(out);
}
