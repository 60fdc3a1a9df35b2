#ifndef PANEL_TERMINAL_TERMINAL_OUTPUT_H
#define PANEL_TERMINAL_TERMINAL_OUTPUT_H

#include "common/descriptor.h"

#include <chrono>
#include <string>

// Bytes on their way to the terminal at standard output, which may take them slowly or, held by its user, not at all:
// nothing here waits for it but finish().

class TerminalOutput {
public:
    TerminalOutput();

    /// Adds `text` to what waits. The program is asked to end if the terminal is gone.
    void send(const std::string &text);

    /// Sends as much of what waits as the terminal takes now. True if nothing is left, here or in its line.
    bool drain();

    /// Forgets what waits and sends `text`, within `limit` at most. What the line still holds goes if it takes longer.
    void finish(const std::string &text, std::chrono::milliseconds limit);

private:
    bool drainWithin(std::chrono::milliseconds limit);

    Descriptor  own_;     // the terminal, opened once more for writing without waiting; -1: that was not allowed
    std::string waiting_;
};

#endif
