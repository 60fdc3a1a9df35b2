#ifndef RUNTIME_PLC_TARGET_H
#define RUNTIME_PLC_TARGET_H

#include "fins_runtime/plc.h"

#include <condition_variable>
#include <mutex>
#include <thread>

// Who is told of events: a subscription, an operation, a listener. It belongs to its handle and to the queue.

namespace fins {

class Target {
public:
    explicit Target(bool isOutcome = false) : tellsOutcomes(isOutcome) {}
    virtual ~Target() = default;
    Target(const Target &) = delete;
    Target &operator=(const Target &) = delete;

    /// Moves what waits to where deliver() finds it. Under the lock of the queue.
    virtual void take() = 0;

    /// Tells the application what take() has taken. Under no lock.
    virtual void deliver() = 0;

    /// A callback threw: what take() has taken and deliver() has not told waits again, before what has come since.
    /// Returns false if that is nothing. Under the lock of the queue.
    virtual bool putBack() { return false; }

    /// Calls deliver(), unless the handle has gone.
    void run();

    /// The handle goes. No deliver() begins any more, and one on another thread has returned.
    void end();

    bool hasEnded() const;

    const bool tellsOutcomes; // is told even when its Plc is destroyed
    bool       isQueued = false; // guarded by the queue
    std::function<void()> onEnd; // called by end(); set before the handle is given out

protected:
    /// Destroys the callbacks, which may own anything, the Plc included. Under no lock, on the thread that ends the
    /// handle, when no deliver() runs or will.
    virtual void letGo() = 0;

private:
    mutable std::mutex      mutex_;
    std::condition_variable returned_;
    std::thread::id         runner_; // of deliver(); none: it does not run
    bool                    hasEnded_ = false;
    bool                    endsInside_ = false; // end() was called inside deliver()
};

} // namespace fins

#endif
