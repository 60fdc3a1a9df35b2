#include "plc/event_queue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace fins {

EventQueue::EventQueue() : fd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (fd_ < 0)
        throw std::runtime_error("the system has no file descriptor left");
}

EventQueue::~EventQueue()
{
    close(fd_);
}

void EventQueue::enqueue(const std::shared_ptr<Target> &target)
{
    if (target->isQueued || (onlyOutcomes_ && !target->tellsOutcomes))
        return;
    target->isQueued = true;
    ready_.push_back(target);
}

// Who waits in dispatch() is told by the condition; the descriptor is for everybody else.
void EventQueue::announce()
{
    if (ready_.empty())
        return;
    if (waiting_ > 0) {
        arrived_.notify_one();
        return;
    }
    if (isSignalled_)
        return;
    const std::uint64_t one = 1;
    isSignalled_ = write(fd_, &one, sizeof one) == sizeof one;
}

// The next target with what it has to tell taken, or null. The last outcomes come however many there are: nobody calls
// again.
std::shared_ptr<Target> EventQueue::next(std::size_t &most)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (ready_.empty() || (most == 0 && !onlyOutcomes_))
        return nullptr;
    most -= most > 0 ? 1 : 0;
    std::shared_ptr<Target> target = std::move(ready_.front());
    ready_.pop_front();
    target->isQueued = false;
    target->take();
    std::uint64_t count = 0;
    if (ready_.empty() && isSignalled_ && read(fd_, &count, sizeof count) == sizeof count)
        isSignalled_ = false;
    return target;
}

bool EventQueue::dispatch(std::chrono::milliseconds wait)
{
    std::size_t most = 0; // what comes while this is delivered waits for the next call
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (delivers_)
            return false;
        if (ready_.empty() && wait.count() > 0) {
            ++waiting_;
            arrived_.wait_for(lock, wait, [this] { return !ready_.empty() || isWoken_; });
            --waiting_;
        }
        if (delivers_)
            return false;
        delivers_ = true;
        most = ready_.size();
    }
    struct Return {
        EventQueue &queue;
        ~Return()
        {
            const std::lock_guard<std::mutex> lock(queue.mutex_);
            queue.delivers_ = false;
            queue.announce();
        }
    } const returning{*this};
    while (const std::shared_ptr<Target> target = next(most))
        target->run();
    return true;
}

void EventQueue::dropAllButOutcomes()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    onlyOutcomes_ = true;
    std::deque<std::shared_ptr<Target>> kept;
    for (std::shared_ptr<Target> &target : ready_) {
        if (target->tellsOutcomes)
            kept.push_back(std::move(target));
    }
    ready_ = std::move(kept);
}

void EventQueue::wakeAll()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    isWoken_ = true;
    arrived_.notify_all();
    announce();
}

bool EventQueue::isEmpty() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return ready_.empty();
}

} // namespace fins
