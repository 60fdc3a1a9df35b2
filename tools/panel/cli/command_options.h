#ifndef PANEL_CLI_COMMAND_OPTIONS_H
#define PANEL_CLI_COMMAND_OPTIONS_H

#include "cli/arguments.h"
#include "project/settings.h"

// The options that several commands have.

void addProjectOption(CLI::App &command, Arguments &arguments);
void addHostOption(CLI::App &command, Arguments &arguments);

/// HOST and all that belongs to a link; `words` is the limit of one request.
void addLinkOptions(CLI::App &command, Arguments &arguments, const Setting &words);

void addItems(CLI::App &command, std::vector<std::string> &items, const char *help);

/// How values are shown and taken.
void addValueOptions(CLI::App &command, ValueArguments &values);

void addDryRun(CLI::App &command, bool &dryRun);
void addConfirm(CLI::App &command, bool &confirm);
void addModeChange(CLI::App &command, Arguments &arguments);
void addKeepGoing(CLI::App &command, bool &keepGoing);

#endif
