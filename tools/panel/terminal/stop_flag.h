#ifndef PANEL_TERMINAL_STOP_FLAG_H
#define PANEL_TERMINAL_STOP_FLAG_H

#include "base/stop_signal.h"

// SIGINT, SIGTERM and SIGHUP ask the program to end, but for those that it was started to ignore. They interrupt a wait,
// and the loops look at the flag.

void installStopSignals();

/// True if the signal is ignored, as by a program that was started with nohup: then it has to stay so.
bool isIgnored(int signal);

/// What the program's loops look at.
StopSignal &programStop();

#endif
