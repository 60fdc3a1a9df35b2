#ifndef PANEL_COMMANDS_COMMANDS_H
#define PANEL_COMMANDS_COMMANDS_H

#include "commands/sites.h"
#include "commands/value_lines.h"
#include "driver/driver_library.h"
#include "log/row_file.h"
#include "log/row_form.h"
#include "plant/plant.h"
#include "project/project.h"
#include "values/tags.h"
#include "watch/watch_lines.h"

#include <optional>
#include <string>
#include <vector>

// The commands of the program. Each checks all that the user gave before anything is sent, and returns an ExitCode.

struct WatchOptions {
    ItemChoice choice;
    std::vector<std::string> writes; // ITEM=VALUE, sent once when the link is up
    std::optional<LineFormat> format; // none: a live table on a terminal, else plain lines
    double forSeconds = 0; // 0: for ever
    long   changes    = 0; // 0: any number
    bool   keepGoing  = false; // with the other writes when one is refused or its fate is unknown
};

struct WaitOptions {
    std::vector<std::string> conditions; // ITEM=VALUE and such
    bool   any        = false; // one that holds is enough
    double forSeconds = 0;     // 0: for ever
};

struct LogOptions {
    std::chrono::milliseconds every{1000};
    bool        onChange = false;      // a row for each change, in place of one for each `every`
    double      deadband = 0;          // of numbers whose tag has none; as shown
    LogForm     form     = LogForm::CSV;
    std::string measurement = "fins";  // of LogForm::INFLUX
    std::string output;                // a file; empty: standard output
    Rotation    rotation;              // of the file
    double      forSeconds = 0;        // 0: for ever
};

struct BenchOptions {
    std::vector<std::string> items;       // none: `words` words from DM:0 on
    long                     words = 500;
    std::vector<qint32>      sizes = {8, 16, 32, 64, 114, 200, 400};
    double                   forSeconds = 1; // for each size
};

struct WriteOptions {
    ItemChoice choice; // of ITEM=V[,V...]
    bool dryRun    = false; // shows the frames, and sends nothing
    bool keepGoing = false; // with the other writes when one is refused or its fate is unknown
    bool confirm   = false; // asks the user before anything is written
};

enum class RecipeTask { READ, WRITE, COMPARE };

struct RecipeOptions {
    RecipeTask     task = RecipeTask::READ;
    std::string    file;    // or the name of a recipe of the project
    std::string    output;  // of a recipe read; empty: standard output
    bool           dryRun  = false;
    bool           confirm = false; // asks the user before anything is written
    bool           table   = false; // differences as a table, not only on a terminal
    ValueForm      form    = ValueForm::PLAIN; // of what was read or compared
    const Project *project = nullptr;
};

/// Tries the link step by step, with `count` round trips, and says what is wrong.
int runLink(const DriverLibrary &library, const LinkOptions &link, long count);

/// Measures the refresh time for several block sizes. A size counts as unanswered after `giveUp`.
int runBench(const TagBook &book, const LinkOptions &link, Millis giveUp, const BenchOptions &options);
int runWatch(const TagBook &book, const LinkOptions &link, const WatchOptions &options);

/// What is watched of one PLC among several: `plc` has it by the names of `tags`, which `book` has resolved.
struct WatchedPlc {
    const TagBook   &book;
    std::vector<Tag> tags;
    PlantPlc         plc;
};

/// The same of several PLCs; `title` tells which in the head of the table.
int runPlantWatch(const std::vector<WatchedPlc> &plcs, const std::string &title, const WatchOptions &options);

/// Reads all PLCs at the same time. What one of them does not answer is left out or marked, see ValueForm.
int runRead(const Sites &sites, Millis giveUp, const ItemChoice &choice, ValueForm form);

/// Success as soon as the conditions hold; a value counts while it is good.
int runWait(const Sites &sites, const WaitOptions &options);

/// Success if every row could be written and every PLC has answered.
int runLog(const std::vector<PlantPlc> &plcs, const LogOptions &options);

/// Success only when the values read back agree. Writes in the order of the list, one PLC after the other.
int runWrite(const Sites &sites, Millis giveUp, const WriteOptions &options);
int runRecipe(const TagBook &book, const LinkOptions &link, Millis giveUp, const RecipeOptions &options);

// These need no link.
int runCheck(const TagBook &book, const std::vector<std::string> &items);
int runCheckProject(const DriverLibrary &library, const std::string &file);
int runImportTags(const DriverLibrary &library, const std::string &file, const std::string &output);
int runRecipeList(const Project *project);
int runRecipeShow(const TagBook &book, const RecipeOptions &options);

/// Lists the names of the project's tags, recipes or groups, one a line.
int runComplete(const TagBook &book, const Project &project, const std::string &kind);
int runTypes(const DriverLibrary &library);
int runCopies(const DriverLibrary &library, const std::string &item, long count, long step);

#endif
