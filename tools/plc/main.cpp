#include "proxy/run_proxy.h"
#include "serving/record_file.h"
#include "serving/refusal.h"
#include "serving/serving.h"
#include "serving/stop_signals.h"
#include "view/terminal.h"

#include <csignal>
#include <cstdio>
#include <iostream>
#include <unistd.h>

// fins_plc: simulated PLCs. Results on standard output, everything else on standard error.

namespace plc {

namespace {

enum { EXIT_DONE = 0, EXIT_BAD_USAGE = 2, EXIT_NO_PORT = 3 };

bool checkTerminal(const Options &options)
{
    if (!options.isViewed)
        return true;
    if (!Terminal::isUsable())
        return refuse("--view needs a terminal on standard output; run it in one, with TERM set");
    if (options.connection.isTraced && isatty(STDERR_FILENO))
        return refuse("--trace would write into the view; add 2>FILE to keep the trace");
    return true;
}

void printReport(const Replay::Report &report)
{
    std::cerr << "fins_plc: " << report.known << " commands were in the recording, " << report.unknown << " were not"
              << std::endl;
    for (const std::string &request : report.requests)
        std::cerr << "fins_plc: not in the recording: " << request << std::endl;
}

int listen(const Units &units)
{
    asio::io_context io;
    std::vector<std::string> played;
    for (const std::unique_ptr<Unit> &unit : units)
        for (const std::string &file : unit->plc.plant ? unit->plc.plant->playedFiles() : std::vector<std::string>())
            played.push_back(file);
    for (const std::unique_ptr<Unit> &unit : units)
        if (!openRecording(unit->options, played, &unit->options.connection))
            return EXIT_BAD_USAGE;
    Serving serving(io, units);
    if (!serving.listen())
        return EXIT_NO_PORT;
    serving.run();
    for (const std::unique_ptr<Unit> &unit : units)
        if (unit->plc.recorded)
            printReport(unit->replay.report());
    return EXIT_DONE;
}

int standBetween(const Options &options)
{
    ConnectionOptions connection = options.connection;
    if (!openRecording(options, {}, &connection))
        return EXIT_BAD_USAGE;
    ProxySettings settings = options.proxy;
    settings.local = {asio::ip::make_address(options.address), options.port};
    settings.witness = {connection.isTraced, connection.recorder};
    asio::io_context io;
    asio::signal_set signals(io);
    stopAtSignals(signals, io);
    const std::string problem = runProxy(io, settings);
    return problem.empty() || refuse(problem) ? int(EXIT_DONE) : int(EXIT_NO_PORT);
}

int run(const std::vector<Options> &all)
{
    if (!checkTerminal(all.front()))
        return EXIT_BAD_USAGE;
    Units units;
    for (const Options &options : all) {
        units.push_back(std::make_unique<Unit>(options));
        if (!prepare(*units.back()))
            return EXIT_BAD_USAGE;
    }
    return listen(units);
}

} // namespace

} // namespace plc

// What nothing else has caught, a failed allocation for one, ends the simulator with a line.
int main(int argc, char **argv)
{
    // Who reads the answers to commands may go; the clients are still served.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        std::vector<plc::Options> plcs;
        const int ended = plc::parseOptions(argc, argv, &plcs);
        if (ended >= 0)
            return ended;
        return plcs.front().proxy.host.empty() ? plc::run(plcs) : plc::standBetween(plcs.front());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "fins_plc: %s\n", error.what());
        return plc::EXIT_NO_PORT;
    }
}
