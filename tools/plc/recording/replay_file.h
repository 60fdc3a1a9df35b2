#ifndef PLC_RECORDING_REPLAY_FILE_H
#define PLC_RECORDING_REPLAY_FILE_H

#include "recording/replay.h"

#include <string>

namespace plc {

/// Reads the recording `file`, text or capture, and says on standard error what of a capture could not be read. Returns
/// an empty text, or what is wrong.
std::string loadReplay(const std::string &file, Replay *replay);

} // namespace plc

#endif
