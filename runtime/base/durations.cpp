#include "base/durations.h"

#include <algorithm>
#include <fmt/format.h>

void Durations::add(Micros duration)
{
    minimum_ = count_ == 0 ? duration : std::min(minimum_, duration);
    maximum_ = std::max(maximum_, duration);
    const auto micros = static_cast<std::uint32_t>(std::clamp<Micros::rep>(duration.count(), 0, UINT32_MAX));
    if (kept_.size() < KEPT)
        kept_.push_back(micros);
    else
        kept_[count_ % KEPT] = micros;
    ++count_;
}

Micros Durations::percentile(int percent) const
{
    if (kept_.empty())
        return Micros(0);
    std::vector<std::uint32_t> sorted = kept_;
    const std::size_t rank = (sorted.size() * static_cast<std::size_t>(percent) + 99) / 100;
    const auto wanted = sorted.begin() + static_cast<std::ptrdiff_t>(rank - 1);
    std::nth_element(sorted.begin(), wanted, sorted.end());
    return Micros(*wanted);
}

// The classes' lower ends in us: 0, 1, 2, 5, 10, 20, 50 and so on to 500 s.
static std::vector<std::uint32_t> classStarts()
{
    std::vector<std::uint32_t> starts = {0};
    for (std::uint32_t power = 1; power <= 100000000; power *= 10)
        starts.insert(starts.end(), {power, 2 * power, 5 * power});
    return starts;
}

static std::size_t classOf(const std::vector<std::uint32_t> &starts, std::uint32_t micros)
{
    return static_cast<std::size_t>(std::upper_bound(starts.begin(), starts.end(), micros) - starts.begin()) - 1;
}

std::vector<std::string> Durations::histogram(std::size_t barWidth) const
{
    if (kept_.empty())
        return {};
    const std::vector<std::uint32_t> starts = classStarts();
    std::vector<std::size_t> counts(starts.size(), 0);
    for (const std::uint32_t micros : kept_)
        ++counts[classOf(starts, micros)];
    const auto [least, greatest] = std::minmax_element(kept_.begin(), kept_.end());
    const std::size_t most = *std::max_element(counts.begin(), counts.end());
    std::vector<std::string> lines;
    for (std::size_t i = classOf(starts, *least); i <= classOf(starts, *greatest); ++i) {
        // A class that is not empty shows at least one mark.
        const std::size_t bar = (counts[i] * barWidth + most - 1) / most;
        std::string line = fmt::format("from {:8.6g} ms {:7} {}", starts[i] / 1000.0, counts[i], std::string(bar, '#'));
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(line);
    }
    return lines;
}

double perSecond(unsigned long count, std::chrono::duration<double> elapsed)
{
    return elapsed.count() > 0 ? static_cast<double>(count) / elapsed.count() : 0;
}

std::string millisText(Micros duration)
{
    const double millis = static_cast<double>(duration.count()) / 1000.0;
    // The limits are those from which on rounding gives another digit before the point.
    const int decimals = millis < 0.9995 ? 3 : millis < 9.995 ? 2 : millis < 99.95 ? 1 : 0;
    return fmt::format("{:.{}f}", millis, decimals);
}

std::string spreadText(const Durations &durations)
{
    return fmt::format("min {}, median {}, 95 % {}, 99 % {}, max {}", millisText(durations.minimum()),
                       millisText(durations.percentile(50)), millisText(durations.percentile(95)),
                       millisText(durations.percentile(99)), millisText(durations.maximum()));
}
