#include "model/trend_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

// What the store says of random courses, compared with a plain list of all their changes.

namespace {

struct Change {
    TrendTime time;
    double    value;
    bool      isGood;
};

class Plain {
public:
    void add(Change change)
    {
        const bool wasGood = !changes_.empty() && changes_.back().isGood;
        if (change.isGood == wasGood && (!wasGood || change.value == changes_.back().value))
            return;
        changes_.push_back(change);
    }

    // The value as it was from `begin` to just before `end`, and at a gap that begins there.
    struct Range {
        double least    = 1e9;
        double greatest = -1e9;
        double last     = 0;
        bool   hasGap   = false; // before the last value
    };

    Range range(TrendTime begin, TrendTime end) const
    {
        Range range;
        bool isLost = false;
        for (const Change &change : within(begin, end)) {
            if (!change.isGood) {
                isLost = true;
                continue;
            }
            range.hasGap   = range.hasGap || isLost;
            range.least    = std::min(range.least, change.value);
            range.greatest = std::max(range.greatest, change.value);
            range.last     = change.value;
        }
        return range;
    }

    bool isGoodBefore(TrendTime time) const
    {
        bool isGood = false;
        for (const Change &change : changes_)
            isGood = change.time < time ? change.isGood : isGood;
        return isGood;
    }

    bool isGoodAt(TrendTime time) const { return isGoodBefore(time + 1); }

private:
    std::vector<Change> within(TrendTime begin, TrendTime end) const
    {
        std::vector<Change> found;
        for (const Change &change : changes_) {
            if (change.time <= begin) // what held before ends here
                found.clear();
            if (change.time < end)
                found.push_back(change);
        }
        if (!found.empty() && found.front().time < begin && !found.front().isGood)
            found.erase(found.begin());
        return found;
    }

    std::vector<Change> changes_;
};

struct Course {
    TrendStore store{1};
    Plain      plain;
    TrendTime  end = 0;

    Course(unsigned seed, int changes, TrendTime longest)
    {
        std::mt19937 random(seed);
        const auto upTo = [&random](TrendTime most) {
            return std::uniform_int_distribution<TrendTime>(1, most)(random);
        };
        for (int i = 0; i < changes; ++i) {
            end += upTo(upTo(longest));
            const Change change = {end, static_cast<double>(upTo(1000)), upTo(6) > 1};
            store.add(0, change.time, change.value, change.isGood);
            plain.add(change);
        }
        end += upTo(longest);
        store.advance(end);
    }
};

void compare(const Course &course, TrendTime from, TrendTime to, std::size_t atMost)
{
    const std::vector<TrendBucket> buckets = course.store.points(0, from, to, atMost);
    ASSERT_LE(buckets.size(), atMost);
    for (std::size_t i = 0; i < buckets.size(); ++i) {
        const TrendBucket &bucket = buckets[i];
        SCOPED_TRACE(testing::Message() << "bucket " << bucket.begin << "-" << bucket.end << " of " << from << "-" << to);
        const Plain::Range range = course.plain.range(bucket.begin, bucket.end);
        ASSERT_LT(bucket.begin, bucket.end);
        ASSERT_EQ(bucket.minimum, range.least);
        ASSERT_EQ(bucket.maximum, range.greatest);
        ASSERT_EQ(bucket.hasGap, range.hasGap);
        ASSERT_GE(bucket.begin, i > 0 ? buckets[i - 1].end : 0);
        ASSERT_EQ(bucket.isJoined, i > 0 && buckets[i - 1].end == bucket.begin && course.plain.isGoodBefore(bucket.begin));
        ASSERT_EQ(bucket.last, range.last);
    }
}

// Every time in the query is in a bucket exactly if its value was good, but where buckets have gaps.
void compareCoverage(const Course &course, TrendTime from, TrendTime to)
{
    const std::vector<TrendBucket> buckets = course.store.points(0, from, to, 50);
    for (TrendTime time = from; time < std::min(to, course.end + 1); time += 13) {
        const auto holds = [time](const TrendBucket &bucket) { return bucket.begin <= time && time < bucket.end; };
        const auto found = std::find_if(buckets.begin(), buckets.end(), holds);
        if (found != buckets.end() && found->hasGap)
            continue;
        ASSERT_EQ(found != buckets.end(), course.plain.isGoodAt(time)) << time << " of " << from << "-" << to;
    }
}

TEST(TrendProperty, EveryBucketHasTheTrueMinimumMaximumAndGaps)
{
    for (const unsigned seed : {1U, 2U, 3U, 4U, 5U, 6U}) {
        const Course course(seed, 400, seed % 2 ? 400 : 40000);
        std::mt19937 random(seed + 100);
        for (int i = 0; i < 40; ++i) {
            const TrendTime from = std::uniform_int_distribution<TrendTime>(-1000, course.end)(random);
            const TrendTime to   = std::uniform_int_distribution<TrendTime>(from + 1, course.end + 5000)(random);
            compare(course, from, to, std::uniform_int_distribution<std::size_t>(2, 60)(random));
            compareCoverage(course, from, std::min(to, from + 50000));
        }
    }
}

TEST(TrendProperty, HoldsWhereTheFinerLevelsHaveDroppedTheirOldest)
{
    for (const unsigned seed : {7U, 8U}) {
        const Course course(seed, 4000, seed % 2 ? 9000 : 2500);
        std::mt19937 random(seed);
        for (int i = 0; i < 8; ++i) {
            const TrendTime from = std::uniform_int_distribution<TrendTime>(0, course.end)(random);
            compare(course, from, from + course.end / 20, 40);
            compare(course, from, course.end, 40);
        }
    }
}

} // namespace
