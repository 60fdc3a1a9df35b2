#include "commands.h"

#include "confirmation.h"
#include "dry_run.h"
#include "exit_codes.h"
#include "fresh_values.h"
#include "write_queue.h"
#include "write_report.h"

#include <algorithm>
#include <iostream>

namespace {

struct Write {
    Tag                 tag;
    std::vector<quint8> data;
};

std::vector<std::string> splitAtCommas(const std::string &text)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t comma = std::min(text.find(',', begin), text.size());
        parts.push_back(text.substr(begin, comma - begin));
        begin = comma + 1;
    }
    return parts;
}

Write parseWrite(const TagBook &book, const std::string &text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError("'" + text + "' is not a write; use ITEM=VALUE[,VALUE...], such as DM:100=5");
    const std::string name = text.substr(0, equals);
    std::vector<std::string> values = {text.substr(equals + 1)};
    if (book.formatFor(name).type != DataType::STRING)
        values = splitAtCommas(values.front());
    Write write;
    write.tag = book.resolveWithValues(name, Access::WRITE, values, write.data);
    return write;
}

std::vector<Write> parseWrites(const TagBook &book, const std::vector<std::string> &texts)
{
    std::vector<Write> writes;
    std::vector<Item> items;
    for (const std::string &text : texts) {
        writes.push_back(parseWrite(book, text));
        items.push_back(writes.back().tag.item);
    }
    refuseOverlaps(items);
    return writes;
}

int showFrames(const TagBook &book, const LinkOptions &link, const std::vector<Write> &writes)
{
    DryRun dryRun(book.library(), link);
    for (const Write &write : writes) {
        std::cout << write.tag.name << " = " << shownValue(write.tag.format, write.data) << '\n';
        for (const std::string &line : dryRun.write(write.tag.item, write.data))
            std::cout << "  " << line << '\n';
    }
    std::cerr << dryRunText(link) << std::endl;
    return EXIT_DONE;
}

// The values that the PLC holds are read and shown first. Returns why nothing is to be written, or "".
std::string askFirst(Runtime &runtime, FreshValues &fresh, const WriteReport &report, TimePoint end)
{
    if (!stepUntil(runtime, end, [&] { return fresh.complete(); }))
        return endedEarly();
    if (fresh.anyRefused())
        return "the PLC refuses to read what it would replace";
    std::vector<std::vector<quint8>> held;
    for (const WriteReport::Order &order : report.orders())
        held.push_back(runtime.values(order.item));
    return isConfirmed(report.orders(), held) ? "" : "not confirmed";
}

std::string whyNotSent(const WriteQueue &queue, const FreshValues &fresh)
{
    if (queue.stopped())
        return "a write before it was not done; with --keep-going it would be sent all the same";
    if (fresh.allRefused())
        return "the PLC refuses to read what is to be written, and nothing else proves the link";
    return endedEarly();
}

} // namespace

int runWrite(const TagBook &book, const LinkOptions &link, Millis giveUp, const WriteOptions &options)
{
    const std::vector<Write> writes = parseWrites(book, options.writes);
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
    FreshValues fresh(runtime, items);
    TimePoint end = Clock::now() + giveUp;
    if (options.confirm) {
        const std::string reason = askFirst(runtime, fresh, report, end);
        if (!reason.empty()) {
            report.finish(reason);
            if (reason == endedEarly())
                noAnswer(runtime, giveUp);
            return report.exitCode();
        }
        end = Clock::now() + giveUp;
    }
    const bool done = stepUntil(runtime, end, [&] {
        queue.pump();
        return (queue.settled() && report.settled()) || fresh.allRefused();
    });
    report.finish(whyNotSent(queue, fresh));
    if (!done)
        noAnswer(runtime, giveUp);
    return report.exitCode();
}
