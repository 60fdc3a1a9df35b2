#ifndef HMI_MODEL_TREND_STORE_H
#define HMI_MODEL_TREND_STORE_H

#include "model/trend_level.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

// The values of many tags over some hours, in bounded memory. A value holds until the next change, so that a constant
// one takes no room; where it is not good there is a gap. Every change goes to all LEVELS at once, each of which merges
// it into cells of its own step, with the least and the greatest value kept.

/// A stretch of time of one tag, with the values that it had in it.
struct TrendBucket {
    TrendTime begin = 0;
    TrendTime end   = 0;      // not part of it, unless a gap begins there: then the change that ended it is
    double    minimum = 0;
    double    maximum = 0;
    double    last    = 0;    // the latest good value in it
    bool      isJoined = false; // the value was good all the way from the previous bucket into this one
    bool      hasGap   = false; // for some of the time in it there was no good value
};

class TrendStore {
    struct Course {
        std::vector<TrendLevel> levels;
        TrendTime changed = 0; // when the latest change came
        TrendTime known   = 0; // the time of the latest sample
        double    value   = 0;
        bool      isGood  = false;
    };

public:
    struct Level {
        TrendTime   step;     // in ms
        std::size_t capacity; // in cells
    };

    /// With a change in every step these are the latest 500 changes, 15 minutes, an hour, and 8 hours.
    static constexpr std::array<Level, 4> LEVELS = {{{1, 500}, {1000, 900}, {4000, 900}, {16000, 1810}}};

    /// What a tag takes at most: 164,680 bytes on 64-bit systems, 15.7 MiB for a hundred tags.
    static constexpr std::size_t BYTES_PER_TAG =
        (LEVELS[0].capacity + LEVELS[1].capacity + LEVELS[2].capacity + LEVELS[3].capacity) * sizeof(TrendCell)
        + LEVELS.size() * sizeof(TrendLevel) + sizeof(Course);

    explicit TrendStore(std::size_t tags);

    /// A sample of a tag, or the news that its value is not good. A value that is not finite is not good. A time before
    /// that of the tag's latest change counts as that time: nothing that was stored changes.
    void add(std::size_t tag, TrendTime time, double value, bool isGood);

    /// The time up to which the latest values hold, of those tags whose value is good.
    void advance(TrendTime now);

    /// At most `atMost` buckets, 2 at the least, of what is known of the time from `from` to just before `to`, in their
    /// order. Their ends lie on a grid that does not move with `from`, so that the first and the last may reach beyond.
    std::vector<TrendBucket> points(std::size_t tag, TrendTime from, TrendTime to, std::size_t atMost) const;

    /// The shortest bucket that holds the time; none where there was no good value.
    std::optional<TrendBucket> at(std::size_t tag, TrendTime time) const;

    std::size_t tags() const { return courses_.size(); }

    /// What all tags take now.
    std::size_t bytes() const;

private:
    static const TrendLevel &levelFor(const Course &course, TrendTime from, TrendTime step);

    std::vector<Course> courses_;
    std::optional<TrendTime> now_; // of advance()
};

#endif
