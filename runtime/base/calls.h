#ifndef RUNTIME_BASE_CALLS_H
#define RUNTIME_BASE_CALLS_H

#include <functional>
#include <list>
#include <memory>
#include <utility>

// Who is to be told of something, in the order in which they asked for it.

/// Ends what it was given for when its last copy is destroyed; the list must still be there then.
using CallHandle = std::shared_ptr<void>;

template <typename... Arguments>
class Calls {
public:
    using Call = std::function<void(const Arguments &...)>;

    Calls() = default;
    Calls(const Calls &) = delete;
    Calls &operator=(const Calls &) = delete;

    /// Not from inside a call, nor may the handle be destroyed there.
    [[nodiscard]] CallHandle add(Call call)
    {
        const auto at = calls_.insert(calls_.end(), std::move(call));
        return CallHandle(nullptr, [this, at](void *) { calls_.erase(at); });
    }

    void tell(const Arguments &...arguments) const
    {
        for (const Call &call : calls_)
            call(arguments...);
    }

private:
    std::list<Call> calls_;
};

#endif
