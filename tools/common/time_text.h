#ifndef FINS_COMMON_TIME_TEXT_H
#define FINS_COMMON_TIME_TEXT_H

#include <chrono>
#include <string>

using SystemTime = std::chrono::system_clock::time_point;

/// UTC with milliseconds, as in ISO 8601: 2026-03-01T08:15:30.007Z.
std::string timeText(SystemTime time);

/// "3 s", "12 min", "5 h", "2 d".
std::string ageText(std::chrono::steady_clock::duration age);

#endif
