#ifndef PANEL_TERMINAL_SCREEN_PACE_H
#define PANEL_TERMINAL_SCREEN_PACE_H

#include "base/clock.h"

#include <algorithm>
#include <cstddef>

// When the next screen may be sent, so that what is seen is never much older than it looks. What lies between here and
// the terminal can hold many screens, and nobody tells how many: the terminal itself is asked, behind each screen, and
// answers once it has shown it. One that does not answer gets no more than a slow line carries.

class ScreenPace {
public:
    static constexpr std::size_t SLOW_LINE = 960; // bytes a second
    static constexpr Millis LONGEST_PAUSE{3000};  // for a terminal that does not answer
    static constexpr Millis ANSWER_LIMIT{30000};  // for one that has answered before

    /// A screen of so many bytes was sent, with or without a question behind it.
    void sent(std::size_t bytes, TimePoint now)
    {
        if (unanswered_ > 0)
            answers_ = false; // not in time
        ++unanswered_;
        const Millis onLine(static_cast<Millis::rep>(1000 * bytes / SLOW_LINE));
        dueAt_ = now + (answers_ ? ANSWER_LIMIT : std::min(onLine, LONGEST_PAUSE));
    }
    void answered()
    {
        if (unanswered_ == 0)
            return;
        --unanswered_;
        answers_ = true;
    }

    /// What was asked before will not be answered here.
    void restart() { unanswered_ = 0; }

    bool mayShow(TimePoint now) const { return unanswered_ == 0 || now >= dueAt_; }

    /// True if an answer is likely to come yet.
    bool isAwaited(TimePoint now) const { return !mayShow(now); }

private:
    std::size_t unanswered_ = 0; // questions
    bool        answers_    = false;
    TimePoint   dueAt_;          // when the next screen is due without an answer
};

#endif
