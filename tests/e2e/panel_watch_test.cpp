#include "panel_run.h"

#include <algorithm>

// `watch`: first values, changes, how it ends.

class PanelWatchTest : public PanelTest {};

TEST_F(PanelWatchTest, FirstValuesThenChanges)
{
    start();
    ASSERT_EQ(tell("write DM:0 467 0 9"), "ok");
    const auto panel = watch({"DM:0:3", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "DM:0 - 467");
    EXPECT_EQ(nextChange(*panel), "DM:1 - 0");
    EXPECT_EQ(nextChange(*panel), "DM:2 - 9");
    ASSERT_EQ(tell("write DM:0 463"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 467 463");
    ASSERT_EQ(tell("write DM:1 65535"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:1 0 65535");
    ASSERT_EQ(tell("write DM:1 0"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:1 65535 0");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
    EXPECT_EQ(panel->errors(), connectedLine());
}

// The neighbours of a watched word or bit are no one's business.
TEST_F(PanelWatchTest, OnlyWhatIsWatched)
{
    start();
    const auto panel = watch({"DM:10", "CIO_bit:1.5", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "DM:10 - 0");
    EXPECT_EQ(nextChange(*panel), "CIO_bit:1.5 - 0");
    ASSERT_EQ(tell("write DM:9 1"), "ok");
    ASSERT_EQ(tell("write DM:11 1"), "ok");
    ASSERT_EQ(tell("write CIO_bit:1.4 1 0 1"), "ok");
    ASSERT_EQ(tell("write DM:10 7"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:10 0 7");
    ASSERT_EQ(tell("write CIO_bit:1.5 1"), "ok");
    EXPECT_EQ(nextChange(*panel), "CIO_bit:1.5 0 1");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

TEST_F(PanelWatchTest, WordAndBitOfTheSameWord)
{
    start();
    const auto panel = watch({"DM:10", "DM_bit:10.3", "--interval", "5"});
    std::vector<std::string> first = {nextChange(*panel), nextChange(*panel)};
    std::sort(first.begin(), first.end());
    EXPECT_EQ(first, (Words{"DM:10 - 0", "DM_bit:10.3 - 0"}));
    ASSERT_EQ(tell("write DM:10 8"), "ok");
    Words both = {nextChange(*panel), nextChange(*panel)};
    std::sort(both.begin(), both.end());
    EXPECT_EQ(both, (Words{"DM:10 0 8", "DM_bit:10.3 0 1"}));
    ASSERT_EQ(tell("write DM:10 9"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:10 8 9");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

TEST_F(PanelWatchTest, EveryType)
{
    start();
    const Words items = {"CIO:6143", "WR:511", "HR:1535", "AR:959", "T:4095", "C:4095", "DM:32767", "CIO_bit:0.15",
                         "WR_bit:0.15", "HR_bit:0.15", "AR_bit:448.15", "DM_bit:0.15"};
    Words all = items;
    all.insert(all.end(), {"--interval", "1"});
    const auto panel = watch(all);
    for (std::size_t i = 0; i < items.size(); ++i)
        EXPECT_NE(nextChange(*panel).find(" - 0"), std::string::npos);
    for (const std::string &item : items) {
        ASSERT_EQ(tell("write " + item + " 1"), "ok");
        EXPECT_EQ(nextChange(*panel), item + " 0 1");
    }
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelWatchTest, SeveralBlocksTakeTurns)
{
    start();
    const auto panel = watch({"DM:0:5", "--words-per-frame", "2", "--interval", "1"});
    // The first block's turn went to the node-address request.
    for (const char *word : {"2", "3", "4", "0", "1"})
        EXPECT_EQ(nextChange(*panel), std::string("DM:") + word + " - 0");
    for (const char *word : {"4", "0", "2", "1", "3"}) {
        ASSERT_EQ(tell(std::string("write DM:") + word + " 1"), "ok");
        EXPECT_EQ(nextChange(*panel), std::string("DM:") + word + " 0 1");
    }
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelWatchTest, EndsAfterSoManyChanges)
{
    start();
    const auto panel = watch({"DM:0:2", "--changes", "2", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "DM:0 - 0");
    EXPECT_EQ(nextChange(*panel), "DM:1 - 0");
    ASSERT_EQ(tell("write DM:0 1"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 0 1");
    ASSERT_EQ(tell("write DM:0 2"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 1 2");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "");
    EXPECT_EQ(panel->errors(), connectedLine());
}

TEST_F(PanelWatchTest, EndsAfterSomeTime)
{
    start();
    const PanelRun ended = run("watch", {"DM:0", "--for", "1"});
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(linesOf(ended.out).size(), 1u);
    EXPECT_EQ(ended.err, connectedLine());
}

TEST_F(PanelWatchTest, ChangesThatDidNotCome)
{
    start();
    const PanelRun ended = run("watch", {"DM:0", "--for", "1", "--changes", "5"});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(linesOf(ended.out).size(), 1u);
    EXPECT_EQ(ended.err, connectedLine() + "fins_panel: 0 of 5 changes came in time\n");
}

// The pause is one after every request, the first one included, and never delays the end.
TEST_F(PanelWatchTest, IntervalIsThePauseBetweenRequests)
{
    start();
    EXPECT_EQ(run("watch", {"DM:0", "--interval", "60000", "--for", "0.2"}).code, 3);
    EXPECT_EQ(tell("stats"), "ok connections=1 requests=1 replies=1");
    EXPECT_EQ(run("watch", {"DM:0", "--interval", "100", "--for", "1"}).code, 0);
    const std::string slow = tell("stats");
    const int requests = std::stoi(slow.substr(slow.find("requests=") + 9));
    EXPECT_GE(requests, 3);
    EXPECT_LE(requests, 1 + 10 + 1);
    EXPECT_EQ(run("watch", {"DM:0", "--interval", "0", "--for", "1"}).code, 0);
    const std::string fast = tell("stats");
    EXPECT_GE(std::stoi(fast.substr(fast.find("requests=") + 9)), requests + 20);
}

TEST_F(PanelWatchTest, SignalsEndItWithSuccess)
{
    start();
    for (const int number : {SIGINT, SIGTERM}) {
        const auto panel = watch({"DM:0", "--interval", "60000"});
        EXPECT_EQ(nextMessage(*panel) + "\n", connectedLine());
        panel->sendSignal(number);
        EXPECT_EQ(panel->wait(), 0);
        EXPECT_EQ(panel->errors(), "");
        waitForAnswer("clients", "ok 0");
    }
}

TEST_F(PanelWatchTest, SignalsEndItWhileThereIsNoPlc)
{
    start({"--fault", "refuse"});
    const auto panel = watch({"DM:0"});
    EXPECT_EQ(nextMessage(*panel), "no link to " + host() + ": Connection refused, retrying in 100 ms");
    EXPECT_EQ(nextMessage(*panel), "no link to " + host() + ": Connection refused, retrying in 200 ms");
    EXPECT_EQ(nextMessage(*panel), "no link to " + host() + ": Connection refused, retrying in 400 ms");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

TEST_F(PanelWatchTest, WithoutAPlcItsTimeEndsWith3)
{
    start({"--fault", "refuse"});
    expectNoLink(run("watch", {"DM:0", "--for", "0.09"}), "");
}

TEST_F(PanelWatchTest, RefusedReadsEndWith1)
{
    start({"--fault", "end-code=1101"});
    const PanelRun ended = run("watch", {"DM:0", "--for", "0.5", "--interval", "1", "--retry-refused", "0.05"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, connectedLine() + "the PLC refuses to read DM:0: 1101 (there is no such memory area)\n");
}

TEST_F(PanelWatchTest, TwoPanelsAtOnce)
{
    start();
    const auto one = watch({"DM:0", "--interval", "5"});
    EXPECT_EQ(nextChange(*one), "DM:0 - 0");
    const auto other = watch({"DM:0", "--interval", "5"});
    EXPECT_EQ(nextChange(*other), "DM:0 - 0");
    EXPECT_EQ(nextMessage(*other) + "\n", connectedLine(240));
    EXPECT_EQ(run("write", {"DM:0=8"}).err, connectedLine(241));
    EXPECT_EQ(nextChange(*one), "DM:0 0 8");
    EXPECT_EQ(nextChange(*other), "DM:0 0 8");
    EXPECT_EQ(interrupt(*one), 0);
    EXPECT_EQ(interrupt(*other), 0);
}

// A plant at work: its level moves, and each line goes on where the one before ended.
TEST_F(PanelWatchTest, PlantAtWork)
{
    start({"--plant", "--plant-period", "5"});
    const PanelRun ended = run("watch", {"DM:0", "DM:4", "--changes", "100", "--interval", "1"});
    EXPECT_EQ(ended.code, 0);
    std::map<std::string, std::string> latest;
    for (const std::string &line : linesOf(ended.out)) {
        std::istringstream words(changeOf(line));
        std::string item, before, after;
        words >> item >> before >> after;
        EXPECT_EQ(before, latest.count(item) ? latest[item] : "-") << line;
        EXPECT_NE(before, after);
        latest[item] = after;
    }
    EXPECT_EQ(latest.size(), 2u);
    // The last reply may bring two changes.
    EXPECT_GE(linesOf(ended.out).size(), 102u);
    EXPECT_LE(linesOf(ended.out).size(), 103u);
}
