// LxCurveIO: the serializer the curve and animation-set code reads and writes curve streams with. It only opens
// the serializer's counted transfers to that code; the file stays the caller's (attach, use, then let it go out
// of scope before the file is deleted). Internal to the ObjectManager sources; not exported.
#pragma once

#include "Common/LxSerializer.h"

class LxCurveIO : public LxSerializer
{
public:
    explicit LxCurveIO(LxFile* file) { m_bAttached = SetFileHandle(file); }
    ~LxCurveIO() override { ReleaseFileHandle(); }

    bool IsAttached() const { return m_bAttached; }

    using LxSerializer::ReadData;
    using LxSerializer::ReadUInt32;
    using LxSerializer::ReadUInt8;
    using LxSerializer::WriteData;
    using LxSerializer::WriteUInt32;
    using LxSerializer::WriteUInt8;

private:
    bool m_bAttached;
};
