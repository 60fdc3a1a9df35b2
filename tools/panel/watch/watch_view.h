#ifndef PANEL_WATCH_WATCH_VIEW_H
#define PANEL_WATCH_WATCH_VIEW_H

#include "session/poll_cycle.h"
#include "terminal/terminal.h"
#include "watch/recent_messages.h"
#include "watch/watch_table.h"

#include <optional>
#include <string>
#include <vector>

// The live table of a running watch: it collects what the table shows and draws it several times a second at most.

class WatchView {
public:
    static constexpr Millis REDRAW{200};       // not more often
    static constexpr Millis NEW_FOR{1500};     // a change is highlighted for so long
    static constexpr Millis COURSE_STEP{1000}; // between two characters of a course

    /// Both outlive this object.
    WatchView(Runtime &runtime, const WatchValues &values);

    /// Gives the terminal back and says there what was said last.
    ~WatchView();
    WatchView(const WatchView &) = delete;
    WatchView &operator=(const WatchView &) = delete;

    /// To be called often: draws when it is time to, or when the screen's size has changed.
    void tick();

private:
    void takeKeys();
    void scroll(Key key);
    void sample(TimePoint now);
    void measureRate(TimePoint now);
    std::string linkText(TimePoint now) const;
    TableRow row(std::size_t index, TimePoint now) const;
    TableContent content(TimePoint now) const;

    Runtime           &runtime_;
    const WatchValues &values_;
    const ScreenStyle   style_;
    PollCycle          cycle_;
    std::vector<std::vector<double>> courses_;
    RecentMessages     recent_;
    std::size_t        first_;
    double             rate_;
    unsigned long      ratedRequests_;
    TimePoint          ratedAt_;
    TimePoint          sampleAt_;
    TimePoint          drawAt_;
    std::optional<Terminal> terminal_;
    std::vector<CallHandle> calls_;
};

#endif
