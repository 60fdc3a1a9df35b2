#ifndef PANEL_CLI_COMMAND_DEFINITIONS_H
#define PANEL_CLI_COMMAND_DEFINITIONS_H

#include "cli/arguments.h"

/// The commands of the program with their options and help texts. What the user gives goes to `arguments`, and the
/// command that was given becomes their action.
void addCommands(CLI::App &app, Arguments &arguments);

#endif
