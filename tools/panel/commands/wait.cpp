#include "commands/commands.h"

#include "commands/condition.h"
#include "commands/ending.h"
#include "project/settings.h"
#include "session/step_until.h"
#include "session/watch_values.h"
#include "terminal/stop_flag.h"

#include <algorithm>
#include <atomic>
#include <iostream>
#include <iterator>
#include <mutex>
#include <utility>

namespace {

// How far all PLCs are together; each tells of its own, on its thread.
class Progress {
public:
    Progress(std::size_t conditions, bool any) : conditions_(conditions), any_(any) {}

    void note(std::size_t held, std::size_t refused, std::size_t &heldBefore, std::size_t &refusedBefore)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        held_    += held - std::exchange(heldBefore, held); // unsigned, and so right where it falls
        refused_ += refused - std::exchange(refusedBefore, refused);
        isFulfilled_ = isFulfilled_ || held_ >= (any_ ? 1 : conditions_);
        // So much is refused that the rest cannot fulfil them.
        isRefused_ = isRefused_ || refused_ >= (any_ ? conditions_ : 1);
    }

    bool isFulfilled() const { return isFulfilled_; }
    bool isRefused() const { return isRefused_; }
    bool isOver() const { return isFulfilled_ || isRefused_; }

private:
    const std::size_t conditions_;
    const bool        any_;
    std::mutex        mutex_;
    std::size_t       held_    = 0;
    std::size_t       refused_ = 0;
    std::atomic<bool> isFulfilled_{false};
    std::atomic<bool> isRefused_{false};
};

// The conditions of one PLC with the values that they are about.
class Waiting {
public:
    Waiting(const Site &site, std::vector<Condition> conditions)
        : driver_(site.driver()), runtime_(*driver_, site.link), conditions_(std::move(conditions)),
          values_(runtime_, tagsOf(conditions_), {}, [] { return std::vector<Item>(); })
    {
        for (const Condition &condition : conditions_) {
            const auto found = std::find_if(values_.values().begin(), values_.values().end(),
                                            [&](const WatchedValue &value) { return value.name == condition.tag.name; });
            places_.push_back(static_cast<std::size_t>(found - values_.values().begin()));
        }
    }

    void run(TimePoint end, Progress &progress)
    {
        std::size_t held = 0, refused = 0;
        stepUntil(runtime_, end, [&] {
            progress.note(count([this](std::size_t i) { return isHeld(i); }),
                          count([this](std::size_t i) { return value(i).quality == Quality::REFUSED; }), held, refused);
            return progress.isOver();
        });
    }

    Runtime &runtime() { return runtime_; }

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

    const Site::Driver      driver_;
    Runtime                  runtime_;
    std::vector<Condition>   conditions_;
    WatchValues              values_;
    std::vector<std::size_t> places_; // of the value of each condition
};

std::vector<Condition> conditionsOf(const Site &site, const std::vector<Condition> &all)
{
    std::vector<Condition> own;
    std::copy_if(all.begin(), all.end(), std::back_inserter(own),
                 [&](const Condition &condition) { return condition.tag.plc == site.book.plc(); });
    return own;
}

using Waitings = std::vector<std::unique_ptr<Waiting>>;

Waitings waitingsOf(const Sites &sites, const std::vector<Condition> &conditions)
{
    Waitings waitings;
    for (const Site &site : sites) {
        std::vector<Condition> own = conditionsOf(site, conditions);
        if (!own.empty())
            waitings.push_back(std::make_unique<Waiting>(site, std::move(own)));
    }
    return waitings;
}

std::string openText(const Waitings &waitings)
{
    std::string text;
    for (const auto &waiting : waitings) {
        const std::string own = waiting->openText();
        text += (text.empty() || own.empty() ? "" : ", ") + own;
    }
    return text;
}

int say(const Waitings &waitings, const std::string &text, int code)
{
    for (const auto &waiting : waitings)
        waiting->runtime().messages().finish();
    std::cerr << "fins_panel: " << text << std::endl;
    return code;
}

// Why the conditions were not fulfilled in time.
int sayLate(const Waitings &waitings, double forSeconds)
{
    bool isMissing = false;
    for (const auto &waiting : waitings) {
        if (waiting->runtime().wasOnline())
            continue;
        noLink(waiting->runtime());
        isMissing = true;
    }
    if (isMissing)
        return EXIT_NO_LINK;
    return say(waitings, "not fulfilled within " + plainNumber(forSeconds) + " s: " + openText(waitings), EXIT_NO_LINK);
}

} // namespace

int runWait(const Sites &sites, const WaitOptions &options)
{
    const TagBooks books = booksOf(sites);
    std::vector<Condition> conditions;
    conditions.reserve(options.conditions.size());
    for (const std::string &text : options.conditions)
        conditions.push_back(parseCondition(ownerOf(books, text), text));
    const Waitings waitings = waitingsOf(sites, conditions);
    Progress progress(conditions.size(), options.any);
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.forSeconds));
    const TimePoint end = options.forSeconds > 0 ? Clock::now() + forTime : TimePoint::max();
    forEachAtOnce(waitings.size(), [&](std::size_t i) { waitings[i]->run(end, progress); });
    if (progress.isFulfilled()) {
        for (const auto &waiting : waitings)
            std::cout << waiting->valueLines();
        return EXIT_DONE;
    }
    if (programStop().isStopped())
        return say(waitings, "interrupted", EXIT_NO_LINK);
    if (progress.isRefused())
        return say(waitings, "not fulfilled: " + openText(waitings), EXIT_REFUSED);
    return sayLate(waitings, options.forSeconds);
}
