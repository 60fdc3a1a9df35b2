#ifndef FINS_COMMON_USAGE_ERROR_H
#define FINS_COMMON_USAGE_ERROR_H

#include <stdexcept>

/// Bad input from the user, with one line that says what is wrong and how to mend it. Nothing was sent.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

#endif
