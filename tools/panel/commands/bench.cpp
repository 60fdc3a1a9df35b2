#include "commands/commands.h"

#include "commands/bench_table.h"
#include "commands/ending.h"
#include "link/fins_codes.h"
#include "session/poll_cycle.h"
#include "session/step_until.h"
#include "values/tags.h"

#include <iostream>
#include <optional>

namespace {

// Polls the items with one block size, and measures.
class BenchRun {
public:
    explicit BenchRun(Runtime &runtime) : runtime_(runtime)
    {
        calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { note(exchange); }));
        calls_.push_back(runtime.onLost([this] { cycle_.restart(); }));
    }

    /// Empty if the program was asked to end, or no cycle was completed before `giveUp`.
    std::optional<BenchRow> measure(const std::vector<Item> &items, qint32 wordsPerFrame, Clock::duration forTime,
                                    Clock::duration giveUp);

private:
    void note(const Exchange &exchange);

    Runtime                     &runtime_;
    PollCycle                    cycle_;
    std::optional<std::uint16_t> refusal_;
    bool                         isMeasuring_ = false;
    std::vector<CallHandle>      calls_;
};

void BenchRun::note(const Exchange &exchange)
{
    if (exchange.kind != RequestKind::READ)
        return;
    if (exchange.judgement.verdict == Verdict::REFUSED)
        refusal_ = static_cast<std::uint16_t>(exchange.judgement.code);
    else if (exchange.accepted && isMeasuring_)
        cycle_.note(exchange.request.regType, exchange.request.address, Clock::now());
}

std::optional<BenchRow> BenchRun::measure(const std::vector<Item> &items, qint32 wordsPerFrame,
                                          Clock::duration forTime, Clock::duration giveUp)
{
    runtime_.setWordsPerFrame(wordsPerFrame);
    runtime_.watch(items);
    cycle_   = PollCycle();
    refusal_ = std::nullopt;
    const TimePoint start  = Clock::now();
    const TimePoint latest = start + giveUp;
    if (!stepUntil(runtime_, latest, [&] { return runtime_.phase() == LinkPhase::ONLINE || refusal_; }))
        return std::nullopt;
    isMeasuring_ = true;
    const unsigned long before = runtime_.statistics().requests;
    const unsigned long words  = runtime_.statistics().wordsRead;
    const TimePoint begin = Clock::now();
    const bool done = stepUntil(runtime_, std::max(latest, begin + forTime), [&] {
        return refusal_ || (Clock::now() >= begin + forTime && cycle_.all().count() > 0);
    });
    isMeasuring_ = false;
    if (!done)
        return std::nullopt;
    BenchRow row = {};
    row.wordsPerFrame = wordsPerFrame;
    row.elapsed       = Clock::now() - begin;
    row.requests      = runtime_.statistics().requests - before;
    row.words         = runtime_.statistics().wordsRead - words;
    row.cycles        = cycle_.all();
    row.refusal       = refusal_ ? endCodeText(*refusal_) : "";
    return row;
}

long wordCount(const std::vector<Item> &items)
{
    long words = 0;
    for (const Item &item : items)
        words += item.endWord() - item.firstWord();
    return words;
}

} // namespace

int runBench(const TagBook &book, const LinkOptions &link, Millis giveUp, const BenchOptions &options)
{
    std::vector<std::string> texts = options.items;
    if (texts.empty())
        texts.push_back("DM:0:" + std::to_string(options.words));
    const std::vector<Item> items = itemsOf(book.resolveAll(texts, Access::READ));
    Runtime runtime(book.library(), link);
    BenchRun run(runtime);
    std::cout << benchHead(wordCount(items), static_cast<long>(items.size())) << std::flush;
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.forSeconds));
    std::vector<BenchRow> rows;
    for (const qint32 size : options.sizes) {
        const std::optional<BenchRow> row = run.measure(items, size, forTime, giveUp);
        if (!row)
            return noAnswer(runtime, giveUp);
        rows.push_back(*row);
        std::cout << benchLine(*row) << std::endl;
    }
    std::cout << benchAdvice(rows) << std::flush;
    for (const BenchRow &row : rows) {
        if (row.refusal.empty())
            return EXIT_DONE;
    }
    return EXIT_REFUSED;
}
