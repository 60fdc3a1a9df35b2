#include "watch/watch_lines.h"

#include "common/csv_text.h"
#include "watch/json_value.h"

static const char *eventName(WatchEvent::Kind kind)
{
    switch (kind) {
    case WatchEvent::FIRST:   return "first";
    case WatchEvent::CHANGE:  return "change";
    case WatchEvent::QUALITY: return "quality";
    }
    return "";
}

static std::string jsonLine(const WatchEvent &event, SystemTime time)
{
    const WatchedValue &value = event.value;
    Json line;
    line["time"]    = timeText(time);
    line["tag"]     = value.name;
    line["item"]    = driverText(value.item);
    line["event"]   = eventName(event.kind);
    line["old"]     = jsonValue(event.old, value.format);
    line["value"]   = jsonValue(value.text, value.format);
    line["unit"]    = value.format.unit;
    line["quality"] = fins::text(value.quality);
    return jsonText(line);
}

std::string csvHead()
{
    return "time,tag,item,event,old,value,unit,quality";
}

static std::string csvLine(const WatchEvent &event, SystemTime time)
{
    const WatchedValue &value = event.value;
    const auto cell = [&](const std::string &text) {
        return value.format.type == DataType::STRING ? csvText(text) : csvField(text);
    };
    return timeText(time) + "," + csvText(value.name) + "," + driverText(value.item) + "," + eventName(event.kind) + ","
           + cell(event.old) + "," + cell(value.text) + "," + csvText(value.format.unit) + ","
           + fins::text(value.quality);
}

std::string eventLine(LineFormat format, const WatchEvent &event, SystemTime time)
{
    if (format == LineFormat::JSON)
        return jsonLine(event, time);
    if (format == LineFormat::CSV)
        return csvLine(event, time);
    if (event.kind == WatchEvent::QUALITY)
        return "";
    const std::string old = event.kind == WatchEvent::FIRST ? "-" : event.old;
    return timeText(time) + " " + event.value.name + " " + old + " " + event.value.text;
}
