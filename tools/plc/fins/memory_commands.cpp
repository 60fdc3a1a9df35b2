#include "fins/memory_commands.h"

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

EndCode locate(const Controller &controller, Slice command, Span *span)
{
    return controller.memory.locate(command.get8(MEM_AREA), command.get16(MEM_WORD), command.get8(MEM_BIT),
                                    command.get16(MEM_COUNT), span);
}

} // namespace

// MEMORY AREA READ, 01 01. Words are two bytes each, bits and flags one byte each. No items are no data.
unsigned readMemory(Controller &controller, Slice command, Bytes &data)
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
unsigned writeMemory(Controller &controller, Slice command, Bytes &)
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

} // namespace plc
