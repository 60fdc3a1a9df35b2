#ifndef PLC_FINS_FINS_FRAME_H
#define PLC_FINS_FINS_FRAME_H

#include "cpu/bytes.h"
#include "cpu/controller.h"

// FINS frames: the FINS header and a command or an answer behind it.

namespace plc {

/// Offsets of the FINS header, one byte each.
enum : std::size_t {
    FINS_ICF = 0, // information control: bit 7 always 1, bit 6 response, bit 0 no response wanted
    FINS_RSV = 1, // 0
    FINS_GCT = 2, // permitted gateways
    FINS_DNA = 3, // destination network, node, unit
    FINS_DA1 = 4,
    FINS_DA2 = 5,
    FINS_SNA = 6, // source network, node, unit
    FINS_SA1 = 7,
    FINS_SA2 = 8,
    FINS_SID = 9  // service ID, echoed
};

/// Carries out the command in `frame` (a FINS header and at least a command code) as node `node`, unless
/// `forcedEndCode` is not END_NORMAL: then the command is refused with it. Returns the response frame; empty when the
/// frame is itself a response or wants none.
Bytes answerFins(Controller &controller, unsigned node, Slice frame, unsigned forcedEndCode);

} // namespace plc

#endif
