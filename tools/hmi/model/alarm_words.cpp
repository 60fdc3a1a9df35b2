#include "model/alarm_words.h"

std::string alarmWords(const AlarmStatus &status)
{
    using State = AlarmStatus::State;
    std::string words = status.state == State::ACTIVE ? "active" : status.state == State::GONE ? "gone" : "normal";
    if (!status.isKnown)
        words = "unknown, was " + words;
    if (status.state != State::NORMAL)
        words += status.isAcknowledged ? ", acknowledged" : ", not acknowledged";
    return words;
}

const char *text(AlarmEvent::Kind kind)
{
    switch (kind) {
    case AlarmEvent::Kind::CAME:         return "came";
    case AlarmEvent::Kind::WENT:         return "went";
    case AlarmEvent::Kind::ACKNOWLEDGED: return "acknowledged";
    case AlarmEvent::Kind::UNKNOWN:      return "unknown, since its value is not good";
    case AlarmEvent::Kind::KNOWN_AGAIN:  return "known again";
    }
    return "";
}
