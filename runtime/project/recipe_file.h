#ifndef RUNTIME_PROJECT_RECIPE_FILE_H
#define RUNTIME_PROJECT_RECIPE_FILE_H

#include "values/recipe.h"

#include <iosfwd>
#include <string>
#include <vector>

// A recipe as a text file, one variable a line, # starting a comment:
//
//   VARIABLE [= VALUE VALUE ...]
//
// VARIABLE is a tag, or an item TYPE:ADDRESS[:COUNT] with an optional data type behind a slash. The types are word
// types. A string without COUNT has the words that it needs. A text stands between quotes.

/// Reads a recipe; with `needValues` every line must have its values. Throws UsageError, which begins with `name` and
/// the line's number. Variables that overlap, and a recipe without variables, are refused.
std::vector<RecipeEntry> readRecipe(const TagBook &tags, std::istream &input, const std::string &name, bool needValues);

/// The line of one variable, as readRecipe reads it.
std::string recipeLine(const RecipeEntry &entry);

#endif
