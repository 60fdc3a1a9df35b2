#ifndef HMI_CLI_OPTIONS_H
#define HMI_CLI_OPTIONS_H

#include <string>
#include <vector>

// The command line of fins_hmi.

struct Options {
    std::vector<std::string> words;    // HOST and items, or tags of a project
    std::vector<std::string> projects;
    std::string host;
    std::string library;
    std::string screen;                // title or name of the first one
    std::string folder;                // for files that are saved
    double      dotsPerInch  = 0;      // 0: what the screen says
    int         fontPercent  = 100;
    bool        isFullScreen = false;
};

/// Returns -1 to go on, or the exit code of a program that has said all.
int parseOptions(int argc, char **argv, Options &options);

#endif
