#ifndef PLC_CPU_MEMORY_H
#define PLC_CPU_MEMORY_H

#include "cpu/bytes.h"
#include "cpu/end_codes.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// The PLC's memory: the data areas of a CS/CJ CPU unit with their real sizes, and the two ways to name a place in
// them: as a FINS command does (memory-area code, address, bit) and as people do ("DM:100", "CIO_bit:100.5:2").

namespace plc {

/// Row numbers of the area table.
enum AreaIndex { AREA_CIO, AREA_WR, AREA_HR, AREA_AR, AREA_DM, AREA_T, AREA_C, AREA_COUNT };

/// How the items of a span are addressed.
enum class Access {
    WORD, // 16-bit words; for timers and counters the present values
    BIT,  // bits of words, numbered word * 16 + bit
    FLAG  // completion flags of timers and counters
};

/// A run of items that lies wholly inside one area.
struct Span {
    int      area = AREA_CIO;
    Access   access = Access::WORD;
    unsigned first = 0; // number of the first item in the area
    unsigned count = 0; // items
};

/// Numbers of words (of timers, of counters) of the areas, in the order of AreaIndex; each at most the CS/CJ size.
using AreaSizes = std::array<unsigned, AREA_COUNT>;

/// The sizes of a CS/CJ CPU unit.
AreaSizes fullSizes();

class Memory {
public:
    explicit Memory(const AreaSizes &sizes = fullSizes());

    /// Words of the area.
    unsigned size(int area) const { return static_cast<unsigned>(words[area].size()); }

    /// Number of items in the span's area when they are addressed as the span addresses them.
    unsigned itemsOf(const Span &span) const;

    /// Finds the run of `count` items that a command's parameters name. Returns END_NORMAL and sets `span`, or the end
    /// code that refuses it: END_NO_AREA, END_START_OUT_OF_RANGE, END_RANGE_EXCEEDED.
    EndCode locate(unsigned areaCode, unsigned address, unsigned bit, unsigned count, Span *span) const;

    /// Whether commands may only read some of the span; people and plants may write all of it.
    static bool isReadOnly(const Span &span);

    /// Item `i` of the span. A bit or flag is 0 or 1.
    unsigned get(const Span &span, unsigned i) const;
    void set(const Span &span, unsigned i, unsigned value);

    // Single items by number, for the plant. The numbers are the caller's own constants and must lie in the area.
    unsigned word(AreaIndex area, unsigned number) const { return words[area].at(number); }
    void setWord(AreaIndex area, unsigned number, unsigned value);
    bool bit(AreaIndex area, unsigned number, unsigned bitNumber) const;
    void setBit(AreaIndex area, unsigned number, unsigned bitNumber, bool on);
    void setFlag(AreaIndex area, unsigned number, bool on) { flags[area].at(number) = on ? 1 : 0; }

private:
    std::vector<std::uint16_t> words[AREA_COUNT];
    std::vector<std::uint8_t>  flags[AREA_COUNT]; // timers and counters only
};

/// Whether `areaCode` is one of the table's codes, and how its items are addressed.
bool findAccess(unsigned areaCode, Access *access);

/// Parses TYPE:ADDRESS or TYPE:ADDRESS:COUNT; the types are CIO WR HR AR DM T C, and CIO_bit WR_bit HR_bit AR_bit
/// DM_bit with the address as word.bit. Returns an empty text and sets `span`, or what is wrong; the span lies inside
/// `memory`.
std::string parsePlace(const std::string &text, const Memory &memory, Span *span);

/// The place of a span as parsePlace() takes it, without its count; flags as the timer or counter itself.
std::string placeText(const Span &span);

/// Parses a number without sign, at most `maximum`. Returns false, `value` unchanged, for anything else.
bool parseNumber(const std::string &text, unsigned maximum, unsigned *value);

} // namespace plc

#endif
