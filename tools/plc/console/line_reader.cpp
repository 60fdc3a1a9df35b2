#include "console/line_reader.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace plc {

LineReader::LineReader(asio::io_context &context, Unit wanted, LineHandler atLine)
    : io(context), unit(wanted), onLine(std::move(atLine)), wakeUp()
{
    if (pipe2(wakeUp, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    thread = std::thread([this] { run(); });
}

LineReader::~LineReader()
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        isStopped = true;
    }
    changed.notify_all();
    ::close(wakeUp[1]);
    thread.join();
    ::close(wakeUp[0]);
}

void LineReader::run()
{
    for (;;) {
        pollfd polled[2] = {{STDIN_FILENO, POLLIN, 0}, {wakeUp[0], POLLIN, 0}};
        if (poll(polled, 2, -1) < 0 && errno != EINTR)
            return;
        if (polled[1].revents != 0)
            return;
        if (polled[0].revents != 0 && !readInput())
            return;
    }
}

// Returns false at the end of the input or of the reader.
bool LineReader::readInput()
{
    char buffer[4096];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count < 0)
        return errno == EINTR || errno == EAGAIN;
    if (count == 0) {
        if (!pending.empty())
            deliver(pending);
        return false;
    }
    if (unit == Unit::BYTES)
        return deliver(std::string(buffer, static_cast<std::size_t>(count)));
    for (ssize_t i = 0; i < count; ++i) {
        if (buffer[i] != '\n') {
            if (pending.size() <= LINE_MAX_BYTES)
                pending += buffer[i];
            continue;
        }
        if (!deliver(pending))
            return false;
        pending.clear();
    }
    return true;
}

// Waits until the line before has been dealt with, so that a flood of lines does not pile up.
bool LineReader::deliver(const std::string &line)
{
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [this] { return isStopped || !isBusy; });
    if (isStopped)
        return false;
    isBusy = true;
    asio::post(io, [this, line] {
        onLine(line);
        const std::lock_guard<std::mutex> done(mutex);
        isBusy = false;
        changed.notify_all();
    });
    return true;
}

} // namespace plc
