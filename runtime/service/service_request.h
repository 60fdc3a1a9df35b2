#ifndef RUNTIME_SERVICE_SERVICE_REQUEST_H
#define RUNTIME_SERVICE_SERVICE_REQUEST_H

#include "service/plc_time.h"

#include <cstdint>
#include <vector>

// What a commissioning engineer asks a PLC, as FINS commands beside the driver's. The frames are built here.

/// The service ID of all of them. The driver counts from 0 to 254, so a reply tells whose it is.
constexpr std::uint8_t SERVICE_SID = 0xFF;

struct ServiceRequest {
    std::uint16_t             command;
    std::vector<std::uint8_t> parameters = {};
};

/// The operating modes, as the PLC numbers them.
enum class PlcMode : std::uint8_t { PROGRAM = 0x00, MONITOR = 0x02, RUN = 0x04 };

ServiceRequest askController();
ServiceRequest askStatus();
ServiceRequest askCycleTime();
ServiceRequest askClock();

/// `count` records of the error log, from number `first` on; 0 is the oldest.
ServiceRequest askErrorLog(std::uint16_t first, std::uint16_t count);

ServiceRequest setClock(const PlcTime &time);
ServiceRequest setMode(PlcMode mode);

/// Of all errors; one whose cause remains stays.
ServiceRequest clearErrors();

/// The whole frame, from the FINS/TCP header on.
std::vector<std::uint8_t> serviceFrame(const ServiceRequest &request, int ownNode, int plcNode);

#endif
