#include "fins/fins_command.h"

namespace plc {

namespace {

// Parameters of MEMORY AREA READ and WRITE: offset, size in bytes, field.
enum : std::size_t {
    MEM_AREA  = 2, // 1  memory-area code
    MEM_WORD  = 3, // 2  address
    MEM_BIT   = 5, // 1  bit position
    MEM_COUNT = 6, // 2  number of items
    MEM_DATA  = 8  // n  data of a write; a read ends here
};

// Parameters of RUN, which may be left out, from the end; STOP has the first one only.
enum : std::size_t {
    RUN_PROGRAM = 2, // 2  program number, always FFFF
    RUN_MODE    = 4, // 1  02 MONITOR, 04 RUN; MONITOR when left out
    RUN_END     = 5
};

// Status bits of CONTROLLER STATUS READ.
enum : unsigned { STATUS_RUNNING = 0x01, STATUS_BATTERY = 0x04 };

const unsigned ALL_PROGRAMS = 0xFFFF;

EndCode locate(const Controller &controller, Slice command, Span *span)
{
    return controller.memory.locate(command.get8(MEM_AREA), command.get16(MEM_WORD), command.get8(MEM_BIT),
                                    command.get16(MEM_COUNT), span);
}

// MEMORY AREA READ, 01 01. Words are two bytes each, bits and flags one byte each. No items are no data.
unsigned readMemory(const Controller &controller, Slice command, Bytes &data)
{
    if (command.size() < MEM_DATA)
        return END_COMMAND_TOO_SHORT;
    if (command.size() > MEM_DATA)
        return END_COMMAND_TOO_LONG;
    Span span;
    const EndCode located = locate(controller, command, &span);
    if (located != END_NORMAL)
        return located;
    const unsigned itemSize = span.access == Access::WORD ? 2 : 1;
    if (RESPONSE_DATA + span.count * itemSize > controller.messageMax)
        return END_RESPONSE_TOO_LONG;
    for (unsigned i = 0; i < span.count; ++i) {
        if (itemSize == 2)
            add16(data, controller.memory.get(span, i));
        else
            add8(data, controller.memory.get(span, i));
    }
    return END_NORMAL;
}

// MEMORY AREA WRITE, 01 02. Of a byte for a bit or flag only the lowest bit counts.
unsigned writeMemory(Controller &controller, Slice command)
{
    if (command.size() < MEM_DATA)
        return END_COMMAND_TOO_SHORT;
    Access access = Access::WORD;
    if (!findAccess(command.get8(MEM_AREA), &access))
        return END_NO_AREA;
    const unsigned itemSize = access == Access::WORD ? 2 : 1;
    if (command.size() - MEM_DATA != command.get16(MEM_COUNT) * itemSize)
        return END_COUNT_MISMATCH;
    Span span;
    const EndCode located = locate(controller, command, &span);
    if (located != END_NORMAL)
        return located;
    if (Memory::isReadOnly(span))
        return END_READ_ONLY;
    if (controller.writeRefusal() != END_NORMAL)
        return controller.writeRefusal();
    for (unsigned i = 0; i < span.count; ++i) {
        const std::size_t offset = MEM_DATA + i * itemSize;
        controller.memory.set(span, i, itemSize == 2 ? command.get16(offset) : command.get8(offset));
    }
    controller.writes.add(span, controller.memory);
    return END_NORMAL;
}

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

// RUN, 04 01.
unsigned run(Controller &controller, Slice command)
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
unsigned stop(Controller &controller, Slice command)
{
    if (const EndCode wrong = checkProgram(command, RUN_MODE))
        return wrong;
    controller.mode = Mode::PROGRAM;
    return END_NORMAL;
}

// CONTROLLER STATUS READ, 06 01. The simulated CPU unit never has an error or a message.
unsigned readStatus(const Controller &controller, Slice command, Bytes &data)
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

} // namespace

Bytes refuseCommand(Slice command, unsigned endCode)
{
    Bytes answer;
    add16(answer, command.get16(0));
    add16(answer, endCode);
    return answer;
}

Bytes runCommand(Controller &controller, Slice command)
{
    if (FINS_HEADER_SIZE + command.size() > controller.messageMax)
        return refuseCommand(command, END_COMMAND_TOO_LONG);
    Bytes data;
    unsigned endCode = END_UNKNOWN_COMMAND;
    switch (command.get16(0)) {
    case 0x0101: endCode = readMemory(controller, command, data); break;
    case 0x0102: endCode = writeMemory(controller, command); break;
    case 0x0401: endCode = run(controller, command); break;
    case 0x0402: endCode = stop(controller, command); break;
    case 0x0601: endCode = readStatus(controller, command, data); break;
    default: break;
    }
    Bytes answer = refuseCommand(command, endCode);
    answer.insert(answer.end(), data.begin(), data.end());
    return answer;
}

} // namespace plc
