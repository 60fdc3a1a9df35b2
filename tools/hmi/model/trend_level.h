#ifndef HMI_MODEL_TREND_LEVEL_H
#define HMI_MODEL_TREND_LEVEL_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// The changes of one value, merged into cells of equal time and kept in a ring.

/// Milliseconds of a clock that never goes back, such as the steady clock.
using TrendTime = std::int64_t;

/// The greatest multiple of `step` that is not after `time`.
TrendTime gridBefore(TrendTime time, TrendTime step);

/// What happened within one step of time. Between two cells nothing did.
struct TrendCell {
    TrendTime     time = 0;          // of the first change in it
    double        minimum = 0;       // of the good values that came in it
    double        maximum = 0;
    double        last    = 0;
    std::uint32_t lastAfter = 0;     // from `time` to the last change, in ms
    bool          hasGood   = false; // false: the value was lost in it, no more; then the three values mean nothing
    bool          endsGood  = false;
    bool          hasReturn = false; // a good value came after one was lost in it
};

class TrendLevel {
public:
    /// Cells of `step` milliseconds; of more than `capacity` the oldest is dropped.
    TrendLevel(TrendTime step, std::size_t capacity);

    /// A good value or, without one, its loss. Times do not fall.
    void add(TrendTime time, std::optional<double> value);

    TrendTime         step() const { return step_; }
    std::size_t       size() const { return cells_.size(); }
    const TrendCell  &at(std::size_t index) const; // the oldest is 0

    /// True if no change at or after that time was dropped.
    bool reachesBackTo(TrendTime time) const;

    /// Index of the first cell whose changes are all at or after a multiple of the step; size() if there is none.
    std::size_t findFrom(TrendTime time) const;

    std::size_t bytes() const { return cells_.capacity() * sizeof(TrendCell); }

private:
    void push(const TrendCell &cell);

    TrendTime              step_;
    std::size_t            capacity_;
    std::size_t            oldest_ = 0; // place in cells_
    bool                   hasDropped_ = false;
    std::vector<TrendCell> cells_;
};

#endif
