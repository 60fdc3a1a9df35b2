#ifndef PLC_WORDS_FRAME_WORDS_H
#define PLC_WORDS_FRAME_WORDS_H

#include "cpu/bytes.h"

#include <string>

// Frames in words, as a person at the PLC reads them, whether the simulator knows the command or not.

namespace plc {

/// A FINS/TCP frame: "SID 5A READ DM 100, 10 words", "SID 5A READ: normal end, 20 bytes".
std::string frameWords(const Bytes &frame);

/// "READ", the name of a command.
std::string commandName(unsigned code);

/// A command from its command code on: "READ DM 100, 10 words".
std::string commandWords(Slice command);

/// "1103 first address out of range".
std::string endCodeWords(unsigned endCode);

} // namespace plc

#endif
