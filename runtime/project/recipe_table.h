#ifndef RUNTIME_PROJECT_RECIPE_TABLE_H
#define RUNTIME_PROJECT_RECIPE_TABLE_H

#include "documents/document.h"
#include "values/recipe.h"

#include <set>

// Recipes in TOML and CSV. A TOML table has
//
//   comment    = "..."
//   variables  = ["DM:100:2", "Level"]   without values, for reading
//   [values]
//   "DM:200:3" = [20, 30, 40]
//   Level      = 12.3
//
// and a CSV file the columns variable and value, several values separated by spaces.

struct Recipe {
    std::string              name;
    std::string              comment;
    std::vector<RecipeEntry> entries;

    std::size_t wordCount() const;
};

/// Reads a table. Variables that are called one of `broken` are left out: their tags have been reported already.
Recipe readRecipeTable(const DataNode &table, const std::string &file, const TagBook &tags,
                       const std::set<std::string> &broken, Problems &problems);

/// Reads a file, by its ending .toml, .csv or any other for text. With `needValues` every variable must have values.
/// Throws UsageError with the first problem and its place.
Recipe loadRecipeFile(const TagBook &tags, const std::string &file, bool needValues);

/// The values of a variable, one text each, as one would write them: of a string what stands between its quotes.
std::vector<std::string> valueTexts(const RecipeEntry &entry);

/// Throws UsageError if a variable has no values.
void requireValues(const Recipe &recipe);

/// The content of a file with that name and these entries, as loadRecipeFile reads it.
std::string recipeFileText(const std::string &file, const std::vector<RecipeEntry> &entries);

#endif
