#ifndef PLC_CONSOLE_ERROR_OUTPUT_H
#define PLC_CONSOLE_ERROR_OUTPUT_H

#include <memory>
#include <streambuf>
#include <string>

// Standard error for as long as clients are served. A thread writes it, so that who does not read it (a pipe that is
// full, a stopped terminal) keeps no client waiting. What does not fit the space for waiting lines is dropped and
// counted.

namespace plc {

class ErrorOutput : private std::streambuf {
public:
    /// Takes the place of std::cerr's buffer.
    ErrorOutput();
    ErrorOutput(const ErrorOutput &) = delete;
    ErrorOutput &operator=(const ErrorOutput &) = delete;
    /// Gives std::cerr its buffer back, and the waiting lines a second to be taken.
    ~ErrorOutput() override;

private:
    struct Queue;

    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char *text, std::streamsize count) override;
    static void run(Queue &queue);

    std::shared_ptr<Queue> queue; // shared with the thread, which may be in the middle of writing at the end
    std::string            line;  // has not ended yet
    std::streambuf        *original;
};

} // namespace plc

#endif
