#ifndef PLC_RECORDING_FRAME_SPLITTER_H
#define PLC_RECORDING_FRAME_SPLITTER_H

#include "cpu/bytes.h"

// Finds the FINS/TCP frames in one direction of a stream that others talk over, and judges nothing but where they begin
// and end. Bytes that are no frame come out as they are; the next bytes may be frames again.

namespace plc {

class FrameSplitter {
public:
    enum class Result { NEED_MORE, FRAME, FOREIGN };

    void append(const std::uint8_t *bytes, std::size_t count) { buffer.insert(buffer.end(), bytes, bytes + count); }

    /// FRAME: `piece` is the next frame. FOREIGN: `piece` has all that was given and is no frame. NEED_MORE: `piece` is
    /// untouched, and less than a frame is kept.
    Result next(Bytes *piece);

    /// What is kept of a frame that is not whole.
    Bytes takeRest();

private:
    Bytes buffer;
};

} // namespace plc

#endif
