#include "link/fins_codes.h"

#include <gtest/gtest.h>

#include <set>

namespace {

struct CodeRow {
    std::uint32_t code;
    const char   *text;
    const char   *hint;
};

void PrintTo(const CodeRow &row, std::ostream *out) { *out << row.text; }

const char CHECK_ROUTES[]   = "check the node addresses and the routing tables of the PLC's Ethernet unit";
const char TRY_AGAIN[]      = "the network or the unit is busy; try again, with a longer --timeout or --interval";
const char READ_ERROR_LOG[] = "read the PLC's error log with the programming software";
const char OTHER_SERIES[]   = "this PLC may be of another series; compare its memory areas with 'fins_panel types'";
const char FEWER_WORDS[]    = "use fewer --words-per-frame; 'fins_panel bench' finds how many the PLC takes";
const char LESS_MEMORY[]    = "this PLC has less memory than the largest one; compare the address with its manual";
const char LIFT_PROTECTION[] =
    "lift the write protection: CPU unit's DIP switch, UM protection or the unit's FINS settings";
const char OTHER_MODE[]     = "the operating mode is not the right one; --allow-mode-change asks for MONITOR mode on a write";
const char DAMAGED[]        = "the request was damaged or the PLC is of another series; look at it with --trace=full";
const char END_PROGRAMMER[] = "wait, or end the programming software that holds the access right";
const char MEND_CAUSE[]     = "mend what causes the error, and clear it again";
const char OTHER_ADDRESS[]  = "give one of the two nodes another address";

// Main code in the high byte, sub-code in the low byte.
const CodeRow END_CODES[] = {
    {0x0001, "the service was cancelled", TRY_AGAIN},
    // 01: local node
    {0x0101, "this node is not in the network", CHECK_ROUTES},
    {0x0102, "token timeout", TRY_AGAIN},
    {0x0103, "too many retries", TRY_AGAIN},
    {0x0104, "too many frames at the same time", TRY_AGAIN},
    {0x0105, "node address out of range", CHECK_ROUTES},
    {0x0106, "node address used twice", OTHER_ADDRESS},
    // 02: destination node
    {0x0201, "the destination node is not in the network", CHECK_ROUTES},
    {0x0202, "there is no unit with this unit address", CHECK_ROUTES},
    {0x0203, "a node on the way to the destination is missing", CHECK_ROUTES},
    {0x0204, "the destination node is busy", TRY_AGAIN},
    {0x0205, "response timeout", TRY_AGAIN},
    // 03: controller
    {0x0301, "communications controller error", READ_ERROR_LOG},
    {0x0302, "CPU unit error", READ_ERROR_LOG},
    {0x0303, "controller error", READ_ERROR_LOG},
    {0x0304, "unit number error", CHECK_ROUTES},
    // 04: service not supported
    {0x0401, "undefined command", OTHER_SERIES},
    {0x0402, "the command is not supported by this model or version", OTHER_SERIES},
    // 05: routing tables
    {0x0501, "the destination address is not in the routing tables", CHECK_ROUTES},
    {0x0502, "there are no routing tables", CHECK_ROUTES},
    {0x0503, "routing table error", CHECK_ROUTES},
    {0x0504, "too many relay points", CHECK_ROUTES},
    // 10: command format
    {0x1001, "the command is too long", FEWER_WORDS},
    {0x1002, "the command is too short", DAMAGED},
    {0x1003, "the number of items differs from the data", DAMAGED},
    {0x1004, "command format error", DAMAGED},
    {0x1005, "header error", DAMAGED},
    // 11: parameters
    {0x1101, "there is no such memory area", OTHER_SERIES},
    {0x1102, "access size error", OTHER_SERIES},
    {0x1103, "the first address is out of range", LESS_MEMORY},
    {0x1104, "the last address is out of range", LESS_MEMORY},
    {0x1106, "there is no such program", READ_ERROR_LOG},
    {0x1109, "relational error", DAMAGED},
    {0x110A, "duplicate data access", TRY_AGAIN},
    {0x110B, "the response is too long", FEWER_WORDS},
    {0x110C, "parameter error", DAMAGED},
    // 20: reading not possible
    {0x2002, "the memory is protected", LIFT_PROTECTION},
    {0x2003, "a table is missing", READ_ERROR_LOG},
    {0x2004, "the data are missing", OTHER_SERIES},
    // 21: writing not possible
    {0x2101, "read-only: the area cannot be written", LIFT_PROTECTION},
    {0x2102, "the area is protected against writing", LIFT_PROTECTION},
    {0x2108, "the area cannot be changed", LIFT_PROTECTION},
    // 22: not in this operating mode
    {0x2201, "not possible during execution", OTHER_MODE},
    {0x2202, "not possible in this operating mode", OTHER_MODE},
    {0x2203, "wrong operating mode: the PLC is in PROGRAM mode", OTHER_MODE},
    {0x2204, "wrong operating mode: the PLC is in DEBUG mode", OTHER_MODE},
    {0x2205, "wrong operating mode: the PLC is in MONITOR mode", OTHER_MODE},
    {0x2206, "wrong operating mode: the PLC is in RUN mode", OTHER_MODE},
    {0x2207, "the node is not the polling node", CHECK_ROUTES},
    {0x2208, "the operating mode does not allow the step", OTHER_MODE},
    // 23: no such device
    {0x2302, "the memory is missing", OTHER_SERIES},
    {0x2303, "the clock is missing", OTHER_SERIES},
    // 25: unit
    {0x2502, "memory error", READ_ERROR_LOG},
    {0x2503, "I/O setting error", READ_ERROR_LOG},
    {0x2504, "too many I/O points", READ_ERROR_LOG},
    {0x2505, "CPU bus error", READ_ERROR_LOG},
    {0x2506, "an I/O number is used twice", READ_ERROR_LOG},
    {0x2507, "I/O bus error", READ_ERROR_LOG},
    {0x250A, "CPU bus unit error", READ_ERROR_LOG},
    {0x250F, "memory error", READ_ERROR_LOG},
    // 26: command
    {0x2604, "the access is protected by a password", LIFT_PROTECTION},
    {0x2605, "the service is being executed for another", TRY_AGAIN},
    {0x2607, "no right to execute the service", END_PROGRAMMER},
    {0x260B, "the cause of the error is still there", MEND_CAUSE},
    // 30: access right, 40: abort
    {0x3001, "another node holds the access right", END_PROGRAMMER},
    {0x4001, "the service was aborted", TRY_AGAIN},
    {0x8000, "relay error on the way to the destination", CHECK_ROUTES},
};

const char LOOK_AT_FRAMES[] = "the PLC did not understand this program; look at the frames with --trace=full";
const char FREE_A_PLACE[]   = "end other programs that are connected, or restart the unit to free dead connections";

// The error code of the FINS/TCP header.
const CodeRow TCP_ERRORS[] = {
    {0x01, "the header does not begin with FINS", LOOK_AT_FRAMES},
    {0x02, "the data are too long", FEWER_WORDS},
    {0x03, "the command is not supported", LOOK_AT_FRAMES},
    {0x20, "all connections of the PLC are in use", FREE_A_PLACE},
    {0x21, "this node is already connected",
     "end the other program with this node address, or wait until the PLC frees the connection"},
    {0x22, "the PLC does not accept connections from this IP address",
     "add this computer's address in the unit's settings, or switch its IP address filter off"},
    {0x23, "the node address of this client is out of range",
     "set the unit to assign node addresses by itself, for the range of its network"},
    {0x24, "the same node address is used by this client and the PLC",
     "give the PLC another node address, or let the unit assign the client's by itself"},
    {0x25, "the PLC has no free node address for this client", FREE_A_PLACE},
};

// As the tools show numbers: upper-case hexadecimal.
std::string hex(std::uint32_t number, int digits)
{
    std::string text;
    for (int shift = 28; shift >= 0; shift -= 4) {
        const std::uint32_t digit = number >> shift & 15;
        if (digit != 0 || !text.empty() || shift < 4 * digits)
            text += "0123456789ABCDEF"[digit];
    }
    return text;
}

class EndCodeTest : public ::testing::TestWithParam<CodeRow> {};
class TcpErrorTest : public ::testing::TestWithParam<CodeRow> {};

const auto NAME = [](const auto &row) { return "code" + hex(row.param.code, 2); };

INSTANTIATE_TEST_SUITE_P(FinsCodes, EndCodeTest, ::testing::ValuesIn(END_CODES), NAME);
INSTANTIATE_TEST_SUITE_P(FinsCodes, TcpErrorTest, ::testing::ValuesIn(TCP_ERRORS), NAME);

} // namespace

TEST_P(EndCodeTest, HasItsTextAndItsHint)
{
    const auto code = static_cast<std::uint16_t>(GetParam().code);
    EXPECT_EQ(endCodeText(code), hex(code, 4) + " (" + GetParam().text + ")");
    EXPECT_EQ(endCodeHint(code), GetParam().hint);
    EXPECT_FALSE(isNormalEnd(code));
}

// Relay error in bit 15, fatal and other CPU unit error in bits 6 and 7.
TEST_P(EndCodeTest, HasThemWithItsFlagsToo)
{
    for (const unsigned flags : {0x8000u, 0x0040u, 0x0080u, 0x80C0u}) {
        const auto code = static_cast<std::uint16_t>(GetParam().code | flags);
        EXPECT_EQ(endCodeText(code), hex(GetParam().code, 4) + " (" + GetParam().text + ")");
        EXPECT_EQ(endCodeHint(code), GetParam().hint);
        EXPECT_FALSE(isNormalEnd(code));
    }
}

TEST_P(TcpErrorTest, HasItsTextAndItsHint)
{
    EXPECT_EQ(tcpErrorText(GetParam().code), hex(GetParam().code, 1) + " (" + GetParam().text + ")");
    EXPECT_EQ(tcpErrorHint(GetParam().code), GetParam().hint);
}

TEST(FinsCodes, EveryOtherEndCodeIsANumber)
{
    std::set<std::uint32_t> known;
    for (const CodeRow &row : END_CODES)
        known.insert(row.code);
    for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
        if ((code & 0x80C0) != 0 || known.count(code) > 0)
            continue;
        ASSERT_EQ(endCodeText(static_cast<std::uint16_t>(code)), hex(code, 4));
        ASSERT_EQ(endCodeHint(static_cast<std::uint16_t>(code)),
                  "look the end code up in the manual of the PLC's Ethernet unit");
    }
    EXPECT_EQ(endCodeText(0x7F0A), "7F0A");
}

TEST(FinsCodes, EveryOtherTcpErrorIsANumber)
{
    for (const std::uint32_t error : {0x00u, 0x04u, 0x1Fu, 0x26u, 0x99u, 0x2000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(tcpErrorText(error), hex(error, 1));
        EXPECT_EQ(tcpErrorHint(error), "look the error code up in the manual of the PLC's Ethernet unit");
    }
    EXPECT_EQ(tcpErrorText(0xFFFFFFFF), "FFFFFFFF");
}

TEST(FinsCodes, TheFlagsOfANormalEndAreNoError)
{
    EXPECT_TRUE(isNormalEnd(0x0000));
    EXPECT_TRUE(isNormalEnd(0x0040));
    EXPECT_TRUE(isNormalEnd(0x0080));
    EXPECT_TRUE(isNormalEnd(0x00C0));
}

// With these the same request may succeed a moment later.
TEST(FinsCodes, TellsWhatPasses)
{
    for (const int code : {0x0001, 0x0102, 0x0103, 0x0104, 0x0204, 0x0205, 0x110A, 0x2605, 0x4001, 0x0244, 0x8000, 0x9103})
        EXPECT_TRUE(isPassing(static_cast<std::uint16_t>(code))) << code;
    for (const int code : {0x0000, 0x0101, 0x0203, 0x1101, 0x1103, 0x1104, 0x110B, 0x2201, 0x3001, 0x7777})
        EXPECT_FALSE(isPassing(static_cast<std::uint16_t>(code))) << code;
}

TEST(FinsCodes, EveryOtherBitIsAnError)
{
    for (unsigned bit = 0; bit < 16; ++bit) {
        const bool isFlag = bit == 6 || bit == 7;
        EXPECT_EQ(isNormalEnd(static_cast<std::uint16_t>(1u << bit)), isFlag) << bit;
    }
}
