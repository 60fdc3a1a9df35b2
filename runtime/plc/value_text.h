#ifndef RUNTIME_PLC_VALUE_TEXT_H
#define RUNTIME_PLC_VALUE_TEXT_H

#include "fins_runtime/values.h"
#include "values/codec.h"

// Values of the public interface from what the driver holds, and as texts that the codec reads.

namespace fins {

/// The value of one item that is not an array; monostate where the words are no number of the format.
Value valueOf(const ValueFormat &format, const std::vector<quint8> &bytes);

/// The value as people write it; "" for monostate.
std::string textOf(const Value &value);

} // namespace fins

#endif
