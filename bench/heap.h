#ifndef BENCH_HEAP_H
#define BENCH_HEAP_H

#include <cstddef>

// The heap as this process uses it. A program that links heap.cpp has its allocations counted.

/// Allocations that were made while `insideDriver` was true, since resetAllocations().
long allocations();
void resetAllocations();

/// Bytes that are allocated now, with the allocator's own overhead.
std::size_t heapBytes();

/// Bytes of memory that the process occupies now.
std::size_t residentBytes();

#endif
