#ifndef PLC_CPU_NUMBER_TYPE_H
#define PLC_CPU_NUMBER_TYPE_H

#include <array>
#include <cstdint>
#include <string>

// Numbers as words of memory hold them.

namespace plc {

enum class ValueType { U16, S16, BCD16, U32, S32, F32 };

struct TypeRow {
    ValueType    type;
    unsigned     words;
    const char  *name;
    std::int64_t least;
    std::int64_t most;
};

/// The row of the type.
const TypeRow &rowOf(ValueType type);

/// Returns false, `type` unchanged, if `name` is none of TYPE_NAMES.
bool parseValueType(const std::string &name, ValueType *type);

extern const char *const TYPE_NAMES; // "u16 s16 bcd16 u32 s32 f32"

/// The words of a whole number that the type holds, low word first; as many as the type has, the rest 0.
std::array<unsigned, 2> wordsOf(ValueType type, std::int64_t number);

/// The words of a 32-bit floating-point number, low word first.
std::array<unsigned, 2> wordsOfFloat(float number);

} // namespace plc

#endif
