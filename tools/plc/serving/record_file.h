#ifndef PLC_SERVING_RECORD_FILE_H
#define PLC_SERVING_RECORD_FILE_H

#include "options/options.h"

#include <string>
#include <vector>

namespace plc {

/// Begins the recording that the options name, if they name one. `played` are the files that the plants' signals play.
/// Says on standard error what is in the way, and returns false.
bool openRecording(const Options &options, const std::vector<std::string> &played, ConnectionOptions *connection);

} // namespace plc

#endif
