// LxMemoryBuffer: an owned block of bytes with a 32-bit size, shared as LxCountedPtr<LxMemoryBuffer>.
// The buffer releases its bytes with LxFree, so they must come from LxMalloc.
#pragma once

#include "Common/LxApi.h"

class LX_API LxMemoryBuffer
{
public:
    // Takes ownership of `data` (from LxMalloc).
    LxMemoryBuffer(unsigned char* data, unsigned int size) : m_pData(data), m_nSize(size) {}
    ~LxMemoryBuffer();
    LxMemoryBuffer(const LxMemoryBuffer&) = delete;
    LxMemoryBuffer& operator=(const LxMemoryBuffer&) = delete;

    // A new buffer of `size` uninitialised bytes; null (after "Out of memory!") if either allocation fails.
    static LxMemoryBuffer* Allocate(unsigned int size);

    unsigned char* GetData() const { return m_pData; }
    unsigned int GetSize() const { return m_nSize; }
    // Shrinks the size the buffer reports (the block itself stays as it is).
    void Truncate(unsigned int size)
    {
        if (size < m_nSize)
            m_nSize = size;
    }

private:
    unsigned char* m_pData;
    unsigned int m_nSize;
};
