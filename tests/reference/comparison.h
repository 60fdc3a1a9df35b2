#ifndef TESTS_REFERENCE_COMPARISON_H
#define TESTS_REFERENCE_COMPARISON_H

#include <memory>

#include "reference_driver.h"

// Random sequences, played by the driver and by the reference side by side.

namespace reference {

/// The driver under test and its surroundings.
class Subject {
public:
    virtual ~Subject() = default;

    /// A driver as it is after loading. The one from before is gone.
    virtual AnyDriver &fresh() = 0;

    /// What the runtime lends to the driver.
    virtual RuntimeMemory memory() = 0;

    /// The first difference between the inner states, or an empty text.
    virtual Text stateDifference(const ReferenceDriver &expected) = 0;
};

/// Runs the command line `--sequences N --seed N`. Returns the exit code: 0, 1 when a sequence differed (the shortest
/// form of it is printed), 2 for bad usage.
int compareSequences(int argc, char **argv, Subject &subject);

} // namespace reference

#endif
