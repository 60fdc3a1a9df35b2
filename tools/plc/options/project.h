#ifndef PLC_OPTIONS_PROJECT_H
#define PLC_OPTIONS_PROJECT_H

#include "options/options.h"

#include <string>
#include <vector>

// The project file, TOML: the table [plc] has settings with the names of the command line's options, the table
// [memory] the content of the memory at the start.

namespace plc {

/// Reads the project `text`, `file` being what messages call it, into `options`. Returns "FILE:LINE:COL: what is wrong"
/// for everything that is wrong, in the order of the file; empty: nothing.
std::vector<std::string> parseProject(const std::string &text, const std::string &file, Options *options);

/// The same for the file itself. "FILE: what is wrong" if it cannot be read.
std::vector<std::string> loadProject(const std::string &file, Options *options);

/// The keys of a project file, one a line.
std::string projectHelp();

} // namespace plc

#endif
