#ifndef PANEL_TABLE_COLUMNS_H
#define PANEL_TABLE_COLUMNS_H

#include "table/watch_table.h"

#include <cstddef>
#include <string>

// The columns of the live table: which ones the screen has room for, and how wide they are.

/// Widths; 0: left out.
struct Columns {
    std::size_t name;
    std::size_t value;
    std::size_t unit; // 0 if none has one, too
    std::size_t extreme; // each of the minimum and the maximum; likewise
    std::size_t age;
    std::size_t quality;
    std::size_t fate; // likewise
    std::size_t course;
};

/// What a row takes, with one or two spaces between two columns, and the mark of a new value; without the course.
std::size_t usedColumns(const Columns &plan);

/// Unit and age go where the rest would not fit, and the quality last of all. What is left is for names and values that
/// are longer than usual, and then for the rest.
Columns planColumns(const TableContent &content, std::size_t columns);

/// Exactly `width` columns: clipped, which a ~ shows, or filled up.
std::string fit(const std::string &text, std::size_t width, bool right = false);

/// Without the spaces at the end.
std::string trimmed(std::string line);

#endif
