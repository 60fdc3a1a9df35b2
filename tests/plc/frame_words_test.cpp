#include "words/frame_words.h"

#include <gtest/gtest.h>

namespace {

plc::Bytes bytesOf(const std::string &hex)
{
    plc::Bytes bytes;
    std::string digits;
    for (const char c : hex) {
        if (c != ' ')
            digits += c;
        if (digits.size() == 2) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
            digits.clear();
        }
    }
    return bytes;
}

struct Row {
    const char *hex;
    const char *words;
};

} // namespace

TEST(FrameWordsTest, Commands)
{
    const Row rows[] = {
        {"0101 82 0064 00 000A", "READ DM 100, 10 words"},
        {"0101 30 0000 05 0001", "READ CIO 0.5, 1 bit"},
        {"0101 B1 01FF 00 0001", "READ WR 511, 1 word"},
        {"0101 89 0005 00 0002", "READ T 5, 2 values"},
        {"0101 89 8006 00 0001", "READ C 6, 1 value"},
        {"0101 09 8006 00 0001", "READ C 6, 1 flag"},
        {"0101 AC 0007 00 0003", "READ EC 7, 3 words"},
        {"0101 E8 0001 0F 0001", "READ E18 1.15, 1 bit"},
        {"0101 55 0064 00 000A", "READ area 55 100.0, 10 items"},
        {"0101 82 0064", "READ with 820064"},
        {"0102 82 0064 00 0001 1234", "WRITE DM 100, 1 word"},
        {"0103 82 0064 00 000A BEEF", "FILL DM 100, 10 words with BEEF"},
        {"0104 82 0064 00 30 0001 02", "READ MANY DM 100, CIO 1.2"},
        {"0105 82 0064 00 B1 0003 00 0002", "TRANSFER DM 100 to WR 3, 2 words"},
        {"0401 FFFF 04", "RUN in RUN"},
        {"0401 FFFF 07", "RUN in mode 07"},
        {"0402 FFFF", "STOP with FFFF"},
        {"2102 0000 0014", "ERROR LOG READ with 00000014"},
        {"9999", "command 9999"},
        {"9999 00", "command 9999 with 00"},
        {"0801 00112233445566778899AABBCCDDEEFF 00",
         "LOOPBACK TEST with 00112233445566778899AABBCCDDEEFF... (17 bytes)"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(plc::commandWords(plc::Slice(bytesOf(row.hex))), row.words) << row.hex;
}

TEST(FrameWordsTest, EveryCommandWithoutParameters)
{
    const Row rows[] = {
        {"0101", "READ"},
        {"0102", "WRITE"},
        {"0103", "FILL"},
        {"0104", "READ MANY"},
        {"0105", "TRANSFER"},
        {"0401", "RUN in MONITOR"},
        {"0402", "STOP"},
        {"0501", "CONTROLLER DATA READ"},
        {"0502", "CONNECTION DATA READ"},
        {"0601", "STATUS READ"},
        {"0620", "CYCLE TIME READ"},
        {"0701", "CLOCK READ"},
        {"0702", "CLOCK WRITE"},
        {"0801", "LOOPBACK TEST"},
        {"0920", "MESSAGE READ/CLEAR"},
        {"0C01", "ACCESS RIGHT ACQUIRE"},
        {"0C02", "ACCESS RIGHT TAKE"},
        {"0C03", "ACCESS RIGHT RELEASE"},
        {"2101", "ERROR CLEAR"},
        {"2102", "ERROR LOG READ"},
        {"2103", "ERROR LOG CLEAR"},
        {"2301", "FORCE"},
        {"2302", "FORCE CANCEL"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(plc::commandWords(plc::Slice(bytesOf(row.hex))), row.words);
}

TEST(FrameWordsTest, EveryArea)
{
    const Row rows[] = {
        {"30 0001 0F", "CIO 1.15, 2 bits"},       {"B0 0001 00", "CIO 1, 2 words"},
        {"70 0001 0F", "CIO 1.15, 2 forced bits"}, {"F0 0001 00", "CIO 1, 2 forced words"},
        {"31 0001 0F", "WR 1.15, 2 bits"},        {"B1 0001 00", "WR 1, 2 words"},
        {"71 0001 0F", "WR 1.15, 2 forced bits"}, {"F1 0001 00", "WR 1, 2 forced words"},
        {"32 0001 0F", "HR 1.15, 2 bits"},        {"B2 0001 00", "HR 1, 2 words"},
        {"72 0001 0F", "HR 1.15, 2 forced bits"}, {"F2 0001 00", "HR 1, 2 forced words"},
        {"33 0001 0F", "AR 1.15, 2 bits"},        {"B3 0001 00", "AR 1, 2 words"},
        {"02 0001 0F", "DM 1.15, 2 bits"},        {"82 0001 00", "DM 1, 2 words"},
        {"09 0001 00", "T 1, 2 flags"},           {"89 0001 00", "T 1, 2 values"},
        {"49 0001 00", "T 1, 2 forced flags"},    {"49 8001 00", "C 1, 2 forced flags"},
        {"09 8001 00", "C 1, 2 flags"},           {"89 8001 00", "C 1, 2 values"},
        {"20 0001 0F", "E0 1.15, 2 bits"},        {"A0 0001 00", "E0 1, 2 words"},
        {"2F 0001 0F", "EF 1.15, 2 bits"},        {"AF 0001 00", "EF 1, 2 words"},
        {"E0 0001 0F", "E10 1.15, 2 bits"},       {"60 0001 00", "E10 1, 2 words"},
        {"E8 0001 0F", "E18 1.15, 2 bits"},       {"68 0001 00", "E18 1, 2 words"},
        {"0A 0001 0F", "E 1.15, 2 bits"},         {"98 0001 00", "E 1, 2 words"},
        {"BC 0F00 00", "BANK 0, 2 words"},        {"BC 0201 00", "DR 1, 2 registers"},
        {"DC 0101 00", "IR 1, 2 registers"},      {"07 0001 0F", "CF 1.15, 2 bits"},
        {"06 0001 00", "TK 1, 2 flags"},          {"46 0001 00", "TK 1, 2 statuses"},
        {"BC 01FF 00", "area BC 511.0, 2 items"}, {"82 0001 01", "DM 1.1, 2 words"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(plc::commandWords(plc::Slice(bytesOf("0101" + std::string(row.hex) + "0002"))),
                  "READ " + std::string(row.words));
}

TEST(FrameWordsTest, ManyPlacesAreCounted)
{
    std::string list = "0104";
    for (int i = 0; i < 10; ++i)
        list += " 82 0001 00";
    EXPECT_EQ(plc::commandWords(plc::Slice(bytesOf(list))),
              "READ MANY DM 1, DM 1, DM 1, DM 1, DM 1, DM 1, DM 1, DM 1 and 2 more");
}

TEST(FrameWordsTest, EndCodes)
{
    const struct {
        unsigned    code;
        const char *words;
    } rows[] = {
        {0x0000, "normal end"},
        {0x0040, "0040 normal end, CPU unit has a non-fatal error"},
        {0x1141, "1141 area code unknown, CPU unit has a non-fatal error"},
        {0x00C0, "00C0 normal end, CPU unit has a fatal error"},
        {0x8205, "8205 response timeout, at a relay"}, // 0205 of a unit on the way
        {0x0001, "0001 service cancelled"},
        {0x0101, "0101 local node not in network"},
        {0x0102, "0102 token timeout"},
        {0x0103, "0103 retries failed"},
        {0x0104, "0104 too many send frames"},
        {0x0105, "0105 node address out of range"},
        {0x0106, "0106 node address duplicate"},
        {0x0201, "0201 destination node not in network"},
        {0x0202, "0202 no such unit"},
        {0x0203, "0203 third node not in network"},
        {0x0204, "0204 destination node busy"},
        {0x0205, "0205 response timeout"},
        {0x0301, "0301 communications controller error"},
        {0x0302, "0302 CPU unit error"},
        {0x0303, "0303 controller error"},
        {0x0304, "0304 unit number error"},
        {0x0401, "0401 undefined command"},
        {0x0402, "0402 not supported by this model or version"},
        {0x0501, "0501 destination not in routing table"},
        {0x0502, "0502 no routing table"},
        {0x0503, "0503 routing table error"},
        {0x0504, "0504 too many relays"},
        {0x1001, "1001 command too long"},
        {0x1002, "1002 command too short"},
        {0x1003, "1003 item count does not match data"},
        {0x1004, "1004 format error"},
        {0x1005, "1005 header error"},
        {0x1101, "1101 area code unknown"},
        {0x1102, "1102 access size error"},
        {0x1103, "1103 first address out of range"},
        {0x1104, "1104 end of range exceeded"},
        {0x1105, "1105 access sizes of source and destination differ"},
        {0x1106, "1106 no such program"},
        {0x1109, "1109 item sizes wrong"},
        {0x110A, "110A duplicate access"},
        {0x110B, "110B response too long"},
        {0x110C, "110C wrong parameter"},
        {0x2002, "2002 protected"},
        {0x2003, "2003 table missing"},
        {0x2004, "2004 data missing"},
        {0x2005, "2005 program missing"},
        {0x2006, "2006 file missing"},
        {0x2007, "2007 data mismatch"},
        {0x2101, "2101 read-only"},
        {0x2102, "2102 protected"},
        {0x2103, "2103 cannot register"},
        {0x2105, "2105 program missing"},
        {0x2106, "2106 file missing"},
        {0x2107, "2107 file exists already"},
        {0x2108, "2108 cannot change"},
        {0x2201, "2201 not while executing"},
        {0x2202, "2202 not possible in this mode"},
        {0x2203, "2203 CPU unit is in PROGRAM mode"},
        {0x2204, "2204 CPU unit is in DEBUG mode"},
        {0x2205, "2205 CPU unit is in MONITOR mode"},
        {0x2206, "2206 CPU unit is in RUN mode"},
        {0x2207, "2207 not the polling node"},
        {0x2208, "2208 step not executable"},
        {0x2301, "2301 no file device"},
        {0x2302, "2302 no such memory"},
        {0x2303, "2303 no clock"},
        {0x2401, "2401 table missing"},
        {0x2502, "2502 memory error"},
        {0x2503, "2503 I/O setting error"},
        {0x2504, "2504 too many I/O points"},
        {0x2505, "2505 CPU bus error"},
        {0x2506, "2506 I/O duplicate"},
        {0x2507, "2507 I/O bus error"},
        {0x2509, "2509 SYSMAC BUS/2 error"},
        {0x250A, "250A special or bus unit error"},
        {0x2601, "2601 not protected"},
        {0x2602, "2602 wrong password"},
        {0x2604, "2604 protected"},
        {0x2605, "2605 executing already"},
        {0x2606, "2606 not executing"},
        {0x2607, "2607 no right"},
        {0x2608, "2608 settings incomplete"},
        {0x2609, "2609 items not set"},
        {0x260A, "260A number defined already"},
        {0x260B, "260B error does not clear"},
        {0x3001, "3001 another device has the access right"},
        {0x4001, "4001 aborted"},
        {0x7737, "7737 unknown end code"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(plc::endCodeWords(row.code), row.words);
}

TEST(FrameWordsTest, Frames)
{
    const Row rows[] = {
        {"46494E53 0000000C 00000000 00000000 00000000", "asks for a node"},
        {"46494E53 0000000C 00000000 00000000 00000005", "asks for node 5"},
        {"46494E53 00000010 00000001 00000000 000000EF 00000001", "client has node 239, PLC node 1"},
        {"46494E53 00000010 00000001 00000021 00000000 00000000",
         "node refused: error 21, the node is connected already"},
        {"46494E53 00000008 00000003 00000003", "error notice: error 03, command not supported"},
        {"46494E53 00000008 00000006 00000000", "confirms the connection"},
        {"46494E53 00000008 00000009 00000000", "FINS/TCP command 9"},
        {"46494E53 0000000A 00000002 00000000 8000", "FINS frame of 2 bytes, too short"},
        {"46494E53 00000014 00000002 00000000 81000200010000EF005A 0402", "SID 5A STOP, no response wanted"},
        {"46494E53 00000014 00000002 00000000 C0000200EF000001005A 0402", "SID 5A STOP: no end code"},
        {"46494E53 00000017 00000002 00000000 C0000200EF000001005A 0101 0000 01",
         "SID 5A READ: normal end, 1 byte"},
        {"46494E53 00000016 00000002 00000000 C0000200EF000001005A 0402 2203",
         "SID 5A STOP: 2203 CPU unit is in PROGRAM mode"},
        {"46494E53 00000016 00000002 00000000 C0000200EF000001005A 0401 0000", "SID 5A RUN: normal end"},
        {"46494E53 00000016 00000002 00000000 C0000200EF000001005A 9999 0401",
         "SID 5A command 9999: 0401 undefined command"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(plc::frameWords(bytesOf(row.hex)), row.words) << row.hex;
}
