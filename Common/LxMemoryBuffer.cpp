#include "Common/LxMemoryBuffer.h"

#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"

#include <new>

LxMemoryBuffer::~LxMemoryBuffer()
{
    LxFree(m_pData);
}

LxMemoryBuffer* LxMemoryBuffer::Allocate(unsigned int size)
{
    // The tracked allocator ends the process rather than return null; the checks keep the contract explicit for
    // a build whose allocator is replaced.
    unsigned char* data = static_cast<unsigned char*>(LxMalloc(size));
    LxMemoryBuffer* buffer = data ? new (std::nothrow) LxMemoryBuffer(data, size) : nullptr;
    if (!buffer)
    {
        LxFree(data);
        LX_ERROR("Out of memory!\n");
        return nullptr;
    }
    return buffer;
}
