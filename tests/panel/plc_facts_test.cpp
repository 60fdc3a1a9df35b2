#include "commands/plc_facts.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

using std::chrono::seconds;

// Central Europe: an hour ahead of UTC, two in summer, which ends on 2026-10-25 at 01:00 UTC.
class ClockFactsTest : public ::testing::Test {
protected:
    ClockFactsTest()
    {
        const char *zone = std::getenv("TZ");
        hadZone_ = zone != nullptr;
        zone_    = hadZone_ ? zone : "";
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        tzset();
    }

    ~ClockFactsTest() override
    {
        if (hadZone_)
            setenv("TZ", zone_.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    bool        hadZone_ = false;
    std::string zone_;
};

const auto NOON = std::chrono::system_clock::from_time_t(1792839600); // 2026-10-24 11:00:00 UTC, 13:00:00 here

PlcTime at(int hour, int minute, int second)
{
    return {2026, 10, 24, hour, minute, second};
}

} // namespace

TEST_F(ClockFactsTest, ADifferenceHasTwoUnits)
{
    EXPECT_EQ(differenceText(at(13, 0, 0), NOON), "as this computer's");
    EXPECT_EQ(differenceText(at(13, 0, 0), NOON + std::chrono::milliseconds(999)), "as this computer's");
    EXPECT_EQ(differenceText(at(13, 0, 3), NOON), "3 s ahead of this computer's");
    EXPECT_EQ(differenceText(at(12, 0, 1), NOON), "59 min 59 s behind this computer's");
    EXPECT_EQ(differenceText(at(11, 0, 0), NOON), "2 h behind this computer's");
    EXPECT_EQ(differenceText(at(4, 30, 20), NOON), "8 h 29 min behind this computer's");
    EXPECT_EQ(differenceText(at(12, 0, 0), NOON), "1 h behind this computer's");
    EXPECT_EQ(differenceText({2026, 10, 26, 18, 0, 0}, NOON), "2 d 5 h ahead of this computer's");
    EXPECT_EQ(differenceText({2026, 10, 25, 13, 59, 0}, NOON), "1 d ahead of this computer's");
    EXPECT_EQ(differenceText({2026, 2, 30, 0, 0, 0}, NOON), "a day that does not exist");
}

// 02:30 comes twice in this night, and a PLC that shows it is right both times.
TEST_F(ClockFactsTest, AnHourThatComesTwiceIsNoDifference)
{
    for (const std::time_t now : {1792888200, 1792891800}) { // 00:30 and 01:30 UTC
        const Facts facts = clockFacts({2026, 10, 25, 2, 30, 0}, std::chrono::system_clock::from_time_t(now));
        EXPECT_EQ(factsJson(facts), "{\"clock\":\"2026-10-25 02:30:00\",\"difference_s\":0}\n") << now;
    }
}

// An order on a slow line arrives late: the clock is behind then, and has taken the time all the same.
TEST_F(ClockFactsTest, ATimeIsTakenWhenTheOrderArrives)
{
    const auto now = NOON + seconds(20);
    EXPECT_TRUE(hasTaken(at(13, 0, 20), NOON, now));
    EXPECT_TRUE(hasTaken(at(13, 0, 5), NOON, now));
    EXPECT_TRUE(hasTaken(at(13, 0, 0), NOON, now));
    EXPECT_TRUE(hasTaken(at(12, 59, 58), NOON, now));
    EXPECT_TRUE(hasTaken(at(13, 0, 22), NOON, now));
    EXPECT_FALSE(hasTaken(at(12, 59, 57), NOON, now));
    EXPECT_FALSE(hasTaken(at(13, 0, 23), NOON, now));
    EXPECT_FALSE(hasTaken({2026, 2, 30, 13, 0, 20}, NOON, now));
}
