#include "common/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

// An open file, closed at the end of the block.
class OpenFile {
public:
    // Without O_NONBLOCK the open itself would wait for the writer of a pipe.
    explicit OpenFile(const std::string &file)
        : fd_(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC))
    {
    }

    ~OpenFile()
    {
        if (fd_ >= 0)
            close(fd_);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    int fd() const { return fd_; }

private:
    int fd_;
};

FileContent systemProblem()
{
    return {"", std::strerror(errno)};
}

} // namespace

FileContent readWholeFile(const std::string &file, std::size_t maxBytes)
{
    const OpenFile opened(file);
    struct stat kind = {};
    if (opened.fd() < 0 || fstat(opened.fd(), &kind) != 0)
        return systemProblem();
    if (!S_ISREG(kind.st_mode))
        return {"", "is not a regular file; name a file of text"};
    FileContent content;
    char part[65536];
    for (;;) {
        const ssize_t size = read(opened.fd(), part, sizeof part);
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
