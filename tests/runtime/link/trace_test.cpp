#include "link/trace.h"

#include <gtest/gtest.h>

namespace {

// A node address request: FINS, 12 bytes follow, TCP command 0, no error, client node 0.
const std::uint8_t REQUEST[] = {0x46, 0x49, 0x4E, 0x53, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

std::string traced(TraceMode mode)
{
    ::testing::internal::CaptureStderr();
    traceFrame(mode, '>', REQUEST, sizeof REQUEST);
    traceNoReply(mode, "no reply in time");
    return ::testing::internal::GetCapturedStderr();
}

TEST(Trace, ShowsFramesInTheFormThatIsAskedFor)
{
    EXPECT_EQ(traced(TraceMode::NONE), "");
    EXPECT_EQ(traced(TraceMode::HEX), "> 46 49 4E 53 00 00 00 0C 00 00 00 00 00 00 00 00 00 00 00 00\n"
                                      "< (no reply in time)\n");
    EXPECT_EQ(traced(TraceMode::LINE), "> node address request, client node 0\n"
                                       "< (no reply in time)\n");
    EXPECT_EQ(traced(TraceMode::FULL), "> node address request, client node 0, 20 bytes\n"
                                       "     0  46 49 4E 53  magic           FINS\n"
                                       "     4  00 00 00 0C  length          12 bytes follow\n"
                                       "     8  00 00 00 00  TCP command     node address request\n"
                                       "    12  00 00 00 00  TCP error       none\n"
                                       "    16  00 00 00 00  client node     0\n"
                                       "< (no reply in time)\n");
}

} // namespace
