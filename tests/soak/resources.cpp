#include "resources.h"

#include <dirent.h>
#include <malloc.h>
#include <unistd.h>

#include <fstream>

#include "link.h"

namespace soak {

// A sanitizer keeps freed memory back, so that only its own leak check can judge.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
static const bool IS_SANITIZED = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
static const bool IS_SANITIZED = true;
#else
static const bool IS_SANITIZED = false;
#endif
#else
static const bool IS_SANITIZED = false;
#endif

// glibc counts its cache of freed blocks as in use: up to 7 blocks of each of 64 sizes from 24 to 1032 bytes.
static const std::size_t HEAP_SLACK = 7 * 64 * (24 + 1032) / 2;
static const std::size_t RESIDENT_SLACK = 2 * 1024 * 1024;

static int countDescriptors(const std::string &process)
{
    int  count = 0;
    DIR *folder = opendir((process + "/fd").c_str());
    if (folder == nullptr)
        throw Failure(process + "/fd cannot be read");
    while (readdir(folder) != nullptr)
        ++count;
    closedir(folder);
    return count;
}

static int countThreads(const std::string &process)
{
    std::ifstream status(process + "/status");
    std::string   word;
    int           threads = 0;
    while (status >> word)
        if (word == "Threads:")
            status >> threads;
    return threads;
}

Resources currentResources(int peer)
{
    const std::string process = "/proc/" + (peer == 0 ? std::string("self") : std::to_string(peer));
    Resources         now;
    std::ifstream     statm(process + "/statm");
    std::size_t       totalPages = 0, residentPages = 0;
    statm >> totalPages >> residentPages;
    now.residentBytes = residentPages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    if (peer == 0) {
        const auto heap = mallinfo2();
        now.heapBytes = heap.uordblks + heap.hblkhd;
    }
    now.descriptors = countDescriptors(process);
    now.threads = countThreads(process);
    return now;
}

std::string textOf(const Resources &r)
{
    return "heap " + std::to_string(r.heapBytes) + " bytes, resident " + std::to_string(r.residentBytes / 1024)
         + " KiB, descriptors " + std::to_string(r.descriptors) + ", threads " + std::to_string(r.threads);
}

void checkFlat(const Resources &warm, const Resources &now)
{
    const bool isHeapFlat = now.heapBytes <= warm.heapBytes + HEAP_SLACK;
    const bool isResidentFlat = IS_SANITIZED || now.residentBytes <= warm.residentBytes + RESIDENT_SLACK;
    if (!isHeapFlat || !isResidentFlat || now.descriptors != warm.descriptors || now.threads != warm.threads)
        throw Failure("not flat: " + textOf(warm) + " after warm-up, " + textOf(now) + " now");
}

} // namespace soak
