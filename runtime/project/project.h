#ifndef RUNTIME_PROJECT_PROJECT_H
#define RUNTIME_PROJECT_PROJECT_H

#include "documents/problems.h"
#include "project/recipe_table.h"
#include "values/tags.h"

#include <optional>
#include <string>
#include <vector>

// A project: a TOML file that keeps what belongs to one PLC, or to several.
//
//   tags = "tags.csv"              a CSV file beside this one, instead of the table [tags]
//   [connection]  host, port, timeout_ms
//   [driver]      station, retries, words_per_frame, interval_ms, allow_mode_change
//   [defaults]    word_order, char_order
//   [tags]        Level = { type = "DM", address = 0, ... }     see tag_table.h
//   [recipes.NAME]                                              see recipe_table.h
//   [screens.NAME], [alarms.NAME]  what a graphical panel shows, which others pass over
//
// With several PLCs there are, in place of the tags,
//
//   [plc.NAME]       the keys of [connection], [driver] and [defaults], and tags = "NAME.csv"
//   [plc.NAME.tags]
//
// and [connection] (without a host), [driver] and [defaults] hold for all that say nothing else. The tag Level of the PLC
// NAME is then called NAME.Level, in the recipes of this file too, and an item NAME.DM:100.

struct Project {
    std::string         plc; // its name; empty: the project has only one and gives it none
    std::string         file;
    std::vector<std::string> files; // all that it was read from
    std::string         host; // as the positional argument of a command; empty: not given
    std::optional<long> port; // where the host has none
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

/// A PLC of a project, with its tags.
struct ProjectPlc {
    Project project;
    TagBook tags;
};

/// Reads a project file; the result has one PLC at least. Every problem is reported.
std::vector<ProjectPlc> readProjectPlcs(const std::string &file, const DriverLibrary &library, Problems &problems);

/// Reads a project file of one PLC, whose tags become those of `tags`. Every problem is reported.
Project readProject(const std::string &file, TagBook &tags, Problems &problems);

/// Reads the tags of a CSV file. Every problem is reported. Returns the names of those with a problem.
std::set<std::string> readTagFile(const std::string &file, TagBook &tags, Problems &problems);

#endif
