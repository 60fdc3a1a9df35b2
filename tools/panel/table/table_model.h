#ifndef PANEL_TABLE_TABLE_MODEL_H
#define PANEL_TABLE_TABLE_MODEL_H

#include "table/edit_line.h"
#include "table/shown_number.h"
#include "table/table_order.h"
#include "table/watch_table.h"
#include "terminal/keys.h"

#include <optional>
#include <string>
#include <vector>

// What the live table shows of the watched values, and what the keys do: filter, order, pause, selection, scrolling, the
// edit of a value. It knows no terminal, no link and no clock.

class TableModel {
public:
    static constexpr Millis NEW_FOR{1500}; // a change is highlighted for so long

    /// `editor` outlives this object.
    explicit TableModel(ValueEditor &editor) : edit_(editor) {}

    /// The values as they are at `now`: always the same ones in the same order. During a pause they are not shown.
    void take(std::vector<ValueRow> rows, TimePoint now);

    /// Value number `value` is good, and so counts for its minimum and maximum. For what lies between two take().
    void noteGood(std::size_t value, const std::string &text);

    void setSize(ScreenSize size) { size_ = size; }

    void press(const Keystroke &stroke);

    /// True once the user wants to leave the table.
    bool wantsEnd() const { return wantsEnd_; }

    /// Fills in what the table shows besides its head and its messages.
    void fill(TableContent &content, TimePoint now);

    /// What fill() gave is on the screen.
    void noteShown() { edit_.noteShown(); }

private:
    // A line of the table: a value or, before one, the heading of its group.
    struct Line {
        std::size_t value;
        bool        isHeading;
    };

    void command(const Keystroke &stroke);
    void giveUp();
    void letter(const std::string &text);
    void typeFilter(const Keystroke &stroke);
    void openEdit();
    void move(Key key);
    void select(Key key);
    void scroll(Key key);
    void bringIntoView(std::size_t line);
    std::size_t page() const { return visibleRows(size_, hasMode()); }

    bool hasMode() const { return isPaused_ || isFiltering_ || !filter_.text().empty() || order_ != RowOrder::GIVEN; }
    std::string modeText(TimePoint now) const;
    std::vector<std::size_t> shownValues();
    std::string headingOf(std::size_t value) const;
    void arrange();
    TableRow rowOf(std::size_t value) const;

    EditLine              edit_;
    ScreenSize            size_ = {80, 24};
    std::vector<ValueRow> rows_;          // as shown
    TimePoint             takenAt_;       // when they were so
    std::vector<Extremes> extremes_;
    std::vector<Extremes> shownExtremes_; // at takenAt_
    std::vector<std::size_t> shown_;      // values in their order on the screen
    std::vector<Line>     lines_;
    std::size_t           first_ = 0;     // the line at the top
    std::optional<std::size_t> selected_; // value
    TypedText             filter_;
    bool                  isFiltering_ = false; // the filter is being typed
    std::string           matched_;       // the filter that `matches_` tells of
    std::vector<bool>     matches_;
    RowOrder              order_    = RowOrder::GIVEN;
    bool                  isPaused_ = false;
    bool                  wantsEnd_ = false;
    std::string           notice_;        // until the next key
    std::string           seenFate_;      // of the latest edit; it is shown no longer
};

#endif
