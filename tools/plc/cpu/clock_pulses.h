#ifndef PLC_CPU_CLOCK_PULSES_H
#define PLC_CPU_CLOCK_PULSES_H

#include <chrono>

// The clock pulses of the CPU unit: bits that are on for the first half of every period of a clock, off for the second.

namespace plc {

/// The word of condition flags and clock pulses in which the pulses are: bits 0 to 4, always on (13), always off (14).
inline unsigned clockPulses(std::chrono::system_clock::time_point time)
{
    using std::chrono::milliseconds;
    struct Pulse {
        unsigned     bit;
        milliseconds period;
    };
    const Pulse PULSES[] = {
        {0, milliseconds(100)}, {1, milliseconds(200)}, {2, milliseconds(1000)}, {3, milliseconds(20)},
        {4, milliseconds(60000)},
    };
    const unsigned ALWAYS_ON = 1u << 13;
    const milliseconds since = std::chrono::floor<milliseconds>(time.time_since_epoch());
    unsigned word = ALWAYS_ON;
    for (const Pulse &pulse : PULSES) {
        const milliseconds phase = (since % pulse.period + pulse.period) % pulse.period;
        word |= phase < pulse.period / 2 ? 1u << pulse.bit : 0u;
    }
    return word;
}

} // namespace plc

#endif
