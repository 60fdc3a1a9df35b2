#ifndef RUNTIME_BASE_EXIT_CODES_H
#define RUNTIME_BASE_EXIT_CODES_H

#include <stdexcept>

// How the program ends, the same for every command, and the one error that ends a command at once.

enum ExitCode {
    EXIT_DONE    = 0, // everything asked for was done
    EXIT_REFUSED = 1, // the PLC refused a request, or a value differed
    EXIT_USAGE   = 2, // bad usage: nothing was sent
    EXIT_NO_LINK = 3  // no link, no answer in time, or a write that is unconfirmed or was not sent
};

/// Bad input from the user, with one line that says what is wrong and how to mend it. Ends the program with EXIT_USAGE.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

#endif
