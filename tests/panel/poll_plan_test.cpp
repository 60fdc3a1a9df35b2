#include "poll_plan.h"

#include "panel_fixture.h"
#include "tags.h"

namespace {

const TimePoint START = TimePoint() + std::chrono::hours(1);

Item block(const char *type, qint32 address, qint32 count)
{
    return {QString::fromLatin1(type), address, count, false};
}

class PollPlanTest : public testing::Test {
protected:
    void watch(const std::vector<std::string> &texts)
    {
        plan.set(itemsOf(TagBook(builtDriver()).resolveAll(texts, Access::READ)));
    }

    std::string polled(qint32 wordsPerFrame = 64) const
    {
        const QList<KEY_ADDRESS> addresses = plan.addresses(wordsPerFrame);
        std::string text;
        for (const KEY_ADDRESS &address : addresses)
            text += (text.empty() ? "" : " ") + itemText(address.regType, address.address, address.count);
        return text;
    }

    PollPlan plan{Millis(500)};
};

} // namespace

TEST_F(PollPlanTest, PollsEverythingAtFirst)
{
    watch({"DM:0", "HR:7:2", "CIO_bit:1.5"});
    EXPECT_EQ(polled(), "CIO_bit:1.5 DM:0 HR:7:2");
    EXPECT_FALSE(plan.leavesAnyOut());
    EXPECT_FALSE(plan.putBack());
}

TEST_F(PollPlanTest, LeavesOutWhatLiesInARefusedBlock)
{
    watch({"DM:0", "HR:7:2", "HR:10", "HR:80", "CIO_bit:1.5"});
    plan.leaveOut(block("HR", 7, 4), START);
    EXPECT_EQ(polled(), "CIO_bit:1.5 DM:0 HR:80");
    EXPECT_TRUE(plan.leavesAnyOut());
    plan.leaveOut(block("CIO", 1, 1), START);
    EXPECT_EQ(polled(), "DM:0 HR:80");
}

// An item that is longer than a frame is polled in pieces, of which one may be refused.
TEST_F(PollPlanTest, LeavesOutAPieceOfALongItem)
{
    watch({"DM:0:65"});
    plan.leaveOut(block("DM", 64, 1), START);
    EXPECT_EQ(polled(), "DM:0:64");
}

TEST_F(PollPlanTest, TellsWhatIsLeftOut)
{
    watch({"DM:0", "HR:7", "CIO_bit:1.5"});
    plan.leaveOut(block("HR", 7, 1), START);
    plan.leaveOut(block("CIO", 1, 1), START);
    EXPECT_TRUE(plan.leavesOut(block("HR", 6, 2)));
    EXPECT_FALSE(plan.leavesOut(block("HR", 8, 1)));
    EXPECT_FALSE(plan.leavesOut(block("DM", 7, 1)));
    EXPECT_TRUE(plan.leavesOut({"CIO_bit", 16 + 5, 1, true}));
    EXPECT_FALSE(plan.leavesOut({"CIO_bit", 2 * 16, 1, true}));
}

TEST_F(PollPlanTest, IsDueOncePauseHasPassedSinceTheLatestRefusal)
{
    watch({"DM:0", "HR:7"});
    EXPECT_FALSE(plan.isDue(START + Millis(10000)));
    plan.leaveOut(block("HR", 7, 1), START);
    plan.leaveOut(block("DM", 0, 1), START + Millis(300));
    EXPECT_FALSE(plan.isDue(START + Millis(799)));
    EXPECT_TRUE(plan.isDue(START + Millis(800)));
    EXPECT_TRUE(plan.putBack());
    EXPECT_EQ(polled(), "DM:0 HR:7");
    EXPECT_FALSE(plan.isDue(START + Millis(10000)));
    EXPECT_FALSE(plan.putBack());
}

TEST_F(PollPlanTest, KnowsABlockThatIsReadAgain)
{
    watch({"DM:0", "HR:7"});
    EXPECT_FALSE(plan.noteRead(block("HR", 7, 1)));
    plan.leaveOut(block("HR", 7, 1), START);
    plan.putBack();
    EXPECT_FALSE(plan.noteRead(block("DM", 0, 1)));
    EXPECT_TRUE(plan.noteRead(block("HR", 7, 1)));
    EXPECT_FALSE(plan.noteRead(block("HR", 7, 1)));
}

TEST_F(PollPlanTest, ABlockThatIsRefusedAgainIsNotReadAgain)
{
    watch({"HR:7"});
    plan.leaveOut(block("HR", 7, 1), START);
    plan.putBack();
    plan.leaveOut(block("HR", 7, 1), START);
    EXPECT_FALSE(plan.noteRead(block("HR", 7, 1)));
    EXPECT_EQ(polled(), "");
}

TEST_F(PollPlanTest, NewItemsAreAllPolled)
{
    watch({"DM:0", "HR:7"});
    plan.leaveOut(block("HR", 7, 1), START);
    watch({"HR:7"});
    EXPECT_EQ(polled(), "HR:7");
    EXPECT_FALSE(plan.isDue(START + Millis(10000)));
    EXPECT_FALSE(plan.noteRead(block("HR", 7, 1)));
}
