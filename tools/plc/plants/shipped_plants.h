#ifndef PLC_PLANTS_SHIPPED_PLANTS_H
#define PLC_PLANTS_SHIPPED_PLANTS_H

#include "expressions/operations.h"
#include "plants/plant.h"

#include <memory>
#include <string>
#include <vector>

// The plants that come with the simulator, as files NAME.toml in the folder share/fins_plc/plants above the program,
// and those of users.

namespace plc {

/// Whether `text` is the name of a shipped plant, or names a file: it has a / or ends with .toml.
bool isPlant(const std::string &text);
bool isPlantFile(const std::string &text);

/// The names, the default one first, separated by spaces.
std::string plantNames();

/// Every shipped plant with its addresses.
std::string plantHelp();

/// The plant of that name or file, or null. What is wrong with it is added to `problems`, one a line.
std::unique_ptr<Plant> makePlant(const std::string &text, Controller &controller, std::uint32_t seed,
                                 std::vector<std::string> *problems = nullptr);

} // namespace plc

#endif
