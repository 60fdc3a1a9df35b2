#include "faults/fault_aim.h"

#include "faults/fault_kinds.h"

#include <asio/ip/address.hpp>
#include <fmt/format.h>

namespace plc {

namespace {

struct CommandName {
    const char *name;
    unsigned    code;
};

const CommandName COMMANDS[] = {
    {"read", 0x0101},         {"write", 0x0102},        {"fill", 0x0103},          {"multi-read", 0x0104},
    {"transfer", 0x0105},     {"run", 0x0401},          {"stop", 0x0402},          {"data", 0x0501},
    {"connection", 0x0502},   {"status", 0x0601},       {"cycle-time", 0x0620},    {"clock", 0x0701},
    {"set-clock", 0x0702},    {"loopback", 0x0801},     {"messages", 0x0920},      {"acquire", 0x0C01},
    {"take-over", 0x0C02},    {"release", 0x0C03},      {"clear-errors", 0x2101},  {"error-log", 0x2102},
    {"clear-log", 0x2103},    {"force", 0x2301},        {"cancel-force", 0x2302},
};

// Where a command names items of memory. What follows from `first` on repeats every `stride` bytes, to the end of the
// command or, without a stride, once.
struct PlaceRow {
    unsigned    code;
    std::size_t first;  // offset of an area code (1), an address (2) and a bit (1)
    std::size_t stride;
    std::size_t count;  // offset of the number of items (2); 0: each is one item
};

const PlaceRow PLACES[] = {
    {0x0101, 2, 0, 6}, {0x0102, 2, 0, 6},  {0x0103, 2, 0, 6}, {0x0104, 2, 4, 0},
    {0x0105, 2, 0, 10}, {0x0105, 6, 0, 10}, {0x2301, 6, 6, 0},
};

// Whether the items at `offset` of the command are among the words of the aim.
bool touches(const FaultAim &aim, const FaultTarget &target, std::size_t offset, unsigned count)
{
    const Slice place = target.command.from(offset);
    Span span;
    if (place.size() < 4 || target.memory.locate(place.get8(0), place.get16(1), place.get8(3), 0, &span) != END_NORMAL)
        return false;
    if (span.area != aim.area)
        return false;
    const unsigned itemsPerWord = span.access == Access::BIT ? 16 : 1;
    const unsigned first = span.first / itemsPerWord;
    if (count == 0)
        return aim.from == 0 && aim.to == FaultAim::ANY;
    return first <= aim.to && (span.first + count - 1) / itemsPerWord >= aim.from;
}

bool touchesAny(const FaultAim &aim, const FaultTarget &target)
{
    for (const PlaceRow &row : PLACES) {
        if (row.code != target.command.get16(0))
            continue;
        const unsigned count = row.count != 0 ? target.command.get16(row.count) : 1;
        if (touches(aim, target, row.first, count))
            return true;
        for (std::size_t at = row.first + row.stride; row.stride != 0 && at < target.command.size(); at += row.stride)
            if (touches(aim, target, at, count))
                return true;
    }
    return false;
}

// The place of an area by its name; memory of full size knows every name.
bool findAreaByName(const std::string &name, int *area)
{
    static const Memory FULL;
    Span span;
    if (name.find(':') != std::string::npos || !parsePlace(name + ":0", FULL, &span).empty() ||
        span.access != Access::WORD)
        return false;
    *area = span.area;
    return true;
}

std::string areaName(int area)
{
    Span span;
    span.area = area;
    const std::string place = placeText(span);
    return place.substr(0, place.find(':'));
}

std::string parseCommand(const std::string &text, unsigned *code)
{
    for (const CommandName &command : COMMANDS) {
        if (text == command.name) {
            *code = command.code;
            return std::string();
        }
    }
    const bool hasPrefix = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    if (parseHex(hasPrefix ? text.substr(2) : text, 4, false, code))
        return std::string();
    return "'" + text + "' is no command; use four hexadecimal digits, or one of " + commandNames();
}

std::string parseClient(const std::string &text, FaultAim *aim)
{
    unsigned node = 0;
    if (parseNumber(text, 254, &node) && node != 0) {
        aim->node = node;
        return std::string();
    }
    asio::error_code error;
    const asio::ip::address address = asio::ip::make_address(text, error);
    if (error)
        return "'" + text + "' is no client; use a node from 1 to 254 or an IP address";
    aim->ip = address.to_string();
    return std::string();
}

std::string parseWord(const std::string &text, unsigned *word)
{
    return parseNumber(text, 65535, word) ? "" : "'" + text + "' is no address; use 0 to 65535";
}

} // namespace

std::string commandNames()
{
    std::string names;
    for (const CommandName &command : COMMANDS)
        names += (names.empty() ? "" : " ") + std::string(command.name);
    return names;
}

bool FaultAim::operator==(const FaultAim &other) const
{
    return command == other.command && area == other.area && from == other.from && to == other.to &&
           node == other.node && ip == other.ip;
}

bool FaultAim::hits(const FaultTarget &target) const
{
    if (command != ANY && (target.command.size() == 0 || target.command.get16(0) != command))
        return false;
    if ((node != 0 && target.node != node) || (!ip.empty() && target.ip != ip))
        return false;
    return area < 0 || touchesAny(*this, target);
}

std::string FaultAim::text() const
{
    std::string text;
    const auto add = [&text](const std::string &part) { text += (text.empty() ? "" : ",") + part; };
    if (command != ANY)
        add(fmt::format("command={:04X}", command));
    if (area >= 0)
        add("area=" + areaName(area));
    if (from != 0)
        add("from=" + std::to_string(from));
    if (to != ANY)
        add("to=" + std::to_string(to));
    if (node != 0)
        add("client=" + std::to_string(node));
    if (!ip.empty())
        add("client=" + ip);
    return text;
}

std::string FaultAim::set(const std::string &key, const std::string &value, bool *isKnown)
{
    *isKnown = true;
    if (key == "command")
        return parseCommand(value, &command);
    if (key == "area")
        return findAreaByName(value, &area) ? "" : "'" + value + "' is no area; use one such as CIO WR HR AR DM T C";
    if (key == "from")
        return parseWord(value, &from);
    if (key == "to")
        return parseWord(value, &to);
    if (key == "client")
        return parseClient(value, this);
    *isKnown = false;
    return std::string();
}

std::string FaultAim::check() const
{
    if (area < 0 && (from != 0 || to != ANY))
        return "from and to need an area; add one such as area=DM";
    if (from > to)
        return "from=" + std::to_string(from) + " is behind to=" + std::to_string(to);
    return std::string();
}

} // namespace plc
