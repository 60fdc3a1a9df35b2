#ifndef PLC_FINS_CPU_COMMANDS_H
#define PLC_FINS_CPU_COMMANDS_H

#include "cpu/bytes.h"
#include "cpu/controller.h"

// The FINS commands for the CPU unit itself. Each takes the command from its command code on, returns the end code, and adds the
// data of the answer. Length and parameters are judged first, then whether the state of the CPU unit allows it.

namespace plc {

// Operating mode.
unsigned run(Controller &controller, Slice command, Bytes &data);
unsigned stop(Controller &controller, Slice command, Bytes &data);

// What the CPU unit is, and how it fares.
unsigned readControllerData(Controller &controller, Slice command, Bytes &data);
unsigned readConnectionData(Controller &controller, Slice command, Bytes &data);
unsigned readStatus(Controller &controller, Slice command, Bytes &data);
unsigned cycleTime(Controller &controller, Slice command, Bytes &data);
unsigned echo(Controller &controller, Slice command, Bytes &data);

// Clock.
unsigned readClock(Controller &controller, Slice command, Bytes &data);
unsigned writeClock(Controller &controller, Slice command, Bytes &data);

// Messages, errors and their log.
unsigned messages(Controller &controller, Slice command, Bytes &data);
unsigned clearErrors(Controller &controller, Slice command, Bytes &data);
unsigned readErrorLog(Controller &controller, Slice command, Bytes &data);
unsigned clearErrorLog(Controller &controller, Slice command, Bytes &data);

// Access right.
unsigned acquireRight(Controller &controller, Slice command, Bytes &data);
unsigned forceRight(Controller &controller, Slice command, Bytes &data);
unsigned releaseRight(Controller &controller, Slice command, Bytes &data);

/// The program number of a command that has to be FFFF: there is but one program.
enum : unsigned { ALL_PROGRAMS = 0xFFFF };

/// The end code of a command whose parameters have to be so many bytes.
inline EndCode checkLength(Slice command, std::size_t least, std::size_t most)
{
    const std::size_t code = 2;
    if (command.size() < code + least)
        return END_COMMAND_TOO_SHORT;
    return command.size() > code + most ? END_COMMAND_TOO_LONG : END_NORMAL;
}

/// Adds `text` in `length` bytes, cut off or filled up.
inline void addText(Bytes &bytes, const std::string &text, std::size_t length, char filler = ' ')
{
    std::string field = text;
    field.resize(length, filler);
    bytes.insert(bytes.end(), field.begin(), field.end());
}

} // namespace plc

#endif
