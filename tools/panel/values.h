#ifndef PANEL_VALUES_H
#define PANEL_VALUES_H

#include <QtCore/QtGlobal>

#include <string>
#include <vector>

// Values as texts. The driver's form: a word is two bytes, low byte first; a bit is one byte, 0 or 1.

/// The bytes of a word (-32768 to 65535, decimal or with 0x) or of a bit (0 or 1), appended to `bytes`. Throws
/// UsageError.
void appendValue(const std::string &text, bool isBit, std::vector<quint8> &bytes);

/// Value number `index` of `bytes` as a decimal number.
std::string valueText(const std::vector<quint8> &bytes, std::size_t index, bool isBit);

/// All values of `bytes`, separated by spaces.
std::string valuesText(const std::vector<quint8> &bytes, bool isBit);

/// The shortest text that reads back as the same number.
std::string shortestText(double number);

/// "1 value", "2 values".
std::string counted(std::size_t number, const std::string &noun);

/// A whole number, decimal or with 0x, within the range. Returns false for anything else, then `value` is untouched.
bool parseNumber(const std::string &text, long minimum, long maximum, long &value);

#endif
