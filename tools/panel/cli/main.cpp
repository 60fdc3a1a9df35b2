#include "cli/arguments.h"
#include "cli/help_format.h"
#include "cli/plant_arguments.h"
#include "commands/ending.h"
#include "common/suggestion.h"
#include "common/usage_error.h"
#include "link/host_port.h"
#include "project/settings.h"
#include "terminal/stop_flag.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

// Parses the command line, runs the command that was given, and says in one line what is wrong with it.

namespace {

const char FOOTER[] =
    "Items are TYPE:ADDRESS[:COUNT] in the driver's names and notation, such as DM:100:2 or CIO_bit:0.5; see "
    "'fins_panel types'. A data type behind a slash, such as DM:100/f32, tells how words are read and written: u16, s16, "
    "u32, s32, u64, s64, f32, f64, bcd16, bcd32, hex, hex32, bits or string; COUNT then counts such values.\n"
    "The PLC's manuals' addresses and types are taken, too: D100:2 for DM:100:2, W3.05 for WR_bit:3.5, 100 for CIO:100, "
    "D100/REAL for DM:100/f32.\n"
    "With --project FILE the names of its tags are items too, and HOST is left out if the file names the PLC.\n"
    "Results go to stdout, messages to stderr.\n"
    "Exit codes: 0 done; 1 the PLC refused a request or a value differed; 2 bad usage; 3 no link, no answer in time, or a write that is unconfirmed or was not sent.\n"
    "Writing moves machines. Only --allow-mode-change and 'plc mode' change the PLC's operating mode.";

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

// Both stand before the command or behind it.
void refuseTwice(const CLI::App &app, const CLI::App &command)
{
    for (const char *name : {"--project", "--plc", "--host"}) {
        const CLI::Option *own = command.get_option_no_throw(name);
        if (own && own->count() > 0 && app.get_option(name)->count() > 0)
            throw UsageError(std::string(name) + " is given twice; leave one out");
    }
}

// ---- What is said of a bad command line --------------------------------------------------------------------------

std::vector<std::string> commandNames(const CLI::App &app)
{
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
        if (!command->get_group().empty())
            names.push_back(command->get_name());
    }
    return names;
}

std::string unknownOption(const CLI::App &app, const std::string &option)
{
    std::vector<std::string> names;
    for (const CLI::App *level = &app; level; level = level->get_subcommands().empty() ? nullptr
                                                                                      : level->get_subcommands().front()) {
        for (const CLI::Option *known : level->get_options()) {
            for (const std::string &name : known->get_lnames())
                names.push_back("--" + name);
        }
    }
    const std::string name = option.substr(0, option.find('='));
    return "there is no option '" + name + "'" + hintAt(nearestWord(name, names));
}

// `group` needs one of its commands, and got none.
std::string missingCommand(const CLI::App &app, const CLI::App &group, const std::vector<std::string> &rest)
{
    const std::vector<std::string> names = commandNames(group);
    const std::string path = &group == &app ? "" : group.get_name() + " ";
    const std::string all  = "; the commands " + (path.empty() ? "" : "of " + path) + "are " + CLI::detail::join(names, ", ");
    if (rest.empty())
        return "a command is missing" + all;
    const std::string nearest = nearestWord(rest.front(), names);
    return "there is no command '" + path + rest.front() + "'" + (nearest.empty() ? all : hintAt(path + nearest));
}

std::string refusalText(const CLI::App &app, const CLI::ParseError &error)
{
    const std::vector<std::string> rest = app.remaining(true);
    const CLI::App &group = app.get_subcommands().empty() ? app : *app.get_subcommands().front();
    const bool lacksCommand = group.get_require_subcommand_min() > 0 && group.get_subcommands().empty();
    const bool isRequired   = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const bool isExtra      = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
    if ((isExtra || (isRequired && lacksCommand)) && !rest.empty() && rest.front().compare(0, 1, "-") == 0)
        return unknownOption(app, rest.front());
    if (isRequired && lacksCommand)
        return missingCommand(app, group, rest);
    return error.what();
}

int complain(const std::string &text, int code)
{
    std::cerr << "fins_panel: " << text << std::endl;
    return code;
}

// ---- The run -----------------------------------------------------------------------------------------------------

// Before anything of the project is known, a command line without one can be refused.
void prepare(CLI::App &app, CLI::App &command, Arguments &arguments)
{
    refuseTwice(app, command);
    const bool hasProject = !arguments.projectFile.empty();
    if (!hasProject)
        placeArguments(command, arguments);
    arguments.library = std::make_unique<DriverLibrary>(arguments.libraryFile);
    arguments.book    = std::make_unique<TagBook>(*arguments.library);
    if (isForPlant(command, arguments)) {
        arguments.plcs = chosenPlcs(command, arguments);
        return;
    }
    if (hasProject) {
        applyProject(command, arguments);
        placeArguments(command, arguments);
    }
    setValueDefaults(command, arguments);
}

int run(CLI::App &app, Arguments &arguments)
{
    Statistics statistics;
    const TimePoint start = Clock::now();
    CLI::App &command = givenCommand(app);
    prepare(app, command, arguments);
    const CLI::Option *giveUp = command.get_option_no_throw(settings::GIVE_UP.option);
    arguments.link.endsUnreachable = giveUp && giveUp->count() == 0;
    arguments.link.statistics = &statistics;
    arguments.link.roundTrips = arguments.stats;
    arguments.link.trace      = traceMode(arguments.trace);
    arguments.link.timeout    = Millis(arguments.timeoutMs);
    installStopSignals();
    arguments.link.stop = &programStop();
    const int code = arguments.action(*arguments.library);
    if (arguments.stats)
        std::cerr << statistics.text(std::chrono::duration_cast<Millis>(Clock::now() - start)) << std::flush;
    return code;
}

void describe(CLI::App &app, Arguments &arguments)
{
    app.formatter(std::make_shared<HelpFormat>());
    app.set_version_flag("--version", "fins_panel " FINS_VERSION, "Print the version and exit");
    app.set_help_all_flag("--help-all", "Print the help of every sub-command and exit");
    app.footer(FOOTER);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--library", arguments.libraryFile,
                   "driver library; the one installed with this program by default")->type_name("FILE");
    addCommands(app, arguments);
}

int parseAndRun(int argc, char **argv)
{
    Arguments arguments;
    CLI::App app("A panel runtime on the command line for Omron PLCs with FINS/TCP", "fins_panel");
    describe(app, arguments);
    try {
        app.parse(argc, argv);
        const int code = run(app, arguments);
        return std::cout.flush() ? code : std::max(code, complain("standard output cannot be written", EXIT_REFUSED));
    } catch (const CLI::Success &helpOrVersion) {
        return app.exit(helpOrVersion);
    } catch (const CLI::ParseError &error) {
        return complain(refusalText(app, error) + "; see fins_panel --help", EXIT_USAGE);
    } catch (const UsageError &error) {
        return complain(error.what(), EXIT_USAGE);
    } catch (const fins::ConfigError &error) {
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
