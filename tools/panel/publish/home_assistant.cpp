#include "publish/home_assistant.h"

#include "screens/screen.h"
#include "watch/json_value.h"

#include <cmath>
#include <cstdio>

namespace {

// Letters and digits as they are, anything else so that no two names become the same.
std::string identifier(const std::string &text)
{
    std::string made;
    for (const char c : text) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
        char code[4];
        std::snprintf(code, sizeof code, "_%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        made += isPlain ? std::string(1, c) : code;
    }
    return made;
}

Json availability(const std::string &topic, const std::string &valueTemplate)
{
    Json json;
    json["topic"] = topic;
    if (!valueTemplate.empty())
        json["value_template"] = valueTemplate;
    return json;
}

const char *componentOf(const fins::TagConfig &tag, ValueKind kind, bool writable)
{
    if (kind == ValueKind::BIT)
        return writable ? "switch" : "binary_sensor";
    return writable && kind == ValueKind::NUMBER && tag.minimum && tag.maximum ? "number" : "sensor";
}

void addWriting(Json &json, const std::string &component, const fins::TagConfig &tag, const std::string &topic)
{
    if (component == "switch") {
        json["command_topic"] = topic + "/set";
        json["payload_on"]    = "1";
        json["payload_off"]   = "0";
        json["state_on"]      = "ON";
        json["state_off"]     = "OFF";
    } else if (component == "number") {
        json["command_topic"] = topic + "/set";
        json["min"]  = *tag.minimum;
        json["max"]  = *tag.maximum;
        json["step"] = tag.decimals > 0 ? std::pow(10.0, -tag.decimals) : tag.decimals == 0 ? 1.0 : std::abs(tag.scale);
        json["mode"] = "box";
    }
}

} // namespace

Discovery discoveryOf(const std::string &discoveryPrefix, const Topics &topics, const std::string &plc,
                      const std::string &name, const fins::TagConfig &tag, bool writable)
{
    const ValueKind kind        = kindOf(tag);
    const std::string component = componentOf(tag, kind, writable && name == tag.name);
    const std::string topic     = topics.valueOf(plc, name);
    const std::string id        = identifier(topic);
    const std::string plcId     = identifier(topics.prefix() + "/" + plc);
    Json json;
    json["name"]           = name;
    json["unique_id"]      = id;
    json["state_topic"]    = topic;
    json["value_template"] = kind == ValueKind::BIT ? "{{ 'ON' if value_json.value else 'OFF' }}"
                                                    : "{{ value_json.value }}";
    if (!tag.unit.empty())
        json["unit_of_measurement"] = tag.unit;
    addWriting(json, component, tag, topic);
    json["availability_mode"] = "all";
    json["availability"] = {
        availability(topics.state(), ""),
        availability(topics.stateOf(plc), "{{ value_json.state }}"),
        availability(topic, "{{ 'online' if value_json.quality in ['good', 'write pending'] else 'offline' }}")};
    json["device"] = {{"identifiers", {plcId}}, {"name", plc}};
    return {discoveryPrefix + "/" + component + "/" + plcId + "/" + id + "/config", jsonText(json)};
}
