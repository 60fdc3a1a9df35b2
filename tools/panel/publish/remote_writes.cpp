#include "publish/remote_writes.h"

namespace {

constexpr std::size_t PAYLOAD_LIMIT = 4096;
constexpr std::size_t OPEN_LIMIT    = 100;
const std::string     SET           = "/set";

bool takeValue(const Json &json, std::vector<fins::Value> &values)
{
    if (json.is_boolean())
        values.emplace_back(json.get<bool>());
    else if (json.is_number_unsigned() && json.get<std::uint64_t>() > INT64_MAX)
        values.emplace_back(json.get<std::uint64_t>());
    else if (json.is_number_integer())
        values.emplace_back(json.get<std::int64_t>());
    else if (json.is_number())
        values.emplace_back(json.get<double>());
    else if (json.is_string())
        values.emplace_back(json.get<std::string>());
    else
        return false;
    return true;
}

} // namespace

void RemoteWrites::allow(std::size_t plc, const std::string &name, const std::vector<fins::TagConfig> &tags)
{
    for (const fins::TagConfig &tag : tags) {
        if (tag.remoteWrites)
            targets_[topics_.valueOf(name, tag.name)] = {plc, tag.name};
    }
}

// Why nothing of it is looked at; "" if it is.
std::string RemoteWrites::refusal(const std::string &base, const std::string &payload, bool retained) const
{
    if (retained)
        return "the message is retained, and would write again at each connection; publish it without retain";
    if (targets_.count(base) == 0)
        return "no tag of this topic has access = \"rw\" in the project";
    if (payload.size() > PAYLOAD_LIMIT)
        return "the payload is longer than " + std::to_string(PAYLOAD_LIMIT) + " bytes";
    if (open_.size() >= OPEN_LIMIT)
        return std::to_string(OPEN_LIMIT) + " writes are under way; wait for their results";
    return "";
}

// Returns what is wrong, or "".
std::string RemoteWrites::read(const std::string &payload, Order &order)
{
    static const char FORM[] = R"(write a value such as 70.5, or {"value":70.5,"id":"any"})";
    const std::size_t begin = payload.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos)
        return std::string("the payload is empty; ") + FORM;
    if (payload[begin] != '{') {
        order.values.emplace_back(payload);
        return "";
    }
    const Json json = Json::parse(payload, nullptr, false);
    if (json.is_discarded() || !json.is_object())
        return std::string("the payload begins like JSON and is none; ") + FORM;
    const Json id = json.value("id", Json());
    if (id.is_string() || id.is_number())
        order.id = id;
    const Json value = json.value("value", Json());
    bool isTaken = value.is_array() && !value.empty();
    if (value.is_array()) {
        for (const Json &one : value)
            isTaken = isTaken && takeValue(one, order.values);
    } else {
        isTaken = takeValue(value, order.values);
    }
    if (isTaken)
        return "";
    return std::string("the payload has no \"value\" that is a number, text, true, false or a list of them; ") + FORM;
}

void RemoteWrites::receive(const std::string &topic, const std::string &payload, bool retained)
{
    if (topic.size() <= SET.size() || topic.compare(topic.size() - SET.size(), SET.size(), SET) != 0)
        return;
    const std::string base = topic.substr(0, topic.size() - SET.size());
    Order order;
    order.topic = base + "/result";
    std::string why = refusal(base, payload, retained);
    if (why.empty())
        why = read(payload, order);
    if (why.empty())
        write(targets_.at(base), order);
    else
        refuse(order, why);
}

void RemoteWrites::write(const Target &target, const Order &order)
{
    const std::uint64_t number = ++last_;
    open_[number] = plant_.plc(target.plc).write({{target.tag, order.values}},
                                                 [this, number, order](const fins::Outcomes &outcomes) {
        answer(order, outcomes.front());
        open_.erase(std::uint64_t(number)); // with it goes what this call has captured
    });
}

void RemoteWrites::refuse(const Order &order, const std::string &why)
{
    fins::Outcome outcome;
    outcome.fate = fins::Fate::INVALID;
    outcome.text = why;
    answer(order, outcome);
}

void RemoteWrites::answer(const Order &order, const fins::Outcome &outcome)
{
    Json json;
    json["fate"] = fins::text(outcome.fate);
    json["text"] = outcome.text;
    if (!outcome.wanted.empty())
        json["wanted"] = outcome.wanted;
    if (!outcome.held.empty())
        json["held"] = outcome.held;
    if (!order.id.is_null())
        json["id"] = order.id;
    answer_(order.topic, jsonText(json));
}
