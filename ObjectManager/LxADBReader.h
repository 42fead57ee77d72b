// LxADBReader: reads an animation data block front to back. The reader keeps a reference to the block's data, so
// it stays valid even when the ADB itself is deleted first. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"

class LxModelADB;

class LX_API LxADBReader
{
public:
    explicit LxADBReader(const LxModelADB& adb);

    // Copies the smaller of `size` and the bytes left, advances by that many and returns the count (0 at the end).
    unsigned int ReadData(void* destination, unsigned int size);
    unsigned int GetPosition() const { return m_nPosition; }
    unsigned int GetBytesLeft() const { return (m_data ? m_data->GetSize() : 0u) - m_nPosition; }

private:
    LxCountedPtr<LxMemoryBuffer> m_data;
    unsigned int m_nPosition = 0;
};
