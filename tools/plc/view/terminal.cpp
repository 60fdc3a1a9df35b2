#include "view/terminal.h"

#include "common/descriptor.h"

#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace plc {

namespace {

// Alternate screen, no cursor, no wrapping at the right edge; and back.
const char ENTER[] = "\033[?1049h\033[?25l\033[?7l\033[2J";
const char LEAVE[] = "\033[0m\033[?7h\033[?25h\033[?1049l";

} // namespace

Terminal::Terminal() : original()
{
    hasInput = tcgetattr(STDIN_FILENO, &original) == 0;
    if (hasInput) {
        termios raw = original;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_iflag &= ~static_cast<tcflag_t>(IXON); // a stopped screen would stop the simulator
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        raw.c_cc[VSUSP] = _POSIX_VDISABLE;
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    }
    writeAll(STDOUT_FILENO, ENTER);
}

Terminal::~Terminal() { leave(); }

void Terminal::leave()
{
    if (!isEntered)
        return;
    isEntered = false;
    writeAll(STDOUT_FILENO, LEAVE);
    if (hasInput)
        tcsetattr(STDIN_FILENO, TCSANOW, &original);
}

bool Terminal::isUsable()
{
    const char *const type = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && type && *type && std::string(type) != "dumb";
}

TerminalSize Terminal::size()
{
    winsize window = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0 || window.ws_col == 0 || window.ws_row == 0)
        return {80, 24};
    return {window.ws_col, window.ws_row};
}

void Terminal::show(const std::vector<std::string> &rows)
{
    std::string changes = shown.size() == rows.size() ? "" : "\033[0m\033[2J";
    if (!changes.empty())
        shown.assign(rows.size(), std::string());
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (shown[i] != rows[i])
            changes += "\033[" + std::to_string(i + 1) + ";1H\033[2K" + rows[i];
    shown = rows;
    writeAll(STDOUT_FILENO, changes); // a terminal that is gone takes nothing; its end comes as a signal
}

} // namespace plc
