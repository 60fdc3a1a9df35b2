#include "session/poll_plan.h"

#include "driver/low_memory.h"
#include "support/built_driver.h"
#include "session/watch_plan.h"
#include "values/tags.h"

#include <algorithm>
#include <random>
#include <set>

namespace {

const TimePoint START = TimePoint() + std::chrono::hours(1);
const std::uint16_t OUT_OF_RANGE = 0x1103;

using Texts = std::vector<std::string>;

Texts textsOf(const std::vector<Item> &items)
{
    Texts texts;
    for (const Item &item : items)
        texts.push_back(itemText(item));
    return texts;
}

// The plan between the driver, which makes blocks of every turn, and a PLC that refuses what holds a refused word.
class PollPlanTest : public testing::Test {
protected:
    void watch(const Texts &items, qint32 wordsPerFrame = 64)
    {
        qint32 status = 0;
        const std::string property = "1#0#0#3#" + std::to_string(wordsPerFrame);
        builtDriver().initProperty(LowMemory::address(memory.sharedBlock()), 0,
                                   LowMemory::address(memory.recipeBuffer()), &status, property.c_str(),
                                   LowMemory::address(memory.mutex()));
        watched = itemsOf(TagBook(builtDriver()).resolveAll(items, Access::READ));
        plan.set(watched, wordsPerFrame);
        handOver();
    }

    void refuse(const char *type, qint32 first, qint32 count = 1)
    {
        for (qint32 word = first; word < first + count; ++word)
            bad.insert({QString::fromLatin1(type), word});
    }

    bool isRefused(const Item &item) const
    {
        return std::any_of(bad.begin(), bad.end(), [&](const std::pair<QString, qint32> &word) {
            return shareWord(item, {word.first, word.second, 1, false});
        });
    }

    void handOver()
    {
        QList<KEY_ADDRESS> turn = plan.nextTurn();
        builtDriver().addrMerge(turn);
        plan.begin(turn);
        blocks.clear();
        for (const KEY_ADDRESS &address : turn)
            blocks.push_back({address.regType, address.address, address.count, false});
    }

    // One request and its reply; false if there is nothing to poll.
    bool poll()
    {
        if (plan.turnIsOver() && plan.hasNextTurn(now))
            handOver();
        if (blocks.empty())
            return false;
        const Item polled = blocks.front();
        std::rotate(blocks.begin(), blocks.begin() + 1, blocks.end());
        requests.push_back(itemText(polled));
        if (isRefused(polled)) {
            ++refusals;
            plan.refuse(polled, endCode, byHalves, now);
            handOver();
            if (!blocks.empty()) // the driver's job that meets the node addresses is not sent
                std::rotate(blocks.begin(), blocks.begin() + 1, blocks.end());
        } else {
            plan.countPoll();
            readAgain = plan.noteRead(polled);
        }
        for (const PollPlan::Refusal &refusal : plan.takeRefusals())
            said.push_back(itemText(refusal.block));
        return true;
    }

    // Polls until more requests than any cycle has were not refused.
    void settle()
    {
        int quiet = 0;
        for (int i = 0; i < 10000 && quiet < 60; ++i) {
            const int before = refusals;
            if (!poll())
                break;
            quiet = refusals == before ? quiet + 1 : 0;
        }
        ASSERT_TRUE(plan.isSteady());
    }

    // The requests of so many polls, sorted.
    Texts cycle(std::size_t polls)
    {
        requests.clear();
        for (std::size_t i = 0; i < polls; ++i)
            poll();
        std::sort(requests.begin(), requests.end());
        return requests;
    }

    LowMemory         memory;
    PollPlan          plan{Millis(500)};
    std::vector<Item> watched;
    std::set<std::pair<QString, qint32>> bad; // words that the PLC refuses
    std::uint16_t     endCode  = OUT_OF_RANGE;
    bool              byHalves = true;
    TimePoint         now      = START;
    std::vector<Item> blocks;    // of the turn, as the driver goes through them
    Texts             requests;  // sent
    int               refusals = 0;
    std::vector<Item> readAgain; // with the latest reply
    Texts             said;
};

} // namespace

TEST_F(PollPlanTest, PollsEverythingAtFirst)
{
    watch({"DM:0", "HR:7:2", "CIO_bit:1.5"});
    EXPECT_EQ(textsOf(blocks), (Texts{"CIO:1", "HR:7:2", "DM:0"}));
    EXPECT_TRUE(plan.isSteady());
    EXPECT_FALSE(plan.leavesAnyOut());
    EXPECT_FALSE(plan.putBack());
    EXPECT_EQ(cycle(6), (Texts{"CIO:1", "CIO:1", "DM:0", "DM:0", "HR:7:2", "HR:7:2"}));
}

// 64 words, of which one is refused: the block, and two requests for each halving.
TEST_F(PollPlanTest, FindsOneWordOf64WithTwelveRequestsMore)
{
    for (const qint32 word : {0, 1, 37, 62, 63}) {
        plan = PollPlan(Millis(500));
        bad.clear();
        refuse("DM", word);
        watch({"DM:0:64"});
        requests.clear();
        said.clear();
        while (said.empty())
            ASSERT_TRUE(poll());
        EXPECT_EQ(said, Texts{"DM:" + std::to_string(word)});
        // In the last pair the other half may be the second one.
        EXPECT_LE(requests.size(), 13u) << word;
        EXPECT_GE(requests.size(), 7u) << word;
    }
}

TEST_F(PollPlanTest, LeavesOutOnlyWhatIsRefused)
{
    refuse("DM", 2048, 100);
    watch({"DM:2040", "DM:2050"});
    EXPECT_EQ(cycle(3), (Texts{"DM:2040", "DM:2040:11", "DM:2050"}));
    EXPECT_EQ(said, Texts{"DM:2050"});
    settle();
    EXPECT_EQ(cycle(2), (Texts{"DM:2040", "DM:2040"}));
}

TEST_F(PollPlanTest, SaysWordsThatTouchAtOnce)
{
    refuse("DM", 2048, 100);
    watch({"DM:2040:20"});
    settle();
    EXPECT_EQ(said, Texts{"DM:2048:12"});
    EXPECT_EQ(cycle(1), Texts{"DM:2040:8"});
}

// The driver would join them over the word between.
TEST_F(PollPlanTest, KeepsApartWhatLiesOnBothSidesOfARefusedWord)
{
    refuse("DM", 10);
    watch({"DM:5:11"});
    settle();
    EXPECT_EQ(said, Texts{"DM:10"});
    EXPECT_EQ(cycle(4), (Texts{"DM:11:5", "DM:11:5", "DM:5:5", "DM:5:5"}));
    EXPECT_EQ(refusals, 4); // of 11 words, 6, 3 and 1: none of the later polls
}

// A word that nobody watches is read with its neighbours, and may be the refused one.
TEST_F(PollPlanTest, KeepsApartWhatLiesOnBothSidesOfAGapThatIsRefused)
{
    refuse("DM", 15);
    watch({"DM:10:2", "DM:20:2"});
    settle();
    EXPECT_EQ(said, Texts());
    EXPECT_EQ(cycle(4), (Texts{"DM:10:2", "DM:10:2", "DM:20:2", "DM:20:2"}));
    EXPECT_EQ(refusals, 1);
}

// What is far enough from both sides is polled with either.
// Items that begin with the same word stay together behind a gap.
TEST_F(PollPlanTest, PollsAWordOfTwoItemsOnceBehindAGapThatIsRefused)
{
    refuse("DM", 1);
    watch({"DM:0", "DM:2", "DM_bit:2.0"});
    settle();
    EXPECT_EQ(said, Texts());
    EXPECT_EQ(cycle(6), (Texts{"DM:0", "DM:0", "DM:0", "DM:2", "DM:2", "DM:2"}));
}

TEST_F(PollPlanTest, PollsEverythingOnceInACycleOfTurns)
{
    refuse("DM", 10);
    watch({"DM:5:11", "DM:200", "HR:0", "CIO:3"});
    settle();
    EXPECT_EQ(cycle(5), (Texts{"CIO:3", "DM:11:5", "DM:200", "DM:5:5", "HR:0"}));
}

TEST_F(PollPlanTest, CutsALongItemAroundARefusedWord)
{
    refuse("DM", 70);
    watch({"DM:0:130"});
    settle();
    EXPECT_EQ(said, Texts{"DM:70"});
    EXPECT_EQ(cycle(3), (Texts{"DM:0:64", "DM:64:6", "DM:71:59"}));
}

TEST_F(PollPlanTest, LeavesOutTheBitsOfARefusedWord)
{
    refuse("DM", 1);
    watch({"DM_bit:0.5:40", "DM:4"});
    settle();
    EXPECT_EQ(said, Texts{"DM:1"});
    EXPECT_EQ(cycle(2), (Texts{"DM:0", "DM:2:3"}));
}

// Several items in the same word, one inside the other.
TEST_F(PollPlanTest, LeavesOutAWordOfItemsThatShareIt)
{
    refuse("DM", 4);
    watch({"DM:0:9", "DM:1", "DM:4", "DM_bit:4.3", "DM_bit:6.0:20"});
    settle();
    EXPECT_EQ(said, Texts{"DM:4"});
    EXPECT_EQ(cycle(2), (Texts{"DM:0:4", "DM:5:4"}));
}

// What follows a refused block has its turn before anything is polled again.
TEST_F(PollPlanTest, GoesOnBehindARefusedBlock)
{
    for (const qint32 word : {1, 65, 129, 193})
        refuse("DM", word);
    watch({"DM:0:2", "DM:64:2", "DM:128:2", "DM:192:2"}, 8);
    while (said.size() < 4)
        ASSERT_TRUE(poll());
    EXPECT_EQ(requests, (Texts{"DM:0:2", "DM:0", "DM:1", "DM:128:2", "DM:128", "DM:129", "DM:192:2", "DM:192", "DM:193",
                               "DM:64:2", "DM:64", "DM:65"}));
}

TEST_F(PollPlanTest, TheOthersHaveTheirTurnsInALongSearch)
{
    refuse("DM", 0, 64);
    watch({"DM:0:64", "HR:0"});
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(poll());
    EXPECT_EQ(std::count(requests.begin(), requests.end(), "HR:0"), 3); // after 1, 22 and 43 others
    settle();
    EXPECT_EQ(said, Texts{"DM:0:64"});
    EXPECT_EQ(refusals, 127);
    EXPECT_EQ(cycle(2), (Texts{"HR:0", "HR:0"}));
}

TEST_F(PollPlanTest, LeavesOutTheWholeBlockWhereHalvesAreOfNoUse)
{
    byHalves = false;
    refuse("DM", 3);
    watch({"DM:0:4", "DM:6", "HR:0"});
    settle();
    EXPECT_EQ(refusals, 1);
    EXPECT_EQ(said, (Texts{"DM:0:4", "DM:6"}));
    EXPECT_EQ(cycle(2), (Texts{"HR:0", "HR:0"}));
}

TEST_F(PollPlanTest, NothingIsLeftToPoll)
{
    refuse("DM", 0);
    watch({"DM:0"});
    EXPECT_TRUE(poll());
    EXPECT_FALSE(poll());
    EXPECT_TRUE(plan.isSteady());
    now += Millis(499);
    EXPECT_FALSE(poll());
    now += Millis(1);
    EXPECT_TRUE(poll());
    EXPECT_EQ(refusals, 2);
}

// Their neighbours are not disturbed.
TEST_F(PollPlanTest, TriesRefusedWordsAgainAfterThePause)
{
    refuse("DM", 2048, 100);
    watch({"DM:2040:20"});
    settle();
    now += Millis(499);
    EXPECT_EQ(cycle(3), (Texts{"DM:2040:8", "DM:2040:8", "DM:2040:8"}));
    now += Millis(1);
    bad.clear();
    EXPECT_EQ(cycle(1), Texts{"DM:2048:12"});
    EXPECT_EQ(textsOf(readAgain), Texts{"DM:2048:12"});
    EXPECT_EQ(cycle(1), Texts{"DM:2040:20"});
    EXPECT_EQ(readAgain.size(), 0u);
    EXPECT_FALSE(plan.awaitsAny());
}

TEST_F(PollPlanTest, OfRefusedWordsSomeComeBack)
{
    refuse("DM", 2048, 100);
    watch({"DM:2040:20"});
    settle();
    now += Millis(500);
    bad.erase({QString::fromLatin1("DM"), 2048});
    said.clear();
    Texts again;
    while (said.empty()) {
        ASSERT_TRUE(poll());
        for (const std::string &text : textsOf(readAgain))
            again.push_back(text);
        readAgain.clear();
    }
    EXPECT_EQ(again, Texts{"DM:2048"});
    EXPECT_EQ(said, Texts{"DM:2049:11"});
    settle();
    EXPECT_EQ(cycle(1), Texts{"DM:2040:9"});
}

// A gap that was refused is read with its neighbours again.
TEST_F(PollPlanTest, JoinsWhatWasKeptApartAfterThePause)
{
    refuse("DM", 15);
    watch({"DM:10:2", "DM:20:2"});
    settle();
    now += Millis(500);
    bad.clear();
    cycle(2);
    EXPECT_EQ(cycle(2), (Texts{"DM:10:12", "DM:10:12"}));
}

TEST_F(PollPlanTest, ANewConnectionTriesEverything)
{
    refuse("DM", 10);
    watch({"DM:5:11"});
    settle();
    EXPECT_TRUE(plan.putBack());
    EXPECT_FALSE(plan.leavesAnyOut());
    handOver();
    bad.clear();
    EXPECT_EQ(cycle(1), Texts{"DM:5:11"});
    EXPECT_EQ(textsOf(readAgain), Texts{"DM:10"}); // of the block, what was left out
    EXPECT_FALSE(plan.putBack());
}

TEST_F(PollPlanTest, NewItemsAreAllPolled)
{
    refuse("HR", 7);
    watch({"DM:0", "HR:7"});
    settle();
    bad.clear();
    watch({"HR:7"});
    EXPECT_EQ(cycle(2), (Texts{"HR:7", "HR:7"}));
    EXPECT_EQ(readAgain.size(), 0u);
}

// Whatever is refused: in the end every other watched word is polled in every cycle, and no request is refused.
TEST_F(PollPlanTest, EverySearchEndsWithAllThatCanBeRead)
{
    std::mt19937 random(1);
    const auto upTo = [&](unsigned limit) { return static_cast<qint32>(random() % limit); };
    for (int run = 0; run < 200; ++run) {
        plan = PollPlan(Millis(500));
        bad.clear();
        Texts items;
        for (int i = 1 + upTo(12); i > 0; --i)
            items.push_back((upTo(2) ? "DM:" : "HR:") + std::to_string(upTo(80)) + ":" + std::to_string(1 + upTo(9)));
        for (int i = upTo(6); i > 0; --i)
            refuse(upTo(2) ? "DM" : "HR", upTo(90), 1 + upTo(3));
        watch(items, 1 + upTo(40));
        refusals = 0;
        settle();
        const int found = refusals;
        std::set<std::pair<QString, qint32>> polled;
        for (int i = 0; i < 300 && !HasFailure() && poll(); ++i) {
            const Item &last = blocks.back();
            for (qint32 word = last.address; word < last.endWord(); ++word)
                polled.insert({last.regType, word});
        }
        EXPECT_EQ(refusals, found) << run;
        for (const Item &item : watched) {
            for (qint32 word = item.address; word < item.endWord(); ++word)
                EXPECT_EQ(polled.count({item.regType, word}), 1 - bad.count({item.regType, word})) << run;
        }
        if (HasFailure())
            return;
    }
}
