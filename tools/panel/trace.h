#ifndef PANEL_TRACE_H
#define PANEL_TRACE_H

#include <cstddef>
#include <cstdint>

// Frames on stderr, one a line: ">" for a request and "<" for a reply, then the bytes in hex.

void traceFrame(char direction, const std::uint8_t *frame, std::size_t size);

/// "< (text)" for a reply that did not come.
void traceNoReply(const char *text);

#endif
