#ifndef PLC_FINS_MEMORY_COMMANDS_H
#define PLC_FINS_MEMORY_COMMANDS_H

#include "cpu/bytes.h"
#include "cpu/controller.h"

// The FINS commands for the memory areas. Each takes the command from its command code on, returns the end code, and adds the
// data of the answer.

namespace plc {

unsigned readMemory(Controller &controller, Slice command, Bytes &data);
unsigned writeMemory(Controller &controller, Slice command, Bytes &data);

} // namespace plc

#endif
