#ifndef PANEL_COMMANDS_CONFIRMATION_H
#define PANEL_COMMANDS_CONFIRMATION_H

#include "session/write_report.h"

// The question before a write: what the PLC holds, what it is to hold, yes or no.

/// Throws UsageError with this text unless somebody can answer on a terminal.
void requireTerminal(const std::string &problem = "--confirm asks on a terminal, and there is none; run the command on "
                                                  "one, or leave it out");

/// Asks on standard error. Anything but y or yes is a no.
bool isYes(const std::string &question);

/// The bytes that the PLC holds for an item.
using HeldBytes = std::function<std::vector<quint8>(const Item &item)>;

/// Shows a row for each order with its value in the PLC now, and asks.
bool isConfirmed(const std::vector<WriteReport::Order> &orders, const HeldBytes &held);

/// Reports that nothing was written, for `reason`; returns the exit code.
int endUnwritten(Runtime &runtime, WriteReport &report, const std::string &reason, Millis giveUp);

#endif
