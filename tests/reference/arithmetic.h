#ifndef TESTS_REFERENCE_ARITHMETIC_H
#define TESTS_REFERENCE_ARITHMETIC_H

#include "plain_records.h"

// 32-bit two's complement arithmetic that wraps, worked out in 64 bits.

namespace reference {

inline Int wrapped(std::int64_t value) { return static_cast<Int>(static_cast<std::uint32_t>(value & 0xFFFFFFFF)); }
inline Int plus(Int a, Int b) { return wrapped(std::int64_t(a) + b); }
inline Int minus(Int a, Int b) { return wrapped(std::int64_t(a) - b); }
inline Int times(Int a, Int b) { return wrapped(std::int64_t(a) * b); }

inline Byte low8(Int value) { return static_cast<Byte>(value & 0xFF); }
inline Byte high8(Int value) { return static_cast<Byte>((value >> 8) & 0xFF); }

} // namespace reference

#endif
