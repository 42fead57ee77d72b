// Appending to a string that grows piece by piece (captured code, preprocessor output): LxString grows to the exact
// size on Append, which makes long runs of appends quadratic, so these helpers double the capacity instead.
#pragma once

#include "Common/LxString.h"

inline void LxAppendGrowing(LxString& text, const char* piece, unsigned int length)
{
    const unsigned int needed = text.GetLength() + length + 1;
    if (needed > text.GetCapacity())
    {
        unsigned int capacity = text.GetCapacity() < 64 ? 64 : text.GetCapacity();
        while (capacity < needed && capacity < 0x80000000u)
            capacity *= 2;
        text.Reserve(capacity < needed ? needed : capacity, true);
    }
    text.Append(piece, length);
}

inline void LxAppendGrowing(LxString& text, const LxString& piece)
{
    LxAppendGrowing(text, piece.c_str(), piece.GetLength());
}
