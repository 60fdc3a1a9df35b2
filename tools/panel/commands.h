#ifndef PANEL_COMMANDS_H
#define PANEL_COMMANDS_H

#include "driver_library.h"
#include "project.h"
#include "runtime.h"
#include "tags.h"

#include <string>
#include <vector>

// The commands of the program. Each checks all that the user gave before anything is sent, and returns an ExitCode.

struct WatchOptions {
    const TagBook *book = nullptr;
    std::vector<std::string> items;
    double forSeconds = 0; // 0: for ever
    long   changes    = 0; // 0: any number
};

enum class RecipeTask { READ, WRITE, COMPARE };

struct RecipeOptions {
    RecipeTask     task = RecipeTask::READ;
    std::string    file;    // or the name of a recipe of the project
    std::string    output;  // of a recipe read; empty: standard output
    bool           dryRun  = false;
    bool           table   = false; // differences as a table, not only on a terminal
    const Project *project = nullptr;
};

int runWatch(const DriverLibrary &library, const LinkOptions &link, const WatchOptions &options);
int runRead(const TagBook &book, const LinkOptions &link, Millis giveUp, const std::vector<std::string> &items);

/// `writes` are ITEM=V[,V...]. Success only when the values read back agree. A dry run shows the frames instead.
int runWrite(const TagBook &book, const LinkOptions &link, Millis giveUp, const std::vector<std::string> &writes,
             bool dryRun);
int runRecipe(const TagBook &book, const LinkOptions &link, Millis giveUp, const RecipeOptions &options);

// These need no link.
int runCheck(const TagBook &book, const std::vector<std::string> &items);
int runCheckProject(const DriverLibrary &library, const std::string &file);
int runImportTags(const DriverLibrary &library, const std::string &file, const std::string &output);
int runRecipeList(const Project *project);
int runRecipeShow(const TagBook &book, const RecipeOptions &options);
int runTypes(const DriverLibrary &library);
int runCopies(const DriverLibrary &library, const std::string &item, long count, long step);

#endif
