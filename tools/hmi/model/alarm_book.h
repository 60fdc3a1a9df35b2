#ifndef HMI_MODEL_ALARM_BOOK_H
#define HMI_MODEL_ALARM_BOOK_H

#include "screens/screen.h"

#include <fins_runtime/values.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

// The alarms of a project: which of them last, which an operator has seen. Nothing here knows a clock: delays follow the
// steady time of the calls, so that setting the time of day moves none; UTC is only noted.

struct AlarmTime {
    std::chrono::system_clock::time_point utc;
    std::chrono::steady_clock::time_point steady;
};

/// How an alarm stands. While its value is not known it stays as it was, and is never taken for gone.
struct AlarmStatus {
    enum class State {
        NORMAL, // its condition does not hold, and nobody has to see that it did
        ACTIVE, // it came, and lasts
        GONE    // it came and went, and waits to be acknowledged
    };
    using Time = std::chrono::system_clock::time_point;

    State    state          = State::NORMAL;
    bool     isAcknowledged = false; // of ACTIVE: an operator has seen it
    bool     isKnown        = false; // false: there is no good value to judge by; so it is until the first one
    Time     first;                  // it came for the first time since it was NORMAL
    Time     last;                   // it came or went last
    Time     gone;                   // of GONE
    unsigned comings        = 0;     // since it was NORMAL
};

struct AlarmEvent {
    enum class Kind {
        CAME,
        WENT,
        ACKNOWLEDGED,
        UNKNOWN,    // the value is not good any more
        KNOWN_AGAIN // it is good again; not told of the first good value
    };
    Kind        kind;
    std::size_t alarm;        // index of its rule
    AlarmStatus::State state; // after it; whether an alarm that is NORMAL can be judged is seldom worth a note
    std::chrono::system_clock::time_point utc;
};
using AlarmEvents = std::vector<AlarmEvent>;

class AlarmBook {
public:
    explicit AlarmBook(std::vector<AlarmRule> rules);

    /// A sample of value `index` of a tag, for all alarms of it. Good values count, and so do those with a write under
    /// way, since each is what a reply of this connection brought. NaN and what is no number are not known.
    AlarmEvents take(const std::string &tag, std::size_t index, fins::Quality quality, const fins::Value &value,
                     AlarmTime now);

    /// Lets the alarms come whose delay is over.
    AlarmEvents tick(AlarmTime now);

    /// When tick() has something to do, unless a sample comes first; none: never.
    std::optional<std::chrono::steady_clock::time_point> nextTick() const;

    /// An active alarm is then seen; one that has gone is NORMAL again. Of any other nothing changes.
    AlarmEvents acknowledge(std::size_t alarm, std::chrono::system_clock::time_point utc);
    AlarmEvents acknowledgeAll(std::chrono::system_clock::time_point utc);

    std::size_t        size() const { return alarms_.size(); }
    const AlarmRule   &rule(std::size_t alarm) const { return alarms_[alarm].rule; }
    const AlarmStatus &status(std::size_t alarm) const { return alarms_[alarm].status; }

    /// The alarms that are not NORMAL: those that nobody has seen first, of these the most urgent, of these the latest.
    std::vector<std::size_t> listed() const;

    /// How many there are that nobody has acknowledged.
    std::size_t unacknowledged() const;

    /// How many cannot be judged, those that are NORMAL included: each of them may have come.
    std::size_t unknown() const;

private:
    using SteadyTime = std::chrono::steady_clock::time_point;

    struct Alarm {
        AlarmRule     rule;
        AlarmStatus   status;
        bool          wasKnown = false;        // at any time
        bool          isPending = false;       // the condition holds, for less than the delay
        std::chrono::nanoseconds lasted{0};    // of it, up to `since`; unknown times do not count
        SteadyTime    since;                   // from when it goes on, if the value is known
        std::uint64_t change = 0;              // when it came or went last, counted over all alarms
    };

    static SteadyTime dueAt(const Alarm &alarm);
    void judge(std::size_t index, double value, AlarmTime now, AlarmEvents &events);
    void loseValue(std::size_t index, AlarmTime now, AlarmEvents &events);
    void comeIfDue(std::size_t index, AlarmTime now, AlarmEvents &events);
    void come(Alarm &alarm, AlarmTime now);
    void go(Alarm &alarm, AlarmTime now);
    void note(AlarmEvent::Kind kind, std::size_t index, std::chrono::system_clock::time_point utc,
              AlarmEvents &events) const;

    std::vector<Alarm> alarms_;
    std::map<std::pair<std::string, std::size_t>, std::vector<std::size_t>> ofValue_; // indices of alarms_
    std::uint64_t changes_ = 0;
};

#endif
