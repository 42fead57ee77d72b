#include "ObjectManager/LxModelIB.h"

void LxModelIB::HashDescription(LxMD5Hash::Builder& builder) const
{
    const unsigned int fields[2] = {m_desc.indexSize, m_desc.indexCount};
    builder.Update(fields, sizeof(fields));
}
