#ifndef RUNTIME_LINK_TRACE_H
#define RUNTIME_LINK_TRACE_H

#include <cstddef>
#include <cstdint>

// Frames on stderr, in both directions: ">" for a request and "<" for a reply. Most runs write none: the code lies apart
// from that of an exchange.

enum class TraceMode {
    NONE,
    HEX,  // one line: the bytes in hex
    LINE, // one line: what the frame says
    FULL  // a line for each field of the frame
};

void traceFrame(TraceMode mode, char direction, const std::uint8_t *frame, std::size_t size);

/// "< (text)" for a reply that did not come.
void traceNoReply(TraceMode mode, const char *text);

#endif
