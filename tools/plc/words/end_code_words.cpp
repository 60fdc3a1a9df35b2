#include "words/frame_words.h"

#include "cpu/end_codes.h"

#include <fmt/format.h>

namespace plc {

namespace {

struct Meaning {
    unsigned    code;
    const char *text;
};

const Meaning MEANINGS[] = {
    {0x0000, "normal end"},
    {0x0001, "service cancelled"},
    {0x0101, "local node not in network"},
    {0x0102, "token timeout"},
    {0x0103, "retries failed"},
    {0x0104, "too many send frames"},
    {0x0105, "node address out of range"},
    {0x0106, "node address duplicate"},
    {0x0201, "destination node not in network"},
    {0x0202, "no such unit"},
    {0x0203, "third node not in network"},
    {0x0204, "destination node busy"},
    {0x0205, "response timeout"},
    {0x0301, "communications controller error"},
    {0x0302, "CPU unit error"},
    {0x0303, "controller error"},
    {0x0304, "unit number error"},
    {0x0401, "undefined command"},
    {0x0402, "not supported by this model or version"},
    {0x0501, "destination not in routing table"},
    {0x0502, "no routing table"},
    {0x0503, "routing table error"},
    {0x0504, "too many relays"},
    {0x1001, "command too long"},
    {0x1002, "command too short"},
    {0x1003, "item count does not match data"},
    {0x1004, "format error"},
    {0x1005, "header error"},
    {0x1101, "area code unknown"},
    {0x1102, "access size error"},
    {0x1103, "first address out of range"},
    {0x1104, "end of range exceeded"},
    {0x1105, "access sizes of source and destination differ"},
    {0x1106, "no such program"},
    {0x1109, "item sizes wrong"},
    {0x110A, "duplicate access"},
    {0x110B, "response too long"},
    {0x110C, "wrong parameter"},
    {0x2002, "protected"},
    {0x2003, "table missing"},
    {0x2004, "data missing"},
    {0x2005, "program missing"},
    {0x2006, "file missing"},
    {0x2007, "data mismatch"},
    {0x2101, "read-only"},
    {0x2102, "protected"},
    {0x2103, "cannot register"},
    {0x2105, "program missing"},
    {0x2106, "file missing"},
    {0x2107, "file exists already"},
    {0x2108, "cannot change"},
    {0x2201, "not while executing"},
    {0x2202, "not possible in this mode"},
    {0x2203, "CPU unit is in PROGRAM mode"},
    {0x2204, "CPU unit is in DEBUG mode"},
    {0x2205, "CPU unit is in MONITOR mode"},
    {0x2206, "CPU unit is in RUN mode"},
    {0x2207, "not the polling node"},
    {0x2208, "step not executable"},
    {0x2301, "no file device"},
    {0x2302, "no such memory"},
    {0x2303, "no clock"},
    {0x2401, "table missing"},
    {0x2502, "memory error"},
    {0x2503, "I/O setting error"},
    {0x2504, "too many I/O points"},
    {0x2505, "CPU bus error"},
    {0x2506, "I/O duplicate"},
    {0x2507, "I/O bus error"},
    {0x2509, "SYSMAC BUS/2 error"},
    {0x250A, "special or bus unit error"},
    {0x2601, "not protected"},
    {0x2602, "wrong password"},
    {0x2604, "protected"},
    {0x2605, "executing already"},
    {0x2606, "not executing"},
    {0x2607, "no right"},
    {0x2608, "settings incomplete"},
    {0x2609, "items not set"},
    {0x260A, "number defined already"},
    {0x260B, "error does not clear"},
    {0x3001, "another device has the access right"},
    {0x4001, "aborted"},
};

const unsigned RELAY_ERROR = 0x8000;
const unsigned FLAG_FATAL = 0x0080;

} // namespace

std::string endCodeWords(unsigned endCode)
{
    const unsigned plain = endCode & ~(END_FLAGS | RELAY_ERROR);
    std::string text = "unknown end code";
    for (const Meaning &meaning : MEANINGS)
        if (meaning.code == plain)
            text = meaning.text;
    if ((endCode & RELAY_ERROR) != 0)
        text += ", at a relay";
    if ((endCode & END_FLAGS) != 0)
        text += (endCode & FLAG_FATAL) != 0 ? ", CPU unit has a fatal error" : ", CPU unit has a non-fatal error";
    return endCode == END_NORMAL ? text : fmt::format("{:04X} {}", endCode, text);
}

} // namespace plc
