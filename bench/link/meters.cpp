#include "link/meters.h"

#include <time.h>
#include <unistd.h>

#include <cstddef>

namespace {

double seconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

} // namespace

Meter::Meter() : startCpu_(seconds(CLOCK_PROCESS_CPUTIME_ID)), start_(seconds(CLOCK_MONOTONIC)) {}

double Meter::elapsed() const
{
    return seconds(CLOCK_MONOTONIC) - start_;
}

double Meter::cpu() const
{
    return seconds(CLOCK_PROCESS_CPUTIME_ID) - startCpu_;
}

AnyCore::AnyCore(bool isWanted) : before_()
{
    sched_getaffinity(0, sizeof before_, &before_);
    if (!isWanted)
        return;
    cpu_set_t all;
    CPU_ZERO(&all);
    for (std::size_t core = 0; core < CPU_SETSIZE; ++core)
        CPU_SET(core, &all);
    sched_setaffinity(0, sizeof all, &all);
}

AnyCore::~AnyCore()
{
    sched_setaffinity(0, sizeof before_, &before_);
}

bool AnyCore::isThere()
{
    return sysconf(_SC_NPROCESSORS_ONLN) > 1;
}
