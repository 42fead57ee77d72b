#include "ObjectManager/LxModelTexture.h"

void LxModelTexture::HashDescription(LxMD5Hash::Builder& builder) const
{
    const unsigned int fields[7] = {m_desc.type,      m_desc.width,     m_desc.height, m_desc.depth,
                                    m_desc.mipLevels, m_desc.arraySize, m_desc.format};
    builder.Update(fields, sizeof(fields));
}
