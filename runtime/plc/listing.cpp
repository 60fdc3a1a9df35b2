#include "plc/listing.h"

namespace fins {

std::vector<TagConfig> listed(const std::vector<Tag> &tags)
{
    std::vector<TagConfig> configs;
    for (const Tag &tag : tags) {
        TagConfig config;
        config.name     = tag.name;
        config.item     = driverName(tag.item, tag.format);
        config.scale    = tag.format.scale;
        config.offset   = tag.format.offset;
        config.decimals = tag.format.decimals;
        config.unit     = tag.format.unit;
        config.minimum  = tag.minimum;
        config.maximum  = tag.maximum;
        config.readOnly = tag.readOnly;
        config.remoteWrites = tag.remoteWrites;
        config.deadband = tag.deadband;
        config.comment  = tag.comment;
        config.screen   = tag.screen;
        config.group    = tag.group;
        configs.push_back(std::move(config));
    }
    return configs;
}

std::vector<RecipeConfig> listed(const std::vector<Recipe> &recipes)
{
    std::vector<RecipeConfig> configs;
    for (const Recipe &recipe : recipes) {
        RecipeConfig config;
        config.name = recipe.name;
        for (RecipeEntry entry : recipe.entries) {
            entry.format.decimals = -1; // what is shown may be less than what is written
            config.variables.push_back({entryName(entry), valueTexts(entry)});
        }
        configs.push_back(std::move(config));
    }
    return configs;
}

} // namespace fins
