#ifndef PLC_CPU_CONTROLLER_H
#define PLC_CPU_CONTROLLER_H

#include "cpu/access_right.h"
#include "cpu/calendar.h"
#include "cpu/clock.h"
#include "cpu/end_codes.h"
#include "cpu/errors.h"
#include "cpu/memory.h"
#include "cpu/write_log.h"

#include <array>
#include <string>

// The CPU unit that the FINS commands act on: its memory, its operating mode, what it is and how it fares, and whether
// it takes writes.

namespace plc {

/// Operating modes, with their values in RUN and CONTROLLER STATUS READ.
enum class Mode : unsigned { PROGRAM = 0x00, MONITOR = 0x02, RUN = 0x04 };

/// Bytes of a FINS frame: a FINS/TCP length field covers command (4), error code (4) and the frame, and is at most
/// 2020.
enum : unsigned { FINS_FRAME_MAX = 2020 - (4 + 4) };

/// What the CPU unit says it is.
struct Identity {
    std::string model = "CJ2H-CPU68"; // up to 20 characters
    std::string version = "02.01";    // of the internal system, up to 20 characters
};

/// In 0.1 ms.
struct CycleTime {
    unsigned average = 10;
    unsigned most = 12;
    unsigned least = 9;
};

struct Controller {
    Controller() { fit(fullSizes()); }
    Controller(const Controller &) = delete;
    Controller &operator=(const Controller &) = delete;

    /// Memory of these sizes, all of it 0, whose clock pulses go by the clock.
    void fit(const AreaSizes &sizes);

    Memory   memory;
    Clock    clock;
    unsigned messageMax = FINS_FRAME_MAX;   // bytes of a command or response, FINS header included
    WriteLog writes;                        // by FINS commands
    Mode     mode = Mode::RUN;              // at the start; later by changeMode()
    unsigned refusalInRun = END_NORMAL;     // end code of writes while in RUN mode; END_NORMAL: they are taken
    unsigned refusalInProgram = END_NORMAL; // the same for PROGRAM mode

    Identity       identity;
    Calendar       calendar;
    CycleTime      cycle;
    bool           hasBattery = true;
    StandingErrors errors; // changed by raise(), dismiss() and reset()
    ErrorLog       log;    // the same, and by clearLog()
    AccessRight    right;
    std::array<std::string, 8> messages; // of the program, up to 32 characters; empty: none

    /// The date and time that the CPU unit shows.
    std::tm time() const { return calendar.read(clock.now()); }

    /// Whether the program runs, and with it what it controls.
    bool isRunning() const { return mode != Mode::PROGRAM && !errors.isFatal(); }

    /// Between PROGRAM mode and the two others CIO, WR and the timers are cleared, unless A500.12 holds them.
    void changeMode(Mode wanted);

    /// An error comes: it stands, is logged, and is shown in A400 to A402.
    void raise(const CpuError &error);

    /// The error goes, and with it its cause. Returns false if it does not stand.
    bool dismiss(unsigned code);
    void dismissAll();

    /// Clears the error with this code, the worst one (RESET_PRESENT) or all, but for those whose cause is still there:
    /// then END_ERROR_REMAINS.
    enum : unsigned { RESET_PRESENT = 0xFFFE, RESET_ALL = 0xFFFF };
    EndCode reset(unsigned code);

    void clearLog();

    /// The end code that refuses a write in the present mode, or END_NORMAL.
    unsigned writeRefusal() const
    {
        if (mode == Mode::RUN)
            return refusalInRun;
        return mode == Mode::PROGRAM ? refusalInProgram : unsigned(END_NORMAL);
    }

private:
    void showErrors();
    void showLog();
};

/// "program", "monitor" or "run".
std::string modeName(Mode mode);

/// Returns false, `mode` unchanged, if `name` is none of the three.
bool parseMode(const std::string &name, Mode *mode);

} // namespace plc

#endif
