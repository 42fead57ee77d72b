// LxString: block layout and growth, hashing and equality, conversions, editing and path helpers.
#include "Common/LxString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace
{
// The block header before the characters: 0 is the capacity, 1 the length.
uint32_t HeaderField(const LxString& s, int index)
{
    uint32_t v;
    std::memcpy(&v, s.c_str() - 8 + 4 * index, 4);
    return v;
}
} // namespace

TEST(LxString, BlockLayoutIsCapacityThenLengthBeforeTheCharacters)
{
    LxString empty;
    EXPECT_EQ(HeaderField(empty, 0), 1u);
    EXPECT_EQ(HeaderField(empty, 1), 0u);
    EXPECT_EQ(empty.c_str()[0], '\0');
    EXPECT_EQ(LxHeapBlockSize(empty.c_str() - 8), 9u); // an empty string owns a 9-byte block

    LxString s("hello");
    EXPECT_EQ(HeaderField(s, 0), 6u);
    EXPECT_EQ(HeaderField(s, 1), 5u);
    EXPECT_EQ(s.c_str()[5], '\0');
    EXPECT_EQ(sizeof(LxString), sizeof(void*));
}

TEST(LxString, AppendGrowthRules)
{
    LxString s("abc");
    s.Append("de");
    EXPECT_EQ(s.GetCapacity(), 6u); // exactly l + k + 1
    EXPECT_STREQ(s.c_str(), "abcde");
    s.Append('f');
    EXPECT_EQ(s.GetCapacity(), 12u); // one character doubles
    EXPECT_EQ(s.GetLength(), 6u);
    s.Append('g');
    EXPECT_EQ(s.GetCapacity(), 12u); // room left: no growth
    LxString other("12345");
    s.Append(other);
    EXPECT_STREQ(s.c_str(), "abcdefg12345");
    EXPECT_EQ(s.GetCapacity(), 13u);

    s.Append(s); // appending itself
    EXPECT_STREQ(s.c_str(), "abcdefg12345abcdefg12345");
    EXPECT_EQ(s.GetLength(), 24u);
}

TEST(LxString, AssignmentReserveAndMove)
{
    LxString s("a long enough text");
    const char* block = s.c_str();
    s = "short";
    EXPECT_EQ(s.c_str(), block);
    EXPECT_EQ(s.GetCapacity(), 19u);
    s = LxString("a text longer than the current capacity");
    EXPECT_NE(s.c_str(), block);
    EXPECT_STREQ(s.c_str(), "a text longer than the current capacity");
    const LxString& alias = s;
    s = alias; // self-assignment keeps the text
    EXPECT_STREQ(s.c_str(), "a text longer than the current capacity");
    s = s.c_str() + 2; // assigning from its own characters
    EXPECT_STREQ(s.c_str(), "text longer than the current capacity");

    // Reserve keeps at most capacity - 1 characters, or none.
    s = "abcdef";
    s.Reserve(4, true);
    EXPECT_EQ(s.GetCapacity(), 4u);
    EXPECT_STREQ(s.c_str(), "abc");
    s.Reserve(10, false);
    EXPECT_EQ(s.GetLength(), 0u);
    s.Reserve(0, true);
    EXPECT_EQ(s.GetCapacity(), 1u);

    // Moved-from strings stay usable.
    LxString a("payload");
    LxString b(std::move(a));
    EXPECT_STREQ(b.c_str(), "payload");
    EXPECT_TRUE(a.IsEmpty()); // NOLINT(bugprone-use-after-move): the moved-from state is specified
    a.Append('x');
    EXPECT_STREQ(a.c_str(), "x");
    LxString c;
    c = std::move(b);
    b = "again";
    EXPECT_STREQ(b.c_str(), "again");
    EXPECT_STREQ(c.c_str(), "payload");
}

TEST(LxString, FormatMeasuresThenFormats)
{
    LxString s("previous contents");
    s.Format("%d-%s-%.2f", 42, "x", 1.5);
    EXPECT_STREQ(s.c_str(), "42-x-1.50");
    EXPECT_EQ(s.GetLength(), 9u);
    EXPECT_EQ(s.GetCapacity(), 10u);
    s.AppendFormat("/%05u", 7u);
    EXPECT_STREQ(s.c_str(), "42-x-1.50/00007");
    EXPECT_STREQ(LxString::Formatted("%s", "").c_str(), "");
    std::string big(5000, 'q');
    EXPECT_EQ(LxString::Formatted("%s!", big.c_str()).GetLength(), 5001u);
}

TEST(LxString, HashIsTimesFivePlusSignedByte)
{
    EXPECT_EQ(LxString("").Hash(), 0u);
    EXPECT_EQ(LxString("a").Hash(), 97u);
    EXPECT_EQ(LxString("ab").Hash(), 97u * 5u + 98u);
    const char high[] = {char(0xE9), 0};
    EXPECT_EQ(LxString(high).Hash(), static_cast<uint32_t>(-23));
    LxStringHasher hasher;
    EXPECT_EQ(hasher.SecondHashValue(LxString("a")), 97u * 2u + 1u);

    // The block-wise folding must agree with the byte-wise definition (wrapping in 32 bits) for every length and
    // any bytes.
    uint32_t seed = 12345;
    for (unsigned length = 0; length < 80; ++length)
    {
        std::string bytes(length, '\0');
        for (char& b : bytes)
            b = char((seed = seed * 1103515245u + 12345u) >> 16);
        uint32_t expect = 0;
        for (char b : bytes)
            expect = expect * 5u + static_cast<uint32_t>(static_cast<signed char>(b));
        EXPECT_EQ(LxString(bytes.data(), length).Hash(), expect) << length;
    }
}

TEST(LxString, EqualityComparesLengthThenEveryByte)
{
    EXPECT_EQ(LxString("abcdefgh"), LxString("abcdefgh"));
    EXPECT_NE(LxString("abcdefgh"), LxString("abcdefgi"));   // differs in the word-compared part
    EXPECT_NE(LxString("abcdefghi"), LxString("abcdefghj")); // differs in the byte-compared tail
    EXPECT_NE(LxString("abc"), LxString("abcd"));
    const char withZero[] = {'a', 0, 'b'};
    EXPECT_NE(LxString(withZero, 3), LxString("a")); // embedded zeros count
    EXPECT_EQ(LxString(withZero, 3), LxString(withZero, 3));
    // Against a zero-terminated text, the comparison stops at the text's end (under ASan, a read past it fails).
    static const char kShort[] = "a";
    EXPECT_FALSE(LxString(withZero, 3) == kShort);
    EXPECT_FALSE(LxString(withZero, 3).Equals(kShort));
    EXPECT_TRUE(LxString("Mixed").EqualsNoCase(LxString("mIXED")));
    EXPECT_TRUE(LxString("abc") < LxString("abd"));
    EXPECT_TRUE(LxString("ab") < LxString("abc"));
}

TEST(LxString, NumberConversion)
{
    // A failure leaves the output alone (99).
    const struct
    {
        const char* text;
        int base;
        long value;
    } cases[] = {{"12L", 10, 12}, {"-7l", 10, -7}, {"12x", 10, 99},  {"", 10, 99},   {"12LL", 10, 99},
                 {"L", 10, 99},   {"ff", 16, 255}, {"0x1A", 16, 26}, {"777", 8, 511}};
    for (const auto& c : cases)
    {
        long v = 99;
        EXPECT_EQ(c.value != 99, LxString(c.text).ToInteger(&v, c.base)) << c.text;
        EXPECT_EQ(c.value, v) << c.text;
    }
    int i = 0;
    EXPECT_FALSE(LxString("99999999999999999999").ToInteger(&i, 10));
    double d = 0;
    EXPECT_TRUE(LxString(" 2.5e1 ").ToDouble(&d));
    EXPECT_DOUBLE_EQ(d, 25.0);
    EXPECT_FALSE(LxString("2.5x").ToDouble(&d));
}

TEST(LxString, SearchingAndEditing)
{
    LxString s("one two one two");
    EXPECT_EQ(s.Find("two"), 4);
    EXPECT_EQ(s.Find("two", 5), 12);
    EXPECT_EQ(s.Find("three"), -1);
    EXPECT_EQ(s.Find('o', 1), 6);
    EXPECT_EQ(s.FindLast('o'), 14);
    EXPECT_EQ(s.FindLastOf("ne"), 10);
    EXPECT_TRUE(s.StartsWith("one"));
    EXPECT_TRUE(s.EndsWith("two"));
    EXPECT_FALSE(s.EndsWith("one two one two!"));
    EXPECT_EQ(s.Replace("one", "three"), 2u);
    EXPECT_STREQ(s.c_str(), "three two three two");
    EXPECT_EQ(s.Replace("two", ""), 2u);
    EXPECT_STREQ(s.c_str(), "three  three ");
    EXPECT_EQ(s.Replace("", "x"), 0u);
    EXPECT_EQ(s.Replace(' ', '_'), 3u);
    EXPECT_STREQ(s.Substring(7, 5).c_str(), "three");
    EXPECT_STREQ(s.Substring(100).c_str(), "");
    EXPECT_STREQ(s.Left(3).c_str(), "thr");
    EXPECT_STREQ(s.Right(4).c_str(), "ree_");

    LxString t("\t  padded text \r\n");
    t.Trim();
    EXPECT_STREQ(t.c_str(), "padded text");
    LxString blank("   ");
    blank.Trim();
    EXPECT_TRUE(blank.IsEmpty());

    LxString mixed("MiXeD 123");
    EXPECT_STREQ(mixed.Upper().c_str(), "MIXED 123");
    EXPECT_STREQ(mixed.Lower().c_str(), "mixed 123");
}

TEST(LxString, SplitAtAnyDelimiterAndPathPartsAtEitherSeparator)
{
    LxArray<LxString> parts;
    LxString("a,b;;c,").Split(",;", parts);
    ASSERT_EQ(parts.GetCount(), 3u);
    EXPECT_STREQ(parts[0].c_str(), "a");
    EXPECT_STREQ(parts[2].c_str(), "c");
    parts.Clear();
    LxString("a,,b,").Split(",", parts, true);
    ASSERT_EQ(parts.GetCount(), 4u);
    EXPECT_TRUE(parts[1].IsEmpty());
    EXPECT_TRUE(parts[3].IsEmpty());
    EXPECT_STREQ(LxString("a/b\\c.txt").GetDirectory().c_str(), "a/b");
    EXPECT_STREQ(LxString("a/b\\c.txt").GetFileName().c_str(), "c.txt");
    EXPECT_STREQ(LxString("c.txt").GetDirectory().c_str(), "");
    EXPECT_STREQ(LxString("c.txt").GetFileName().c_str(), "c.txt");
    EXPECT_STREQ(LxString("dir/").GetFileName().c_str(), "");
    EXPECT_STREQ(LxString("a.b/c").GetExtension().c_str(), "");
    EXPECT_STREQ(LxString("a/c.tar.gz").GetExtension().c_str(), "gz");
}
