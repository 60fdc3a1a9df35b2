#ifndef FINS_COMMON_CSV_TEXT_H
#define FINS_COMMON_CSV_TEXT_H

#include <string>

// Cells of CSV files that a program writes.

/// The field as it stands in a CSV file, quoted where it has to be.
std::string csvField(const std::string &text);

/// The same for a text that may begin like a formula: a spreadsheet shows what stands behind the apostrophe that it
/// then gets.
std::string csvText(const std::string &text);

/// The text of a cell that csvText has written.
std::string textOfCell(const std::string &cell);

#endif
