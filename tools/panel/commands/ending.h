#ifndef PANEL_COMMANDS_ENDING_H
#define PANEL_COMMANDS_ENDING_H

#include "session/runtime.h"

enum class WriteVerdict;

// How the program ends, the same for every command.

enum ExitCode {
    EXIT_DONE    = 0, // everything asked for was done
    EXIT_REFUSED = 1, // the PLC refused a request, or a value differed
    EXIT_USAGE   = 2, // bad usage: nothing was sent
    EXIT_NO_LINK = 3  // no link, no answer in time, or a write that is unconfirmed or was not sent
};

/// How a command of writes ends.
int exitCode(WriteVerdict verdict);

/// Says in one line on standard error why no answer came; returns the program's exit code.
int noAnswer(Runtime &runtime, Millis giveUp);

/// The same for a command that never had a link in the time that it was given.
int noLink(Runtime &runtime);

#endif
