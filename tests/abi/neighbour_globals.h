#ifndef TESTS_ABI_NEIGHBOUR_GLOBALS_H
#define TESTS_ABI_NEIGHBOUR_GLOBALS_H

// Globals of another module that bear the names of the driver's own. Their file does not include the driver's header.

/// True while all of them hold what they were made with.
bool neighbourGlobalsAreUntouched();

/// How often one of the neighbour's functions was called.
int neighbourCalls();

/// Addresses of the neighbour's `driver` and `REG_LIST`.
const void *neighbourDriver();
const void *neighbourRegList();

#endif
