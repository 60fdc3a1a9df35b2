#ifndef PLC_CPU_CLOCK_H
#define PLC_CPU_CLOCK_H

#include <chrono>

// The time that the PLC lives in: the machine's, or one that moves by steps alone, so that a run can be repeated
// exactly.

namespace plc {

class Clock {
public:
    using Time = std::chrono::system_clock::time_point;

    /// The machine's time, or that of the steps done.
    Time now() const { return stepped ? time : std::chrono::system_clock::now(); }

    bool isStepped() const { return stepped; }

    /// Leaves the machine's time for good: the clock stands at 2000-01-01 00:00:00 UTC until it is advanced.
    void standStill();

    /// Moves a clock that stands still on.
    void advance(std::chrono::milliseconds passed) { time += passed; }

private:
    bool stepped = false;
    Time time;
};

} // namespace plc

#endif
