#include "model/journal.h"

#include "common/csv_text.h"
#include "common/time_text.h"

#include <charconv>
#include <cmath>
#include <utility>

const char *text(JournalEvent::Kind kind)
{
    switch (kind) {
    case JournalEvent::Kind::WRITE:   return "write";
    case JournalEvent::Kind::ALARM:   return "alarm";
    case JournalEvent::Kind::LINK:    return "link";
    case JournalEvent::Kind::MESSAGE: return "message";
    }
    return "";
}

// A number stays one: the minus of -5 makes it no formula.
static std::string valueCell(const std::string &text)
{
    double number = 0;
    const char *end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    const bool isNumber = result.ec == std::errc() && result.ptr == end && std::isfinite(number);
    return isNumber ? csvField(text) : csvText(text);
}

void Journal::add(JournalEvent event)
{
    events_.push_back(std::move(event));
    if (events_.size() <= KEPT)
        return;
    events_.pop_front();
    ++dropped_;
}

std::string Journal::csv() const
{
    std::string lines = "time,kind,plc,tag,old,new,words\r\n";
    for (const JournalEvent &event : events_)
        lines += timeText(event.utc) + "," + text(event.kind) + "," + csvText(event.plc) + "," + csvText(event.tag) + ","
                 + valueCell(event.oldText) + "," + valueCell(event.newText) + "," + csvText(event.words) + "\r\n";
    return lines;
}
