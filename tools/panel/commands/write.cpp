#include "commands/commands.h"

#include "commands/confirmation.h"
#include "commands/ending.h"
#include "session/dry_run.h"
#include "session/read_once.h"
#include "session/step_until.h"
#include "session/write_queue.h"
#include "session/write_report.h"

#include <algorithm>
#include <iostream>

namespace {

using Writes = std::vector<TagWrite>;

const char STOPPED[] = "a write before it was not done; with --keep-going it would be sent all the same";

void showFrames(const Site &site, const Writes &writes)
{
    const Site::Driver driver = site.driver();
    DryRun dryRun(*driver, site.link);
    for (const TagWrite &write : writes) {
        std::cout << write.tag.name << " = " << shownValue(write.tag.format, write.data) << '\n';
        for (const std::string &line : dryRun.write(write.tag.item, write.data))
            std::cout << "  " << line << '\n';
    }
    std::cerr << dryRunText(site.link) << std::endl;
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
        return STOPPED;
    if (fresh.allRefused())
        return "the PLC refuses to read what is to be written, and nothing else proves the link";
    return endedEarly(runtime);
}

// A row of the list that goes to one PLC.
int writeTo(const Site &site, const Writes &writes, Millis giveUp, const WriteOptions &options)
{
    const Site::Driver driver = site.driver();
    Runtime runtime(*driver, site.link);
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
    return exitCode(report.verdict());
}

// Says of each that it was not sent.
int leaveOut(const Site &site, const Writes &writes)
{
    const Site::Driver driver = site.driver();
    Runtime runtime(*driver, site.link);
    WriteReport report(runtime);
    for (const auto &[tag, data] : writes)
        report.add(tag.name, tag.item, tag.format, data);
    report.finish(STOPPED);
    return exitCode(report.verdict());
}

const Site &siteOf(const Sites &sites, const Tag &tag)
{
    return *std::find_if(sites.begin(), sites.end(), [&](const Site &site) { return site.book.plc() == tag.plc; });
}

// The writes from the given one on, as many as go to the same PLC.
Writes rowAt(const Writes &writes, std::size_t begin)
{
    Writes row;
    for (std::size_t i = begin; i < writes.size() && writes[i].tag.plc == writes[begin].tag.plc; ++i)
        row.push_back(writes[i]);
    return row;
}

} // namespace

int runWrite(const Sites &sites, Millis giveUp, const WriteOptions &options)
{
    const Writes writes = chosenWrites(booksOf(sites), options.choice);
    const auto isOfFirst = [&](const TagWrite &write) { return write.tag.plc == writes.front().tag.plc; };
    if (options.confirm && !std::all_of(writes.begin(), writes.end(), isOfFirst))
        throw UsageError("--confirm asks for the values of one PLC; write to one after the other, or leave it out");
    if (options.confirm)
        requireTerminal();
    int code = EXIT_DONE;
    for (std::size_t begin = 0; begin < writes.size();) {
        const Writes row = rowAt(writes, begin);
        const Site &site = siteOf(sites, row.front().tag);
        begin += row.size();
        if (options.dryRun)
            showFrames(site, row);
        else if (code == EXIT_DONE || options.keepGoing)
            code = std::max(code, writeTo(site, row, giveUp, options));
        else
            code = std::max(code, leaveOut(site, row));
    }
    return code;
}
