#ifndef PANEL_CLI_ARGUMENTS_H
#define PANEL_CLI_ARGUMENTS_H

#include "commands/commands.h"
#include "commands/plc.h"
#include "commands/publish.h"
#include "plant/plant.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

// What the user gave on the command line, and how it is settled together with the project: what is the PLC, what an
// item, and which settings count.

// How values are shown and taken where neither an item nor a tag says it.
struct ValueArguments {
    std::string as;
    std::string wordOrder;
    std::string characterOrder;
    ValueFormat format;
};

struct Arguments {
    std::function<int(const DriverLibrary &)> action; // of the command that was given
    std::string              libraryFile;
    std::string              projectFile;
    std::string              plc;        // which of the project's
    std::string              otherHost;  // in place of the project's
    ValueArguments           values;
    std::unique_ptr<DriverLibrary> library;
    std::unique_ptr<TagBook> book;       // refers to the library
    Project                  project;
    std::set<const CLI::App *> severalCommands; // that work with several PLCs, each with a link of its own
    std::vector<ProjectPlc>  several;    // the PLCs of such a command; empty: it works with the only one
    std::set<const CLI::App *> plantCommands; // that serve several PLCs at once, each through the library
    std::vector<PlantPlc>    plcs;       // of such a command
    std::string              file;       // of check-project and import-tags
    std::string              output;
    std::string              host;
    bool                     hasHost    = false; // an empty host is one too, and wrong
    long                     timeoutMs  = 1000;
    long                     intervalMs = 20;
    double                   giveUp     = 10;
    double                   retryRefused = std::chrono::duration<double>(PollPlan::PAUSE).count();
    LinkOptions              link;
    std::string              trace;
    bool                     stats      = false;
    ItemChoice               choice;
    ValueForm                form = ValueForm::PLAIN; // of values that are read
    WriteOptions             write;
    WatchOptions             watch;
    WaitOptions              wait;
    LogOptions               log;
    PublishOptions           publish;
    BenchOptions             bench;
    long                     roundTrips = 100;
    RecipeOptions            recipe;
    PlcOptions               plcTask;
    std::string              copiesItem;
    long                     copies = 0;
    long                     step   = 1;
    std::string              completed; // the kind of names to list
};

/// The commands of the program with their options and help texts. What the user gives goes to `arguments`, and the
/// command that was given becomes their action.
void addCommands(CLI::App &app, Arguments &arguments);

/// The PLCs of the project file, or the one that --plc names. Throws UsageError.
std::vector<ProjectPlc> projectPlcs(const Arguments &arguments);

/// Reads the project file, if one was given. Its settings count where their options were not given.
void applyProject(CLI::App &command, Arguments &arguments);

/// Of several PLCs each has its own host, and the first argument is an item. Throws UsageError for a host.
void placeItems(Arguments &arguments);

/// The PLCs that a command works with, once all that was given is settled.
Sites sitesOf(const CLI::App &command, const Arguments &arguments);

/// Settles the PLC and the items, and refuses what is missing. Throws UsageError or CLI::RequiredError.
void placeArguments(CLI::App &command, Arguments &arguments);

/// The form of items that have none of their own. Throws UsageError.
void setValueDefaults(CLI::App &command, Arguments &arguments);

#endif
