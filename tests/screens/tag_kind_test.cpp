#include "screens_fixture.h"

namespace {

ValueKind kind(const std::string &item) { return kindOf(tagOf("x", item)); }
std::size_t count(const std::string &item) { return valueCountOf(tagOf("x", item)); }

} // namespace

TEST(TagKind, ABitTypeHoldsBits)
{
    EXPECT_EQ(kind("CIO_bit:0.5"), ValueKind::BIT);
    EXPECT_EQ(kind("DM_bit:100.15:3"), ValueKind::BIT);
    for (const char *item : {"100.05", "W3.05:2", "D100.15/BOOL"})
        EXPECT_EQ(kind(item), ValueKind::BIT) << item;
}

TEST(TagKind, StringsHexAndBitsAreTexts)
{
    for (const char *item : {"DM:0:4/string", "DM:0/string-low", "DM:0/hex", "DM:0:2/bits", "DM:0/hex32-high", "D0/hex32",
                             "D0:4/STRING", "D0/WORD", "D0/DWORD", "100:2/DWORD-high"})
        EXPECT_EQ(kind(item), ValueKind::TEXT) << item;
}

TEST(TagKind, EverythingElseIsANumber)
{
    for (const char *item : {"DM:0", "DM:0:3", "DM:0/u16", "DM:0/s64-high", "DM:0:2/f32", "T:5/bcd16", "D0", "100:3",
                             "T5", "D0:2/REAL", "C7/UINT_BCD"})
        EXPECT_EQ(kind(item), ValueKind::NUMBER) << item;
}

TEST(TagKind, CountsTheValuesAndAStringAsOne)
{
    EXPECT_EQ(count("DM:0"), 1u);
    EXPECT_EQ(count("DM:0/f32-high"), 1u);
    EXPECT_EQ(count("DM:0:3"), 3u);
    EXPECT_EQ(count("DM:0:12/f32"), 12u);
    EXPECT_EQ(count("CIO_bit:0.5:4"), 4u);
    EXPECT_EQ(count("DM:0:2/hex"), 2u);
    EXPECT_EQ(count("DM:0:8/string"), 1u);
    EXPECT_EQ(count("DM:0:8/string-low"), 1u);
    EXPECT_EQ(count("D100"), 1u);
    EXPECT_EQ(count("D100:3/REAL"), 3u);
    EXPECT_EQ(count("100.05:4"), 4u);
    EXPECT_EQ(count("D0:8/STRING"), 1u);
}
