#ifndef PANEL_CLI_PLANT_ARGUMENTS_H
#define PANEL_CLI_PLANT_ARGUMENTS_H

#include "cli/arguments.h"

// The command line of a command that serves all PLCs of a project at once: which of them, what of each, and the
// settings.

/// HOST, items, groups, a file of items, and the settings of a link; `items` is the help of the items. The command is
/// given its PLCs in `arguments.plcs`.
void addPlantOptions(CLI::App &command, Arguments &arguments, const std::string &items);

/// True for such a command.
bool isForPlant(const CLI::App &command, const Arguments &arguments);

/// The PLCs of which something was chosen. An option counts for all of them in place of the project's setting. Throws
/// UsageError or CLI::RequiredError.
std::vector<PlantPlc> chosenPlcs(CLI::App &command, Arguments &arguments);

/// The same of these PLCs, which outlive what is returned.
std::vector<WatchedPlc> watchedPlcs(const CLI::App &command, const Arguments &arguments, const std::vector<ProjectPlc> &plcs);

#endif
