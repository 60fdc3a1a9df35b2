#include "console/console.h"
#include "console/line_reader.h"
#include "console/served_output.h"
#include "options/options.h"
#include "options/profile.h"
#include "plants/shipped_plants.h"
#include "proxy/run_proxy.h"
#include "recording/replay_file.h"
#include "server/server.h"
#include "view/terminal.h"
#include "view/view.h"

#include <algorithm>
#include <chrono>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <unistd.h>

// fins_plc: a simulated PLC. Results on standard output, everything else on standard error.

namespace plc {

namespace {

enum { EXIT_DONE = 0, EXIT_BAD_USAGE = 2, EXIT_NO_PORT = 3 };

// Steps the plant for as long as the io_context runs.
class PlantTimer {
public:
    PlantTimer(asio::io_context &context, Plant &driven, std::chrono::milliseconds time)
        : timer(context), plant(driven), period(time)
    {
        timer.expires_after(period);
        wait();
    }

private:
    void wait()
    {
        timer.async_wait([this](const asio::error_code &error) {
            if (error)
                return;
            plant.step();
            timer.expires_after(period);
            wait();
        });
    }

    asio::steady_timer        timer;
    Plant                    &plant;
    std::chrono::milliseconds period;
};

// Says on standard error what is in the way. Returns false.
bool refuse(const std::string &text)
{
    std::cerr << "fins_plc: " << text << std::endl;
    return false;
}

// Sets a place of the project; a command line with a smaller profile than the project's may have left no room for it.
bool setContents(Memory &memory, const std::vector<Content> &contents)
{
    for (const Content &content : contents) {
        if (content.place.first + content.place.count > memory.itemsOf(content.place))
            return refuse(placeText(content.place) + " of the project is not in the profile's memory; choose another "
                                                     "--profile");
        for (unsigned i = 0; i < content.place.count; ++i)
            memory.set(content.place, i, content.values[i]);
    }
    return true;
}

// A recording begins by emptying its file, under whatever name that is read as well.
bool isOneOf(const std::string &file, const std::vector<std::string> &inputs)
{
    return std::any_of(inputs.begin(), inputs.end(), [&file](const std::string &input) {
        std::error_code absent;
        return !input.empty() && std::filesystem::equivalent(file, input, absent);
    });
}

bool openRecording(const Options &options, ConnectionOptions *connection)
{
    const std::string &file = options.recordFile;
    if (file.empty())
        return true;
    const bool isInput = isOneOf(file, {options.replayFile, options.projectFile});
    if (isInput || isOneOf(file, {options.plant}))
        return refuse("--record: " + file + " is the file of " + (isInput ? "--replay or --project" : "--plant")
                      + " and would be lost; choose another one");
    errno = 0;
    connection->recorder = makeRecorder(file, options.recordLimitKiB * 1024ull);
    if (connection->recorder)
        return true;
    return refuse("--record: cannot write " + file + ": " + std::strerror(errno));
}

bool readReplay(const std::string &file, Replay *replay)
{
    const std::string wrong = loadReplay(file, replay);
    return wrong.empty() || refuse("--replay: " + wrong);
}

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

// What was ignored before the start, by nohup for one, stays so.
bool isIgnored(int signalNumber)
{
    struct sigaction inherited = {};
    return sigaction(signalNumber, nullptr, &inherited) == 0 && inherited.sa_handler == SIG_IGN;
}

void stopAtSignals(asio::signal_set &signals, asio::io_context &io)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (!isIgnored(number))
            signals.add(number);
    signals.async_wait([&io](const asio::error_code &, int) { io.stop(); });
}

void printReport(const Replay::Report &report)
{
    std::cerr << "fins_plc: " << report.known << " commands were in the recording, " << report.unknown << " were not"
              << std::endl;
    for (const std::string &request : report.requests)
        std::cerr << "fins_plc: not in the recording: " << request << std::endl;
}

void serve(asio::io_context &io, Plc &plc, const Options &options, Server &server)
{
    const ServedOutput errors(std::cerr);
    asio::signal_set signals(io);
    stopAtSignals(signals, io);
    std::unique_ptr<PlantTimer> timer;
    if (plc.plant && !options.isStepped)
        timer = std::make_unique<PlantTimer>(io, *plc.plant, plc.period);
    Console console(plc, server, [&io] { io.stop(); });
    std::cout << "listening on " << server.endpoint() << std::endl;
    if (!options.isViewed) {
        LineReader reader(io, LineReader::Unit::LINES,
                          [&console](const std::string &line) { std::cout << console.answer(line) << std::endl; });
        io.run();
        return;
    }
    View view(io, plc, server, console, plc.plant.get(), options);
    LineReader reader(io, LineReader::Unit::BYTES, [&view](const std::string &keys) { view.takeKeys(keys); });
    io.run();
}

int listen(Plc &plc, const Options &options)
{
    ConnectionOptions connection = options.connection;
    asio::io_context io;
    const asio::ip::tcp::endpoint address(asio::ip::make_address(options.address), options.port);
    std::unique_ptr<Server> server;
    if (!openRecording(options, &connection))
        return EXIT_BAD_USAGE;
    try {
        server = std::make_unique<Server>(io, address, plc, connection, plc.nodes.limit());
    } catch (const asio::system_error &error) {
        refuse(listenProblem(address, error.code()));
        return EXIT_NO_PORT;
    }
    serve(io, plc, options, *server);
    if (plc.recorded)
        printReport(plc.recorded->report());
    return EXIT_DONE;
}

int standBetween(const Options &options)
{
    ConnectionOptions connection = options.connection;
    if (!openRecording(options, &connection))
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

bool preparePlant(const Options &options, Plc &plc)
{
    std::vector<std::string> problems;
    plc.plant = makePlant(options.plant, plc.controller, options.seed, &problems);
    for (const std::string &problem : problems)
        refuse(problem);
    if (plc.plant)
        plc.period = std::chrono::milliseconds(plc.plant->periodMs());
    if (options.plantPeriodMs != 0)
        plc.period = std::chrono::milliseconds(options.plantPeriodMs);
    if (plc.plant)
        plc.plant->begin();
    return problems.empty();
}

int run(const Options &options)
{
    const Profile &profile = *findProfile(options.profile);
    Plc plc(options.node, options.clients != 0 ? options.clients : profile.clients, options.seed);
    plc.controller.fit(profile.sizes);
    plc.controller.messageMax = profile.messageMax;
    plc.controller.mode = options.mode;
    if (options.isStepped)
        plc.controller.clock.standStill();
    else
        plc.controller.calendar.beginLocal(plc.controller.clock.now());
    plc.controller.refusalInRun = options.refusalInRun;
    plc.controller.refusalInProgram = options.refusalInProgram;
    for (const CpuLine &line : options.cpuLines)
        line.setting->set(line.text, plc.controller);
    Replay replay;
    if (!options.replayFile.empty())
        plc.recorded = &replay;
    for (const std::string &fault : options.faults)
        plc.faults.set(fault);
    const bool isReady = checkTerminal(options) && preparePlant(options, plc) &&
                         setContents(plc.controller.memory, options.contents) &&
                         (!plc.recorded || readReplay(options.replayFile, &replay));
    return isReady ? listen(plc, options) : int(EXIT_BAD_USAGE);
}

} // namespace

} // namespace plc

// What nothing else has caught, a failed allocation for one, ends the simulator with a line.
int main(int argc, char **argv)
{
    // Who reads the answers to commands may go; the clients are still served.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        plc::Options options;
        const int ended = plc::parseOptions(argc, argv, &options);
        if (ended >= 0)
            return ended;
        return options.proxy.host.empty() ? plc::run(options) : plc::standBetween(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "fins_plc: %s\n", error.what());
        return plc::EXIT_NO_PORT;
    }
}
