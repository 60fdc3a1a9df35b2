#ifndef PANEL_WATCH_WATCH_VIEW_H
#define PANEL_WATCH_WATCH_VIEW_H

#include "session/poll_cycle.h"
#include "watch/table_view.h"
#include "watch/watch_editor.h"
#include "watch/watch_writes.h"

#include <string>
#include <vector>

// The live table of a running watch of one PLC: it collects what the table shows.

class WatchView {
public:
    /// `values` watches `tags`, which `book` has resolved; all of it outlives this object.
    WatchView(Runtime &runtime, const TagBook &book, const std::vector<Tag> &tags, WatchValues &values,
              WatchWrites &writes);
    ~WatchView();
    WatchView(const WatchView &) = delete;
    WatchView &operator=(const WatchView &) = delete;

    /// To be called often.
    void tick();

private:
    void measureRate(TimePoint now);
    std::string linkText(TimePoint now) const;
    void fillHead(TableContent &content, TimePoint now) const;

    Runtime           &runtime_;
    WatchValues       &values_;
    WatchEditor        editor_;
    PollCycle          cycle_;
    double             rate_;
    unsigned long      ratedRequests_;
    TimePoint          ratedAt_;
    TableView          table_;
    std::vector<CallHandle> calls_;
};

#endif
