#include "log/grid.h"

#include <algorithm>

Grid::Grid(Period period, SystemTime now) : period_(period), next_(numberOf(now, period) + 1) {}

std::int64_t Grid::numberOf(SystemTime time, Period period)
{
    return std::chrono::floor<Period>(time.time_since_epoch()) / period;
}

SystemTime Grid::timeOf(std::int64_t number) const
{
    return SystemTime(std::chrono::duration_cast<SystemTime::duration>(number * period_));
}

std::vector<SystemTime> Grid::due(SystemTime now)
{
    const std::int64_t latest = numberOf(now, period_);
    next_ = std::min(next_, latest + 1);
    const std::int64_t first = std::max(next_, latest - LATE_MOST / period_);
    missed_ += static_cast<std::uint64_t>(std::min(first, latest + 1) - next_);
    std::vector<SystemTime> times;
    for (next_ = first; next_ <= latest; ++next_)
        times.push_back(timeOf(next_));
    return times;
}
