#include "session/write_queue.h"

#include <algorithm>

WriteQueue::WriteQueue(Runtime &runtime, bool keepGoing)
    : runtime_(runtime), keepGoing_(keepGoing), inFlight_(false), stopped_(false)
{
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { noteReply(exchange); }));
    calls_.push_back(runtime.onLost([this] { fail(); }));
}

void WriteQueue::add(const Item &item, const std::vector<quint8> &data)
{
    auto from = data.begin();
    for (const Item &piece : cutItem(item, std::min(runtime_.options().wordsPerFrame, WRITE_WORDS_LIMIT))) {
        const auto to = from + static_cast<std::ptrdiff_t>(piece.byteSize());
        pieces_.push_back({piece, std::vector<quint8>(from, to), to == data.end()});
        from = to;
    }
}

void WriteQueue::pump()
{
    if (inFlight_ || pieces_.empty() || !runtime_.canWrite())
        return;
    inFlight_ = true;
    runtime_.write(pieces_.front().item, pieces_.front().data);
}

void WriteQueue::noteReply(const Exchange &exchange)
{
    if (!inFlight_)
        return;
    const bool refused = exchange.judgement.verdict == Verdict::REFUSED;
    if (exchange.kind == RequestKind::WRITE && exchange.accepted) {
        pieces_.pop_front();
        inFlight_ = false;
    } else if (exchange.kind == RequestKind::MODE_CHANGE && exchange.accepted) {
        inFlight_ = false; // goes out again
    } else if (refused && exchange.kind != RequestKind::READ && !exchange.switches) {
        fail();
    }
}

// The rest of the write that failed never goes out; those behind it only if they are to.
void WriteQueue::fail()
{
    if (!inFlight_)
        return;
    inFlight_ = false;
    bool isLast = false;
    while (!pieces_.empty() && !isLast) {
        isLast = pieces_.front().isLast;
        pieces_.pop_front();
    }
    if (keepGoing_ || pieces_.empty())
        return;
    stopped_ = true;
    pieces_.clear();
}
