#include "panel_files.h"

// `wait`: when it ends, with which code, and what it says.

class PanelWaitTest : public PanelTest {
protected:
    std::unique_ptr<Process> wait(const Words &more) const { return startPanel(arguments("wait", more)); }

    // Until the panel has read anew what the simulator holds now: the request that is under way may bring what was.
    void awaitReads()
    {
        const int before = replies();
        const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
        while (replies() < before + 3 && Process::Clock::now() < deadline)
            poll(nullptr, 0, 2);
        EXPECT_GE(replies(), before + 3);
    }

    PanelFiles files;

private:
    int replies()
    {
        const std::string stats = tell("stats");
        return std::stoi(stats.substr(stats.find("replies=") + 8));
    }
};

TEST_F(PanelWaitTest, EndsAtOnceWhereItHoldsAlready)
{
    start();
    ASSERT_EQ(tell("write DM:0 50"), "ok");
    const PanelRun run = runPanel(arguments("wait", {"DM:0>=50", "DM:0<60", "CIO_bit:0.0=0"}));
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "DM:0 = 50\nCIO_bit:0.0 = 0\n");
    EXPECT_EQ(run.err, connectedLine());
}

TEST_F(PanelWaitTest, EndsWhenAllHoldAtOnce)
{
    start();
    const auto panel = wait({"DM:0=1", "DM:1=1", "--interval", "1"});
    ASSERT_EQ(nextMessage(*panel) + "\n", connectedLine());
    ASSERT_EQ(tell("write DM:0 1"), "ok");
    awaitReads();
    ASSERT_EQ(tell("write DM:0 0 1"), "ok"); // each has held, and not both
    awaitReads();
    EXPECT_TRUE(panel->isRunning());
    ASSERT_EQ(tell("write DM:0 1"), "ok");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 1\nDM:1 = 1\n");
    EXPECT_EQ(panel->errors(), "");
}

TEST_F(PanelWaitTest, OneOfThemIsEnoughWithAny)
{
    start();
    const auto panel = wait({"DM:0>5", "DM:1!=0", "--any", "--interval", "1"});
    ASSERT_EQ(nextMessage(*panel) + "\n", connectedLine());
    ASSERT_EQ(tell("write DM:1 3"), "ok");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 0\nDM:1 = 3\n");
}

TEST_F(PanelWaitTest, SaysTheLatestValuesWhenTheTimeIsOver)
{
    start();
    ASSERT_EQ(tell("write DM:0 452"), "ok");
    const std::string file = files.put("p.toml", "[connection]\nhost = \"" + host() + "\"\n[tags]\n"
                                                 "Level = { type = \"DM\", address = 0, scale = 0.1, unit = \"%\" }\n");
    const PanelRun run = runPanel({"wait", "-p", file, "Level>50", "DM:1=0", "DM:2=1", "--for", "2"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, connectedLine() + "fins_panel: not fulfilled within 2 s: 'Level>50' (45.2 %, good), 'DM:2=1' (0, "
                                         "good)\n");
}

// A value that was good before the link was lost is none.
TEST_F(PanelWaitTest, LastKnownValuesDoNotCount)
{
    start();
    ASSERT_EQ(tell("write DM:1 1"), "ok");
    const auto panel = wait({"DM:0=1", "DM:1=1", "--interval", "1", "--for", "2"});
    ASSERT_EQ(nextMessage(*panel) + "\n", connectedLine());
    awaitReads();
    ASSERT_EQ(tell("fault refuse"), "ok");
    EXPECT_EQ(tell("disconnect"), "ok 1");
    EXPECT_EQ(panel->wait(), 3);
    const Words lines = linesOf(panel->errors());
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "fins_panel: not fulfilled within 2 s: 'DM:0=1' (0, last known), 'DM:1=1' (1, last known)");
}

TEST_F(PanelWaitTest, WaitsForThePlc)
{
    start({"--fault", "refuse"});
    const auto panel = wait({"DM:0=0"});
    EXPECT_EQ(nextMessage(*panel), "no link to " + host() + ": Connection refused, retrying in 100 ms");
    ASSERT_EQ(tell("fault refuse off"), "ok");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 0\n");
}

TEST_F(PanelWaitTest, WithoutAPlcItsTimeEndsWith3)
{
    start({"--fault", "refuse"});
    expectNoLink(runPanel(arguments("wait", {"DM:0=0", "--for", "0.09"})),
                 "fins_panel: no answer from " + host() + ": " + nothingListens(port) + "; 'fins_panel link " + host()
                     + "' tells what to try\n");
}

TEST_F(PanelWaitTest, WhatThePlcRefusesIsNotWaitedFor)
{
    start({"--fault", "end-code=1103"});
    const PanelRun run = runPanel(arguments("wait", {"DM:4=0"}));
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, connectedLine() + "the PLC refuses to read DM:4: 1103 (the first address is out of range)\n"
                                         "fins_panel: not fulfilled: 'DM:4=0' (refused)\n");
}

TEST_F(PanelWaitTest, InterruptedItHasNotSucceeded)
{
    start();
    const auto panel = wait({"DM:0=1"});
    ASSERT_EQ(nextMessage(*panel) + "\n", connectedLine());
    EXPECT_EQ(interrupt(*panel), 3);
    EXPECT_EQ(panel->output(), "");
    EXPECT_EQ(panel->errors(), "fins_panel: interrupted\n");
}

TEST_F(PanelWaitTest, BadConditionsAreRefused)
{
    start();
    const std::string use = "is not a condition; use ITEM=VALUE, ITEM!=VALUE, or with >, >=, < or <=, such as 'Level>=50'";
    expectRefused(arguments("wait", {"DM:0"}), "fins_panel: 'DM:0' " + use);
    expectRefused(arguments("wait", {"DM:0!5"}), "fins_panel: 'DM:0!5' " + use);
    expectRefused(arguments("wait", {"DM:0=x"}),
                  "fins_panel: 'DM:0=x': 'x' is not a number; DM:0 is compared with one, such as 12 or 0.5");
    expectRefused(arguments("wait", {"DM:40000=1"}),
                  "fins_panel: 'DM:40000' lies outside the range 0 to 32767, written ddddd");
    expectRefused(arguments("wait", {}), "fins_panel: conditions is required; see fins_panel --help");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}
