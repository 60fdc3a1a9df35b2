#ifndef RUNTIME_BASE_SAID_ONCE_H
#define RUNTIME_BASE_SAID_ONCE_H

#include <cstddef>
#include <deque>
#include <string>

// Remembers what was said, so that it is said once. Of more than KEPT texts the one that was said first is forgotten.

class SaidOnce {
public:
    static constexpr std::size_t KEPT = 1000;

    /// True if `text` is not remembered. It is from now on.
    bool isNew(const std::string &text);

    /// Forgets every text that begins with `start`.
    void forget(const std::string &start);

private:
    std::deque<std::string> said_; // the oldest first
};

#endif
