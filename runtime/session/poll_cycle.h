#ifndef RUNTIME_SESSION_POLL_CYCLE_H
#define RUNTIME_SESSION_POLL_CYCLE_H

#include "base/clock.h"
#include "base/durations.h"

#include <QtCore/QString>

// The time from one read of a block of the cyclic poll to its next: how old a value on the screen can be.

class PollCycle {
public:
    /// A block of the poll has been read.
    void note(const QString &regType, qint32 address, TimePoint now)
    {
        if (running_ && (regType != regType_ || address != address_))
            return;
        if (running_) {
            latest_ = std::chrono::duration_cast<Micros>(now - start_);
            all_.add(latest_);
        }
        running_ = true;
        regType_ = regType;
        address_ = address;
        start_   = now;
    }

    /// The link or the poll has changed: the cycle in progress does not count.
    void restart() { running_ = false; }

    /// The cycles so far, and the latest one; 0 if there was none.
    const Durations &all() const { return all_; }
    Micros latest() const { return latest_; }

private:
    bool      running_ = false;
    QString   regType_; // of the block with which the cycle began
    qint32    address_ = 0;
    TimePoint start_;
    Durations all_;
    Micros    latest_{0};
};

#endif
