#ifndef PLC_FAULTS_FAULT_AIM_H
#define PLC_FAULTS_FAULT_AIM_H

#include "cpu/bytes.h"
#include "cpu/memory.h"

#include <string>

// What a fault is aimed at: a command, words of an area, a client.

namespace plc {

/// What a fault may strike: a FINS command, a node address exchange, or a connection that comes in.
struct FaultTarget {
    Slice              command;  // from its command code on; empty: it is no FINS command
    unsigned           node = 0; // the client's, or the one that it asks for; 0: not known
    const std::string &ip;       // the client's
    const Memory      &memory;
};

struct FaultAim {
    enum : unsigned { ANY = 0xFFFFFFFFu };

    unsigned    command = ANY;
    int         area = -1;   // AreaIndex; -1: any
    unsigned    from = 0;    // words, timers or counters of the area
    unsigned    to = ANY;
    unsigned    node = 0;    // of the client; 0: any
    std::string ip;          // of the client; empty: any

    bool operator==(const FaultAim &other) const;

    bool hits(const FaultTarget &target) const;

    /// "KEY=VALUE,KEY=VALUE", or an empty text if it is aimed at everything.
    std::string text() const;

    /// Sets what `key` stands for. Returns an empty text, or what is wrong; `isKnown` tells whether there is such a
    /// key.
    std::string set(const std::string &key, const std::string &value, bool *isKnown);

    /// What is wrong with it as a whole, or an empty text.
    std::string check() const;
};

/// The names of commands for `command=NAME`, each with its code.
std::string commandNames();

} // namespace plc

#endif
