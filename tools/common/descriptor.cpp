#include "common/descriptor.h"

#include <cerrno>

#include <unistd.h>

Descriptor::~Descriptor()
{
    if (fd_ >= 0)
        close(fd_);
}

bool writeAll(int fd, const std::string &text)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t size = write(fd, text.data() + done, text.size() - done);
        if (size < 0 && errno != EINTR)
            return false;
        done += size > 0 ? static_cast<std::size_t>(size) : 0;
    }
    return true;
}
