#include "service/controller.h"

#include "link/fins_layout.h"
#include "service/service_request.h"

#include <fmt/format.h>

namespace {

// Controller data, first part: offset, size in bytes, field.
enum {
    DATA_MODEL   = 0,  // 20
    DATA_VERSION = 20, // 20
    DATA_PROGRAM = 80, // 2  K words
    DATA_DM      = 83, // 2  words
    DATA_EM      = 86, // 1  banks
    DATA_CARD    = 89, // 1  0: none
    DATA_CARD_K  = 90, // 2
    DATA_SIZE    = 92,
    NAME_SIZE    = 20
};

enum {
    STATUS_BITS      = 0,  // 1
    STATUS_MODE      = 1,  // 1
    STATUS_FATAL     = 2,  // 2
    STATUS_NON_FATAL = 4,  // 2
    STATUS_MESSAGES  = 6,  // 2
    STATUS_CODE      = 8,  // 2
    STATUS_TEXT      = 10, // 16
    STATUS_SIZE      = 26,
    STATUS_TEXT_SIZE = 16
};

enum { BIT_RUNNING = 0x01, BIT_FLASH = 0x02, BIT_BATTERY = 0x04, BIT_STANDBY = 0x80 };

const unsigned BATTERY_ERROR = 1U << 4;

// Average, longest and shortest, 4 bytes each.
const std::size_t CYCLE_SIZE = 12;

} // namespace

std::string plcText(const std::uint8_t *bytes, std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size && bytes[i] != 0; ++i)
        text += bytes[i] >= 0x20 && bytes[i] < 0x7F ? static_cast<char>(bytes[i]) : '?';
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::optional<Controller> decodeController(const std::vector<std::uint8_t> &data)
{
    if (data.size() < DATA_SIZE)
        return std::nullopt;
    Controller controller;
    controller.model         = plcText(&data[DATA_MODEL], NAME_SIZE);
    controller.version       = plcText(&data[DATA_VERSION], NAME_SIZE);
    controller.programKwords = get16(&data[DATA_PROGRAM]);
    controller.dmWords       = get16(&data[DATA_DM]);
    controller.emBanks       = data[DATA_EM];
    controller.hasCard       = data[DATA_CARD] != 0;
    controller.cardKbytes    = get16(&data[DATA_CARD_K]);
    return controller;
}

std::optional<PlcStatus> decodeStatus(const std::vector<std::uint8_t> &data)
{
    if (data.size() != STATUS_SIZE)
        return std::nullopt;
    PlcStatus status;
    status.isRunning   = (data[STATUS_BITS] & BIT_RUNNING) != 0;
    status.writesFlash = (data[STATUS_BITS] & BIT_FLASH) != 0;
    status.hasBattery  = (data[STATUS_BITS] & BIT_BATTERY) != 0;
    status.isStandby   = (data[STATUS_BITS] & BIT_STANDBY) != 0;
    status.mode        = data[STATUS_MODE];
    status.fatal       = get16(&data[STATUS_FATAL]);
    status.nonFatal    = get16(&data[STATUS_NON_FATAL]);
    status.messages    = get16(&data[STATUS_MESSAGES]);
    status.errorCode   = get16(&data[STATUS_CODE]);
    status.errorText   = plcText(&data[STATUS_TEXT], STATUS_TEXT_SIZE);
    return status;
}

std::string modeText(std::uint8_t mode)
{
    switch (static_cast<PlcMode>(mode)) {
    case PlcMode::PROGRAM: return "PROGRAM";
    case PlcMode::MONITOR: return "MONITOR";
    case PlcMode::RUN:     return "RUN";
    }
    return fmt::format("mode {:02X}", mode);
}

bool hasBatteryError(const PlcStatus &status)
{
    return (status.nonFatal & BATTERY_ERROR) != 0;
}

std::optional<CycleTime> decodeCycleTime(const std::vector<std::uint8_t> &data)
{
    if (data.size() != CYCLE_SIZE)
        return std::nullopt;
    return CycleTime{get32(&data[0]), get32(&data[4]), get32(&data[8])};
}

std::string cycleText(std::uint32_t tenths)
{
    return fmt::format("{}.{} ms", tenths / 10, tenths % 10);
}
