#ifndef HMI_MODEL_TREND_CSV_H
#define HMI_MODEL_TREND_CSV_H

#include "model/trend_store.h"

#include <chrono>
#include <string>
#include <vector>

struct TrendColumn {
    std::size_t tag; // of the store
    std::string title;
};

/// A file of comma-separated values as in RFC 4180: the time in UTC, then a column per tag, which is empty where it had
/// no good value. There is a line for every change that is still stored alone. Where changes are merged by now, a bucket
/// is a line at its begin, with its latest value. `utcOfZero` is the time of day that the store calls 0.
std::string trendCsv(const TrendStore &store, const std::vector<TrendColumn> &columns, TrendTime from, TrendTime to,
                     std::chrono::system_clock::time_point utcOfZero);

#endif
