#include "commands.h"

#include "change_feed.h"
#include "exit_codes.h"
#include "fresh_values.h"
#include "values.h"

#include <ctime>
#include <iostream>
#include <map>

namespace {

// Prints a line for the first value of every watched word and bit, and for every change.
class WatchPrinter {
public:
    WatchPrinter(Runtime &runtime, const std::vector<Item> &items);

    /// Prints what the last step brought.
    void print();
    long changes() const { return changes_; }

    /// True if the PLC refused to read a word that is still unknown.
    bool refused() const { return refused_ && !unseen_.complete(); }

private:
    using Key = std::pair<QString, qint32>;

    void noteFirst(const FRAME_PRO &block);
    void printValue(const Key &key);

    Runtime                   &runtime_;
    Coverage                   unseen_;
    std::map<Key, std::string> shown_; // the last value on each line; empty: not yet received
    std::vector<Key>           first_; // received for the first time in the last step
    std::vector<Change>        changed_;
    long                       changes_;
    bool                       refused_;
};

std::string timeText()
{
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    const auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm utc = {};
    gmtime_r(&seconds, &utc);
    char day[32];
    char text[48];
    std::strftime(day, sizeof day, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text, sizeof text, "%s.%03dZ", day, static_cast<int>(millis));
    return text;
}

WatchPrinter::WatchPrinter(Runtime &runtime, const std::vector<Item> &items)
    : runtime_(runtime), changes_(0), refused_(false)
{
    unseen_.expect(items);
    for (const Item &item : items) {
        for (const Item &single : cutItem(item, 1))
            shown_[{single.regType, single.address}];
    }
    runtime.onExchange([this](const Exchange &exchange) {
        if (exchange.kind != RequestKind::READ || unseen_.complete())
            return;
        if (exchange.accepted)
            noteFirst(exchange.request);
        else if (exchange.judgement.verdict == Verdict::REFUSED)
            refused_ = true;
    });
}

// The driver notifies no first value of 0, so the first values come from the blocks that were read.
void WatchPrinter::noteFirst(const FRAME_PRO &block)
{
    if (unseen_.settle(block.regType, block.address, block.count) == 0)
        return;
    const Item words = {block.regType, block.address, block.count, false};
    for (const auto &[key, text] : shown_) {
        const Item item = {key.first, key.second, 1, isBitType(key.first)};
        const bool inside = item.wordType() == words.regType && item.firstWord() >= words.firstWord()
                            && item.endWord() <= words.endWord();
        if (inside && text.empty())
            first_.push_back(key);
    }
}

void WatchPrinter::print()
{
    takeChanges(changed_);
    for (const Key &key : first_)
        printValue(key);
    for (const Change &change : changed_)
        printValue({change.regType, change.address});
    if (!first_.empty() || !changed_.empty())
        std::cout.flush();
    first_.clear();
}

void WatchPrinter::printValue(const Key &key)
{
    const auto shown = shown_.find(key);
    const Item item  = {key.first, key.second, 1, isBitType(key.first)};
    const std::string text = valueText(runtime_.values(item), 0, item.isBit);
    if (shown == shown_.end() || shown->second == text)
        return;
    const bool isFirst = shown->second.empty();
    std::cout << timeText() << ' ' << addressText(key.first, key.second) << ' ' << (isFirst ? "-" : shown->second)
              << ' ' << text << '\n';
    shown->second = text;
    changes_ += isFirst ? 0 : 1;
}

} // namespace

int runWatch(const DriverLibrary &library, const LinkOptions &link, const WatchOptions &options)
{
    const std::vector<Item> items = parseItems(library, options.items, Access::READ);
    Runtime runtime(library, link);
    runtime.watch(items);
    WatchPrinter printer(runtime, items);
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.forSeconds));
    const TimePoint end = options.forSeconds > 0 ? Clock::now() + forTime : TimePoint::max();
    stepUntil(runtime, end, [&] {
        printer.print();
        return options.changes > 0 && printer.changes() >= options.changes;
    });
    if (stopRequested())
        return EXIT_DONE;
    if (printer.refused())
        return EXIT_REFUSED;
    if (!runtime.wasOnline())
        return EXIT_NO_LINK;
    if (printer.changes() >= options.changes)
        return EXIT_DONE;
    std::cerr << "fins_panel: " << printer.changes() << " of " << options.changes << " changes came in time"
              << std::endl;
    return EXIT_NO_LINK;
}
