#ifndef PLC_FINS_CPU_COMMANDS_H
#define PLC_FINS_CPU_COMMANDS_H

#include "cpu/bytes.h"
#include "cpu/controller.h"

// The FINS commands for the CPU unit itself. Each takes the command from its command code on, returns the end code, and adds the
// data of the answer.

namespace plc {

unsigned run(Controller &controller, Slice command, Bytes &data);
unsigned stop(Controller &controller, Slice command, Bytes &data);
unsigned readStatus(Controller &controller, Slice command, Bytes &data);

} // namespace plc

#endif
