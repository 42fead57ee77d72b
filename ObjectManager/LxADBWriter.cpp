#include "ObjectManager/LxADBWriter.h"

#include "Common/LxMemory.h"
#include "Common/LxMemoryBuffer.h"
#include "ObjectManager/LxModelADB.h"

#include <cstring>

LxADBWriter::~LxADBWriter()
{
    LxFree(m_pData);
}

void LxADBWriter::WriteData(const void* data, unsigned int size)
{
    if (size == 0 || !data)
        return;
    const unsigned long long needed = static_cast<unsigned long long>(m_nSize) + size;
    if (needed > m_nCapacity)
    {
        unsigned long long capacity = m_nCapacity ? 2ull * m_nCapacity : 1024ull;
        if (capacity < needed)
            capacity = needed;
        if (capacity > 0xFFFFFFFFull)
            capacity = 0xFFFFFFFFull;
        if (needed > capacity)
            return; // a block cannot pass 4 GiB
        unsigned char* grown = static_cast<unsigned char*>(LxMalloc(static_cast<size_t>(capacity)));
        if (m_nSize)
            std::memcpy(grown, m_pData, m_nSize);
        LxFree(m_pData);
        m_pData = grown;
        m_nCapacity = static_cast<unsigned int>(capacity);
    }
    std::memcpy(m_pData + m_nSize, data, size);
    m_nSize += size;
}

LxModelADB* LxADBWriter::FinalizeADB(const LxString& name, const LxString& usage, unsigned int version)
{
    LxModelADB* adb = new LxModelADB(name, name + ".adb", usage, LxModelADB::STORAGE_BINARY, version);
    if (m_nSize)
    {
        // The buffer takes the block as it is; only m_nSize of its bytes count.
        adb->SetData(LxCountedPtr<LxMemoryBuffer>(new LxMemoryBuffer(m_pData, m_nSize)));
        m_pData = nullptr;
    }
    LxFree(m_pData);
    m_pData = nullptr;
    m_nSize = m_nCapacity = 0;
    return adb;
}
