#include "fins/cpu_commands.h"

#include "fins/fins_command.h"

namespace plc {

namespace {

// Parameters of RUN, which may be left out, from the end; STOP has the first one only.
enum : std::size_t {
    RUN_PROGRAM = 2, // 2  program number, always FFFF
    RUN_MODE    = 4, // 1  02 MONITOR, 04 RUN; MONITOR when left out
    RUN_END     = 5
};

// Status bits of CONTROLLER STATUS READ.
enum : unsigned { STATUS_RUNNING = 0x01, STATUS_BATTERY = 0x04 };

const unsigned ALL_PROGRAMS = 0xFFFF;

// Judges a command that ends at `end` or before, with a program number or without.
EndCode checkProgram(Slice command, std::size_t end)
{
    if (command.size() > end)
        return END_COMMAND_TOO_LONG;
    if (command.size() > RUN_PROGRAM && command.size() < RUN_MODE)
        return END_COMMAND_TOO_SHORT;
    const bool hasProgram = command.size() >= RUN_MODE;
    return hasProgram && command.get16(RUN_PROGRAM) != ALL_PROGRAMS ? END_NO_PROGRAM : END_NORMAL;
}

} // namespace

// RUN, 04 01.
unsigned run(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkProgram(command, RUN_END))
        return wrong;
    Mode mode = Mode::MONITOR;
    if (command.size() == RUN_END)
        mode = static_cast<Mode>(command.get8(RUN_MODE));
    if (mode != Mode::MONITOR && mode != Mode::RUN)
        return END_PARAMETER_ERROR;
    controller.mode = mode;
    return END_NORMAL;
}

// STOP, 04 02: to PROGRAM mode.
unsigned stop(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkProgram(command, RUN_MODE))
        return wrong;
    controller.mode = Mode::PROGRAM;
    return END_NORMAL;
}

// CONTROLLER STATUS READ, 06 01. The simulated CPU unit never has an error or a message.
unsigned readStatus(Controller &controller, Slice command, Bytes &data)
{
    const unsigned MESSAGE_SIZE = 16;
    if (command.size() > COMMAND_CODE)
        return END_COMMAND_TOO_LONG;
    add8 (data, STATUS_BATTERY | (controller.mode == Mode::PROGRAM ? 0u : unsigned(STATUS_RUNNING)));
    add8 (data, static_cast<unsigned>(controller.mode));
    add16(data, 0);                             // fatal error data
    add16(data, 0);                             // non-fatal error data
    add16(data, 0);                             // message yes/no
    add16(data, 0);                             // error code
    data.insert(data.end(), MESSAGE_SIZE, ' '); // error message
    return END_NORMAL;
}

} // namespace plc
