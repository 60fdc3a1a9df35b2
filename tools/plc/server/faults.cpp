#include "server/faults.h"

#include "cpu/end_codes.h"
#include "cpu/memory.h"

#include <algorithm>
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
    const char *meaning;
};

// Rows in the order of FaultKind.
const FaultRow FAULTS[FAULT_COUNT] = {
    {"delay",     ValueKind::DECIMAL,  0, 60000,  100, "reply MS late (100)"},
    {"jitter",    ValueKind::DECIMAL,  0, 60000,   50, "reply a random time late, at most MS (50)"},
    {"drop",      ValueKind::NONE,     0, 0,        0, "command carried out, reply lost"},
    {"wrong-sid", ValueKind::NONE,     0, 0,        0, "reply with the next service ID"},
    {"short",     ValueKind::DECIMAL,  1, 1000,     1, "reply without its last N bytes, its length field agreeing (1)"},
    {"long",      ValueKind::DECIMAL,  1, 1000,     1, "reply with N zero bytes added, its length field agreeing (1)"},
    {"bytewise",  ValueKind::DECIMAL,  0, 1000,     1, "reply one byte at a time, MS apart (1)"},
    {"double",    ValueKind::NONE,     0, 0,        0, "reply twice in one segment"},
    {"end-code",  ValueKind::END_CODE, 1, 0xFFFF,   0,
     "command refused with end code XXXX (hex); 0040 0080 00C0 are flags of a good reply"},
    {"close",     ValueKind::NONE,     0, 0,        0, "command carried out, connection closed instead of a reply"},
    {"silence",   ValueKind::NONE,     0, 0,        0, "nothing carried out or answered, node exchanges included"},
    {"refuse",    ValueKind::NONE,     0, 0,        0, "connections refused"},
    {"tcp-error", ValueKind::TCP_ERROR, 1, 0x25,    0, "node exchange refused: FINS/TCP error 1 2 3 20 to 25"},
};

const unsigned TIMES_MAX = 1000000;

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

std::string valueText(ValueKind kind, unsigned value)
{
    switch (kind) {
    case ValueKind::NONE:      return "";
    case ValueKind::DECIMAL:   return fmt::format("={}", value);
    case ValueKind::END_CODE:  return fmt::format("={:04X}", value);
    case ValueKind::TCP_ERROR: return fmt::format("={:02X}", value);
    }
    return "";
}

int findFault(const std::string &name)
{
    for (int i = 0; i < FAULT_COUNT; ++i)
        if (name == FAULTS[i].name)
            return i;
    return -1;
}

std::string unknownFault(const std::string &name)
{
    std::string text = "'" + name + "' is no fault; faults are";
    for (const FaultRow &row : FAULTS)
        text += std::string(" ") + row.name;
    return text;
}

// A decimal number from 0 to 1.
bool parseProbability(const std::string &text, double *probability)
{
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos)
        return false;
    char *end = nullptr;
    const double parsed = std::strtod(text.c_str(), &end);
    if (*end != '\0' || parsed > 1.0)
        return false;
    *probability = parsed;
    return true;
}

// `digits` hexadecimal digits, or where `mayBeShort`, at least one.
bool parseHex(const std::string &text, std::size_t digits, bool mayBeShort, unsigned *value)
{
    if (text.empty() || text.size() > digits || (text.size() < digits && !mayBeShort) ||
        text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    *value = static_cast<unsigned>(std::strtoul(text.c_str(), nullptr, 16));
    return true;
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

// Returns an empty text, or what is wrong with the value.
std::string parseValue(const FaultRow &row, const std::string &text, unsigned *value)
{
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

} // namespace

std::string Faults::set(const std::string &text)
{
    const std::string::size_type hash = text.find('#');
    const std::string::size_type at = text.substr(0, hash).find('@');
    const std::string nameAndValue = text.substr(0, std::min(at, hash));
    const std::string::size_type equals = nameAndValue.find('=');
    const std::string name = nameAndValue.substr(0, equals);
    const int kind = findFault(name);
    if (kind < 0)
        return unknownFault(name);
    Setting setting;
    setting.probability = 1;
    setting.value = FAULTS[kind].preset;
    const std::string probability = at == std::string::npos ? "" : text.substr(at + 1, hash - (at + 1));
    if (at != std::string::npos && !parseProbability(probability, &setting.probability))
        return "'" + probability + "' is no probability; use 0 to 1";
    if (hash != std::string::npos &&
        (!parseNumber(text.substr(hash + 1), TIMES_MAX, &setting.times) || setting.times == 0))
        return "'" + text.substr(hash + 1) + "' is no number of times; use 1 to " + std::to_string(TIMES_MAX);
    if (equals == std::string::npos && FAULTS[kind].kind == ValueKind::END_CODE)
        return name + " needs a value, such as " + name + "=1101";
    if (equals == std::string::npos && FAULTS[kind].kind == ValueKind::TCP_ERROR)
        return name + " needs a value, such as " + name + "=22";
    if (equals != std::string::npos) {
        std::string wrong = parseValue(FAULTS[kind], nameAndValue.substr(equals + 1), &setting.value);
        if (!wrong.empty())
            return wrong;
    }
    settings[kind] = setting;
    return std::string();
}

std::string Faults::clear(const std::string &name)
{
    const int kind = findFault(name);
    if (kind < 0)
        return unknownFault(name);
    settings[kind] = Setting();
    return std::string();
}

void Faults::clearAll()
{
    for (Setting &setting : settings)
        setting = Setting();
}

bool Faults::strikes(FaultKind kind)
{
    const double range = 4294967296.0; // of the random numbers
    Setting &setting = settings[kind];
    if (setting.probability <= 0)
        return false;
    if (setting.probability < 1 && static_cast<double>(random()) / range >= setting.probability)
        return false;
    if (setting.times > 0 && --setting.times == 0)
        setting.probability = 0;
    return true;
}

std::string Faults::list() const
{
    std::string text;
    for (int i = 0; i < FAULT_COUNT; ++i) {
        if (settings[i].probability <= 0)
            continue;
        const std::string value = valueText(FAULTS[i].kind, settings[i].value);
        const double chance = settings[i].probability;
        const std::string probability = chance < 1 ? fmt::format("@{:g}", chance) : "";
        const std::string times = settings[i].times > 0 ? "#" + std::to_string(settings[i].times) : "";
        text += (text.empty() ? "" : " ") + std::string(FAULTS[i].name) + value + probability + times;
    }
    return text.empty() ? "none" : text;
}

std::string Faults::help()
{
    std::string text;
    for (const FaultRow &row : FAULTS)
        text += fmt::format("  {:<15} {}\n", std::string(row.name) + valueUsage(row.kind), row.meaning);
    return text;
}

} // namespace plc
