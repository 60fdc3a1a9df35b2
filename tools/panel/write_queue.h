#ifndef PANEL_WRITE_QUEUE_H
#define PANEL_WRITE_QUEUE_H

#include "runtime.h"

#include <deque>

// The panel's writes. They wait here and not in the driver, which gets one frame's worth at a time, when it becomes the
// next request: so no write is left in the driver when the link is lost.

enum class WriteOutcome {
    WAITING,    // here
    IN_FLIGHT,  // handed to the driver
    ACCEPTED,   // acknowledged by the PLC
    REFUSED,    // refused by the PLC
    UNCONFIRMED // the link was lost before the PLC's answer: it may hold the old or the new value
};

struct WritePiece {
    Item                item;
    std::vector<quint8> data;
    WriteOutcome        outcome;
};

class WriteQueue {
public:
    /// `runtime` calls back into this object: both live until the last step.
    explicit WriteQueue(Runtime &runtime);
    WriteQueue(const WriteQueue &) = delete;
    WriteQueue &operator=(const WriteQueue &) = delete;

    /// Adds a write, cut to frames. `data` holds the item's bytes.
    void add(const Item &item, const std::vector<quint8> &data);

    /// Hands over the next write if the time is right; to be called before every step.
    void pump();

    /// True if no write waits or is in flight.
    bool settled() const;

    const std::deque<WritePiece> &pieces() const { return pieces_; }

private:
    void noteReply(const Exchange &exchange);
    void noteLost();

    Runtime               &runtime_;
    std::deque<WritePiece> pieces_; // in the order of writing
    std::size_t            next_;   // the piece in flight, or the next one to be handed over
};

#endif
