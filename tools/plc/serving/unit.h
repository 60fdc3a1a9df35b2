#ifndef PLC_SERVING_UNIT_H
#define PLC_SERVING_UNIT_H

#include "options/options.h"
#include "options/profile.h"
#include "recording/replay.h"
#include "server/server.h"

#include <memory>
#include <vector>

namespace plc {

/// One of the PLCs, without its socket.
struct Unit {
    explicit Unit(const Options &chosen)
        : options(chosen), plc(chosen.node, chosen.clients != 0 ? chosen.clients : findProfile(chosen.profile)->clients,
                               chosen.seed)
    {
    }

    Options options;
    Plc     plc;
    Replay  replay;
};

using Units = std::vector<std::unique_ptr<Unit>>;

/// Brings the PLC into the state that its options name. Says on standard error what is in the way, and returns false.
bool prepare(Unit &unit);

} // namespace plc

#endif
