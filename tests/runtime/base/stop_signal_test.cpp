#include "base/stop_signal.h"

#include <gtest/gtest.h>

#include <poll.h>

static bool isReadable(const StopSignal &signal)
{
    pollfd polled = {signal.fd(), POLLIN, 0};
    return poll(&polled, 1, 0) == 1;
}

TEST(StopSignal, IsQuietAtFirst)
{
    const StopSignal signal;
    EXPECT_FALSE(signal.isStopped());
    EXPECT_FALSE(isReadable(signal));
}

TEST(StopSignal, TakesAWakeBack)
{
    StopSignal signal;
    signal.wake();
    signal.wake();
    EXPECT_TRUE(isReadable(signal));
    EXPECT_FALSE(signal.isStopped());
    signal.clear();
    EXPECT_FALSE(isReadable(signal));
    signal.clear();
    EXPECT_FALSE(isReadable(signal));
}

TEST(StopSignal, StopsForGood)
{
    StopSignal signal;
    signal.wake();
    signal.stop();
    signal.clear();
    EXPECT_TRUE(signal.isStopped());
    EXPECT_TRUE(isReadable(signal));
}
