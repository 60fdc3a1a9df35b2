#include "change_feed.h"

#include <utility>

static std::vector<Change> noted;

// The ends of conditional reads come with the type "-1", recipe words with "RWI": neither is a change of a variable.
static void noteChange(qint32, qint32 requestTag, QString regType, qint32 address)
{
    if (requestTag != -1)
        noted.push_back({std::move(regType), address});
}

void installChangeFeed(const DriverLibrary &library)
{
    noted.clear();
    library.setAddrValueChangeCallBack(noteChange);
}

void takeChanges(std::vector<Change> &changes)
{
    changes.clear();
    changes.swap(noted);
}
