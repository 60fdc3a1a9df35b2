#ifndef PANEL_TABLE_TYPED_TEXT_H
#define PANEL_TABLE_TYPED_TEXT_H

#include "terminal/keys.h"

#include <string>

// A line that is being typed, at its end: a character goes there, and Backspace takes the last one back.

class TypedText {
public:
    static constexpr std::size_t MOST = 500; // bytes

    /// False for a key that is none of a line.
    bool take(const Keystroke &stroke)
    {
        if (stroke.key == Key::BACKSPACE)
            takeBack();
        else if (stroke.key == Key::TEXT && text_.size() < MOST)
            text_ += stroke.text;
        return stroke.key == Key::BACKSPACE || stroke.key == Key::TEXT;
    }

    void clear() { text_.clear(); }
    const std::string &text() const { return text_; }

private:
    void takeBack()
    {
        bool isWithin = true; // a character of several bytes
        while (isWithin && !text_.empty()) {
            isWithin = (static_cast<unsigned char>(text_.back()) & 0xC0) == 0x80;
            text_.pop_back();
        }
    }

    std::string text_;
};

#endif
