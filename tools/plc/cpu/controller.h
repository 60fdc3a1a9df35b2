#ifndef PLC_CPU_CONTROLLER_H
#define PLC_CPU_CONTROLLER_H

#include "cpu/clock.h"
#include "cpu/end_codes.h"
#include "cpu/memory.h"
#include "cpu/write_log.h"

#include <string>

// The CPU unit that the FINS commands act on: its memory, its operating mode, and whether it takes writes.

namespace plc {

/// Operating modes, with their values in RUN and CONTROLLER STATUS READ.
enum class Mode : unsigned { PROGRAM = 0x00, MONITOR = 0x02, RUN = 0x04 };

/// Bytes of a FINS frame: a FINS/TCP length field covers command (4), error code (4) and the frame, and is at most
/// 2020.
enum : unsigned { FINS_FRAME_MAX = 2020 - (4 + 4) };

struct Controller {
    Memory   memory;
    Clock    clock;
    unsigned messageMax = FINS_FRAME_MAX;   // bytes of a command or response, FINS header included
    WriteLog writes;                        // by FINS commands
    Mode     mode = Mode::RUN;
    unsigned refusalInRun = END_NORMAL;     // end code of writes while in RUN mode; END_NORMAL: they are taken
    unsigned refusalInProgram = END_NORMAL; // the same for PROGRAM mode

    /// The end code that refuses a write in the present mode, or END_NORMAL.
    unsigned writeRefusal() const
    {
        if (mode == Mode::RUN)
            return refusalInRun;
        return mode == Mode::PROGRAM ? refusalInProgram : unsigned(END_NORMAL);
    }
};

/// "program", "monitor" or "run".
std::string modeName(Mode mode);

/// Returns false, `mode` unchanged, if `name` is none of the three.
bool parseMode(const std::string &name, Mode *mode);

} // namespace plc

#endif
