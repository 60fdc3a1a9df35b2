#ifndef HMI_CLI_SOURCES_H
#define HMI_CLI_SOURCES_H

#include "cli/options.h"
#include "model/panel.h"

/// The PLCs of a command line, their projects read and checked. Throws fins::ConfigError with all that is wrong with
/// them, and UsageError for a command line that names no PLC.
std::vector<PanelSource> readSources(const Options &options);

#endif
