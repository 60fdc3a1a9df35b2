#include "console.h"
#include "line_reader.h"
#include "options.h"
#include "plant.h"
#include "server.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>

// fins_plc: a simulated PLC. Results on standard output, everything else on standard error.

namespace plc {

namespace {

enum { EXIT_DONE = 0, EXIT_BAD_FAULT = 2, EXIT_NO_PORT = 3 };

// Steps the plant for as long as the io_context runs.
class PlantTimer {
public:
    PlantTimer(asio::io_context &context, Plant &driven, unsigned ms) : timer(context), plant(driven), period(ms)
    {
        plant.begin();
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

bool setFaults(Faults &faults, const std::vector<std::string> &texts)
{
    for (const std::string &text : texts) {
        const std::string wrong = faults.set(text);
        if (wrong.empty())
            continue;
        std::cerr << "fins_plc: --fault: " << wrong << std::endl;
        return false;
    }
    return true;
}

void serve(asio::io_context &io, Plc &plc, const Options &options, Server &server)
{
    asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&io](const asio::error_code &, int) { io.stop(); });
    Plant plant(plc.controller);
    std::unique_ptr<PlantTimer> timer;
    if (options.hasPlant)
        timer = std::make_unique<PlantTimer>(io, plant, options.plantPeriodMs);
    Console console(plc, server, [&io] { io.stop(); });
    std::cout << "listening on " << server.endpoint() << std::endl;
    LineReader reader(io, [&console](const std::string &line) { std::cout << console.answer(line) << std::endl; });
    io.run();
}

int run(const Options &options)
{
    Plc plc(options.node, options.clients, options.seed);
    plc.controller.mode = options.mode;
    plc.controller.refusalInRun = options.refusalInRun;
    plc.controller.refusalInProgram = options.refusalInProgram;
    if (!setFaults(plc.faults, options.faults))
        return EXIT_BAD_FAULT;
    asio::io_context io;
    const asio::ip::tcp::endpoint address(asio::ip::make_address(options.address), options.port);
    std::unique_ptr<Server> server;
    try {
        server = std::make_unique<Server>(io, address, plc, options.connection, options.clients);
    } catch (const asio::system_error &error) {
        std::cerr << "fins_plc: cannot listen on " << address << ": " << error.code().message()
                  << "; choose another --port (0 picks a free one) or --bind" << std::endl;
        return EXIT_NO_PORT;
    }
    serve(io, plc, options, *server);
    return EXIT_DONE;
}

} // namespace

} // namespace plc

int main(int argc, char **argv)
{
    plc::Options options;
    const int ended = plc::parseOptions(argc, argv, &options);
    return ended >= 0 ? ended : plc::run(options);
}
