#ifndef PANEL_WATCH_TABLE_VIEW_H
#define PANEL_WATCH_TABLE_VIEW_H

#include "base/messages.h"
#include "table/table_model.h"
#include "terminal/terminal.h"
#include "watch/recent_messages.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// The live table on the terminal: it is drawn several times a second at most, takes the keys, and keeps the course of each
// value and the latest messages.

class TableView {
public:
    static constexpr Millis REDRAW{200};       // not more often
    static constexpr Millis COURSE_STEP{1000}; // between two characters of a course

    using Rows = std::function<std::vector<ValueRow>()>; // the values now, always the same ones in the same order
    using Head = std::function<void(TableContent &content, TimePoint now)>; // fills in what stands in the head

    /// Takes the terminal. All of it outlives this object; the messages come to it alone.
    TableView(ValueEditor &editor, Rows rows, Head head, Messages &messages);

    /// Gives the terminal back and says there what was said last.
    ~TableView();
    TableView(const TableView &) = delete;
    TableView &operator=(const TableView &) = delete;

    /// To be called often: draws when it is time to, or when the screen's size has changed. `q` stops the program.
    void tick();

    /// Value number `value` is good; see TableModel.
    void noteGood(std::size_t value, const std::string &text) { model_.noteGood(value, text); }

private:
    void takeKeys();
    void addCourses(std::vector<ValueRow> &rows, TimePoint now);
    TableContent content(TimePoint now);

    const Rows         rows_;
    const Head         head_;
    Messages          &messages_;
    TableModel         model_;
    const ScreenStyle  style_;
    std::vector<std::vector<double>> courses_;
    RecentMessages     recent_;
    TimePoint          sampleAt_;
    TimePoint          drawAt_;
    std::optional<Terminal> terminal_;
};

/// What a head says of a link that is tried again in so long.
std::string retryText(Clock::duration left);

#endif
