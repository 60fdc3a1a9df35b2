#include "panel_files.h"

// Commands that are done once, and a PLC to which there is no way.

class PanelUnreachableTest : public PanelTest {
protected:
    void SetUp() override { start({"--fault", "refuse"}); }

    std::string nothingThere() const
    {
        return "fins_panel: " + nothingListens(port) + "; 'fins_panel link " + host() +
               "' tells what to try, --give-up SECONDS keeps trying\n";
    }
};

// A definite reason needs no second attempt, which would have a line of its own.
TEST_F(PanelUnreachableTest, IsSaidAtOnce)
{
    const PanelFiles files;
    const std::string recipe = files.put("r.txt", "DM:100 = 1\n");
    for (const Words &command : {Words{"read", "DM:0"}, Words{"recipe read", recipe}, Words{"recipe compare", recipe}}) {
        const PanelRun ended = run(command[0], {command[1]});
        EXPECT_EQ(ended.code, 3);
        EXPECT_EQ(ended.out, "");
        EXPECT_EQ(ended.err, nothingThere());
    }
    EXPECT_EQ(run("bench", {}).err, nothingThere());
}

TEST_F(PanelUnreachableTest, WritesAreCalledNotDone)
{
    const PanelRun ended = run("write", {"DM:0=1"});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "not sent: DM:0: there is no PLC to connect to\n" + nothingThere());
}

TEST_F(PanelUnreachableTest, IsTriedAgainForAsLongAsTheUserWants)
{
    expectNoLink(run("read", {"DM:0", "--give-up", "0.15"}), noAnswer(150));
}

TEST(PanelUnreachable, NameThatNobodyHas)
{
    const PanelRun run = runPanel({"read", "no..such..host", "DM:0"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(linesOf(run.err).size(), 1u) << run.err;
    EXPECT_EQ(run.err.find("fins_panel: there is no host named 'no..such..host': "), 0u) << run.err;
}

// Once the PLC has answered, a refused connection is one that may come back.
TEST(PanelUnreachable, IsNotSaidOfALinkThatWasUp)
{
    PlayedPlc plc;
    const auto panel = startPanel({"write", plc.host(), "DM:0=5"});
    std::unique_ptr<PlayedLink> link = plc.accept();
    link->exchangeNodes();
    link->command();
    link->answer("0101 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    plc.stopListening();
    link = nullptr;
    EXPECT_EQ(panel->waitForErrorLine("no link to "),
              "no link to " + plc.host() + ": Connection refused, retrying in 200 ms");
    EXPECT_EQ(interrupt(*panel), 3);
}
