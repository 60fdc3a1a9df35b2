#ifndef FINS_COMMON_NUMBERS_H
#define FINS_COMMON_NUMBERS_H

#include <charconv>
#include <string>
#include <system_error>

// Numbers as texts, and back.

/// The shortest text that reads back as the same number.
template <typename Float>
std::string shortestText(Float number)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

/// "1 value", "2 values".
std::string counted(std::size_t number, const std::string &noun);

/// Reads all of the text as a decimal number of its type. Returns false for anything else.
template <typename Number>
bool readNumber(const std::string &text, Number &number)
{
    const char *end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

/// A whole number, decimal or with 0x, within the range. Returns false for anything else, then `value` is untouched.
bool parseNumber(const std::string &text, long minimum, long maximum, long &value);

#endif
