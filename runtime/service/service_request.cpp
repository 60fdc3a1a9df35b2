#include "service/service_request.h"

#include "link/fins_layout.h"

#include <algorithm>

namespace {

const std::uint32_t TCP_FINS_FRAME = 2;
const std::uint8_t  COMMAND_ICF    = 0x80; // a command, with a response
const std::uint8_t  GATEWAYS       = 0x02;

std::uint8_t high(std::uint16_t value)
{
    return static_cast<std::uint8_t>(value >> 8);
}

std::uint8_t low(std::uint16_t value)
{
    return static_cast<std::uint8_t>(value & 0xFF);
}

void put16(std::uint8_t *at, std::uint16_t value)
{
    at[0] = high(value);
    at[1] = low(value);
}

void put32(std::uint8_t *at, std::uint32_t value)
{
    put16(at, static_cast<std::uint16_t>(value >> 16));
    put16(at + 2, static_cast<std::uint16_t>(value & 0xFFFF));
}

} // namespace

// CPU Unit Data Read: the part with model, version and memory.
ServiceRequest askController()
{
    return {0x0501, {0x00}};
}

// CPU Unit Status Read.
ServiceRequest askStatus()
{
    return {0x0601};
}

// Cycle Time Read: 01 reads, and 00 would begin anew.
ServiceRequest askCycleTime()
{
    return {0x0620, {0x01}};
}

// Clock Read.
ServiceRequest askClock()
{
    return {0x0701};
}

// Error Log Read.
ServiceRequest askErrorLog(std::uint16_t first, std::uint16_t count)
{
    return {0x2102, {high(first), low(first), high(count), low(count)}};
}

// Clock Write.
ServiceRequest setClock(const PlcTime &time)
{
    return {0x0702, clockBytes(time)};
}

// RUN with all programs, or STOP, which needs no program number.
ServiceRequest setMode(PlcMode mode)
{
    if (mode == PlcMode::PROGRAM)
        return {0x0402};
    return {0x0401, {0xFF, 0xFF, static_cast<std::uint8_t>(mode)}};
}

// Error Clear.
ServiceRequest clearErrors()
{
    return {0x2101, {0xFF, 0xFF}};
}

std::vector<std::uint8_t> serviceFrame(const ServiceRequest &request, int ownNode, int plcNode)
{
    const std::size_t size = FINS_SIZE + request.parameters.size();
    std::vector<std::uint8_t> frame(size, 0); // networks and units are 0: the local network, the CPU unit
    const char magic[] = {'F', 'I', 'N', 'S'};
    std::copy(std::begin(magic), std::end(magic), frame.begin() + TCP_MAGIC);
    put32(frame.data() + TCP_LENGTH, static_cast<std::uint32_t>(size - TCP_COMMAND));
    put32(frame.data() + TCP_COMMAND, TCP_FINS_FRAME);
    frame[FINS_ICF] = COMMAND_ICF;
    frame[FINS_GCT] = GATEWAYS;
    frame[FINS_DA1] = static_cast<std::uint8_t>(plcNode);
    frame[FINS_SA1] = static_cast<std::uint8_t>(ownNode);
    frame[FINS_SID] = SERVICE_SID;
    put16(frame.data() + FINS_COMMAND, request.command);
    std::copy(request.parameters.begin(), request.parameters.end(), frame.begin() + FINS_SIZE);
    return frame;
}
