#ifndef RUNTIME_PROJECT_RECIPE_FILE_H
#define RUNTIME_PROJECT_RECIPE_FILE_H

#include "values/tags.h"

#include <iosfwd>
#include <string>
#include <vector>

// A recipe as a text file, one variable a line, # starting a comment:
//
//   VARIABLE [= VALUE VALUE ...]
//
// VARIABLE is a tag, or an item TYPE:ADDRESS[:COUNT] with an optional data type behind a slash. The types are word
// types. A string without COUNT has the words that it needs. A text stands between quotes.

struct RecipeEntry {
    Item                item;
    std::vector<quint8> values; // words, low byte first; empty if there are none
    std::string         name = std::string(); // as it can be read again; empty: the item's own text
    ValueFormat         format = ValueFormat();
};

/// The entry of a variable, with as many values as it has, or with none. Throws UsageError.
RecipeEntry makeEntry(const TagBook &tags, const std::string &name, const std::vector<std::string> &texts);

/// Reads a recipe; with `needValues` every line must have its values. Throws UsageError, which begins with `name` and
/// the line's number. Variables that overlap, and a recipe without variables, are refused.
std::vector<RecipeEntry> readRecipe(const TagBook &tags, std::istream &input, const std::string &name, bool needValues);

/// The line of one variable, as readRecipe reads it.
std::string recipeLine(const RecipeEntry &entry);

/// The entry's name, as it can be read again.
std::string entryName(const RecipeEntry &entry);

/// The index of the first entry that overlaps an earlier one, with the reason, or the number of entries.
std::size_t findOverlap(const std::vector<RecipeEntry> &entries, std::string &reason);

/// The variables in the order of their addresses, cut to `wordsPerFrame` words: in this order, one behind the other,
/// they lie in the recipe buffer, since the driver writes the words of neighbouring variables as one run.
std::vector<RecipeEntry> layOutRecipe(const std::vector<RecipeEntry> &entries, qint32 wordsPerFrame);

#endif
