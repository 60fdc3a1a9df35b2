#include "model/trend_store.h"

#include <algorithm>
#include <cmath>

namespace {

const std::size_t MOST_BUCKETS = 1000000;

// Makes buckets of `step` milliseconds of the cells of one level, whose own step divides it.
class BucketMaker {
public:
    BucketMaker(const TrendLevel &level, TrendTime step, TrendTime knownUntil)
        : level_(level), step_(step), knownEnd_(knownUntil + 1) {}

    std::vector<TrendBucket> make(TrendTime from, TrendTime to)
    {
        begin_ = gridBefore(from, step_);
        index_ = level_.findFrom(begin_);
        if (index_ > 0) {
            isGood_ = level_.at(index_ - 1).endsGood;
            held_   = level_.at(index_ - 1).last;
        }
        while (index_ < level_.size() && level_.at(index_).time < to) {
            const TrendTime begin = gridBefore(level_.at(index_).time, step_);
            addHeld(begin);
            addChanges(begin);
            begin_ = begin + step_;
        }
        addHeld(std::min(to, knownEnd_));
        return std::move(buckets_);
    }

private:
    // The value that holds without a change until `end`.
    void addHeld(TrendTime end)
    {
        if (isGood_ && end > begin_)
            buckets_.push_back({begin_, end, held_, held_, held_, !buckets_.empty(), false});
    }

    // The changes of one step, which begins at `begin`. After a gap the bucket begins with its first value.
    void addChanges(TrendTime begin)
    {
        TrendBucket bucket = {begin, 0, held_, held_, held_, !buckets_.empty(), false};
        bool hasValue = isGood_ && level_.at(index_).time > begin;
        TrendTime changed = begin;
        for (; index_ < level_.size() && level_.at(index_).time < begin + step_; ++index_) {
            const TrendCell &cell = level_.at(index_);
            changed = cell.time + cell.lastAfter;
            if (!hasValue && !isGood_) {
                bucket.begin    = cell.time;
                bucket.isJoined = false;
            }
            bucket.hasGap = bucket.hasGap || cell.hasReturn || (hasValue && !isGood_);
            isGood_ = cell.endsGood;
            if (!cell.hasGood)
                continue;
            bucket.minimum = hasValue ? std::min(bucket.minimum, cell.minimum) : cell.minimum;
            bucket.maximum = hasValue ? std::max(bucket.maximum, cell.maximum) : cell.maximum;
            bucket.last    = held_ = cell.last;
            hasValue = true;
        }
        bucket.end = isGood_ ? std::min(begin + step_, knownEnd_) : std::max(changed, bucket.begin + 1);
        if (hasValue)
            buckets_.push_back(bucket);
    }

    const TrendLevel &level_;
    TrendTime   step_;
    TrendTime   knownEnd_;      // nothing is known of this time and later
    TrendTime   begin_  = 0;    // of the next bucket
    std::size_t index_  = 0;    // of the next cell
    bool        isGood_ = false; // the value there
    double      held_   = 0;
    std::vector<TrendBucket> buckets_;
};

TrendTime multipleOf(TrendTime step, TrendTime atLeast)
{
    return (atLeast + step - 1) / step * step;
}

} // namespace

TrendStore::TrendStore(std::size_t tags) : courses_(tags)
{
    for (Course &course : courses_) {
        course.levels.reserve(LEVELS.size());
        for (const Level &level : LEVELS)
            course.levels.emplace_back(level.step, level.capacity);
    }
}

void TrendStore::add(std::size_t tag, TrendTime time, double value, bool isGood)
{
    Course &course = courses_[tag];
    const bool hasValue = isGood && std::isfinite(value);
    const bool isSame = hasValue == course.isGood && (!hasValue || value == course.value);
    if (course.levels[0].size() > 0)
        time = std::max(time, course.changed);
    course.known = std::max(course.known, time);
    if (isSame)
        return;
    course.changed = time;
    course.isGood  = hasValue;
    course.value   = value;
    for (TrendLevel &level : course.levels)
        level.add(time, hasValue ? std::optional<double>(value) : std::nullopt);
}

void TrendStore::advance(TrendTime now)
{
    now_ = now_ ? std::max(*now_, now) : now;
}

std::vector<TrendBucket> TrendStore::points(std::size_t tag, TrendTime from, TrendTime to, std::size_t atMost) const
{
    const Course &course = courses_[tag];
    if (to <= from)
        return {};
    // A stretch of n steps touches n + 1 of the grid.
    const auto parts = static_cast<TrendTime>(std::clamp<std::size_t>(atMost, 2, MOST_BUCKETS) - 1);
    const TrendTime wanted = multipleOf(parts, to - from) / parts;
    const TrendLevel &level = levelFor(course, from, wanted);
    const TrendTime knownUntil = std::max(course.known, now_.value_or(course.known));
    return BucketMaker(level, multipleOf(level.step(), wanted), knownUntil).make(from, to);
}

std::optional<TrendBucket> TrendStore::at(std::size_t tag, TrendTime time) const
{
    for (const TrendBucket &bucket : points(tag, time, time + 1, 2)) {
        if (bucket.begin <= time && time < bucket.end)
            return bucket;
    }
    return std::nullopt;
}

std::size_t TrendStore::bytes() const
{
    std::size_t sum = 0;
    for (const Course &course : courses_) {
        sum += sizeof course + course.levels.capacity() * sizeof(TrendLevel);
        for (const TrendLevel &level : course.levels)
            sum += level.bytes();
    }
    return sum;
}

// The coarsest that shows enough, else the finest of those that reach back to the time.
const TrendLevel &TrendStore::levelFor(const Course &course, TrendTime from, TrendTime step)
{
    const std::vector<TrendLevel> &levels = course.levels;
    const auto reaches = [from](const TrendLevel &level) { return level.reachesBackTo(from); };
    const auto shows = [&](const TrendLevel &level) { return level.step() <= step && reaches(level); };
    const auto coarsest = std::find_if(levels.rbegin(), levels.rend(), shows);
    if (coarsest != levels.rend())
        return *coarsest;
    const auto finest = std::find_if(levels.begin(), levels.end(), reaches);
    return finest != levels.end() ? *finest : levels.back();
}
