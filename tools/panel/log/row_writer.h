#ifndef PANEL_LOG_ROW_WRITER_H
#define PANEL_LOG_ROW_WRITER_H

#include "log/row_file.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

// Writes rows on a thread of its own: a disk that is slow for a moment delays no other row. What waits is in memory, and
// gone after kill -9.

class RowWriter {
public:
    /// `file` outlives this object and is used by it alone until finish() has returned. Of more than `most` bytes that
    /// wait, rows are lost.
    RowWriter(RowFile &file, std::size_t most);
    RowWriter(const RowWriter &) = delete;
    RowWriter &operator=(const RowWriter &) = delete;

    /// finish()
    ~RowWriter() { finish(); }

    void add(SystemTime time, std::string lines);

    /// Writes what waits, and ends.
    void finish();

    /// Rows for which there was no room, since the disk was too slow.
    std::uint64_t lost() const { return lost_; }

private:
    struct Row {
        SystemTime  time;
        std::string lines;
    };

    void run();

    RowFile                &file_;
    const std::size_t       most_;
    std::mutex              mutex_; // guards rows_, waiting_ and isEnding_
    std::condition_variable changed_;
    std::deque<Row>         rows_;
    std::size_t             waiting_ = 0; // bytes of rows_
    bool                    isEnding_ = false;
    std::uint64_t           lost_ = 0;
    std::thread             thread_;
};

#endif
