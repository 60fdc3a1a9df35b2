#include "register_types.h"

#include <algorithm>
#include <cctype>

#include "arithmetic.h"
#include "reference_driver.h"

namespace reference {

const RegisterType REGISTER_TYPES[TYPE_COUNT] = {
    {"CIO_bit", 0x30, "ddddd.DD (DD:0~15)", "0.0", "6143.15", true},
    {"WR_bit", 0x31, "dd.DD (DD:0~15)", "0.0", "511.15", true},
    {"HR_bit", 0x32, "dddd.DD (DD:0~15)", "0.0", "1535.15", true},
    {"AR_bit", 0x33, "ddd.DD (DD:0~15)", "448.0", "959.15", true},
    {"DM_bit", 0x02, "ddddd.DD (DD:0~15)", "0.0", "32767.15", true},
    {"CIO", 0xB0, "dddd", "0", "6143", false},
    {"WR", 0xB1, "ddd", "0", "511", false},
    {"HR", 0xB2, "dddd", "0", "1535", false},
    {"AR", 0xB3, "ddd", "0", "959", false},
    {"T", 0x89, "dddd", "0", "4095", false},
    {"C", 0x89, "dddd", "0", "4095", false},
    {"DM", 0x82, "ddddd", "0", "32767", false},
};

const RegisterType *findType(const Text &name)
{
    for (const RegisterType &type : REGISTER_TYPES)
        if (name == type.name)
            return &type;
    return nullptr;
}

bool isBitName(const Text &name) { return name.size() >= 4 && name.substr(name.size() - 4) == "_bit"; }

Text wordName(const Text &name) { return name.substr(0, name.find('_')); }

std::uint32_t weight(const Text &name, Int address)
{
    const RegisterType *type = findType(name);
    if (type == nullptr)
        return static_cast<std::uint32_t>(address);
    const Int row = static_cast<Int>(type - REGISTER_TYPES);
    return static_cast<std::uint32_t>(plus(times(row + 1, 65535), address));
}

bool toNumber(const Text &text, Int &number)
{
    number = 0;
    const auto isSpace = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    std::size_t from = 0, to = text.size();
    while (from < to && isSpace(text[from]))
        ++from;
    while (to > from && isSpace(text[to - 1]))
        --to;
    const bool isNegative = from < to && text[from] == '-';
    if (isNegative || (from < to && text[from] == '+'))
        ++from;
    if (from == to || to - from > 18)
        return false;
    std::int64_t value = 0;
    for (; from < to; ++from) {
        if (text[from] < '0' || text[from] > '9')
            return false;
        value = value * 10 + (text[from] - '0');
    }
    value = isNegative ? -value : value;
    if (value < INT32_MIN || value > INT32_MAX)
        return false;
    number = static_cast<Int>(value);
    return true;
}

bool parseBitAddress(const Text &text, Int &bitAddress)
{
    if (std::count(text.begin(), text.end(), '.') != 1)
        return false;
    const Text wordText = text.substr(0, text.find('.')), bitText = text.substr(text.find('.') + 1);
    Int word = 0, bit = 0;
    if (!toNumber(wordText, word) || !toNumber(bitText, bit))
        return false;
    const bool isOneDigit = bitText.size() == 1 && bit >= 0 && bit <= 9;
    const bool isTwoDigits = bitText.size() == 2 && bit >= 10 && bit <= 15;
    if (!isOneDigit && !isTwoDigits)
        return false;
    bitAddress = plus(times(word, 16), bit);
    return true;
}

} // namespace reference
