#include "recording/recording.h"

#include "cpu/memory.h"

#include <charconv>
#include <fmt/format.h>
#include <sstream>

namespace plc {

namespace {

bool isTime(const std::string &text)
{
    const std::string::size_type point = text.find('.');
    unsigned ignored = 0;
    if (!parseNumber(text.substr(0, point), 999999999, &ignored))
        return false;
    return point == std::string::npos || parseNumber(text.substr(point + 1), 999999999, &ignored);
}

bool parseHex(const std::string &text, Bytes *bytes)
{
    if (text.empty() || text.size() % 2 != 0)
        return false;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        std::uint8_t byte = 0;
        if (std::from_chars(text.data() + i, text.data() + i + 2, byte, 16).ptr != text.data() + i + 2)
            return false;
        bytes->push_back(byte);
    }
    return true;
}

} // namespace

std::string parseRecordedFrame(const std::string &line, RecordedFrame *frame)
{
    std::istringstream words(line);
    std::string time;
    std::string client;
    std::string direction;
    std::string hex;
    std::string rest;
    words >> time >> client >> direction >> hex >> rest;
    RecordedFrame parsed;
    if (!isTime(time))
        return "'" + time + "' is no time; a line is SECONDS CLIENT < or > HEX";
    if (!parseNumber(client, 999999999, &parsed.client))
        return "'" + client + "' is no number of a client";
    if (direction != "<" && direction != ">")
        return "'" + direction + "' is no direction; use < for received and > for sent";
    if (!parseHex(hex, &parsed.bytes))
        return "the frame is not whole bytes in hexadecimal";
    if (!rest.empty())
        return "'" + rest + "' behind the frame is too much; write its bytes without spaces";
    parsed.isRequest = direction == "<";
    *frame = parsed;
    return std::string();
}

std::string hexText(const Bytes &bytes) { return fmt::format("{:02X}", fmt::join(bytes, "")); }

std::string recordedLine(double seconds, unsigned client, char direction, const Bytes &bytes)
{
    return fmt::format("{:.3f} {} {} {}", seconds, client, direction, hexText(bytes));
}

} // namespace plc
