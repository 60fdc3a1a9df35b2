#ifndef PANEL_COMMANDS_VALUE_LINES_H
#define PANEL_COMMANDS_VALUE_LINES_H

#include "fins_runtime/values.h"
#include "values/codec.h"
#include "values/items.h"

#include <optional>
#include <string>
#include <vector>

// Values that were read once, a line each: for people, or for other programs.

enum class ValueForm {
    PLAIN, // NAME = VALUE UNIT; nothing of what could not be read
    JSON,  // an object a line
    CSV,   // a record a line, below the names of the fields
    VALUE  // the value alone; an empty line for what could not be read
};

struct ReadValue {
    std::string name;
    Item        item;
    ValueFormat format;
    std::optional<std::vector<quint8>> bytes;                 // none: see `missing`
    std::optional<std::vector<quint8>> wanted = std::nullopt; // of a recipe that it is compared with
    fins::Quality missing = fins::Quality::REFUSED;           // why there are no bytes, where there are none
};

/// The lines of all values. The names of the fields and their order stay as they are: tag, item, value, text, unit,
/// quality, without text in CSV.
std::string valueLines(ValueForm form, const std::vector<ReadValue> &values);

/// The same with the value that a recipe wants: tag, item, recipe, value, unit, quality. Not for PLAIN.
std::string comparedLines(ValueForm form, const std::vector<ReadValue> &values);

#endif
