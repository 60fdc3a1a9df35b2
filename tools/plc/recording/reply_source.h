#ifndef PLC_RECORDING_REPLY_SOURCE_H
#define PLC_RECORDING_REPLY_SOURCE_H

#include "cpu/bytes.h"

// Where replies come from that the controller does not give.

namespace plc {

class ReplySource {
public:
    virtual ~ReplySource() = default;

    /// Finds what goes out in answer to `request`, a whole FINS/TCP frame that carries a FINS command; an empty reply
    /// means that nothing does. Returns false, `reply` unchanged, if the request is unknown.
    virtual bool answer(const Bytes &request, Bytes *reply) = 0;
};

} // namespace plc

#endif
