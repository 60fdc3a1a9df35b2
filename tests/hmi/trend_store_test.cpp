#include "model/trend_store.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const std::size_t MANY = 100000;

// "BEGIN-END MIN..MAX LAST", with + ahead where it is joined to the one before and ! behind where it has a gap.
std::string text(const std::vector<TrendBucket> &buckets)
{
    std::string all;
    for (const TrendBucket &bucket : buckets) {
        char one[120];
        std::snprintf(one, sizeof one, "%s%lld-%lld %g..%g %g%s", bucket.isJoined ? "+" : "",
                      static_cast<long long>(bucket.begin), static_cast<long long>(bucket.end), bucket.minimum,
                      bucket.maximum, bucket.last, bucket.hasGap ? "!" : "");
        all += (all.empty() ? "" : " | ") + std::string(one);
    }
    return all;
}

struct OneTag : TrendStore {
    OneTag() : TrendStore(1) {}
    void good(TrendTime time, double value) { add(0, time, value, true); }
    void bad(TrendTime time) { add(0, time, 0, false); }
    std::string shown(TrendTime from, TrendTime to, std::size_t atMost) const
    {
        return text(points(0, from, to, atMost));
    }
};

TEST(TrendStore, KnowsNothingBeforeTheFirstValue)
{
    OneTag store;
    store.advance(5000);
    EXPECT_EQ(store.shown(0, 10000, 10), "");
    store.bad(6000);
    EXPECT_EQ(store.shown(0, 10000, 10), "");
    EXPECT_EQ(store.shown(10, 10, 10), "");
    EXPECT_EQ(store.shown(10, 0, 10), "");
}

TEST(TrendStore, ValueHoldsUntilTheLatestTimeThatIsKnown)
{
    OneTag store;
    store.good(1000, 5);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-1001 5..5 5");
    store.advance(4000);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-2000 5..5 5 | +2000-4001 5..5 5");
    store.advance(3000);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-2000 5..5 5 | +2000-4001 5..5 5");
    store.advance(20000);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-2000 5..5 5 | +2000-10000 5..5 5");
    EXPECT_EQ(store.shown(6000, 10000, 5), "6000-10000 5..5 5") << "one bucket, for nothing changes";
}

TEST(TrendStore, SampleOfTheSameValueTellsThatItHolds)
{
    OneTag store;
    store.good(1000, 5);
    store.good(3000, 5);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-2000 5..5 5 | +2000-3001 5..5 5");
}

TEST(TrendStore, ShowsEachChangeWhereThereIsRoom)
{
    OneTag store;
    store.good(10, 1);
    store.good(20, 3);
    store.good(25, 2);
    store.advance(29);
    EXPECT_EQ(store.shown(0, 100, MANY), "10-11 1..1 1 | +11-20 1..1 1 | +20-21 3..3 3 | +21-25 3..3 3 | +25-26 2..2 2"
                                         " | +26-30 2..2 2");
}

TEST(TrendStore, BucketHasWhatWasHeldAndWhatCame)
{
    OneTag store;
    store.good(0, 4);
    store.good(1300, 9);
    store.good(1600, 1);
    store.good(1900, 2);
    store.good(3000, 7);
    store.advance(5000);
    // Steps of 1000: 5000 in 5 parts. 4 is held at the begin of the second; 2 is not in the fourth, which begins with 7.
    EXPECT_EQ(store.shown(0, 5000, 6),
              "0-1000 4..4 4 | +1000-2000 1..9 2 | +2000-3000 2..2 2 | +3000-4000 7..7 7 | +4000-5000 7..7 7");
}

TEST(TrendStore, GridDoesNotMoveWithTheQuery)
{
    OneTag store;
    for (TrendTime time = 0; time < 20000; time += 100)
        store.good(time, static_cast<double>(time % 700));
    const std::vector<TrendBucket> all = store.points(0, 0, 20000, 21);
    for (TrendTime from = 0; from < 1000; from += 37) {
        const std::vector<TrendBucket> moved = store.points(0, 5000 + from, 15000 + from, 11);
        ASSERT_FALSE(moved.empty());
        EXPECT_EQ(moved[1].begin % 1000, 0) << from;
        EXPECT_EQ(moved[1].maximum, all[static_cast<std::size_t>(moved[1].begin / 1000)].maximum) << from;
    }
}

TEST(TrendStore, GridGoesOnBeforeZero)
{
    EXPECT_EQ(gridBefore(-1, 1000), -1000);
    EXPECT_EQ(gridBefore(-1000, 1000), -1000);
    EXPECT_EQ(gridBefore(0, 1000), 0);
    EXPECT_EQ(gridBefore(999, 1000), 0);
    OneTag store;
    store.good(-1500, 5);
    store.good(-200, 6);
    store.good(200, 7);
    EXPECT_EQ(store.shown(-2000, 1000, 4), "-1500--1000 5..5 5 | +-1000-0 5..6 6 | +0-201 6..7 7");
}

TEST(TrendStore, GapIsNotBridged)
{
    OneTag store;
    store.good(1000, 5);
    store.bad(2500);
    store.good(7200, 6);
    store.advance(9000);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-2000 5..5 5 | +2000-2500 5..5 5 | 7200-8000 6..6 6 | +8000-9001 6..6 6");
}

TEST(TrendStore, GapEndsWithTheSameValueToo)
{
    OneTag store;
    store.good(1000, 5);
    store.bad(2500);
    store.good(7200, 5);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-2000 5..5 5 | +2000-2500 5..5 5 | 7200-7201 5..5 5");
}

TEST(TrendStore, GapGoesOnWhileTimeAdvances)
{
    OneTag store;
    store.good(1000, 5);
    store.bad(1500);
    store.bad(4000);
    store.advance(9000);
    EXPECT_EQ(store.shown(0, 10000, 11), "1000-1500 5..5 5");
}

TEST(TrendStore, GapWithinABucketIsMarked)
{
    OneTag store;
    store.good(0, 5);
    store.bad(2100);
    store.good(2200, 6);
    store.good(2300, 4);
    store.advance(5000);
    EXPECT_EQ(store.shown(0, 5000, 6), "0-1000 5..5 5 | +1000-2000 5..5 5 | +2000-3000 4..6 4! | +3000-5000 4..4 4");
}

TEST(TrendStore, GapBetweenTwoCellsOfABucketIsMarked)
{
    OneTag store;
    store.good(100, 5);
    store.bad(600);
    store.good(1600, 6);
    store.advance(4000);
    // Steps of 2000, each of two cells of the level of 1000: the gap reaches from one into the other.
    EXPECT_EQ(store.shown(0, 4000, 3), "100-2000 5..6 6! | +2000-4000 6..6 6");
}

TEST(TrendStore, GapThatBeginsWithABucketHasNoValue)
{
    OneTag store;
    store.good(500, 5);
    store.bad(2000);
    store.good(3000, 6);
    EXPECT_EQ(store.shown(0, 5000, 6), "500-1000 5..5 5 | +1000-2000 5..5 5 | 3000-3001 6..6 6");
    EXPECT_EQ(store.shown(0, 8000, 3), "500-3001 5..6 6!");
}

TEST(TrendStore, WhatIsNotFiniteIsAGap)
{
    for (const double none : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        OneTag store;
        store.good(100, 5);
        store.good(200, none);
        store.good(300, 6);
        EXPECT_EQ(store.shown(0, 1000, MANY), "100-101 5..5 5 | +101-200 5..5 5 | 300-301 6..6 6");
    }
}

TEST(TrendStore, EarlierTimeCountsAsThatOfTheLatestChange)
{
    OneTag store;
    store.good(1000, 5);
    store.good(2000, 6);
    store.good(500, 9);
    EXPECT_EQ(store.shown(0, 5000, 6), "1000-2000 5..5 5 | +2000-2001 6..9 9");
    store.bad(100);
    store.good(3000, 7);
    EXPECT_EQ(store.shown(0, 5000, 6), "1000-2000 5..5 5 | +2000-2001 6..9 9 | 3000-3001 7..7 7");
}

TEST(TrendStore, SampleThatComesAfterTimeAdvancedKeepsItsOwnTime)
{
    OneTag store;
    store.good(1000, 5);
    store.advance(3000);
    store.good(2500, 6);
    EXPECT_EQ(store.shown(0, 5000, 6), "1000-2000 5..5 5 | +2000-3000 5..6 6 | +3000-3001 6..6 6");
}

TEST(TrendStore, TagsAreApart)
{
    TrendStore store(2);
    store.add(0, 1000, 1, true);
    store.add(1, 2000, 2, true);
    EXPECT_EQ(text(store.points(0, 0, 5000, 6)), "1000-1001 1..1 1");
    EXPECT_EQ(text(store.points(1, 0, 5000, 6)), "2000-2001 2..2 2");
}

TEST(TrendStore, TellsTheValueAtATime)
{
    OneTag store;
    store.good(1000, 5);
    store.good(2000, 6);
    store.bad(3000);
    EXPECT_FALSE(store.at(0, 999));
    ASSERT_TRUE(store.at(0, 1999));
    EXPECT_EQ(store.at(0, 1999)->maximum, 5);
    EXPECT_EQ(store.at(0, 2000)->minimum, 6);
    EXPECT_EQ(store.at(0, 2999)->last, 6);
    EXPECT_FALSE(store.at(0, 3000));
}

TEST(TrendStore, OlderTimesAreMergedAndTheNewestAreNot)
{
    OneTag store;
    const TrendTime end = 8 * 3600 * 1000;
    for (TrendTime time = 0; time <= end; time += 100)
        store.good(time, time % 200 == 0 ? 50 : 1);
    EXPECT_EQ(store.points(0, end - 20000, end, MANY).size(), 400U) << "200 changes, and what is held between them";
    EXPECT_EQ(text({store.points(0, end - 800000, end, MANY)[1]}), "+28001000-28002000 1..50 1");
    EXPECT_EQ(text({store.points(0, end - 3400000, end, MANY)[1]}), "+25404000-25408000 1..50 1");
    EXPECT_EQ(text({store.points(0, 0, end, MANY)[0]}), "0-16000 1..50 1");
    EXPECT_EQ(store.points(0, 0, end, 100000).size(), 1800U);
    EXPECT_LE(store.points(0, 0, end, 400).size(), 400U);
}

TEST(TrendStore, WhatWasDroppedIsNotGuessed)
{
    OneTag store;
    const TrendTime step = 16000;
    for (TrendTime i = 0; i < 1811; ++i)
        store.good(i * step + 5000, static_cast<double>(i));
    // 1810 cells are kept: the first, with the value 0, is gone, and with it what held before the second.
    EXPECT_EQ(text({store.points(0, 0, 2000 * step, 1001)[0]}), "21000-32000 1..1 1");
    EXPECT_EQ(store.points(0, 0, 2000 * step, 1001)[1].minimum, 1);
}

TEST(TrendStore, TakesNoMoreThanItSays)
{
    static_assert(TrendStore::BYTES_PER_TAG * 100 < 16 * 1024 * 1024, "a hundred tags take less than 16 MiB");
    static_assert(sizeof(void *) < 8 || TrendStore::BYTES_PER_TAG == 164680, "what its header says");
    TrendStore store(2);
    EXPECT_LT(store.bytes(), 2U * 1024) << "what never changes takes no room";
    for (int i = 0; i < 200000; ++i)
        store.add(0, i * 1000LL, i % 7, i % 5 != 0);
    for (int i = 0; i < 200000; ++i)
        store.add(1, i * 16000LL, i, true);
    EXPECT_EQ(store.bytes(), 2 * TrendStore::BYTES_PER_TAG) << "all are full";
}

} // namespace
