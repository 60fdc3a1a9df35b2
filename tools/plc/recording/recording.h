#ifndef PLC_RECORDING_RECORDING_H
#define PLC_RECORDING_RECORDING_H

#include "cpu/bytes.h"

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

} // namespace plc

#endif
