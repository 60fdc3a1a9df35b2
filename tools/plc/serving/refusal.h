#ifndef PLC_SERVING_REFUSAL_H
#define PLC_SERVING_REFUSAL_H

#include <string>

namespace plc {

/// Says on standard error what is in the way of serving. Returns false.
bool refuse(const std::string &text);

} // namespace plc

#endif
