#ifndef PANEL_LOG_UNITS_H
#define PANEL_LOG_UNITS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

// Times and sizes as people write them.

/// A whole number with its unit: 100ms, 5s, 1min, 1h, 1d. None for anything else, and for 0.
std::optional<std::chrono::milliseconds> parseTime(const std::string &text);

/// A whole number of bytes, or with a unit of 1024, 1024 x 1024 or as many again: 64k, 10M, 1G. None for anything
/// else, and for 0.
std::optional<std::uint64_t> parseSize(const std::string &text);

#endif
