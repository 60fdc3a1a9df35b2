#ifndef TESTS_SUPPORT_MEMORY_PLC_H
#define TESTS_SUPPORT_MEMORY_PLC_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// A PLC with its connection, in memory. It reads the bytes by the FINS manual's tables and shares nothing with the
/// driver. What no PLC would understand, and a command on a connection without a node-address exchange, is a
/// std::runtime_error.
class MemoryPlc {
public:
    MemoryPlc();

    /// A new connection, which has no node address yet. The first one has: node 0A hex, the PLC's own is 32 hex.
    void connect() { hasNode_ = false; }

    /// Carries out a request. `endCode` other than 0 refuses a command with it.
    Bytes answer(const Bytes &request, unsigned endCode = 0);

    /// In RUN mode writes are refused until RUN in MONITOR mode is commanded.
    void enterRunMode() { refusesWrites_ = true; }

    /// What it answers to a command that is not about memory, behind the end code.
    void tell(unsigned command, const Bytes &data) { told_[command] = data; }

    std::vector<int> &area(const std::string &type);

    /// One word, by word area code (B0 CIO, B1 WR, B2 HR, B3 AR, 82 DM, 89 timers and, from 8000, counters).
    int &word(unsigned areaCode, int address);

private:
    std::vector<int> *areaOf(unsigned code, int address, int &index);
    Bytes             read(const Bytes &request);
    unsigned          write(const Bytes &request);
    unsigned          writeBits(const Bytes &request);

    std::map<unsigned, std::vector<int>> areas_; // by word area code; 0x8089 for counters
    std::map<unsigned, Bytes>            told_; // by command code
    bool                                 hasNode_ = true;
    bool                                 refusesWrites_ = false;
};

#endif
