#include "link/fins_codes.h"

#include <fmt/format.h>

namespace {

struct CodeText {
    std::uint32_t code;
    const char   *text;
    const char   *hint; // what to do about it
};

const char ROUTE[]   = "check the node addresses and the routing tables of the PLC's Ethernet unit";
const char REPEAT[]  = "the network or the unit is busy; try again, with a longer --timeout or --interval";
const char FAULTY[]  = "read the PLC's error log with the programming software";
const char MODEL[]   = "this PLC may be of another series; compare its memory areas with 'fins_panel types'";
const char SHORTER[] = "use fewer --words-per-frame; 'fins_panel bench' finds how many the PLC takes";
const char RANGE[]   = "this PLC has less memory than the largest one; compare the address with its manual";
const char PROTECT[] = "lift the write protection: CPU unit's DIP switch, UM protection or the unit's FINS settings";
const char MODE[]    = "the operating mode is not the right one; --allow-mode-change asks for MONITOR mode on a write";
const char FRAME[]   = "the request was damaged or the PLC is of another series; look at it with --trace=full";
const char ACCESS[]  = "wait, or end the programming software that holds the access right";
const char CAUSE[]   = "mend what causes the error, and clear it again";
const char SPEECH[]  = "the PLC did not understand this program; look at the frames with --trace=full";
const char FULL[]    = "end other programs that are connected, or restart the unit to free dead connections";
const char TAKEN[]   = "end the other program with this node address, or wait until the PLC frees the connection";
const char FILTER[]  = "add this computer's address in the unit's settings, or switch its IP address filter off";
const char ASSIGN[]  = "set the unit to assign node addresses by itself, for the range of its network";
const char CLASH[]   = "give the PLC another node address, or let the unit assign the client's by itself";

// End codes that a CPU unit or an Ethernet unit gives for the commands that a panel sends.
const CodeText END_CODES[] = {
    {0x0001, "the service was cancelled", REPEAT},
    {0x0101, "this node is not in the network", ROUTE},
    {0x0102, "token timeout", REPEAT},
    {0x0103, "too many retries", REPEAT},
    {0x0104, "too many frames at the same time", REPEAT},
    {0x0105, "node address out of range", ROUTE},
    {0x0106, "node address used twice", "give one of the two nodes another address"},
    {0x0201, "the destination node is not in the network", ROUTE},
    {0x0202, "there is no unit with this unit address", ROUTE},
    {0x0203, "a node on the way to the destination is missing", ROUTE},
    {0x0204, "the destination node is busy", REPEAT},
    {0x0205, "response timeout", REPEAT},
    {0x0301, "communications controller error", FAULTY},
    {0x0302, "CPU unit error", FAULTY},
    {0x0303, "controller error", FAULTY},
    {0x0304, "unit number error", ROUTE},
    {0x0401, "undefined command", MODEL},
    {0x0402, "the command is not supported by this model or version", MODEL},
    {0x0501, "the destination address is not in the routing tables", ROUTE},
    {0x0502, "there are no routing tables", ROUTE},
    {0x0503, "routing table error", ROUTE},
    {0x0504, "too many relay points", ROUTE},
    {0x1001, "the command is too long", SHORTER},
    {0x1002, "the command is too short", FRAME},
    {0x1003, "the number of items differs from the data", FRAME},
    {0x1004, "command format error", FRAME},
    {0x1005, "header error", FRAME},
    {0x1101, "there is no such memory area", MODEL},
    {0x1102, "access size error", MODEL},
    {0x1103, "the first address is out of range", RANGE},
    {0x1104, "the last address is out of range", RANGE},
    {0x1106, "there is no such program", FAULTY},
    {0x1109, "relational error", FRAME},
    {0x110A, "duplicate data access", REPEAT},
    {0x110B, "the response is too long", SHORTER},
    {0x110C, "parameter error", FRAME},
    {0x2002, "the memory is protected", PROTECT},
    {0x2003, "a table is missing", FAULTY},
    {0x2004, "the data are missing", MODEL},
    {0x2101, "read-only: the area cannot be written", PROTECT},
    {0x2102, "the area is protected against writing", PROTECT},
    {0x2108, "the area cannot be changed", PROTECT},
    {0x2201, "not possible during execution", MODE},
    {0x2202, "not possible in this operating mode", MODE},
    {0x2203, "wrong operating mode: the PLC is in PROGRAM mode", MODE},
    {0x2204, "wrong operating mode: the PLC is in DEBUG mode", MODE},
    {0x2205, "wrong operating mode: the PLC is in MONITOR mode", MODE},
    {0x2206, "wrong operating mode: the PLC is in RUN mode", MODE},
    {0x2207, "the node is not the polling node", ROUTE},
    {0x2208, "the operating mode does not allow the step", MODE},
    {0x2302, "the memory is missing", MODEL},
    {0x2303, "the clock is missing", MODEL},
    {0x2502, "memory error", FAULTY},
    {0x2503, "I/O setting error", FAULTY},
    {0x2504, "too many I/O points", FAULTY},
    {0x2505, "CPU bus error", FAULTY},
    {0x2506, "an I/O number is used twice", FAULTY},
    {0x2507, "I/O bus error", FAULTY},
    {0x250A, "CPU bus unit error", FAULTY},
    {0x250F, "memory error", FAULTY},
    {0x2604, "the access is protected by a password", PROTECT},
    {0x2605, "the service is being executed for another", REPEAT},
    {0x2607, "no right to execute the service", ACCESS},
    {0x260B, "the cause of the error is still there", CAUSE},
    {0x3001, "another node holds the access right", ACCESS},
    {0x4001, "the service was aborted", REPEAT},
    // The relay error alone.
    {0x8000, "relay error on the way to the destination", ROUTE},
};

const CodeText TCP_ERRORS[] = {
    {0x01, "the header does not begin with FINS", SPEECH},
    {0x02, "the data are too long", SHORTER},
    {0x03, "the command is not supported", SPEECH},
    {0x20, "all connections of the PLC are in use", FULL},
    {0x21, "this node is already connected", TAKEN},
    {0x22, "the PLC does not accept connections from this IP address", FILTER},
    {0x23, "the node address of this client is out of range", ASSIGN},
    {0x24, "the same node address is used by this client and the PLC", CLASH},
    {0x25, "the PLC has no free node address for this client", FULL},
};

template <std::size_t N>
const CodeText *findCode(const CodeText (&table)[N], std::uint32_t code)
{
    for (const CodeText &row : table) {
        if (row.code == code)
            return &row;
    }
    return nullptr;
}

std::string codeText(const CodeText *row, const std::string &number)
{
    return row ? number + " (" + row->text + ")" : number;
}

const std::uint32_t NON_FATAL_FLAG = 0x0040;
const std::uint32_t FATAL_FLAG     = 0x0080;
const std::uint32_t CPU_UNIT_FLAGS = FATAL_FLAG | NON_FATAL_FLAG;
const std::uint32_t RELAY_ERROR    = 0x8000;

} // namespace

std::uint16_t plainEndCode(std::uint16_t endCode)
{
    return static_cast<std::uint16_t>(endCode & ~CPU_UNIT_FLAGS);
}

std::string cpuErrorText(std::uint16_t endCode)
{
    if ((endCode & FATAL_FLAG) != 0)
        return "a fatal error of the CPU unit";
    return (endCode & NON_FATAL_FLAG) != 0 ? "a non-fatal error of the CPU unit" : "";
}

bool isNormalEnd(std::uint16_t endCode)
{
    return plainEndCode(endCode) == 0;
}

bool isModeEndCode(std::uint16_t endCode)
{
    const std::uint16_t plain = plainEndCode(endCode);
    return plain == 0x2203 || plain == 0x2204 || plain == 0x2206;
}

// Main and sub-code, or what stands for them when there is a relay error and nothing more.
static std::uint32_t withoutFlags(std::uint16_t endCode)
{
    const std::uint32_t code = endCode & ~(CPU_UNIT_FLAGS | RELAY_ERROR);
    return code == 0 ? endCode & RELAY_ERROR : code;
}

std::string endCodeText(std::uint16_t endCode)
{
    const std::uint32_t code = withoutFlags(endCode);
    return codeText(findCode(END_CODES, code), fmt::format("{:04X}", code));
}

bool isPassing(std::uint16_t endCode)
{
    const CodeText *row = findCode(END_CODES, withoutFlags(endCode));
    return (endCode & RELAY_ERROR) != 0 || (row && row->hint == REPEAT);
}

std::string endCodeHint(std::uint16_t endCode)
{
    const CodeText *row = findCode(END_CODES, withoutFlags(endCode));
    return row ? row->hint : "look the end code up in the manual of the PLC's Ethernet unit";
}

std::string tcpErrorText(std::uint32_t errorCode)
{
    return codeText(findCode(TCP_ERRORS, errorCode), fmt::format("{:X}", errorCode));
}

std::string tcpErrorHint(std::uint32_t errorCode)
{
    const CodeText *row = findCode(TCP_ERRORS, errorCode);
    return row ? row->hint : "look the error code up in the manual of the PLC's Ethernet unit";
}
