#ifndef PANEL_TERMINAL_TERMINAL_H
#define PANEL_TERMINAL_TERMINAL_H

#include "terminal/keys.h"
#include "terminal/screen.h"
#include "terminal/screen_pace.h"
#include "terminal/terminal_output.h"

#include <csignal>
#include <string>
#include <vector>

// A terminal in full-screen use: alternate screen, cursor hidden, keys without echo. It is given back as it was when
// the object ends, when the program is suspended, and when the program dies of a fatal signal. Plain ANSI sequences.
// Nothing waits for a slow terminal, which shows fewer screens instead, each of them whole.

class Terminal {
public:
    /// Standard output is a terminal. There is one such object at a time.
    Terminal();
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    /// True if standard output can show a live table.
    static bool isUsable();

    ScreenSize size() const;

    /// True if the size may have changed since the last call.
    bool resized();

    /// Sends on what the terminal has not taken yet. To be called often.
    void sendOn() { output_.drain(); }

    /// True if all that was shown has arrived, as far as one can know.
    bool isReady() { return output_.drain() && pace_.mayShow(Clock::now()); }

    /// Shows the lines, once the terminal is ready; only those that changed are sent. Asks the program to end if the
    /// terminal is gone.
    void show(const std::vector<std::string> &lines);

    /// The next key that was pressed, without waiting, or an answer of the terminal.
    Keystroke readKey();

    /// Suspends the program if the user has asked for it; returns when it goes on.
    void suspendIfAsked();

private:
    struct Handled {
        int              number;
        struct sigaction before;
    };

    void handle(int number, void (*handler)(int));
    void enter();
    void leave();
    void awaitAnswer();

    TerminalOutput           output_;
    ScreenPace               pace_;
    bool                     canAsk_ = false; // its answers come in here
    std::vector<std::string> shown_;
    bool                     mustClear_ = false; // before anything else is shown
    std::string              keys_;              // read and not yet understood
    TimePoint                keysAt_;            // when the latest of them came
    std::vector<Handled>     handled_;           // signals, for as long as this object lives
};

/// The bytes that turn the screen `before` into `after`.
std::string screenUpdate(const std::vector<std::string> &before, const std::vector<std::string> &after,
                         ScreenSize size);

#endif
