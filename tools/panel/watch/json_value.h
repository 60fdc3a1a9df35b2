#ifndef PANEL_WATCH_JSON_VALUE_H
#define PANEL_WATCH_JSON_VALUE_H

#include "values/codec.h"

#include <nlohmann/json.hpp>

#include <string>

// Values in the JSON that the program gives out.

using Json = nlohmann::ordered_json;

/// Numbers as numbers; hex, bits, text and what is no number as it is shown; null for "".
Json jsonValue(const std::string &text, const ValueFormat &format);

/// The JSON in one line. Text from a PLC or a project file may be no UTF-8: what is none is replaced.
std::string jsonText(const Json &json);

#endif
