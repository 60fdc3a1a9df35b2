#include "model/project_screens.h"

#include "common/usage_error.h"
#include "documents/document.h"

static ScreenBook read(const std::string &file, const std::vector<Station *> &stations, Problems &problems)
{
    std::vector<fins::TagConfig> tags;
    std::vector<std::string> recipes;
    for (const Station *station : stations) {
        tags.insert(tags.end(), station->tags().begin(), station->tags().end());
        for (const fins::RecipeConfig &recipe : station->recipes())
            recipes.push_back(recipe.name);
    }
    try {
        const DataNode root = parseToml(readFile(file), file, problems);
        if (!problems.any())
            return readScreens(root, file, tags, recipes, problems);
    } catch (const UsageError &error) { // the file has gone since its tags were read
        problems.add("", {}, error.what());
    }
    return {};
}

ScreenBook readProjectScreens(const std::string &file, const std::vector<Station *> &stations)
{
    Problems problems;
    ScreenBook book = read(file, stations, problems);
    if (!problems.any())
        return book;
    std::vector<fins::Problem> all;
    for (const Problems::Entry &entry : problems.entries())
        all.push_back({entry.file, entry.place.line, entry.place.column, entry.text});
    throw fins::ConfigError(std::move(all));
}
