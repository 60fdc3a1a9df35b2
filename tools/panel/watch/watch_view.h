#ifndef PANEL_WATCH_WATCH_VIEW_H
#define PANEL_WATCH_WATCH_VIEW_H

#include "session/poll_cycle.h"
#include "table/table_model.h"
#include "terminal/terminal.h"
#include "watch/recent_messages.h"
#include "watch/watch_editor.h"

#include <optional>
#include <string>
#include <vector>

// The live table of a running watch: it collects what the table shows and draws it several times a second at most.

class WatchView {
public:
    static constexpr Millis REDRAW{200};       // not more often
    static constexpr Millis COURSE_STEP{1000}; // between two characters of a course

    /// `values` watches `tags`, which `book` has resolved; all of it outlives this object.
    WatchView(Runtime &runtime, const TagBook &book, const std::vector<Tag> &tags, WatchValues &values,
              WatchWrites &writes);

    /// Gives the terminal back and says there what was said last.
    ~WatchView();
    WatchView(const WatchView &) = delete;
    WatchView &operator=(const WatchView &) = delete;

    /// To be called often: draws when it is time to, or when the screen's size has changed.
    void tick();

private:
    void takeKeys();
    void sample(TimePoint now);
    void measureRate(TimePoint now);
    std::string linkText(TimePoint now) const;
    ValueRow row(std::size_t index) const;
    std::vector<ValueRow> rows() const;
    TableContent content(TimePoint now);

    Runtime           &runtime_;
    const std::vector<Tag> &tags_;
    WatchValues       &values_;
    WatchEditor        editor_;
    TableModel         model_;
    const ScreenStyle  style_;
    PollCycle          cycle_;
    std::vector<std::vector<double>> courses_;
    RecentMessages     recent_;
    double             rate_;
    unsigned long      ratedRequests_;
    TimePoint          ratedAt_;
    TimePoint          sampleAt_;
    TimePoint          drawAt_;
    std::optional<Terminal> terminal_;
    std::vector<CallHandle> calls_;
};

#endif
