#include "common/numbers.h"

#include <cctype>

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

std::string counted(std::size_t number, const std::string &noun)
{
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}
