#ifndef PLC_CONSOLE_CONSOLE_H
#define PLC_CONSOLE_CONSOLE_H

#include "server/server.h"
#include "server/session.h"

#include <functional>
#include <sstream>
#include <string>

// The commands that the simulator takes as lines, each with its one-line answer.

namespace plc {

class Console {
public:
    /// Answers `plc NAME`; the name is empty for `plc` alone.
    using Chooser = std::function<std::string(const std::string &name)>;

    Console(Plc &state, Server &listener, std::function<void()> atQuit, Chooser choosing)
        : plc(state), server(listener), quit(std::move(atQuit)), choose(std::move(choosing))
    {
    }

    /// Carries out `line`. Returns "ok", "ok ..." or "error ...".
    std::string answer(const std::string &line);

    /// The commands, one a line.
    static std::string help();

private:
    using Words = std::istringstream;
    struct Command {
        const char *name;
        const char *arguments;
        const char *meaning;
        unsigned    words; // it takes so many at most
        std::string (Console::*run)(Words &words);
    };
    static const Command COMMANDS[];

    std::string read(Words &words);
    std::string write(Words &words);
    std::string mode(Words &words);
    std::string error(Words &words);
    std::string battery(Words &words);
    std::string clock(Words &words);
    std::string cycle(Words &words);
    std::string message(Words &words);
    std::string log(Words &words);
    std::string step(Words &words);
    std::string fault(Words &words);
    std::string faults(Words &words);
    std::string tcpError(Words &words);
    std::string clients(Words &words);
    std::string disconnect(Words &words);
    std::string choosePlc(Words &words);
    std::string stats(Words &words);
    std::string replay(Words &words);
    std::string listCommands(Words &words);
    std::string leave(Words &words);

    std::string tellOrSet(Words &words, std::string (*tell)(const Controller &controller),
                          std::string (*set)(const std::string &text, Controller &controller));

    Plc                  &plc;
    Server               &server;
    std::function<void()> quit;
    Chooser               choose;
};

} // namespace plc

#endif
