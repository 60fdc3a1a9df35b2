#ifndef PLC_CPU_MEMORY_H
#define PLC_CPU_MEMORY_H

#include "cpu/areas.h"
#include "cpu/end_codes.h"
#include "cpu/lazy_words.h"

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <utility>

// The PLC's memory: the data areas of a CS/CJ CPU unit with their real sizes, and the two ways to name a place in
// them: as a FINS command does (memory-area code, address, bit) and as people do ("DM:100", "CIO_bit:100.5:2").

namespace plc {

/// Numbers of words (of timers, of counters) of the areas before AREA_PROFILED, each at most the CS/CJ size, and of
/// banks of EM.
struct AreaSizes {
    std::array<unsigned, AREA_PROFILED> words;
    unsigned                            emBanks;
};

/// The sizes of a CS/CJ CPU unit.
AreaSizes fullSizes();

class Memory {
public:
    using Time = std::chrono::system_clock::time_point;

    explicit Memory(const AreaSizes &sizes = fullSizes());

    /// The time by which the clock pulses go; the machine's until this is called.
    void follow(std::function<Time()> time) { now = std::move(time); }

    /// Words of the area, or flags where it has no words; 0 if this PLC does not have it.
    unsigned size(int area) const { return places[static_cast<std::size_t>(area)].size; }

    unsigned emBanks() const { return banks; }

    /// Number of items in the span's area when they are addressed as the span addresses them.
    unsigned itemsOf(const Span &span) const;

    /// Finds the run of `count` items that a command's parameters name. Returns END_NORMAL and sets `span`, or the end
    /// code that refuses it: END_NO_AREA, END_START_OUT_OF_RANGE, END_RANGE_EXCEEDED.
    EndCode locate(unsigned areaCode, unsigned address, unsigned bit, unsigned count, Span *span) const;

    /// The area itself, or the current bank of EM in place of AREA_E; -1 if this PLC does not have it.
    int presentArea(int area) const;

    /// Whether commands may only read some of the span; people and plants may write all of it.
    static bool isReadOnly(const Span &span);

    /// Item `i` of the span, as commands have it. A bit or flag is 0 or 1; with its state, bit 1 is on if it is forced.
    /// A word with its state is followed by its forced bits, in the lower half of the number.
    unsigned get(const Span &span, unsigned i) const;

    /// Sets item `i`, but for bits that are forced and for condition flags and clock pulses, which nobody sets.
    void set(const Span &span, unsigned i, unsigned value);

    /// The bits of item `i` that are forced to something else than `value` has: set() would leave them as they are.
    unsigned forcedAgainst(const Span &span, unsigned i, unsigned value) const;

    /// Sets the bit or flag `i` of a span of a forcible area, and lets nobody change it until it is released.
    void force(const Span &span, unsigned i, bool on);
    void release(const Span &span, unsigned i);
    void releaseAll();

    // Single items by number, for the plant. The numbers are the caller's own constants and must lie in the area.
    unsigned word(AreaIndex area, unsigned number) const;
    void setWord(AreaIndex area, unsigned number, unsigned value);
    bool bit(AreaIndex area, unsigned number, unsigned bitNumber) const;
    void setBit(AreaIndex area, unsigned number, unsigned bitNumber, bool on);
    void setFlag(AreaIndex area, unsigned number, bool on);

private:
    // Where the parts of an area are among the cells: a part that it does not have is never looked at.
    struct Place {
        unsigned    size = 0;
        std::size_t words = 0;
        std::size_t flags = 0;
        std::size_t forced = 0; // a mask for every word; for flags bit 0
    };

    std::size_t layOut(const AreaSizes &sizes);
    const Place &placeOf(int area, unsigned number) const;
    unsigned forcedBits(int area, unsigned number) const;
    void setForced(const Span &span, unsigned i, bool isForced);
    unsigned wideWord(const Span &span, unsigned item) const;

    std::array<Place, AREA_COUNT> places;
    unsigned                      banks;
    LazyWords                     cells;
    std::function<Time()>         now = std::chrono::system_clock::now;
};

/// Parses TYPE:ADDRESS or TYPE:ADDRESS:COUNT; the types are the names of the areas, and those with _bit, whose address is
/// word.bit. Returns an empty text and sets `span`, or what is wrong; the span lies inside `memory`.
std::string parsePlace(const std::string &text, const Memory &memory, Span *span);

/// The place of a span as parsePlace() takes it, without its count; flags as the timer or counter itself.
std::string placeText(const Span &span);

/// Parses a number without sign, at most `maximum`. Returns false, `value` unchanged, for anything else.
bool parseNumber(const std::string &text, unsigned maximum, unsigned *value);

} // namespace plc

#endif
