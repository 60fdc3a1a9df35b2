#include "log/grid.h"

Grid::Grid(Period period, SystemTime now) : period_(period), next_(numberOf(now, period) + 1) {}

std::int64_t Grid::numberOf(SystemTime time, Period period)
{
    return std::chrono::floor<Period>(time.time_since_epoch()) / period;
}

SystemTime Grid::timeOf(std::int64_t number) const
{
    return SystemTime(std::chrono::duration_cast<SystemTime::duration>(number * period_));
}

std::optional<SystemTime> Grid::due(SystemTime now)
{
    const std::int64_t latest = numberOf(now, period_);
    if (latest + 1 < next_)
        next_ = latest + 1;
    if (latest < next_)
        return std::nullopt;
    missed_ += static_cast<std::uint64_t>(latest - next_);
    next_ = latest + 1;
    return timeOf(latest);
}
