#ifndef PLC_CPU_AREAS_H
#define PLC_CPU_AREAS_H

// The table of memory areas of a CS/CJ CPU unit: what they are called, how large they are, and the memory-area codes by
// which FINS commands name them.

namespace plc {

enum : unsigned { EM_BANKS_MAX = 25 };

/// Row numbers of the table.
enum AreaIndex {
    AREA_CIO, AREA_WR, AREA_HR, AREA_AR, AREA_DM, AREA_T, AREA_C,
    AREA_E0,                         // the banks of EM follow each other
    AREA_E = AREA_E0 + EM_BANKS_MAX, // whichever bank is the current one
    AREA_BANK,                       // the number of that bank
    AREA_DR, AREA_IR,                // data and index registers
    AREA_TK,                         // task flags
    AREA_CF,                         // condition flags (word 0) and clock pulses (word 1)
    AREA_COUNT,
    AREA_PROFILED = AREA_E0          // a profile gives the sizes of the areas before this one
};

/// In place of a memory-area code: the area has none for this.
enum : unsigned { NO_CODE = 0x100 };

struct AreaRow {
    const char *name;
    unsigned    size;          // items of wordCode
    unsigned    itemSize;      // bytes of such an item
    unsigned    wordCode;      // memory-area code of words, registers or present values
    unsigned    bitCode;       // of bits, or of flags
    unsigned    wordStateCode; // of words, each followed by the word that tells its forced bits
    unsigned    bitStateCode;  // of bits or flags: bit 0 the value, bit 1 whether it is forced
    unsigned    base;          // address of the first item in commands
    bool        hasFlags;      // bitCode addresses flags, one an item
    unsigned    readOnly;      // items from the first one on that commands may not write: the CPU unit's own

    bool isForcible() const { return bitStateCode != NO_CODE && readOnly == 0; }
};

extern const AreaRow AREAS[AREA_COUNT];

/// How the items of a span are addressed.
enum class Access {
    WORD, // words; for timers and counters the present values; 32 bits each for index registers
    BIT,  // bits of words, numbered word * 16 + bit
    FLAG  // completion flags of timers and counters, task flags
};

/// A run of items that lies wholly inside one area.
struct Span {
    int      area = AREA_CIO;
    Access   access = Access::WORD;
    unsigned first = 0;         // number of the first item in the area
    unsigned count = 0;         // items
    bool     withState = false; // every item comes with its forced state
};

/// The area, the access and the state that `areaCode` stands for. Of the areas that share it the last one that begins at
/// or below `address`, otherwise the first. Returns false if there is none.
bool findArea(unsigned areaCode, unsigned address, Span *span);

/// Bytes of an item in commands: 1, 2 or 4.
inline unsigned itemSize(const Span &span)
{
    return span.access != Access::WORD ? 1 : AREAS[span.area].itemSize + (span.withState ? 2 : 0);
}

/// The largest value of an item.
unsigned largestValue(const Span &span);

/// Whether the CPU unit makes the values itself at every moment, so that nobody can set them.
inline bool isComputed(const Span &span) { return span.area == AREA_CF; }

} // namespace plc

#endif
