#ifndef PANEL_FIXTURE_H
#define PANEL_FIXTURE_H

#include "driver_library.h"
#include "exit_codes.h"

#include <gtest/gtest.h>

#include <string>

/// The built driver, loaded once.
inline const DriverLibrary &builtDriver()
{
    static const DriverLibrary library(DRIVER_LIBRARY);
    return library;
}

/// The text of the UsageError that `call` throws, or "" if it throws none.
template <typename Call>
std::string usageError(Call call)
{
    try {
        call();
    } catch (const UsageError &error) {
        return error.what();
    }
    return "";
}

#endif
