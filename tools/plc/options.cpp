#include "options.h"

#include "console.h"
#include "option_checks.h"
#include "plant.h"
#include "profile.h"
#include "project.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace plc {

namespace {

enum { EXIT_DONE = 0, EXIT_BAD_USAGE = 2 };

std::string footer()
{
    return "Plants, with their addresses:\n" + plantHelp() + "\nProfiles:\n" + profileHelp() +
           "\nProject file:\n" + projectHelp() +
           "\nRecordings: lines SECONDS CLIENT < or > HEX, < received from the client, > sent to it. Replayed\n"
           "requests may differ in service ID and nodes; what is not in the recording is refused with end code 0401.\n"
           "\nFaults, each NAME[=VALUE][@PROBABILITY][#TIMES]:\n" + Faults::help() +
           "\nCommands on standard input, each answered by one line on standard output:\n" + Console::help() +
           "\nExit codes: 0 ended by quit or a signal, 2 bad usage, 3 the address cannot be listened on.";
}

// The texts of the options that need more than a number.
struct Texts {
    std::string mode = "run";
    std::string refusalInRun;
    std::string refusalInProgram;
    std::string tcpError;
    std::string plant;
    CLI::Option *plantOption = nullptr;
};

std::string checkTcpError(const std::string &text) { return checkFault("tcp-error=" + text); }

void addOptions(CLI::App &app, Options *options, Texts *texts)
{
    app.add_option("--port", options->port, "TCP port, 0 to 65535; 0 picks a free one")->capture_default_str();
    app.add_option("--bind", options->address, "IP address to listen on")->check(checkAddress)->capture_default_str();
    app.add_option("--clients", options->clients, "clients at once, 1 to 253; as the profile has it when left out")
        ->check(CLI::Range(1, 253));
    app.add_option("--node", options->node, "own FINS node, 1 to 254")
        ->check(CLI::Range(1, 254))->capture_default_str();
    app.add_option("--mode", texts->mode, "operating mode at the start")
        ->check(CLI::IsMember({"program", "monitor", "run"}))->capture_default_str();
    app.add_flag("--refuse-writes-in-run{2206}", texts->refusalInRun,
                 "refuse writes in RUN mode, with end code 2206 or =XXXX")->check(checkEndCode);
    app.add_flag("--refuse-writes-in-program{2203}", texts->refusalInProgram,
                 "refuse writes in PROGRAM mode, with end code 2203 or =XXXX")->check(checkEndCode);
    app.add_option("--profile", options->profile, "limits of the CPU unit: " + profileNames())
        ->check(checkProfile)->capture_default_str();
    texts->plantOption = app.add_option("--plant", texts->plant,
                                        "run a plant: " + plantNames() + "; without a name the tank")
        ->expected(0, 1)->check(checkPlant);
    app.add_option("--plant-period", options->plantPeriodMs, "ms between steps of the plant, 1 to 60000")
        ->check(CLI::Range(1, 60000))->capture_default_str();
    app.add_option("--fault", options->faults, "begin with fault NAME[=VALUE][@PROBABILITY][#TIMES]; repeatable")
        ->allow_extra_args(false);
    app.add_option("--tcp-error,--refuse-handshake", texts->tcpError,
                   "refuse node address exchanges with FINS/TCP error XX[#TIMES]: 1 2 3 or 20 to 25 (hex)")
        ->check(checkTcpError);
    app.add_option("--seed", options->seed, "seed of the faults' probabilities and of plants, 0 to 4294967295")
        ->capture_default_str();
    app.add_option("--deadline", options->connection.deadlineMs,
                   "ms for the rest of a frame, and for the node address exchange, 1 to 3600000")
        ->check(CLI::Range(1, 3600000))->capture_default_str();
    app.add_flag("--trace", options->connection.isTraced, "frames on standard error, < received, > sent");
}

// What a run prints instead of serving.
struct Listings {
    bool        plants = false;
    bool        profiles = false;
    std::string projectToCheck;
};

void addFileOptions(CLI::App &app, Options *options, Listings *listings)
{
    app.add_option("--project", options->projectFile, "TOML file with settings and the memory's content at the start");
    app.add_option("--check-project", listings->projectToCheck, "check a project file, print every error, and end");
    app.add_option("--record", options->recordFile, "write all frames to this file, which begins anew");
    app.add_option("--record-limit", options->recordLimitKiB, "KiB after which a recording ends, 1 to 1048576")
        ->check(CLI::Range(1, 1048576))->capture_default_str();
    app.add_option("--replay", options->replayFile, "answer with the replies of a recording");
    app.add_flag("--view", options->isViewed, "live view of clients and memory on the terminal");
    app.add_flag("--plants", listings->plants, "print the plants and their addresses, and end");
    app.add_flag("--profiles", listings->profiles, "print the profiles, and end");
}

// Returns -1 to go on, or the exit code.
int parseCommandLine(int argc, char **argv, Options *options, Listings *listings)
{
    CLI::App app("A simulated Omron CS/CJ PLC that answers FINS/TCP.", "fins_plc");
    app.set_version_flag("--version", "fins_plc " FINS_VERSION, "Print the version and exit");
    app.footer(footer());
    Texts texts;
    texts.mode = modeName(options->mode);
    addOptions(app, options, &texts);
    addFileOptions(app, options, listings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &helpOrVersion) {
        return app.exit(helpOrVersion);
    } catch (const CLI::ParseError &error) {
        std::cerr << "fins_plc: " << error.what() << "; see fins_plc --help" << std::endl;
        return EXIT_BAD_USAGE;
    }
    parseMode(texts.mode, &options->mode);
    if (!texts.refusalInRun.empty())
        options->refusalInRun = endCodeOf(texts.refusalInRun);
    if (!texts.refusalInProgram.empty())
        options->refusalInProgram = endCodeOf(texts.refusalInProgram);
    if (!texts.tcpError.empty())
        options->faults.push_back("tcp-error=" + texts.tcpError);
    if (texts.plantOption->count() > 0)
        options->plant = texts.plant.empty() ? "tank" : texts.plant;
    return -1;
}

int readProject(const std::string &file, Options *options)
{
    const std::vector<std::string> problems = loadProject(file, options);
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
    Options unused;
    if (readProject(listings.projectToCheck, &unused) >= 0)
        return EXIT_BAD_USAGE;
    std::cout << listings.projectToCheck << ": no errors, " << unused.contents.size() << " places of memory"
              << std::endl;
    return EXIT_DONE;
}

} // namespace

int parseOptions(int argc, char **argv, Options *options)
{
    Listings listings;
    Options named; // by the command line alone: the project file has to be known first
    const int ended = parseCommandLine(argc, argv, &named, &listings);
    const int listed = ended >= 0 ? ended : printListings(listings);
    if (listed >= 0)
        return listed;
    if (named.projectFile.empty()) {
        *options = named;
        return -1;
    }
    options->profile = named.profile;
    const int refused = readProject(named.projectFile, options);
    return refused >= 0 ? refused : parseCommandLine(argc, argv, options, &listings);
}

} // namespace plc
