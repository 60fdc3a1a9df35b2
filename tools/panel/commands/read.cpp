#include "commands/commands.h"

#include "commands/ending.h"
#include "session/read_once.h"
#include "session/step_until.h"

#include <algorithm>
#include <iostream>
#include <map>

namespace {

// What is read of one PLC.
class Reading {
public:
    Reading(const Site &site, const std::vector<Tag> &tags)
        : driver_(site.driver()), runtime_(*driver_, site.link), fresh_(runtime_, itemsOf(tags))
    {
    }

    void run(TimePoint giveUp)
    {
        isComplete_ = stepUntil(runtime_, giveUp, [this] { return fresh_.complete(); });
    }

    // Says why there is nothing to show, if so.
    int end(Millis giveUp)
    {
        if (!isComplete_)
            return noAnswer(runtime_, giveUp);
        return fresh_.anyRefused() ? EXIT_REFUSED : EXIT_DONE;
    }

    bool isComplete() const { return isComplete_; }

    ReadValue valueOf(const Tag &tag) const
    {
        ReadValue value = {tag.name, tag.item, tag.format, std::nullopt};
        if (!isComplete_)
            value.missing = fins::Quality::NOT_CONNECTED;
        else if (!fresh_.refused(tag.item))
            value.bytes = runtime_.values(tag.item);
        return value;
    }

private:
    const Site::Driver driver_;
    Runtime             runtime_;
    ReadOnce            fresh_;
    bool                isComplete_ = false;
};

} // namespace

int runRead(const Sites &sites, Millis giveUp, const ItemChoice &choice, ValueForm form)
{
    const std::vector<Tag> tags = chosenTags(booksOf(sites), choice);
    std::vector<std::unique_ptr<Reading>> readings;
    std::map<std::string, const Reading *> ofPlc;
    for (const Site &site : sites) {
        const std::vector<Tag> own = tagsOf(site, tags);
        if (own.empty())
            continue;
        readings.push_back(std::make_unique<Reading>(site, own));
        ofPlc[site.book.plc()] = readings.back().get();
    }
    const TimePoint end = Clock::now() + giveUp;
    forEachAtOnce(readings.size(), [&](std::size_t i) { readings[i]->run(end); });
    int code = EXIT_DONE;
    for (const auto &reading : readings)
        code = std::max(code, reading->end(giveUp));
    if (std::none_of(readings.begin(), readings.end(), [](const auto &reading) { return reading->isComplete(); }))
        return code;
    std::vector<ReadValue> values;
    values.reserve(tags.size());
    for (const Tag &tag : tags)
        values.push_back(ofPlc.at(tag.plc)->valueOf(tag));
    std::cout << valueLines(form, values);
    return code;
}
