#ifndef RUNTIME_VALUES_RECIPE_H
#define RUNTIME_VALUES_RECIPE_H

#include "values/tags.h"

#include <cstddef>
#include <string>
#include <vector>

// The variables of a recipe, with their values or without, and how they lie in the recipe buffer. They are words.

struct RecipeEntry {
    Item                item;
    std::vector<quint8> values; // words, low byte first; empty if there are none
    std::string         name = std::string(); // as it can be read again; empty: the item's own text
    ValueFormat         format = ValueFormat();
};

/// The entry of a variable, with as many values as it has, or with none. Throws UsageError.
RecipeEntry makeEntry(const TagBook &tags, const std::string &name, const std::vector<std::string> &texts);

/// The entry's name, as it can be read again.
std::string entryName(const RecipeEntry &entry);

/// The index of the first entry that overlaps an earlier one, with the reason, or the number of entries.
std::size_t findOverlap(const std::vector<RecipeEntry> &entries, std::string &reason);

/// The variables in the order of their addresses, cut to `wordsPerFrame` words: in this order, one behind the other,
/// they lie in the recipe buffer, since the driver writes the words of neighbouring variables as one run.
std::vector<RecipeEntry> layOutRecipe(const std::vector<RecipeEntry> &entries, qint32 wordsPerFrame);

#endif
