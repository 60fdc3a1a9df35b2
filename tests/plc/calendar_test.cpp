#include "cpu/calendar.h"

#include <gtest/gtest.h>

// What the CPU unit's clock shows at times that the test chooses.

class CalendarTest : public ::testing::Test {
protected:
    using Time = plc::Calendar::Time;

    bool set(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
    {
        std::tm time = {};
        time.tm_year = year - 1900;
        time.tm_mon = month - 1;
        time.tm_mday = day;
        time.tm_hour = hour;
        time.tm_min = minute;
        time.tm_sec = second;
        return calendar.set(time, now);
    }

    // "YYYY-MM-DD HH:MM:SS W", W being the weekday.
    std::string shown() const
    {
        const std::tm time = calendar.read(now);
        char text[64] = {};
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S ", &time);
        return text + std::to_string(time.tm_wday);
    }

    // 14 November 2023, 22:13:20 UTC and half a second.
    Time          now = Time(std::chrono::milliseconds(1700000000500));
    plc::Calendar calendar;
};

TEST_F(CalendarTest, RunsWithTheTime)
{
    ASSERT_TRUE(set(2026, 12, 31, 23, 59, 58));
    EXPECT_EQ(shown(), "2026-12-31 23:59:58 4");
    now += std::chrono::milliseconds(999);
    EXPECT_EQ(shown(), "2026-12-31 23:59:58 4");
    now += std::chrono::milliseconds(1);
    EXPECT_EQ(shown(), "2026-12-31 23:59:59 4");
    now += std::chrono::seconds(1);
    EXPECT_EQ(shown(), "2027-01-01 00:00:00 5");
}

TEST_F(CalendarTest, LeapDaysAreThereWhenTheYearHasOne)
{
    const struct {
        int         year;
        const char *dayAfter28February;
    } rows[] = {
        {2000, "2000-02-29 00:00:00 2"}, {2024, "2024-02-29 00:00:00 4"}, {2026, "2026-03-01 00:00:00 0"},
        {2096, "2096-02-29 00:00:00 3"}, {1999, "1999-03-01 00:00:00 1"},
    };
    for (const auto &row : rows) {
        ASSERT_TRUE(set(row.year, 2, 28, 23, 59, 59)) << row.year;
        now += std::chrono::seconds(1);
        EXPECT_EQ(shown(), row.dayAfter28February);
    }
}

TEST_F(CalendarTest, AWeekdayOfItsOwnGoesOn)
{
    ASSERT_TRUE(set(2026, 2, 28, 23, 59, 59));
    calendar.setWeekday(6, now);
    EXPECT_EQ(shown(), "2026-02-28 23:59:59 6");
    calendar.setWeekday(1, now);
    EXPECT_EQ(shown(), "2026-02-28 23:59:59 1");
    now += std::chrono::seconds(1);
    EXPECT_EQ(shown(), "2026-03-01 00:00:00 2");
    now += std::chrono::hours(24 * 5);
    EXPECT_EQ(shown(), "2026-03-06 00:00:00 0");
}

TEST_F(CalendarTest, WhatIsNoTimeChangesNothing)
{
    ASSERT_TRUE(set(2026, 1, 1));
    EXPECT_FALSE(set(2026, 2, 29));
    EXPECT_FALSE(set(2026, 0, 1));
    EXPECT_FALSE(set(2026, 1, 1, 24));
    EXPECT_FALSE(set(2026, 1, 1, 0, 60));
    EXPECT_FALSE(set(2026, 1, 1, 0, 0, 60));
    EXPECT_FALSE(set(1997, 12, 31));
    EXPECT_FALSE(set(2098, 1, 1));
    EXPECT_FALSE(set(1, 1, 1)); // these two are beyond what the machine counts in nanoseconds
    EXPECT_FALSE(set(9999, 12, 31));
    EXPECT_EQ(shown(), "2026-01-01 00:00:00 4");
    EXPECT_TRUE(set(1998, 1, 1));
    EXPECT_TRUE(set(2097, 12, 31, 23, 59, 59));
}

TEST_F(CalendarTest, ShowsUtcUntilItIsSet) { EXPECT_EQ(shown(), "2023-11-14 22:13:20 2"); }

TEST(CalendarDigits, YearsOfTwoDigits)
{
    EXPECT_EQ(plc::yearOf(0), 100);
    EXPECT_EQ(plc::yearOf(97), 197);
    EXPECT_EQ(plc::yearOf(98), 98);
    EXPECT_EQ(plc::yearOf(99), 99);
}
