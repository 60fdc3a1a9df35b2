#include "publish/topics.h"

#include "common/usage_error.h"
#include "watch/json_value.h"

#include <cmath>
#include <cstdio>

#include <unistr.h>

namespace {

constexpr std::int64_t LATE_MS = 5000;

bool isUtf8(const std::string &text)
{
    return u8_check(reinterpret_cast<const std::uint8_t *>(text.data()), text.size()) == nullptr;
}

// A number that JSON cannot have is told as text.
Json jsonOf(const fins::Sample &sample)
{
    struct Visitor {
        const fins::Sample &sample;
        Json operator()(std::monostate) const { return nullptr; }
        Json operator()(double number) const { return std::isfinite(number) ? Json(number) : Json(sample.text); }
        Json operator()(bool value) const { return value; }
        Json operator()(std::int64_t value) const { return value; }
        Json operator()(std::uint64_t value) const { return value; }
        Json operator()(const std::string &value) const { return value; }
    };
    return std::visit(Visitor{sample}, sample.value);
}

} // namespace

Topics::Topics(const std::string &prefix) : prefix_(prefix)
{
    const bool isForeign = prefix.find_first_of(std::string("+#\0", 3)) != std::string::npos || !isUtf8(prefix);
    if (prefix.empty() || prefix.front() == '$' || isForeign || prefix.size() > 1000)
        throw UsageError("'" + prefix + "' cannot begin a topic; give --prefix a text without + and #, such as fins or "
                         "plant/hall1");
}

std::string Topics::topicLevel(const std::string &name)
{
    const bool isText = isUtf8(name);
    std::string level;
    for (const char c : name) {
        const auto byte     = static_cast<unsigned char>(c);
        const bool isPlain  = byte >= 0x20 && byte != 0x7F && (isText || byte < 0x80);
        const bool isSyntax = c == '/' || c == '+' || c == '#' || c == '%';
        char text[4];
        std::snprintf(text, sizeof text, "%%%02X", static_cast<unsigned>(byte));
        level += isPlain && !isSyntax ? std::string(1, c) : text;
    }
    return level;
}

std::string Topics::valueOf(const std::string &plc, const std::string &name) const
{
    const bool isPrefixed  = name.compare(0, plc.size() + 1, plc + ".") == 0;
    const std::string base = isPrefixed ? name.substr(plc.size() + 1) : name;
    return prefix_ + "/" + topicLevel(plc) + "/" + (base == "state" ? "%73tate" : topicLevel(base));
}

std::string samplePayload(const fins::Sample &sample)
{
    Json json;
    json["value"] = jsonOf(sample);
    const Json &value = json["value"];
    const std::string shown = value.is_string() ? value.get<std::string>() : value.is_null() ? "" : jsonText(value);
    if (sample.text != shown)
        json["text"] = sample.text;
    if (!sample.unit.empty())
        json["unit"] = sample.unit;
    json["quality"] = fins::text(sample.quality);
    json["time"]    = sample.utc == SystemTime() ? Json(nullptr) : Json(timeText(sample.utc));
    return jsonText(json);
}

std::string statePayload(const fins::State &state)
{
    Json json;
    json["state"] = fins::text(state.phase);
    json["time"]  = timeText(state.since);
    if (!state.reason.empty())
        json["reason"] = state.reason;
    return jsonText(json);
}

std::string payloadOf(const BrokerMessage &message, SystemTime now)
{
    const auto nowMs       = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    const std::int64_t age = nowMs - message.at;
    std::string more;
    if (age >= LATE_MS)
        more += ",\"age\":" + std::to_string(age / 1000);
    if (message.repeated)
        more += ",\"repeated\":true";
    const bool isObject = message.payload.size() > 2 && message.payload.back() == '}';
    return isObject ? message.payload.substr(0, message.payload.size() - 1) + more + "}" : message.payload;
}
