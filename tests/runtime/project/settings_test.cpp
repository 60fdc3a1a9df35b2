#include "project/settings.h"

#include <gtest/gtest.h>

// Numbers that a user sets: their ranges, and what is no number.

namespace {

constexpr Setting WHOLE    = {"--whole", nullptr, true, 10, 60000, "ms", ""};
constexpr Setting FRACTION = {"--fraction", nullptr, false, -0.5, 2.5, "", "", true};

// The number, or -1 where the text is refused.
double parsed(const Setting &setting, const std::string &text)
{
    double number = -1;
    const bool isTaken = parseSetting(setting, text, number);
    EXPECT_EQ(isTaken, number != -1) << text;
    return number;
}

} // namespace

TEST(Settings, AreTakenUpToTheEndsOfTheirRange)
{
    EXPECT_EQ(parsed(WHOLE, "10"), 10);
    EXPECT_EQ(parsed(WHOLE, "60000"), 60000);
    EXPECT_EQ(parsed(WHOLE, "0x10"), 16);
    EXPECT_EQ(parsed(WHOLE, "9"), -1);
    EXPECT_EQ(parsed(WHOLE, "60001"), -1);
    EXPECT_EQ(parsed(FRACTION, "-0.5"), -0.5);
    EXPECT_EQ(parsed(FRACTION, "2.5"), 2.5);
    EXPECT_EQ(parsed(FRACTION, "25e-1"), 2.5);
    EXPECT_EQ(parsed(FRACTION, "-0.501"), -1);
    EXPECT_EQ(parsed(FRACTION, "2.501"), -1);
}

TEST(Settings, AreNumbersAndNothingElse)
{
    for (const char *text : {"", "nan", "inf", "-inf", "1e400", "0x1p0", "1x", " 1", "1 ", "1,5"}) {
        EXPECT_EQ(parsed(WHOLE, text), -1) << text;
        EXPECT_EQ(parsed(FRACTION, text), -1) << text;
    }
    EXPECT_EQ(parsed(WHOLE, "12.5"), -1);
    EXPECT_EQ(parsed(FRACTION, "0"), -1);
    EXPECT_EQ(parsed(FRACTION, "-0.0"), -1);
}

TEST(Settings, SayTheirRange)
{
    EXPECT_EQ(rangeText(WHOLE), "10 to 60000 ms");
    EXPECT_EQ(rangeText(FRACTION), "-0.5 to 2.5, not 0");
    EXPECT_EQ(rangeText(settings::CHANGES), "1 to 1000000000");
}

TEST(Settings, AreSetWithinTheirRangeOnly)
{
    EXPECT_TRUE(isSet(settings::DECIMALS, 0));
    EXPECT_FALSE(isSet(settings::DECIMALS, -1));
    EXPECT_FALSE(isSet(settings::WATCH_FOR, 0));
}
