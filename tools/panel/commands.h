#ifndef PANEL_COMMANDS_H
#define PANEL_COMMANDS_H

#include "driver_library.h"
#include "runtime.h"

#include <string>
#include <vector>

// The commands of the program. Each checks all that the user gave before anything is sent, and returns an ExitCode.

struct WatchOptions {
    std::vector<std::string> items;
    double forSeconds = 0; // 0: for ever
    long   changes    = 0; // 0: any number
};

struct RecipeOptions {
    bool        write = false;
    std::string file;
    std::string output; // of a recipe read; empty: standard output
};

int runWatch(const DriverLibrary &library, const LinkOptions &link, const WatchOptions &options);
int runRead(const DriverLibrary &library, const LinkOptions &link, Millis giveUp,
            const std::vector<std::string> &items);

/// `writes` are ITEM=V[,V...]. Success only when the values read back agree.
int runWrite(const DriverLibrary &library, const LinkOptions &link, Millis giveUp,
             const std::vector<std::string> &writes);
int runRecipe(const DriverLibrary &library, const LinkOptions &link, Millis giveUp, const RecipeOptions &options);

// These need no link.
int runCheck(const DriverLibrary &library, const std::vector<std::string> &items);
int runTypes(const DriverLibrary &library);
int runCopies(const DriverLibrary &library, const std::string &item, long count, long step);

#endif
