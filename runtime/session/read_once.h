#ifndef RUNTIME_SESSION_READ_ONCE_H
#define RUNTIME_SESSION_READ_ONCE_H

#include "session/runtime.h"
#include "values/awaited_words.h"

// Waits until every word of some watched items was read anew, or its read was refused by the PLC.

class ReadOnce {
public:
    /// Watches `items` in `runtime`, which outlives this object.
    ReadOnce(Runtime &runtime, const std::vector<Item> &items) : runtime_(runtime)
    {
        calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { note(exchange); }));
        runtime.watch(items);
        awaited_.expect(items);
    }
    ReadOnce(const ReadOnce &) = delete;
    ReadOnce &operator=(const ReadOnce &) = delete;

    bool complete() const { return awaited_.complete(); }

    /// True if a word of the item was refused.
    bool refused(const Item &item) const
    {
        for (const Item &block : refused_) {
            if (shareWord(block, item))
                return true;
        }
        return false;
    }
    bool anyRefused() const { return !refused_.empty(); }

    /// True if all was refused, and no read was accepted before.
    bool allRefused() const { return complete() && anyRefused() && !runtime_.wasOnline(); }

private:
    void note(const Exchange &exchange)
    {
        if (exchange.kind != RequestKind::READ || !(exchange.accepted || exchange.leftOut))
            return;
        const FRAME_PRO &request = exchange.request;
        if (awaited_.settle(request.regType, request.address, request.count) > 0 && exchange.leftOut)
            refused_.push_back({request.regType, request.address, request.count, false});
    }

    Runtime                &runtime_;
    AwaitedWords            awaited_;
    std::vector<Item>       refused_; // the refused blocks
    std::vector<CallHandle> calls_;
};

#endif
