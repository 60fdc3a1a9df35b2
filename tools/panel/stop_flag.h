#ifndef PANEL_STOP_FLAG_H
#define PANEL_STOP_FLAG_H

// SIGINT, SIGTERM and SIGHUP ask the program to end. They interrupt a wait, and the loops look at the flag.

void installStopSignals();
bool stopRequested();

/// Asks the program to end, as a signal does.
void requestStop();

#endif
