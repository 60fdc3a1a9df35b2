#include "fins_codes.h"

#include <cstdio>

namespace {

struct CodeText {
    std::uint32_t code;
    const char   *text;
};

// End codes that a CPU unit or an Ethernet unit gives for the commands that a panel sends.
const CodeText END_CODES[] = {
    {0x0001, "the service was cancelled"},
    {0x0101, "this node is not in the network"},
    {0x0102, "token timeout"},
    {0x0103, "too many retries"},
    {0x0104, "too many frames at the same time"},
    {0x0105, "node address out of range"},
    {0x0106, "node address used twice"},
    {0x0201, "the destination node is not in the network"},
    {0x0202, "there is no unit with this unit address"},
    {0x0204, "the destination node is busy"},
    {0x0205, "response timeout"},
    {0x0301, "communications controller error"},
    {0x0302, "CPU unit error"},
    {0x0304, "unit number error"},
    {0x0401, "undefined command"},
    {0x0402, "the command is not supported by this model or version"},
    {0x0501, "the destination address is not in the routing tables"},
    {0x0502, "there are no routing tables"},
    {0x0503, "routing table error"},
    {0x0504, "too many relay points"},
    {0x1001, "the command is too long"},
    {0x1002, "the command is too short"},
    {0x1003, "the number of items differs from the data"},
    {0x1004, "command format error"},
    {0x1005, "header error"},
    {0x1101, "there is no such memory area"},
    {0x1102, "access size error"},
    {0x1103, "the first address is out of range"},
    {0x1104, "the last address is out of range"},
    {0x1106, "there is no such program"},
    {0x1109, "relational error"},
    {0x110A, "duplicate data access"},
    {0x110B, "the response is too long"},
    {0x110C, "parameter error"},
    {0x2002, "the memory is protected"},
    {0x2003, "a table is missing"},
    {0x2101, "read-only: the area cannot be written"},
    {0x2102, "the area is protected against writing"},
    {0x2108, "the area cannot be changed"},
    {0x2201, "not possible during execution"},
    {0x2202, "not possible while running"},
    {0x2203, "wrong operating mode: the PLC is in PROGRAM mode"},
    {0x2204, "wrong operating mode: the PLC is in DEBUG mode"},
    {0x2205, "wrong operating mode: the PLC is in MONITOR mode"},
    {0x2206, "wrong operating mode: the PLC is in RUN mode"},
    {0x2207, "the node is not the polling node"},
    {0x2208, "the operating mode does not allow the step"},
    {0x2502, "memory error"},
    {0x2503, "I/O setting error"},
    {0x3001, "another node holds the access right"},
    {0x4001, "the service was aborted"},
};

const CodeText TCP_ERRORS[] = {
    {0x01, "the header does not begin with FINS"},
    {0x02, "the data are too long"},
    {0x03, "the command is not supported"},
    {0x20, "all connections of the PLC are in use"},
    {0x21, "this node is already connected"},
    {0x22, "the PLC does not accept connections from this IP address"},
    {0x23, "the node address of this client is out of range"},
    {0x24, "the same node address is used by this client and the PLC"},
    {0x25, "the PLC has no free node address for this client"},
};

template <std::size_t N>
std::string codeText(const CodeText (&table)[N], std::uint32_t code, const char *format)
{
    char number[16];
    std::snprintf(number, sizeof number, format, code);
    for (const CodeText &row : table) {
        if (row.code == code)
            return std::string(number) + " (" + row.text + ")";
    }
    return number;
}

const std::uint16_t FLAGS = 0x80C0;

} // namespace

bool isNormalEnd(std::uint16_t endCode)
{
    return (endCode & ~FLAGS) == 0;
}

std::string endCodeText(std::uint16_t endCode)
{
    return codeText(END_CODES, endCode & static_cast<std::uint32_t>(~FLAGS & 0xFFFF), "%04X");
}

std::string tcpErrorText(std::uint32_t errorCode)
{
    return codeText(TCP_ERRORS, errorCode, "%X");
}
