#ifndef PLC_OPTIONS_PROJECT_H
#define PLC_OPTIONS_PROJECT_H

#include "options/options.h"

#include <string>
#include <vector>

// The project file, TOML: the table [plc] has settings with the names of the command line's options, the table
// [cpu] the state of the CPU unit, the table [memory] the content of the memory at the start. Several PLCs are a list,
// each [[plc]] with its name, its [plc.cpu] and its [plc.memory].

namespace plc {

/// Reads the PLCs of the text of a file, each beginning with `start`; of a plant it takes the name or file alone.
/// Returns "FILE:LINE:COL: what is wrong" for everything that is wrong, in the order of the file; empty: nothing.
std::vector<std::string> readProjectText(const std::string &text, const std::string &file, const Options &start,
                                         std::vector<Options> *plcs);

/// The same from the file itself and with the plants that it names, or "FILE: what is wrong" if it cannot be read.
std::vector<std::string> loadProject(const std::string &file, const Options &start, std::vector<Options> *plcs);

/// The keys of a project file, one a line.
std::string projectHelp();

} // namespace plc

#endif
