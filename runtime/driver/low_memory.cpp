#include "driver/low_memory.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>
#include <stdexcept>

// One past the last address that 32 bits can tell. A 64-bit value, so that the comparison also holds on 32-bit systems.
static constexpr std::uint64_t LOW_END = std::uint64_t(1) << 32;

static bool liesLow(const void *memory, std::size_t size)
{
    return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(memory)) + size <= LOW_END;
}

static void *mapAt(std::uintptr_t hint, std::size_t size, int extraFlags)
{
    // Without MAP_FIXED a hint is only a wish: an address that is in use is never overwritten.
    void *memory = mmap(reinterpret_cast<void *>(hint), size, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | extraFlags, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    if (liesLow(memory, size))
        return memory;
    munmap(memory, size);
    return nullptr;
}

void *mapLow(std::size_t size, bool byHintsOnly)
{
#ifdef MAP_32BIT
    if (!byHintsOnly) {
        if (void *memory = mapAt(0, size, MAP_32BIT))
            return memory;
    }
#endif
    if (sizeof(void *) == 4 && !byHintsOnly)
        return mapAt(0, size, 0);
    const std::uintptr_t first = 0x10000000;
    const std::uintptr_t last  = 0xF0000000;
    const std::uintptr_t step  = 0x01000000;
    for (std::uintptr_t hint = first; hint <= last; hint += step) {
        if (void *memory = mapAt(hint, size, 0))
            return memory;
    }
    return nullptr;
}

void unmapLow(void *memory, std::size_t size)
{
    munmap(memory, size);
}

LowMemory::LowMemory() : objects_(nullptr)
{
    void *memory = mapLow(sizeof(Objects));
    if (!memory)
        throw std::runtime_error("the system has no free memory below 4 GiB for the objects shared with the driver");
    objects_ = new (memory) Objects;
}

LowMemory::~LowMemory()
{
    objects_->~Objects();
    unmapLow(objects_, sizeof(Objects));
}

bool LowMemory::flag(std::size_t offset) const
{
    const QMutexLocker lock(mutex());
    return sharedBlock()[offset] != 0;
}

void LowMemory::setFlag(std::size_t offset, bool on)
{
    const QMutexLocker lock(mutex());
    sharedBlock()[offset] = on ? 1 : 0;
}

qint32 LowMemory::address(const void *object)
{
    return static_cast<qint32>(static_cast<quint32>(reinterpret_cast<std::uintptr_t>(object)));
}
