#ifndef PANEL_LOG_ROW_FILE_H
#define PANEL_LOG_ROW_FILE_H

#include "common/descriptor.h"
#include "common/time_text.h"
#include "log/gzip.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// Where rows go: standard output, or a file that is closed from time to time and begun anew. A row is there as a
// whole or not at all.

/// A line for people.
using Say = std::function<void(const std::string &line)>;

/// Appends whole lines, or nothing where that can be taken back. Returns 0, or the number of the error.
int appendLines(int fd, const std::string &lines);

/// Says once that rows are lost, and how many it were when that has ended.
class LostRows {
public:
    LostRows(std::string name, Say say) : name_(std::move(name)), say_(std::move(say)) {}

    /// What became of a row; `problem` is 0, or the number of the error for which it is lost.
    void note(int problem);

    /// Tells of those of which nothing was said yet.
    void finish();

    std::uint64_t all() const { return all_; }

private:
    std::string   name_;
    Say           say_;
    std::uint64_t lost_ = 0; // since rows could be written
    std::uint64_t all_  = 0;
};

/// When a file is closed, and what becomes of it then.
struct Rotation {
    std::uint64_t             size = 0;  // before it gets larger than this; 0: never
    std::chrono::milliseconds every{0};  // at whole multiples of this in UTC; 0: never
    bool                      gzip = false;
    std::size_t               keep = 0;  // of the closed ones at most so many; 0: all
};

class RowFile {
public:
    /// Opens the file, which may have rows of an earlier run; what a power cut has left of a last line is cut off.
    /// One with another heading is closed first. What an earlier run has not compressed is. An empty name is standard
    /// output. Throws UsageError.
    RowFile(const std::string &file, const std::string &heading, const Rotation &rotation, const Say &say,
            SystemTime now);

    /// Writes a row. What goes wrong is said, and the next row is tried again.
    void write(SystemTime time, const std::string &lines);

    /// Ends with the compression, unless `isAbandoned`, and tells what is left to tell.
    void finish(bool isAbandoned);

    std::uint64_t lost() const { return lost_.all(); }

private:
    int openFile();
    void takeUp(SystemTime now);
    std::int64_t periodOf(SystemTime time) const;
    std::uint64_t wholeLines() const;
    bool beginsWithHeading() const;
    bool isFull(SystemTime time, std::size_t more) const;
    int prepare(SystemTime time, std::size_t more);
    void closeFile(SystemTime time);
    std::string closedName(SystemTime time) const;
    std::vector<std::string> closedFiles() const;
    void finishLeftOvers();
    void dropOld();
    void sayProblems();

    const std::string           file_;
    const std::string           heading_;
    const Rotation              rotation_;
    const Say                   say_;
    std::unique_ptr<Descriptor> descriptor_; // null: it could not be opened again
    bool                        isRegular_ = false;
    bool                        isBegun_   = false; // with the heading, where there is one
    std::uint64_t               size_  = 0;
    std::uint64_t               limit_ = 0;  // of size_; 0: none
    std::int64_t                period_ = 0; // of rotation_.every, in which the file was begun
    LostRows                    lost_;
    Compressor                  compressor_;
};

#endif
