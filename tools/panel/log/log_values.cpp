#include "log/log_values.h"

#include "values/codec.h"
#include "values/items.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

namespace {

std::optional<double> numberOf(const fins::Value &value)
{
    if (const auto *whole = std::get_if<std::int64_t>(&value))
        return static_cast<double>(*whole);
    if (const auto *positive = std::get_if<std::uint64_t>(&value))
        return static_cast<double>(*positive);
    if (const auto *real = std::get_if<double>(&value))
        return *real;
    return std::nullopt;
}

// Of an item with its data type behind a slash.
bool isUnsigned64(const std::string &item)
{
    const std::size_t slash = item.find('/');
    if (slash == std::string::npos || item.substr(slash + 1) == BIT_TYPE)
        return false;
    return parseFormat(item.substr(slash + 1), OrderDefaults()).type == DataType::U64;
}

std::map<std::string, const fins::TagConfig *> tagsOf(const fins::Config &config)
{
    std::map<std::string, const fins::TagConfig *> tags;
    for (const fins::TagConfig &tag : config.tags)
        tags[tag.name] = &tag;
    return tags;
}

} // namespace

// ---- What is logged of the changes -------------------------------------------------------------------------------

bool DeadBand::isChange(const fins::Sample &sample) const
{
    if (isFirst_ || sample.quality != quality_)
        return true;
    if (sample.quality != fins::Quality::GOOD || sample.text == text_)
        return false;
    const std::optional<double> before = numberOf(value_);
    const std::optional<double> after  = numberOf(sample.value);
    if (!before || !after || !std::isfinite(*before) || !std::isfinite(*after))
        return true;
    const double rounding = 1e-9 * (std::abs(*before) + std::abs(*after)); // 0.3 - 0.2 is less than 0.1
    return std::abs(*after - *before) + rounding >= width_;
}

bool DeadBand::passes(const fins::Sample &sample)
{
    if (!isChange(sample))
        return false;
    isFirst_ = false;
    quality_ = sample.quality;
    value_   = sample.value;
    text_    = sample.text;
    return true;
}

// ---- The values --------------------------------------------------------------------------------------------------

LogValues::LogValues(Plant &plant, const std::vector<PlantPlc> &plcs, double deadband) : answered_(plcs.size(), false)
{
    for (std::size_t i = 0; i < plcs.size(); ++i) {
        const auto tags = tagsOf(plcs[i].config);
        std::map<std::string, LogColumn> known; // by the names of the values, of which an item may have several
        for (const std::string &item : plcs[i].items) {
            const auto tag = tags.find(item);
            const bool isTag = tag != tags.end();
            LogColumn column;
            column.plc        = plant.name(i);
            column.isUnsigned = isUnsigned64(isTag ? tag->second->item : item);
            column.deadband   = isTag && tag->second->deadband > 0 ? tag->second->deadband : deadband;
            for (const fins::Sample &sample : plant.plc(i).snapshot({item}))
                known.emplace(sample.name, column);
        }
        first_.push_back(columns_.size());
        for (fins::Sample &sample : plant.plc(i).snapshot(plcs[i].items)) {
            columns_.push_back(known.at(sample.name));
            columns_.back().name = sample.name;
            bands_.emplace_back(columns_.back().deadband);
            sample.quality = fins::Quality::NOT_CONNECTED; // the samples tell what is known
            latest_.push_back(std::move(sample));
        }
    }
}

void LogValues::store(std::size_t plc, const fins::Sample &sample)
{
    dropped_ += sample.dropped;
    if (sample.quality == fins::Quality::GOOD || sample.quality == fins::Quality::REFUSED)
        answered_[plc] = true;
    latest_[first_[plc] + sample.index] = sample;
}

void LogValues::hold(std::size_t plc, const fins::Samples &samples)
{
    for (const fins::Sample &sample : samples)
        held_.push_back({plc, first_[plc] + sample.index, sample});
}

void LogValues::takeHeld()
{
    for (const Held &held : held_)
        store(held.plc, held.sample);
    held_.clear();
}

// Since when a value is not good no sample tells: it counts from the time at which it came.
fins::Samples LogValues::at(SystemTime time)
{
    const auto later = std::stable_partition(held_.begin(), held_.end(), [time](const Held &held) {
        return held.sample.quality == fins::Quality::GOOD && held.sample.utc <= time;
    });
    for (auto held = held_.begin(); held != later; ++held)
        store(held->plc, held->sample);
    held_.erase(held_.begin(), later);
    fins::Samples then = latest_;
    for (const Held &held : held_) {
        if (held.sample.dropped > 0 && then[held.column].quality == fins::Quality::GOOD)
            then[held.column].quality = fins::Quality::LAST_KNOWN;
    }
    return then;
}

void LogValues::take(std::size_t plc, const fins::Samples &samples, SystemTime now, const RowCall &row)
{
    std::vector<std::pair<SystemTime, const fins::Sample *>> inOrder;
    inOrder.reserve(samples.size());
    for (const fins::Sample &sample : samples)
        inOrder.emplace_back(sample.quality == fins::Quality::GOOD ? sample.utc : now, &sample);
    std::stable_sort(inOrder.begin(), inOrder.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<std::size_t> changed;
    for (std::size_t i = 0; i < inOrder.size(); ++i) {
        const auto &[time, sample] = inOrder[i];
        const std::size_t column = first_[plc] + sample->index;
        store(plc, *sample);
        if (bands_[column].passes(*sample))
            changed.push_back(column);
        const bool isLastOfTime = i + 1 == inOrder.size() || inOrder[i + 1].first != time;
        if (isLastOfTime && !changed.empty()) {
            row(time, changed);
            changed.clear();
        }
    }
}

bool LogValues::anyRefused() const
{
    return std::any_of(latest_.begin(), latest_.end(), [](const fins::Sample &sample) {
        return sample.quality == fins::Quality::REFUSED && sample.text.empty();
    });
}
