#ifndef RUNTIME_PROJECT_PROJECT_H
#define RUNTIME_PROJECT_PROJECT_H

#include "documents/problems.h"
#include "project/recipe_table.h"
#include "values/tags.h"

#include <optional>
#include <string>
#include <vector>

// A project: a TOML file that keeps what belongs to one PLC.
//
//   tags = "tags.csv"              a CSV file beside this one, instead of the table [tags]
//   [connection]  host, port, timeout_ms
//   [driver]      station, retries, words_per_frame, interval_ms, allow_mode_change
//   [defaults]    word_order, char_order
//   [tags]        Level = { type = "DM", address = 0, ... }     see tag_table.h
//   [recipes.NAME]                                              see recipe_table.h
//   [screens.NAME], [alarms.NAME]  what a graphical panel shows, which others pass over

struct Project {
    std::string         file;
    std::vector<std::string> files; // all that it was read from
    std::string         host; // as the positional argument of a command; empty: not given
    std::optional<long> timeoutMs;
    std::optional<long> station;
    std::optional<long> retries;
    std::optional<long> wordsPerFrame;
    std::optional<long> intervalMs;
    bool                allowModeChange = false;
    OrderDefaults       orders;
    std::vector<Recipe> recipes;

    /// The recipe of that name, or null.
    const Recipe *findRecipe(const std::string &name) const;
};

/// Reads a project file and adds its tags to `tags`. Every problem is reported.
Project readProject(const std::string &file, TagBook &tags, Problems &problems);

/// Reads the tags of a CSV file. Every problem is reported. Returns the names of those with a problem.
std::set<std::string> readTagFile(const std::string &file, TagBook &tags, Problems &problems);

#endif
