#include "fins/memory_commands.h"

#include "fins/fins_command.h"

#include <utility>
#include <vector>

namespace plc {

namespace {

// Parameters of MEMORY AREA READ, WRITE and FILL: offset, size in bytes, field.
enum : std::size_t {
    MEM_PLACE = 2,           // 4  where they begin
    MEM_COUNT = 6,           // 2  number of items
    MEM_DATA  = 8,           // n  data of a write; a read ends here
    FILL_END  = MEM_DATA + 2 //    of a fill, which has one word
};

// A place, from its own beginning.
enum : std::size_t {
    PLACE_AREA = 0, // 1  memory-area code
    PLACE_WORD = 1, // 2  address
    PLACE_BIT  = 3, // 1  bit position
    PLACE_SIZE = 4
};

// Parameters of MULTIPLE MEMORY AREA READ, a list of places, and of MEMORY AREA TRANSFER.
enum : std::size_t {
    LIST_PLACES    = 2,  // n  places
    TRANSFER_FROM  = 2,  // 4  place
    TRANSFER_TO    = 6,  // 4  place
    TRANSFER_COUNT = 10, // 2  number of items
    TRANSFER_END   = 12
};

const std::size_t LIST_PLACES_MAX = 167;

EndCode locate(const Controller &controller, Slice place, unsigned count, Span *span)
{
    return controller.memory.locate(place.get8(PLACE_AREA), place.get16(PLACE_WORD), place.get8(PLACE_BIT), count,
                                    span);
}

EndCode checkLength(Slice command, std::size_t wanted)
{
    if (command.size() == wanted)
        return END_NORMAL;
    return command.size() < wanted ? END_COMMAND_TOO_SHORT : END_COMMAND_TOO_LONG;
}

void addItem(Bytes &data, unsigned size, unsigned value)
{
    switch (size) {
    case 1:  add8(data, value); break;
    case 2:  add16(data, value); break;
    default: add32(data, value);
    }
}

unsigned itemAt(Slice items, const Span &span, unsigned i)
{
    switch (itemSize(span)) {
    case 1:  return items.get8(i);
    case 2:  return items.get16(2 * i);
    default: return items.get32(4 * i);
    }
}

// Whether commands may write the span now.
unsigned writeRefusal(const Controller &controller, const Span &span)
{
    return Memory::isReadOnly(span) ? unsigned(END_READ_ONLY) : controller.writeRefusal();
}

// Finds a place for a command that is for words alone, with no forced states.
EndCode findWords(Slice place, Span *span)
{
    const bool isKnown = findArea(place.get8(PLACE_AREA), place.get16(PLACE_WORD), span);
    return isKnown && span->access == Access::WORD && !span->withState ? END_NORMAL : END_NO_AREA;
}

void store(Controller &controller, const Span &span, const std::vector<unsigned> &values)
{
    for (unsigned i = 0; i < span.count; ++i)
        controller.memory.set(span, i, values[i]);
    controller.writes.add(span, controller.memory);
}

} // namespace

// MEMORY AREA READ, 01 01. No items are no data.
unsigned readMemory(Controller &controller, Slice command, Bytes &data)
{
    if (const EndCode wrong = checkLength(command, MEM_DATA))
        return wrong;
    Span span;
    if (const EndCode wrong = locate(controller, command.from(MEM_PLACE), command.get16(MEM_COUNT), &span))
        return wrong;
    const unsigned size = itemSize(span);
    if (RESPONSE_DATA + span.count * size > controller.messageMax)
        return END_RESPONSE_TOO_LONG;
    data.reserve(span.count * size);
    for (unsigned i = 0; i < span.count; ++i)
        addItem(data, size, controller.memory.get(span, i));
    return END_NORMAL;
}

// MEMORY AREA WRITE, 01 02. Of a byte for a bit or flag only the lowest bit counts.
unsigned writeMemory(Controller &controller, Slice command, Bytes &)
{
    if (command.size() < MEM_DATA)
        return END_COMMAND_TOO_SHORT;
    const Slice place = command.from(MEM_PLACE);
    const unsigned count = command.get16(MEM_COUNT);
    Span span;
    if (!findArea(place.get8(PLACE_AREA), place.get16(PLACE_WORD), &span))
        return END_NO_AREA;
    if (command.size() - MEM_DATA != std::size_t(count) * itemSize(span))
        return END_COUNT_MISMATCH;
    if (const EndCode wrong = locate(controller, place, count, &span))
        return wrong;
    if (const unsigned refusal = writeRefusal(controller, span))
        return refusal;
    std::vector<unsigned> values(count);
    for (unsigned i = 0; i < count; ++i)
        values[i] = itemAt(command.from(MEM_DATA), span, i);
    store(controller, span, values);
    return END_NORMAL;
}

// MEMORY AREA FILL, 01 03: one word into all words.
unsigned fillMemory(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkLength(command, FILL_END))
        return wrong;
    const Slice place = command.from(MEM_PLACE);
    const unsigned count = command.get16(MEM_COUNT);
    Span span;
    if (findWords(place, &span) != END_NORMAL || itemSize(span) != 2)
        return END_NO_AREA;
    if (const EndCode wrong = locate(controller, place, count, &span))
        return wrong;
    if (const unsigned refusal = writeRefusal(controller, span))
        return refusal;
    store(controller, span, std::vector<unsigned>(count, command.get16(MEM_DATA)));
    return END_NORMAL;
}

// MULTIPLE MEMORY AREA READ, 01 04: single items, each behind its memory-area code.
unsigned readMultiple(Controller &controller, Slice command, Bytes &data)
{
    const Slice places = command.from(LIST_PLACES);
    const std::size_t count = places.size() / PLACE_SIZE;
    if (places.size() % PLACE_SIZE != 0)
        return END_COMMAND_TOO_SHORT;
    if (count > LIST_PLACES_MAX)
        return END_COMMAND_TOO_LONG;
    Bytes items;
    for (std::size_t i = 0; i < count; ++i) {
        const Slice place = places.from(i * PLACE_SIZE);
        Span span;
        if (const EndCode wrong = locate(controller, place, 1, &span))
            return wrong;
        add8(items, place.get8(PLACE_AREA));
        addItem(items, itemSize(span), controller.memory.get(span, 0));
    }
    if (RESPONSE_DATA + items.size() > controller.messageMax)
        return END_RESPONSE_TOO_LONG;
    data = items;
    return END_NORMAL;
}

// MEMORY AREA TRANSFER, 01 05. Source and destination may overlap: what is there before is what is copied.
unsigned transferMemory(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkLength(command, TRANSFER_END))
        return wrong;
    const Slice from = command.from(TRANSFER_FROM);
    const Slice to = command.from(TRANSFER_TO);
    const unsigned count = command.get16(TRANSFER_COUNT);
    Span source;
    Span target;
    if (findWords(from, &source) != END_NORMAL || findWords(to, &target) != END_NORMAL)
        return END_NO_AREA;
    if (itemSize(source) != itemSize(target))
        return END_SIZES_DIFFER;
    for (const auto &[place, span] : {std::pair(from, &source), std::pair(to, &target)})
        if (const EndCode wrong = locate(controller, place, count, span))
            return wrong;
    if (const unsigned refusal = writeRefusal(controller, target))
        return refusal;
    std::vector<unsigned> values(count);
    for (unsigned i = 0; i < count; ++i)
        values[i] = controller.memory.get(source, i);
    store(controller, target, values);
    return END_NORMAL;
}

} // namespace plc
