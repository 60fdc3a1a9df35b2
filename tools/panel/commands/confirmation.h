#ifndef PANEL_COMMANDS_CONFIRMATION_H
#define PANEL_COMMANDS_CONFIRMATION_H

#include "session/write_report.h"

// The question before a write: what the PLC holds, what it is to hold, yes or no.

/// Throws UsageError unless somebody can answer on a terminal.
void requireTerminal();

/// Shows a row for each order with `held`, its value in the PLC now, and asks. Anything but y or yes is a no.
bool isConfirmed(const std::vector<WriteReport::Order> &orders, const std::vector<std::vector<quint8>> &held);

/// Reports that nothing was written, for `reason`; returns the exit code.
int endUnwritten(Runtime &runtime, WriteReport &report, const std::string &reason, Millis giveUp);

#endif
