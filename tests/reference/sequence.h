#ifndef TESTS_REFERENCE_SEQUENCE_H
#define TESTS_REFERENCE_SEQUENCE_H

#include "operation.h"

namespace reference {

/// The sequence that belongs to `seed`, the same on every machine.
Sequence randomSequence(std::uint32_t seed);

} // namespace reference

#endif
