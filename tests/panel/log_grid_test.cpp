#include "log/grid.h"
#include "log/units.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

using Times = std::vector<SystemTime>;

// Milliseconds behind 2026-11-23T00:00:00Z, 1795392000 s after the epoch.
SystemTime at(long ms)
{
    return SystemTime(1795392000s) + std::chrono::milliseconds(ms);
}

TEST(Grid, RowsAreAtWholeMultiplesOfThePeriod)
{
    Grid grid(100ms, at(1030));
    EXPECT_EQ(grid.next(), at(1100));
    EXPECT_EQ(grid.due(at(1099)), Times());
    EXPECT_EQ(grid.due(at(1100)), Times({at(1100)}));
    EXPECT_EQ(grid.due(at(1100)), Times());
    EXPECT_EQ(grid.next(), at(1200));
    EXPECT_EQ(Grid(86400000ms, at(1)).next(), at(86400000));
}

TEST(Grid, ALateWakeUpMovesNoLaterRow)
{
    Grid grid(100ms, at(0));
    EXPECT_EQ(grid.due(at(170)), Times({at(100)}));
    EXPECT_EQ(grid.next(), at(200));
    EXPECT_EQ(grid.missed(), 0u);
}

TEST(Grid, AfterAPauseTheRowsOfItsLastSecondAreDue)
{
    Grid grid(100ms, at(0));
    EXPECT_EQ(grid.due(at(350)), Times({at(100), at(200), at(300)}));
    EXPECT_EQ(grid.missed(), 0u);
    EXPECT_EQ(grid.next(), at(400));
    EXPECT_EQ(grid.due(at(2250)).front(), at(1200)); // 400 to 1100 are missed
    EXPECT_EQ(grid.missed(), 8u);
    EXPECT_EQ(grid.next(), at(2300));
}

TEST(Grid, OfLongPeriodsOnlyTheLatestIsDue)
{
    Grid grid(2000ms, at(0));
    EXPECT_EQ(grid.due(at(6500)), Times({at(6000)}));
    EXPECT_EQ(grid.missed(), 2u);
}

TEST(Grid, AClockThatIsSetBackBeginsAnew)
{
    Grid grid(100ms, at(5000));
    EXPECT_EQ(grid.due(at(1010)), Times());
    EXPECT_EQ(grid.next(), at(1100));
    EXPECT_EQ(grid.due(at(1100)), Times({at(1100)}));
    EXPECT_EQ(grid.missed(), 0u);
}

TEST(Units, TimesHaveAUnit)
{
    EXPECT_EQ(parseTime("100ms"), 100ms);
    EXPECT_EQ(parseTime("5s"), 5000ms);
    EXPECT_EQ(parseTime("2min"), 120000ms);
    EXPECT_EQ(parseTime("1h"), 3600000ms);
    EXPECT_EQ(parseTime("1d"), 86400000ms);
    for (const char *text : {"", "5", "s", "0s", "-1s", "1.5s", "1 s", "1m", "5000d", "99999999999999999999s"})
        EXPECT_FALSE(parseTime(text)) << text;
}

TEST(Units, SizesMayHaveOne)
{
    EXPECT_EQ(parseSize("700"), 700u);
    EXPECT_EQ(parseSize("2k"), 2048u);
    EXPECT_EQ(parseSize("10M"), 10485760u);
    EXPECT_EQ(parseSize("1G"), 1073741824u);
    for (const char *text : {"", "0", "-1", "1.5M", "1K", "10MB", "9999999999999G"})
        EXPECT_FALSE(parseSize(text)) << text;
}

} // namespace
