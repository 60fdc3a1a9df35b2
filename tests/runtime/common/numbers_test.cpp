#include "common/numbers.h"

#include <gtest/gtest.h>

TEST(Values, ParsesNumbersWithinTheirRange)
{
    long value = 77;
    EXPECT_TRUE(parseNumber("5", 5, 9, value));
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(parseNumber("9", 5, 9, value));
    EXPECT_EQ(value, 9);
    EXPECT_FALSE(parseNumber("4", 5, 9, value));
    EXPECT_FALSE(parseNumber("10", 5, 9, value));
    EXPECT_EQ(value, 9);
    EXPECT_TRUE(parseNumber("-0x10", -16, 0, value));
    EXPECT_EQ(value, -16);
}

TEST(Values, RefusesWhatIsNoWholeNumber)
{
    long value = 77;
    for (const char *text : {"", "-", "0x", "1a", "1.5", " 1", "1 ", "+1", "--1", "0x-1", "99999999999999999999", "x"})
        EXPECT_FALSE(parseNumber(text, -1000000, 1000000, value)) << text;
    EXPECT_EQ(value, 77);
    EXPECT_TRUE(parseNumber("0XfF", 0, 255, value));
    EXPECT_EQ(value, 255);
}

TEST(Values, WritesTheShortestTextOfANumber)
{
    EXPECT_EQ(shortestText(0.1), "0.1");
    EXPECT_EQ(shortestText(-4), "-4");
    EXPECT_EQ(shortestText(1.0 / 3), "0.3333333333333333");
}

TEST(Values, CountsInWords)
{
    EXPECT_EQ(counted(0, "tag"), "0 tags");
    EXPECT_EQ(counted(1, "tag"), "1 tag");
    EXPECT_EQ(counted(2, "tag"), "2 tags");
}
