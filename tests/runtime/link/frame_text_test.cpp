#include "link/frame_text.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<std::uint8_t> bytesOf(const std::string &hex)
{
    std::vector<std::uint8_t> bytes;
    std::string digits;
    for (const char c : hex) {
        if (c != ' ')
            digits += c;
    }
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string line(const std::string &hex)
{
    const std::vector<std::uint8_t> bytes = bytesOf(hex);
    return frameLine(bytes.data(), bytes.size());
}

std::string fields(const std::string &hex)
{
    const std::vector<std::uint8_t> bytes = bytesOf(hex);
    return frameFields(bytes.data(), bytes.size());
}

const std::string TCP     = "46494E53 00000000 00000002 00000000";
const std::string COMMAND = TCP + "80 00 02 00 01 00 00 0A 00 07";
const std::string REPLY   = TCP + "C0 00 02 00 0A 00 00 01 00 07";

TEST(FrameLine, NodeAddresses)
{
    EXPECT_EQ(line("46494E53 0000000C 00000000 00000000 00000000"), "node address request, client node 0");
    EXPECT_EQ(line("46494E53 00000010 00000001 00000000 0000000A 00000001"),
              "node address reply, client node 10, PLC node 1");
}

TEST(FrameLine, RefusedNodeAddress)
{
    EXPECT_EQ(line("46494E53 00000010 00000001 00000025 00000000 00000000"),
              "node address reply, client node 0, PLC node 0, "
              "FINS/TCP error 25 (the PLC has no free node address for this client)");
}

TEST(FrameLine, ErrorNotice)
{
    EXPECT_EQ(line("46494E53 00000008 00000003 00000020"),
              "error notice, FINS/TCP error 20 (all connections of the PLC are in use)");
}

TEST(FrameLine, ReadsOfEveryArea)
{
    EXPECT_EQ(line(COMMAND + "0101 82 0064 00 000A"), "read DM:100 count 10, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 B0 0001 00 0001"), "read CIO:1 count 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 B1 0001 00 0001"), "read WR:1 count 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 B2 0001 00 0001"), "read HR:1 count 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 B3 0001 00 0001"), "read AR:1 count 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 89 7FFF 00 0001"), "read T:32767 count 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 89 8005 00 0001"), "read C:5 count 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 99 0005 00 0001"), "read area 99:5 count 1, sid 7");
}

TEST(FrameLine, WritesShowTheirData)
{
    EXPECT_EQ(line(COMMAND + "0102 82 0064 00 0002 1234 5678"), "write DM:100 count 2: 1234 5678, sid 7");
    EXPECT_EQ(line(COMMAND + "0102 30 0064 05 0003 01 00 01"), "write CIO_bit:100.5 count 3: 1 0 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0102 31 0001 0F 0001 01"), "write WR_bit:1.15 count 1: 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0102 32 0001 0F 0001 01"), "write HR_bit:1.15 count 1: 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0102 33 01C0 0F 0001 01"), "write AR_bit:448.15 count 1: 1, sid 7");
    EXPECT_EQ(line(COMMAND + "0102 02 0001 0F 0001 01"), "write DM_bit:1.15 count 1: 1, sid 7");
}

TEST(FrameLine, ModeChanges)
{
    EXPECT_EQ(line(COMMAND + "0401 FFFF 02"), "run in MONITOR mode, sid 7");
    EXPECT_EQ(line(COMMAND + "0401 FFFF 04"), "run in RUN mode, sid 7");
    EXPECT_EQ(line(COMMAND + "0401 FFFF 05"), "run in 05 mode, sid 7");
}

TEST(FrameLine, Replies)
{
    EXPECT_EQ(line(REPLY + "0101 0000 002A FFFF"), "read reply, done: 002A FFFF, sid 7");
    EXPECT_EQ(line(REPLY + "0102 0000"), "write reply, done, sid 7");
    EXPECT_EQ(line(REPLY + "0101 0040 002A"), "read reply, done, with a non-fatal error of the CPU unit: 002A, sid 7");
    EXPECT_EQ(line(REPLY + "0102 0080"), "write reply, done, with a fatal error of the CPU unit, sid 7");
    EXPECT_EQ(line(REPLY + "0102 2143"),
              "write reply, end code 2103, with a non-fatal error of the CPU unit, sid 7");
    EXPECT_EQ(line(REPLY + "0101 1103"), "read reply, end code 1103 (the first address is out of range), sid 7");
    EXPECT_EQ(line(REPLY + "0801 0000"), "command 0801 reply, done, sid 7");
}

// What is asked beside the driver.
TEST(FrameLine, ServiceRequests)
{
    const struct {
        const char *command, *text;
    } rows[] = {{"0402", "stop"}, {"0501", "controller data"}, {"0601", "controller status"}, {"0620", "cycle time"},
                {"0701", "clock"}, {"0702", "set clock"}, {"2101", "clear errors"}, {"2102", "error log"}};
    for (const auto &row : rows) {
        EXPECT_EQ(line(COMMAND + row.command), std::string(row.text) + ", sid 7");
        EXPECT_EQ(line(REPLY + row.command + "0000"), std::string(row.text) + " reply, done, sid 7");
    }
}

TEST(FrameLine, WhatIsMissingIsSaid)
{
    EXPECT_EQ(line(REPLY + "0101 00"), "read reply without an end code, sid 7");
    EXPECT_EQ(line(COMMAND + "0101 82 0064"), "read, sid 7");
    EXPECT_EQ(line(COMMAND + "01"), "FINS frame");
    EXPECT_EQ(line("48545450"), "no FINS/TCP frame: 48 54 54 50");
    EXPECT_EQ(line("46494E53 0000"), "no FINS/TCP frame: 46 49 4E 53 00 00");
    EXPECT_EQ(line(""), "no FINS/TCP frame: ");
    EXPECT_EQ(line("46494E53 00000008 00000009 00000000"), "unknown command 9");
}

TEST(FrameFields, ReadRequest)
{
    EXPECT_EQ(fields("46494E53 0000001A 00000002 00000000 80 00 02 00 01 00 00 0A 00 07 0101 82 0064 00 000A"),
              "     0  46 49 4E 53  magic           FINS\n"
              "     4  00 00 00 1A  length          26 bytes follow\n"
              "     8  00 00 00 02  TCP command     FINS frame\n"
              "    12  00 00 00 00  TCP error       none\n"
              "    16  80           ICF             command\n"
              "    17  00           RSV             0\n"
              "    18  02           GCT             2\n"
              "    19  00           DNA, to net     0\n"
              "    20  01           DA1, to node    1\n"
              "    21  00           DA2, to unit    0\n"
              "    22  00           SNA, from net   0\n"
              "    23  0A           SA1, from node  10\n"
              "    24  00           SA2, from unit  0\n"
              "    25  07           SID, service    7\n"
              "    26  01 01        command         read\n"
              "    28  82           area            DM\n"
              "    29  00 64        word            DM:100\n"
              "    31  00           bit             0\n"
              "    32  00 0A        count           10\n");
}

TEST(FrameFields, ReadReplyWithTwoLinesOfData)
{
    const std::string text = fields(REPLY + "0101 0000 000102030405060708090A0B0C0D0E0F 1011");
    const std::string tail = "    26  01 01        command         read\n"
                             "    28  00 00        end code        done\n"
                             "    30  00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F\n"
                             "    46  10 11\n";
    ASSERT_GE(text.size(), tail.size());
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
    EXPECT_NE(text.find("    16  C0           ICF             response\n"), std::string::npos);
}

TEST(FrameFields, NodeAddressReply)
{
    EXPECT_EQ(fields("46494E53 00000010 00000001 00000023 0000000A 00000001"),
              "     0  46 49 4E 53  magic           FINS\n"
              "     4  00 00 00 10  length          16 bytes follow\n"
              "     8  00 00 00 01  TCP command     node address reply\n"
              "    12  00 00 00 23  TCP error       23 (the node address of this client is out of range)\n"
              "    16  00 00 00 0A  client node     10\n"
              "    20  00 00 00 01  PLC node        1\n");
}

TEST(FrameFields, AFrameCutInAField)
{
    EXPECT_EQ(fields("46494E53 0000"), "     0  46 49 4E 53  magic           FINS\n"
                                       "     4  00 00        length          (the frame ends here)\n");
}

TEST(FrameFields, ModeChange)
{
    const std::string text = fields(COMMAND + "0401 FFFF 02");
    EXPECT_NE(text.find("    28  FF FF        program         FFFF\n    30  02           mode            MONITOR\n"),
              std::string::npos);
}

TEST(HexText, PairsOfDigits)
{
    const std::uint8_t bytes[] = {0x00, 0x9F, 0xFA};
    EXPECT_EQ(hexText(bytes, 3), "00 9F FA");
    EXPECT_EQ(hexText(bytes, 0), "");
}

} // namespace
