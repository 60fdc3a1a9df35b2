#ifndef PANEL_TERMINAL_SCREEN_H
#define PANEL_TERMINAL_SCREEN_H

#include <cstddef>

// What is to be known of a screen before something is drawn for it.

struct ScreenSize {
    std::size_t columns;
    std::size_t rows;

    bool operator==(const ScreenSize &other) const { return columns == other.columns && rows == other.rows; }
};

struct ScreenStyle {
    bool colour; // with ANSI attributes
    bool utf8;   // with characters beyond ASCII, such as blocks
};

/// What the environment says about the terminal: NO_COLOR, and the character set of LC_ALL, LC_CTYPE or LANG.
ScreenStyle styleOfEnvironment();

#endif
