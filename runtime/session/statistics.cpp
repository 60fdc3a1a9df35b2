#include "session/statistics.h"

#include <fmt/format.h>

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

std::string Statistics::text(std::chrono::milliseconds elapsed) const
{
    std::string lines = fmt::format("statistics of {:.1f} s\n", static_cast<double>(elapsed.count()) / 1000.0);
    lines += fmt::format("  link         connections {}, reconnects {}, lost or not made {}\n", connections, reconnects(),
                         losses);
    lines += fmt::format("  requests     {}, retries {}, {:.1f} a second\n", requests, retries,
                         perSecond(requests, elapsed));
    lines += fmt::format("  replies      {}, refused {}\n", replies, refused);
    lines += fmt::format("  rejected     {}, missing {}, wrong {}\n", rejected(), missing, wrong);
    lines += fmt::format("  words        read {}, written {}, {:.1f} a second\n", wordsRead, wordsWritten,
                         perSecond(wordsRead + wordsWritten, elapsed));
    if (roundTrips.count() > 0)
        lines += "  round trip   " + spreadText(roundTrips) + " ms\n";
    for (const auto &[error, count] : errors_)
        lines += fmt::format("  error        {} x {}\n", count, error);
    return lines;
}
