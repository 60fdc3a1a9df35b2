#ifndef PANEL_COMMANDS_PLC_H
#define PANEL_COMMANDS_PLC_H

#include "session/runtime.h"

#include <string>

// What a PLC says of itself, and the few things that it can be told: operating mode, clock, errors.

enum class PlcTask { INFO, ERRORS, CLOCK, CYCLE, MODE };

struct PlcOptions {
    PlcTask     task = PlcTask::INFO;
    std::string mode;             // to change to: run, monitor or program; "": none
    bool        sets  = false;    // the clock, to this computer's time
    bool        clears = false;   // the errors
    bool        yes   = false;    // nobody is asked
    bool        json  = false;
};

int runPlc(const DriverLibrary &library, const LinkOptions &link, Millis giveUp, const PlcOptions &options);

#endif
