#include "poll_plan.h"

#include "watch_plan.h"

#include <algorithm>

static bool sharesWord(const std::vector<Item> &blocks, const Item &item)
{
    return std::any_of(blocks.begin(), blocks.end(), [&](const Item &block) { return shareWord(block, item); });
}

void PollPlan::set(const std::vector<Item> &items)
{
    items_ = items;
    refused_.clear();
    onTrial_.clear();
}

QList<KEY_ADDRESS> PollPlan::addresses(qint32 wordsPerFrame) const
{
    const QList<KEY_ADDRESS> all = planWatch(items_, wordsPerFrame);
    if (refused_.empty())
        return all;
    QList<KEY_ADDRESS> polled;
    for (const KEY_ADDRESS &piece : all) {
        if (!leavesOut({piece.regType, piece.address, piece.count, isBitType(piece.regType)}))
            polled.append(piece);
    }
    return polled;
}

void PollPlan::leaveOut(const Item &block, TimePoint now)
{
    forgetTrial(block);
    refused_.push_back(block);
    retryAt_ = now + pause_;
}

bool PollPlan::putBack()
{
    if (refused_.empty())
        return false;
    onTrial_.insert(onTrial_.end(), refused_.begin(), refused_.end());
    refused_.clear();
    return true;
}

bool PollPlan::leavesOut(const Item &item) const
{
    return sharesWord(refused_, item);
}

bool PollPlan::forgetTrial(const Item &block)
{
    const auto end = std::remove_if(onTrial_.begin(), onTrial_.end(),
                                    [&](const Item &tried) { return shareWord(tried, block); });
    const bool any = end != onTrial_.end();
    onTrial_.erase(end, onTrial_.end());
    return any;
}
