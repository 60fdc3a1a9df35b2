#include "commands.h"

#include "exit_codes.h"
#include "fresh_values.h"
#include "values.h"
#include "write_queue.h"

#include <iostream>

namespace {

struct Write {
    Item                item;
    std::vector<quint8> data;
};

Write parseWrite(const DriverLibrary &library, const std::string &text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError("'" + text + "' is not a write; use ITEM=VALUE[,VALUE...], such as DM:100=5");
    Write write = {{QString(), 0, 0, isBitType(QString::fromStdString(text.substr(0, text.find(':'))))}, {}};
    qint32 count = 0;
    for (std::size_t begin = equals + 1; begin <= text.size(); ++count) {
        const std::size_t comma = std::min(text.find(',', begin), text.size());
        appendValue(text.substr(begin, comma - begin), write.item.isBit, write.data);
        begin = comma + 1;
    }
    const std::string name = text.substr(0, equals);
    const bool hasCount = name.find(':') != name.rfind(':');
    write.item = parseItem(library, hasCount ? name : name + ":" + std::to_string(count), Access::WRITE);
    if (write.item.count != count)
        throw UsageError("'" + text + "' has " + std::to_string(count) + " values for "
                         + std::to_string(write.item.count) + " items");
    return write;
}

std::vector<Write> parseWrites(const DriverLibrary &library, const std::vector<std::string> &texts)
{
    std::vector<Write> writes;
    std::vector<Item> items;
    for (const std::string &text : texts) {
        writes.push_back(parseWrite(library, text));
        items.push_back(writes.back().item);
    }
    refuseOverlaps(items);
    return writes;
}

// Prints what the PLC holds now; false if it is not what was written.
bool report(const Runtime &runtime, const FreshValues &fresh, const Write &write)
{
    if (fresh.refused(write.item)) {
        std::cerr << "not known: " << itemText(write.item) << " could not be read back" << std::endl;
        return false;
    }
    const std::string held   = valuesText(runtime.values(write.item), write.item.isBit);
    const std::string wanted = valuesText(write.data, write.item.isBit);
    std::cout << itemText(write.item) << " = " << held << '\n';
    if (held == wanted)
        return true;
    std::cerr << "differs: " << itemText(write.item) << " was to be " << wanted << ", the PLC holds " << held
              << std::endl;
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

void sayOpenWrites(const WriteQueue &queue)
{
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

} // namespace

int runWrite(const DriverLibrary &library, const LinkOptions &link, Millis giveUp,
             const std::vector<std::string> &texts)
{
    const std::vector<Write> writes = parseWrites(library, texts);
    Runtime runtime(library, link);
    WriteQueue queue(runtime);
    std::vector<Item> items;
    for (const Write &write : writes) {
        queue.add(write.item, write.data);
        items.push_back(write.item);
    }
    FreshValues fresh(runtime, items);
    const TimePoint end = Clock::now() + giveUp;
    const bool sent = stepUntil(runtime, end, [&] {
        queue.pump();
        return queue.settled() || fresh.allRefused();
    });
    if (fresh.allRefused()) {
        sayOpenWrites(queue);
        return EXIT_REFUSED;
    }
    fresh.restart();
    if (!sent || !stepUntil(runtime, end, [&] { return fresh.complete(); })) {
        sayOpenWrites(queue);
        return noAnswer(runtime, giveUp);
    }
    bool agrees = true;
    for (const Write &write : writes)
        agrees = report(runtime, fresh, write) && agrees;
    return agrees && !anyRefused(queue) ? EXIT_DONE : EXIT_REFUSED;
}
