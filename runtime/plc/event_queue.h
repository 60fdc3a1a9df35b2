#ifndef RUNTIME_PLC_EVENT_QUEUE_H
#define RUNTIME_PLC_EVENT_QUEUE_H

#include "plc/target.h"

#include <atomic>
#include <deque>

// The events on their way from the thread of a PLC to the application. What waits lies in the targets, which know how to
// join it; the queue holds the targets in the order in which they got something to tell.

namespace fins {

class EventQueue {
public:
    /// Throws std::runtime_error when the system has no descriptor left.
    EventQueue();
    ~EventQueue();
    EventQueue(const EventQueue &) = delete;
    EventQueue &operator=(const EventQueue &) = delete;

    /// Readable while events wait.
    int fd() const { return fd_; }

    /// Calls `change`, under the lock, which adds to what waits in targets and hands each of these to the function that it
    /// is given.
    template <typename Change>
    void post(Change change)
    {
        bool wakes = false;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            change([this](const std::shared_ptr<Target> &target) { enqueue(target); });
            wakes = announce();
        }
        if (wakes)
            arrived_.notify_one(); // who is woken finds the lock free
    }

    /// Calls `look` under the lock.
    template <typename Look>
    void inspect(Look look) const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        look();
    }

    /// Delivers what waits, after waiting up to `wait` for it and for the call on another thread that delivers, if any.
    /// Returns false when that still delivers then, and at once inside a callback.
    bool dispatch(std::chrono::milliseconds wait);

    /// From now on only outcomes are delivered.
    void dropAllButOutcomes();

    /// Ends a wait of dispatch() without an event.
    void wakeAll();

    bool isEmpty() const;

private:
    void enqueue(const std::shared_ptr<Target> &target);
    bool announce();
    bool mayDeliver() const;
    void await(std::unique_lock<std::mutex> &lock, std::chrono::milliseconds wait);
    bool begin(std::chrono::milliseconds wait, std::size_t &most);
    void finish();
    std::shared_ptr<Target> next(std::size_t &most);
    void putBack(const std::shared_ptr<Target> &target);

    mutable std::mutex      mutex_;
    std::condition_variable arrived_;
    int                     fd_;
    bool                    isSignalled_ = false; // fd_ is readable
    std::atomic<bool>       hasNews_{false};      // for those who wait and look
    int                     waiting_     = 0;     // calls of dispatch() that wait
    int                     sleeping_    = 0;     // of these, that look no more
    bool                    looksOn_     = false; // the latest wait was short
    bool                    isWoken_     = false;
    std::thread::id         deliverer_;           // none: nobody delivers
    bool                    onlyOutcomes_ = false;
    std::deque<std::shared_ptr<Target>> ready_;
};

} // namespace fins

#endif
