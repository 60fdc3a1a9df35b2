#include "cpu/areas.h"

namespace plc {

namespace {

enum : unsigned { NONE = NO_CODE, BANK_SIZE = 32768 };

} // namespace

// Timers and counters share their codes, a counter's address has 8000 hex added; so do the registers.
const AreaRow AREAS[AREA_COUNT] = {
    // name   size   bytes  word  bit   word+state bit+state base  flags  read-only
    {"CIO",   6144,      2, 0xB0, 0x30, 0xF0, 0x70, 0x0000, false, 0},
    {"WR",    512,       2, 0xB1, 0x31, 0xF1, 0x71, 0x0000, false, 0},
    {"HR",    1536,      2, 0xB2, 0x32, 0xF2, 0x72, 0x0000, false, 0},
    {"AR",    960,       2, 0xB3, 0x33, NONE, NONE, 0x0000, false, 448},
    {"DM",    32768,     2, 0x82, 0x02, NONE, NONE, 0x0000, false, 0},
    {"T",     4096,      2, 0x89, 0x09, NONE, 0x49, 0x0000, true,  0},
    {"C",     4096,      2, 0x89, 0x09, NONE, 0x49, 0x8000, true,  0},
    {"E0",    BANK_SIZE, 2, 0xA0, 0x20, NONE, NONE, 0x0000, false, 0},
    {"E1",    BANK_SIZE, 2, 0xA1, 0x21, NONE, NONE, 0x0000, false, 0},
    {"E2",    BANK_SIZE, 2, 0xA2, 0x22, NONE, NONE, 0x0000, false, 0},
    {"E3",    BANK_SIZE, 2, 0xA3, 0x23, NONE, NONE, 0x0000, false, 0},
    {"E4",    BANK_SIZE, 2, 0xA4, 0x24, NONE, NONE, 0x0000, false, 0},
    {"E5",    BANK_SIZE, 2, 0xA5, 0x25, NONE, NONE, 0x0000, false, 0},
    {"E6",    BANK_SIZE, 2, 0xA6, 0x26, NONE, NONE, 0x0000, false, 0},
    {"E7",    BANK_SIZE, 2, 0xA7, 0x27, NONE, NONE, 0x0000, false, 0},
    {"E8",    BANK_SIZE, 2, 0xA8, 0x28, NONE, NONE, 0x0000, false, 0},
    {"E9",    BANK_SIZE, 2, 0xA9, 0x29, NONE, NONE, 0x0000, false, 0},
    {"EA",    BANK_SIZE, 2, 0xAA, 0x2A, NONE, NONE, 0x0000, false, 0},
    {"EB",    BANK_SIZE, 2, 0xAB, 0x2B, NONE, NONE, 0x0000, false, 0},
    {"EC",    BANK_SIZE, 2, 0xAC, 0x2C, NONE, NONE, 0x0000, false, 0},
    {"ED",    BANK_SIZE, 2, 0xAD, 0x2D, NONE, NONE, 0x0000, false, 0},
    {"EE",    BANK_SIZE, 2, 0xAE, 0x2E, NONE, NONE, 0x0000, false, 0},
    {"EF",    BANK_SIZE, 2, 0xAF, 0x2F, NONE, NONE, 0x0000, false, 0},
    {"E10",   BANK_SIZE, 2, 0x60, 0xE0, NONE, NONE, 0x0000, false, 0},
    {"E11",   BANK_SIZE, 2, 0x61, 0xE1, NONE, NONE, 0x0000, false, 0},
    {"E12",   BANK_SIZE, 2, 0x62, 0xE2, NONE, NONE, 0x0000, false, 0},
    {"E13",   BANK_SIZE, 2, 0x63, 0xE3, NONE, NONE, 0x0000, false, 0},
    {"E14",   BANK_SIZE, 2, 0x64, 0xE4, NONE, NONE, 0x0000, false, 0},
    {"E15",   BANK_SIZE, 2, 0x65, 0xE5, NONE, NONE, 0x0000, false, 0},
    {"E16",   BANK_SIZE, 2, 0x66, 0xE6, NONE, NONE, 0x0000, false, 0},
    {"E17",   BANK_SIZE, 2, 0x67, 0xE7, NONE, NONE, 0x0000, false, 0},
    {"E18",   BANK_SIZE, 2, 0x68, 0xE8, NONE, NONE, 0x0000, false, 0},
    {"E",     0,         2, 0x98, 0x0A, NONE, NONE, 0x0000, false, 0}, // stands for another row
    {"BANK",  1,         2, 0xBC, NONE, NONE, NONE, 0x0F00, false, 0},
    {"DR",    16,        2, 0xBC, NONE, NONE, NONE, 0x0200, false, 0},
    {"IR",    16,        4, 0xDC, NONE, NONE, NONE, 0x0100, false, 0},
    {"TK",    32,        0, NONE, 0x06, NONE, 0x46, 0x0000, true,  32},
    {"CF",    2,         2, NONE, 0x07, NONE, NONE, 0x0000, false, 2},
};

bool findArea(unsigned areaCode, unsigned address, Span *span)
{
    int found = -1;
    for (int i = 0; i < AREA_COUNT; ++i) {
        const AreaRow &row = AREAS[i];
        const bool isWord = row.wordCode == areaCode || row.wordStateCode == areaCode;
        const bool isBit = row.bitCode == areaCode || row.bitStateCode == areaCode;
        if (!isWord && !isBit)
            continue;
        const bool isNearer = found < 0 || (row.base <= address && (AREAS[found].base < row.base ||
                                                                    AREAS[found].base > address));
        if (!isNearer)
            continue;
        found = i;
        span->area = i;
        span->access = isWord ? Access::WORD : row.hasFlags ? Access::FLAG : Access::BIT;
        span->withState = row.wordStateCode == areaCode || row.bitStateCode == areaCode;
    }
    return found >= 0;
}

unsigned largestValue(const Span &span)
{
    if (span.access != Access::WORD)
        return 1;
    return AREAS[span.area].itemSize == 4 ? 0xFFFFFFFFu : 0xFFFFu;
}

} // namespace plc
