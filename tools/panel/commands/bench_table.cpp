#include "commands/bench_table.h"

#include "session/runtime.h"

#include <algorithm>
#include <cstdio>

std::string benchHead(long words, long items)
{
    char line[160];
    std::snprintf(line, sizeof line, "polling %ld %s in %ld %s; refresh time in ms\n", words,
                  words == 1 ? "word" : "words", items, items == 1 ? "item" : "items");
    char titles[160];
    std::snprintf(titles, sizeof titles, "%11s  %8s %8s %8s  %10s  %10s\n", "WORDS/FRAME", "MEDIAN", "95 %", "MAX",
                  "REQUESTS/S", "WORDS/S");
    return std::string(line) + titles;
}

std::string benchLine(const BenchRow &row)
{
    char line[160];
    if (!row.refusal.empty()) {
        std::snprintf(line, sizeof line, "%11d  refused: %s", row.wordsPerFrame, row.refusal.c_str());
        return line;
    }
    std::snprintf(line, sizeof line, "%11d  %8s %8s %8s  %10.0f  %10.0f", row.wordsPerFrame,
                  millisText(row.cycles.percentile(50)).c_str(), millisText(row.cycles.percentile(95)).c_str(),
                  millisText(row.cycles.maximum()).c_str(), perSecond(row.requests, row.elapsed),
                  perSecond(row.words, row.elapsed));
    return line;
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
