#include "ObjectManager/LxModelADB.h"

void LxModelADB::HashDescription(LxMD5Hash::Builder& builder) const
{
    const unsigned int fields[3] = {static_cast<unsigned int>(m_format), m_nVersion, m_usage.GetLength()};
    builder.Update(fields, sizeof(fields));
    builder.Update(m_usage.c_str(), m_usage.GetLength());
}
