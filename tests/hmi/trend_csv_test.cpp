#include "model/trend_csv.h"

#include <gtest/gtest.h>

namespace {

// 2026-03-01 08:15:30 UTC
const auto ZERO = std::chrono::system_clock::from_time_t(1772352930);

TEST(TrendCsv, HasAColumnPerTagAndALinePerChange)
{
    TrendStore store(3);
    store.add(0, 1000, 5, true);
    store.add(2, 2000, -0.25, true);
    store.add(0, 2007, 6.5, true);
    store.advance(4000);
    EXPECT_EQ(trendCsv(store, {{2, "Flow"}, {0, "Level, left"}, {1, "=Never"}}, 0, 10000, ZERO),
              "time,Flow,\"Level, left\",'=Never\r\n"
              "2026-03-01T08:15:31.000Z,,5,\r\n"
              "2026-03-01T08:15:32.000Z,-0.25,5,\r\n"
              "2026-03-01T08:15:32.007Z,-0.25,6.5,\r\n"
              "2026-03-01T08:15:34.001Z,,,\r\n");
}

TEST(TrendCsv, IsEmptyWhereThereWasAGap)
{
    TrendStore store(2);
    store.add(0, 1000, 5, true);
    store.add(1, 1000, 1, true);
    store.add(0, 2000, 0, false);
    store.add(0, 3000, 5, true);
    store.advance(5000);
    EXPECT_EQ(trendCsv(store, {{0, "a"}, {1, "b"}}, 0, 5000, ZERO), "time,a,b\r\n"
                                                                    "2026-03-01T08:15:31.000Z,5,1\r\n"
                                                                    "2026-03-01T08:15:32.000Z,,1\r\n"
                                                                    "2026-03-01T08:15:33.000Z,5,1\r\n");
}

TEST(TrendCsv, BeginsWithWhatHeldThen)
{
    TrendStore store(1);
    store.add(0, 1000, 5, true);
    store.add(0, 9000, 6, true);
    EXPECT_EQ(trendCsv(store, {{0, "a"}}, 4000, 9000, ZERO), "time,a\r\n2026-03-01T08:15:34.000Z,5\r\n");
}

TEST(TrendCsv, MergedChangesAreALineWithTheLatestValue)
{
    TrendStore store(1);
    for (TrendTime time = 0; time < 16000 * 1700; time += 8000)
        store.add(0, time, static_cast<double>(time), true);
    EXPECT_EQ(trendCsv(store, {{0, "a"}}, 16000, 48000, ZERO), "time,a\r\n"
                                                               "2026-03-01T08:15:46.000Z,24000\r\n"
                                                               "2026-03-01T08:16:02.000Z,40000\r\n");
    EXPECT_EQ(trendCsv(store, {{0, "a"}}, 20000, 32000, ZERO), "time,a\r\n2026-03-01T08:15:50.000Z,24000\r\n")
        << "no line is before what was asked for";
}

} // namespace
