#ifndef TESTS_REFERENCE_LIBRARY_SUBJECT_H
#define TESTS_REFERENCE_LIBRARY_SUBJECT_H

#include <cstdio>
#include <exception>
#include <memory>

#include "comparison.h"
#include "library_driver.h"
#include "support/low_memory.h"

namespace reference {

/// A driver with the runtime's memory, which outlives it.
class LibrarySubject : public Subject {
public:
    RuntimeMemory memory() override
    {
        return {block.data(), recipe.data(), [this] {
                    const bool isFree = mutex->tryLock();
                    if (isFree)
                        mutex->unlock();
                    return !isFree;
                }};
    }

protected:
    void end() { driver_.reset(); }

    AnyDriver &begin(const DriverFunctions &functions)
    {
        driver_ = std::make_unique<LibraryDriver>(
            functions, LowAddresses{block.address(), recipe.address(), mutex.address()});
        return *driver_;
    }

    LowMemory         block{BLOCK_SIZE};
    LowMemory         recipe{2 * RECIPE_WORDS, 2};
    LowObject<QMutex> mutex;

private:
    std::unique_ptr<LibraryDriver> driver_;
};

/// The whole program for a kind of subject.
template <class Tested> int runComparison(int argc, char **argv)
{
    try {
        Tested subject;
        return compareSequences(argc, argv, subject);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}

} // namespace reference

#endif
