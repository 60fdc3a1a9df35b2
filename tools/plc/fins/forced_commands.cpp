#include "fins/memory_commands.h"

#include "fins/fins_command.h"

#include <vector>

namespace plc {

namespace {

// Parameters of FORCED SET/RESET: offset, size in bytes, field; of every bit from its own beginning.
enum : std::size_t {
    FORCE_COUNT = 2, // 2  number of bits
    FORCE_BITS  = 4, // n  bits
    BIT_ACTION  = 0, // 2  what to do
    BIT_AREA    = 2, // 1  memory-area code
    BIT_WORD    = 3, // 2  address
    BIT_BIT     = 5, // 1  bit position
    BIT_SIZE    = 6
};

enum : unsigned {
    FORCE_OFF   = 0x0000,
    FORCE_ON    = 0x0001,
    RELEASE_OFF = 0x8000,
    RELEASE_ON  = 0x8001,
    RELEASE     = 0xFFFF  // as the bit stands
};

struct ForcedBit {
    unsigned action;
    Span     place;
};

bool isAction(unsigned action)
{
    for (const unsigned known : {FORCE_OFF, FORCE_ON, RELEASE_OFF, RELEASE_ON, RELEASE})
        if (action == known)
            return true;
    return false;
}

EndCode parseBit(const Memory &memory, Slice bit, ForcedBit *parsed)
{
    const unsigned code = bit.get8(BIT_AREA);
    Span found;
    const bool isKnown = findArea(code, bit.get16(BIT_WORD), &found);
    if (!isKnown || found.access == Access::WORD || found.withState || !AREAS[found.area].isForcible())
        return END_NO_AREA;
    parsed->action = bit.get16(BIT_ACTION);
    if (!isAction(parsed->action))
        return END_PARAMETER_ERROR;
    return memory.locate(code, bit.get16(BIT_WORD), bit.get8(BIT_BIT), 1, &parsed->place);
}

void carryOut(Memory &memory, const ForcedBit &bit)
{
    if (bit.action == FORCE_OFF || bit.action == FORCE_ON) {
        memory.force(bit.place, 0, bit.action == FORCE_ON);
        return;
    }
    memory.release(bit.place, 0);
    if (bit.action != RELEASE)
        memory.set(bit.place, 0, bit.action == RELEASE_ON ? 1 : 0);
}

} // namespace

// FORCED SET/RESET, 23 01. One bit that is wrong, and none is changed.
unsigned forceBits(Controller &controller, Slice command, Bytes &)
{
    if (command.size() < FORCE_BITS)
        return END_COMMAND_TOO_SHORT;
    const unsigned count = command.get16(FORCE_COUNT);
    if (command.size() - FORCE_BITS != count * BIT_SIZE)
        return END_COUNT_MISMATCH;
    std::vector<ForcedBit> bits(count);
    for (unsigned i = 0; i < count; ++i)
        if (const EndCode wrong = parseBit(controller.memory, command.from(FORCE_BITS + i * BIT_SIZE), &bits[i]))
            return wrong;
    if (controller.mode == Mode::RUN)
        return END_RUN_MODE;
    for (const ForcedBit &bit : bits)
        carryOut(controller.memory, bit);
    return END_NORMAL;
}

// FORCED SET/RESET CANCEL, 23 02: releases all bits as they stand.
unsigned releaseBits(Controller &controller, Slice command, Bytes &)
{
    if (command.size() > COMMAND_CODE)
        return END_COMMAND_TOO_LONG;
    if (controller.mode == Mode::RUN)
        return END_RUN_MODE;
    controller.memory.releaseAll();
    return END_NORMAL;
}

} // namespace plc
