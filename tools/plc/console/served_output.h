#ifndef PLC_CONSOLE_SERVED_OUTPUT_H
#define PLC_CONSOLE_SERVED_OUTPUT_H

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

// Standard output or standard error for as long as clients are served. A thread writes it, so that who does not read it
// (a pipe that is full, a stopped terminal) keeps no client waiting. What does not fit the space for waiting lines is
// dropped and counted.

namespace plc {

class ServedOutput : private std::streambuf {
public:
    /// Takes the place of the buffer of `stream`, std::cout or std::cerr.
    explicit ServedOutput(std::ostream &stream);
    ServedOutput(const ServedOutput &) = delete;
    ServedOutput &operator=(const ServedOutput &) = delete;
    /// Gives the stream its buffer back, and the waiting lines a second to be taken.
    ~ServedOutput() override;

private:
    struct Queue;

    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char *text, std::streamsize count) override;
    static void run(Queue &queue);

    std::shared_ptr<Queue> queue; // shared with the thread, which may be in the middle of writing at the end
    std::string            line;  // has not ended yet
    std::ostream          &replaced;
    std::streambuf        *original;
};

} // namespace plc

#endif
