#ifndef RUNTIME_PLC_LISTING_H
#define RUNTIME_PLC_LISTING_H

#include "fins_runtime/config.h"
#include "project/recipe_table.h"

// Tags and recipes as a program would write them into a configuration, wherever they come from. A configuration of them
// alone means the same.

namespace fins {

std::vector<TagConfig> listed(const std::vector<Tag> &tags);

std::vector<RecipeConfig> listed(const std::vector<Recipe> &recipes);

} // namespace fins

#endif
