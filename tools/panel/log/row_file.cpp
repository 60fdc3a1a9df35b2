#include "log/row_file.h"

#include "common/numbers.h"
#include "common/usage_error.h"
#include "log/grid.h"
#include "terminal/stop_flag.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <regex>
#include <utility>

namespace fs = std::filesystem;

// What was written of a row that does not fit a file is taken back, wherever the descriptor stands then.
static void takeBack(int fd, std::size_t size)
{
    struct stat status = {};
    if (fstat(fd, &status) != 0)
        return;
    const off_t end = status.st_size - static_cast<off_t>(size);
    if (ftruncate(fd, end) == 0)
        lseek(fd, end, SEEK_SET);
}

// Waits until a part of a line can be written, for which nobody may read a pipe any more. Returns 0, or EINTR once the
// program is to end.
static int awaitRoom(int fd)
{
    pollfd waited[] = {{fd, POLLOUT, 0}, {programStop().fd(), POLLIN, 0}};
    while (poll(waited, 2, -1) < 0 || waited[0].revents == 0) {
        if (programStop().isStopped())
            return EINTR;
    }
    return 0;
}

int appendLines(int fd, const std::string &lines)
{
    struct stat status = {};
    const bool isFile      = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    const std::size_t most = isFile ? lines.size() : PIPE_BUF; // which a pipe takes without a wait where it has room
    for (std::size_t done = 0; done < lines.size();) {
        if (!isFile && awaitRoom(fd) != 0)
            return EINTR;
        const ssize_t size = write(fd, lines.data() + done, std::min(lines.size() - done, most));
        if (size > 0) {
            done += static_cast<std::size_t>(size);
            continue;
        }
        if (size < 0 && errno == EINTR && !programStop().isStopped())
            continue;
        const int problem = size < 0 ? errno : ENOSPC;
        if (done > 0 && isFile)
            takeBack(fd, done);
        return problem;
    }
    return 0;
}

// ---- Lost rows ---------------------------------------------------------------------------------------------------

static std::string rowsText(std::uint64_t count)
{
    return counted(count, "row") + (count == 1 ? " was lost" : " were lost");
}

void LostRows::note(int problem)
{
    if (problem == 0 && lost_ > 0)
        say_(name_ + " is written again; " + rowsText(std::exchange(lost_, 0)));
    if (problem == 0)
        return;
    if (lost_ == 0)
        say_(name_ + " cannot be written: " + std::strerror(problem) + "; rows are lost until it can");
    ++lost_;
    ++all_;
}

void LostRows::finish()
{
    if (lost_ > 0)
        say_(name_ + " could not be written any more; " + rowsText(std::exchange(lost_, 0)));
}

// ---- The file ----------------------------------------------------------------------------------------------------

RowFile::RowFile(const std::string &file, const std::string &heading, const Rotation &rotation, const Say &say,
                 SystemTime now)
    : file_(file), heading_(heading), rotation_(rotation), say_(say), limit_(rotation.size),
      lost_(file.empty() ? "standard output" : file, say)
{
    const int problem = openFile();
    if (problem == EWOULDBLOCK)
        throw UsageError(file + ": another program is logging into it; give another --output");
    if (problem != 0)
        throw UsageError(file + ": " + std::strerror(problem));
    if (!isRegular_)
        return;
    finishLeftOvers();
    if (size_ > 0)
        takeUp(now);
}

// Returns the number of the error; what is open then stays so.
int RowFile::openFile()
{
    const bool isNamed = !file_.empty();
    const int flags    = O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC;
    auto opened = std::make_unique<Descriptor>(isNamed ? open(file_.c_str(), flags, 0644)
                                                       : fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    struct stat status = {};
    if (opened->get() < 0 || fstat(opened->get(), &status) != 0)
        return errno;
    isRegular_ = isNamed && S_ISREG(status.st_mode);
    if (isRegular_ && flock(opened->get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return errno;
    size_    = isRegular_ ? static_cast<std::uint64_t>(status.st_size) : 0;
    isBegun_ = size_ > 0;
    descriptor_ = std::move(opened);
    return 0;
}

// The rows of an earlier run stay, where those of this one can stand behind them.
void RowFile::takeUp(SystemTime now)
{
    const std::uint64_t whole = wholeLines();
    if (whole == 0 || !beginsWithHeading()) {
        say_(file_ + " does not begin as this log does; it is closed, and begun anew");
        closeFile(now);
        return;
    }
    struct stat status = {};
    fstat(descriptor_->get(), &status);
    period_ = periodOf(std::chrono::system_clock::from_time_t(status.st_mtime));
    // Half a number looks like a number: it is worth less than none.
    if (whole == size_ || ftruncate(descriptor_->get(), static_cast<off_t>(whole)) != 0)
        return;
    say_(file_ + ": its last line was not whole; " + std::to_string(size_ - whole) + " bytes of it are cut off");
    size_ = whole;
}

std::int64_t RowFile::periodOf(SystemTime time) const
{
    return rotation_.every.count() > 0 ? Grid::numberOf(time, rotation_.every) : 0;
}

bool RowFile::beginsWithHeading() const
{
    std::string begin(heading_.size(), '\0');
    const ssize_t size = pread(descriptor_->get(), begin.data(), begin.size(), 0);
    return size == static_cast<ssize_t>(begin.size()) && begin == heading_;
}

// The size up to the end of the last whole line.
std::uint64_t RowFile::wholeLines() const
{
    std::string part(65536, '\0');
    for (std::uint64_t end = size_; end > 0;) {
        const std::uint64_t begin = end > part.size() ? end - part.size() : 0;
        const ssize_t size = pread(descriptor_->get(), part.data(), end - begin, static_cast<off_t>(begin));
        const std::size_t last = size > 0 ? part.rfind('\n', static_cast<std::size_t>(size) - 1) : std::string::npos;
        if (last != std::string::npos)
            return begin + last + 1;
        end = begin;
    }
    return 0;
}

bool RowFile::isFull(SystemTime time, std::size_t more) const
{
    if (!isRegular_ || size_ <= heading_.size())
        return false;
    return (limit_ > 0 && size_ + more > limit_) || periodOf(time) != period_;
}

// Makes the file ready for a row. Returns the number of the error.
int RowFile::prepare(SystemTime time, std::size_t more)
{
    if (descriptor_ && isFull(time, more))
        closeFile(time);
    const int opened = descriptor_ ? 0 : openFile();
    if (opened != 0 || isBegun_)
        return opened;
    period_ = periodOf(time);
    const int problem = appendLines(descriptor_->get(), heading_);
    isBegun_ = problem == 0;
    size_   += isBegun_ ? heading_.size() : 0;
    return problem;
}

void RowFile::write(SystemTime time, const std::string &lines)
{
    sayProblems();
    int problem = prepare(time, lines.size());
    if (problem == 0)
        problem = appendLines(descriptor_->get(), lines);
    if (problem == 0)
        size_ += lines.size();
    if (problem == EPIPE)
        programStop().stop(); // nobody reads them any more
    lost_.note(problem);
}

void RowFile::finish(bool isAbandoned)
{
    compressor_.end(isAbandoned);
    sayProblems();
    lost_.finish();
}

void RowFile::sayProblems()
{
    for (const std::string &problem : compressor_.takeProblems())
        say_(problem);
}

// ---- Closed files ------------------------------------------------------------------------------------------------

// One that cannot be closed is written on, to the same size or for the same time again.
void RowFile::closeFile(SystemTime time)
{
    const std::string closed = closedName(time);
    std::error_code problem;
    fs::rename(file_, closed, problem);
    if (problem) {
        say_(file_ + " cannot be closed: " + problem.message() + "; it is written on");
        limit_ += rotation_.size;
        period_ = periodOf(time);
        return;
    }
    descriptor_.reset();
    size_  = 0;
    limit_ = rotation_.size;
    if (rotation_.gzip)
        compressor_.add(closed);
    dropOld();
}

// STEM-20260301T081530.007Z.csv
std::string RowFile::closedName(SystemTime time) const
{
    const fs::path path(file_);
    std::string stamp = timeText(time);
    stamp.erase(std::remove_if(stamp.begin(), stamp.end(), [](char c) { return c == '-' || c == ':'; }), stamp.end());
    const std::string begin = (path.parent_path() / path.stem()).string() + "-" + stamp;
    std::string name = begin + path.extension().string();
    std::error_code ignored;
    for (int more = 2; fs::exists(name, ignored) || fs::exists(name + ".gz", ignored); ++more)
        name = begin + "-" + std::to_string(more) + path.extension().string();
    return name;
}

static bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The files that were closed, compressed or not, the oldest first.
std::vector<std::string> RowFile::closedFiles() const
{
    static const std::regex STAMP(R"(-\d{8}T\d{6}\.\d{3}Z(-\d+)?)");
    const fs::path path(file_);
    const std::string stem  = path.stem().string();
    std::vector<std::string> files;
    std::error_code ignored;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : ".";
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, ignored)) {
        std::string name = entry.path().filename().string();
        for (const std::string &end : {std::string(GZIP_UNFINISHED), std::string(".gz"), path.extension().string()}) {
            if (endsWith(name, end))
                name.erase(name.size() - end.size());
        }
        if (name.compare(0, stem.size(), stem) == 0 && std::regex_match(name.substr(stem.size()), STAMP))
            files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// What a kill has interrupted is begun anew, once nothing is left of it: the compressor writes under the same names.
void RowFile::finishLeftOvers()
{
    const std::vector<std::string> files = closedFiles();
    for (const std::string &closed : files) {
        std::error_code ignored;
        if (endsWith(closed, GZIP_UNFINISHED))
            fs::remove(closed, ignored);
    }
    for (const std::string &closed : files) {
        if (rotation_.gzip && !endsWith(closed, GZIP_UNFINISHED) && !endsWith(closed, ".gz"))
            compressor_.add(closed);
    }
}

void RowFile::dropOld()
{
    if (rotation_.keep == 0)
        return;
    const std::vector<std::string> closed = closedFiles();
    for (std::size_t i = 0; i + rotation_.keep < closed.size(); ++i) {
        std::error_code ignored;
        fs::remove(closed[i], ignored);
    }
}
