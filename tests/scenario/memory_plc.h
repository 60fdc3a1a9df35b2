#ifndef TESTS_SCENARIO_MEMORY_PLC_H
#define TESTS_SCENARIO_MEMORY_PLC_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "transcript.h"

// A PLC for the longer scenarios: it answers whole requests from a memory of words and keeps a log of the commands. It
// reads the bytes by the FINS manual's tables and shares nothing with the driver.

class MemoryPlc {
public:
    /// The reply to `request`. Throws std::runtime_error on a request that no PLC would understand.
    Bytes answer(const Bytes &request);

    /// One word, by word area code (B0 CIO, B1 WR, B2 HR, B3 AR, 82 DM, 89 timers and, from 8000, counters).
    std::uint16_t &word(int area, int address) { return m_words[{area, address}]; }

    /// One line per command since the last call: "handshake", "read 82 0064 2", "write 82 0064 2", "run".
    std::vector<std::string> takeLog();

    /// Service IDs of all commands, in order.
    const std::vector<int> &serviceIds() const { return m_serviceIds; }

private:
    Bytes read(const Bytes &request);
    Bytes write(const Bytes &request);
    void  writeBits(const Bytes &request, int count);

    std::map<std::pair<int, int>, std::uint16_t> m_words;
    std::vector<std::string>                     m_log;
    std::vector<int>                             m_serviceIds;
};

#endif
