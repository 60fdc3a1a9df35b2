#include "trace.h"

#include <cstdio>
#include <string>

void traceFrame(char direction, const std::uint8_t *frame, std::size_t size)
{
    static const char HEX[] = "0123456789ABCDEF";
    std::string line(1, direction);
    for (std::size_t i = 0; i < size; ++i) {
        line += ' ';
        line += HEX[frame[i] >> 4];
        line += HEX[frame[i] & 15];
    }
    std::fprintf(stderr, "%s\n", line.c_str());
}

void traceNoReply(const char *text)
{
    std::fprintf(stderr, "< (%s)\n", text);
}
