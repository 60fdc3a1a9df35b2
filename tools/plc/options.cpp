#include "options.h"

#include "console.h"
#include "plant.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace plc {

namespace {

enum { EXIT_BAD_USAGE = 2 };

std::string checkEndCode(const std::string &text)
{
    const bool isCode = text.size() == 4 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return isCode && text != "0000" ? std::string() : "'" + text + "' is no end code; use four hexadecimal digits";
}

std::string checkAddress(const std::string &text)
{
    asio::error_code error;
    asio::ip::make_address(text, error);
    return error ? "'" + text + "' is no IP address; use one such as 127.0.0.1" : std::string();
}

std::string footer()
{
    return "Addresses of the plant:\n" + Plant::help() + "\nFaults:\n" + Faults::help() +
           "\nCommands on standard input, each answered by one line on standard output:\n" + Console::help() +
           "\nExit codes: 0 ended by quit or a signal, 2 bad usage, 3 the address cannot be listened on.";
}

// The texts of the options that need more than a number.
struct Texts {
    std::string mode = "run";
    std::string refusalInRun;
    std::string refusalInProgram;
};

void addOptions(CLI::App &app, Options *options, Texts *texts)
{
    app.add_option("--port", options->port, "TCP port, 0 to 65535; 0 picks a free one")->capture_default_str();
    app.add_option("--bind", options->address, "IP address to listen on")->check(checkAddress)->capture_default_str();
    app.add_option("--clients", options->clients, "clients at once, 1 to 253")
        ->check(CLI::Range(1, 253))->capture_default_str();
    app.add_option("--node", options->node, "own FINS node, 1 to 254")
        ->check(CLI::Range(1, 254))->capture_default_str();
    app.add_option("--mode", texts->mode, "operating mode at the start")
        ->check(CLI::IsMember({"program", "monitor", "run"}))->capture_default_str();
    app.add_flag("--refuse-writes-in-run{2206}", texts->refusalInRun,
                 "refuse writes in RUN mode, with end code 2206 or =XXXX")->check(checkEndCode);
    app.add_flag("--refuse-writes-in-program{2203}", texts->refusalInProgram,
                 "refuse writes in PROGRAM mode, with end code 2203 or =XXXX")->check(checkEndCode);
    app.add_flag("--plant", options->hasPlant, "run the plant");
    app.add_option("--plant-period", options->plantPeriodMs, "ms between steps of the plant, 1 to 60000")
        ->check(CLI::Range(1, 60000))->capture_default_str();
    app.add_option("--fault", options->faults, "begin with fault NAME[=VALUE][@PROBABILITY]; repeatable")
        ->allow_extra_args(false);
    app.add_option("--seed", options->seed, "seed of the faults' probabilities, 0 to 4294967295")
        ->capture_default_str();
    app.add_option("--deadline", options->connection.deadlineMs,
                   "ms for the rest of a frame, and for the node address exchange, 1 to 3600000")
        ->check(CLI::Range(1, 3600000))->capture_default_str();
    app.add_flag("--trace", options->connection.isTraced, "frames on standard error, < received, > sent");
}

unsigned endCode(const std::string &text)
{
    return text.empty() ? unsigned(END_NORMAL) : static_cast<unsigned>(std::stoul(text, nullptr, 16));
}

} // namespace

int parseOptions(int argc, char **argv, Options *options)
{
    CLI::App app("A simulated Omron CS/CJ PLC that answers FINS/TCP.", "fins_plc");
    app.footer(footer());
    Texts texts;
    addOptions(app, options, &texts);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &help) {
        return app.exit(help);
    } catch (const CLI::ParseError &error) {
        std::cerr << "fins_plc: " << error.what() << "; see fins_plc --help" << std::endl;
        return EXIT_BAD_USAGE;
    }
    parseMode(texts.mode, &options->mode);
    options->refusalInRun = endCode(texts.refusalInRun);
    options->refusalInProgram = endCode(texts.refusalInProgram);
    return -1;
}

} // namespace plc
