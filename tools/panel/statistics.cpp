#include "statistics.h"

#include <cstdio>

void Statistics::noteError(const std::string &text)
{
    const bool known = errors_.count(text) > 0;
    ++errors_[known || errors_.size() < ERROR_KINDS ? text : "other errors"];
}

unsigned long Statistics::errorCount() const
{
    unsigned long sum = 0;
    for (const auto &[text, count] : errors_)
        sum += count;
    return sum;
}

static std::string perSecond(unsigned long count, std::chrono::milliseconds elapsed)
{
    const double seconds = static_cast<double>(elapsed.count()) / 1000.0;
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", seconds > 0 ? static_cast<double>(count) / seconds : 0.0);
    return text;
}

std::string Statistics::text(std::chrono::milliseconds elapsed) const
{
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.1f", static_cast<double>(elapsed.count()) / 1000.0);
    std::string lines = std::string("statistics of ") + seconds + " s\n";
    lines += "  link         connections " + std::to_string(connections) + ", reconnects "
             + std::to_string(reconnects()) + ", lost or not made " + std::to_string(losses) + "\n";
    lines += "  requests     " + std::to_string(requests) + ", retries " + std::to_string(retries) + ", "
             + perSecond(requests, elapsed) + " a second\n";
    lines += "  replies      " + std::to_string(replies) + ", refused " + std::to_string(refused) + "\n";
    lines += "  rejected     " + std::to_string(rejected()) + ", missing " + std::to_string(missing) + ", wrong "
             + std::to_string(wrong) + "\n";
    lines += "  words        read " + std::to_string(wordsRead) + ", written " + std::to_string(wordsWritten) + ", "
             + perSecond(wordsRead + wordsWritten, elapsed) + " a second\n";
    if (roundTrips.count() > 0)
        lines += "  round trip   " + spreadText(roundTrips) + " ms\n";
    for (const auto &[error, count] : errors_)
        lines += "  error        " + std::to_string(count) + " x " + error + "\n";
    return lines;
}
