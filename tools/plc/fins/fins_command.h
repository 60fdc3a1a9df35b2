#ifndef PLC_FINS_FINS_COMMAND_H
#define PLC_FINS_FINS_COMMAND_H

#include "cpu/bytes.h"
#include "cpu/controller.h"

// FINS commands without their FINS header: command code (2 bytes), then parameters. The answer has the command code
// (2), the end code (2), then data.

namespace plc {

/// Sizes in bytes.
enum : unsigned {
    FINS_HEADER_SIZE = 10,
    COMMAND_CODE     = 2,
    END_CODE         = 2,
    RESPONSE_DATA    = FINS_HEADER_SIZE + COMMAND_CODE + END_CODE // data of a response begin here
};

/// The units of the PLC that answer commands, by their unit addresses.
enum class Unit : unsigned { CPU = 0x00, ETHERNET = 0xFE };

/// Carries out `command` as `unit`, unless it is longer than the controller's messages may be, and returns the answer. The
/// end codes of the CPU unit have the flags of the errors that stand then.
Bytes runCommand(Controller &controller, Slice command, Unit unit = Unit::CPU);

/// The answer to `command` that has nothing but `endCode`.
Bytes refuseCommand(Slice command, unsigned endCode);

} // namespace plc

#endif
