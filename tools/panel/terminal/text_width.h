#ifndef PANEL_TERMINAL_TEXT_WIDTH_H
#define PANEL_TERMINAL_TEXT_WIDTH_H

#include <cstddef>
#include <string>

// How wide UTF-8 text is on a terminal, whatever the environment says about languages: most characters take one column,
// those of East Asia two, accents that are characters of their own none.

/// Columns that `text` takes. What cannot be shown counts as one.
std::size_t textWidth(const std::string &text);

/// Columns that `text` takes on the screen, attributes not counted.
std::size_t screenWidth(const std::string &text);

/// As much of the beginning of `text` as fits into so many columns.
std::string textStart(const std::string &text, std::size_t columns);

/// The text with a question mark in place of every control character and of every byte that is no UTF-8.
std::string showable(const std::string &text);

#endif
