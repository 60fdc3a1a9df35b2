#ifndef SUPPORT_USAGE_ERROR_H
#define SUPPORT_USAGE_ERROR_H

#include "common/usage_error.h"

#include <string>

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
