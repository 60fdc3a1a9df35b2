#ifndef RUNTIME_SESSION_WRITE_QUEUE_H
#define RUNTIME_SESSION_WRITE_QUEUE_H

#include "session/runtime.h"

#include <deque>

// The panel's writes, in their order. They wait here and not in the driver, which gets one frame's worth at a time, when
// it becomes the next request: so no write is left in the driver when the link is lost. What becomes of them says
// WriteReport.

class WriteQueue {
public:
    /// `runtime` outlives this object. The queue stops behind a write that was
    /// refused or whose reply never came, unless it is to keep going.
    WriteQueue(Runtime &runtime, bool keepGoing);
    WriteQueue(const WriteQueue &) = delete;
    WriteQueue &operator=(const WriteQueue &) = delete;

    /// Adds a write, cut to frames. `data` holds the item's bytes.
    void add(const Item &item, const std::vector<quint8> &data);

    /// Hands over the next write if the time is right; to be called before every step.
    void pump();

    /// Forgets what has not been handed over.
    void drop() { pieces_.erase(pieces_.begin() + (inFlight_ ? 1 : 0), pieces_.end()); }

    /// True if no write is in flight, and none will be handed over any more.
    bool settled() const { return pieces_.empty() && !inFlight_; }

    /// True if writes were left out, since one before them was refused or not answered.
    bool stopped() const { return stopped_; }

private:
    struct Piece {
        Item                item;
        std::vector<quint8> data;
        bool                isLast; // of its write
    };

    void noteReply(const Exchange &exchange);
    void fail();

    Runtime          &runtime_;
    const bool        keepGoing_;
    std::deque<Piece> pieces_;   // the first one is in flight, or the next to be handed over
    bool              inFlight_; // with the driver; while the PLC is asked for another mode, too
    bool              stopped_;
    std::vector<CallHandle> calls_;
};

#endif
