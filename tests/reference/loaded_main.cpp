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
        driver_.reset();
        if (library_ != nullptr && !library_->unload())
            throw std::runtime_error("the library stays in the process");
        library_ = std::make_unique<LoadedDriver>();
        driver_ = std::make_unique<reference::LibraryDriver>(
            functionsOf(*library_),
            reference::LowAddresses{block_.address(), recipe_.address(), mutex_.address()});
        return *driver_;
    }

    reference::RuntimeMemory memory() override
    {
        return {block_.data(), recipe_.data(), [this] {
                    const bool isFree = mutex_->tryLock();
                    if (isFree)
                        mutex_->unlock();
                    return !isFree;
                }};
    }

    reference::Text stateDifference(const reference::ReferenceDriver &) override { return reference::Text(); }

private:
    LowMemory                                 block_{reference::BLOCK_SIZE};
    LowMemory                                 recipe_{2 * reference::RECIPE_WORDS, 2};
    LowObject<QMutex>                         mutex_;
    std::unique_ptr<LoadedDriver>             library_;
    std::unique_ptr<reference::LibraryDriver> driver_;
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
