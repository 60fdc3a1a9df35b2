#ifndef PLC_SERVING_SERVING_H
#define PLC_SERVING_SERVING_H

#include "console/console.h"
#include "serving/plant_timer.h"
#include "serving/unit.h"
#include "view/view.h"

#include <memory>
#include <string>
#include <vector>

namespace plc {

/// What of a PLC belongs to the io_context. Connections give their nodes back when the io_context goes, so it outlives
/// this and the PLC outlives it.
struct Listener {
    std::unique_ptr<Server>     server;
    std::unique_ptr<PlantTimer> timer;
    std::unique_ptr<Console>    console;
};

/// The PLCs that run, and which of them the console's lines go to and the view shows.
class Serving {
public:
    Serving(asio::io_context &context, const Units &all) : io(context), units(all), listeners(all.size()) {}

    /// Opens every socket. Says on standard error what is in the way and returns false if that is not possible.
    bool listen();
    /// Serves until a signal or the console ends it.
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

} // namespace plc

#endif
