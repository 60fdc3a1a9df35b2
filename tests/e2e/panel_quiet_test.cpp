#include "panel_run.h"

// `--quiet`: what is said of the link's course is left out, and nothing else.

class PanelQuietTest : public PanelTest {};

TEST_F(PanelQuietTest, SaysNothingOfALinkThatIsMade)
{
    start();
    for (const char *option : {"-q", "--quiet"}) {
        const PanelRun read = run("read", {"DM:0", option});
        EXPECT_EQ(read.code, 0);
        EXPECT_EQ(read.out, "DM:0 = 0\n");
        EXPECT_EQ(read.err, "");
    }
}

TEST_F(PanelQuietTest, SaysNothingOfALinkThatIsLostAndBack)
{
    start();
    const auto panel = watch({"DM:0", "-q", "--changes", "1", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "DM:0 - 0");
    ASSERT_EQ(tell("disconnect"), "ok 1");
    ASSERT_EQ(tell("write DM:0 7"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 0 7");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->errors(), "");
}

TEST_F(PanelQuietTest, RefusalsAreErrors)
{
    start({"--fault", "end-code=1103"});
    EXPECT_EQ(run("read", {"DM:4:2", "-q"}).err,
              "the PLC refuses to read DM:4:2: 1103 (the first address is out of range)\n");
}

TEST_F(PanelQuietTest, WhatBecameOfAWriteIsSaid)
{
    start({"--fault", "refuse"});
    const PanelRun written = run("write", {"DM:0=1", "-q", "--give-up", "0.1"});
    EXPECT_EQ(written.code, 3);
    EXPECT_EQ(written.err, "not sent: DM:0: no answer in time\n" + noAnswer(100));
}

// Without the messages nobody else would tell why nothing was shown.
TEST_F(PanelQuietTest, AWatchWithoutALinkSaysSoAtItsEnd)
{
    start({"--fault", "refuse"});
    const PanelRun ended = run("watch", {"DM:0", "-q", "--for", "0.09"});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(ended.err, "fins_panel: no answer from " + host() + ": " + nothingListens(port) + "; 'fins_panel link "
                             + host() + "' tells what to try\n");
}
