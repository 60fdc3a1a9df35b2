#ifndef RUNTIME_LINK_FRAME_TEXT_H
#define RUNTIME_LINK_FRAME_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

// A FINS/TCP frame in words, for a trace. Frames come from a peer and may be anything: what is missing is said, and
// what is not known is shown as hex.

/// One line without its end: "read DM:100 count 10, sid 1".
std::string frameLine(const std::uint8_t *frame, std::size_t size);

/// A line with its end for each field: offset, bytes, name and meaning.
std::string frameFields(const std::uint8_t *frame, std::size_t size);

/// "46 49 4E 53".
std::string hexText(const std::uint8_t *bytes, std::size_t size);

#endif
