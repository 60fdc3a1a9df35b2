#ifndef PLC_OPTIONS_OPTIONS_H
#define PLC_OPTIONS_OPTIONS_H

#include "console/cpu_texts.h"
#include "cpu/controller.h"
#include "proxy/run_proxy.h"
#include "server/connection.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// What the simulator is to do, from a project file and the command line.

namespace plc {

/// What a run of items has at the start. One value may fill it, whole memories in a short line, and is kept once.
struct Content {
    unsigned value(std::size_t i) const
    {
        return i < values.size() ? values[i] : isText ? 0 : values[i % values.size()];
    }

    Span                  place;
    std::vector<unsigned> values;         // as many as `place` has, or less: they repeat
    bool                  isText = false; // they do not; zeros follow
};

/// A line for the state of the CPU unit at the start.
struct CpuLine {
    const CpuSetting *setting;
    std::string       text;
};

/// A list that PLCs which are alike have in common.
template <typename Item>
using SharedList = std::shared_ptr<const std::vector<Item>>;

/// Of one PLC.
struct Options {
    std::string              name = "plc1"; // among several
    std::string              address = "127.0.0.1";
    std::uint16_t            port = 9600; // 0: a free one
    std::string              profile = "cj2";
    std::size_t              clients = 0; // 0: as many as the profile allows
    unsigned                 node = 1;
    Mode                     mode = Mode::RUN;
    unsigned                 refusalInRun = END_NORMAL;
    unsigned                 refusalInProgram = END_NORMAL;
    std::string              plant; // name or file; empty: none
    unsigned                 plantPeriodMs = 0; // 0: as the plant has it
    bool                     isStepped = false; // by the console
    std::vector<std::string> faults;
    std::uint32_t            seed = 1;
    std::string              projectFile; // empty: none
    SharedList<CpuLine>      cpuLines = std::make_shared<const std::vector<CpuLine>>();
    SharedList<Content>      contents = std::make_shared<const std::vector<Content>>(); // of the memory at the start
    std::string              recordFile; // empty: none
    unsigned                 recordLimitKiB = 65536;
    std::string              replayFile; // empty: none
    ProxySettings            proxy; // without a host: none
    bool                     isViewed = false;
    ConnectionOptions        connection;
};

/// The most PLCs in one process.
enum : unsigned { PLCS_MAX = 500 };

/// Reads the command line and the project file that it names, for each PLC that is to be simulated. What the command
/// line says goes before what the project file says. Returns -1 to go on, or the program's exit code, the text that
/// goes with it being printed.
int parseOptions(int argc, char **argv, std::vector<Options> *plcs);

} // namespace plc

#endif
