#include "commands/commands.h"

#include "commands/condition.h"
#include "commands/ending.h"
#include "project/settings.h"
#include "session/step_until.h"
#include "session/watch_values.h"

#include <algorithm>
#include <iostream>

namespace {

// The conditions with the values that they are about.
class Waiting {
public:
    Waiting(Runtime &runtime, std::vector<Condition> conditions, bool any)
        : conditions_(std::move(conditions)), any_(any),
          values_(runtime, tagsOf(conditions_), {}, [] { return std::vector<Item>(); })
    {
        for (const Condition &condition : conditions_) {
            const auto found = std::find_if(values_.values().begin(), values_.values().end(),
                                            [&](const WatchedValue &value) { return value.name == condition.tag.name; });
            places_.push_back(static_cast<std::size_t>(found - values_.values().begin()));
        }
    }

    bool isFulfilled() const
    {
        return count([this](std::size_t i) { return isHeld(i); }) >= (any_ ? 1 : conditions_.size());
    }

    // True if the PLC refuses to read so much that the rest cannot fulfil them.
    bool isRefused() const
    {
        return count([this](std::size_t i) { return value(i).quality == Quality::REFUSED; })
               >= (any_ ? conditions_.size() : 1);
    }

    // "Level = 45.2 %", a line for each value that is known.
    std::string valueLines() const
    {
        std::string lines;
        for (const WatchedValue &value : values_.values()) {
            if (value.quality == Quality::GOOD)
                lines += value.name + " = " + withUnit(value.text, value.format) + "\n";
        }
        return lines;
    }

    // "Level>50: 45.2 %, good; ...", of the conditions that do not hold.
    std::string openText() const
    {
        std::string text;
        for (std::size_t i = 0; i < conditions_.size(); ++i) {
            const WatchedValue &latest = value(i);
            if (isHeld(i))
                continue;
            text += (text.empty() ? "'" : ", '") + conditions_[i].text + "' (";
            text += latest.text.empty() ? "" : withUnit(latest.text, latest.format) + ", ";
            text += std::string(fins::text(latest.quality)) + ")";
        }
        return text;
    }

private:
    static std::vector<Tag> tagsOf(const std::vector<Condition> &conditions)
    {
        std::vector<Tag> tags;
        tags.reserve(conditions.size());
        for (const Condition &condition : conditions)
            tags.push_back(condition.tag);
        return tags;
    }

    const WatchedValue &value(std::size_t i) const { return values_.values()[places_[i]]; }
    bool isHeld(std::size_t i) const
    {
        return value(i).quality == Quality::GOOD && holds(conditions_[i], value(i).text);
    }

    template <typename Test>
    std::size_t count(const Test &test) const
    {
        std::size_t number = 0;
        for (std::size_t i = 0; i < conditions_.size(); ++i)
            number += test(i) ? 1 : 0;
        return number;
    }

    std::vector<Condition>   conditions_;
    bool                     any_;
    WatchValues              values_;
    std::vector<std::size_t> places_; // of the value of each condition
};

int say(Runtime &runtime, const std::string &text, int code)
{
    runtime.messages().finish();
    std::cerr << "fins_panel: " << text << std::endl;
    return code;
}

} // namespace

int runWait(const TagBook &book, const LinkOptions &link, const WaitOptions &options)
{
    std::vector<Condition> conditions;
    conditions.reserve(options.conditions.size());
    for (const std::string &text : options.conditions)
        conditions.push_back(parseCondition(book, text));
    Runtime runtime(book.library(), link);
    const Waiting waiting(runtime, std::move(conditions), options.any);
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.forSeconds));
    const TimePoint end = options.forSeconds > 0 ? Clock::now() + forTime : TimePoint::max();
    stepUntil(runtime, end, [&] { return waiting.isFulfilled() || waiting.isRefused(); });
    if (waiting.isFulfilled()) {
        std::cout << waiting.valueLines();
        return EXIT_DONE;
    }
    if (runtime.isStopped())
        return say(runtime, "interrupted", EXIT_NO_LINK);
    if (waiting.isRefused())
        return say(runtime, "not fulfilled: " + waiting.openText(), EXIT_REFUSED);
    if (!runtime.wasOnline())
        return noLink(runtime);
    return say(runtime, "not fulfilled within " + plainNumber(options.forSeconds) + " s: " + waiting.openText(),
               EXIT_NO_LINK);
}
