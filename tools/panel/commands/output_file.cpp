#include "commands/output_file.h"

#include "common/descriptor.h"
#include "common/usage_error.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

namespace {

// A file beside the one that it replaces. It goes with the object unless it has replaced it.
class NewFile {
public:
    explicit NewFile(const std::string &target)
        : target_(target), path_(target.substr(0, target.rfind('/') + 1) + ".fins_panel.XXXXXX"),
          fd_(mkostemp(path_.data(), O_CLOEXEC))
    {
    }

    ~NewFile()
    {
        if (fd_ < 0)
            return;
        const int error = errno;
        close(fd_);
        if (!path_.empty())
            unlink(path_.c_str());
        errno = error;
    }

    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    // Each returns false with errno set.
    bool isOpen() const { return fd_ >= 0; }
    bool setMode(mode_t mode) const { return fchmod(fd_, mode) == 0; }
    bool write(const std::string &text) const { return writeAll(fd_, text) && fsync(fd_) == 0; }
    bool replace()
    {
        if (std::rename(path_.c_str(), target_.c_str()) != 0)
            return false;
        path_.clear();
        return true;
    }

private:
    std::string target_;
    std::string path_;
    int         fd_;
};

mode_t usualMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// A link stays, and what it leads to is replaced.
std::string withoutLinks(const std::string &file)
{
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(file.c_str(), nullptr), &std::free);
    return path ? path.get() : file;
}

bool writeInto(const std::string &file, const std::string &text)
{
    const int fd = open(file.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool written = writeAll(fd, text);
    return close(fd) == 0 && written;
}

} // namespace

void refuseInputs(const std::string &output, const std::vector<std::string> &inputs)
{
    struct stat target = {};
    if (stat(output.c_str(), &target) != 0)
        return;
    for (const std::string &input : inputs) {
        struct stat source = {};
        if (stat(input.c_str(), &source) == 0 && source.st_dev == target.st_dev && source.st_ino == target.st_ino)
            throw UsageError(output + ": --output would replace a file that is read from; name another one");
    }
}

void replaceFile(const std::string &file, const std::string &text)
{
    struct stat old = {};
    const bool exists = stat(file.c_str(), &old) == 0;
    bool done = false;
    if (exists && !S_ISREG(old.st_mode)) {
        done = writeInto(file, text);
    } else {
        NewFile fresh(withoutLinks(file));
        done = fresh.isOpen() && fresh.setMode(exists ? old.st_mode & 07777 : usualMode()) && fresh.write(text)
               && fresh.replace();
    }
    if (!done)
        throw UsageError(file + ": cannot be written: " + std::strerror(errno));
}

void giveOut(const std::string &text, const std::string &output)
{
    if (output.empty())
        std::cout << text;
    else
        replaceFile(output, text);
}
