#include "terminal/terminal_output.h"

#include "terminal/stop_flag.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

// A terminal that was not opened once more is written to in pieces that it takes at once when it takes anything.
static const std::size_t PIECE = 256;

// A file of its own has a mode of its own: that of standard output is shared with the shell.
TerminalOutput::TerminalOutput() : own_(::open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}

static bool takesBytes(int file, int waitMs)
{
    pollfd polled = {file, POLLOUT, 0};
    return ::poll(&polled, 1, waitMs) > 0;
}

void TerminalOutput::send(const std::string &text)
{
    waiting_ += text;
    drain();
}

bool TerminalOutput::drain()
{
    const int file = own_.get() >= 0 ? own_.get() : STDOUT_FILENO;
    while (!waiting_.empty() && takesBytes(file, 0)) {
        const ssize_t n = ::write(file, waiting_.data(), std::min(waiting_.size(), PIECE));
        if (n > 0) {
            waiting_.erase(0, static_cast<std::size_t>(n));
        } else if (n == 0 || errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            waiting_.clear();
            programStop().stop();
        }
    }
    int inLine = 0;
    return waiting_.empty() && (ioctl(file, TIOCOUTQ, &inLine) != 0 || inLine == 0);
}

bool TerminalOutput::drainWithin(std::chrono::milliseconds limit)
{
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + limit;
    while (!waiting_.empty() && steady_clock::now() < end) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
        takesBytes(own_.get() >= 0 ? own_.get() : STDOUT_FILENO, std::max(0, static_cast<int>(left.count())));
        drain();
    }
    return waiting_.empty();
}

void TerminalOutput::finish(const std::string &text, std::chrono::milliseconds limit)
{
    waiting_ = text;
    drain();
    if (drainWithin(limit))
        return;
    tcflush(STDOUT_FILENO, TCOFLUSH);
    drain();
}
