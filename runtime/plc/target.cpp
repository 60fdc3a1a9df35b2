#include "plc/target.h"

#include <utility>

namespace fins {

void Target::run()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (hasEnded_)
            return;
        runner_ = std::this_thread::get_id();
    }
    struct Return {
        Target &target;
        ~Return()
        {
            bool endsInside = false;
            {
                const std::lock_guard<std::mutex> lock(target.mutex_);
                target.runner_ = std::thread::id();
                target.returned_.notify_all();
                endsInside = target.endsInside_;
            }
            if (endsInside)
                target.letGo();
        }
    } const returning{*this};
    deliver();
}

void Target::end()
{
    bool isInside = false;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        hasEnded_ = true;
        returned_.wait(lock, [this] { return runner_ == std::thread::id() || runner_ == std::this_thread::get_id(); });
        isInside = endsInside_ = runner_ != std::thread::id();
    }
    if (onEnd)
        std::exchange(onEnd, nullptr)();
    if (!isInside)
        letGo();
}

bool Target::hasEnded() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return hasEnded_;
}

Handle::Handle(std::shared_ptr<Target> target) : target_(std::move(target)) {}

Handle &Handle::operator=(Handle &&other) noexcept
{
    if (this == &other)
        return *this;
    const std::shared_ptr<Target> before = std::exchange(target_, std::move(other.target_));
    if (before)
        before->end();
    return *this;
}

Handle::~Handle()
{
    if (target_)
        target_->end();
}

} // namespace fins
