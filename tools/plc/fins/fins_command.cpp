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
    {0x0103, fillMemory},
    {0x0104, readMultiple},
    {0x0105, transferMemory},
    {0x0401, run},
    {0x0402, stop},
    {0x0501, readControllerData},
    {0x0502, readConnectionData},
    {0x0601, readStatus},
    {0x0620, cycleTime},
    {0x0701, readClock},
    {0x0702, writeClock},
    {0x0801, echo, Unit::ETHERNET},
    {0x0920, messages},
    {0x0C01, acquireRight},
    {0x0C02, forceRight},
    {0x0C03, releaseRight},
    {0x2101, clearErrors},
    {0x2102, readErrorLog},
    {0x2103, clearErrorLog},
    {0x2301, forceBits},
    {0x2302, releaseBits},
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
    const auto flags = [&] { return unit == Unit::CPU ? controller.errors.endFlags() : 0u; };
    if (FINS_HEADER_SIZE + command.size() > controller.messageMax)
        return refuseCommand(command, END_COMMAND_TOO_LONG | flags());
    Bytes data;
    unsigned endCode = END_UNKNOWN_COMMAND;
    for (const Command &known : COMMANDS)
        if (known.code == command.get16(0) && known.unit == unit)
            endCode = known.run(controller, command, data);
    Bytes answer = refuseCommand(command, endCode | flags());
    answer.insert(answer.end(), data.begin(), data.end());
    return answer;
}

} // namespace plc
