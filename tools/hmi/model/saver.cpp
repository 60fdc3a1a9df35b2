#include "model/saver.h"

#include "common/descriptor.h"

#include <QtCore/QDateTime>
#include <QtCore/QRunnable>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

// How many files of one second there may be.
static const int MOST_OF_A_SECOND = 100;

Saver::Saver(std::string folder) : folder_(std::move(folder))
{
    pool_.setMaxThreadCount(1);
    if (!folder_.empty() && folder_.back() != '/')
        folder_ += '/';
}

// A recipe's name may hold what a file's may not.
static std::string fileName(std::string name)
{
    for (char &c : name) {
        if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20)
            c = '_';
    }
    return name.empty() || name.front() == '.' ? "_" + name : name;
}

void Saver::save(const std::string &name, const std::string &ending, std::function<std::string()> make,
                 std::function<void(const std::string &line)> onDone)
{
    const std::string path = folder_ + fileName(name) + QDateTime::currentDateTime().toString("-yyyyMMdd-HHmmss").toStdString();
    pool_.start(QRunnable::create([=] {
        const std::string line = writeNewFile(path, ending, make());
        const std::lock_guard<std::mutex> lock(mutex_);
        done_.push_back([=] { onDone(line); });
    }));
}

void Saver::deliver()
{
    std::vector<std::function<void()>> done;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        done.swap(done_);
    }
    for (const std::function<void()> &call : done)
        call();
}

std::string writeNewFile(const std::string &path, const std::string &ending, const std::string &content)
{
    std::string file = path + ending;
    int fd = -1;
    for (int i = 2; i <= MOST_OF_A_SECOND; ++i) {
        fd = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST)
            break;
        file = path + "-" + std::to_string(i) + ending;
    }
    const Descriptor descriptor(fd);
    if (fd >= 0 && writeAll(fd, content) && fsync(fd) == 0)
        return "saved as " + file;
    const std::string reason = std::strerror(errno);
    if (fd >= 0)
        unlink(file.c_str());
    return "not saved: " + file + " cannot be written: " + reason;
}
