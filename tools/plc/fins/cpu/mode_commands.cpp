#include "fins/cpu_commands.h"

namespace plc {

namespace {

// Parameters of RUN, which may be left out, from the end; STOP has the first one only.
enum : std::size_t {
    RUN_PROGRAM = 2, // 2  program number, always FFFF
    RUN_MODE    = 4, // 1  02 MONITOR, 04 RUN; MONITOR when left out
    RUN_END     = 5
};

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

EndCode changeMode(Controller &controller, Mode mode)
{
    if (controller.right.isHeldByAnother())
        return END_NO_ACCESS_RIGHT;
    controller.changeMode(mode);
    return END_NORMAL;
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
    return changeMode(controller, mode);
}

// STOP, 04 02: to PROGRAM mode.
unsigned stop(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkProgram(command, RUN_MODE))
        return wrong;
    return changeMode(controller, Mode::PROGRAM);
}

} // namespace plc
