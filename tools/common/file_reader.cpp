#include "common/file_reader.h"

#include "common/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

FileContent systemProblem()
{
    return {"", std::strerror(errno)};
}

} // namespace

FileContent readWholeFile(const std::string &file, std::size_t maxBytes)
{
    // Without O_NONBLOCK the open itself would wait for the writer of a pipe.
    const Descriptor opened(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat kind = {};
    if (opened.get() < 0 || fstat(opened.get(), &kind) != 0)
        return systemProblem();
    if (!S_ISREG(kind.st_mode))
        return {"", "is not a regular file; name a file of text"};
    FileContent content;
    char part[65536];
    for (;;) {
        const ssize_t size = read(opened.get(), part, sizeof part);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return systemProblem();
        if (size == 0)
            return content;
        content.text.append(part, static_cast<std::size_t>(size));
        if (content.text.size() > maxBytes)
            return {"", "is larger than " + std::to_string(maxBytes / 1024) + " KiB; use smaller files"};
    }
}
