#ifndef TESTS_SOAK_SOAK_RUN_H
#define TESTS_SOAK_SOAK_RUN_H

#include <functional>
#include <memory>

#include "panel_runtime.h"

namespace soak {

struct Options {
    long long requests;
    long long seed = 1;
};

/// Runs the command line `--requests N --seed N` over the link that `makeLink` makes: a tenth of the requests as
/// warm-up, then the rest in nine parts, after each of which everything is compared and the resources have to be flat.
/// Prints the account. Returns the exit code: 0, 1 when something does not hold, 2 for bad usage.
int runSoak(int argc, char **argv, Options options,
            const std::function<std::unique_ptr<Link>(const Options &options)> &makeLink);

} // namespace soak

#endif
