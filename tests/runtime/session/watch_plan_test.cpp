#include "session/watch_plan.h"

#include "driver/low_memory.h"
#include "support/built_driver.h"
#include "values/tags.h"

#include <algorithm>

namespace {

std::vector<Item> items(const std::vector<std::string> &texts)
{
    return itemsOf(TagBook(builtDriver()).resolveAll(texts, Access::READ));
}

std::string planText(const std::vector<std::string> &texts, qint32 wordsPerFrame)
{
    const QList<KEY_ADDRESS> plan = planWatch(items(texts), wordsPerFrame);
    std::string text;
    for (int i = 0; i < static_cast<int>(plan.size()); ++i)
        text += (i ? " " : "") + itemText(plan.at(i).regType, plan.at(i).address, plan.at(i).count);
    return text;
}

// The blocks that the driver polls for the items.
std::string polled(const std::vector<std::string> &texts)
{
    LowMemory memory;
    qint32 status = 0;
    builtDriver().initProperty(LowMemory::address(memory.sharedBlock()), 0, LowMemory::address(memory.recipeBuffer()),
                               &status, "1#0#0#3#64", LowMemory::address(memory.mutex()));
    QList<KEY_ADDRESS> plan = planWatch(items(texts), 64);
    builtDriver().addrMerge(plan);
    std::string text;
    for (int i = 0; i < static_cast<int>(plan.size()); ++i)
        text += (i ? " " : "") + itemText(plan.at(i).regType, plan.at(i).address, plan.at(i).count);
    return text;
}

} // namespace

TEST(WatchPlan, HandsItemsOverSortedByWord)
{
    EXPECT_EQ(planText({"DM:100:3", "DM:5", "CIO_bit:1.5"}, 64), "CIO_bit:1.5 DM:5 DM:100:3");
}

TEST(WatchPlan, CutsLongItemsToFrames)
{
    EXPECT_EQ(planText({"DM:0:65"}, 64), "DM:0:64 DM:64");
    EXPECT_EQ(planText({"DM:0:64"}, 64), "DM:0:64");
    // 17 bits fit wherever they begin; the two pieces share word 1.
    EXPECT_EQ(planText({"DM_bit:0.0:18"}, 2), "DM_bit:0.0:16 DM_bit:1.0 DM_bit:1.1");
    EXPECT_EQ(planText({"DM_bit:0.0:17"}, 2), "DM_bit:0.0:17");
}

TEST(WatchPlan, SplitsItemsThatShareWords)
{
    EXPECT_EQ(planText({"DM:100:3", "DM:101"}, 64), "DM:100 DM:101 DM:101 DM:102");
    EXPECT_EQ(planText({"DM:100:2", "DM:102"}, 64), "DM:100:2 DM:102");
    EXPECT_EQ(planText({"DM:100:2", "DM_bit:101.15:3"}, 64), "DM:100 DM:101 DM_bit:101.15 DM_bit:102.0:2");
    EXPECT_EQ(planText({"DM:100:2", "HR:100:2"}, 64), "DM:100:2 HR:100:2");
}

TEST(WatchPlan, SeesSharedWordsBehindAShorterItem)
{
    EXPECT_EQ(planText({"DM:0:9", "DM:1", "DM:5:2"}, 64),
              "DM:0 DM:1 DM:1 DM:2 DM:3 DM:4 DM:5 DM:5 DM:6 DM:6 DM:7 DM:8");
}

TEST(WatchPlan, FillsInTagAndKind)
{
    const QList<KEY_ADDRESS> plan = planWatch(items({"DM:1", "CIO_bit:0.1"}), 64);
    ASSERT_EQ(static_cast<int>(plan.size()), 2);
    EXPECT_EQ(plan.at(0).requestTag, 1);
    EXPECT_EQ(plan.at(0).dataKind, -1);
    EXPECT_EQ(plan.at(1).requestTag, 1);
    EXPECT_EQ(plan.at(1).dataKind, 0);
}

TEST(WatchPlan, TheDriverPollsEveryWordOfItemsInsideOthers)
{
    EXPECT_EQ(polled({"DM:100:3", "DM_bit:100.5"}), "DM:100:3");
    EXPECT_EQ(polled({"DM:100:20", "DM:105:5"}), "DM:100:20");
    EXPECT_EQ(polled({"DM:100:20", "DM:100:5", "DM_bit:119.14:4"}), "DM:100:21");
    EXPECT_EQ(polled({"DM:0:100", "DM:10"}), "DM:0:64 DM:64:36");
}
