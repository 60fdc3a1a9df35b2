#ifndef RUNTIME_DRIVER_CHANGE_FEED_H
#define RUNTIME_DRIVER_CHANGE_FEED_H

#include "driver/driver_library.h"

#include <vector>

// The driver's change notifications. The driver calls a plain function, so there is one feed a thread; it only notes what
// changed, and the caller of the driver collects that after the call.

struct Change {
    QString regType; // a bit type for a bit
    qint32  address;
};

/// Registers the feed of this thread with the driver and empties it; this thread alone calls the driver from then on. The driver calls it in any case; with `notes` false nothing is
/// noted, for commands that want no changes.
void installChangeFeed(const DriverLibrary &library, bool notes);

/// Moves the changes noted since the last call into `changes`, in the order in which they were notified.
void takeChanges(std::vector<Change> &changes);

#endif
