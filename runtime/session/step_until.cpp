#include "session/step_until.h"

std::string endedEarly(const Runtime &runtime)
{
    if (runtime.isStopped())
        return "interrupted";
    return runtime.isUnreachable() ? "there is no PLC to connect to" : "no answer in time";
}
