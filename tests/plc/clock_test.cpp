#include "cpu/clock.h"

#include <gtest/gtest.h>

TEST(Clock, FollowsTheMachineAtFirst)
{
    const plc::Clock clock;
    const auto before = std::chrono::system_clock::now();
    const auto shown = clock.now();
    EXPECT_FALSE(clock.isStepped());
    EXPECT_GE(shown, before);
    EXPECT_LE(shown, std::chrono::system_clock::now());
}

TEST(Clock, MovesByStepsAloneOnceItStandsStill)
{
    plc::Clock clock;
    clock.standStill();
    EXPECT_TRUE(clock.isStepped());
    EXPECT_EQ(std::chrono::system_clock::to_time_t(clock.now()), 946684800); // 2000-01-01 00:00:00 UTC
    clock.advance(std::chrono::milliseconds(86400250));
    const auto passed = clock.now().time_since_epoch();
    EXPECT_EQ(std::chrono::duration_cast<std::chrono::milliseconds>(passed).count(), 946771200250);
    EXPECT_EQ(clock.now(), clock.now());
}
