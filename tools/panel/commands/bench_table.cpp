#include "commands/bench_table.h"

#include "session/runtime.h"

#include <algorithm>
#include <fmt/format.h>

std::string benchHead(long words, long items)
{
    return fmt::format("polling {} {} in {} {}; refresh time in ms\n", words, words == 1 ? "word" : "words", items,
                       items == 1 ? "item" : "items")
           + fmt::format("{:>11}  {:>8} {:>8} {:>8}  {:>10}  {:>10}\n", "WORDS/FRAME", "MEDIAN", "95 %", "MAX",
                         "REQUESTS/S", "WORDS/S");
}

std::string benchLine(const BenchRow &row)
{
    if (!row.refusal.empty())
        return fmt::format("{:11}  refused: {}", row.wordsPerFrame, row.refusal);
    return fmt::format("{:11}  {:>8} {:>8} {:>8}  {:10.0f}  {:10.0f}", row.wordsPerFrame,
                       millisText(row.cycles.percentile(50)), millisText(row.cycles.percentile(95)),
                       millisText(row.cycles.maximum()), perSecond(row.requests, row.elapsed),
                       perSecond(row.words, row.elapsed));
}

std::string benchAdvice(const std::vector<BenchRow> &rows)
{
    std::vector<BenchRow> good;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(good), [](const BenchRow &row) {
        return row.refusal.empty() && row.cycles.count() > 0;
    });
    if (good.empty())
        return "the PLC refuses every block size\n";
    const auto shorter = [](const BenchRow &a, const BenchRow &b) {
        return a.cycles.percentile(50) < b.cycles.percentile(50);
    };
    const Micros best = std::min_element(good.begin(), good.end(), shorter)->cycles.percentile(50);
    int advised = 0;
    for (const BenchRow &row : good) {
        const bool isClose = row.cycles.percentile(50) * 10 <= best * 11;
        if (isClose && (advised == 0 || row.wordsPerFrame < advised))
            advised = row.wordsPerFrame;
    }
    std::string text = "choose " + std::to_string(advised) + " words per frame: larger blocks gain less than a tenth\n";
    if (advised > WRITE_WORDS_LIMIT)
        text += "a panel that writes has to stay at " + std::to_string(WRITE_WORDS_LIMIT) + " words per frame\n";
    return text;
}
