#ifndef PLC_CONSOLE_LINE_READER_H
#define PLC_CONSOLE_LINE_READER_H

#include <asio.hpp>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

// Lines of standard input, or bytes as they come, handed over one at a time to the thread that runs the io_context. A
// thread reads them, so that standard input stays as it is (a terminal made non-blocking would stay so for the shell)
// and may be a file.

namespace plc {

class LineReader {
public:
    using LineHandler = std::function<void(const std::string &line)>;

    enum class Unit { LINES, BYTES };

    /// Of a longer line one byte more is handed over, by which it can be told, and the rest thrown away.
    enum : std::size_t { LINE_MAX_BYTES = 65536 };

    LineReader(asio::io_context &context, Unit wanted, LineHandler atLine);
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;
    ~LineReader();

private:
    void run();
    bool readInput();
    bool deliver(const std::string &line);

    asio::io_context       &io;
    Unit                    unit;
    LineHandler             onLine;
    int                     wakeUp[2]; // a pipe: closed at its writing end to stop the thread
    std::string             pending;   // bytes of an unfinished line
    std::mutex              mutex;
    std::condition_variable changed;
    bool                    isBusy = false;    // a line is with the io_context; guarded by mutex
    bool                    isStopped = false; // guarded by mutex
    std::thread             thread;
};

} // namespace plc

#endif
