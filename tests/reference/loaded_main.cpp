// The reference against the built library, loaded by name and afresh for every sequence.

#include <cstdio>
#include <exception>

#include "comparison.h"
#include "library_driver.h"
#include "support/loaded_driver.h"
#include "support/low_memory.h"

namespace {

reference::DriverFunctions functionsOf(const LoadedDriver &library)
{
    return {library.setAddrValueChangeCallBack, library.initProperty, library.checkAddrValidity, library.checkAddr,
            library.getRegListByType, library.getRegDiscription, library.multiCopy, library.addrMerge,
            library.setRcpAddress, library.getSendFrame, library.dealRcvFrame, library.getData, library.setData,
            library.addConditionRead};
}

class LoadedSubject : public reference::Subject {
public:
    reference::AnyDriver &fresh() override
    {
        m_driver.reset();
        if (m_library != nullptr && !m_library->unload())
            throw std::runtime_error("the library stays in the process");
        m_library = std::make_unique<LoadedDriver>();
        m_driver = std::make_unique<reference::LibraryDriver>(
            functionsOf(*m_library),
            reference::LowAddresses{m_block.address(), m_recipe.address(), m_mutex.address()});
        return *m_driver;
    }

    reference::RuntimeMemory memory() override
    {
        return {m_block.data(), m_recipe.data(), [this] {
                    const bool isFree = m_mutex->tryLock();
                    if (isFree)
                        m_mutex->unlock();
                    return !isFree;
                }};
    }

    reference::Text stateDifference(const reference::ReferenceDriver &) override { return reference::Text(); }

private:
    LowMemory                                 m_block{reference::BLOCK_SIZE};
    LowMemory                                 m_recipe{2 * reference::RECIPE_WORDS, 2};
    LowObject<QMutex>                         m_mutex;
    std::unique_ptr<LoadedDriver>             m_library;
    std::unique_ptr<reference::LibraryDriver> m_driver;
};

} // namespace

int main(int argc, char **argv)
{
    try {
        LoadedSubject subject;
        return reference::compareSequences(argc, argv, subject);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
