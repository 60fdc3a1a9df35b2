#ifndef PLC_FAULTS_FAULT_RULE_H
#define PLC_FAULTS_FAULT_RULE_H

#include "faults/fault_aim.h"
#include "faults/fault_kinds.h"

#include <cstdint>
#include <optional>

// One fault that is set, and how people write it: NAME[=VALUE][:KEY=VALUE,...][@PROBABILITY][#TIMES].

namespace plc {

struct FaultRule {
    FaultKind     kind = FAULT_DELAY;
    unsigned      value = 0;
    FaultAim      aim;
    unsigned      after = 0;       // hits that are let through first
    Moment        moment = Moment::REPLY;
    double        probability = 1;
    unsigned      times = 0;       // that it still strikes; 0: without end
    unsigned      passed = 0;      // hits that were let through so far
    std::uint64_t struck = 0;

    /// Whether the other one is aimed alike, so that one of the two is enough.
    bool isAimedLike(const FaultRule &other) const;

    bool isAimed() const;

    std::string text() const;
};

/// Reads the text of a fault. Returns an empty text, or what is wrong; then `rule` is not to be used.
std::string parseFaultRule(const std::string &text, FaultRule *rule);

/// Which faults a text means that ends some: those with its name, and if it has them, its value and its aim.
struct FaultChoice {
    FaultRule rule;
    bool      hasValue = false;
    bool      hasAim = false;

    bool means(const FaultRule &set) const;
};

/// Reads such a text. Returns an empty text, or what is wrong.
std::string parseFaultChoice(const std::string &text, FaultChoice *choice);

/// Every key of an aim, one a line.
std::string faultAimHelp();

} // namespace plc

#endif
