#ifndef FINS_PLC_OPTION_CHECKS_H
#define FINS_PLC_OPTION_CHECKS_H

#include <string>

// Checks that the command line and the project file have in common. Each returns an empty text, or what is wrong and
// how to mend it.

namespace plc {

std::string checkEndCode(const std::string &text);
std::string checkAddress(const std::string &text);
std::string checkPlant(const std::string &text);
std::string checkProfile(const std::string &text);
std::string checkFault(const std::string &text);

/// The number of an end code that checkEndCode() takes.
unsigned endCodeOf(const std::string &text);

} // namespace plc

#endif
