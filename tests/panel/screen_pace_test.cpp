#include "terminal/screen_pace.h"

#include <gtest/gtest.h>

namespace {

class ScreenPaceTest : public ::testing::Test {
protected:
    // The longest time, in ms, for which no further screen may be shown from now on.
    long pause() const
    {
        long ms = 0;
        while (!pace.mayShow(now + Millis(ms)))
            ++ms;
        return ms;
    }

    ScreenPace pace;
    TimePoint  now = TimePoint(std::chrono::hours(1));
};

TEST_F(ScreenPaceTest, TheFirstScreenIsShownAtOnce)
{
    EXPECT_EQ(pause(), 0);
}

TEST_F(ScreenPaceTest, AnAnswerMakesRoomForTheNext)
{
    pace.sent(1920, now);
    EXPECT_TRUE(pace.isAwaited(now));
    pace.answered();
    EXPECT_EQ(pause(), 0);
    EXPECT_FALSE(pace.isAwaited(now));
}

// 960 bytes a second, and three seconds at most.
TEST_F(ScreenPaceTest, WithoutAnAnswerAsASlowLine)
{
    pace.sent(480, now);
    EXPECT_EQ(pause(), 500);
    now += Millis(500);
    pace.sent(960, now);
    EXPECT_EQ(pause(), 1000);
    now += Millis(1000);
    pace.sent(9600, now);
    EXPECT_EQ(pause(), 3000);
}

TEST_F(ScreenPaceTest, ATerminalThatAnswersIsWaitedFor)
{
    pace.sent(480, now);
    pace.answered();
    pace.sent(480, now);
    EXPECT_EQ(pause(), 30000);
}

TEST_F(ScreenPaceTest, OneThatAnswersNoMoreIsAsOneThatNeverDid)
{
    pace.sent(480, now);
    pace.answered();
    pace.sent(480, now);
    now += Millis(30000);
    pace.sent(480, now);
    EXPECT_EQ(pause(), 500);
}

TEST_F(ScreenPaceTest, EveryQuestionAwaitsItsAnswer)
{
    pace.sent(480, now);
    now += Millis(500);
    pace.sent(480, now);
    pace.answered();
    EXPECT_EQ(pause(), 500);
    pace.answered();
    EXPECT_EQ(pause(), 0);
    pace.answered(); // nobody asked
    pace.sent(480, now);
    EXPECT_EQ(pause(), 30000);
}

TEST_F(ScreenPaceTest, BeginsAnew)
{
    pace.sent(480, now);
    pace.restart();
    EXPECT_EQ(pause(), 0);
}

} // namespace
