#include "model/live_value.h"

#include "common/time_text.h"

#include <cmath>

double numberOf(const fins::Value &value)
{
    struct Reader {
        double operator()(std::monostate) const { return std::nan(""); }
        double operator()(bool bit) const { return bit ? 1 : 0; }
        double operator()(std::int64_t whole) const { return static_cast<double>(whole); }
        double operator()(std::uint64_t whole) const { return static_cast<double>(whole); }
        double operator()(double real) const { return real; }
        double operator()(const std::string &) const { return std::nan(""); }
    };
    return std::visit(Reader(), value);
}

std::string shownText(const fins::Sample &sample)
{
    if (sample.text.empty())
        return "\u2014";
    return sample.unit.empty() ? sample.text : sample.text + " " + sample.unit;
}

std::string spokenText(const LiveValue &value, std::chrono::steady_clock::time_point now)
{
    std::string text = shownText(value.sample) + ", " + fins::text(value.sample.quality);
    if (!value.sample.text.empty())
        text += ", changed " + ageText(now - value.sample.steady) + " ago";
    return text;
}
