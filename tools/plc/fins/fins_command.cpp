#include "fins/fins_command.h"

#include "fins/cpu_commands.h"
#include "fins/memory_commands.h"

namespace plc {

namespace {

struct Command {
    unsigned code;
    unsigned (*run)(Controller &controller, Slice command, Bytes &data);
    Unit unit = Unit::CPU; // the one that knows it
};

const Command COMMANDS[] = {
    {0x0101, readMemory},
    {0x0102, writeMemory},
    {0x0401, run},
    {0x0402, stop},
    {0x0601, readStatus},
};

} // namespace

Bytes refuseCommand(Slice command, unsigned endCode)
{
    Bytes answer;
    add16(answer, command.get16(0));
    add16(answer, endCode);
    return answer;
}

Bytes runCommand(Controller &controller, Slice command, Unit unit)
{
    if (FINS_HEADER_SIZE + command.size() > controller.messageMax)
        return refuseCommand(command, END_COMMAND_TOO_LONG);
    Bytes data;
    unsigned endCode = END_UNKNOWN_COMMAND;
    for (const Command &known : COMMANDS)
        if (known.code == command.get16(0) && known.unit == unit)
            endCode = known.run(controller, command, data);
    Bytes answer = refuseCommand(command, endCode);
    answer.insert(answer.end(), data.begin(), data.end());
    return answer;
}

} // namespace plc
