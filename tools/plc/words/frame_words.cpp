#include "words/frame_words.h"

#include "fins/fins_command.h"
#include "fins/fins_frame.h"
#include "fins/fins_tcp.h"

#include <fmt/format.h>

namespace plc {

namespace {

const unsigned ICF_RESPONSE = 0x40;
const unsigned ICF_NO_ANSWER = 0x01;

std::string errorWords(std::uint32_t error)
{
    switch (error) {
    case TCP_NOT_FINS:            return "the header is not FINS";
    case TCP_LENGTH:              return "too long";
    case TCP_UNSUPPORTED_COMMAND: return "command not supported";
    case TCP_ALL_IN_USE:          return "all connections are in use";
    case TCP_NODE_IN_USE:         return "the node is connected already";
    case TCP_ADDRESS_PROTECTED:   return "the client's IP address is not let in";
    case TCP_NODE_OUT_OF_RANGE:   return "client node out of range";
    case TCP_NODE_IS_SERVER:      return "client and server have the same node";
    case TCP_NO_NODE_LEFT:        return "no node is left";
    default:                      return "unknown error";
    }
}

std::string responseWords(Slice fins)
{
    const Slice response = fins.from(FINS_HEADER_SIZE);
    const std::string name = commandName(response.get16(0));
    if (response.size() < COMMAND_CODE + END_CODE)
        return name + ": no end code";
    std::string text = name + ": " + endCodeWords(response.get16(COMMAND_CODE));
    const std::size_t data = response.size() - COMMAND_CODE - END_CODE;
    return data == 0 ? text : text + fmt::format(", {} byte{}", data, data == 1 ? "" : "s");
}

std::string finsWords(Slice fins)
{
    if (fins.size() < FINS_HEADER_SIZE + COMMAND_CODE)
        return fmt::format("FINS frame of {} bytes, too short", fins.size());
    const std::string head = fmt::format("SID {:02X} ", fins.get8(FINS_SID));
    if ((fins.get8(FINS_ICF) & ICF_RESPONSE) != 0)
        return head + responseWords(fins);
    const bool isUnanswered = (fins.get8(FINS_ICF) & ICF_NO_ANSWER) != 0;
    return head + commandWords(fins.from(FINS_HEADER_SIZE)) + (isUnanswered ? ", no response wanted" : "");
}

std::string nodeRequestWords(Slice body)
{
    return body.get32(0) == 0 ? "asks for a node" : fmt::format("asks for node {}", body.get32(0));
}

} // namespace

std::string frameWords(const Bytes &frame)
{
    const Slice bytes(frame);
    const Slice body = bytes.from(TCP_BODY);
    const std::uint32_t error = bytes.get32(TCP_ERROR_CODE);
    const std::string refusal = fmt::format("error {:02X}, {}", error, errorWords(error));
    switch (bytes.get32(TCP_COMMAND)) {
    case TCP_CLIENT_NODE: return nodeRequestWords(body);
    case TCP_SERVER_NODE: return error != TCP_OK ? "node refused: " + refusal
                                                 : fmt::format("client has node {}, PLC node {}", body.get32(0),
                                                               body.get32(4));
    case TCP_FINS_FRAME:  return finsWords(body);
    case TCP_ERROR:       return "error notice: " + refusal;
    case TCP_CONFIRM:     return "confirms the connection";
    default:              return fmt::format("FINS/TCP command {:X}", bytes.get32(TCP_COMMAND));
    }
}

} // namespace plc
