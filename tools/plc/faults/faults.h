#ifndef PLC_FAULTS_FAULTS_H
#define PLC_FAULTS_FAULTS_H

#include "faults/fault_rule.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

// Misbehaviour on purpose. Each fault has a name, for most a value, an aim, the probability with which it strikes and
// how often it does before it ends. Faults of one name with different aims stand side by side. Delay, jitter, bytewise
// and silence strike node address exchanges too, tcp-error nothing else; refuse strikes connections, all others only
// FINS frames, so that a link can come up before they are met.

namespace plc {

class Faults {
public:
    enum : std::size_t { RULES_MAX = 100 };

    explicit Faults(std::uint32_t seed) : random(seed) {}

    /// Sets the fault in `text`, NAME[=VALUE][:KEY=VALUE,...][@PROBABILITY][#TIMES], in the place of one that is aimed
    /// alike. Returns an empty text, or what is wrong; then nothing has changed.
    std::string set(const std::string &text);

    /// Ends the faults that `text` means: a name, with or without a value and an aim, or a number of the list. Returns
    /// an empty text, or what is wrong.
    std::string clear(const std::string &text);
    void clearAll() { rules.clear(); }

    /// The value of the first fault of the kind that strikes; none if none does. With its last time a fault ends.
    std::optional<unsigned> strike(FaultKind kind, const FaultTarget &target, Moment moment = Moment::REPLY);

    /// The values of all faults of the kind that strike, added up.
    unsigned strikeAll(FaultKind kind, const FaultTarget &target, Moment moment = Moment::REPLY);

    /// Milliseconds that delay and jitter make of it.
    unsigned delayMs(const FaultTarget &target, Moment moment);

    /// The end code that strikes: the first one that refuses, or END_NORMAL. Those that come besides are added to
    /// `flags`.
    unsigned strikeEndCode(const FaultTarget &target, Moment moment, unsigned *flags);

    /// Whether a fault of the kind strikes everything, every time, without end.
    bool isCertain(FaultKind kind) const;

    /// The faults that are set, as set() takes them, separated by spaces; "none" if there is none.
    std::string list() const;

    /// The same, each with its number and how often it has struck.
    std::string listWithCounts() const;

    /// Name, value and meaning of every fault and of every aim, one a line.
    static std::string help();

private:
    bool strikes(FaultRule &rule, const FaultTarget &target, Moment moment);
    void removeEnded();

    std::vector<FaultRule> rules; // in the order of their kinds, those of a kind as they were set
    std::mt19937           random;
};

} // namespace plc

#endif
