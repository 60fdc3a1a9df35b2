#ifndef PANEL_RECIPE_FILE_H
#define PANEL_RECIPE_FILE_H

#include "items.h"

#include <iosfwd>
#include <string>
#include <vector>

// A recipe as a text file, one variable a line, # starting a comment:
//
//   TYPE:ADDRESS[:COUNT] [= VALUE VALUE ...]
//
// The types are word types. COUNT, the number of words, may be left out where values are given.

struct RecipeEntry {
    Item                item;
    std::vector<quint8> values; // words, low byte first; empty if the line has none
};

/// Reads a recipe; with `needValues` every line must have its values. Throws UsageError, which begins with `name` and
/// the line's number. Variables that overlap, and a recipe without variables, are refused.
std::vector<RecipeEntry> readRecipe(const DriverLibrary &library, std::istream &input, const std::string &name,
                                    bool needValues);

/// The line of one variable, as readRecipe reads it.
std::string recipeLine(const RecipeEntry &entry);

/// The variables in the order of their addresses, cut to `wordsPerFrame` words: in this order, one behind the other,
/// they lie in the recipe buffer, since the driver writes the words of neighbouring variables as one run.
std::vector<RecipeEntry> layOutRecipe(const std::vector<RecipeEntry> &entries, qint32 wordsPerFrame);

#endif
