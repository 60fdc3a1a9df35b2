#include "session/poll_cycle.h"

#include <gtest/gtest.h>

namespace {

const TimePoint START;

TimePoint at(int ms)
{
    return START + Millis(ms);
}

TEST(PollCycle, FromABlockToTheSameBlock)
{
    PollCycle cycle;
    cycle.note("DM", 0, at(0));
    cycle.note("DM", 64, at(5));
    cycle.note("CIO", 0, at(8));
    EXPECT_EQ(cycle.all().count(), 0u);
    EXPECT_EQ(cycle.latest(), Micros(0));
    cycle.note("DM", 0, at(12));
    EXPECT_EQ(cycle.latest(), Micros(12000));
    cycle.note("DM", 64, at(15));
    cycle.note("DM", 0, at(22));
    EXPECT_EQ(cycle.latest(), Micros(10000));
    EXPECT_EQ(cycle.all().count(), 2u);
}

TEST(PollCycle, OneBlock)
{
    PollCycle cycle;
    cycle.note("DM", 0, at(0));
    cycle.note("DM", 0, at(3));
    EXPECT_EQ(cycle.latest(), Micros(3000));
}

TEST(PollCycle, ARestartLeavesTheCycleInProgressOut)
{
    PollCycle cycle;
    cycle.note("DM", 0, at(0));
    cycle.restart();
    cycle.note("DM", 64, at(100));
    cycle.note("DM", 0, at(101));
    EXPECT_EQ(cycle.all().count(), 0u);
    cycle.note("DM", 64, at(107));
    EXPECT_EQ(cycle.latest(), Micros(7000));
}

} // namespace
