#include "panel_run.h"

// `bench`: the table and the advice; how long anything takes is not looked at.

namespace {

class BenchTest : public PanelTest {};

TEST_F(BenchTest, ALineForEverySize)
{
    start();
    const PanelRun ended = run("bench", {"--words", "100", "--sizes", "10,50,100", "--for", "0.01"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    const Words lines = linesOf(ended.out);
    ASSERT_EQ(lines.size(), 6u) << ended.out;
    EXPECT_EQ(lines[0], "polling 100 words in 1 item; refresh time in ms");
    EXPECT_EQ(lines[1], "WORDS/FRAME    MEDIAN     95 %      MAX  REQUESTS/S     WORDS/S");
    EXPECT_EQ(lines[2].substr(0, 12), "         10 ");
    EXPECT_EQ(lines[3].substr(0, 12), "         50 ");
    EXPECT_EQ(lines[4].substr(0, 12), "        100 ");
    EXPECT_EQ(lines[5].find("choose "), 0u);
}

TEST_F(BenchTest, PollsInBlocksOfTheSize)
{
    start({"--trace"});
    EXPECT_EQ(run("bench", {"--words", "25", "--sizes", "10", "--for", "0.01"}).code, 0);
    bool whole = false;
    bool rest  = false;
    for (const auto &[connection, frames] : endAndCollect()) {
        for (const std::string &frame : frames) {
            whole = whole || commandOf(frame) == plainHex("0101 82 0000 00 000A");
            rest  = rest || commandOf(frame) == plainHex("0101 82 0014 00 0005");
        }
    }
    EXPECT_TRUE(whole);
    EXPECT_TRUE(rest);
}

TEST_F(BenchTest, OfGivenItems)
{
    start();
    const PanelRun ended = run("bench", {"DM:0:4", "CIO_bit:3.0:17", "--sizes", "16", "--for", "0.01"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(linesOf(ended.out).at(0), "polling 6 words in 2 items; refresh time in ms");
}

TEST_F(BenchTest, RefusedSizes)
{
    start({"--fault", "end-code=110B"});
    const PanelRun ended = run("bench", {"--words", "10", "--sizes", "10", "--for", "0.01"});
    EXPECT_EQ(ended.code, 1);
    const Words lines = linesOf(ended.out);
    ASSERT_EQ(lines.size(), 4u) << ended.out;
    EXPECT_EQ(lines[2], "         10  refused: 110B (the response is too long)");
    EXPECT_EQ(lines[3], "the PLC refuses every block size");
}

TEST_F(BenchTest, NoPlc)
{
    const HeldPort closed;
    const PanelRun ended = runPanel({"bench", closed.host(), "--give-up", "0.1"});
    EXPECT_EQ(ended.code, 3);
}

TEST_F(BenchTest, SizesOutOfRange)
{
    EXPECT_EQ(runPanel({"bench", "127.0.0.1:1", "--sizes", "0"}).code, 2);
    EXPECT_EQ(runPanel({"bench", "127.0.0.1:1", "--sizes", "1000"}).code, 2);
    EXPECT_EQ(runPanel({"bench", "127.0.0.1:1", "--words", "0"}).code, 2);
}

} // namespace
