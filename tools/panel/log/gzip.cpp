#include "log/gzip.h"

#include "common/descriptor.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

const char GZIP_UNFINISHED[] = ".gz.tmp";

namespace {

// Returns what went wrong.
std::string compress(int from, gzFile to, const std::atomic<bool> &isAbandoned)
{
    char part[65536];
    for (;;) {
        if (isAbandoned)
            return "it was interrupted";
        const ssize_t size = read(from, part, sizeof part);
        if (size < 0 && errno != EINTR)
            return std::strerror(errno);
        if (size == 0)
            return "";
        if (size > 0 && gzwrite(to, part, static_cast<unsigned>(size)) != size)
            return errno != 0 ? std::strerror(errno) : "no space";
    }
}

std::string compressInto(const std::string &file, const std::string &unfinished, const std::atomic<bool> &isAbandoned)
{
    const Descriptor from(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (from.get() < 0)
        return std::strerror(errno);
    const Descriptor to(open(unfinished.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    const int other = to.get() < 0 ? -1 : fcntl(to.get(), F_DUPFD_CLOEXEC, 0); // which gzclose closes
    if (other < 0)
        return std::strerror(errno);
    const gzFile stream = gzdopen(other, "wb");
    if (stream == nullptr) {
        close(other);
        return "no memory";
    }
    std::string problem = compress(from.get(), stream, isAbandoned);
    if (gzclose(stream) != Z_OK && problem.empty())
        problem = errno != 0 ? std::strerror(errno) : "no space";
    if (problem.empty() && fsync(to.get()) != 0)
        problem = std::strerror(errno);
    return problem;
}

} // namespace

std::string gzipFile(const std::string &file, const std::atomic<bool> &isAbandoned)
{
    const std::string unfinished = file + GZIP_UNFINISHED;
    std::string problem = compressInto(file, unfinished, isAbandoned);
    if (problem.empty() && std::rename(unfinished.c_str(), (file + ".gz").c_str()) != 0)
        problem = std::strerror(errno);
    if (problem.empty()) {
        unlink(file.c_str());
        return "";
    }
    unlink(unfinished.c_str());
    return file + " is not compressed: " + problem;
}

void Compressor::add(const std::string &file)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    files_.push_back(file);
    if (!thread_.joinable())
        thread_ = std::thread([this] { run(); });
    changed_.notify_one();
}

std::vector<std::string> Compressor::takeProblems()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(problems_, {});
}

void Compressor::end(bool isAbandoned)
{
    isAbandoned_ = isAbandoned;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

void Compressor::run()
{
    const int least = 19;
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), least); // of this thread alone
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || !files_.empty(); });
        if (files_.empty() || isAbandoned_)
            return;
        const std::string file = files_.front();
        files_.pop_front();
        lock.unlock();
        const std::string problem = gzipFile(file, isAbandoned_);
        lock.lock();
        if (!problem.empty() && !isAbandoned_)
            problems_.push_back(problem);
    }
}
