#ifndef PANEL_PUBLISH_TOPICS_H
#define PANEL_PUBLISH_TOPICS_H

#include "common/time_text.h"
#include "fins_runtime/values.h"
#include "publish/broker_message.h"

#include <string>

// Under which topics the broker finds what is known of a plant, and what it is told there:
//
//   PREFIX/state              "online", or "offline" when the program has gone
//   PREFIX/PLC/state          {"state":"online","time":...}, with "reason" where there is none
//   PREFIX/PLC/TAG            {"value":...,"text":...,"unit":...,"quality":"good","time":...}
//   PREFIX/PLC/TAG/set        what is to be written
//   PREFIX/PLC/TAG/result     and what became of it

class Topics {
public:
    /// Throws UsageError for a prefix that topics cannot have.
    explicit Topics(const std::string &prefix);

    const std::string &prefix() const { return prefix_; }
    std::string state() const { return prefix_ + "/state"; }
    std::string stateOf(const std::string &plc) const { return prefix_ + "/" + topicLevel(plc) + "/state"; }

    /// Of a tag or item, whose name begins with that of its PLC where there are several.
    std::string valueOf(const std::string &plc, const std::string &name) const;

    /// The name as a level of a topic. What a level cannot have, and "state" as the name of a tag, is written as %XX.
    static std::string topicLevel(const std::string &name);

private:
    std::string prefix_;
};

/// What a subscriber is told of a sample. `text` is there where it is not what stands at `value`.
std::string samplePayload(const fins::Sample &sample);

std::string statePayload(const fins::State &state);

/// What is handed over: the message's payload, with "age" in seconds if it comes late, and "repeated" if it may have
/// come before.
std::string payloadOf(const BrokerMessage &message, SystemTime now);

#endif
