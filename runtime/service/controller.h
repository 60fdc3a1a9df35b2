#ifndef RUNTIME_SERVICE_CONTROLLER_H
#define RUNTIME_SERVICE_CONTROLLER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What the PLC is, and how it is: the answers to the reads of controller data, status and cycle time.

struct Controller {
    std::string model;
    std::string version;
    int  programKwords = 0;
    int  dmWords       = 0;
    int  emBanks       = 0; // but those that hold files
    bool hasCard       = false;
    int  cardKbytes    = 0;
};

/// Nothing if the answer is too short.
std::optional<Controller> decodeController(const std::vector<std::uint8_t> &data);

struct PlcStatus {
    bool          isRunning   = false;
    bool          writesFlash = false;
    bool          hasBattery  = false;
    bool          isStandby   = false;
    std::uint8_t  mode        = 0; // see PlcMode; others are possible
    std::uint16_t fatal       = 0; // a bit for each kind of error
    std::uint16_t nonFatal    = 0;
    std::uint16_t messages    = 0; // a bit for each message of the program that is there
    std::uint16_t errorCode   = 0; // of the most serious error; 0: none
    std::string   errorText;       // that the program gives with it
};

std::optional<PlcStatus> decodeStatus(const std::vector<std::uint8_t> &data);

/// "RUN"; "mode 07" for one that is not known.
std::string modeText(std::uint8_t mode);

/// True if the PLC reports a battery that is missing or too low.
bool hasBatteryError(const PlcStatus &status);

/// In units of 0.1 ms.
struct CycleTime {
    std::uint32_t average = 0;
    std::uint32_t longest = 0;
    std::uint32_t shortest = 0;
};

std::optional<CycleTime> decodeCycleTime(const std::vector<std::uint8_t> &data);

/// "65.0 ms"
std::string cycleText(std::uint32_t tenths);

/// Text of a PLC: up to the first NUL, without the spaces that fill it; '?' for what cannot be shown.
std::string plcText(const std::uint8_t *bytes, std::size_t size);

#endif
