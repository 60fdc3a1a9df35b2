#ifndef PLC_EXPRESSIONS_QUANTITY_H
#define PLC_EXPRESSIONS_QUANTITY_H

#include "cpu/memory.h"
#include "cpu/number_type.h"

#include <cstdint>

// A number of a plant that lives in the PLC's memory: one bit or flag, or one or two words.

namespace plc {

struct Quantity {
    Span      place;                 // AREA_E is whichever bank is the current one when it is used
    ValueType type = ValueType::U16; // of words
    unsigned  scale = 1;             // an F32 in memory is the number divided by this

    bool isWord() const { return place.access == Access::WORD; }

    /// What memory holds: 0 and 1 for a bit. An F32 is rounded to whole numbers; what is no number reads as 0, and so
    /// does a BCD16 with digits above 9, and all of a current bank that this PLC does not have, where nothing is stored.
    std::int64_t load(const Memory &memory) const;

    /// A number beyond the ends of the type becomes the nearest that it holds; a bit is on for anything but 0.
    void store(Memory &memory, std::int64_t number) const;

    /// The least and the most that is stored as it is.
    std::int64_t least() const;
    std::int64_t most() const;

private:
    Span presentPlace(const Memory &memory) const;
    std::int64_t loadFloat(std::uint32_t bits) const;
};

} // namespace plc

#endif
