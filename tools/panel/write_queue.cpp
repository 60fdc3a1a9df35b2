#include "write_queue.h"

#include <algorithm>
#include <iostream>

WriteQueue::WriteQueue(Runtime &runtime) : runtime_(runtime), next_(0)
{
    runtime.onExchange([this](const Exchange &exchange) { noteReply(exchange); });
    runtime.onLost([this] { noteLost(); });
}

void WriteQueue::add(const Item &item, const std::vector<quint8> &data)
{
    auto from = data.begin();
    for (const Item &piece : cutItem(item, std::min(runtime_.options().wordsPerFrame, WRITE_WORDS_LIMIT))) {
        const auto to = from + static_cast<std::ptrdiff_t>(piece.byteSize());
        pieces_.push_back({piece, std::vector<quint8>(from, to), WriteOutcome::WAITING});
        from = to;
    }
}

void WriteQueue::pump()
{
    if (settled() || pieces_[next_].outcome != WriteOutcome::WAITING || !runtime_.canWrite())
        return;
    pieces_[next_].outcome = WriteOutcome::IN_FLIGHT;
    runtime_.write(pieces_[next_].item, pieces_[next_].data);
}

bool WriteQueue::settled() const
{
    return next_ == pieces_.size();
}

void WriteQueue::noteReply(const Exchange &exchange)
{
    if (exchange.kind != RequestKind::WRITE || !exchange.accepted || settled())
        return;
    const bool refused = exchange.judgement.verdict == Verdict::REFUSED;
    pieces_[next_].outcome = refused ? WriteOutcome::REFUSED : WriteOutcome::ACCEPTED;
    ++next_;
}

void WriteQueue::noteLost()
{
    if (settled() || pieces_[next_].outcome != WriteOutcome::IN_FLIGHT)
        return;
    pieces_[next_].outcome = WriteOutcome::UNCONFIRMED;
    std::cerr << "unconfirmed: the write of " << itemText(pieces_[next_].item) << "; it will be read back" << std::endl;
    ++next_;
}
