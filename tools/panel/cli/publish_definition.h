#ifndef PANEL_CLI_PUBLISH_DEFINITION_H
#define PANEL_CLI_PUBLISH_DEFINITION_H

#include "cli/arguments.h"

/// The command `publish` with its options.
void addPublish(CLI::App &app, Arguments &arguments);

#endif
