#include "driver/change_feed.h"
#include "session/dry_run.h"

#include "support/built_driver.h"

#include <gtest/gtest.h>

// A direct write notifies its value at once, which is how the test makes the driver call the feed.

namespace {

std::size_t changesOfAWrite(bool notes)
{
    const DriverLibrary &library = builtDriver();
    DryRun dryRun(library, LinkOptions()); // brings the driver up
    installChangeFeed(library, notes);
    const Item item = {QString::fromLatin1("DM"), 0, 1, false};
    dryRun.write(item, {7, 0});
    std::vector<Change> changes;
    takeChanges(changes);
    return changes.size();
}

} // namespace

TEST(ChangeFeed, NotesChangesForWhoTakesThem)
{
    EXPECT_GT(changesOfAWrite(true), 0u);
}

// A command that never takes them would otherwise grow with every change.
TEST(ChangeFeed, NotesNothingForACommandThatTakesNone)
{
    EXPECT_EQ(changesOfAWrite(false), 0u);
}
