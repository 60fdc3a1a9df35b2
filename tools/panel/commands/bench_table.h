#ifndef PANEL_COMMANDS_BENCH_TABLE_H
#define PANEL_COMMANDS_BENCH_TABLE_H

#include "base/clock.h"
#include "base/durations.h"

#include <string>
#include <vector>

// The table of a bench run: block size against refresh time.

struct BenchRow {
    int             wordsPerFrame;
    Clock::duration elapsed;
    unsigned long   requests;
    unsigned long   words;   // read in all
    Durations       cycles;  // each from one read of a block to its next
    std::string     refusal; // end code, if the PLC refuses blocks of this size; then nothing else counts
};

/// Lines with their ends.
std::string benchHead(long words, long items);

/// A line without its end.
std::string benchLine(const BenchRow &row);

/// What to choose: the smallest block size whose median refresh time is at most a tenth longer than the shortest, and
/// where a panel may not go. Lines with their ends.
std::string benchAdvice(const std::vector<BenchRow> &rows);

#endif
