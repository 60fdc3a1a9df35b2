#ifndef PANEL_LOG_GZIP_H
#define PANEL_LOG_GZIP_H

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// Compression of files that nobody writes any more, while others are being written.

/// What a file is called while it is being compressed; what a kill has left of it is worth nothing.
extern const char GZIP_UNFINISHED[];

/// Puts FILE.gz in the place of FILE, once it is whole on the disk. `isAbandoned` ends it early, and FILE stays.
/// Returns what went wrong; "" for nothing.
std::string gzipFile(const std::string &file, const std::atomic<bool> &isAbandoned);

/// Compresses one file after the other on a thread of its own, which leaves the processor to others.
class Compressor {
public:
    Compressor() = default;
    Compressor(const Compressor &) = delete;
    Compressor &operator=(const Compressor &) = delete;

    /// end(true)
    ~Compressor() { end(true); }

    void add(const std::string &file);

    /// What has gone wrong since the last call.
    std::vector<std::string> takeProblems();

    /// Ends when all is compressed, or at once with `isAbandoned`.
    void end(bool isAbandoned);

private:
    void run();

    std::mutex               mutex_; // guards files_, problems_ and isEnding_
    std::condition_variable  changed_;
    std::deque<std::string>  files_;
    std::vector<std::string> problems_;
    bool                     isEnding_ = false;
    std::atomic<bool>        isAbandoned_{false};
    std::thread              thread_;
};

#endif
