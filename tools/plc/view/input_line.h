#ifndef PLC_VIEW_INPUT_LINE_H
#define PLC_VIEW_INPUT_LINE_H

#include <string>

// A line that is typed key by key: printable ASCII, backspace, Ctrl-U to clear it, Enter to end it. Sequences of other
// keys are skipped.

namespace plc {

class CommandLine {
public:
    /// Takes one byte. Returns whether it ends the line; then `line` is what was typed, and the next one begins.
    bool take(char key, std::string *line);

    const std::string &text() const { return typed; }

private:
    enum class Escape { NONE, BEGUN, SEQUENCE };

    bool skipEscape(char key);

    std::string typed;
    Escape      escape = Escape::NONE;
};

} // namespace plc

#endif
