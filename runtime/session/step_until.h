#ifndef RUNTIME_SESSION_STEP_UNTIL_H
#define RUNTIME_SESSION_STEP_UNTIL_H

#include "session/runtime.h"

#include <string>

// Work that has an end: the runtime's steps until something holds, or why they ended before.

/// Steps until `done()` holds, which is also asked before the first step. Returns false at `giveUp`, when the PLC proves
/// unreachable, or when the program is asked to end.
template <typename Condition>
bool stepUntil(Runtime &runtime, TimePoint giveUp, Condition done)
{
    while (!done()) {
        if (runtime.isStopped() || runtime.isUnreachable() || (giveUp != TimePoint::max() && Clock::now() >= giveUp))
            return false;
        runtime.step(giveUp);
    }
    return true;
}

/// Why a command ended before its work was done: "interrupted", "no answer in time" and such.
inline std::string endedEarly(const Runtime &runtime)
{
    if (runtime.isStopped())
        return "interrupted";
    return runtime.isUnreachable() ? "there is no PLC to connect to" : "no answer in time";
}

#endif
