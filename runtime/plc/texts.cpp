#include "fins_runtime/values.h"

#include <algorithm>

// What the public types are called, for people.

namespace fins {

static std::string firstOf(const std::vector<Problem> &problems)
{
    if (problems.empty())
        return "the configuration cannot be used";
    const Problem &first = problems.front();
    std::string place = first.file;
    for (const int number : {first.line, first.column}) {
        if (!place.empty() && number > 0)
            place += ":" + std::to_string(number);
    }
    const std::string more = problems.size() > 1 ? " (and " + std::to_string(problems.size() - 1) + " more)" : "";
    return (place.empty() ? "" : place + ": ") + first.text + more;
}

ConfigError::ConfigError(std::vector<Problem> problems)
    : std::runtime_error(firstOf(problems)), problems_(std::move(problems))
{
}

bool isDone(const Outcomes &outcomes)
{
    return std::all_of(outcomes.begin(), outcomes.end(), [](const Outcome &outcome) {
        return outcome.fate == Fate::ACCEPTED || outcome.fate == Fate::VERIFIED;
    });
}

const char *text(Quality quality)
{
    switch (quality) {
    case Quality::GOOD:          return "good";
    case Quality::WRITE_PENDING: return "write pending";
    case Quality::LAST_KNOWN:    return "last known";
    case Quality::NOT_CONNECTED: return "not connected";
    case Quality::REFUSED:       return "refused";
    }
    return "";
}

const char *text(Fate fate)
{
    switch (fate) {
    case Fate::ACCEPTED:    return "accepted";
    case Fate::VERIFIED:    return "verified";
    case Fate::DIFFERS:     return "differs";
    case Fate::REFUSED:     return "refused";
    case Fate::UNCONFIRMED: return "unconfirmed";
    case Fate::NOT_SENT:    return "not sent";
    case Fate::INVALID:     return "invalid";
    }
    return "";
}

const char *text(Topic topic)
{
    switch (topic) {
    case Topic::CONTROLLER: return "controller";
    case Topic::STATUS:     return "status";
    case Topic::CYCLE_TIME: return "cycle time";
    case Topic::CLOCK:      return "clock";
    case Topic::ERROR_LOG:  return "error log";
    }
    return "";
}

const char *text(Phase phase)
{
    switch (phase) {
    case Phase::WAITING:    return "waiting";
    case Phase::CONNECTING: return "connecting";
    case Phase::HANDSHAKE:  return "handshake";
    case Phase::PROVING:    return "proving";
    case Phase::ONLINE:     return "online";
    case Phase::SILENT:     return "silent";
    case Phase::CLOSED:     return "closed";
    }
    return "";
}

} // namespace fins
