#include "commands.h"
#include "exit_codes.h"
#include "host.h"
#include "stop_flag.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <iostream>

// The command line of fins_panel: options and help only.

namespace {

const char FOOTER[] =
    "Items are TYPE:ADDRESS[:COUNT] in the driver's names and notation, such as DM:100:2 or CIO_bit:0.5; see\n"
    "'fins_panel types'. Results go to stdout, messages to stderr.\n"
    "Exit codes: 0 done; 1 the PLC refused a request or a value differed; 2 bad usage;\n"
    "3 no link or no answer in time.\n"
    "Writing moves machines, and the driver may switch the PLC to MONITOR mode when a write needs it.";

struct Arguments {
    std::string              library;
    std::string              host;
    bool                     hasHost    = false; // an empty host is one too, and wrong
    long                     timeoutMs  = 1000;
    long                     intervalMs = 20;
    double                   giveUp     = 10;
    LinkOptions              link;
    std::string              trace;
    bool                     stats      = false;
    std::vector<std::string> items;
    WatchOptions             watch;
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
        ->required()->each([&arguments](const std::string &) { arguments.hasHost = true; });
    command.add_option("--timeout", arguments.timeoutMs, "deadline to connect, to send and for a reply, in ms")
        ->check(CLI::Range(10L, 60000L))->capture_default_str();
    command.add_option("--words-per-frame", arguments.link.wordsPerFrame, "most words of one request")
        ->check(CLI::Range(1, wordsLimit))->capture_default_str();
    command.add_option("--retries", arguments.link.retries, "missing or wrong replies in a row that drop the link")
        ->check(CLI::Range(1, 100))->capture_default_str();
    command.add_option("--station", arguments.link.station, "station number of the PLC in the panel")
        ->check(CLI::Range(0, 255))->capture_default_str();
    command.add_flag("--trace{hex}", arguments.trace,
                     "show every frame on stderr, > sent and < received: in hex; --trace=line in words, one line each;\n"
                     "--trace=full with a line for each field")
        ->check(CLI::IsMember({"hex", "line", "full"}));
    command.add_flag("--stats", arguments.stats,
                     "show at the end, on stderr: requests, replies, rejections, retries, reconnects, round trips, words");
}

void addGiveUp(CLI::App &command, Arguments &arguments)
{
    command.add_option("--give-up", arguments.giveUp, "time after which the command ends without success, in seconds")
        ->check(CLI::Range(0.1, 86400.0))->capture_default_str();
}

void addItems(CLI::App &command, std::vector<std::string> &items, const char *help)
{
    command.add_option("items", items, help)->required();
}

Millis giveUpTime(const Arguments &arguments)
{
    return std::chrono::duration_cast<Millis>(std::chrono::duration<double>(arguments.giveUp));
}

using Action = std::function<int(const DriverLibrary &)>;

void addWatch(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *command = app.add_subcommand("watch", "Print a line for every change: time (UTC), item, old, new value");
    addLinkOptions(*command, arguments, READ_WORDS_LIMIT);
    addItems(*command, arguments.watch.items,
             "items to watch; the first value of each is a line with '-' as old value");
    command->add_option("--for", arguments.watch.forSeconds, "end after this many seconds; for ever by default")
        ->check(CLI::Range(0.001, 1e9));
    command->add_option("--changes", arguments.watch.changes, "end after this many changes, first values not counted")
        ->check(CLI::Range(1L, 1000000000L));
    command->add_option("--interval", arguments.intervalMs, "pause between requests in ms, 0 to 60000")
        ->check(CLI::Range(0L, 60000L))->capture_default_str();
    command->callback([&] {
        action = [&](const DriverLibrary &library) {
            arguments.link.interval = Millis(arguments.intervalMs);
            return runWatch(library, arguments.link, arguments.watch);
        };
    });
}

void addRead(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *command = app.add_subcommand("read", "Read items once: ITEM = VALUE ...");
    addLinkOptions(*command, arguments, READ_WORDS_LIMIT);
    addGiveUp(*command, arguments);
    addItems(*command, arguments.items, "items to read");
    command->callback([&] {
        action = [&](const DriverLibrary &library) {
            return runRead(library, arguments.link, giveUpTime(arguments), arguments.items);
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
    command->callback([&] {
        action = [&](const DriverLibrary &library) {
            return runWrite(library, arguments.link, giveUpTime(arguments), arguments.items);
        };
    });
}

void addRecipe(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *recipe = app.add_subcommand("recipe", "Transfer a recipe file of lines TYPE:ADDRESS[:COUNT] = VALUE ...");
    recipe->require_subcommand(1);
    CLI::App *read  = recipe->add_subcommand("read", "Read the variables of a recipe file; its values may be left out");
    CLI::App *write = recipe->add_subcommand("write", "Write a recipe file, read it back and compare");
    read->add_option("--output", arguments.recipe.output, "file for the values; standard output by default");
    for (CLI::App *command : {read, write}) {
        const bool isWrite = command == write;
        addLinkOptions(*command, arguments, isWrite ? WRITE_WORDS_LIMIT : READ_WORDS_LIMIT);
        addGiveUp(*command, arguments);
        command->add_option("file", arguments.recipe.file, "recipe file")->required();
        command->callback([&, isWrite] {
            action = [&, isWrite](const DriverLibrary &library) {
                arguments.recipe.write = isWrite;
                return runRecipe(library, arguments.link, giveUpTime(arguments), arguments.recipe);
            };
        });
    }
}

void addOffline(CLI::App &app, Arguments &arguments, Action &action)
{
    CLI::App *check = app.add_subcommand("check", "Check items without a PLC");
    addItems(*check, arguments.items, "items to check");
    check->callback([&] { action = [&](const DriverLibrary &library) { return runCheck(library, arguments.items); }; });

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

int run(const Action &action, Arguments &arguments)
{
    Statistics statistics;
    const TimePoint start = Clock::now();
    arguments.link.statistics = &statistics;
    arguments.link.trace      = traceMode(arguments.trace);
    if (arguments.hasHost)
        parseHost(arguments.host, arguments.link.host, arguments.link.port);
    arguments.link.timeout = Millis(arguments.timeoutMs);
    const DriverLibrary library(arguments.library);
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

} // namespace

int main(int argc, char **argv)
{
    Arguments arguments;
    Action action;
    CLI::App app("A panel runtime on the command line for Omron PLCs with FINS/TCP", "fins_panel");
    app.footer(FOOTER);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--library", arguments.library, "driver library; the one installed with this program by default");
    addWatch(app, arguments, action);
    addRead(app, arguments, action);
    addWrite(app, arguments, action);
    addRecipe(app, arguments, action);
    addOffline(app, arguments, action);
    try {
        app.parse(argc, argv);
        const int code = run(action, arguments);
        return std::cout.flush() ? code : complain("standard output cannot be written", EXIT_REFUSED);
    } catch (const CLI::Success &help) {
        return app.exit(help);
    } catch (const CLI::ParseError &error) {
        return complain(std::string(error.what()) + "; see fins_panel --help", EXIT_USAGE);
    } catch (const UsageError &error) {
        return complain(error.what(), EXIT_USAGE);
    } catch (const std::exception &error) {
        return complain(error.what(), EXIT_NO_LINK);
    }
}
