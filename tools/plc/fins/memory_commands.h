#ifndef PLC_FINS_MEMORY_COMMANDS_H
#define PLC_FINS_MEMORY_COMMANDS_H

#include "cpu/bytes.h"
#include "cpu/controller.h"

// The FINS commands for the memory areas. Each takes the command from its command code on, returns the end code, and adds the
// data of the answer. Length and parameters are judged first, then whether the mode allows it; a refused command has changed
// nothing.

namespace plc {

unsigned readMemory(Controller &controller, Slice command, Bytes &data);
unsigned writeMemory(Controller &controller, Slice command, Bytes &data);
unsigned fillMemory(Controller &controller, Slice command, Bytes &data);
unsigned readMultiple(Controller &controller, Slice command, Bytes &data);
unsigned transferMemory(Controller &controller, Slice command, Bytes &data);

// Bits that are forced stay as they are, whoever writes them, until they are released.
unsigned forceBits(Controller &controller, Slice command, Bytes &data);
unsigned releaseBits(Controller &controller, Slice command, Bytes &data);

} // namespace plc

#endif
