#include "log/units.h"

#include <charconv>
#include <limits>
#include <utility>

namespace {

using Unit = std::pair<const char *, std::uint64_t>;

template <std::size_t Count>
std::optional<std::uint64_t> parsed(const std::string &text, const Unit (&units)[Count], std::uint64_t most)
{
    std::uint64_t number = 0;
    const char *const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || number == 0)
        return std::nullopt;
    const std::string name(result.ptr, end);
    for (const auto &[unit, factor] : units) {
        if (name == unit && number <= most / factor)
            return number * factor;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::chrono::milliseconds> parseTime(const std::string &text)
{
    static const Unit UNITS[] = {{"ms", 1}, {"s", 1000}, {"min", 60000}, {"h", 3600000}, {"d", 86400000}};
    const std::uint64_t tenYears = 10ULL * 366 * 86400000;
    const std::optional<std::uint64_t> millis = parsed(text, UNITS, tenYears);
    if (!millis)
        return std::nullopt;
    return std::chrono::milliseconds(*millis);
}

std::optional<std::uint64_t> parseSize(const std::string &text)
{
    static const Unit UNITS[] = {{"", 1}, {"k", 1ULL << 10}, {"M", 1ULL << 20}, {"G", 1ULL << 30}};
    return parsed(text, UNITS, static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()));
}
