#include "log/row_writer.h"

#include <utility>

RowWriter::RowWriter(RowFile &file, std::size_t most) : file_(file), most_(most), thread_([this] { run(); }) {}

void RowWriter::add(SystemTime time, std::string lines)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (waiting_ + lines.size() > most_) {
        ++lost_;
        return;
    }
    waiting_ += lines.size();
    rows_.push_back({time, std::move(lines)});
    changed_.notify_one();
}

void RowWriter::finish()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

void RowWriter::run()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || !rows_.empty(); });
        if (rows_.empty())
            return;
        const Row row = std::move(rows_.front());
        rows_.pop_front();
        lock.unlock();
        file_.write(row.time, row.lines);
        lock.lock();
        waiting_ -= row.lines.size();
    }
}
