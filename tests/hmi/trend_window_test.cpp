#include "model/trend_window.h"

#include <gtest/gtest.h>

namespace {

const TrendTime MINUTE = 60000;
const TrendTime HOUR   = 60 * MINUTE;

TrendWindow window(TrendTime span)
{
    TrendWindow made(span);
    made.setNow(10 * HOUR);
    return made;
}

TEST(TrendWindow, FollowsTheTimeWhileItIsLive)
{
    TrendWindow shown = window(10 * MINUTE);
    EXPECT_EQ(shown.end(), 10 * HOUR);
    EXPECT_EQ(shown.begin(), 10 * HOUR - 10 * MINUTE);
    shown.setNow(11 * HOUR);
    EXPECT_EQ(shown.end(), 11 * HOUR);
    shown.setLive(false);
    shown.setNow(12 * HOUR);
    EXPECT_EQ(shown.end(), 11 * HOUR);
    shown.setLive(true);
    EXPECT_EQ(shown.end(), 12 * HOUR);
}

TEST(TrendWindow, PanPausesAndMovesByPartsOfTheSpan)
{
    TrendWindow shown = window(10 * MINUTE);
    shown.pan(-0.5);
    EXPECT_FALSE(shown.isLive());
    EXPECT_EQ(shown.end(), 10 * HOUR - 5 * MINUTE);
    shown.pan(0.2);
    EXPECT_EQ(shown.end(), 10 * HOUR - 3 * MINUTE);
    EXPECT_EQ(shown.span(), 10 * MINUTE);
}

TEST(TrendWindow, ShowsNeitherTheFutureNorWhatIsNoLongerKept)
{
    TrendWindow shown = window(10 * MINUTE);
    shown.pan(3);
    EXPECT_EQ(shown.end(), 10 * HOUR);
    shown.pan(-1000);
    EXPECT_EQ(shown.begin(), 2 * HOUR);
}

TEST(TrendWindow, ZoomKeepsTheTimeUnderThePointer)
{
    TrendWindow shown = window(60 * MINUTE);
    shown.pan(-1);
    // From 8:00 to 9:00; a quarter into it is 8:15.
    shown.zoom(0.5, 0.25);
    EXPECT_EQ(shown.span(), 30 * MINUTE);
    EXPECT_EQ(shown.begin(), 8 * HOUR + 15 * MINUTE - 30 * MINUTE / 4);
    shown.zoom(2, 0.25);
    EXPECT_EQ(shown.begin(), 8 * HOUR);
}

TEST(TrendWindow, ZoomStaysLive)
{
    TrendWindow shown = window(10 * MINUTE);
    shown.zoom(0.5, 0.1);
    EXPECT_TRUE(shown.isLive());
    EXPECT_EQ(shown.end(), 10 * HOUR);
    EXPECT_EQ(shown.span(), 5 * MINUTE);
}

TEST(TrendWindow, SpanHasLimits)
{
    EXPECT_EQ(window(1).span(), 10000);
    EXPECT_EQ(window(100 * HOUR).span(), 8 * HOUR);
    TrendWindow shown = window(HOUR);
    shown.zoom(1e-9, 0.5);
    EXPECT_EQ(shown.span(), 10000);
    shown.zoom(1e300, 0.5);
    EXPECT_EQ(shown.span(), 8 * HOUR);
    EXPECT_EQ(shown.end(), 10 * HOUR);
}

} // namespace
