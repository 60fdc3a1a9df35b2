#ifndef PANEL_CLI_PLC_DEFINITIONS_H
#define PANEL_CLI_PLC_DEFINITIONS_H

#include "cli/arguments.h"

/// The commands that ask a PLC what it is and how it is.
void addPlc(CLI::App &app, Arguments &arguments);

#endif
