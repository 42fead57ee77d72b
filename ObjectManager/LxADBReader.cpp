#include "ObjectManager/LxADBReader.h"

#include "ObjectManager/LxModelADB.h"

#include <cstring>

LxADBReader::LxADBReader(const LxModelADB& adb) : m_data(adb.GetData()) {}

unsigned int LxADBReader::ReadData(void* destination, unsigned int size)
{
    const unsigned int left = GetBytesLeft();
    const unsigned int count = size < left ? size : left;
    if (count)
        std::memcpy(destination, m_data->GetData() + m_nPosition, count);
    m_nPosition += count;
    return count;
}
