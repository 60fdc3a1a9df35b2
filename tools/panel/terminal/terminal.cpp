#include "terminal/terminal.h"

#include "terminal/stop_flag.h"
#include "terminal/text_width.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>

// Alternate screen, no cursor, no wrapping of long lines; and all of it back. The alternate screen is left empty: some
// terminals bring its lines back when the window has another size than at the start.
static const char ENTER[] = "\033[?1049h\033[?25l\033[?7l\033[2J";
static const char CLEAR[] = "\033[0m\033[2J";
static const char QUESTION[] = "\033[5n"; // is the terminal in order?
static const char LEAVE[] = "\033[0m\033[2J\033[?7h\033[?25h\033[?1049l";

// How long the end of the program waits for a terminal that takes nothing.
static const std::chrono::milliseconds LEAVE_LIMIT(2000);

// After an escape character nothing follows that belongs to it.
static const Millis ESCAPE_PAUSE(100);

static const int FATAL_SIGNALS[] = {SIGQUIT, SIGILL, SIGABRT, SIGBUS, SIGFPE, SIGSEGV};

// What signal handlers look at or set.
static volatile std::sig_atomic_t isEntered  = 0;
static volatile std::sig_atomic_t isResized  = 0;
static volatile std::sig_atomic_t isToSuspend = 0;
static volatile std::sig_atomic_t hasKeys    = 0;
static termios originalKeys;

static void onResize(int)
{
    isResized = 1;
}

static void onSuspend(int)
{
    isToSuspend = 1;
}

// For signal handlers, in which both calls may be made.
static void giveBack()
{
    if (!isEntered)
        return;
    isEntered = 0;
    if (::write(STDOUT_FILENO, LEAVE, sizeof LEAVE - 1) < 0)
        return; // the terminal is gone
    if (hasKeys)
        tcsetattr(STDIN_FILENO, TCSANOW, &originalKeys);
}

static void onFatal(int number)
{
    giveBack();
    std::signal(number, SIG_DFL);
    raise(number);
}

// A signal that is ignored stays so.
void Terminal::handle(int number, void (*handler)(int))
{
    if (isIgnored(number))
        return;
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0; // no SA_RESTART: a wait ends, and the screen follows at once
    handled_.push_back({number, {}});
    sigaction(number, &action, &handled_.back().before);
}

Terminal::Terminal()
{
    handle(SIGWINCH, onResize);
    handle(SIGTSTP, onSuspend);
    for (const int number : FATAL_SIGNALS)
        handle(number, onFatal);
    enter();
}

Terminal::~Terminal()
{
    leave();
    for (const Handled &handled : handled_)
        sigaction(handled.number, &handled.before, nullptr);
}

bool Terminal::isUsable()
{
    const char *type = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && type && *type && std::strcmp(type, "dumb") != 0;
}

static bool isSameFile(int one, int other)
{
    struct stat oneStatus = {};
    struct stat otherStatus = {};
    return fstat(one, &oneStatus) == 0 && fstat(other, &otherStatus) == 0 && oneStatus.st_dev == otherStatus.st_dev
           && oneStatus.st_ino == otherStatus.st_ino;
}

void Terminal::enter()
{
    hasKeys = tcgetattr(STDIN_FILENO, &originalKeys) == 0;
    isEntered = 1;
    if (hasKeys) {
        termios keys = originalKeys;
        keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        keys.c_cc[VMIN]  = 0;
        keys.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &keys);
    }
    shown_.clear();
    mustClear_ = false;
    canAsk_    = hasKeys && isSameFile(STDIN_FILENO, STDOUT_FILENO);
    pace_.restart();
    output_.send(ENTER);
}

// An answer that comes later would be taken for what the user types next.
void Terminal::awaitAnswer()
{
    const TimePoint end = Clock::now() + LEAVE_LIMIT;
    while (canAsk_ && pace_.isAwaited(Clock::now()) && Clock::now() < end) {
        pollfd polled = {STDIN_FILENO, POLLIN, 0};
        ::poll(&polled, 1, 50);
        while (readKey().key != Key::NONE) {
        }
    }
}

// A line that is cut off goes: the sequence that follows begins anew.
void Terminal::leave()
{
    if (!isEntered)
        return;
    isEntered = 0;
    output_.finish(LEAVE, LEAVE_LIMIT);
    awaitAnswer();
    if (hasKeys)
        tcsetattr(STDIN_FILENO, TCSANOW, &originalKeys);
}

ScreenSize Terminal::size() const
{
    winsize window = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0 || window.ws_col == 0 || window.ws_row == 0)
        return {80, 24};
    return {window.ws_col, window.ws_row};
}

bool Terminal::resized()
{
    if (!isResized)
        return false;
    isResized = 0;
    shown_.clear();
    mustClear_ = true;
    return true;
}

void Terminal::show(const std::vector<std::string> &lines)
{
    std::string update = (mustClear_ ? CLEAR : "") + screenUpdate(shown_, lines, size());
    mustClear_ = false;
    shown_     = lines;
    if (update.empty())
        return;
    if (canAsk_)
        update += QUESTION;
    pace_.sent(update.size(), Clock::now());
    output_.send(update);
}

Keystroke Terminal::readKey()
{
    char bytes[64];
    const ssize_t n = hasKeys ? ::read(STDIN_FILENO, bytes, sizeof bytes) : 0;
    const TimePoint now = Clock::now();
    if (n > 0) {
        keys_.append(bytes, static_cast<std::size_t>(n));
        keysAt_ = now;
    }
    Keystroke stroke = takeKey(keys_, now - keysAt_ >= ESCAPE_PAUSE);
    if (stroke.key == Key::ANSWER)
        pace_.answered();
    return stroke;
}

void Terminal::suspendIfAsked()
{
    if (!isToSuspend)
        return;
    isToSuspend = 0;
    leave();
    // The signal's own action, since only that one spares a program that nobody could resume.
    struct sigaction own = {};
    struct sigaction handler = {};
    own.sa_handler = SIG_DFL;
    sigaction(SIGTSTP, &own, &handler);
    raise(SIGTSTP);
    sigaction(SIGTSTP, &handler, nullptr);
    enter();
}

std::string screenUpdate(const std::vector<std::string> &before, const std::vector<std::string> &after,
                         ScreenSize size)
{
    std::string update;
    const std::size_t rows = std::min(size.rows, std::max(before.size(), after.size()));
    for (std::size_t i = 0; i < rows; ++i) {
        const std::string line = i < after.size() ? after[i] : "";
        if (i < before.size() ? before[i] == line : line.empty())
            continue;
        update += "\033[" + std::to_string(i + 1) + ";1H" + line;
        // Behind a line that is as wide as the screen the cursor is still on its last character.
        if (screenWidth(line) < size.columns)
            update += "\033[K";
    }
    return update;
}
