#include "commands/commands.h"

#include "commands/confirmation.h"
#include "commands/ending.h"
#include "session/dry_run.h"
#include "session/read_once.h"
#include "session/step_until.h"
#include "session/write_queue.h"
#include "session/write_report.h"

#include <iostream>

namespace {

int showFrames(const TagBook &book, const LinkOptions &link, const std::vector<TagWrite> &writes)
{
    DryRun dryRun(book.library(), link);
    for (const TagWrite &write : writes) {
        std::cout << write.tag.name << " = " << shownValue(write.tag.format, write.data) << '\n';
        for (const std::string &line : dryRun.write(write.tag.item, write.data))
            std::cout << "  " << line << '\n';
    }
    std::cerr << dryRunText(link) << std::endl;
    return EXIT_DONE;
}

// The values that the PLC holds are read and shown first. Returns why nothing is to be written, or "".
std::string askFirst(Runtime &runtime, ReadOnce &fresh, const WriteReport &report, TimePoint end)
{
    if (!stepUntil(runtime, end, [&] { return fresh.complete(); }))
        return endedEarly(runtime);
    if (fresh.anyRefused())
        return "the PLC refuses to read what it would replace";
    const auto held = [&runtime](const Item &item) { return runtime.values(item); };
    return isConfirmed(report.orders(), held) ? "" : "not confirmed";
}

std::string whyNotSent(const Runtime &runtime, const WriteQueue &queue, const ReadOnce &fresh)
{
    if (queue.stopped())
        return "a write before it was not done; with --keep-going it would be sent all the same";
    if (fresh.allRefused())
        return "the PLC refuses to read what is to be written, and nothing else proves the link";
    return endedEarly(runtime);
}

} // namespace

int runWrite(const TagBook &book, const LinkOptions &link, Millis giveUp, const WriteOptions &options)
{
    const std::vector<TagWrite> writes = chosenWrites(book, options.choice);
    if (options.dryRun)
        return showFrames(book, link, writes);
    if (options.confirm)
        requireTerminal();
    Runtime runtime(book.library(), link);
    WriteReport report(runtime);
    WriteQueue queue(runtime, options.keepGoing);
    std::vector<Item> items;
    for (const auto &[tag, data] : writes) {
        report.add(tag.name, tag.item, tag.format, data);
        queue.add(tag.item, data);
        items.push_back(tag.item);
    }
    report.onResult([](const WriteReport::Order &order) {
        std::cout << order.name << " = " << shownValue(order.format, *order.held) << std::endl;
    });
    ReadOnce fresh(runtime, items);
    TimePoint end = Clock::now() + giveUp;
    if (options.confirm) {
        const std::string reason = askFirst(runtime, fresh, report, end);
        if (!reason.empty())
            return endUnwritten(runtime, report, reason, giveUp);
        end = Clock::now() + giveUp;
    }
    const bool done = stepUntil(runtime, end, [&] {
        queue.pump();
        return (queue.settled() && report.settled()) || fresh.allRefused();
    });
    report.finish(whyNotSent(runtime, queue, fresh));
    if (!done)
        noAnswer(runtime, giveUp);
    return exitCode(report);
}
