#include "driver/change_feed.h"

#include <utility>

// The driver calls back on the thread that calls it, and has no word about which runtime that is.
static thread_local std::vector<Change> noted;
static thread_local bool isWanted = false;

// The ends of conditional reads come with the type "-1", recipe words with "RWI": neither is a change of a variable.
static void noteChange(qint32, qint32 requestTag, QString regType, qint32 address)
{
    if (isWanted && requestTag != -1)
        noted.push_back({std::move(regType), address});
}

void installChangeFeed(const DriverLibrary &library, bool notes)
{
    noted.clear();
    isWanted = notes;
    library.setAddrValueChangeCallBack(noteChange);
}

void takeChanges(std::vector<Change> &changes)
{
    changes.clear();
    changes.swap(noted);
}
