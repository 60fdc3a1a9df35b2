#ifndef RUNTIME_BASE_NUMBERS_H
#define RUNTIME_BASE_NUMBERS_H

#include <string>

// Numbers as texts, and back.

/// The shortest text that reads back as the same number.
std::string shortestText(double number);

/// "1 value", "2 values".
std::string counted(std::size_t number, const std::string &noun);

/// A whole number, decimal or with 0x, within the range. Returns false for anything else, then `value` is untouched.
bool parseNumber(const std::string &text, long minimum, long maximum, long &value);

#endif
