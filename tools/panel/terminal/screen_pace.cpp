#include "terminal/screen_pace.h"

#include <algorithm>

void ScreenPace::sent(std::size_t bytes, TimePoint now)
{
    if (unanswered_ > 0)
        answers_ = false; // not in time
    ++unanswered_;
    const Millis onLine(static_cast<Millis::rep>(1000 * bytes / SLOW_LINE));
    dueAt_ = now + (answers_ ? ANSWER_LIMIT : std::min(onLine, LONGEST_PAUSE));
}

void ScreenPace::answered()
{
    if (unanswered_ == 0)
        return;
    --unanswered_;
    answers_ = true;
}
