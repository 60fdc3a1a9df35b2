#ifndef PANEL_TABLE_EDIT_LINE_H
#define PANEL_TABLE_EDIT_LINE_H

#include "table/typed_text.h"
#include "table/value_editor.h"

#include <string>

// The line in which the new value of a variable is typed, and the question that follows. What is typed is checked with
// every key; nothing is written before the question was on the screen and was answered by y.

class EditLine {
public:
    /// `editor` outlives this object.
    explicit EditLine(ValueEditor &editor) : editor_(editor) {}

    /// Returns why the value cannot be edited; "" if the line is open.
    std::string open(std::size_t value);

    /// Only while the line is open. Returns what is to be said of its end; "" if there is nothing, or it goes on.
    std::string take(const Keystroke &stroke);

    bool isOpen() const { return state_ != State::CLOSED; }

    /// What is on the screen now has been seen.
    void noteShown() { isSeen_ = true; }

    /// What is typed, or the question.
    std::string line() const;

    /// What stands above it: what may be typed, or what is wrong with it.
    std::string remark() const;

private:
    enum class State {
        CLOSED,
        TYPING, // Enter leads to the question if all is right
        ASKING  // any key ends it
    };

    std::string mistake() const;
    std::string answer(const Keystroke &stroke);
    std::string close(const std::string &reason);

    ValueEditor &editor_;
    State        state_  = State::CLOSED;
    std::size_t  value_  = 0;
    TypedText    typed_;
    std::string  wanted_; // as it is asked for
    bool         isSeen_ = false; // the question
};

#endif
