#include "panel_files.h"
#include "pty_process.h"

#include <algorithm>
#include <tuple>

// The question before a write, and the reports of a live table.

class PanelConfirm : public PanelTest {
protected:
    std::unique_ptr<PtyProcess> onTerminal(const std::string &command, const Words &more)
    {
        Words all = arguments(command, more);
        all.insert(all.begin(), FINS_PANEL_PATH);
        return std::make_unique<PtyProcess>(all, 120, 24);
    }

    bool shows(const PtyProcess &shown, const std::string &line) const
    {
        const Words &lines = shown.screen.lines;
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }
};

TEST_F(PanelConfirm, ShowsOldAndNewValuesAndWritesAfterAYes)
{
    start();
    ASSERT_EQ(tell("write DM:3 500"), "ok");
    const auto shown = onTerminal("write", {"DM:3=700", "HR:10=7", "--confirm"});
    shown->waitForText("write these values? [y/N] ");
    EXPECT_TRUE(shows(*shown, "item   PLC  new  unit")) << shown->screen.text();
    EXPECT_TRUE(shows(*shown, "DM:3   500  700")) << shown->screen.text();
    EXPECT_TRUE(shows(*shown, "HR:10    0    7")) << shown->screen.text();
    EXPECT_EQ(tell("read DM:3"), "ok 500");
    shown->type("y\n");
    EXPECT_EQ(shown->wait(), 0);
    EXPECT_EQ(tell("read DM:3"), "ok 700");
    EXPECT_EQ(tell("read HR:10"), "ok 7");
}

TEST_F(PanelConfirm, WritesNothingAfterAnythingElse)
{
    start({"--trace"});
    for (const char *answer : {"n\n", "\n", "yy\n", "\004"}) {
        const auto shown = onTerminal("write", {"DM:3=700", "--confirm"});
        shown->waitForText("write these values? [y/N] ");
        shown->type(answer);
        EXPECT_EQ(shown->wait(), 3) << answer;
        EXPECT_NE(shown->screen.text().find("not sent: DM:3: not confirmed\n"), std::string::npos)
            << shown->screen.text();
    }
    EXPECT_EQ(tell("read DM:3"), "ok 0");
    for (const auto &[connection, frames] : endAndCollect()) {
        for (const std::string &frame : frames)
            EXPECT_NE(commandOf(frame).substr(0, 4), "0102");
    }
}

TEST_F(PanelConfirm, AsksBeforeARecipe)
{
    start();
    ASSERT_EQ(tell("write DM:0 1 2"), "ok");
    const PanelFiles files;
    const auto shown = onTerminal("recipe write", {files.put("recipe.txt", "DM:0:2 = 1 3\n"), "--confirm"});
    shown->waitForText("write these values? [y/N] ");
    EXPECT_TRUE(shows(*shown, "DM:0:2  1 2  1 3")) << shown->screen.text();
    EXPECT_EQ(tell("read DM:0:2"), "ok 1 2");
    shown->type("yes\n");
    EXPECT_EQ(shown->wait(), 0);
    EXPECT_EQ(tell("read DM:0:2"), "ok 1 3");
}

TEST_F(PanelConfirm, AsksBeforeTheModeIsChanged)
{
    start({"--mode", "program"});
    for (const auto &[answer, code, mode] : {std::tuple("n\n", 3, "ok program"), std::tuple("y\n", 0, "ok run")}) {
        const auto shown = onTerminal("plc mode", {"run"});
        shown->waitForText("change the PLC from PROGRAM to RUN mode, in which its program runs and its outputs are live? "
                           "[y/N] ");
        EXPECT_EQ(tell("mode"), "ok program");
        shown->type(answer);
        EXPECT_EQ(shown->wait(), code);
        EXPECT_EQ(tell("mode"), mode);
    }
}

TEST_F(PanelConfirm, RefusesWithoutATerminal)
{
    start();
    expectRefused(arguments("write", {"DM:3=700", "--confirm"}),
                  "fins_panel: --confirm asks on a terminal, and there is none; run the command on one, or leave it out");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

// What the table has shown is on standard error, too, when the terminal is back.
TEST_F(PanelConfirm, ATableLeavesItsReportsBehind)
{
    start({"--refuse-writes-in-run=2101"});
    const auto shown = onTerminal("watch", {"DM:0", "--write", "DM:9=5"});
    shown->waitForText("refused: DM:9: 2101 (read-only: the area cannot be written)");
    EXPECT_TRUE(shown->screen.isAlternate);
    shown->type("q");
    EXPECT_EQ(shown->wait(), 1);
    EXPECT_FALSE(shown->screen.isAlternate);
    EXPECT_TRUE(shows(*shown, "refused: DM:9: 2101 (read-only: the area cannot be written)")) << shown->screen.text();
}

// The PLC never answers the write; q ends the wait.
TEST_F(PanelConfirm, ATableReportsWhatIsOpenWhenItIsQuit)
{
    PlayedPlc played;
    const Words all = {FINS_PANEL_PATH, "watch", played.host(), "DM:0", "--write", "DM:0=5",
                                       "--write", "DM:1=6", "--timeout", "60000"};
    PtyProcess shown(all, 120, 24);
    const auto link = played.accept();
    link->exchangeNodes();
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
    link->answer("0101 0000 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    shown.type("q");
    EXPECT_EQ(shown.wait(), 3);
    EXPECT_TRUE(shows(shown, "unconfirmed: DM:0: no reply to the write, and it was not read back"))
        << shown.screen.text();
    EXPECT_TRUE(shows(shown, "not sent: DM:1: interrupted")) << shown.screen.text();
}
