#include "commands.h"

#include "dry_run.h"
#include "exit_codes.h"
#include "fresh_values.h"
#include "write_queue.h"

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
    if (write.data.size() != write.tag.item.byteSize())
        throw UsageError("'" + text + "' has " + std::to_string(values.size()) + " values for "
                         + std::to_string(write.tag.valueCount()) + " items");
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

std::string shownValue(const Tag &tag, const std::vector<quint8> &bytes)
{
    return withUnit(decodeValues(tag.format, bytes), tag.format);
}

// Prints what the PLC holds now; false if it is not what was written.
bool report(const Runtime &runtime, const FreshValues &fresh, const Write &write)
{
    const Tag &tag = write.tag;
    if (fresh.refused(tag.item)) {
        std::cerr << "not known: " << tag.name << " could not be read back" << std::endl;
        return false;
    }
    const std::vector<quint8> held = runtime.values(tag.item);
    std::cout << tag.name << " = " << shownValue(tag, held) << '\n';
    if (held == write.data)
        return true;
    std::cerr << "differs: " << tag.name << " was to be " << shownValue(tag, write.data) << ", the PLC holds "
              << shownValue(tag, held) << std::endl;
    return false;
}

bool anyRefused(const WriteQueue &queue)
{
    for (const WritePiece &piece : queue.pieces()) {
        if (piece.outcome == WriteOutcome::REFUSED)
            return true;
    }
    return false;
}

void sayOpenWrites(Runtime &runtime, const WriteQueue &queue)
{
    runtime.messages().finish();
    for (const WritePiece &piece : queue.pieces()) {
        if (piece.outcome == WriteOutcome::WAITING)
            std::cerr << "not sent: the write of " << itemText(piece.item) << std::endl;
        else if (piece.outcome == WriteOutcome::IN_FLIGHT || piece.outcome == WriteOutcome::UNCONFIRMED)
            std::cerr << "unconfirmed: the write of " << itemText(piece.item) << std::endl;
        else if (piece.outcome == WriteOutcome::ACCEPTED)
            std::cerr << "not read back: the write of " << itemText(piece.item) << ", which the PLC acknowledged"
                      << std::endl;
    }
}

int showFrames(const TagBook &book, const LinkOptions &link, const std::vector<Write> &writes)
{
    DryRun dryRun(book.library(), link);
    for (const Write &write : writes) {
        std::cout << write.tag.name << " = " << shownValue(write.tag, write.data) << '\n';
        for (const std::string &line : dryRun.write(write.tag.item, write.data))
            std::cout << "  " << line << '\n';
    }
    std::cerr << "dry run: nothing was sent" << std::endl;
    return EXIT_DONE;
}

} // namespace

int runWrite(const TagBook &book, const LinkOptions &link, Millis giveUp, const WriteOptions &options)
{
    const std::vector<Write> writes = parseWrites(book, options.writes);
    if (options.dryRun)
        return showFrames(book, link, writes);
    Runtime runtime(book.library(), link);
    WriteQueue queue(runtime);
    std::vector<Item> items;
    for (const Write &write : writes) {
        queue.add(write.tag.item, write.data);
        items.push_back(write.tag.item);
    }
    FreshValues fresh(runtime, items);
    const TimePoint end = Clock::now() + giveUp;
    const bool sent = stepUntil(runtime, end, [&] {
        queue.pump();
        return queue.settled() || fresh.allRefused();
    });
    if (fresh.allRefused()) {
        sayOpenWrites(runtime, queue);
        return EXIT_REFUSED;
    }
    fresh.restart();
    if (!sent || !stepUntil(runtime, end, [&] { return fresh.complete(); })) {
        sayOpenWrites(runtime, queue);
        return noAnswer(runtime, giveUp);
    }
    bool agrees = true;
    for (const Write &write : writes)
        agrees = report(runtime, fresh, write) && agrees;
    return agrees && !anyRefused(queue) ? EXIT_DONE : EXIT_REFUSED;
}
