#include "words/frame_words.h"

#include "cpu/areas.h"

#include <fmt/format.h>

namespace plc {

namespace {

const std::size_t LISTED_MAX = 8; // of several places
const std::size_t SHOWN_MAX = 16; // bytes of parameters that are not explained
const std::size_t PLACE_SIZE = 4; // area (1), address (2), bit (1)

// Looks up the place at the beginning of `place`, as far as the area goes: its size is the PLC's. Returns false if there
// is none.
bool findPlace(Slice place, Span *span)
{
    if (!findArea(place.get8(0), place.get16(1), span) || place.get16(1) < AREAS[span->area].base)
        return false;
    span->first = place.get16(1) - AREAS[span->area].base;
    return true;
}

// "DM 100" for the place at the beginning of `place`.
std::string placeWords(Slice place)
{
    const unsigned bit = place.get8(3);
    Span span;
    if (!findPlace(place, &span))
        return fmt::format("area {:02X} {}.{}", place.get8(0), place.get16(1), bit);
    const std::string text = fmt::format("{} {}", AREAS[span.area].name, span.first);
    return span.access == Access::BIT || bit != 0 ? text + fmt::format(".{}", bit) : text;
}

const char *itemName(const Span &span)
{
    switch (span.access) {
    case Access::BIT:
        return "bit";
    case Access::FLAG:
        return "flag";
    case Access::WORD:
        break;
    }
    if (AREAS[span.area].hasFlags)
        return "value";
    return span.area == AREA_DR || span.area == AREA_IR ? "register" : "word";
}

// "10 words" for so many items from the place at the beginning of `place` on.
std::string itemWords(Slice place, unsigned count)
{
    Span span;
    const bool isKnown = findPlace(place, &span);
    if (isKnown && span.area == AREA_TK && span.withState)
        return fmt::format("{} {}", count, count == 1 ? "status" : "statuses");
    return fmt::format("{} {}{}{}", count, span.withState ? "forced " : "", isKnown ? itemName(span) : "item",
                       count == 1 ? "" : "s");
}

std::string rangeWords(Slice parameters)
{
    return placeWords(parameters) + ", " + itemWords(parameters, parameters.get16(PLACE_SIZE));
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
           itemWords(parameters, parameters.get16(2 * PLACE_SIZE));
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

const CommandName *findCommand(unsigned code)
{
    for (const CommandName &known : COMMANDS)
        if (known.code == code)
            return &known;
    return nullptr;
}

} // namespace

std::string commandName(unsigned code)
{
    const CommandName *const known = findCommand(code);
    return known ? known->name : fmt::format("command {:04X}", code);
}

std::string commandWords(Slice command)
{
    const CommandName *const known = findCommand(command.get16(0));
    const Slice parameters = command.from(2);
    const bool isExplained = known && parameters.size() >= known->least;
    const std::string words = isExplained ? known->words(parameters) : plainWords(parameters);
    return commandName(command.get16(0)) + (words.empty() ? "" : " ") + words;
}

} // namespace plc
