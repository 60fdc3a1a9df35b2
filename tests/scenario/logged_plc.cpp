#include "logged_plc.h"

#include <cstddef>
#include <cstdio>

namespace {

unsigned number16(const Bytes &bytes, std::size_t at) { return bytes.at(at) * 256u + bytes.at(at + 1); }

std::string accessText(const char *verb, const Bytes &request)
{
    char text[64];
    std::snprintf(text, sizeof text, "%s %02X %04X %u", verb, static_cast<unsigned>(request.at(28)),
                  number16(request, 29), number16(request, 32));
    std::string line = text;
    if (request.at(31) != 0)
        line += " bit " + std::to_string(request.at(31));
    return line;
}

std::string commandText(const Bytes &request)
{
    switch (number16(request, 26)) {
    case 0x0101: return accessText("read", request);
    case 0x0102: return accessText("write", request);
    default:     return "run";
    }
}

} // namespace

Bytes LoggedPlc::answer(const Bytes &request)
{
    const Bytes reply = plc_.answer(request);
    if (request.at(11) == 0) {
        log_.push_back("handshake");
        return reply;
    }
    log_.push_back(commandText(request));
    serviceIds_.push_back(request.at(25));
    return reply;
}

std::vector<std::string> LoggedPlc::takeLog()
{
    std::vector<std::string> log;
    log.swap(log_);
    return log;
}
