#ifndef PANEL_COMMAND_LINE_H
#define PANEL_COMMAND_LINE_H

#include "arguments.h"

/// The commands of the program with their options and help texts. What the user gives goes to `arguments`, and the
/// command that was given becomes their action.
void addCommands(CLI::App &app, Arguments &arguments);

#endif
