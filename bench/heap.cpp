#include "heap.h"

#include "harness.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdio>

static long allocationCount = 0;

static void count()
{
    if (insideDriver)
        ++allocationCount;
}

// Replacements of the C library's functions, which still do the work. Operator new calls malloc.
extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *old, std::size_t size);

void *malloc(std::size_t size)
{
    count();
    return __libc_malloc(size);
}

void *calloc(std::size_t items, std::size_t size)
{
    count();
    return __libc_calloc(items, size);
}

void *realloc(void *old, std::size_t size)
{
    count();
    return __libc_realloc(old, size);
}

} // extern "C"

long allocations()
{
    return allocationCount;
}

void resetAllocations()
{
    allocationCount = 0;
}

std::size_t heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::size_t residentBytes()
{
    long total = 0;
    long resident = 0;
    std::FILE *statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr)
        return 0;
    if (std::fscanf(statm, "%ld %ld", &total, &resident) != 2)
        resident = 0;
    std::fclose(statm);
    return static_cast<std::size_t>(resident) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
