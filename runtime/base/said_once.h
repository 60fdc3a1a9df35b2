#ifndef RUNTIME_BASE_SAID_ONCE_H
#define RUNTIME_BASE_SAID_ONCE_H

#include <algorithm>
#include <cstddef>
#include <deque>
#include <string>

// Remembers what was said, so that it is said once. Of more than KEPT texts the one that was said first is forgotten.

class SaidOnce {
public:
    static constexpr std::size_t KEPT = 1000;

    /// True if `text` is not remembered. It is from now on.
    bool isNew(const std::string &text)
    {
        if (std::find(said_.begin(), said_.end(), text) != said_.end())
            return false;
        said_.push_back(text);
        if (said_.size() > KEPT)
            said_.pop_front();
        return true;
    }

    /// Forgets every text that begins with `start`.
    void forget(const std::string &start)
    {
        const auto begins = [&start](const std::string &text) { return text.compare(0, start.size(), start) == 0; };
        said_.erase(std::remove_if(said_.begin(), said_.end(), begins), said_.end());
    }

private:
    std::deque<std::string> said_; // the oldest first
};

#endif
