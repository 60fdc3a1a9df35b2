#ifndef SUPPORT_BUILT_DRIVER_H
#define SUPPORT_BUILT_DRIVER_H

#include "driver/driver_library.h"
#include "support/usage_error.h"

#include <gtest/gtest.h>

/// The built driver, loaded once.
inline const DriverLibrary &builtDriver()
{
    static const DriverLibrary library(DRIVER_LIBRARY);
    return library;
}

#endif
