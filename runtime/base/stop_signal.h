#ifndef RUNTIME_BASE_STOP_SIGNAL_H
#define RUNTIME_BASE_STOP_SIGNAL_H

#include "common/descriptor.h"

#include <atomic>

// Asks a thread that waits for a PLC to end its wait, or to look up from a pause.

class StopSignal {
public:
    /// Throws std::runtime_error when the system has no descriptor left.
    StopSignal();

    /// Asks for the end, for good. From any thread, and from a signal handler.
    void stop();
    bool isStopped() const { return stopped_.load(std::memory_order_acquire); }

    /// Ends the present pause, or the next one. From any thread.
    void wake();

    /// Readable from stop() or wake() on.
    int fd() const { return fd_.get(); }

    /// Takes wake() back; after stop() it does nothing.
    void clear();

private:
    std::atomic<bool> stopped_{false};
    Descriptor        fd_;
};

#endif
