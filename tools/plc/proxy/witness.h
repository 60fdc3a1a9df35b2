#ifndef PLC_PROXY_WITNESS_H
#define PLC_PROXY_WITNESS_H

#include "recording/frame_splitter.h"
#include "recording/recorder.h"

// Sees what passes over one connection and tells of it: in words on standard output, in hexadecimal on standard error,
// and in the recording.

namespace plc {

struct WitnessSettings {
    bool                      isTraced = false; // in hexadecimal
    std::shared_ptr<Recorder> recorder;         // null: none does
};

class Witness {
public:
    Witness(unsigned number, const WitnessSettings &wanted) : id(number), settings(wanted) {}

    void begin(const Recorder::Endpoint &clientEnd, const Recorder::Endpoint &plcEnd);

    /// Bytes in the order in which they came; `direction` is < from the client, > to it.
    void see(char direction, const std::uint8_t *bytes, std::size_t count);

    void end(Ending ending);

private:
    void note(char direction, const Bytes &bytes) const;
    void noteForeign(char direction, const Bytes &bytes);

    unsigned        id;
    WitnessSettings settings;
    FrameSplitter   requests;
    FrameSplitter   replies;
    bool            hasForeign = false;
    bool            hasBegun = false;
};

} // namespace plc

#endif
