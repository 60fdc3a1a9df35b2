#include "link/trace.h"

#include "link/frame_text.h"

#include <cstdio>
#include <string>

void traceFrame(TraceMode mode, char direction, const std::uint8_t *frame, std::size_t size)
{
    switch (mode) {
    case TraceMode::NONE:
        return;
    case TraceMode::HEX:
        std::fprintf(stderr, "%c %s\n", direction, hexText(frame, size).c_str());
        return;
    case TraceMode::LINE:
        std::fprintf(stderr, "%c %s\n", direction, frameLine(frame, size).c_str());
        return;
    case TraceMode::FULL:
        std::fprintf(stderr, "%c %s, %zu bytes\n%s", direction, frameLine(frame, size).c_str(), size,
                     frameFields(frame, size).c_str());
        return;
    }
}

void traceNoReply(TraceMode mode, const char *text)
{
    if (mode != TraceMode::NONE)
        std::fprintf(stderr, "< (%s)\n", text);
}
