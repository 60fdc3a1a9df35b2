#ifndef RUNTIME_BASE_DURATIONS_H
#define RUNTIME_BASE_DURATIONS_H

#include "base/clock.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Measured durations: their number, extremes and percentiles, and a histogram. A run may last for months, so the
// percentiles are those of the latest durations only, up to KEPT of them; number and extremes are those of all.

class Durations {
public:
    static constexpr std::size_t KEPT = 65536;

    void add(Micros duration);

    std::size_t count() const { return count_; }

    /// 0 if there are none.
    Micros minimum() const { return minimum_; }
    Micros maximum() const { return maximum_; }

    /// The smallest kept duration that at least `percent` (1 to 100) of the kept ones do not exceed; 0 if there are
    /// none.
    Micros percentile(int percent) const;

    /// A line for each class from the least duration's to the greatest's, with a bar of at most `barWidth` characters.
    /// Classes begin at 1, 2 and 5 times a power of ten microseconds.
    std::vector<std::string> histogram(std::size_t barWidth) const;

private:
    std::vector<std::uint32_t> kept_; // in us; a ring once KEPT are there
    std::size_t count_ = 0;
    Micros      minimum_{0};
    Micros      maximum_{0};
};

/// How many a second; 0 if no time has passed.
double perSecond(unsigned long count, std::chrono::duration<double> elapsed);

/// Milliseconds with three significant digits: "0.052", "1.25", "13.4", "1250".
std::string millisText(Micros duration);

/// "min 0.052, median 0.061, 95 % 0.112, 99 % 0.240, max 1.25", in milliseconds.
std::string spreadText(const Durations &durations);

#endif
