#include "model/alarm_book.h"

#include "model/live_value.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace {

using State = AlarmStatus::State;
using Kind  = AlarmEvent::Kind;

bool comesAt(const AlarmRule &rule, double value)
{
    switch (rule.condition) {
    case AlarmRule::Condition::HIGH:  return value >= rule.limit;
    case AlarmRule::Condition::LOW:   return value <= rule.limit;
    case AlarmRule::Condition::VALUE: return value == rule.limit;
    }
    return false;
}

bool goesAt(const AlarmRule &rule, double value)
{
    switch (rule.condition) {
    case AlarmRule::Condition::HIGH:  return value < rule.limit - rule.hysteresis;
    case AlarmRule::Condition::LOW:   return value > rule.limit + rule.hysteresis;
    case AlarmRule::Condition::VALUE: return value != rule.limit;
    }
    return true;
}

} // namespace

AlarmBook::AlarmBook(std::vector<AlarmRule> rules)
{
    for (AlarmRule &rule : rules) {
        ofValue_[{rule.value.tag, rule.value.index}].push_back(alarms_.size());
        Alarm alarm;
        alarm.rule = std::move(rule);
        alarms_.push_back(std::move(alarm));
    }
}

AlarmEvents AlarmBook::take(const std::string &tag, std::size_t index, fins::Quality quality, const fins::Value &value,
                            AlarmTime now)
{
    AlarmEvents events;
    const auto found = ofValue_.find({tag, index});
    if (found == ofValue_.end())
        return events;
    const double number = isGood(quality) ? numberOf(value) : std::numeric_limits<double>::quiet_NaN();
    for (const std::size_t alarm : found->second) {
        comeIfDue(alarm, now, events); // until now the condition has lasted, whether tick() was called or not
        if (std::isnan(number))
            loseValue(alarm, now, events);
        else
            judge(alarm, number, now, events);
    }
    return events;
}

AlarmEvents AlarmBook::tick(AlarmTime now)
{
    AlarmEvents events;
    for (std::size_t i = 0; i < alarms_.size(); ++i)
        comeIfDue(i, now, events);
    return events;
}

std::optional<std::chrono::steady_clock::time_point> AlarmBook::nextTick() const
{
    std::optional<SteadyTime> next;
    for (const Alarm &alarm : alarms_) {
        if (alarm.isPending && alarm.status.isKnown)
            next = next ? std::min(*next, dueAt(alarm)) : dueAt(alarm);
    }
    return next;
}

AlarmEvents AlarmBook::acknowledge(std::size_t alarm, std::chrono::system_clock::time_point utc)
{
    AlarmEvents events;
    AlarmStatus &status = alarms_[alarm].status;
    if (status.state == State::NORMAL || status.isAcknowledged)
        return events;
    if (status.state == State::GONE)
        status.state = State::NORMAL;
    else
        status.isAcknowledged = true;
    note(Kind::ACKNOWLEDGED, alarm, utc, events);
    return events;
}

AlarmEvents AlarmBook::acknowledgeAll(std::chrono::system_clock::time_point utc)
{
    AlarmEvents events;
    for (std::size_t i = 0; i < alarms_.size(); ++i) {
        const AlarmEvents one = acknowledge(i, utc);
        events.insert(events.end(), one.begin(), one.end());
    }
    return events;
}

std::vector<std::size_t> AlarmBook::listed() const
{
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; i < alarms_.size(); ++i) {
        if (alarms_[i].status.state != State::NORMAL)
            indices.push_back(i);
    }
    std::sort(indices.begin(), indices.end(), [this](std::size_t left, std::size_t right) {
        const Alarm &a = alarms_[left];
        const Alarm &b = alarms_[right];
        return std::tie(a.status.isAcknowledged, a.rule.priority, b.change)
               < std::tie(b.status.isAcknowledged, b.rule.priority, a.change);
    });
    return indices;
}

std::size_t AlarmBook::unacknowledged() const
{
    return static_cast<std::size_t>(std::count_if(alarms_.begin(), alarms_.end(), [](const Alarm &alarm) {
        return alarm.status.state != State::NORMAL && !alarm.status.isAcknowledged;
    }));
}

std::size_t AlarmBook::unknown() const
{
    return static_cast<std::size_t>(std::count_if(alarms_.begin(), alarms_.end(),
                                                  [](const Alarm &alarm) { return !alarm.status.isKnown; }));
}

AlarmBook::SteadyTime AlarmBook::dueAt(const Alarm &alarm)
{
    return alarm.since + std::chrono::duration_cast<SteadyTime::duration>(alarm.rule.delay - alarm.lasted);
}

void AlarmBook::judge(std::size_t index, double value, AlarmTime now, AlarmEvents &events)
{
    Alarm &alarm = alarms_[index];
    if (!alarm.status.isKnown) {
        alarm.status.isKnown = true;
        alarm.since = now.steady;
        if (alarm.wasKnown)
            note(Kind::KNOWN_AGAIN, index, now.utc, events);
        alarm.wasKnown = true;
    }
    if (alarm.status.state == State::ACTIVE) {
        if (!goesAt(alarm.rule, value))
            return;
        go(alarm, now);
        note(Kind::WENT, index, now.utc, events);
        return;
    }
    const bool wasPending = alarm.isPending;
    alarm.isPending = comesAt(alarm.rule, value);
    if (alarm.isPending && !wasPending) {
        alarm.lasted = std::chrono::nanoseconds(0);
        alarm.since  = now.steady;
    }
    comeIfDue(index, now, events);
}

// What a delay has lasted stands still until the value is known again.
void AlarmBook::loseValue(std::size_t index, AlarmTime now, AlarmEvents &events)
{
    Alarm &alarm = alarms_[index];
    if (!alarm.status.isKnown)
        return;
    alarm.status.isKnown = false;
    alarm.lasted += now.steady - alarm.since;
    note(Kind::UNKNOWN, index, now.utc, events);
}

void AlarmBook::comeIfDue(std::size_t index, AlarmTime now, AlarmEvents &events)
{
    Alarm &alarm = alarms_[index];
    if (!alarm.isPending || !alarm.status.isKnown || now.steady < dueAt(alarm))
        return;
    come(alarm, now);
    note(Kind::CAME, index, now.utc, events);
}

void AlarmBook::come(Alarm &alarm, AlarmTime now)
{
    AlarmStatus &status = alarm.status;
    if (status.state == State::NORMAL) {
        status.first   = now.utc;
        status.comings = 0;
    }
    ++status.comings;
    status.state    = State::ACTIVE;
    status.last     = now.utc;
    alarm.isPending = false;
    alarm.change    = ++changes_;
}

void AlarmBook::go(Alarm &alarm, AlarmTime now)
{
    AlarmStatus &status = alarm.status;
    status.state          = status.isAcknowledged ? State::NORMAL : State::GONE;
    status.isAcknowledged = false;
    status.last           = now.utc;
    status.gone           = now.utc;
    alarm.change          = ++changes_;
}

void AlarmBook::note(AlarmEvent::Kind kind, std::size_t index, std::chrono::system_clock::time_point utc,
                     AlarmEvents &events) const
{
    events.push_back({kind, index, alarms_[index].status.state, utc});
}
