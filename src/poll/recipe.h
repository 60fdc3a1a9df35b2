#ifndef POLL_RECIPE_H
#define POLL_RECIPE_H

#include "omron_fins_ethernet.h"

// Recipe blocks as requests.

/// Fills all of `request` but its requestId from `block`. Nonzero `withData` copies count words from the recipe buffer,
/// from bufferOffset on, as they lie in memory; else the values are 0.
void rcpAddrToVar(_RCP_VAR_PRO block, VARIABLE &request, qint32 withData);

#endif
