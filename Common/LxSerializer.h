// LxSerializer: the base of the library's binary readers and writers. It wraps an open LxFile (not owned) and
// offers typed, counted reads and writes; derived classes call them in the order of their format.
//
// Encodings: every value is written in the processor's byte order, which is little-endian on every target the
// library runs on; nothing is ever swapped. Bools take one byte (0 or 1). Strings are a 32-bit byte count followed
// by the characters without terminator. WriteLine writes the characters only. Arrays are their elements back to
// back: the serializer adds no count, tag or padding of its own.
//
// Failure: every operation returns false after logging an error (each distinct text once until the error log is
// reset); nothing is thrown. The file position stays wherever the failed read or write left it. A short counted
// read fails without a message of its own. A count of 0 reads or writes nothing and succeeds (a null pointer is
// accepted then).
//
// Not thread-safe: one serializer per file, one thread at a time. The file must outlive its attachment.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

class LxFile;
class LxMemoryBuffer;

class LX_API LxSerializer
{
public:
    LxSerializer();
    virtual ~LxSerializer();
    LxSerializer(const LxSerializer&) = delete;
    LxSerializer& operator=(const LxSerializer&) = delete;

    // "[LxSerializer_v1.0]": formats that want a file signature write or compare it themselves.
    const LxStringT<char>& GetVersionTag() const { return m_versionTag; }
    LxFile* GetFileHandle() const { return m_pFile; }

protected:
    // Attaches an open file. A null or closed file is refused ("File object is invalid!\n") and the previous
    // attachment, if any, stays.
    bool SetFileHandle(LxFile* file);
    // Forgets the file without a word (before the owner deletes it).
    void ReleaseFileHandle() { m_pFile = nullptr; }

    // Each read is true only when exactly count times the element size bytes arrived.
    bool ReadUInt8(unsigned char* values, unsigned int count);
    bool ReadUInt16(unsigned short* values, unsigned int count);
    bool ReadUInt32(unsigned int* values, unsigned int count);
    bool ReadUInt64(unsigned long long* values, unsigned int count);
    bool ReadFloat32(float* values, unsigned int count);
    bool ReadFloat64(double* values, unsigned int count);
    // A byte is true when it is not zero.
    bool ReadBool(bool* values, unsigned int count);
    bool ReadData(void* buffer, unsigned int elementSize, unsigned int count);

    bool WriteUInt8(const unsigned char* values, unsigned int count);
    bool WriteUInt16(const unsigned short* values, unsigned int count);
    bool WriteUInt32(const unsigned int* values, unsigned int count);
    bool WriteUInt64(const unsigned long long* values, unsigned int count);
    bool WriteFloat32(const float* values, unsigned int count);
    bool WriteFloat64(const double* values, unsigned int count);
    // Any non-zero bool in memory is written as 1.
    bool WriteBool(const bool* values, unsigned int count);
    bool WriteData(const void* const buffer, unsigned int elementSize, unsigned int count);
    // The buffer's whole contents.
    bool WriteData(const LxMemoryBuffer& buffer);

    // Clears `out`, then reads a 32-bit byte count and that many characters. A string cut short by the end of
    // the file fails and leaves `out` empty.
    bool ReadString(LxStringT<char>& out);
    bool WriteString(const LxStringT<char>& text);

    // Reads one byte at a time until `line` ends with the whole `delimiter` (which is then stripped from `line`),
    // the file ends (`*endOfFile` becomes true and the text read so far is the line), or the line grows past
    // `maxLength` characters (it then holds maxLength + 1 characters and the rest stays in the file for the next
    // call). `endOfFile` may be null; otherwise it is false unless the end was reached. An empty delimiter fails.
    bool ReadLine(LxStringT<char>& line, const LxStringT<char>& delimiter, unsigned int maxLength, bool* endOfFile);
    // The characters exactly: no count, terminator or newline.
    bool WriteLine(const LxStringT<char>& text);

private:
    // Logs "File handle is invalid!\n" when no open file is attached.
    bool CheckFile() const;
    // The checks of every counted transfer: an open file, a byte size that fits 32 bits, a buffer unless nothing
    // moves. bytes receives the size; 0 means succeed without touching the file.
    bool PrepareTransfer(const void* values, unsigned int elementSize, unsigned int count, unsigned int& bytes) const;
    bool ReadCounted(void* values, unsigned int elementSize, unsigned int count);
    bool WriteCounted(const void* values, unsigned int elementSize, unsigned int count);

    LxStringT<char> m_versionTag;
    LxFile* m_pFile = nullptr;
};
