#ifndef PANEL_TERMINAL_UTF8_SCOPE_H
#define PANEL_TERMINAL_UTF8_SCOPE_H

#include <locale.h>

// The C library's functions for characters, made to work on UTF-8 whatever the environment says about languages.

/// The C library's tables for UTF-8; null: the system has none.
locale_t utf8Tables();

/// As long as it lives, the thread's characters are those of the tables.
class Utf8Scope {
public:
    Utf8Scope() : before_(uselocale(utf8Tables())) {}
    ~Utf8Scope() { uselocale(before_); }
    Utf8Scope(const Utf8Scope &) = delete;
    Utf8Scope &operator=(const Utf8Scope &) = delete;

private:
    locale_t before_;
};

#endif
