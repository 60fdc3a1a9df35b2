#include "watch/watch_writes.h"

WatchWrites::Batch::Batch(Runtime &runtime, bool edits, bool keepGoing)
    : isEdit(edits), queue(runtime, keepGoing), report(runtime), hadLoss(runtime.phase() != LinkPhase::ONLINE),
      lost(runtime.onLost([this] { hadLoss = true; }))
{
}

std::string fateWord(Fate fate)
{
    return fate == Fate::VERIFIED ? "done" : fins::text(fate);
}

void WatchWrites::begin(const std::vector<TagWrite> &writes, bool keepGoing)
{
    if (!writes.empty())
        start(writes, false, keepGoing);
}

std::string WatchWrites::obstacle() const
{
    if (!settled())
        return "a write before is not settled yet; one goes out at a time";
    if (runtime_.phase() != LinkPhase::ONLINE || !runtime_.answering())
        return "the PLC does not answer; a value can be edited while the link is up";
    return "";
}

void WatchWrites::edit(const TagWrite &write, const std::string &)
{
    next_    = write;
    hasEdit_ = true;
    fate_.reset();
    if (runtime_.options().stop)
        runtime_.options().stop->wake();
}

void WatchWrites::beginEdit()
{
    if (!next_)
        return;
    if (runtime_.options().stop)
        runtime_.options().stop->clear(); // else no pause would last any more
    start({*next_}, true, false);
    next_.reset();
}

void WatchWrites::start(const std::vector<TagWrite> &writes, bool isEdit, bool keepGoing)
{
    batch_ = std::make_unique<Batch>(runtime_, isEdit, keepGoing);
    for (const auto &[tag, data] : writes) {
        batch_->queue.add(tag.item, data);
        batch_->report.add(tag.name, tag.item, tag.format, data);
    }
}

bool WatchWrites::pump()
{
    const bool isNew = next_.has_value();
    beginEdit();
    if (!batch_)
        return false;
    if (batch_->isEdit && batch_->hadLoss)
        batch_->queue.drop();
    batch_->queue.pump();
    if (!batch_->report.settled() || !batch_->queue.settled())
        return isNew;
    finish(batch_->isEdit ? "the link was lost before"
                          : "a write before it was not done; with --keep-going it would be sent all the same");
    return true;
}

void WatchWrites::finish(const std::string &reason)
{
    batch_->report.finish(reason);
    verdict_ = std::max(verdict_, batch_->report.verdict());
    if (batch_->isEdit)
        fate_ = batch_->report.orders().front().fate;
    batch_.reset();
}

std::string WatchWrites::fateOfEdit() const
{
    if (!hasEdit_)
        return "";
    const std::optional<Fate> fate = batch_ && batch_->isEdit ? batch_->report.orders().front().fate : fate_;
    if (!fate)
        return "writing";
    return fateWord(*fate);
}

WriteVerdict WatchWrites::end(const std::string &reason)
{
    beginEdit();
    if (batch_)
        finish(reason);
    return verdict_;
}
