#ifndef PANEL_CLI_PLANT_COMMANDS_H
#define PANEL_CLI_PLANT_COMMANDS_H

#include "cli/arguments.h"

// The commands that serve all PLCs of a project at once, as addCommands() does for the others.

void addLog(CLI::App &app, Arguments &arguments);

#endif
