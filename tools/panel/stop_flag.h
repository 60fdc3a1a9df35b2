#ifndef PANEL_STOP_FLAG_H
#define PANEL_STOP_FLAG_H

#include <chrono>

// SIGINT, SIGTERM and SIGHUP ask the program to end. They interrupt a wait, and the loops look at the flag.

void installStopSignals();
bool stopRequested();

/// Asks the program to end, as a signal does.
void requestStop();

/// Sleeps until `end` or until the program is asked to end.
void sleepUntil(std::chrono::steady_clock::time_point end);

#endif
