#include "values.h"

#include "exit_codes.h"

#include <cctype>
#include <charconv>

bool parseNumber(const std::string &text, long minimum, long maximum, long &value)
{
    const bool negative = !text.empty() && text[0] == '-';
    std::string digits = text.substr(negative ? 1 : 0);
    const bool isHex = digits.compare(0, 2, "0x") == 0 || digits.compare(0, 2, "0X") == 0;
    if (isHex)
        digits.erase(0, 2);
    if (digits.empty() || !std::isxdigit(static_cast<unsigned char>(digits[0])))
        return false;
    long number = 0;
    const char *end = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), end, number, isHex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != end)
        return false;
    number = negative ? -number : number;
    if (number < minimum || number > maximum)
        return false;
    value = number;
    return true;
}

std::string shortestText(double number)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

std::string counted(std::size_t number, const std::string &noun)
{
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

void appendValue(const std::string &text, bool isBit, std::vector<quint8> &bytes)
{
    long value = 0;
    if (isBit && !parseNumber(text, 0, 1, value))
        throw UsageError("'" + text + "' is not a bit value; use 0 or 1");
    if (!isBit && !parseNumber(text, -32768, 65535, value))
        throw UsageError("'" + text + "' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
    bytes.push_back(static_cast<quint8>(value & 0xFF));
    if (!isBit)
        bytes.push_back(static_cast<quint8>(value >> 8 & 0xFF));
}

std::string valueText(const std::vector<quint8> &bytes, std::size_t index, bool isBit)
{
    const int value = isBit ? bytes.at(index) : bytes.at(2 * index) + 256 * bytes.at(2 * index + 1);
    return std::to_string(value);
}

std::string valuesText(const std::vector<quint8> &bytes, bool isBit)
{
    std::string text;
    const std::size_t count = isBit ? bytes.size() : bytes.size() / 2;
    for (std::size_t i = 0; i < count; ++i)
        text += (i ? " " : "") + valueText(bytes, i, isBit);
    return text;
}
