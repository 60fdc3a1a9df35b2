#include "base/stop_signal.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

StopSignal::StopSignal() : fd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (fd() < 0)
        throw std::runtime_error("the system has no file descriptor left");
}

void StopSignal::stop()
{
    stopped_.store(true, std::memory_order_release);
    wake();
}

// A counter that is full is readable as well: a failed write loses nothing.
void StopSignal::wake()
{
    const std::uint64_t one = 1;
    const ssize_t written = write(fd(), &one, sizeof one);
    static_cast<void>(written);
}

void StopSignal::clear()
{
    std::uint64_t count = 0;
    if (!isStopped() && read(fd(), &count, sizeof count) < 0)
        return; // nobody had woken it
    if (isStopped())
        wake(); // stop() came in between
}
