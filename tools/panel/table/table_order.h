#ifndef PANEL_TABLE_TABLE_ORDER_H
#define PANEL_TABLE_TABLE_ORDER_H

#include "base/clock.h"
#include "fins_runtime/values.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// The watched values as the table gets them, and the orders in which it can show them.

struct ValueRow {
    std::string name;
    std::string plc;     // of several; else ""
    std::string group;   // "" for none
    std::string comment;
    std::string value;   // "" if it was never received
    std::string unit;
    fins::Quality quality = fins::Quality::NOT_CONNECTED;
    std::optional<TimePoint> changedAt = std::nullopt; // none: not since the start
    std::vector<double> course = {}; // as in TableRow
    std::string fate = "";           // of the latest edit, if it was of this value
};

enum class RowOrder {
    GIVEN,  // as the values were chosen, those of a PLC and of a group together
    NAME,   // numbers in names as numbers
    VALUE,  // numbers, then texts, then what was never received
    CHANGE, // the latest first
    QUALITY // the worst first
};

/// The order after `order`, the first after the last.
RowOrder nextOrder(RowOrder order);

/// "name"; what the table calls it.
const char *orderText(RowOrder order);

/// Puts the indexes of rows in order. Rows that are equal in it stay as they are.
void sortRows(std::vector<std::size_t> &indexes, const std::vector<ValueRow> &rows, RowOrder order);

#endif
