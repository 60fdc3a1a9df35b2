#ifndef PANEL_TERMINAL_KEYS_H
#define PANEL_TERMINAL_KEYS_H

#include <string>

// What a terminal sends when keys are pressed. What a key means is the business of who reads it.

enum class Key { NONE, TEXT, ENTER, ESCAPE, BACKSPACE, UP, DOWN, PAGE_UP, PAGE_DOWN, HOME, END, ANSWER };

struct Keystroke {
    Key         key  = Key::NONE;
    std::string text = ""; // of TEXT: one character in UTF-8
};

/// The keystroke at the front of `keys`, which is removed; NONE if there is no whole one. A lone escape character is
/// the Esc key if nothing is going to follow it, and the beginning of another key otherwise. What is no key is skipped.
Keystroke takeKey(std::string &keys, bool isAll = false);

#endif
