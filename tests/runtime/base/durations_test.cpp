#include "base/durations.h"

#include <gtest/gtest.h>

namespace {

Durations durations(std::initializer_list<int> micros)
{
    Durations all;
    for (const int one : micros)
        all.add(Micros(one));
    return all;
}

TEST(Durations, None)
{
    const Durations none;
    EXPECT_EQ(none.count(), 0u);
    EXPECT_EQ(none.minimum(), Micros(0));
    EXPECT_EQ(none.maximum(), Micros(0));
    EXPECT_EQ(none.percentile(50), Micros(0));
    EXPECT_TRUE(none.histogram(10).empty());
}

TEST(Durations, Extremes)
{
    const Durations some = durations({30, 10, 20});
    EXPECT_EQ(some.count(), 3u);
    EXPECT_EQ(some.minimum(), Micros(10));
    EXPECT_EQ(some.maximum(), Micros(30));
}

TEST(Durations, PercentilesAreOfTheNearestRank)
{
    Durations hundred;
    for (int i = 100; i >= 1; --i)
        hundred.add(Micros(i));
    EXPECT_EQ(hundred.percentile(1), Micros(1));
    EXPECT_EQ(hundred.percentile(50), Micros(50));
    EXPECT_EQ(hundred.percentile(95), Micros(95));
    EXPECT_EQ(hundred.percentile(100), Micros(100));
    const Durations three = durations({3, 1, 2});
    EXPECT_EQ(three.percentile(33), Micros(1));
    EXPECT_EQ(three.percentile(34), Micros(2));
    EXPECT_EQ(three.percentile(50), Micros(2));
    EXPECT_EQ(three.percentile(67), Micros(3));
}

TEST(Durations, TheOldestLeaveThePercentilesAndStayInTheExtremes)
{
    Durations many;
    many.add(Micros(9));
    many.add(Micros(1));
    for (std::size_t i = 0; i < Durations::KEPT - 1; ++i)
        many.add(Micros(5));
    EXPECT_EQ(many.count(), Durations::KEPT + 1);
    EXPECT_EQ(many.percentile(100), Micros(5));
    EXPECT_EQ(many.percentile(1), Micros(5));
    EXPECT_EQ(many.minimum(), Micros(1));
    EXPECT_EQ(many.maximum(), Micros(9));
}

TEST(Durations, HistogramHasALineForEachClassBetween)
{
    const std::vector<std::string> expected = {
        "from     0.01 ms       2 ##########",
        "from     0.02 ms       0",
        "from     0.05 ms       1 #####",
    };
    EXPECT_EQ(durations({10, 19, 50}).histogram(10), expected);
}

TEST(Durations, HistogramClassesBeginAtTheirLowerEnd)
{
    EXPECT_EQ(durations({1000}).histogram(1), std::vector<std::string>{"from        1 ms       1 #"});
    EXPECT_EQ(durations({999}).histogram(1), std::vector<std::string>{"from      0.5 ms       1 #"});
    EXPECT_EQ(durations({0}).histogram(1), std::vector<std::string>{"from        0 ms       1 #"});
}

TEST(Durations, HistogramShowsTheSmallestClass)
{
    Durations many = durations({20});
    for (int i = 0; i < 1000; ++i)
        many.add(Micros(10));
    EXPECT_EQ(many.histogram(5).back(), "from     0.02 ms       1 #");
}

TEST(PerSecond, OfAnyTime)
{
    EXPECT_EQ(perSecond(100, std::chrono::milliseconds(4000)), 25.0);
    EXPECT_EQ(perSecond(1, std::chrono::milliseconds(250)), 4.0);
    EXPECT_EQ(perSecond(7, std::chrono::milliseconds(0)), 0.0);
}

TEST(MillisText, ThreeDigits)
{
    EXPECT_EQ(millisText(Micros(0)), "0.000");
    EXPECT_EQ(millisText(Micros(52)), "0.052");
    EXPECT_EQ(millisText(Micros(999)), "0.999");
    EXPECT_EQ(millisText(Micros(1000)), "1.00");
    EXPECT_EQ(millisText(Micros(9994)), "9.99");
    EXPECT_EQ(millisText(Micros(9996)), "10.0");
    EXPECT_EQ(millisText(Micros(99940)), "99.9");
    EXPECT_EQ(millisText(Micros(99960)), "100");
    EXPECT_EQ(millisText(Micros(1250000)), "1250");
}

TEST(SpreadText, FromLeastToGreatest)
{
    Durations hundred;
    for (int i = 1; i <= 100; ++i)
        hundred.add(Micros(i * 100));
    EXPECT_EQ(spreadText(hundred), "min 0.100, median 5.00, 95 % 9.50, 99 % 9.90, max 10.0");
}

} // namespace
