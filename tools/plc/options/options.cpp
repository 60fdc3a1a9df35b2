#include "options/options.h"

#include "console/console.h"
#include "options/profile.h"
#include "options/project.h"
#include "options/settings.h"
#include "plants/shipped_plants.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <set>

namespace plc {

namespace {

enum { EXIT_DONE = 0, EXIT_BAD_USAGE = 2 };

std::string footer()
{
    return "Plants, with their addresses:\n" + plantHelp() + "\nFunctions in the expressions of plants:\n" +
           functionHelp() + "\nProfiles:\n" + profileHelp() +
           "\nProject file:\n" + projectHelp() +
           "\nRecordings: captures, or lines SECONDS CLIENT < or > HEX, < from the client, > to it. Replayed\n"
           "requests may differ in service ID and nodes; what is not in the recording is refused with end code 0401.\n"
           "\nFaults, each NAME[=VALUE][:AIM=VALUE,...][@PROBABILITY][#TIMES]:\n" + Faults::help() +
           "\nCommands on standard input, each answered by one line on standard output:\n" + Console::help() +
           "\nExit codes: 0 ended by quit or a signal, 2 bad usage, 3 the address cannot be listened on.";
}

// What is wrong with a value, or an empty text.
std::string checkSetting(const Setting &setting, const std::string &text)
{
    Options tried;
    return text.empty() && setting.alone ? std::string() : applySetting(setting, text, &tried);
}

void addSetting(CLI::App &app, const Setting &setting, Options *options)
{
    const auto apply = [&setting, options](const std::vector<std::string> &texts) {
        for (const std::string &text : texts) {
            const bool isAlone = text.empty() && setting.alone;
            const std::string wrong = applySetting(setting, isAlone ? setting.alone : text, options);
            if (!wrong.empty()) // of itself it is good
                throw CLI::ValidationError(setting.option, wrong);
        }
    };
    CLI::Option *const option =
        app.add_option_function<std::vector<std::string>>(setting.option, apply, settingHelp(setting));
    const bool isFlag = setting.kind == SettingKind::FLAG;
    option->expected(setting.alone ? 0 : 1, isFlag ? 0 : 1)->allow_extra_args(false);
    option->multi_option_policy(setting.kind == SettingKind::LIST ? CLI::MultiOptionPolicy::TakeAll
                                                                  : CLI::MultiOptionPolicy::Throw);
    option->check([&setting](const std::string &text) { return checkSetting(setting, text); });
    option->type_name(setting.kind == SettingKind::NUMBER ? "UINT" : (isFlag ? "" : "TEXT"));
    if (setting.preset)
        option->default_str(setting.preset(*options));
}

// What a run prints instead of serving.
struct Listings {
    bool        plants = false;
    bool        profiles = false;
    std::string projectToCheck;
};

// What the command line says of all PLCs together.
struct Common {
    unsigned count = 1;
    bool     hasPort = false; // one that is not free choice
};

void addFile(CLI::App &app, const std::string &name, std::string *file, const std::string &meaning)
{
    app.add_option(name, *file, meaning)
        ->check([](const std::string &text) { return text.empty() ? "'' is no name of a file" : std::string(); });
}

void addFileOptions(CLI::App &app, Options *options, Listings *listings)
{
    addFile(app, "--project", &options->projectFile, "TOML file with settings and the memory's content at the start");
    addFile(app, "--check-project", &listings->projectToCheck, "check a project file, print every error, and end");
    app.add_option_function<std::string>(
           "--proxy", [options](const std::string &text) { parsePlcAddress(text, &options->proxy); },
           "simulate nothing: stand between clients and the PLC at HOST[:PORT]")
        ->check([](const std::string &text) {
            ProxySettings tried;
            return parsePlcAddress(text, &tried);
        });
    addFile(app, "--record", &options->recordFile,
            "write all frames to this file, which begins anew; a capture if it ends in .pcap");
    app.add_option("--record-limit", options->recordLimitKiB, "KiB after which a recording ends, 1 to 1048576")
        ->check(CLI::Range(1, 1048576))->capture_default_str();
    addFile(app, "--replay", &options->replayFile, "answer with the replies of a recording, text or capture");
    app.add_flag("--view", options->isViewed, "live view of clients and memory on the terminal");
    app.add_flag("--plants", listings->plants, "print the plants and their addresses, and end");
    app.add_flag("--profiles", listings->profiles, "print the profiles, and end");
}

// What a proxy can use; of all else the PLC that it stands before decides.
void checkProxyOptions(const CLI::App &app)
{
    const std::set<std::string> used = {"--proxy", "--port", "--bind", "--record", "--record-limit", "--trace"};
    for (const CLI::Option *const option : app.get_options())
        if (option->count() > 0 && used.count(option->get_name()) == 0)
            throw CLI::ValidationError(option->get_name(), "a proxy simulates nothing; leave it out");
}

// Returns -1 to go on, or the exit code.
int parseCommandLine(int argc, char **argv, Options *options, Listings *listings, Common *common)
{
    CLI::App app("A simulated Omron CS/CJ PLC that answers FINS/TCP.", "fins_plc");
    app.set_version_flag("--version", "fins_plc " FINS_VERSION, "Print the version and exit");
    app.footer(footer);
    for (const Setting &setting : SETTINGS)
        addSetting(app, setting, options);
    app.add_flag("--trace", options->connection.isTraced, "frames on standard error, < received, > sent");
    app.add_option("--count", common->count,
                   "PLCs that are alike, each on a free port, 1 to " + std::to_string(PLCS_MAX))
        ->check(CLI::Range(1u, unsigned(PLCS_MAX)))->capture_default_str();
    addFileOptions(app, options, listings);
    try {
        app.parse(argc, argv);
        if (!options->proxy.host.empty())
            checkProxyOptions(app);
        common->hasPort = app.count("--port") > 0 && options->port != 0;
    } catch (const CLI::Success &helpOrVersion) {
        return app.exit(helpOrVersion);
    } catch (const CLI::ParseError &error) {
        std::cerr << "fins_plc: " << error.what() << "; see fins_plc --help" << std::endl;
        return EXIT_BAD_USAGE;
    }
    return -1;
}

// Reads the project's PLCs, each beginning with `start`.
int readProject(const std::string &file, const Options &start, std::vector<Options> *plcs)
{
    const std::vector<std::string> problems = loadProject(file, start, plcs);
    for (const std::string &problem : problems)
        std::cerr << "fins_plc: " << problem << std::endl;
    return problems.empty() ? -1 : int(EXIT_BAD_USAGE);
}

int printListings(const Listings &listings)
{
    if (listings.plants)
        std::cout << plantHelp();
    if (listings.profiles)
        std::cout << profileHelp();
    if (listings.projectToCheck.empty())
        return listings.plants || listings.profiles ? int(EXIT_DONE) : -1;
    std::vector<Options> unused;
    if (readProject(listings.projectToCheck, Options(), &unused) >= 0)
        return EXIT_BAD_USAGE;
    std::size_t places = 0;
    for (const Options &plc : unused)
        places += plc.contents->size();
    std::cout << listings.projectToCheck << ": no errors, " << places << (places == 1 ? " place" : " places") << " of memory"
              << (unused.size() > 1 ? ", " + std::to_string(unused.size()) + " PLCs" : "") << std::endl;
    return EXIT_DONE;
}

// Returns -1 to go on, or the exit code.
int makeAlike(const Common &common, std::vector<Options> *plcs)
{
    if (common.count > 1 && plcs->size() > 1) {
        std::cerr << "fins_plc: --count is for one PLC and the project has " << plcs->size()
                  << "; leave one of them out" << std::endl;
        return EXIT_BAD_USAGE;
    }
    const Options first = plcs->front();
    for (unsigned i = 1; i < common.count; ++i) {
        plcs->push_back(first);
        plcs->back().name = "plc" + std::to_string(i + 1);
    }
    for (Options &plc : *plcs)
        plc.port = common.count > 1 ? std::uint16_t(0) : plc.port;
    return -1;
}

// Some options cannot be those of several PLCs. Returns -1 to go on, or the exit code.
int checkSeveral(const Common &common, const std::vector<Options> &plcs)
{
    std::string wrong;
    if (plcs.size() > 1 && common.hasPort)
        wrong = "--port is of one PLC; name the port of each in the project, or use --port 0";
    if (plcs.size() > 1 && !(plcs.front().recordFile + plcs.front().replayFile).empty())
        wrong = "--record and --replay are of one PLC; start it alone";
    if (wrong.empty())
        return -1;
    std::cerr << "fins_plc: " << wrong << std::endl;
    return EXIT_BAD_USAGE;
}

} // namespace

int parseOptions(int argc, char **argv, std::vector<Options> *plcs)
{
    Listings listings;
    Common common;
    Options named; // by the command line alone: the project file has to be known first
    const int ended = parseCommandLine(argc, argv, &named, &listings, &common);
    const int listed = ended >= 0 ? ended : printListings(listings);
    if (listed >= 0)
        return listed;
    Options start;
    start.profile = named.profile;
    if (named.projectFile.empty())
        plcs->push_back(named);
    else if (readProject(named.projectFile, start, plcs) >= 0)
        return EXIT_BAD_USAGE;
    for (Options &plc : *plcs)
        if (!named.projectFile.empty() && parseCommandLine(argc, argv, &plc, &listings, &common) >= 0)
            return EXIT_BAD_USAGE;
    const int refused = makeAlike(common, plcs);
    return refused >= 0 ? refused : checkSeveral(common, *plcs);
}

} // namespace plc
