#ifndef TESTS_REFERENCE_REGISTER_TYPES_H
#define TESTS_REFERENCE_REGISTER_TYPES_H

#include "plain_records.h"

// What the reference knows of the register types.

namespace reference {

struct RegisterType {
    const char *name;
    Byte        areaCode;
    const char *notation;
    const char *minimum;
    const char *maximum;
    bool        isBit;
};

enum { TYPE_COUNT = 12 };
extern const RegisterType REGISTER_TYPES[TYPE_COUNT];

/// The type of that name, or null.
const RegisterType *findType(const Text &name);

/// Whether the name ends in "_bit".
bool isBitName(const Text &name);

/// The part of the name before its first "_".
Text wordName(const Text &name);

/// The sorting key: by type in table order, then by address.
std::uint32_t weight(const Text &name, Int address);

/// Parses "word.bit". False for a malformed text, which leaves `bitAddress` as it was.
bool parseBitAddress(const Text &text, Int &bitAddress);

} // namespace reference

#endif
