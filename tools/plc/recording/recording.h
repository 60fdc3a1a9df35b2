#ifndef PLC_RECORDING_RECORDING_H
#define PLC_RECORDING_RECORDING_H

#include "cpu/bytes.h"

#include <chrono>
#include <cstdint>
#include <fstream>
#include <string>

// A session as text: one line a frame, with the seconds since the start, the number of the client, the direction
// (< received from the client, > sent to it) and the bytes in hexadecimal:
//   0.012 1 < 46494E530000000C000000000000000000000000
// Empty lines and lines that begin with # mean nothing.

namespace plc {

struct RecordedFrame {
    unsigned client = 0;
    bool     isRequest = false; // from the client
    Bytes    bytes;
};

/// Parses one line with a frame. Returns an empty text and sets `frame`, or what is wrong.
std::string parseRecordedFrame(const std::string &line, RecordedFrame *frame);

/// `bytes` as upper-case hexadecimal text without separators.
std::string hexText(const Bytes &bytes);

/// The line of one frame, without its end.
std::string recordedLine(double seconds, unsigned client, char direction, const Bytes &bytes);

/// Writes a recording up to a size, and says on standard error when it ends before the simulator does.
class Recorder {
public:
    /// Opens `path` anew. isOpen() tells whether that was possible.
    Recorder(const std::string &path, std::uint64_t maxBytes);

    bool isOpen() const { return file.is_open(); }

    void add(unsigned client, char direction, const Bytes &bytes);

private:
    using Clock = std::chrono::steady_clock;

    void end(const std::string &reason);

    std::string       name;
    std::ofstream     file;
    std::uint64_t     limit;
    std::uint64_t     written = 0;
    Clock::time_point start = Clock::now();
};

} // namespace plc

#endif
