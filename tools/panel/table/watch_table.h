#ifndef PANEL_TABLE_WATCH_TABLE_H
#define PANEL_TABLE_WATCH_TABLE_H

#include "session/watch_values.h"
#include "terminal/screen.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// The live table as lines of text. Nothing here knows a terminal or a clock.

struct TableRow {
    std::string         name;
    std::string         value; // "" if it was never received
    std::string         unit;
    std::string         age;   // of the last change
    Quality             quality;
    bool                isNew; // changed a moment ago
    std::vector<double> course; // the latest last; NaN: not known at that time; infinite: no number
    std::string         minimum = std::string(); // "" if none is known
    std::string         maximum = std::string();
    std::string         fate    = std::string(); // of a write of it; "" for none
    bool                isSelected = false;
    std::string         heading = std::string(); // of the rows below; then nothing else counts
};

struct TableContent {
    std::string           peer;
    std::string           link;    // state of the link in words
    bool                  isUp;
    std::string           cycle;   // "12.5 ms"; "" if unknown
    std::optional<double> requestsPerSecond; // none: nothing is shown of it, nor of the cycle
    unsigned long         errors;
    std::string           clock;   // time of day
    std::string           mode;    // in which way not all is shown as it comes, in words; "": all is
    bool                  isPaused; // the rows are as they were then
    std::vector<TableRow> rows;
    std::size_t           first;   // the row at the top
    std::vector<std::string> messages; // the latest last
    std::string           remark;  // in place of the lowest message
    std::string           input;   // a line that is typed, in place of the keys; "" for none
    std::string           notice;  // in place of the keys, too
};

/// For how many lines of messages there is room, the latest ones being shown.
std::size_t messageRows(ScreenSize size);

/// How many rows fit, below a line of TableContent::mode or without one.
std::size_t visibleRows(ScreenSize size, bool hasMode = false);

/// The row that is at the top when the last of `rows` is at the bottom of a page; 0 if all fit.
std::size_t lastTop(std::size_t rows, std::size_t page);

/// At most size.rows lines of at most size.columns columns each, attributes not counted.
std::vector<std::string> renderTable(const TableContent &content, ScreenSize size, ScreenStyle style);

#endif
