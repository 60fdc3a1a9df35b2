#ifndef TESTS_SOAK_RESOURCES_H
#define TESTS_SOAK_RESOURCES_H

#include <cstddef>
#include <string>

namespace soak {

/// What a process holds.
struct Resources {
    std::size_t heapBytes = 0;     // in use, as the allocator counts it; 0 in another process and with a sanitizer
    std::size_t residentBytes = 0;
    int         descriptors = 0;
    int         threads = 0;
};

/// Of the process `peer`, or of this one for 0.
Resources currentResources(int peer = 0);

std::string textOf(const Resources &resources);

/// Throws Failure unless `now` is as `warm` was, measured in the same state of the driver. The heap may grow by what
/// the allocator caches, the resident memory by a little more.
void checkFlat(const Resources &warm, const Resources &now);

} // namespace soak

#endif
