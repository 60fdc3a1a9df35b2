#include "cpu/number_type.h"

#include <cstring>

namespace plc {

namespace {

const TypeRow TYPES[] = {
    {ValueType::U16,   1, "u16",   0,             65535},
    {ValueType::S16,   1, "s16",   -32768,        32767},
    {ValueType::BCD16, 1, "bcd16", 0,             9999},
    {ValueType::U32,   2, "u32",   0,             4294967295LL},
    {ValueType::S32,   2, "s32",   -2147483648LL, 2147483647},
    {ValueType::F32,   2, "f32",   -16777216,     16777216}, // whole numbers that it holds without loss
};

unsigned bcd(unsigned number)
{
    return number % 10 | number / 10 % 10 << 4 | number / 100 % 10 << 8 | number / 1000 % 10 << 12;
}

} // namespace

const char *const TYPE_NAMES = "u16 s16 bcd16 u32 s32 f32";

const TypeRow &rowOf(ValueType type)
{
    for (const TypeRow &row : TYPES)
        if (row.type == type)
            return row;
    return TYPES[0];
}

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

std::array<unsigned, 2> wordsOf(ValueType type, std::int64_t number)
{
    if (type == ValueType::F32)
        return wordsOfFloat(static_cast<float>(number));
    const std::uint32_t bits = static_cast<std::uint32_t>(number & 0xFFFFFFFFLL);
    const unsigned low = type == ValueType::BCD16 ? bcd(bits) : bits & 0xFFFFu;
    return {low, rowOf(type).words == 2 ? bits >> 16 : 0};
}

std::array<unsigned, 2> wordsOfFloat(float number)
{
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof number, "float has 32 bits");
    std::memcpy(&bits, &number, sizeof bits);
    return {bits & 0xFFFFu, bits >> 16};
}

} // namespace plc
