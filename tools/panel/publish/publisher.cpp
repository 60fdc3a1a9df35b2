#include "publish/publisher.h"

#include "common/numbers.h"
#include "link/host_port.h"

#include <algorithm>

namespace {

constexpr Millis LAST_EVENTS{20};
constexpr Millis LAST_WAIT{2000}; // for the fate of writes, and for the broker's last acknowledgements

std::int64_t nowMs()
{
    return std::chrono::duration_cast<Millis>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::vector<std::string> namesOf(const std::vector<PlantPlc> &plcs, const std::string &given)
{
    std::vector<std::string> names;
    for (const PlantPlc &plc : plcs) {
        std::string host, port;
        parseHost(plc.config.host, host, port);
        names.push_back(!plc.config.name.empty() ? plc.config.name : given.empty() ? host : given);
    }
    return names;
}

} // namespace

Publisher::Publisher(const std::vector<PlantPlc> &plcs, const PublisherOptions &options, Messages &messages)
    : options_(options), messages_(messages), topics_(options.prefix), plcs_(plcs), names_(namesOf(plcs, options.name)),
      valueTopics_(plcs.size()),
      spool_(options.spoolFile, options.limits, [&messages](const std::string &line) { messages.say(line); }),
      broker_(brokerOptions(options, topics_, spool_), brokerCalls()),
      outbox_(spool_, options.outbox,
              [this](const std::string &topic, const std::string &payload, bool retain) {
                  return broker_.publish(topic, payload, retain);
              },
              [this](const std::string &line) { messages_.say(line); }),
      plant_(plcs),
      writes_(plant_, topics_, [this](const std::string &topic, const std::string &payload) {
          outbox_.add({topic, payload, nowMs(), false});
      })
{
    outbox_.announce(topics_.state(), "online");
    plant_.onMessage([this](const std::string &line) { messages_.say(line); });
    plant_.onSamples([this](std::size_t plc, const fins::Samples &samples) { take(plc, samples); });
    plant_.onState([this](std::size_t plc, const fins::State &state) {
        outbox_.announce(topics_.stateOf(names_[plc]), statePayload(state));
    });
    for (std::size_t plc = 0; plc < plcs.size(); ++plc)
        writes_.allow(plc, names_[plc], plcs[plc].config.tags);
    for (const PlantPlc &plc : plcs_) {
        for (const fins::TagConfig &tag : plc.config.tags) {
            if (options_.discovery)
                tags_[tag.name] = &tag;
        }
    }
}

BrokerOptions Publisher::brokerOptions(const PublisherOptions &options, const Topics &topics, const Spool &spool)
{
    BrokerOptions broker = options.broker;
    broker.willTopic = topics.state();
    broker.will      = "offline";
    if (broker.clientId.empty())
        broker.clientId = spool.clientId();
    return broker;
}

BrokerCalls Publisher::brokerCalls()
{
    BrokerCalls calls;
    calls.say       = [this](const std::string &line) { messages_.sayCourse(line); };
    calls.connected = [this] {
        outbox_.onConnected(Clock::now());
        if (options_.allowWrites)
            broker_.subscribe(writes_.filter());
    };
    calls.lost         = [this] { outbox_.onLost(); };
    calls.acknowledged = [this](int number) { outbox_.onAcknowledged(number); };
    calls.received     = [this](const std::string &topic, const std::string &payload, bool retained) {
        writes_.receive(topic, payload, retained);
    };
    return calls;
}

// ---- What the PLCs tell ------------------------------------------------------------------------------------------

const std::string &Publisher::topicOf(std::size_t plc, const fins::Sample &sample)
{
    std::vector<std::string> &known = valueTopics_[plc];
    if (known.size() <= sample.index)
        known.resize(sample.index + 1);
    std::string &topic = known[sample.index];
    if (topic.empty()) {
        topic = topics_.valueOf(names_[plc], sample.name);
        discover(plc, sample.name);
    }
    return topic;
}

// Items that are no tags are nobody's to be found.
void Publisher::discover(std::size_t plc, const std::string &name)
{
    const auto tag = tags_.find(name.substr(0, name.find('[')));
    if (tag == tags_.end())
        return;
    const Discovery found = discoveryOf(*options_.discovery, topics_, names_[plc], name, *tag->second,
                                        options_.allowWrites && tag->second->remoteWrites);
    outbox_.announce(found.topic, found.payload);
}

void Publisher::take(std::size_t plc, const fins::Samples &samples)
{
    const std::int64_t now = nowMs();
    for (const fins::Sample &sample : samples) {
        const bool isFirst = valueTopics_[plc].size() <= sample.index || valueTopics_[plc][sample.index].empty();
        const bool wasUnknown = isFirst && sample.dropped > 0; // the first one of all told that there was no value yet
        missed_ += sample.dropped - (wasUnknown ? 1 : 0);
        outbox_.add({topicOf(plc, sample), samplePayload(sample), now});
    }
}

// ---- The run -----------------------------------------------------------------------------------------------------

void Publisher::step()
{
    std::vector<pollfd> polled;
    broker_.addDescriptors(polled);
    const TimePoint now = Clock::now();
    plant_.step(std::min({outbox_.due(now), broker_.due(), now + std::chrono::seconds(60)}), polled);
    broker_.serve(Clock::now());
    outbox_.work(Clock::now(), std::chrono::system_clock::now());
}

void Publisher::run(const StopSignal &stop)
{
    while (!stop.isStopped())
        step();
    end();
}

void Publisher::drain(Millis most, const std::function<bool()> &isDone)
{
    const TimePoint until = Clock::now() + most;
    while (!isDone() && Clock::now() < until) {
        std::vector<pollfd> polled;
        broker_.addDescriptors(polled);
        poll(polled.data(), polled.size(), 20);
        for (std::size_t plc = 0; plc < plant_.size(); ++plc)
            plant_.plc(plc).dispatch();
        broker_.serve(Clock::now());
        outbox_.work(Clock::now(), std::chrono::system_clock::now());
    }
}

// Each write is answered, and the broker told that the program goes. What it does not acknowledge in time waits in the
// spool.
void Publisher::end()
{
    drain(LAST_WAIT, [this] { return writes_.isIdle(); });
    for (std::size_t plc = 0; plc < plant_.size(); ++plc) {
        plant_.plc(plc).close();
        while (plant_.plc(plc).dispatch(LAST_EVENTS)) {} // no value stays good
    }
    drain(LAST_WAIT, [this] { return outbox_.isEmpty() || !broker_.isConnected(); });
    outbox_.stopHanding();
    outbox_.announce(topics_.state(), "offline");
    drain(LAST_WAIT, [this] { return outbox_.isIdle() || !broker_.isConnected(); });
    broker_.disconnect();
    outbox_.finish(Clock::now(), std::chrono::system_clock::now());
    if (missed_ > 0)
        messages_.say(counted(missed_, "value") + " passed over because the program was too busy to take them");
    messages_.sayCourse(outbox_.summary());
}
