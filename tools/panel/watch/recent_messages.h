#ifndef PANEL_WATCH_RECENT_MESSAGES_H
#define PANEL_WATCH_RECENT_MESSAGES_H

#include "base/messages.h"

#include <cstddef>
#include <list>
#include <string>
#include <vector>

// The latest messages of a program that fills the screen, KEPT of them: each once, where it came last, with how often it
// came.

class RecentMessages {
public:
    static constexpr std::size_t KEPT = 10;

    void add(const Message &message);

    /// The latest lines, the newest last: at most `most`. A hint follows its message, and is left out where there is no
    /// room for both.
    std::vector<std::string> lines(std::size_t most) const;

    /// Says them, and how many there were before, but for those that are said in any case.
    void sayTo(Messages &messages) const;

private:
    struct Entry {
        Message       message;
        unsigned long count;
    };

    static std::string text(const Entry &entry);

    std::list<Entry> entries_;     // the newest last
    unsigned long    dropped_ = 0; // of those that are not said in any case
};

#endif
