#ifndef HMI_MODEL_LIVE_VALUE_H
#define HMI_MODEL_LIVE_VALUE_H

#include "screens/screen.h"

#include <fins_runtime/values.h>

#include <cstdint>
#include <optional>
#include <string>

class Station;

/// The value as a number; NaN if it is none, or was never received. A bit is 0 or 1.
double numberOf(const fins::Value &value);

/// A reply of this connection brought the value.
constexpr bool isGood(fins::Quality quality)
{
    return quality == fins::Quality::GOOD || quality == fins::Quality::WRITE_PENDING;
}

/// One value of a PLC as the panel knows it: the latest sample, and what became of the latest write.
struct LiveValue {
    Station      *station = nullptr;
    TagValue      tag;             // or an item in place of a tag
    std::string   label;           // for people: the tag's comment, or its name
    ValueKind     kind = ValueKind::NUMBER;
    std::optional<double> minimum; // as it is shown
    std::optional<double> maximum;
    int           decimals = -1;   // digits behind the point; -1: as many as are needed
    std::optional<std::size_t> trend; // its place in the trends; none of a text
    std::string   lock;            // why it can never be written, in words; "" if it can
    fins::Sample  sample;
    int           alarmPriority = 0; // of its most urgent alarm that is active or not acknowledged, 1 to 3; 0: none
    std::uint64_t revision = 0;    // grows with all that changes here

    /// When a value that was good was last known to be so.
    std::chrono::steady_clock::time_point goodUntil;

    int           writesUnderWay = 0;
    std::optional<fins::Outcome> fate; // of the latest write that has ended
    std::chrono::steady_clock::time_point fateTime;

    double number() const { return numberOf(sample.value); }
    bool isGood() const { return ::isGood(sample.quality); }
};

/// What people read: the text with its unit, and a dash where none was ever received.
std::string shownText(const fins::Sample &sample);

/// "45.2 %, last known, changed 12 s ago": all that is known of the value, in words.
std::string spokenText(const LiveValue &value, std::chrono::steady_clock::time_point now);

/// Milliseconds of the steady clock, as trends have them.
inline std::int64_t trendTimeOf(std::chrono::steady_clock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

#endif
