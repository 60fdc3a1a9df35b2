#include "plant/plant_values.h"

#include <algorithm>
#include <optional>

PlantValues::PlantValues(const std::vector<std::vector<Tag>> &tags) : answered_(tags.size(), false)
{
    std::size_t first = 0;
    for (const std::vector<Tag> &own : tags) {
        values_.push_back(singleValues(own));
        first_.push_back(first);
        first += values_.back().size();
    }
}

// What a sample tells of the value; none: nothing new.
static std::optional<WatchEvent::Kind> eventOf(const WatchedValue &value, const fins::Sample &sample)
{
    if (sample.text != value.text)
        return value.text.empty() ? WatchEvent::FIRST : WatchEvent::CHANGE;
    if (sample.quality != value.quality)
        return WatchEvent::QUALITY;
    return std::nullopt;
}

void PlantValues::take(std::size_t plc, const fins::Samples &samples, const EventCall &call)
{
    for (const fins::Sample &sample : samples) {
        if (sample.quality == Quality::GOOD || sample.quality == Quality::REFUSED)
            answered_[plc] = true;
        WatchedValue &value = values_[plc][sample.index];
        const std::optional<WatchEvent::Kind> kind = eventOf(value, sample);
        if (!kind)
            continue;
        const std::string old = value.text;
        value.text    = sample.text;
        value.quality = sample.quality;
        if (kind == WatchEvent::CHANGE) {
            value.changedAt = sample.steady;
            ++value.changes;
            ++changes_;
        }
        call(first_[plc] + sample.index, {*kind, value, old});
    }
}

bool PlantValues::anyRefused() const
{
    return std::any_of(values_.begin(), values_.end(), [](const std::vector<WatchedValue> &own) {
        return std::any_of(own.begin(), own.end(), [](const WatchedValue &value) {
            return value.quality == Quality::REFUSED && value.text.empty();
        });
    });
}
