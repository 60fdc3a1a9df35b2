#include "memory_plc.h"

#include <cstddef>
#include <cstdio>
#include <stdexcept>

namespace {

const unsigned char CLIENT_NODE = 0x0A;
const unsigned char SERVER_NODE = 0x32;

int number16(const Bytes &bytes, std::size_t at) { return bytes.at(at) * 256 + bytes.at(at + 1); }

std::string accessText(const char *verb, const Bytes &request)
{
    char text[64];
    std::snprintf(text, sizeof text, "%s %02X %04X %d", verb, static_cast<unsigned>(request.at(28)),
                  static_cast<unsigned>(number16(request, 29)), number16(request, 32));
    std::string line = text;
    if (request.at(31) != 0)
        line += " bit " + std::to_string(request.at(31));
    return line;
}

// The FINS/TCP and FINS headers, the command code and the end code 0000 of a reply; the length is set by `finish`.
Bytes replyHead(const Bytes &request)
{
    Bytes reply = {'F', 'I', 'N', 'S', 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0xC0, 0, 2, 0};
    for (const auto byte : Bytes{CLIENT_NODE, 0, 0, SERVER_NODE, 0})
        reply.push_back(byte);
    for (const auto byte : Bytes{request.at(25), request.at(26), request.at(27), 0, 0})
        reply.push_back(byte);
    return reply;
}

Bytes finish(Bytes reply)
{
    const std::size_t length = reply.size() - 8;
    reply.at(6) = static_cast<unsigned char>(length / 256);
    reply.at(7) = static_cast<unsigned char>(length % 256);
    return reply;
}

int wordAreaOfBits(int area)
{
    switch (area) {
    case 0x30: return 0xB0;
    case 0x31: return 0xB1;
    case 0x32: return 0xB2;
    case 0x33: return 0xB3;
    case 0x02: return 0x82;
    default:   return 0;
    }
}

} // namespace

Bytes MemoryPlc::answer(const Bytes &request)
{
    if (request.size() < 20 || std::string(request.begin(), request.begin() + 4) != "FINS")
        throw std::runtime_error("no FINS/TCP request: " + toHex(request));
    if (request.at(11) == 0) {
        m_log.push_back("handshake");
        return finish({'F', 'I', 'N', 'S', 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, CLIENT_NODE,
                       0, 0, 0, SERVER_NODE});
    }
    m_serviceIds.push_back(request.at(25));
    switch (number16(request, 26)) {
    case 0x0101: return read(request);
    case 0x0102: return write(request);
    case 0x0401: m_log.push_back("run"); return finish(replyHead(request));
    default:     throw std::runtime_error("unknown command: " + toHex(request));
    }
}

Bytes MemoryPlc::read(const Bytes &request)
{
    m_log.push_back(accessText("read", request));
    Bytes reply = replyHead(request);
    for (int i = 0; i < number16(request, 32); ++i) {
        const std::uint16_t value = word(request.at(28), number16(request, 29) + i);
        reply.push_back(static_cast<unsigned char>(value / 256));
        reply.push_back(static_cast<unsigned char>(value % 256));
    }
    return finish(reply);
}

Bytes MemoryPlc::write(const Bytes &request)
{
    m_log.push_back(accessText("write", request));
    const int count = number16(request, 32);
    if (wordAreaOfBits(request.at(28)) != 0) {
        writeBits(request, count);
        return finish(replyHead(request));
    }
    for (int i = 0; i < count; ++i) {
        const int value = number16(request, 34 + 2 * static_cast<std::size_t>(i));
        word(request.at(28), number16(request, 29) + i) = static_cast<std::uint16_t>(value);
    }
    return finish(replyHead(request));
}

void MemoryPlc::writeBits(const Bytes &request, int count)
{
    for (int i = 0; i < count; ++i) {
        const int bit = request.at(31) + i;
        std::uint16_t &value = word(wordAreaOfBits(request.at(28)), number16(request, 29) + bit / 16);
        const int mask = 1 << (bit % 16);
        const bool on = request.at(34 + static_cast<std::size_t>(i)) != 0;
        value = static_cast<std::uint16_t>(on ? value | mask : value & ~mask);
    }
}

std::vector<std::string> MemoryPlc::takeLog()
{
    std::vector<std::string> log;
    log.swap(m_log);
    return log;
}
