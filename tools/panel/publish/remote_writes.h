#ifndef PANEL_PUBLISH_REMOTE_WRITES_H
#define PANEL_PUBLISH_REMOTE_WRITES_H

#include "plant/plant.h"
#include "publish/topics.h"
#include "watch/json_value.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

// Writes that others order through the broker: only of tags whose access is given as rw. Each is answered once, with
// what became of it.

class RemoteWrites {
public:
    using Answer = std::function<void(const std::string &topic, const std::string &payload)>;

    RemoteWrites(Plant &plant, const Topics &topics, Answer answer)
        : plant_(plant), topics_(topics), answer_(std::move(answer)) {}

    /// Tags of the plant's PLC `plc`, which the topics call `name`.
    void allow(std::size_t plc, const std::string &name, const std::vector<fins::TagConfig> &tags);

    /// What is to be received.
    std::string filter() const { return topics_.prefix() + "/+/+/set"; }

    void receive(const std::string &topic, const std::string &payload, bool retained);

    bool isIdle() const { return open_.empty(); }

private:
    struct Target {
        std::size_t plc;
        std::string tag;
    };
    struct Order {
        std::string              topic; // of the answer
        Json                     id;    // what the answer is told by; null for none
        std::vector<fins::Value> values;
    };
    std::string refusal(const std::string &base, const std::string &payload, bool retained) const;
    static std::string read(const std::string &payload, Order &order);
    void write(const Target &target, const Order &order);
    void refuse(const Order &order, const std::string &why);
    void answer(const Order &order, const fins::Outcome &outcome);

    Plant         &plant_;
    const Topics  &topics_;
    const Answer   answer_;
    std::map<std::string, Target>            targets_; // by the topic of the value
    std::map<std::uint64_t, fins::Operation> open_;
    std::uint64_t                            last_ = 0;
};

#endif
