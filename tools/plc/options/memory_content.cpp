#include "options/memory_content.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace plc {

namespace {

struct TypeRow {
    ValueType    type;
    const char  *name;
    std::int64_t least;
    std::int64_t most;
};

const TypeRow TYPES[] = {
    {ValueType::U16,   "u16",   0,             65535},
    {ValueType::S16,   "s16",   -32768,        32767},
    {ValueType::BCD16, "bcd16", 0,             9999},
    {ValueType::U32,   "u32",   0,             4294967295LL},
    {ValueType::S32,   "s32",   -2147483648LL, 2147483647},
    {ValueType::F32,   "f32",   -16777216,     16777216}, // whole numbers that it holds without loss
};

const TypeRow &rowOf(ValueType type)
{
    for (const TypeRow &row : TYPES)
        if (row.type == type)
            return row;
    return TYPES[0];
}

unsigned bcd(unsigned number)
{
    return number % 10 | number / 10 % 10 << 4 | number / 100 % 10 << 8 | number / 1000 % 10 << 12;
}

} // namespace

bool parseValueType(const std::string &name, ValueType *type)
{
    for (const TypeRow &row : TYPES) {
        if (name != row.name)
            continue;
        *type = row.type;
        return true;
    }
    return false;
}

std::string addNumber(ValueType type, std::int64_t number, std::vector<unsigned> *words)
{
    const TypeRow &row = rowOf(type);
    if (number < row.least || number > row.most)
        return std::to_string(number) + " is no " + row.name + "; use " + std::to_string(row.least) + " to " +
               std::to_string(row.most);
    if (type == ValueType::F32)
        return addFloat(static_cast<double>(number), words);
    const std::uint32_t bits = static_cast<std::uint32_t>(number & 0xFFFFFFFFLL);
    words->push_back(type == ValueType::BCD16 ? bcd(bits) : bits & 0xFFFFu);
    if (type == ValueType::U32 || type == ValueType::S32)
        words->push_back(bits >> 16);
    return std::string();
}

std::string addFloat(double number, std::vector<unsigned> *words)
{
    const bool isTooLarge = std::isfinite(number) && std::fabs(number) > double(std::numeric_limits<float>::max());
    if (isTooLarge)
        return "the number is too large for an f32";
    const float rounded = static_cast<float>(number);
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof rounded, "float has 32 bits");
    std::memcpy(&bits, &rounded, sizeof bits);
    words->push_back(bits & 0xFFFFu);
    words->push_back(bits >> 16);
    return std::string();
}

std::vector<unsigned> textWords(const std::string &text, bool isLowByteFirst)
{
    std::vector<unsigned> words;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const unsigned first = static_cast<unsigned char>(text[i]);
        const unsigned second = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0u;
        words.push_back(isLowByteFirst ? second << 8 | first : first << 8 | second);
    }
    return words;
}

} // namespace plc
