#ifndef TESTS_SUPPORT_LOW_MEMORY_H
#define TESTS_SUPPORT_LOW_MEMORY_H

#include <sys/mman.h>
#include <unistd.h>

#include <QtCore/QtGlobal>
#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <utility>

// Memory below 4 GiB: intf_initProperty takes its three addresses as 32-bit integers, so the shared block, the recipe
// buffer and the mutex of a runtime have to lie there. Each piece ends at an inaccessible page, so that an access
// behind it stops the test.

/// A zeroed piece of memory below 4 GiB, owned by this object.
class LowMemory {
public:
    explicit LowMemory(std::size_t size, std::size_t alignment = 1)
        : size_(size)
    {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t usable = (size + alignment + page - 1) / page * page;
        mapped_ = usable + page;
        base_ = mapLow(mapped_);
        if (mprotect(base_ + usable, page, PROT_NONE) != 0) {
            munmap(base_, mapped_);
            throw std::runtime_error("the page behind the low memory cannot be protected");
        }
        data_ = base_ + (usable - size) / alignment * alignment;
    }

    ~LowMemory() { munmap(base_, mapped_); }

    LowMemory(const LowMemory &) = delete;
    LowMemory &operator=(const LowMemory &) = delete;

    quint8     *data() { return data_; }
    std::size_t size() const { return size_; }

    /// The address as intf_initProperty takes it.
    qint32 address() const { return static_cast<qint32>(static_cast<quint32>(addressOf(data_))); }

private:
    static std::uintptr_t addressOf(const void *place) { return reinterpret_cast<std::uintptr_t>(place); }

    static bool isLow(const void *place, std::size_t size)
    {
        return static_cast<std::uint64_t>(addressOf(place)) + size <= (std::uint64_t(1) << 32);
    }

    // One attempt near `hint`; null when the kernel (or a sanitizer, which keeps ranges of its own) puts it elsewhere.
    static quint8 *tryMap(std::uintptr_t hint, std::size_t size, int moreFlags)
    {
        void *place = mmap(reinterpret_cast<void *>(hint), size, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | moreFlags, -1, 0);
        if (place == MAP_FAILED)
            return nullptr;
        if (isLow(place, size))
            return static_cast<quint8 *>(place);
        munmap(place, size);
        return nullptr;
    }

    static quint8 *mapLow(std::size_t size)
    {
#ifdef MAP_32BIT
        if (quint8 *place = tryMap(0, size, MAP_32BIT))
            return place;
#endif
        if (sizeof(void *) == 4) {
            if (quint8 *place = tryMap(0, size, 0))
                return place;
        }
        for (std::uintptr_t hint = 0x10000000; hint < 0x7f000000; hint += 0x01000000) {
            if (quint8 *place = tryMap(hint, size, 0))
                return place;
        }
        throw std::runtime_error("no memory below 4 GiB is free");
    }

    quint8     *base_ = nullptr;
    quint8     *data_ = nullptr;
    std::size_t mapped_ = 0;
    std::size_t size_;
};

/// An object of type T below 4 GiB.
template <class T> class LowObject {
public:
    template <class... Arguments>
    explicit LowObject(Arguments &&...arguments)
        : memory_(sizeof(T), alignof(T)), object_(new (memory_.data()) T(std::forward<Arguments>(arguments)...))
    {
    }

    ~LowObject() { object_->~T(); }

    LowObject(const LowObject &) = delete;
    LowObject &operator=(const LowObject &) = delete;

    T     &operator*() { return *object_; }
    T     *operator->() { return object_; }
    qint32 address() const { return memory_.address(); }

private:
    LowMemory memory_;
    T        *object_;
};

#endif
