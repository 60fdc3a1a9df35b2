#ifndef FINS_PLC_OPTIONS_H
#define FINS_PLC_OPTIONS_H

#include "connection.h"
#include "controller.h"

#include <cstdint>
#include <string>
#include <vector>

// The command line.

namespace plc {

struct Options {
    std::string              address = "127.0.0.1";
    std::uint16_t            port = 9600; // 0: a free one
    std::size_t              clients = 16;
    unsigned                 node = 1;
    Mode                     mode = Mode::RUN;
    unsigned                 refusalInRun = END_NORMAL;
    unsigned                 refusalInProgram = END_NORMAL;
    bool                     hasPlant = false;
    unsigned                 plantPeriodMs = 50;
    std::vector<std::string> faults;
    std::uint32_t            seed = 1;
    ConnectionOptions        connection;
};

/// Reads the command line. Returns -1 to go on, or the program's exit code, the text that goes with it being printed.
int parseOptions(int argc, char **argv, Options *options);

} // namespace plc

#endif
