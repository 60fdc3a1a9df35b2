#ifndef RUNTIME_BASE_CLOCK_H
#define RUNTIME_BASE_CLOCK_H

#include <chrono>

// The time that everything here is measured in, which no change of the time of day moves.

using Clock     = std::chrono::steady_clock;
using TimePoint = Clock::time_point;
using Millis    = std::chrono::milliseconds;
using Micros    = std::chrono::microseconds;

#endif
