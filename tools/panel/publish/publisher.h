#ifndef PANEL_PUBLISH_PUBLISHER_H
#define PANEL_PUBLISH_PUBLISHER_H

#include "base/messages.h"
#include "base/stop_signal.h"
#include "plant/plant.h"
#include "publish/broker.h"
#include "publish/home_assistant.h"
#include "publish/outbox.h"
#include "publish/remote_writes.h"

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

// The values of a plant on their way to a broker: what the PLCs tell goes into the outbox, what the broker orders to
// the PLCs.

struct PublisherOptions {
    BrokerOptions broker;
    OutboxOptions outbox;
    std::string   prefix = "fins";
    std::string   name;        // of a PLC that has none; its host by default
    std::string   spoolFile;
    Spool::Limits limits;
    bool          allowWrites = false;
    std::optional<std::string> discovery; // prefix of Home Assistant's topics
};

class Publisher {
public:
    /// Throws UsageError, and what Plant throws.
    Publisher(const std::vector<PlantPlc> &plcs, const PublisherOptions &options, Messages &messages);

    /// Runs until `stop`, and ends in order.
    void run(const StopSignal &stop);

private:
    static BrokerOptions brokerOptions(const PublisherOptions &options, const Topics &topics, const Spool &spool);
    BrokerCalls brokerCalls();
    void take(std::size_t plc, const fins::Samples &samples);
    const std::string &topicOf(std::size_t plc, const fins::Sample &sample);
    void discover(std::size_t plc, const std::string &name);
    void step();
    void drain(Millis most, const std::function<bool()> &isDone);
    void end();

    const PublisherOptions                options_;
    Messages                             &messages_;
    const Topics                          topics_;
    const std::vector<PlantPlc>           plcs_;
    std::vector<std::string>              names_;       // of the PLCs in topics
    std::unordered_map<std::string, const fins::TagConfig *> tags_; // by name, where they are to be discovered
    std::vector<std::vector<std::string>> valueTopics_; // by PLC and index of the value
    std::uint64_t                         missed_ = 0;  // samples that a busy moment has left out
    Spool                                 spool_;
    Broker                                broker_;
    Outbox                                outbox_;
    Plant                                 plant_;
    RemoteWrites                          writes_;
};

#endif
