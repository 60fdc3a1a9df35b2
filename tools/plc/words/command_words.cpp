#include "words/frame_words.h"

#include <fmt/format.h>

namespace plc {

namespace {

// Memory areas by their codes in commands. Codes in a row are banks.
struct AreaName {
    unsigned    first;
    unsigned    last;
    const char *name;
    unsigned    bank; // of `first`; EM alone has banks
    const char *item;
    bool        isBit; // the address has a bit number
};

const AreaName AREAS[] = {
    {0x30, 0x30, "CIO", 0, "bit", true},            {0xB0, 0xB0, "CIO", 0, "word", false},
    {0x31, 0x31, "WR", 0, "bit", true},             {0xB1, 0xB1, "WR", 0, "word", false},
    {0x32, 0x32, "HR", 0, "bit", true},             {0xB2, 0xB2, "HR", 0, "word", false},
    {0x33, 0x33, "AR", 0, "bit", true},             {0xB3, 0xB3, "AR", 0, "word", false},
    {0x70, 0x70, "CIO", 0, "forced bit", true},     {0xF0, 0xF0, "CIO", 0, "forced word", false},
    {0x71, 0x71, "WR", 0, "forced bit", true},      {0xF1, 0xF1, "WR", 0, "forced word", false},
    {0x72, 0x72, "HR", 0, "forced bit", true},      {0xF2, 0xF2, "HR", 0, "forced word", false},
    {0x02, 0x02, "DM", 0, "bit", true},             {0x82, 0x82, "DM", 0, "word", false},
    {0x20, 0x2F, "E", 0x00, "bit", true},          {0xA0, 0xAF, "E", 0x00, "word", false},
    {0xE0, 0xE8, "E", 0x10, "bit", true},          {0x60, 0x68, "E", 0x10, "word", false},
    {0x0A, 0x0A, "E", 0, "bit", true},             {0x98, 0x98, "E", 0, "word", false},
    {0x09, 0x09, "T", 0, "flag", false},            {0x89, 0x89, "T", 0, "value", false},
    {0x49, 0x49, "T", 0, "forced flag", false},     {0xBC, 0xBC, "DR", 0, "register", false},
    {0xDC, 0xDC, "IR", 0, "register", false},       {0x06, 0x06, "TK", 0, "flag", false},
    {0x46, 0x46, "TK", 0, "status", false},         {0x07, 0x07, "CF", 0, "bit", true},
};

const unsigned    COUNTER_BASE = 0x8000; // in the areas of timers
const std::size_t LISTED_MAX = 8;        // of several places
const std::size_t SHOWN_MAX = 16;        // bytes of parameters that are not explained
const std::size_t PLACE_SIZE = 4;        // area (1), address (2), bit (1)

const AreaName *findArea(unsigned code)
{
    for (const AreaName &area : AREAS)
        if (code >= area.first && code <= area.last)
            return &area;
    return nullptr;
}

std::string addressWords(const AreaName &area, Slice place)
{
    const bool isCounter = area.name == std::string("T") && place.get16(1) >= COUNTER_BASE;
    std::string text = isCounter ? "C" : area.name;
    if (area.first != area.last)
        text += fmt::format("{:X}", area.bank + place.get8(0) - area.first);
    text += fmt::format(" {}", isCounter ? place.get16(1) - COUNTER_BASE : place.get16(1));
    return area.isBit || place.get8(3) != 0 ? text + fmt::format(".{}", place.get8(3)) : text;
}

// "DM 100" for the place at the beginning of `place`.
std::string placeWords(Slice place)
{
    const AreaName *const area = findArea(place.get8(0));
    return area ? addressWords(*area, place)
                : fmt::format("area {:02X} {}.{}", place.get8(0), place.get16(1), place.get8(3));
}

std::string itemWords(unsigned areaCode, unsigned count)
{
    const AreaName *const area = findArea(areaCode);
    const std::string item = area ? area->item : "item";
    return fmt::format("{} {}{}", count, item, count == 1 ? "" : item.back() == 's' ? "es" : "s");
}

std::string rangeWords(Slice parameters)
{
    return placeWords(parameters) + ", " + itemWords(parameters.get8(0), parameters.get16(PLACE_SIZE));
}

std::string fillWords(Slice parameters)
{
    return rangeWords(parameters) + fmt::format(" with {:04X}", parameters.get16(PLACE_SIZE + 2));
}

std::string listWords(Slice parameters)
{
    const std::size_t places = parameters.size() / PLACE_SIZE;
    std::string text;
    for (std::size_t i = 0; i < places && i < LISTED_MAX; ++i)
        text += (i == 0 ? "" : ", ") + placeWords(parameters.from(i * PLACE_SIZE));
    return places > LISTED_MAX ? text + fmt::format(" and {} more", places - LISTED_MAX) : text;
}

std::string transferWords(Slice parameters)
{
    return placeWords(parameters) + " to " + placeWords(parameters.from(PLACE_SIZE)) + ", " +
           itemWords(parameters.get8(0), parameters.get16(2 * PLACE_SIZE));
}

std::string runWords(Slice parameters)
{
    const unsigned mode = parameters.size() < 3 ? 2 : parameters.get8(2);
    return mode == 2 ? "in MONITOR" : mode == 4 ? "in RUN" : fmt::format("in mode {:02X}", mode);
}

std::string plainWords(Slice parameters)
{
    if (parameters.size() == 0)
        return std::string();
    const Slice shown = parameters.upTo(SHOWN_MAX);
    return fmt::format("with {:02X}{}", fmt::join(shown.begin(), shown.begin() + shown.size(), ""),
                       shown.size() < parameters.size() ? fmt::format("... ({} bytes)", parameters.size()) : "");
}

struct CommandName {
    unsigned    code;
    const char *name;
    std::size_t least; // bytes of parameters that `words` needs
    std::string (*words)(Slice parameters);
};

const CommandName COMMANDS[] = {
    {0x0101, "READ",                 6,  rangeWords},
    {0x0102, "WRITE",                6,  rangeWords},
    {0x0103, "FILL",                 8,  fillWords},
    {0x0104, "READ MANY",            4,  listWords},
    {0x0105, "TRANSFER",             10, transferWords},
    {0x0401, "RUN",                  0,  runWords},
    {0x0402, "STOP",                 0,  plainWords},
    {0x0501, "CONTROLLER DATA READ", 0,  plainWords},
    {0x0502, "CONNECTION DATA READ", 0,  plainWords},
    {0x0601, "STATUS READ",          0,  plainWords},
    {0x0620, "CYCLE TIME READ",      0,  plainWords},
    {0x0701, "CLOCK READ",           0,  plainWords},
    {0x0702, "CLOCK WRITE",          0,  plainWords},
    {0x0801, "LOOPBACK TEST",        0,  plainWords},
    {0x0920, "MESSAGE READ/CLEAR",   0,  plainWords},
    {0x0C01, "ACCESS RIGHT ACQUIRE", 0,  plainWords},
    {0x0C02, "ACCESS RIGHT TAKE",    0,  plainWords},
    {0x0C03, "ACCESS RIGHT RELEASE", 0,  plainWords},
    {0x2101, "ERROR CLEAR",          0,  plainWords},
    {0x2102, "ERROR LOG READ",       0,  plainWords},
    {0x2103, "ERROR LOG CLEAR",      0,  plainWords},
    {0x2301, "FORCE",                0,  plainWords},
    {0x2302, "FORCE CANCEL",         0,  plainWords},
};

} // namespace

std::string commandWords(Slice command)
{
    const unsigned code = command.get16(0);
    const Slice parameters = command.from(2);
    for (const CommandName &known : COMMANDS) {
        if (known.code != code)
            continue;
        const std::string words = parameters.size() < known.least ? plainWords(parameters) : known.words(parameters);
        return words.empty() ? known.name : std::string(known.name) + " " + words;
    }
    const std::string words = plainWords(parameters);
    return fmt::format("command {:04X}{}{}", code, words.empty() ? "" : " ", words);
}

} // namespace plc
