#include "console/console.h"

#include "console/line_reader.h"

#include <fmt/format.h>
#include <vector>

namespace plc {

namespace {

const unsigned STEPS_MOST = 100000; // for that long no client is answered

const unsigned REST = ~0u; // words: the command judges all that is behind its name

// The word behind the name and so many others; empty if there is none.
std::string wordBehind(const std::string &line, unsigned others)
{
    std::istringstream words(line);
    std::string word;
    for (unsigned i = 0; words && i <= others; ++i)
        words >> word;
    return words >> word ? word : std::string();
}

// What is wrong with the values, or an empty text: a forced bit would not take its value.
std::string checkForced(const Memory &memory, const Span &span, const std::vector<unsigned> &values)
{
    const unsigned BITS_PER_WORD = 16;
    for (unsigned i = 0; i < span.count; ++i) {
        const unsigned against = memory.forcedAgainst(span, i, values[i]);
        if (against == 0)
            continue;
        Span bit = span;
        bit.first += i;
        if (span.access == Access::WORD) {
            bit.access = Access::BIT;
            bit.first *= BITS_PER_WORD;
            for (unsigned mask = 1; (against & mask) == 0; mask <<= 1)
                ++bit.first;
        }
        return placeText(bit) + " is forced and stays as it is until a client releases it";
    }
    return std::string();
}

} // namespace

const Console::Command Console::COMMANDS[] = {
    {"read",       "TYPE:ADDRESS[:COUNT]",                     "values, in decimal", 1, &Console::read},
    {"write",      "TYPE:ADDRESS VALUE...",                    "values 0 to 65535, or 0 and 1", REST, &Console::write},
    {"mode",       "[program|monitor|run]",                    "the operating mode, or a new one", 1, &Console::mode},
    {"error",      "[NAME [NUMBER] [TEXT | off] | off]",       "the CPU unit's errors; begin or end one",
     REST, &Console::error},
    {"battery",    "[good|low|none]",                          "the battery, or a new state of it",
     REST, &Console::battery},
    {"clock",      "[YYYY-MM-DD HH:MM:SS]",                    "the CPU unit's clock, or a new time",
     REST, &Console::clock},
    {"cycle",      "[MS [LONGEST SHORTEST]]",                  "the cycle times, or new ones", REST, &Console::cycle},
    {"message",    "[NUMBER TEXT | NUMBER off]",               "the program's messages; begin or end one",
     REST, &Console::message},
    {"log",        "[clear]",                                  "the error log, or empty it", REST, &Console::log},
    {"step",       "[COUNT]",                                  "let so many periods pass, with --stepped",
     1, &Console::step},
    {"fault",      "NAME[=VALUE][:AIM][@PROBABILITY][#TIMES] | NAME off", "begin or end a fault",
     2, &Console::fault},
    {"faults",     "[counts|off]",                             "the faults that are set, their counts, or end all",
     1, &Console::faults},
    {"tcp-error",  "XX [TIMES] | off",                         "refuse node address exchanges", 2, &Console::tcpError},
    {"clients",    "",                                         "number of clients and their nodes",
     0, &Console::clients},
    {"disconnect", "",                                         "close all connections", 0, &Console::disconnect},
    {"plc",        "[NAME]",                                   "the PLC that lines go to, or another one",
     1, &Console::choosePlc},
    {"stats",      "",                                         "counts since the start", 0, &Console::stats},
    {"replay",     "",                                         "what the recording had, and what not",
     0, &Console::replay},
    {"help",       "",                                         "the names of the commands", 0, &Console::listCommands},
    {"quit",       "",                                         "end the simulator", 0, &Console::leave},
};

std::string Console::help()
{
    std::string text;
    for (const Command &command : COMMANDS)
        text += fmt::format("  {:<58} {}\n", std::string(command.name) + " " + command.arguments, command.meaning);
    return text;
}

std::string Console::answer(const std::string &line)
{
    if (line.size() > LineReader::LINE_MAX_BYTES)
        return fmt::format("error the line is longer than {} bytes; write less at once",
                           std::size_t(LineReader::LINE_MAX_BYTES));
    Words words(line);
    std::string name;
    words >> name;
    for (const Command &command : COMMANDS) {
        if (name != command.name)
            continue;
        const std::string surplus = wordBehind(line, command.words);
        if (!surplus.empty())
            return fmt::format("error '{}' is not understood; use {}{}{}", surplus, name, *command.arguments ? " " : "",
                               command.arguments);
        return (this->*command.run)(words);
    }
    return "error '" + name + "' is no command; try help";
}

std::string Console::read(Words &words)
{
    std::string place;
    words >> place;
    Span span;
    const std::string wrong = parsePlace(place, plc.controller.memory, &span);
    if (!wrong.empty())
        return "error " + wrong;
    std::string reply = "ok";
    for (unsigned i = 0; i < span.count; ++i)
        reply += " " + std::to_string(plc.controller.memory.get(span, i));
    return reply;
}

// Writes all of the values or none.
std::string Console::write(Words &words)
{
    std::string place;
    words >> place;
    Span span;
    std::string wrong = parsePlace(place, plc.controller.memory, &span);
    if (!wrong.empty())
        return "error " + wrong;
    if (isComputed(span))
        return "error " + place + " is made by the CPU unit at every moment; it cannot be written";
    const unsigned most = largestValue(span);
    std::vector<unsigned> values;
    for (std::string word; words >> word;) {
        unsigned value = 0;
        if (!parseNumber(word, most, &value))
            return "error '" + word + "' is no value from 0 to " + std::to_string(most);
        values.push_back(value);
    }
    if (values.empty())
        return "error no value; use write TYPE:ADDRESS VALUE...";
    const bool hasCount = place.find(':') != place.rfind(':');
    if (hasCount && values.size() != span.count)
        return "error " + std::to_string(values.size()) + " values for " + std::to_string(span.count) + " items";
    if (!hasCount)
        wrong = parsePlace(place + ":" + std::to_string(values.size()), plc.controller.memory, &span);
    if (wrong.empty())
        wrong = checkForced(plc.controller.memory, span, values);
    if (!wrong.empty())
        return "error " + wrong;
    for (unsigned i = 0; i < span.count; ++i)
        plc.controller.memory.set(span, i, values[i]);
    return "ok";
}

std::string Console::mode(Words &words)
{
    std::string name;
    Mode wanted = plc.controller.mode;
    if (words >> name && !parseMode(name, &wanted))
        return "error '" + name + "' is no mode; use program, monitor or run";
    plc.controller.changeMode(wanted);
    return "ok " + modeName(plc.controller.mode);
}

// Periods pass one by one, so that the plant sees the time of each.
std::string Console::step(Words &words)
{
    std::string text = "1";
    unsigned count = 0;
    if (!plc.controller.clock.isStepped())
        return "error time passes by itself; start with --stepped";
    if (words >> text; !parseNumber(text, STEPS_MOST, &count) || count == 0)
        return "error '" + text + "' is no number of steps; use 1 to " + std::to_string(STEPS_MOST);
    for (unsigned i = 0; i < count; ++i) {
        plc.controller.clock.advance(plc.period);
        if (plc.plant)
            plc.plant->step();
    }
    return "ok";
}

std::string Console::fault(Words &words)
{
    std::string setting;
    std::string off;
    words >> setting >> off;
    if (!off.empty() && off != "off")
        return "error '" + off + "' is not understood; use fault NAME[=VALUE][:AIM][@PROBABILITY] or fault NAME off";
    const std::string wrong = off.empty() ? plc.faults.set(setting) : plc.faults.clear(setting);
    if (!wrong.empty())
        return "error " + wrong;
    server.applyFaults();
    return "ok";
}

std::string Console::faults(Words &words)
{
    std::string off;
    words >> off;
    if (off.empty())
        return "ok " + plc.faults.list();
    if (off == "counts")
        return "ok " + plc.faults.listWithCounts();
    if (off != "off")
        return "error '" + off + "' is not understood; use faults, faults counts or faults off";
    plc.faults.clearAll();
    server.applyFaults();
    return "ok";
}

std::string Console::tcpError(Words &words)
{
    std::string error;
    std::string times;
    words >> error >> times;
    std::istringstream setting(error == "off" ? "tcp-error off"
                                              : "tcp-error=" + error + (times.empty() ? "" : "#" + times));
    return fault(setting);
}

std::string Console::clients(Words &)
{
    std::string reply = "ok " + std::to_string(plc.nodes.nodes().size());
    for (const unsigned node : plc.nodes.nodes())
        reply += " " + std::to_string(node);
    return reply;
}

std::string Console::disconnect(Words &)
{
    return "ok " + std::to_string(server.disconnectAll());
}

std::string Console::choosePlc(Words &words)
{
    std::string name;
    words >> name;
    return choose(name);
}

std::string Console::stats(Words &)
{
    return fmt::format("ok connections={} requests={} replies={}", plc.stats.connections, plc.stats.requests,
                       plc.stats.replies);
}

std::string Console::replay(Words &)
{
    if (!plc.recorded)
        return "error no recording is replayed; use --replay FILE";
    const Replay::Report report = plc.recorded->report();
    return fmt::format("ok known={} unknown={}{}{}", report.known, report.unknown, report.requests.empty() ? "" : " ",
                       fmt::join(report.requests, "; "));
}

std::string Console::listCommands(Words &)
{
    std::string reply = "ok";
    for (const Command &command : COMMANDS)
        reply += std::string(" ") + command.name;
    return reply;
}

std::string Console::leave(Words &)
{
    quit();
    return "ok";
}

} // namespace plc
