#ifndef PLC_VIEW_VIEW_H
#define PLC_VIEW_VIEW_H

#include "console/console.h"
#include "options/options.h"
#include "server/server.h"
#include "view/input_line.h"
#include "view/screen.h"
#include "view/terminal.h"

#include <asio.hpp>
#include <deque>
#include <iosfwd>
#include <map>
#include <sstream>

// The live view: draws the state several times a second and when a key is pressed or the terminal changes its size.
// While it is there, messages for standard error are shown in it if they would come out on a terminal, and printed at
// its end.

namespace plc {

/// The PLC that is shown.
struct ViewSubject {
    Plc           *plc;
    Server        *server;
    Console       *console;
    const Plant   *plant; // null: none
    const Options *options;
};

class View {
public:
    View(asio::io_context &io, const ViewSubject &subject);
    View(const View &) = delete;
    View &operator=(const View &) = delete;
    ~View();

    /// Shows another PLC from now on.
    void show(const ViewSubject &subject);

    /// Takes what was typed.
    void takeKeys(const std::string &keys);

private:
    using Clock = std::chrono::steady_clock;
    struct Sample {
        Clock::time_point                 time;
        std::uint64_t                     requests;
        std::map<unsigned, std::uint64_t> clientRequests;
    };

    void refreshLater();
    void followResizing();
    void sample();
    void draw();
    void takeMessages();
    double rateSince(Clock::time_point time, std::uint64_t now, std::uint64_t before) const;
    ScreenState state() const;

    ViewSubject             shown;
    bool                    hasColour;
    Clock::time_point       start = Clock::now();
    std::deque<Sample>      samples;
    CommandLine             commandLine;
    std::string             answer;
    std::ostringstream      messages;
    std::streambuf         *errors = nullptr; // of standard error, where its messages are shown
    std::string::size_type  messagesShown = 0;
    Terminal                terminal;
    asio::steady_timer      timer;
    asio::signal_set        resizing;
};

} // namespace plc

#endif
