#ifndef HMI_MODEL_RECIPE_ROWS_H
#define HMI_MODEL_RECIPE_ROWS_H

#include <fins_runtime/values.h>

#include <string>
#include <vector>

// A recipe of the project beside what the PLC holds.

struct RecipeRow {
    enum class Match {
        UNREAD,  // the PLC's value is not known
        SAME,
        DIFFERS,
        NO_VALUE // the recipe has none: it is only read
    };
    std::string name;   // of one value: NAME[0] of several
    std::string wanted; // as the recipe has it; "" for none
    std::string held;   // as the PLC holds it; "" if it is not known
    std::string unit;
    std::string note;   // why it is not known; "" if it is
    Match       match = Match::UNREAD;
};

/// The rows of a recipe; `read` is what was read of the PLC, or null.
std::vector<RecipeRow> recipeRows(const fins::RecipeConfig &recipe, const fins::RecipeValues *read);

/// "3 of 12 differ", "no difference", "2 of 12 could not be read; 3 differ".
std::string summaryOf(const std::vector<RecipeRow> &rows);

/// The values that the PLC holds as a recipe file (TOML), as fins_panel reads it too. Variables of which a value is not
/// known are left out, and a comment says so. `tags` are those of the recipe's PLC.
std::string recipeFile(const fins::RecipeConfig &recipe, const fins::RecipeValues &read,
                       const std::vector<fins::TagConfig> &tags);

#endif
