#include "model/trend_level.h"

#include <algorithm>

TrendTime gridBefore(TrendTime time, TrendTime step)
{
    const TrendTime rest = time % step;
    return time - (rest < 0 ? rest + step : rest);
}

static TrendCell firstOf(TrendTime time, std::optional<double> value)
{
    TrendCell cell;
    cell.time = time;
    cell.hasGood = cell.endsGood = value.has_value();
    cell.minimum = cell.maximum = cell.last = value.value_or(0);
    return cell;
}

static void merge(TrendCell &cell, TrendTime time, std::optional<double> value)
{
    cell.lastAfter = static_cast<std::uint32_t>(time - cell.time);
    if (value) {
        cell.minimum = cell.hasGood ? std::min(cell.minimum, *value) : *value;
        cell.maximum = cell.hasGood ? std::max(cell.maximum, *value) : *value;
        cell.last    = *value;
        cell.hasReturn = cell.hasReturn || !cell.endsGood;
        cell.hasGood   = true;
    }
    cell.endsGood = value.has_value();
}

TrendLevel::TrendLevel(TrendTime step, std::size_t capacity) : step_(step), capacity_(capacity)
{
}

void TrendLevel::add(TrendTime time, std::optional<double> value)
{
    if (!cells_.empty()) {
        TrendCell &latest = cells_[(oldest_ + cells_.size() - 1) % cells_.size()];
        if (gridBefore(latest.time, step_) == gridBefore(time, step_)) {
            merge(latest, time, value);
            return;
        }
    }
    push(firstOf(time, value));
}

void TrendLevel::push(const TrendCell &cell)
{
    if (cells_.size() == capacity_) {
        cells_[oldest_] = cell;
        oldest_ = (oldest_ + 1) % capacity_;
        hasDropped_ = true;
        return;
    }
    if (cells_.size() == cells_.capacity()) // which doubles, but never beyond what may be used
        cells_.reserve(std::min(capacity_, std::max<std::size_t>(8, 2 * cells_.size())));
    cells_.push_back(cell);
}

const TrendCell &TrendLevel::at(std::size_t index) const
{
    return cells_[(oldest_ + index) % cells_.size()];
}

bool TrendLevel::reachesBackTo(TrendTime time) const
{
    return !hasDropped_ || at(0).time <= time;
}

std::size_t TrendLevel::findFrom(TrendTime time) const
{
    std::size_t first = 0;
    std::size_t count = size();
    while (count > 0) {
        const std::size_t half = count / 2;
        if (at(first + half).time < time) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}
