#include "panel_table_run.h"

// A value edited in the live table: checked, asked for, written once, and claimed only when it was read back.

namespace {

const char DOWN[] = "\033[B";
const char ESC[]  = "\033";

const char PROJECT[] = "[tags]\n"
                       "SetPoint = { type = \"DM\", address = 3, scale = 0.1, decimals = 1, unit = \"%\", min = 0,"
                       " max = 100 }\n"
                       "Level    = { type = \"DM\", address = 4, access = \"r\" }\n"
                       "Speeds   = { type = \"DM\", address = 20, count = 3, data = \"s16\", max = 50 }\n";

class TableEditTest : public WatchTableTest {
protected:
    // The table of the project's tags, all of them good.
    std::unique_ptr<PtyProcess> projectTable(const Words &more = {})
    {
        Words all = {"--project", files_.put("plant.toml", PROJECT)};
        all.insert(all.end(), more.begin(), more.end());
        std::unique_ptr<PtyProcess> shown = table(all);
        shown->waitUntil([&] { return has(*shown, "SetPoint", "good") && has(*shown, "Speeds[2]", "good"); }, "good");
        return shown;
    }

    // Selects row `row`, from 1, and opens its edit.
    static void edit(PtyProcess &shown, int row, const std::string &line)
    {
        for (int i = 0; i < row; ++i)
            shown.type(DOWN);
        shown.type("\n");
        shown.waitForText(line + "_");
    }

    static void ask(PtyProcess &shown, const std::string &text, const std::string &question)
    {
        shown.type(text + "\n");
        shown.waitForText(question + "? y/n");
    }

    static std::string foot(const PtyProcess &shown) { return shown.screen.lines.back(); }

private:
    PanelFiles files_;
};

TEST_F(TableEditTest, DoneOnceItWasReadBack)
{
    start({"--trace"});
    EXPECT_EQ(tell("write DM:3 700"), "ok");
    const auto shown = projectTable();
    edit(*shown, 1, "SetPoint: 70.0 % -> ");
    shown->waitForText("a value from 0 to 100 %; Enter goes on, Esc leaves");
    ask(*shown, "75.5", "write SetPoint: 70.0 % -> 75.5 %");
    EXPECT_EQ(tell("read DM:3"), "ok 700") << "asked, not written";
    shown->type("y");
    shown->waitUntil([&] { return has(*shown, "SetPoint", "done"); }, "done");
    shown->waitUntil([&] { return has(*shown, "SetPoint", " 75.5") && has(*shown, "SetPoint", "good"); }, "75.5");
    shown->waitForText("done: SetPoint = 75.5 %");
    EXPECT_EQ(tell("read DM:3"), "ok 755");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
    EXPECT_NE(shown->screen.text().find("done: SetPoint = 75.5 %"), std::string::npos);
    std::size_t writes = 0;
    const std::map<int, Words> received = endAndCollect();
    for (const std::string &frame : received.at(1))
        writes += commandOf(frame).substr(0, 4) == "0102" ? 1 : 0;
    EXPECT_EQ(writes, 1u);
}

TEST_F(TableEditTest, ALimitIsHeldBeforeAnythingIsSent)
{
    start();
    EXPECT_EQ(tell("write DM:3 700"), "ok");
    const auto shown = projectTable();
    edit(*shown, 1, "SetPoint: 70.0 % -> ");
    shown->type("175\n");
    shown->waitForText("'SetPoint=175' is above the tag's max of 100 %; write a value from 0 to 100 %");
    shown->waitUntil([&] { return foot(*shown) == "SetPoint: 70.0 % -> 175_"; }, "the line, still open");
    shown->type("x");
    shown->waitForText("'SetPoint=175x'");
    shown->type(ESC);
    shown->waitForText("nothing was written: the edit was left");
    EXPECT_EQ(tell("read DM:3"), "ok 700");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
}

TEST_F(TableEditTest, ANoWritesNothing)
{
    start();
    const auto shown = projectTable();
    edit(*shown, 1, "SetPoint: 0.0 % -> ");
    ask(*shown, "5", "write SetPoint: 0.0 % -> 5.0 %");
    shown->type("n");
    shown->waitForText("nothing was written: not confirmed");
    EXPECT_EQ(tell("read DM:3"), "ok 0");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
}

TEST_F(TableEditTest, AReadOnlyTagIsNotEdited)
{
    start();
    const auto shown = projectTable();
    shown->type(std::string(DOWN) + DOWN + "\n");
    shown->waitForText("Level can only be read: the access of the tag is r");
    EXPECT_EQ(foot(*shown), "Level can only be read: the access of the tag is r");
}

// The limit is that of the tag, and its neighbours stay as they are.
TEST_F(TableEditTest, OneValueOfSeveral)
{
    start();
    EXPECT_EQ(tell("write DM:20 11 12 13"), "ok");
    const auto shown = projectTable();
    edit(*shown, 4, "Speeds[1]: 12 -> ");
    shown->type("51");
    shown->waitForText("'Speeds[1]=51' is above the tag's max of 50; write 50 or less");
    shown->type("\177\177");
    ask(*shown, "-7", "write Speeds[1]: 12 -> -7");
    shown->type("y");
    shown->waitForText("done: Speeds[1] = -7");
    EXPECT_EQ(tell("read DM:20:3"), "ok 11 65529 13");
}

TEST_F(TableEditTest, AnItemWithItsDataType)
{
    start();
    const auto shown = table({"DM:100/f32", "D7/INT"});
    shown->waitUntil([&] { return has(*shown, "D7/INT", "good"); }, "good");
    edit(*shown, 2, "D7/INT: 0 -> ");
    shown->waitForText("INT; Enter goes on");
    shown->type("40000");
    shown->waitForText("'D7=40000' does not fit");
    shown->type("\177");
    ask(*shown, "", "write D7/INT: 0 -> 4000");
    shown->type("y");
    shown->waitForText("done: D7/INT = 4000");
    EXPECT_EQ(tell("read DM:7"), "ok 4000");
    shown->type("\033[A\n"); // the other one
    shown->waitForText("DM:100/f32: 0 -> _");
    EXPECT_FALSE(has(*shown, "DM:100/f32", "done")) << shown->screen.text();
    ask(*shown, "1.5", "write DM:100/f32: 0 -> 1.5");
    shown->type("y");
    shown->waitForText("done: DM:100/f32 = 1.5");
    EXPECT_EQ(tell("read DM:100:2"), "ok 0 16320");
}

TEST_F(TableEditTest, RefusedByThePlc)
{
    start({"--mode", "program", "--refuse-writes-in-program"});
    const auto shown = projectTable();
    edit(*shown, 1, "SetPoint: 0.0 % -> ");
    ask(*shown, "5", "write SetPoint: 0.0 % -> 5.0 %");
    shown->type("y");
    shown->waitUntil([&] { return has(*shown, "SetPoint", "  refused"); }, "refused");
    shown->waitForText("refused: SetPoint: 2203 (wrong operating mode: the PLC is in PROGRAM mode)");
    shown->waitUntil([&] { return has(*shown, "SetPoint", "good"); }, "good");
    EXPECT_EQ(tell("mode"), "ok program");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 1);
    expectClean(*shown);
}

TEST_F(TableEditTest, WithConsentThePlcIsSwitched)
{
    start({"--mode", "program", "--refuse-writes-in-program"});
    const auto shown = projectTable({"--allow-mode-change"});
    edit(*shown, 1, "SetPoint: 0.0 % -> ");
    ask(*shown, "5", "write SetPoint: 0.0 % -> 5.0 %");
    shown->type("y");
    shown->waitForText("done: SetPoint = 5.0 %");
    EXPECT_EQ(tell("mode"), "ok monitor");
}

// The next edit can be made after one that is settled, and not before.
TEST_F(TableEditTest, OneAfterTheOther)
{
    start();
    const auto shown = projectTable();
    for (const char *value : {"5", "6"}) {
        shown->type(std::string("\033[H") + DOWN + "\033[H\n");
        shown->waitForText(" % -> _");
        shown->type(std::string(value) + "\n");
        shown->waitForText(std::string(" -> ") + value + ".0 %? y/n");
        shown->type("y");
        shown->waitForText(std::string("done: SetPoint = ") + value + ".0 %");
    }
    EXPECT_EQ(tell("read DM:3"), "ok 60");
}

// ---- Against a PLC that the test plays ---------------------------------------------------------------------------

class PlayedEditTest : public ::testing::Test {
protected:
    // A table of DM:7, which is 3, with its edit at the question whether it is to become 5. The PLC owes a reply to a
    // read.
    void askFor5(const Words &more = {})
    {
        Words all = {FINS_PANEL_PATH, "watch", plc.host(), "DM:7", "--timeout", "20000"};
        all.insert(all.end(), more.begin(), more.end());
        shown = std::make_unique<PtyProcess>(all, static_cast<unsigned short>(80), static_cast<unsigned short>(24));
        link  = plc.accept();
        link->exchangeNodes();
        answerRead("0003");
        answerRead("0003");
        EXPECT_EQ(link->command(), READ);
        shown->waitForText("good");
        shown->type(std::string(DOWN) + "\n");
        shown->waitForText("DM:7: 3 -> _");
        shown->type("5\n");
        shown->waitForText("write DM:7: 3 -> 5? y/n");
    }

    void answerRead(const std::string &value)
    {
        EXPECT_EQ(link->command(), READ);
        link->answer("0101 0000 " + value);
    }

    void acceptAgain()
    {
        link.reset();
        link = plc.accept();
        link->exchangeNodes();
    }

    bool rowHas(const std::string &text) const { return shown->screen.lines.at(2).find(text) != std::string::npos; }

    const std::string READ  = plainHex("0101 82 0007 00 0001");
    const std::string WRITE = plainHex("0102 82 0007 00 0001 0005");
    PlayedPlc plc;
    std::unique_ptr<PtyProcess> shown;
    std::unique_ptr<PlayedLink> link;
};

// The write waits for the reply that is due, and must not go out on the next connection.
TEST_F(PlayedEditTest, ALinkLostBeforeItWasSentMeansNotSent)
{
    askFor5();
    shown->type("y");
    shown->waitUntil([&] { return rowHas("writing"); }, "writing");
    acceptAgain();
    answerRead("0003");
    answerRead("0003");
    shown->waitUntil([&] { return rowHas("not sent") && rowHas("good"); }, "not sent");
    shown->waitForText("not sent: DM:7: the link was lost before");
    answerRead("0003");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 3);
}

TEST_F(PlayedEditTest, ALinkLostBeforeTheAnswerWritesNothing)
{
    askFor5();
    link.reset();
    shown->waitForText("the PLC does not answer; a value can be edited while the link is up");
    shown->type("y");
    shown->waitForText("nothing was written: the PLC does not answer");
    link = plc.accept();
    link->exchangeNodes();
    answerRead("0003");
    answerRead("0003");
    shown->waitUntil([&] { return rowHas("good"); }, "good");
    EXPECT_FALSE(rowHas("not sent") || rowHas("writing"));
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
}

// Nothing is claimed while no reply has come, and it is not sent a second time.
TEST_F(PlayedEditTest, AReplyThatNeverComesIsReadBackOnTheNextLink)
{
    askFor5();
    shown->type("y");
    shown->waitUntil([&] { return rowHas("writing"); }, "writing");
    link->answer("0101 0000 0003");
    EXPECT_EQ(link->command(), WRITE);
    shown->waitUntil([&] { return rowHas("write pending"); }, "write pending");
    acceptAgain();
    answerRead("0003");
    shown->waitUntil([&] { return rowHas("unconfirmed"); }, "unconfirmed");
    shown->waitForText("unconfirmed: DM:7: the PLC holds 3 so far; the write may still arrive");
    answerRead("0003");
    answerRead("0003");
    answerRead("0003");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 3);
}

TEST_F(PlayedEditTest, AWriteThatArrivedWithoutAReplyIsDone)
{
    askFor5();
    shown->type("y");
    shown->waitUntil([&] { return rowHas("writing"); }, "writing");
    link->answer("0101 0000 0003");
    EXPECT_EQ(link->command(), WRITE);
    acceptAgain();
    answerRead("0005");
    shown->waitForText("done: DM:7 = 5");
    shown->waitUntil([&] { return rowHas("done"); }, "done");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
}

TEST_F(PlayedEditTest, LeavingWithTheWriteInFlightReportsIt)
{
    askFor5();
    shown->type("y");
    shown->waitUntil([&] { return rowHas("writing"); }, "writing");
    link->answer("0101 0000 0003");
    EXPECT_EQ(link->command(), WRITE);
    shown->type("q");
    EXPECT_EQ(shown->wait(), 3);
    EXPECT_FALSE(shown->screen.isAlternate);
    EXPECT_NE(shown->screen.text().find("unconfirmed: DM:7: no reply to the write, and it was not read back"),
              std::string::npos)
        << shown->screen.text();
}

} // namespace
