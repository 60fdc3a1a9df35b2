#ifndef PANEL_COMMANDS_PLC_FACTS_H
#define PANEL_COMMANDS_PLC_FACTS_H

#include "service/plc_errors.h"
#include "watch/json_value.h"

// What a PLC says of itself, for people and for programs.

struct Fact {
    std::string name;
    std::string text; // a line; further ones stand below it
    std::string key;
    Json        value;
};

using Facts = std::vector<Fact>;

/// Model and version.
Facts nameFacts(const Controller &controller);

/// And the memory.
Facts factsOf(const Controller &controller);
Facts factsOf(const CycleTime &cycle);

/// Mode, and whether the program runs.
Facts modeFacts(const PlcStatus &status);

/// The errors that are there now, and the battery.
Facts errorFacts(const PlcStatus &status);
Facts factsOf(const ErrorLog &log);

/// `now` is this computer's time at the reply.
Facts clockFacts(const PlcTime &time, std::chrono::system_clock::time_point now);

/// "8 h 30 min behind this computer's"
std::string differenceText(const PlcTime &time, std::chrono::system_clock::time_point now);

/// True if a clock that shows `time` now may have been set to the time `sent`, whenever the order arrived.
bool hasTaken(const PlcTime &time, std::chrono::system_clock::time_point sent,
              std::chrono::system_clock::time_point now);

/// "model        CJ1M-CPU13", a line for each; or all of them as a JSON object in one line.
std::string factLines(const Facts &facts);
std::string factsJson(const Facts &facts);

#endif
