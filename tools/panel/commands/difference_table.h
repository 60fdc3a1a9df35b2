#ifndef PANEL_COMMANDS_DIFFERENCE_TABLE_H
#define PANEL_COMMANDS_DIFFERENCE_TABLE_H

#include "values/recipe.h"

#include <string>
#include <vector>

/// Rows of texts as lines, each column as wide as its widest text, two spaces between two columns. The first row is the
/// head. Columns in `right` are right-aligned.
std::string tableText(const std::vector<std::vector<std::string>> &rows, const std::vector<bool> &right);

/// A row for each value of `entry` that differs from `held`: variable, wanted value, held value, unit.
std::vector<std::vector<std::string>> differences(const RecipeEntry &entry, const std::vector<quint8> &held);

#endif
