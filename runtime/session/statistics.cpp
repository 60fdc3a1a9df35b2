#include "session/statistics.h"

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

static std::string oneDecimal(double number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", number);
    return text;
}

std::string Statistics::text(std::chrono::milliseconds elapsed) const
{
    std::string lines = "statistics of " + oneDecimal(static_cast<double>(elapsed.count()) / 1000.0) + " s\n";
    lines += "  link         connections " + std::to_string(connections) + ", reconnects "
             + std::to_string(reconnects()) + ", lost or not made " + std::to_string(losses) + "\n";
    lines += "  requests     " + std::to_string(requests) + ", retries " + std::to_string(retries) + ", "
             + oneDecimal(perSecond(requests, elapsed)) + " a second\n";
    lines += "  replies      " + std::to_string(replies) + ", refused " + std::to_string(refused) + "\n";
    lines += "  rejected     " + std::to_string(rejected()) + ", missing " + std::to_string(missing) + ", wrong "
             + std::to_string(wrong) + "\n";
    lines += "  words        read " + std::to_string(wordsRead) + ", written " + std::to_string(wordsWritten) + ", "
             + oneDecimal(perSecond(wordsRead + wordsWritten, elapsed)) + " a second\n";
    if (roundTrips.count() > 0)
        lines += "  round trip   " + spreadText(roundTrips) + " ms\n";
    for (const auto &[error, count] : errors_)
        lines += "  error        " + std::to_string(count) + " x " + error + "\n";
    return lines;
}
