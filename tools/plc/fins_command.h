#ifndef FINS_PLC_FINS_COMMAND_H
#define FINS_PLC_FINS_COMMAND_H

#include "bytes.h"
#include "controller.h"

// FINS commands without their FINS header: command code (2 bytes), then parameters. The answer has the command code
// (2), the end code (2), then data.

namespace plc {

/// Sizes in bytes. A FINS/TCP length field covers command (4), error code (4) and the FINS frame, and is at most 2020.
enum : unsigned {
    FINS_HEADER_SIZE = 10,
    FINS_FRAME_MAX   = 2020 - (4 + 4),
    COMMAND_CODE     = 2,
    END_CODE         = 2,
    READ_DATA_MAX    = FINS_FRAME_MAX - (FINS_HEADER_SIZE + COMMAND_CODE + END_CODE) // 999 words or 1998 bits
};

/// Carries out `command` and returns the answer.
Bytes runCommand(Controller &controller, Slice command);

/// The answer to `command` that has nothing but `endCode`.
Bytes refuseCommand(Slice command, unsigned endCode);

} // namespace plc

#endif
