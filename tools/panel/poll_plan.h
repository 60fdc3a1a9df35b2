#ifndef PANEL_POLL_PLAN_H
#define PANEL_POLL_PLAN_H

#include "items.h"
#include "link_state.h"

#include <QtCore/QList>

#include <vector>

// What is polled: the watched items without the blocks that the PLC refuses, which would only cost the others time.
// They are tried again now and then. The time is an argument everywhere.

class PollPlan {
public:
    static constexpr Millis PAUSE{30000};

    /// Refused blocks are tried again `pause` after the latest refusal, so that all others get their turns in between.
    explicit PollPlan(Millis pause) : pause_(pause) {}

    /// Replaces the items; none of them is left out.
    void set(const std::vector<Item> &items);

    /// The plan for intf_addrMerge, see planWatch().
    QList<KEY_ADDRESS> addresses(qint32 wordsPerFrame) const;

    /// Leaves out what lies in the refused block.
    void leaveOut(const Item &block, TimePoint now);

    /// Puts everything back. True if the plan has changed.
    bool putBack();

    /// True if something is left out, and it is time to put it back.
    bool isDue(TimePoint now) const { return leavesAnyOut() && now >= retryAt_; }

    /// A block was read. True if it was left out before.
    bool noteRead(const Item &block) { return forgetTrial(block); }

    /// True if a block was put back and not yet read.
    bool awaitsAny() const { return !onTrial_.empty(); }

    /// True if a word of the item is left out.
    bool leavesOut(const Item &item) const;
    bool leavesAnyOut() const { return !refused_.empty(); }

private:
    bool forgetTrial(const Item &block);

    Millis            pause_;
    std::vector<Item> items_;
    std::vector<Item> refused_; // blocks that are left out
    std::vector<Item> onTrial_; // blocks that were put back and not yet read
    TimePoint         retryAt_;
};

#endif
