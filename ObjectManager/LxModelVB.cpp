#include "ObjectManager/LxModelVB.h"

void LxModelVB::HashDescription(LxMD5Hash::Builder& builder) const
{
    const unsigned int fields[2] = {m_desc.vertexSize, m_desc.vertexCount};
    builder.Update(fields, sizeof(fields));
}
