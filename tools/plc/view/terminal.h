#ifndef PLC_VIEW_TERMINAL_H
#define PLC_VIEW_TERMINAL_H

#include <string>
#include <termios.h>
#include <vector>

// The terminal on standard output and input: alternate screen, no cursor, keys without echo. Ctrl-C still is a signal.
// The end of the object gives it back as it was.

namespace plc {

struct TerminalSize {
    std::size_t columns;
    std::size_t rows;
};

class Terminal {
public:
    Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;
    ~Terminal();

    /// Whether standard output is a terminal that knows the sequences.
    static bool isUsable();

    /// 80 x 24 if the terminal does not tell.
    static TerminalSize size();

    /// Gives the terminal back before the end of the object.
    void leave();

    /// Shows the rows, of which only those are sent that have changed.
    void show(const std::vector<std::string> &rows);

    /// Has the next show() send everything.
    void forget() { shown.clear(); }

private:
    bool                     isEntered = true;
    bool                     hasInput = false; // standard input is a terminal, `original` is its state
    termios                  original;
    std::vector<std::string> shown;
};

} // namespace plc

#endif
