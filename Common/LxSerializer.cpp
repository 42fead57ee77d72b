#include "Common/LxSerializer.h"

#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"
#include "Common/LxMemoryBuffer.h"

#include <cstring>

namespace
{
// The widest single read or write: counts whose byte size does not fit the file interface's 32 bits are refused.
bool ByteCount(unsigned int elementSize, unsigned int count, unsigned int& bytes)
{
    const unsigned long long total = static_cast<unsigned long long>(elementSize) * count;
    if (total > 0xFFFFFFFFull)
    {
        LX_ERROR("Element count is too large!\n");
        return false;
    }
    bytes = static_cast<unsigned int>(total);
    return true;
}

// A string whose stored length is larger than this is read in pieces of this size, so that a corrupt length
// costs no more memory than the file really holds.
const unsigned int kStringChunk = 1u << 20;
} // namespace

LxSerializer::LxSerializer() : m_versionTag("[LxSerializer_v1.0]") {}

LxSerializer::~LxSerializer() = default;

bool LxSerializer::SetFileHandle(LxFile* file)
{
    if (!file || !file->IsOpen())
    {
        LX_ERROR("File object is invalid!\n");
        return false;
    }
    m_pFile = file;
    return true;
}

bool LxSerializer::CheckFile() const
{
    if (!m_pFile || !m_pFile->IsOpen())
    {
        LX_ERROR("File handle is invalid!\n");
        return false;
    }
    return true;
}

bool LxSerializer::PrepareTransfer(const void* values, unsigned int elementSize, unsigned int count,
                                   unsigned int& bytes) const
{
    bytes = 0;
    if (!CheckFile() || !ByteCount(elementSize, count, bytes))
        return false;
    if (bytes != 0 && !values)
    {
        LX_ERROR("Buffer pointer is NULL!\n");
        return false;
    }
    return true;
}

bool LxSerializer::ReadCounted(void* values, unsigned int elementSize, unsigned int count)
{
    unsigned int bytes = 0;
    if (!PrepareTransfer(values, elementSize, count, bytes))
        return false;
    return bytes == 0 || m_pFile->Read(values, bytes) == bytes;
}

bool LxSerializer::WriteCounted(const void* values, unsigned int elementSize, unsigned int count)
{
    unsigned int bytes = 0;
    if (!PrepareTransfer(values, elementSize, count, bytes))
        return false;
    return bytes == 0 || m_pFile->Write(values, bytes);
}

bool LxSerializer::ReadUInt8(unsigned char* values, unsigned int count)
{
    return ReadCounted(values, sizeof(*values), count);
}

bool LxSerializer::ReadUInt16(unsigned short* values, unsigned int count)
{
    return ReadCounted(values, sizeof(*values), count);
}

bool LxSerializer::ReadUInt32(unsigned int* values, unsigned int count)
{
    return ReadCounted(values, sizeof(*values), count);
}

bool LxSerializer::ReadUInt64(unsigned long long* values, unsigned int count)
{
    return ReadCounted(values, sizeof(*values), count);
}

bool LxSerializer::ReadFloat32(float* values, unsigned int count)
{
    return ReadCounted(values, sizeof(*values), count);
}

bool LxSerializer::ReadFloat64(double* values, unsigned int count)
{
    return ReadCounted(values, sizeof(*values), count);
}

bool LxSerializer::ReadData(void* buffer, unsigned int elementSize, unsigned int count)
{
    return ReadCounted(buffer, elementSize, count);
}

bool LxSerializer::WriteUInt8(const unsigned char* values, unsigned int count)
{
    return WriteCounted(values, sizeof(*values), count);
}

bool LxSerializer::WriteUInt16(const unsigned short* values, unsigned int count)
{
    return WriteCounted(values, sizeof(*values), count);
}

bool LxSerializer::WriteUInt32(const unsigned int* values, unsigned int count)
{
    return WriteCounted(values, sizeof(*values), count);
}

bool LxSerializer::WriteUInt64(const unsigned long long* values, unsigned int count)
{
    return WriteCounted(values, sizeof(*values), count);
}

bool LxSerializer::WriteFloat32(const float* values, unsigned int count)
{
    return WriteCounted(values, sizeof(*values), count);
}

bool LxSerializer::WriteFloat64(const double* values, unsigned int count)
{
    return WriteCounted(values, sizeof(*values), count);
}

bool LxSerializer::WriteData(const void* const buffer, unsigned int elementSize, unsigned int count)
{
    return WriteCounted(buffer, elementSize, count);
}

bool LxSerializer::WriteData(const LxMemoryBuffer& buffer)
{
    return WriteCounted(buffer.GetData(), 1, buffer.GetSize());
}

bool LxSerializer::ReadBool(bool* values, unsigned int count)
{
    unsigned int size = 0;
    if (!PrepareTransfer(values, 1, count, size))
        return false;
    if (size == 0)
        return true;
    // Bytes first: a bool object may only hold 0 or 1, whatever byte the file has.
    unsigned char* bytes = static_cast<unsigned char*>(LxTryMalloc(count));
    if (!bytes)
    {
        LX_ERROR("Ran out of memory!\n");
        return false;
    }
    const bool ok = m_pFile->Read(bytes, count) == count;
    if (ok)
    {
        for (unsigned int i = 0; i < count; ++i)
            values[i] = bytes[i] != 0;
    }
    LxFree(bytes);
    return ok;
}

bool LxSerializer::WriteBool(const bool* values, unsigned int count)
{
    unsigned int size = 0;
    if (!PrepareTransfer(values, 1, count, size))
        return false;
    if (size == 0)
        return true;
    unsigned char* bytes = static_cast<unsigned char*>(LxTryMalloc(count));
    if (!bytes)
    {
        LX_ERROR("Ran out of memory!\n");
        return false;
    }
    // A bool filled through memcpy or a union may hold any byte; read its storage rather than trust the value.
    for (unsigned int i = 0; i < count; ++i)
    {
        unsigned char raw;
        std::memcpy(&raw, values + i, 1);
        bytes[i] = raw != 0 ? 1 : 0;
    }
    const bool ok = m_pFile->Write(bytes, count);
    LxFree(bytes);
    return ok;
}

bool LxSerializer::ReadString(LxStringT<char>& out)
{
    out.Clear();
    if (!CheckFile())
        return false;
    unsigned int length = 0;
    if (m_pFile->Read(&length, sizeof(length)) != sizeof(length))
    {
        LX_ERROR("Can't get string's length!\n");
        return false;
    }
    if (length == 0)
        return true;

    const unsigned int chunk = length < kStringChunk ? length : kStringChunk;
    char* buffer = static_cast<char*>(LxTryMalloc(chunk));
    if (!buffer)
    {
        LX_ERROR("Ran out of memory!\n");
        return false;
    }
    unsigned int remaining = length;
    while (remaining > 0)
    {
        const unsigned int want = remaining < chunk ? remaining : chunk;
        const unsigned int got = m_pFile->Read(buffer, want);
        if (got != want)
        {
            LxFree(buffer);
            out.Clear();
            LX_ERROR("Unexpected end of file while reading string!\n");
            return false;
        }
        if (want == length)
            out.Assign(buffer, want);
        else
            out.Append(buffer, want);
        remaining -= want;
    }
    LxFree(buffer);
    return true;
}

bool LxSerializer::WriteString(const LxStringT<char>& text)
{
    if (!CheckFile())
        return false;
    const unsigned int length = text.GetLength();
    if (!m_pFile->Write(&length, sizeof(length)))
    {
        LX_ERROR("Unable to write string's length!\n");
        return false;
    }
    return length == 0 || m_pFile->Write(text.c_str(), length);
}

bool LxSerializer::ReadLine(LxStringT<char>& line, const LxStringT<char>& delimiter, unsigned int maxLength,
                            bool* endOfFile)
{
    if (endOfFile)
        *endOfFile = false;
    if (delimiter.IsEmpty())
    {
        LX_ERROR("Delimiter string is empty!\n");
        return false;
    }
    line.Clear();
    if (!CheckFile())
        return false;

    const unsigned int delimiterLength = delimiter.GetLength();
    for (;;)
    {
        char c;
        if (m_pFile->Read(&c, 1) != 1)
        {
            if (endOfFile)
                *endOfFile = true;
            return true;
        }
        line.Append(c);
        if (line.GetLength() >= delimiterLength &&
            std::memcmp(line.c_str() + line.GetLength() - delimiterLength, delimiter.c_str(), delimiterLength) == 0)
        {
            line.Truncate(line.GetLength() - delimiterLength);
            return true;
        }
        if (line.GetLength() > maxLength)
            return true;
    }
}

bool LxSerializer::WriteLine(const LxStringT<char>& text)
{
    if (!CheckFile())
        return false;
    return text.IsEmpty() || m_pFile->Write(text.c_str(), text.GetLength());
}
