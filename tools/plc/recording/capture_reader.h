#ifndef PLC_RECORDING_CAPTURE_READER_H
#define PLC_RECORDING_CAPTURE_READER_H

#include "recording/file_owner.h"
#include "recording/recording.h"

#include <functional>
#include <string>

// Reads captures: our own, and those of other programs with IPv4 and TCP over Ethernet, Linux's cooked link layers, or
// nothing. A stream is followed in the order of the capture; what comes again is dropped.

namespace plc {

/// Whether a file that begins with `start` is a capture.
bool isCapture(const std::string &start);

/// Hands every frame to `take`, in order; a client is a connection of the capture. Sets `remark` to what could not be
/// read of it, if anything. Returns an empty text, or what is wrong with the file.
std::string readCapture(FileOwner file, const std::function<void(const RecordedFrame &)> &take, std::string *remark);

} // namespace plc

#endif
