#ifndef HMI_CLI_QT_OPTIONS_H
#define HMI_CLI_QT_OPTIONS_H

#include <vector>

/// Moves the options of Qt, such as -platform linuxfb, from `words` into the result, which begins with the program's
/// name. Qt itself takes them out only once there is a screen, and a command line is to be judged without one.
std::vector<char *> takeQtOptions(std::vector<char *> &words);

#endif
