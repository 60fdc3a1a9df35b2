#ifndef RUNTIME_SERVICE_PLC_ERRORS_H
#define RUNTIME_SERVICE_PLC_ERRORS_H

#include "service/controller.h"
#include "service/plc_time.h"

// The errors of a PLC: those that are there now, and those that it has logged, in words.

/// One text for each bit that is set, the highest first.
std::vector<std::string> fatalTexts(std::uint16_t bits);
std::vector<std::string> nonFatalTexts(std::uint16_t bits);

/// "00F7 (battery)"; the number alone if it is not known.
std::string errorCodeText(std::uint16_t code);

struct LoggedError {
    std::uint16_t code   = 0;
    std::uint16_t detail = 0;
    std::optional<PlcTime> time; // none: the clock was not set
};

struct ErrorLog {
    int room   = 0; // for so many records
    int stored = 0;
    std::vector<LoggedError> records; // those of the answer, the oldest first
};

/// Nothing unless the answer has as many records as it says.
std::optional<ErrorLog> decodeErrorLog(const std::vector<std::uint8_t> &data);

/// "2026-03-01 08:15:30  00F7 0000 (battery)"
std::string loggedText(const LoggedError &record);

#endif
