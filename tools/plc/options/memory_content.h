#ifndef PLC_OPTIONS_MEMORY_CONTENT_H
#define PLC_OPTIONS_MEMORY_CONTENT_H

#include "cpu/memory.h"

#include <cstdint>
#include <string>
#include <vector>

// Values as people write them, turned into the words and bits that a PLC stores.

namespace plc {

/// Values for a run of items; as many as the span has.
struct Content {
    Span                  place;
    std::vector<unsigned> values;
};

enum class ValueType { U16, S16, BCD16, U32, S32, F32 };

/// Returns false, `type` unchanged, if `name` is none of u16 s16 bcd16 u32 s32 f32.
bool parseValueType(const std::string &name, ValueType *type);

/// Adds the words of a whole number to `words`, low word first. Returns an empty text, or what is wrong.
std::string addNumber(ValueType type, std::int64_t number, std::vector<unsigned> *words);

/// Adds the two words of a 32-bit floating-point number, low word first. Returns an empty text, or what is wrong.
std::string addFloat(double number, std::vector<unsigned> *words);

/// The words of a text: two characters (bytes) a word, the first in the high byte unless `isLowByteFirst`; an odd one
/// is followed by a zero byte.
std::vector<unsigned> textWords(const std::string &text, bool isLowByteFirst);

} // namespace plc

#endif
