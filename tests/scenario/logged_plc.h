#ifndef TESTS_SCENARIO_LOGGED_PLC_H
#define TESTS_SCENARIO_LOGGED_PLC_H

#include <string>
#include <vector>

#include "support/memory_plc.h"

// A PLC for the longer scenarios, which keeps a log of the commands.

class LoggedPlc {
public:
    /// The reply to `request`. Throws std::runtime_error on a request that no PLC would understand.
    Bytes answer(const Bytes &request);

    /// One word, by word area code (B0 CIO, B1 WR, B2 HR, B3 AR, 82 DM, 89 timers and, from 8000, counters).
    int &word(unsigned area, int address) { return plc_.word(area, address); }

    /// One line per command since the last call: "handshake", "read 82 0064 2", "write 82 0064 2", "run".
    std::vector<std::string> takeLog();

    /// Service IDs of all commands, in order.
    const std::vector<int> &serviceIds() const { return serviceIds_; }

private:
    MemoryPlc                plc_;
    std::vector<std::string> log_;
    std::vector<int>         serviceIds_;
};

#endif
