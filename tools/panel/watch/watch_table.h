#ifndef PANEL_WATCH_WATCH_TABLE_H
#define PANEL_WATCH_WATCH_TABLE_H

#include "session/watch_values.h"
#include "terminal/screen.h"

#include <cstddef>
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
};

struct TableContent {
    std::string           peer;
    std::string           link;    // state of the link in words
    bool                  isUp;
    std::string           cycle;   // "12.5 ms"; "" if unknown
    double                requestsPerSecond;
    unsigned long         errors;
    std::string           clock;   // time of day
    std::vector<TableRow> rows;
    std::size_t           first;   // the row at the top
    std::vector<std::string> messages; // the latest last
};

/// The characters of a course: at most `width`, the latest last, between the least and the greatest value shown.
std::string courseText(const std::vector<double> &course, std::size_t width, bool utf8);

/// For how many lines of messages there is room, the latest ones being shown.
std::size_t messageRows(ScreenSize size);

/// How many rows fit.
std::size_t visibleRows(ScreenSize size);

/// The row that is at the top when the last of `rows` is at the bottom; 0 if all fit.
std::size_t lastTop(std::size_t rows, ScreenSize size);

/// At most size.rows lines of at most size.columns columns each, attributes not counted.
std::vector<std::string> renderTable(const TableContent &content, ScreenSize size, ScreenStyle style);

#endif
