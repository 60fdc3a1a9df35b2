#include "serving/serving.h"

#include "console/line_reader.h"
#include "console/served_output.h"
#include "serving/refusal.h"
#include "serving/stop_signals.h"

#include <iostream>

namespace plc {

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

} // namespace plc
