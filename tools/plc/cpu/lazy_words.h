#ifndef PLC_CPU_LAZY_WORDS_H
#define PLC_CPU_LAZY_WORDS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <sys/mman.h>

// Words that are 0 at first. Pages that are never written cost no memory: the system has but one page of zeros.

namespace plc {

class LazyWords {
public:
    /// Throws std::bad_alloc if there is no room for `count` words.
    explicit LazyWords(std::size_t count) : words(nullptr, Unmap{count * sizeof(std::uint16_t)})
    {
        void *const place = mmap(nullptr, words.get_deleter().size, PROT_READ | PROT_WRITE,
                                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (place == MAP_FAILED)
            throw std::bad_alloc();
        words.reset(static_cast<std::uint16_t *>(place));
    }

    std::uint16_t operator[](std::size_t i) const { return words[i]; }
    std::uint16_t &operator[](std::size_t i) { return words[i]; }

private:
    struct Unmap {
        std::size_t size;

        void operator()(std::uint16_t *first) const { munmap(first, size); }
    };

    std::unique_ptr<std::uint16_t[], Unmap> words;
};

} // namespace plc

#endif
