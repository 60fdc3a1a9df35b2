#include "expressions/quantity.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace plc {

namespace {

std::int64_t fromBcd(std::uint32_t word)
{
    std::int64_t number = 0;
    for (unsigned shift = 16; shift > 0; shift -= 4) {
        const std::uint32_t digit = word >> (shift - 4) & 0xFu;
        if (digit > 9)
            return 0;
        number = number * 10 + digit;
    }
    return number;
}

} // namespace

std::int64_t Quantity::least() const
{
    if (!isWord())
        return 0;
    return type == ValueType::F32 ? rowOf(type).least * scale : rowOf(type).least;
}

std::int64_t Quantity::most() const
{
    if (!isWord())
        return 1;
    return type == ValueType::F32 ? rowOf(type).most * scale : rowOf(type).most;
}

std::int64_t Quantity::loadFloat(std::uint32_t bits) const
{
    float number = 0;
    std::memcpy(&number, &bits, sizeof number);
    const double scaled = static_cast<double>(number) * scale;
    if (std::isnan(scaled))
        return 0;
    return std::llround(std::clamp(scaled, static_cast<double>(least()), static_cast<double>(most())));
}

// Without items if there is no such bank.
Span Quantity::presentPlace(const Memory &memory) const
{
    Span present = place;
    present.area = memory.presentArea(place.area);
    if (present.area < 0)
        present.count = 0;
    return present;
}

std::int64_t Quantity::load(const Memory &memory) const
{
    const Span present = presentPlace(memory);
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < present.count; ++i)
        bits |= memory.get(present, i) << 16 * i;
    switch (type) {
    case ValueType::U16:
    case ValueType::U32:   return bits;
    case ValueType::S16:   return static_cast<std::int16_t>(bits);
    case ValueType::S32:   return static_cast<std::int32_t>(bits);
    case ValueType::BCD16: return fromBcd(bits);
    case ValueType::F32:   return loadFloat(bits);
    }
    return 0;
}

void Quantity::store(Memory &memory, std::int64_t number) const
{
    const Span present = presentPlace(memory);
    if (present.count == 0)
        return;
    if (!isWord()) {
        memory.set(present, 0, number != 0 ? 1 : 0);
        return;
    }
    const std::int64_t held = std::clamp(number, least(), most());
    const bool isFloat = type == ValueType::F32;
    const std::array<unsigned, 2> words =
        isFloat ? wordsOfFloat(static_cast<float>(static_cast<double>(held) / scale)) : wordsOf(type, held);
    for (unsigned i = 0; i < present.count; ++i)
        memory.set(present, i, words[i]);
}

} // namespace plc
