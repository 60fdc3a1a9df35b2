#include "model/trend_csv.h"

#include "common/csv_text.h"
#include "common/time_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <set>

namespace {

// One tag's buckets, asked for one time after the other.
class Column {
public:
    explicit Column(std::vector<TrendBucket> buckets) : buckets_(std::move(buckets)) {}

    // The times from `from` on at which its cells may change.
    void addTimes(TrendTime from, TrendTime to, std::set<TrendTime> &times) const
    {
        for (const TrendBucket &bucket : buckets_) {
            times.insert(std::max(bucket.begin, from));
            if (bucket.end < to)
                times.insert(std::max(bucket.end, from));
        }
    }

    // Times do not fall.
    std::string cellAt(TrendTime time)
    {
        while (next_ < buckets_.size() && buckets_[next_].end <= time)
            ++next_;
        const bool isKnown = next_ < buckets_.size() && buckets_[next_].begin <= time;
        return isKnown ? fmt::format("{}", buckets_[next_].last) : "";
    }

private:
    std::vector<TrendBucket> buckets_;
    std::size_t              next_ = 0;
};

} // namespace

std::string trendCsv(const TrendStore &store, const std::vector<TrendColumn> &columns, TrendTime from, TrendTime to,
                     std::chrono::system_clock::time_point utcOfZero)
{
    std::string lines = "time";
    std::vector<Column> tags;
    std::set<TrendTime> times;
    for (const TrendColumn &column : columns) {
        lines += "," + csvText(column.title);
        tags.emplace_back(store.points(column.tag, from, to, std::numeric_limits<std::size_t>::max()));
        tags.back().addTimes(from, to, times);
    }
    lines += "\r\n";
    std::string before;
    for (const TrendTime time : times) {
        std::string cells;
        for (Column &tag : tags)
            cells += "," + tag.cellAt(time);
        if (cells != before)
            lines += timeText(utcOfZero + std::chrono::milliseconds(time)) + cells + "\r\n";
        before = std::move(cells);
    }
    return lines;
}
