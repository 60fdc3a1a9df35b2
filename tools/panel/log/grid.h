#ifndef PANEL_LOG_GRID_H
#define PANEL_LOG_GRID_H

#include "common/time_text.h"

#include <cstdint>
#include <vector>

// The times at which a log has its rows: whole multiples of a period, counted in UTC from the epoch. How long a row
// takes, and how late it is, moves no other one.

class Grid {
public:
    using Period = std::chrono::milliseconds;

    static constexpr Period LATE_MOST{1000}; // that a row may be before another one that is due, too

    Grid(Period period, SystemTime now);

    /// The number of the period that the time lies in.
    static std::int64_t numberOf(SystemTime time, Period period);

    /// When the next row is due.
    SystemTime next() const { return timeOf(next_); }

    /// The times of the rows that are due, the earliest first: after a pause of the program all those of its last moments.
    /// Others count as missed. A clock that was set back begins anew.
    std::vector<SystemTime> due(SystemTime now);

    std::uint64_t missed() const { return missed_; }

private:
    SystemTime timeOf(std::int64_t number) const;

    Period        period_;
    std::int64_t  next_;
    std::uint64_t missed_ = 0;
};

#endif
