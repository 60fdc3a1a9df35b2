// The reference against the built library, loaded by name and afresh for every sequence.

#include "library_subject.h"
#include "support/loaded_driver.h"

namespace {

class LoadedSubject : public reference::LibrarySubject {
public:
    reference::AnyDriver &fresh() override
    {
        end();
        if (library_ != nullptr && !library_->unload())
            throw std::runtime_error("the library stays in the process");
        library_ = std::make_unique<LoadedDriver>();
        return begin(*library_);
    }

    reference::Text stateDifference(const reference::ReferenceDriver &) override { return reference::Text(); }

private:
    std::unique_ptr<LoadedDriver> library_;
};

} // namespace

int main(int argc, char **argv) { return reference::runComparison<LoadedSubject>(argc, argv); }
