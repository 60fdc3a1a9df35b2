#ifndef RUNTIME_SERVICE_PLC_TIME_H
#define RUNTIME_SERVICE_PLC_TIME_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The time of day as a PLC has it: without a zone, by custom the local one.

struct PlcTime {
    int year   = 2000; // 1998 to 2097: the PLC has two digits
    int month  = 1;
    int day    = 1;
    int hour   = 0;
    int minute = 0;
    int second = 0;
};

/// "2026-03-01 08:15:30"
std::string plcTimeText(const PlcTime &time);

/// This computer's local time, whole seconds.
PlcTime localTime(std::chrono::system_clock::time_point time);

/// How far a clock with `time` is ahead of one with `other`. Nothing for a day that does not exist.
std::optional<std::chrono::seconds> aheadBy(const PlcTime &time, const PlcTime &other);

/// A number of two decimal digits in a byte; nothing if it is none, or not from `least` to `most`.
std::optional<int> readBcd(std::uint8_t byte, int least, int most);

/// Year with two digits as 1998 to 2097.
int wholeYear(int twoDigits);

/// Year, month, day, hour, minute, second, day of the week from Sunday = 0 on, two BCD digits each.
std::vector<std::uint8_t> clockBytes(const PlcTime &time);

/// The answer to a read of the clock; nothing if it is no time.
std::optional<PlcTime> decodeClock(const std::vector<std::uint8_t> &data);

#endif
