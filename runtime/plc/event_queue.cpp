#include "plc/event_queue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace fins {

// How long who waits looks, and how often in one go.
static const std::chrono::microseconds LOOK(60);
static const int LOOKS = 50;

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

// Who waits in dispatch() is told by hasNews_ or, asleep, by the condition; the descriptor is for everybody else. Returns
// true if somebody is to be woken.
bool EventQueue::announce()
{
    if (ready_.empty())
        return false;
    if (waiting_ > 0) {
        hasNews_ = true;
        return sleeping_ > 0;
    }
    const std::uint64_t one = 1;
    if (!isSignalled_)
        isSignalled_ = write(fd_, &one, sizeof one) == sizeof one;
    return false;
}

// The next target with what it has to tell taken, or null. What comes while the `most` are delivered waits for the next
// call, unless there will be none: the Plc is being destroyed.
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

void EventQueue::putBack(const std::shared_ptr<Target> &target)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (target->putBack())
        enqueue(target);
}

bool EventQueue::mayDeliver() const
{
    return deliverer_ == std::thread::id() && (!ready_.empty() || isWoken_);
}

// To fall asleep and to be woken takes as long as a round trip on a quick link, and the thread that wakes pays for most
// of it. So after a short wait the next one begins with looking.
void EventQueue::await(std::unique_lock<std::mutex> &lock, std::chrono::milliseconds wait)
{
    using Steady = std::chrono::steady_clock;
    const Steady::time_point lookEnd = Steady::now() + LOOK;
    ++waiting_;
    while (looksOn_ && !mayDeliver() && Steady::now() < lookEnd) {
        hasNews_ = false;
        lock.unlock();
        for (int i = 0; i < LOOKS && !hasNews_; ++i)
            std::this_thread::yield();
        lock.lock();
    }
    ++sleeping_;
    arrived_.wait_for(lock, wait, [this] { return mayDeliver(); });
    --sleeping_;
    --waiting_;
    looksOn_ = Steady::now() < lookEnd;
}

bool EventQueue::begin(std::chrono::milliseconds wait, std::size_t &most)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (deliverer_ == std::this_thread::get_id())
        return false;
    if (wait.count() > 0 && !mayDeliver())
        await(lock, wait);
    if (deliverer_ != std::thread::id()) {
        if (announce())
            arrived_.notify_one();
        return false;
    }
    deliverer_ = std::this_thread::get_id();
    most = ready_.size();
    return true;
}

void EventQueue::finish()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    deliverer_ = std::thread::id();
    announce();
    arrived_.notify_all();
}

bool EventQueue::dispatch(std::chrono::milliseconds wait)
{
    std::size_t most = 0;
    if (!begin(wait, most))
        return false;
    struct Return {
        EventQueue &queue;
        ~Return() { queue.finish(); }
    } const returning{*this};
    while (const std::shared_ptr<Target> target = next(most)) {
        try {
            target->run();
        } catch (...) {
            putBack(target);
            throw;
        }
    }
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
