#include "fins_codes.h"

#include <gtest/gtest.h>

TEST(FinsCodes, TheFlagsOfANormalEndAreNoError)
{
    EXPECT_TRUE(isNormalEnd(0x0000));
    EXPECT_TRUE(isNormalEnd(0x0040));
    EXPECT_TRUE(isNormalEnd(0x0080));
    EXPECT_TRUE(isNormalEnd(0x8000));
}

TEST(FinsCodes, EveryOtherBitIsAnError)
{
    for (unsigned bit = 0; bit < 16; ++bit) {
        const bool isFlag = bit == 6 || bit == 7 || bit == 15;
        EXPECT_EQ(isNormalEnd(static_cast<std::uint16_t>(1u << bit)), isFlag) << bit;
    }
}

TEST(FinsCodes, NamesEndCodes)
{
    EXPECT_EQ(endCodeText(0x1103), "1103 (the first address is out of range)");
    EXPECT_EQ(endCodeText(0x2206), "2206 (wrong operating mode: the PLC is in RUN mode)");
    EXPECT_EQ(endCodeText(0x0001), "0001 (the service was cancelled)");
    EXPECT_EQ(endCodeText(0x4001), "4001 (the service was aborted)");
}

TEST(FinsCodes, LeavesTheFlagsOut)
{
    EXPECT_EQ(endCodeText(0x11C3), "1103 (the first address is out of range)");
    EXPECT_EQ(endCodeText(0x9103), "1103 (the first address is out of range)");
}

TEST(FinsCodes, GivesUnknownCodesAsNumbers)
{
    EXPECT_EQ(endCodeText(0x7F0A), "7F0A");
    EXPECT_EQ(tcpErrorText(0x99), "99");
}

TEST(FinsCodes, NamesFinsTcpErrors)
{
    EXPECT_EQ(tcpErrorText(0x20), "20 (all connections of the PLC are in use)");
    EXPECT_EQ(tcpErrorText(0x25), "25 (the PLC has no free node address for this client)");
    EXPECT_EQ(tcpErrorText(0x01), "1 (the header does not begin with FINS)");
}
