#ifndef PLC_OPTIONS_PROFILE_H
#define PLC_OPTIONS_PROFILE_H

#include "cpu/memory.h"

#include <cstddef>
#include <string>

// The limits of CPU units: how many clients, how long a FINS message, how large the areas.

namespace plc {

struct Profile {
    const char *name;
    const char *meaning;
    std::size_t clients;    // at once
    unsigned    messageMax; // bytes of a FINS command or response, FINS header included
    AreaSizes   sizes;
};

/// The profile called `name`, or null.
const Profile *findProfile(const std::string &name);

/// The names, separated by spaces.
std::string profileNames();

/// Every profile with its limits, one a line.
std::string profileHelp();

} // namespace plc

#endif
