#include "common/time_text.h"

#include <gtest/gtest.h>

TEST(TimeText, IsUtcWithMilliseconds)
{
    const SystemTime time = std::chrono::system_clock::from_time_t(1772352930) + std::chrono::milliseconds(7);
    EXPECT_EQ(timeText(time), "2026-03-01T08:15:30.007Z");
}

TEST(TimeText, AgesHaveOneUnit)
{
    using std::chrono::seconds;
    EXPECT_EQ(ageText(seconds(-1)), "0 s");
    EXPECT_EQ(ageText(seconds(0)), "0 s");
    EXPECT_EQ(ageText(seconds(59)), "59 s");
    EXPECT_EQ(ageText(seconds(60)), "1 min");
    EXPECT_EQ(ageText(seconds(3599)), "59 min");
    EXPECT_EQ(ageText(seconds(3600)), "1 h");
    EXPECT_EQ(ageText(seconds(86399)), "23 h");
    EXPECT_EQ(ageText(seconds(86400)), "1 d");
    EXPECT_EQ(ageText(seconds(172800)), "2 d");
}
