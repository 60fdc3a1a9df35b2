#include "commands/condition.h"

#include "support/built_driver.h"
#include "support/usage_error.h"

#include <gtest/gtest.h>

namespace {

// Whether `text` holds for a value that is shown as `shown`.
bool holdsFor(const std::string &text, const std::string &shown)
{
    const TagBook book(builtDriver());
    return holds(parseCondition(book, text), shown);
}

std::string refusal(const std::string &text)
{
    const TagBook book(builtDriver());
    return usageError([&] { parseCondition(book, text); });
}

TEST(Condition, EveryRelation)
{
    const struct {
        const char *relation;
        bool        below, equal, above;
    } rows[] = {{"=", false, true, false}, {"!=", true, false, true}, {">", false, false, true},
                {">=", false, true, true}, {"<", true, false, false}, {"<=", true, true, false}};
    for (const auto &row : rows) {
        for (const char *item : {"DM:0", "DM:0/hex", "DM:0/s16"}) {
            const bool isHex = std::string(item) == "DM:0/hex";
            const std::string text = item + std::string(row.relation) + (isHex ? "0x10" : "16");
            EXPECT_EQ(holdsFor(text, isHex ? "0x0009" : "9"), row.below) << text;
            EXPECT_EQ(holdsFor(text, isHex ? "0x0010" : "16"), row.equal) << text;
            EXPECT_EQ(holdsFor(text, isHex ? "0x0100" : "100"), row.above) << text;
        }
    }
}

TEST(Condition, NumbersAreComparedAsNumbers)
{
    EXPECT_TRUE(holdsFor("DM:0=0x10", "16"));
    EXPECT_TRUE(holdsFor("DM:0/f32=0.10", "0.1"));
    EXPECT_TRUE(holdsFor("DM:0/s16<-2", "-10"));
    EXPECT_TRUE(holdsFor("DM:0/f32>1e3", "1000.5"));
    EXPECT_TRUE(holdsFor("DM:0/f32>1e3", "inf"));
    EXPECT_TRUE(holdsFor("CIO_bit:0.0=1", "1"));
    EXPECT_FALSE(holdsFor("CIO_bit:0.0=1", "0"));
}

// A double has no room for all of their digits.
TEST(Condition, LongWholeNumbersKeepTheirDigits)
{
    EXPECT_FALSE(holdsFor("DM:0/u64=18446744073709551615", "18446744073709551614"));
    EXPECT_TRUE(holdsFor("DM:0/u64>18446744073709551614", "18446744073709551615"));
    EXPECT_FALSE(holdsFor("DM:0/s64=-9223372036854775807", "-9223372036854775808"));
}

TEST(Condition, WhatIsNoNumberFulfilsNothing)
{
    for (const char *shown : {"nan", "no-bcd:0x12AB"}) {
        for (const char *relation : {"=", "!=", ">", ">=", "<", "<="})
            EXPECT_FALSE(holdsFor(std::string("DM:0/bcd16") + relation + "5", shown)) << relation;
    }
}

TEST(Condition, TextsAreEqualOrNot)
{
    EXPECT_TRUE(holdsFor("DM:0:4/string=A=B", "\"A=B\""));
    EXPECT_FALSE(holdsFor("DM:0:4/string=A", "\"AB\""));
    EXPECT_TRUE(holdsFor("DM:0:4/string!=A", "\"AB\""));
    EXPECT_TRUE(holdsFor("DM:0:4/string=", "\"\""));
    EXPECT_TRUE(holdsFor("DM:0/bits=101", "0000_0000_0000_0101"));
    EXPECT_EQ(refusal("DM:0:4/string>A"), "'DM:0:4/string>A': a text is equal or not; use = or !=");
}

TEST(Condition, WhatCannotBeComparedIsRefused)
{
    EXPECT_EQ(refusal("DM:0:2=5"), "'DM:0:2=5': DM:0:2 holds 2 values, and one is compared; name it by its address");
    EXPECT_EQ(refusal("DM:0>nan"), "'DM:0>nan': 'nan' is not a number; DM:0 is compared with one, such as 12 or 0.5");
    EXPECT_EQ(refusal("DM:0="), "'DM:0=': '' is not a number; DM:0 is compared with one, such as 12 or 0.5");
    EXPECT_EQ(refusal("DM:0<-1"), "'DM:0<-1': DM:0 is shown as a number from 0 to 65535; write DM:0/s16 for one that can be "
                                  "negative");
    EXPECT_EQ(refusal("DM:0/hex=xyz"), "'DM:0/hex=xyz' does not fit hex; use 0x0 to 0xFFFF");
}

} // namespace
