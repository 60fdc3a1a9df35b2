#ifndef FINS_RUNTIME_VALUES_H
#define FINS_RUNTIME_VALUES_H

#include "config.h"

#include <cstdint>
#include <variant>

// What the library tells of a PLC: samples of its values, the fate of each write, the state of the link. Each enumerator
// has a text for people, by which all programs speak alike: text(Quality::LAST_KNOWN) is "last known".

namespace fins {

/// A value. An integer is an int64 where it fits, else a uint64; a number with scale, offset or a floating-point type
/// is a double. monostate: none yet, or words that are no number of their data type.
using Value = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string>;

enum class Quality {
    GOOD,          // a reply of this connection brought it
    WRITE_PENDING, // a write of it is not yet confirmed
    LAST_KNOWN,    // as it was before the link was lost or a reply was missing
    NOT_CONNECTED, // never received
    REFUSED        // the PLC refuses to read it
};

/// A value at a time. Values that are not GOOD keep the last that was received, and its times.
struct Sample {
    std::size_t   index = 0;   // from 0, in the order of the call; an array has one for each of its values
    std::string   name;        // of the tag or item; of a tag's several values NAME[0], of an item's their own: DM:1/s16
    Value         value;
    std::string   text;        // as people read it, without the unit; "" until it is received
    std::string   unit;
    Quality       quality = Quality::NOT_CONNECTED;
    std::chrono::system_clock::time_point utc;    // of the reply that brought the value; the epoch until then
    std::chrono::steady_clock::time_point steady; // the same on the steady clock, for ages
    std::uint64_t dropped = 0; // samples of this value that were left out before this one, since dispatch() came too late
};
using Samples = std::vector<Sample>;

enum class Fate {
    ACCEPTED,    // the PLC acknowledged the write; it was not to be read back
    VERIFIED,    // the PLC holds the value: it was read back after the write
    DIFFERS,     // acknowledged, but the PLC holds another value
    REFUSED,     // by the PLC; nothing was changed but what `text` names
    UNCONFIRMED, // sent, and no reply came: the PLC may hold the old value or the new one, or take the new one yet
    NOT_SENT,    // and never will be
    INVALID      // no such item, or a value that it cannot have, here or elsewhere in the call: nothing of it was sent
};

/// What became of one value of a write or of a recipe.
struct Outcome {
    std::string   name;        // of the tag or item
    Fate          fate = Fate::NOT_SENT;
    std::string   wanted;      // as people read it, with the unit
    std::string   held;        // what the PLC holds, where it was read back; else ""
    std::uint16_t endCode = 0; // of Fate::REFUSED: FINS main and sub response code; else 0
    std::string   text;        // one line for people: "done: Level = 5 %", "refused: Level: 2103 (...)"
};
using Outcomes = std::vector<Outcome>;

/// True if every value is done: ACCEPTED or VERIFIED.
FINS_RUNTIME_API bool isDone(const Outcomes &outcomes);

/// What became of reading a recipe.
struct RecipeValues {
    enum class End { DONE, REFUSED, NO_ANSWER };
    End     end = End::NO_ANSWER;  // REFUSED: some of the values; NO_ANSWER: none of them, in time
    Samples values;                // in the order of the recipe; Quality::REFUSED or NOT_CONNECTED where none came
};

/// What a PLC can be asked about itself.
enum class Topic { CONTROLLER, STATUS, CYCLE_TIME, CLOCK, ERROR_LOG };

/// What it told, by topic; the rest is as below.
struct PlcFacts {
    std::vector<Topic>       told;           // which of the topics, in the order in which they were asked
    std::string              model, version; // CONTROLLER
    std::string              mode;           // STATUS: "RUN", "MONITOR", "PROGRAM", or "mode 07" for one that is not known
    std::vector<std::string> errors;         // STATUS: those that are there now, in words, the fatal ones first
    double averageMs = 0, longestMs = 0, shortestMs = 0; // CYCLE_TIME
    std::string              clock;          // CLOCK: "2026-03-01 08:15:30", in no zone
    std::vector<std::string> log;            // ERROR_LOG: "2026-03-01 08:15:30  00F7 0000 (battery)", the oldest first
    std::vector<std::string> problems;       // why a topic was not told, a line for each
};

enum class Phase {
    WAITING,    // no connection; the next attempt is due at `nextAttempt`
    CONNECTING, // an attempt is being made
    HANDSHAKE,  // connected; the node addresses are awaited
    PROVING,    // node addresses known; the first reply to a read is awaited, before which nothing is written
    ONLINE,     // reads are answered
    SILENT,     // as ONLINE, but the latest request was not answered
    CLOSED      // by Plc::close()
};

struct State {
    Phase       phase = Phase::WAITING;
    std::chrono::system_clock::time_point since;       // of this phase
    std::chrono::system_clock::time_point nextAttempt; // to connect; while WAITING
    int         ownNode = 0;  // FINS node address of this program, as of the latest handshake; 0: none yet
    int         plcNode = 0;
    std::string reason;       // why there is no link, in words; "" while there is one or none was tried yet
    std::vector<std::string> remedies; // what to try, the likeliest first
    std::uint64_t connections = 0; // made so far
    std::uint64_t losses = 0;      // links lost and attempts to connect that failed
};

FINS_RUNTIME_API const char *text(Quality quality);
FINS_RUNTIME_API const char *text(Fate fate);
FINS_RUNTIME_API const char *text(Topic topic);
FINS_RUNTIME_API const char *text(Phase phase);

} // namespace fins

#endif
