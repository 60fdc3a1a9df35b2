#ifndef PLC_OPTIONS_PROJECT_MEMORY_H
#define PLC_OPTIONS_PROJECT_MEMORY_H

#include "options/memory_content.h"
#include "options/project_reader.h"

#include <vector>

// The table [memory] of a project file: TYPE:ADDRESS[:COUNT] = value.

namespace plc {

/// Reads the table. The places have to lie inside `memory`.
std::vector<Content> readMemoryTable(const toml::table &table, const Memory &memory, Problems &problems);

} // namespace plc

#endif
