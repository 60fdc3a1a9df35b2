#ifndef TESTS_SOAK_SCRIPTED_PLC_H
#define TESTS_SOAK_SCRIPTED_PLC_H

#include <map>

#include "link.h"

namespace soak {

/// A PLC with its connection, in memory. It reads the bytes by the FINS manual's tables and shares nothing with the
/// driver. A command on a connection without a node-address exchange is a Failure.
class ScriptedPlc {
public:
    ScriptedPlc();

    /// A new connection has no node address yet.
    void connect() { m_hasNode = false; }

    /// Carries out a request. `endCode` other than 0 refuses a command with it.
    Bytes answer(const Bytes &request, unsigned endCode);

    /// In RUN mode writes are refused until RUN in MONITOR mode is commanded.
    void enterRunMode() { m_refusesWrites = true; }

    std::vector<int> &area(const std::string &type);

private:
    std::vector<int> *areaOf(unsigned code, int address, int &index);
    Bytes             read(const Bytes &request);
    unsigned          write(const Bytes &request);
    unsigned          writeBits(const Bytes &request);

    std::map<unsigned, std::vector<int>> m_areas; // by word area code; 0x8089 for counters
    bool                                 m_hasNode = false;
    bool                                 m_refusesWrites = false;
};

} // namespace soak

#endif
