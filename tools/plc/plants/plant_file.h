#ifndef PLC_PLANTS_PLANT_FILE_H
#define PLC_PLANTS_PLANT_FILE_H

#include "common/file_reader.h"
#include "documents/problems.h"
#include "plants/plant_program.h"

#include <functional>
#include <string>

// A plant as people write it: the tables of [plant] in a TOML file.

namespace plc {

/// Reads a file that a plant names.
using FileLoader = std::function<FileContent(const std::string &file)>;

/// Reads [plant] of the text of a file; other tables are somebody else's. The places have to lie inside `memory`. What
/// is wrong is added to `problems`; then the program is of no use.
PlantProgram readPlant(const std::string &text, const std::string &file, const Memory &memory, const FileLoader &load,
                       Problems &problems);

/// The same from the file itself; the files that it names are beside it.
PlantProgram loadPlant(const std::string &file, const Memory &memory, Problems &problems);

} // namespace plc

#endif
