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
#include <vector>

// fins_plc: simulated PLCs. Results on standard output, everything else on standard error.

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

// `played` are the files of signals.
bool openRecording(const Options &options, const std::vector<std::string> &played, ConnectionOptions *connection)
{
    const std::string &file = options.recordFile;
    if (file.empty())
        return true;
    const char *const reader = isOneOf(file, {options.replayFile, options.projectFile}) ? "--replay or --project"
                               : isOneOf(file, {options.plant})                         ? "--plant"
                               : isOneOf(file, played)                                  ? "a signal of the plant"
                                                                                        : nullptr;
    if (reader)
        return refuse("--record: " + file + " is the file of " + reader + " and would be lost; choose another one");
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

// One of the PLCs, without its socket.
struct Unit {
    explicit Unit(const Options &chosen)
        : options(chosen), plc(chosen.node, chosen.clients != 0 ? chosen.clients : findProfile(chosen.profile)->clients,
                               chosen.seed)
    {
    }

    Options options;
    Plc     plc;
    Replay  replay;
};

using Units = std::vector<std::unique_ptr<Unit>>;

// What of a PLC belongs to the io_context. Connections give their nodes back when the io_context goes, so it outlives
// this and the PLC outlives it.
struct Listener {
    std::unique_ptr<Server>     server;
    std::unique_ptr<PlantTimer> timer;
    std::unique_ptr<Console>    console;
};

// The PLCs that run, and which of them the console's lines go to and the view shows.
class Serving {
public:
    Serving(asio::io_context &context, const Units &all) : io(context), units(all), listeners(all.size()) {}

    bool listen();
    void run();

private:
    std::string choose(const std::string &name);
    ViewSubject subject() const;
    void begin(std::size_t i);
    std::string answer(const std::string &line) { return listeners[chosen].console->answer(line); }

    asio::io_context     &io;
    const Units          &units;
    std::vector<Listener> listeners;
    std::size_t           chosen = 0;
    std::unique_ptr<View> view;
};

// Opens every socket. Says what is in the way and returns false if that is not possible.
bool Serving::listen()
{
    for (std::size_t i = 0; i < units.size(); ++i) {
        Unit &unit = *units[i];
        const asio::ip::tcp::endpoint address(asio::ip::make_address(unit.options.address), unit.options.port);
        try {
            listeners[i].server =
                std::make_unique<Server>(io, address, unit.plc, unit.options.connection, unit.plc.nodes.limit());
        } catch (const asio::system_error &error) {
            return refuse(listenProblem(address, error.code()));
        }
    }
    return true;
}

void Serving::begin(std::size_t i)
{
    Unit &unit = *units[i];
    Listener &listener = listeners[i];
    if (unit.plc.plant && !unit.options.isStepped)
        listener.timer = std::make_unique<PlantTimer>(io, *unit.plc.plant, unit.plc.period);
    listener.console = std::make_unique<Console>(
        unit.plc, *listener.server, [this] { io.stop(); }, [this](const std::string &name) { return choose(name); });
    std::cout << "listening on " << listener.server->endpoint() << (units.size() > 1 ? " " + unit.options.name : "")
              << std::endl;
}

// With an empty name the choice stays. Returns the answer to the console's line.
std::string Serving::choose(const std::string &name)
{
    std::string names;
    std::size_t found = units.size();
    for (std::size_t i = 0; i < units.size(); ++i) {
        names += " " + units[i]->options.name;
        if (units[i]->options.name == name)
            found = i;
    }
    if (name.empty())
        return "ok " + units[chosen]->options.name + " of" + names;
    if (found == units.size())
        return "error '" + name + "' is no PLC; PLCs are" + names;
    chosen = found;
    if (view)
        view->show(subject());
    return "ok " + name;
}

ViewSubject Serving::subject() const
{
    const Listener &listener = listeners[chosen];
    Unit &unit = *units[chosen];
    return {&unit.plc, listener.server.get(), listener.console.get(), unit.plc.plant.get(), &unit.options};
}

void Serving::run()
{
    const ServedOutput errors(std::cerr);
    asio::signal_set signals(io);
    stopAtSignals(signals, io);
    for (std::size_t i = 0; i < units.size(); ++i)
        begin(i);
    if (!units.front()->options.isViewed) {
        LineReader reader(io, LineReader::Unit::LINES,
                          [this](const std::string &line) { std::cout << answer(line) << std::endl; });
        io.run();
        return;
    }
    view = std::make_unique<View>(io, subject());
    LineReader reader(io, LineReader::Unit::BYTES, [this](const std::string &keys) { view->takeKeys(keys); });
    io.run();
    view.reset();
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

bool prepare(Unit &unit)
{
    const Options &options = unit.options;
    Plc &plc = unit.plc;
    const Profile &profile = *findProfile(options.profile);
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
    if (!options.replayFile.empty())
        plc.recorded = &unit.replay;
    for (const std::string &fault : options.faults)
        plc.faults.set(fault);
    return preparePlant(options, plc) && setContents(plc.controller.memory, options.contents) &&
           (!plc.recorded || readReplay(options.replayFile, &unit.replay));
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
