#include "commands.h"
#include "exit_codes.h"
#include "host.h"
#include "stop_flag.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>

// The command line of fins_panel: options and help only.

namespace {

const char FOOTER[] =
    "Items are TYPE:ADDRESS[:COUNT] in the driver's names and notation, such as DM:100:2 or CIO_bit:0.5; see\n"
    "'fins_panel types'. A data type behind a slash, such as DM:100/f32, tells how words are read and written:\n"
    "u16, s16, u32, s32, u64, s64, f32, f64, bcd16, bcd32, hex, bits or string; COUNT then counts such values.\n"
    "With --project FILE the names of its tags are items too, and HOST is left out if the file names the PLC.\n"
    "Results go to stdout, messages to stderr.\n"
    "Exit codes: 0 done; 1 the PLC refused a request or a value differed; 2 bad usage;\n"
    "3 no link or no answer in time.\n"
    "Writing moves machines, and the driver may switch the PLC to MONITOR mode when a write needs it.";

// How values are shown and taken where neither an item nor a tag says it.
struct ValueArguments {
    std::string as;
    std::string wordOrder;
    std::string characterOrder;
    ValueFormat format;
};

struct Arguments {
    std::string              library;
    std::string              projectFile;
    std::string              otherHost;  // in place of the project's
    ValueArguments           values;
    std::unique_ptr<TagBook> book;
    Project                  project;
    std::string              file;       // of check-project and import-tags
    std::string              output;
    WriteOptions             write;
    std::string              host;
    bool                     hasHost    = false; // an empty host is one too, and wrong
    long                     timeoutMs  = 1000;
    long                     intervalMs = 20;
    double                   giveUp     = 10;
    double                   retryRefused = std::chrono::duration<double>(PollPlan::PAUSE).count();
    LinkOptions              link;
    std::string              trace;
    bool                     stats      = false;
    std::vector<std::string> items;
    WatchOptions             watch;
    BenchOptions             bench;
    long                     roundTrips = 100;
    RecipeOptions            recipe;
    std::string              copiesItem;
    long                     copies = 1;
    long                     step   = 1;
};

// The longest read that fits a FINS frame of a PLC's Ethernet unit; a write is shorter, see WRITE_WORDS_LIMIT.
const qint32 READ_WORDS_LIMIT = 999;

void addLinkOptions(CLI::App &command, Arguments &arguments, qint32 wordsLimit)
{
    command.add_option("host", arguments.host, "PLC: HOST, HOST:PORT or [IPV6]:PORT; port 9600 by default")
        ->each([&arguments](const std::string &) { arguments.hasHost = true; });
    command.add_option("--timeout", arguments.timeoutMs, "deadline to connect, to send and for a reply, in ms")
        ->check(CLI::Range(10L, 60000L))->capture_default_str();
    command.add_option("--words-per-frame", arguments.link.wordsPerFrame, "most words of one request")
        ->check(CLI::Range(1, wordsLimit))->capture_default_str();
    command.add_option("--retries", arguments.link.retries, "missing or wrong replies in a row that drop the link")
        ->check(CLI::Range(1, 100))->capture_default_str();
    command.add_option("--station", arguments.link.station, "station number of the PLC in the panel")
        ->check(CLI::Range(0, 255))->capture_default_str();
    command.add_flag("--trace{hex}", arguments.trace,
                     "show every frame on stderr, > sent and < received: in hex; --trace=line in words, one line\n"
                     "each; --trace=full with a line for each field")
        ->check(CLI::IsMember({"hex", "line", "full"}));
    command.add_flag("--stats", arguments.stats,
                     "show at the end, on stderr: requests, replies, retries, reconnects, round trips, words, errors");
}

void addGiveUp(CLI::App &command, Arguments &arguments)
{
    command.add_option("--give-up", arguments.giveUp, "time after which the command ends without success, in seconds")
        ->check(CLI::Range(0.1, 86400.0))->capture_default_str();
}

void addModeChange(CLI::App &command, Arguments &arguments)
{
    command.add_flag("--allow-mode-change", arguments.link.allowModeChange,
                     "let the driver switch the PLC to MONITOR mode when a write needs it");
}

void addKeepGoing(CLI::App &command, bool &keepGoing)
{
    command.add_flag("--keep-going", keepGoing,
                     "go on with the other writes when one is refused or its fate is unknown");
}

void addItems(CLI::App &command, std::vector<std::string> &items, const char *help)
{
    command.add_option("items", items, help);
}

void addValueOptions(CLI::App &command, ValueArguments &values)
{
    command.add_option("--as", values.as, "data type of word items that have none behind a slash; u16 by default");
    command.add_option("--word-order", values.wordOrder,
                       "word of a 32- or 64-bit number that comes first: low, the least significant, or high")
        ->check(CLI::IsMember({"low", "high"}))->default_str("low");
    command.add_option("--char-order", values.characterOrder, "byte of a word with the first character: high or low")
        ->check(CLI::IsMember({"low", "high"}))->default_str("high");
    command.add_option("--scale", values.format.scale, "what one step of the raw number is worth; not 0")
        ->capture_default_str();
    command.add_option("--offset", values.format.offset, "added to the scaled number")->capture_default_str();
    command.add_option("--decimals", values.format.decimals, "digits behind the point; as many as needed by default")
        ->check(CLI::Range(0, DECIMALS_LIMIT));
    command.add_option("--unit", values.format.unit, "shown behind the values");
}

Millis millis(double seconds)
{
    return std::chrono::duration_cast<Millis>(std::chrono::duration<double>(seconds));
}

Millis giveUpTime(const Arguments &arguments)
{
    return millis(arguments.giveUp);
}

using Action = std::function<int(const DriverLibrary &)>;

void addWatchTimes(CLI::App &command, Arguments &arguments)
{
    command.add_option("--for", arguments.watch.forSeconds, "end after this many seconds; for ever by default")
        ->check(CLI::Range(0.001, 1e9));
    command.add_option("--changes", arguments.watch.changes, "end after this many changes, first values not counted")
        ->check(CLI::Range(1L, 1000000000L));
    command.add_option("--interval", arguments.intervalMs, "pause between requests in ms, 0 to 60000")
        ->check(CLI::Range(0L, 60000L))->capture_default_str();
    command.add_option("--retry-refused", arguments.retryRefused,
                        "time in seconds after which a block that the PLC refused is read again, 0.01 to 86400")
        ->check(CLI::Range(0.01, 86400.0))->capture_default_str();
}

void addWatch(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *command = app.add_subcommand("watch",
                                           "Watch values: a live table on a terminal, else a line for every change");

    addLinkOptions(*command, arguments, READ_WORDS_LIMIT);
    addItems(*command, arguments.watch.items,
             "items to watch; a line is time (UTC), item, old and new value, '-' being the old one of a first value");
    addWatchTimes(*command, arguments);
    command->add_option("--write", arguments.watch.writes,
                        "ITEM=VALUE to write once when the link is up; repeatable")->allow_extra_args(false);
    addModeChange(*command, arguments);
    addKeepGoing(*command, arguments.watch.keepGoing);
    CLI::Option *lines = command->add_flag("--lines", "lines on a terminal too, in place of the live table");
    CLI::Option *json  = command->add_flag("--json", "a JSON object per line");
    CLI::Option *csv   = command->add_flag("--csv", "comma-separated values");
    lines->excludes(json)->excludes(csv);
    json->excludes(csv);
    command->callback([&, lines, json, csv] {
        if (*lines)
            arguments.watch.format = WatchFormat::LINES;
        if (*json || *csv)
            arguments.watch.format = *json ? WatchFormat::JSON : WatchFormat::CSV;
        action = [&](const DriverLibrary &library) {
            arguments.link.interval = Millis(arguments.intervalMs);
            arguments.link.refusedPause = millis(arguments.retryRefused);
            arguments.watch.book    = arguments.book.get();
            return runWatch(library, arguments.link, arguments.watch);
        };
    });
}

void addLink(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *command = app.add_subcommand("link", "Try the link to a PLC step by step, and say what is wrong with it");
    addLinkOptions(*command, arguments, READ_WORDS_LIMIT);
    command->add_option("--count", arguments.roundTrips, "round trips to measure")
        ->check(CLI::Range(1L, 1000000L))->capture_default_str();
    command->callback([&] {
        action = [&](const DriverLibrary &library) { return runLink(library, arguments.link, arguments.roundTrips); };
    });
}

void addBench(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *command = app.add_subcommand("bench", "Measure the refresh time of a poll for several block sizes");
    addLinkOptions(*command, arguments, READ_WORDS_LIMIT);
    addGiveUp(*command, arguments);
    command->add_option("polled", arguments.items, "items to poll; a block of DM from 0 on by default");
    command->add_option("--words", arguments.bench.words, "words of that block")
        ->check(CLI::Range(1L, 10000L))->capture_default_str();
    command->add_option("--sizes", arguments.bench.sizes, "words per frame to try, separated by commas")
        ->delimiter(',')->allow_extra_args(false)->check(CLI::Range(1, READ_WORDS_LIMIT))->capture_default_str();
    command->add_option("--for", arguments.bench.forSeconds, "time for each size in seconds")
        ->check(CLI::Range(0.01, 3600.0))->capture_default_str();
    command->callback([&] {
        action = [&](const DriverLibrary &library) {
            arguments.bench.book  = arguments.book.get();
            arguments.bench.items = arguments.items;
            return runBench(library, arguments.link, giveUpTime(arguments), arguments.bench);
        };
    });
}

void addRead(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *command = app.add_subcommand("read", "Read items once: ITEM = VALUE ...");
    addLinkOptions(*command, arguments, READ_WORDS_LIMIT);
    addGiveUp(*command, arguments);
    addItems(*command, arguments.items, "items to read");
    addValueOptions(*command, arguments.values);
    command->callback([&] {
        action = [&](const DriverLibrary &) {
            return runRead(*arguments.book, arguments.link, giveUpTime(arguments), arguments.items);
        };
    });
}

void addWrite(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *command = app.add_subcommand("write",
                                           "Write values and read them back: ITEM = VALUE ... as the PLC holds it");
    addLinkOptions(*command, arguments, WRITE_WORDS_LIMIT);
    addGiveUp(*command, arguments);
    addItems(*command, arguments.items,
             "ITEM=VALUE[,VALUE...]; words -32768 to 65535 or 0x0 to 0xFFFF, bits 0 or 1");
    addValueOptions(*command, arguments.values);
    command->add_flag("--dry-run", arguments.write.dryRun,
                      "show register, wire address and bytes of each frame, send nothing");
    command->add_flag("--confirm", arguments.write.confirm, "ask before anything is written");
    addModeChange(*command, arguments);
    addKeepGoing(*command, arguments.write.keepGoing);
    command->callback([&] {
        action = [&](const DriverLibrary &) {
            arguments.write.writes = arguments.items;
            return runWrite(*arguments.book, arguments.link, giveUpTime(arguments), arguments.write);
        };
    });
}

void addRecipeTransfer(CLI::App &recipe, Arguments &arguments, Action &action, RecipeTask task, const char *name,
                       const char *help)
{
    CLI::App *command = recipe.add_subcommand(name, help);
    addLinkOptions(*command, arguments, task == RecipeTask::WRITE ? WRITE_WORDS_LIMIT : READ_WORDS_LIMIT);
    addGiveUp(*command, arguments);
    command->add_option("file", arguments.recipe.file, "recipe file (text, .toml or .csv), or a recipe of the project");
    if (task == RecipeTask::READ)
        command->add_option("--output", arguments.recipe.output,
                            "file for the values, in the form of its ending .toml, .csv or any other; standard output\n"
                            "by default");
    if (task == RecipeTask::WRITE) {
        command->add_flag("--dry-run", arguments.recipe.dryRun,
                          "show register, wire address and bytes of each frame, send nothing");
        command->add_flag("--confirm", arguments.recipe.confirm, "ask before anything is written");
        addModeChange(*command, arguments);
        command->add_flag("--table", arguments.recipe.table, "differences as a table, as on a terminal");
    }
    command->callback([&, task] {
        action = [&, task](const DriverLibrary &) {
            arguments.recipe.task = task;
            return runRecipe(*arguments.book, arguments.link, giveUpTime(arguments), arguments.recipe);
        };
    });
}

void addRecipe(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *recipe = app.add_subcommand("recipe", "List, show, read, write and compare recipes");
    recipe->require_subcommand(1);
    addRecipeTransfer(*recipe, arguments, action, RecipeTask::READ, "read",
                      "Read the variables of a recipe; its values may be left out");
    addRecipeTransfer(*recipe, arguments, action, RecipeTask::WRITE, "write",
                      "Write a recipe, read it back and compare");
    addRecipeTransfer(*recipe, arguments, action, RecipeTask::COMPARE, "compare",
                      "Show where the PLC differs from a recipe");
    CLI::App *list = recipe->add_subcommand("list", "List the recipes of the project");
    list->callback([&] { action = [&](const DriverLibrary &) { return runRecipeList(arguments.recipe.project); }; });
    CLI::App *show = recipe->add_subcommand("show", "Show the variables and values of a recipe");
    show->add_option("file", arguments.recipe.file, "recipe file, or a recipe of the project")->required();
    show->callback([&] {
        action = [&](const DriverLibrary &) { return runRecipeShow(*arguments.book, arguments.recipe); };
    });
}

void addProject(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *check = app.add_subcommand("check-project", "Check a project file without a PLC, and show every error");
    check->add_option("file", arguments.file, "project file (TOML)")->required();
    check->callback([&] {
        action = [&](const DriverLibrary &library) { return runCheckProject(library, arguments.file); };
    });
    CLI::App *import = app.add_subcommand("import-tags", "Turn a CSV list of tags into the TOML of a project file");
    import->add_option("file", arguments.file,
                       "CSV file; columns name, type, address, and as needed count, data, word_order, char_order,\n"
                       "scale, offset, decimals, min, max, unit, access, comment, screen")->required();
    import->add_option("--output", arguments.output, "file for the tags; standard output by default");
    import->callback([&] {
        action = [&](const DriverLibrary &library) {
            return runImportTags(library, arguments.file, arguments.output);
        };
    });
}

void addOffline(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *check = app.add_subcommand("check", "Check items without a PLC");
    addItems(*check, arguments.items, "items to check");
    addValueOptions(*check, arguments.values);
    check->callback([&] {
        action = [&](const DriverLibrary &) { return runCheck(*arguments.book, arguments.items); };
    });

    CLI::App *types = app.add_subcommand("types", "List the register types with their ranges and notations");
    types->callback([&] { action = runTypes; });

    CLI::App *copies = app.add_subcommand("copies", "List the addresses of several copies of a variable");
    copies->add_option("item", arguments.copiesItem, "TYPE:ADDRESS of the first copy")->required();
    copies->add_option("count", arguments.copies, "number of copies")->required()->check(CLI::Range(1L, 100000L));
    copies->add_option("--step", arguments.step, "distance of two copies in words, or bits for a bit type")
        ->check(CLI::Range(1L, 100000L))->capture_default_str();
    copies->callback([&] {
        action = [&](const DriverLibrary &library) {
            return runCopies(library, arguments.copiesItem, arguments.copies, arguments.step);
        };
    });
}

TraceMode traceMode(const std::string &name)
{
    if (name.empty())
        return TraceMode::NONE;
    return name == "line" ? TraceMode::LINE : name == "full" ? TraceMode::FULL : TraceMode::HEX;
}

// The command that was given, of two levels at most.
CLI::App &givenCommand(CLI::App &app)
{
    CLI::App *command = app.get_subcommands().front();
    return command->get_subcommands().empty() ? *command : *command->get_subcommands().front();
}

// A setting of the project counts where its option was not given.
template <typename Value>
void prefer(CLI::App &command, const char *option, const std::optional<long> &setting, Value &value)
{
    const CLI::Option *given = command.get_option_no_throw(option);
    if (setting && given && given->count() == 0)
        value = static_cast<Value>(*setting);
}

// Where the PLC is known without it, the first positional argument is no host but what comes behind it.
void placeHost(CLI::App &command, Arguments &arguments)
{
    const std::string known = arguments.otherHost.empty() ? arguments.project.host : arguments.otherHost;
    if (!command.get_option_no_throw("host") || known.empty())
        return;
    if (arguments.hasHost && command.get_option_no_throw("file")) {
        if (!arguments.recipe.file.empty())
            throw UsageError("'" + arguments.recipe.file + "' is one argument too many: the PLC is " + known
                             + "; give another one with --host");
        arguments.recipe.file = arguments.host;
    } else if (arguments.hasHost) {
        std::vector<std::string> &items = command.get_name() == "watch" ? arguments.watch.items : arguments.items;
        items.insert(items.begin(), arguments.host);
    }
    arguments.host    = known;
    arguments.hasHost = true;
}

void requirePositionals(CLI::App &command, const Arguments &arguments)
{
    const std::vector<std::string> &items = command.get_name() == "watch" ? arguments.watch.items : arguments.items;
    if (command.get_option_no_throw("host") && !arguments.hasHost)
        throw CLI::RequiredError("host");
    if (command.get_option_no_throw("items") && items.empty())
        throw CLI::RequiredError("items");
    if (command.get_option_no_throw("host") && command.get_option_no_throw("file") && arguments.recipe.file.empty())
        throw CLI::RequiredError("file");
}

void readProjectFile(Arguments &arguments)
{
    if (arguments.projectFile.empty())
        return;
    Problems problems;
    arguments.project        = readProject(arguments.projectFile, *arguments.book, problems);
    arguments.recipe.project = &arguments.project;
    problems.refuse("; see fins_panel check-project " + arguments.projectFile);
}

void setValueDefaults(CLI::App &command, Arguments &arguments)
{
    ValueArguments &values = arguments.values;
    OrderDefaults orders   = arguments.project.orders;
    parseOrder(values.wordOrder, orders.words);
    parseOrder(values.characterOrder, orders.characters);
    ValueFormat format = values.format;
    if (!values.as.empty()) {
        const ValueFormat typed = parseFormat(values.as, orders);
        format.type  = typed.type;
        format.order = typed.order;
    }
    if (format.scale == 0)
        throw UsageError("--scale is 0; give what one step of the raw number is worth, such as 0.1");
    for (const char *name : {"--scale", "--offset", "--decimals"}) {
        const CLI::Option *option = command.get_option_no_throw(name);
        if (option && option->count() > 0 && !isNumeric(format.type))
            throw UsageError(std::string(name) + " is for numbers; leave it out, or change --as " + values.as);
    }
    arguments.book->setDefaults(format, orders);
}

void applyProject(CLI::App &command, Arguments &arguments)
{
    readProjectFile(arguments);
    const Project &project = arguments.project;
    prefer(command, "--timeout", project.timeoutMs, arguments.timeoutMs);
    prefer(command, "--interval", project.intervalMs, arguments.intervalMs);
    prefer(command, "--words-per-frame", project.wordsPerFrame, arguments.link.wordsPerFrame);
    prefer(command, "--retries", project.retries, arguments.link.retries);
    prefer(command, "--station", project.station, arguments.link.station);
    arguments.link.allowModeChange = arguments.link.allowModeChange || project.allowModeChange;
}

// Settles the PLC and the items, and refuses what is missing.
void placeArguments(CLI::App &command, Arguments &arguments)
{
    placeHost(command, arguments);
    requirePositionals(command, arguments);
    if (arguments.hasHost)
        parseHost(arguments.host, arguments.link.host, arguments.link.port);
}

int run(CLI::App &app, const Action &action, Arguments &arguments)
{
    Statistics statistics;
    const TimePoint start = Clock::now();
    arguments.link.statistics = &statistics;
    arguments.link.roundTrips = arguments.stats;
    arguments.link.trace      = traceMode(arguments.trace);
    CLI::App &command = givenCommand(app);
    const bool hasProject = !arguments.projectFile.empty();
    if (!hasProject)
        placeArguments(command, arguments);
    const DriverLibrary library(arguments.library);
    arguments.book = std::make_unique<TagBook>(library);
    if (hasProject) {
        applyProject(command, arguments);
        placeArguments(command, arguments);
    }
    setValueDefaults(command, arguments);
    arguments.link.timeout = Millis(arguments.timeoutMs);
    setenv("RES_OPTIONS", resolverOptions(arguments.link.timeout).c_str(), 0); // the user's own count
    installStopSignals();
    const int code = action(library);
    if (arguments.stats)
        std::cerr << statistics.text(std::chrono::duration_cast<Millis>(Clock::now() - start)) << std::flush;
    return code;
}

int complain(const std::string &text, int code)
{
    std::cerr << "fins_panel: " << text << std::endl;
    return code;
}

int parseAndRun(int argc, char **argv)
{
    Arguments arguments;
    Action action;
    CLI::App app("A panel runtime on the command line for Omron PLCs with FINS/TCP", "fins_panel");
    app.set_version_flag("--version", "fins_panel " FINS_VERSION, "Print the version and exit");
    app.set_help_all_flag("--help-all", "Print the help of every sub-command and exit");
    app.footer(FOOTER);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--library", arguments.library, "driver library; the one installed with this program by default");
    app.add_option("--project", arguments.projectFile, "project file (TOML): connection, settings, tags, recipes");
    app.add_option("--host", arguments.otherHost, "PLC in place of the project's");
    addLink(app, arguments, action);
    addWatch(app, arguments, action);
    addRead(app, arguments, action);
    addWrite(app, arguments, action);
    addRecipe(app, arguments, action);
    addProject(app, arguments, action);
    addBench(app, arguments, action);
    addOffline(app, arguments, action);
    try {
        app.parse(argc, argv);
        const int code = run(app, action, arguments);
        return std::cout.flush() ? code : complain("standard output cannot be written", EXIT_REFUSED);
    } catch (const CLI::Success &helpOrVersion) {
        return app.exit(helpOrVersion);
    } catch (const CLI::ParseError &error) {
        return complain(std::string(error.what()) + "; see fins_panel --help", EXIT_USAGE);
    } catch (const UsageError &error) {
        return complain(error.what(), EXIT_USAGE);
    } catch (const std::exception &error) {
        return complain(error.what(), EXIT_NO_LINK);
    }
}

} // namespace

// What is left to catch here is a failed allocation.
int main(int argc, char **argv)
{
    try {
        return parseAndRun(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "fins_panel: %s\n", error.what());
        return EXIT_NO_LINK;
    }
}
