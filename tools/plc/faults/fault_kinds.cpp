#include "faults/fault_kinds.h"

#include "cpu/end_codes.h"
#include "cpu/memory.h"

#include <cstdlib>
#include <fmt/format.h>

namespace plc {

namespace {

enum class ValueKind { NONE, DECIMAL, END_CODE, TCP_ERROR };

struct FaultRow {
    const char *name;
    ValueKind   kind;
    unsigned    least;
    unsigned    most;
    unsigned    preset; // the value when none is given
    Reach       reach;
    Moment      moment; // when it strikes unless told otherwise
    bool        hasBoth;
    const char *meaning;
};

const Moment REQUEST = Moment::REQUEST;
const Moment REPLY = Moment::REPLY;

// Rows in the order of FaultKind.
const FaultRow FAULTS[FAULT_COUNT] = {
    {"delay",      ValueKind::DECIMAL,  0, 60000, 100, Reach::EVERYTHING, REPLY, true,   "reply MS late (100)"},
    {"jitter",     ValueKind::DECIMAL,  0, 60000,  50, Reach::EVERYTHING, REPLY, true,
     "reply a random time late, at most MS (50)"},
    {"drop",       ValueKind::NONE,     0, 0,       0, Reach::COMMAND,    REPLY, true,
     "command carried out, reply lost"},
    {"wrong-sid",  ValueKind::NONE,     0, 0,       0, Reach::COMMAND,    REPLY, false,
     "reply with the next service ID"},
    {"short",      ValueKind::DECIMAL,  1, 1000,    1, Reach::COMMAND,    REPLY, false,
     "reply without its last N bytes, its length field agreeing (1)"},
    {"long",       ValueKind::DECIMAL,  1, 1000,    1, Reach::COMMAND,    REPLY, false,
     "reply with N zero bytes added, its length field agreeing (1)"},
    {"bytewise",   ValueKind::DECIMAL,  0, 1000,    1, Reach::EVERYTHING, REPLY, false,
     "reply one byte at a time, MS apart (1)"},
    {"double",     ValueKind::NONE,     0, 0,       0, Reach::COMMAND,    REPLY, false,  "reply twice in one segment"},
    {"end-code",   ValueKind::END_CODE, 1, 0xFFFF,  0, Reach::COMMAND,    REQUEST, true,
     "command refused with end code XXXX (hex); 0040 0080 00C0 are flags of a good reply"},
    {"close",      ValueKind::NONE,     0, 0,       0, Reach::COMMAND,    REPLY, true,
     "command carried out, connection closed instead of a reply"},
    {"silence",    ValueKind::NONE,     0, 0,       0, Reach::EVERYTHING, REQUEST, false,
     "nothing carried out or answered, node exchanges included"},
    {"refuse",     ValueKind::NONE,     0, 0,       0, Reach::CONNECTION, REQUEST, false, "connections refused"},
    {"tcp-error",  ValueKind::TCP_ERROR, 1, 0x25,   0, Reach::EXCHANGE,   REQUEST, false,
     "node exchange refused: FINS/TCP error 1 2 3 20 to 25"},
    {"cut",        ValueKind::DECIMAL,  1, 2000,   20, Reach::COMMAND,    REPLY, false,
     "connection closed after N bytes of the reply (20)"},
    {"reorder",    ValueKind::NONE,     0, 0,       0, Reach::COMMAND,    REPLY, false,  "reply behind the next reply"},
    {"wrong-node", ValueKind::NONE,     0, 0,       0, Reach::COMMAND,    REPLY, false,
     "reply for the next node address"},
    {"rst",        ValueKind::NONE,     0, 0,       0, Reach::COMMAND,    REPLY, true,
     "command carried out, connection reset instead of a reply"},
};

const char *valueUsage(ValueKind kind)
{
    switch (kind) {
    case ValueKind::NONE:      return "";
    case ValueKind::DECIMAL:   return "[=N]";
    case ValueKind::END_CODE:  return "=XXXX";
    case ValueKind::TCP_ERROR: return "=XX";
    }
    return "";
}

// The errors that FINS/TCP documents.
bool isTcpError(unsigned value)
{
    return (value >= TCP_NOT_FINS && value <= TCP_UNSUPPORTED_COMMAND) ||
           (value >= TCP_ALL_IN_USE && value <= TCP_NO_NODE_LEFT);
}

std::string valueRange(const FaultRow &row)
{
    if (row.kind == ValueKind::END_CODE)
        return "four hexadecimal digits, not 0000";
    if (row.kind == ValueKind::TCP_ERROR)
        return "1, 2, 3 or 20 to 25 (hexadecimal)";
    return std::to_string(row.least) + " to " + std::to_string(row.most);
}

} // namespace

FaultKind findFault(const std::string &name)
{
    int kind = 0;
    while (kind < FAULT_COUNT && name != FAULTS[kind].name)
        ++kind;
    return static_cast<FaultKind>(kind);
}

const char *faultName(FaultKind kind) { return FAULTS[kind].name; }

Reach reachOf(FaultKind kind) { return FAULTS[kind].reach; }

Moment usualMoment(FaultKind kind) { return FAULTS[kind].moment; }

bool hasBothMoments(FaultKind kind) { return FAULTS[kind].hasBoth; }

unsigned presetValue(FaultKind kind) { return FAULTS[kind].preset; }

const char *neededValue(FaultKind kind)
{
    if (FAULTS[kind].kind == ValueKind::END_CODE)
        return "1101";
    return FAULTS[kind].kind == ValueKind::TCP_ERROR ? "22" : nullptr;
}

bool parseHex(const std::string &text, std::size_t digits, bool mayBeShort, unsigned *value)
{
    if (text.empty() || text.size() > digits || (text.size() < digits && !mayBeShort) ||
        text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    *value = static_cast<unsigned>(std::strtoul(text.c_str(), nullptr, 16));
    return true;
}

std::string parseFaultValue(FaultKind kind, const std::string &text, unsigned *value)
{
    const FaultRow &row = FAULTS[kind];
    const std::string name = row.name;
    if (row.kind == ValueKind::NONE)
        return name + " takes no value";
    unsigned parsed = 0;
    const bool isNumber = row.kind == ValueKind::DECIMAL    ? parseNumber(text, row.most, &parsed)
                          : row.kind == ValueKind::END_CODE ? parseHex(text, 4, false, &parsed)
                                                            : parseHex(text, 2, true, &parsed);
    if (!isNumber || parsed < row.least || (row.kind == ValueKind::TCP_ERROR && !isTcpError(parsed)))
        return "'" + text + "' is no value of " + name + "; use " + valueRange(row);
    *value = parsed;
    return std::string();
}

std::string faultValueText(FaultKind kind, unsigned value)
{
    switch (FAULTS[kind].kind) {
    case ValueKind::NONE:      return "";
    case ValueKind::DECIMAL:   return fmt::format("={}", value);
    case ValueKind::END_CODE:  return fmt::format("={:04X}", value);
    case ValueKind::TCP_ERROR: return fmt::format("={:02X}", value);
    }
    return "";
}

std::string unknownFault(const std::string &name)
{
    std::string text = "'" + name + "' is no fault; faults are";
    for (const FaultRow &row : FAULTS)
        text += std::string(" ") + row.name;
    return text;
}

std::string namesWithBothMoments()
{
    std::string names;
    for (const FaultRow &row : FAULTS)
        if (row.hasBoth)
            names += (names.empty() ? "" : " ") + std::string(row.name);
    return names;
}

std::string faultKindsHelp()
{
    std::string text;
    for (const FaultRow &row : FAULTS)
        text += fmt::format("  {:<15} {}\n", std::string(row.name) + valueUsage(row.kind), row.meaning);
    return text;
}

} // namespace plc
