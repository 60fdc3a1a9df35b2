#include "panel_table_run.h"

#include <algorithm>
#include <cctype>

// `watch` on a terminal, and its lines for other programs.

namespace {

const char KEYS_LINE[] = "q quit  / filter  s sort  p pause  r new min, max  Enter edit";

TEST_F(WatchTableTest, ShowsValuesAndEndsCleanWithQ)
{
    start();
    EXPECT_EQ(tell("write DM:7 4711"), "ok");
    const auto shown = table({"DM:7", "CIO_bit:0.3"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good") && has(*shown, "CIO_bit:0.3", "good"); }, "good");
    EXPECT_TRUE(shown->screen.isAlternate);
    EXPECT_FALSE(shown->screen.isCursorShown);
    EXPECT_TRUE(shown->screen.hasColour);
    EXPECT_EQ(shown->screen.lines.at(0).find(" " + host() + "  online  cycle "), 0u) << shown->screen.text();
    EXPECT_TRUE(has(*shown, "DM:7", " 4711 "));
    EXPECT_EQ(shown->screen.lines.at(23), KEYS_LINE);
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

TEST_F(WatchTableTest, EndsCleanWithAKeyOrASignal)
{
    start();
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const auto shown = table({"DM:7"});
        shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
        shown->sendSignal(number);
        EXPECT_EQ(shown->wait(), 0) << number;
        expectClean(*shown);
    }
    const auto shown = table({"DM:7"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    shown->type("\003");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

TEST_F(WatchTableTest, EndsCleanWithAFatalSignal)
{
    start();
    for (const int number : {SIGQUIT, SIGSEGV, SIGABRT}) {
        const auto shown = table({"DM:7"});
        shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
        shown->sendSignal(number);
        EXPECT_NE(shown->wait(), 0) << number;
        expectClean(*shown);
    }
}

TEST_F(WatchTableTest, MarksAChange)
{
    start();
    const auto shown = table({"DM:7", "DM:9"});
    shown->waitUntil([&] { return has(*shown, "DM:7", " 0 "); }, "the first value");
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    shown->waitUntil([&] { return has(*shown, "DM:7", " 12*"); }, "12*");
    shown->waitUntil([&] { return has(*shown, "DM:7", " 12 "); }, "12 without its mark");
    EXPECT_TRUE(has(*shown, "DM:9", " 0 "));
}

TEST_F(WatchTableTest, QualityFollowsTheLink)
{
    start();
    EXPECT_EQ(tell("write DM:7 4711"), "ok");
    const auto shown = table({"DM:7", "--timeout", "300"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    EXPECT_EQ(tell("fault silence"), "ok");
    shown->waitUntil([&] { return has(*shown, "DM:7", "last known"); }, "last known");
    EXPECT_TRUE(has(*shown, "DM:7", " 4711 "));
    shown->waitForText("no link, retry in ");
    shown->waitForText("lost: ");
    EXPECT_TRUE(has(*shown, "DM:7", " 4711 "));
    EXPECT_EQ(tell("fault silence off"), "ok");
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good again");
    EXPECT_TRUE(has(*shown, "DM:7", " 4711 "));
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

TEST_F(WatchTableTest, AClosedConnectionIsSeenInALongPause)
{
    start();
    const auto shown = table({"DM:7", "--interval", "60000"});
    shown->waitForText("connected to ");
    EXPECT_EQ(tell("fault refuse"), "ok");
    EXPECT_EQ(tell("disconnect"), "ok 1");
    shown->waitForText("no link");
    EXPECT_TRUE(has(*shown, "DM:7", "not connected"));
}

TEST_F(WatchTableTest, WithoutAPlc)
{
    const HeldPort closed;
    PtyProcess shown({FINS_PANEL_PATH, "watch", closed.host(), "DM:7"}, 80, 24);
    shown.waitUntil([&] { return has(shown, "DM:7", "not connected"); }, "not connected");
    shown.waitForText("no link to " + closed.host());
    shown.type("q");
    EXPECT_EQ(shown.wait(), 0);
    expectClean(shown);
}

TEST_F(WatchTableTest, APendingWriteIsShown)
{
    PlayedPlc played;
    PtyProcess shown({FINS_PANEL_PATH, "watch", played.host(), "DM:7", "--write", "DM:7=5", "--timeout", "20000"},
                     80, 24);
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    EXPECT_EQ(link->command(), plainHex("0101 82 0007 00 0001"));
    link->answer("0101 0000 0003");
    EXPECT_EQ(link->command(), plainHex("0102 82 0007 00 0001 0005"));
    shown.waitUntil([&] { return has(shown, "DM:7", "write pending"); }, "write pending");
    EXPECT_TRUE(has(shown, "DM:7", " 3"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0007 00 0001"));
    link->answer("0101 0000 0005");
    shown.waitUntil([&] { return has(shown, "DM:7", "good"); }, "good");
    EXPECT_TRUE(has(shown, "DM:7", " 5"));
    shown.sendSignal(SIGTERM);
    EXPECT_EQ(shown.wait(), 0);
}

TEST_F(WatchTableTest, RefusedValues)
{
    start({"--fault", "end-code=1104"});
    const auto shown = table({"DM:7"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "refused"); }, "refused");
    shown->waitForText("  online  "); // the PLC answers
}

// The first block of the cycle is left out, so that the cycle begins with another one.
TEST_F(WatchTableTest, CycleOfTheBlocksThatCanBeRead)
{
    start({"--profile", "small"});
    const auto shown = table({"DM:5000", "HR:0"});
    shown->waitUntil([&] { return has(*shown, "DM:5000", "refused") && has(*shown, "HR:0", "good"); }, "refused");
    shown->waitUntil([&] {
        const std::string &head = shown->screen.lines.at(0);
        const std::string::size_type at = head.find("cycle ");
        return at != std::string::npos && std::isdigit(static_cast<unsigned char>(head[at + 6])) != 0;
    }, "a cycle");
}

TEST_F(WatchTableTest, FollowsTheSize)
{
    start();
    const auto shown = table({"DM:0:30"});
    shown->waitForText("q quit  1-18 of 30  / filter");
    shown->resize(200, 50);
    shown->waitUntil([&] { return shown->screen.lines.at(49) == KEYS_LINE; }, "a higher table");
    EXPECT_EQ(shown->screen.lines.at(31).find("DM:29 "), 0u) << shown->screen.text();
    EXPECT_GT(shown->screen.lines.at(0).size(), 190u);
    shown->resize(60, 10);
    shown->waitForText("1-6 of 30");
}

TEST_F(WatchTableTest, Scrolls)
{
    start();
    const auto shown = table({"DM:0:30"});
    shown->waitForText("1-18 of 30");
    shown->type("\033[6~");
    shown->waitForText("13-30 of 30");
    shown->type("\033[5~");
    shown->waitForText("1-18 of 30");
    shown->type("\033[F");
    shown->waitForText("13-30 of 30");
    shown->type("\033[H");
    shown->waitForText("1-18 of 30");
    shown->type("\033[B\033[6~"); // with the row at the top selected
    shown->waitForText("2-19 of 30");
    shown->type("\033[F");
    shown->waitForText("13-30 of 30");
    shown->type("\033[5~k");
    shown->waitForText("11-28 of 30");
}

TEST_F(WatchTableTest, AHigherScreenShowsTheFirstRowsAgain)
{
    start();
    const auto shown = table({"DM:0:30"});
    shown->type("\033[F");
    shown->waitForText("13-30 of 30");
    shown->resize(80, 36);
    shown->waitUntil([&] { return shown->screen.lines.at(35) == KEYS_LINE; }, "all rows");
    EXPECT_EQ(shown->screen.lines.at(2).find("DM:0 "), 0u) << shown->screen.text();
    EXPECT_EQ(shown->screen.lines.at(31).find("DM:29 "), 0u) << shown->screen.text();
}

// The screen is cleared at the end, so that what stands there then was said behind it.
TEST_F(WatchTableTest, ARefusalIsShownWithItsHintAndSaidAtTheEnd)
{
    start({"--profile", "small"});
    const auto shown = table({"HR:0", "DM:5000"});
    const std::string refusal = "the PLC refuses to read DM:5000: 1103 (the first address is out of range)";
    const std::string hint = "hint: this PLC has less memory than the largest one; compare the address with its manual";
    shown->waitUntil([&] { return has(*shown, "DM:5000", "refused"); }, "refused");
    shown->waitUntil([&] { return shown->screen.lines.at(22) == hint.substr(0, 79) + "~"; }, "the hint, cut short");
    EXPECT_EQ(shown->screen.lines.at(21), refusal);
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
    const Words lines = linesOf(shown->screen.text());
    const auto at = std::find(lines.begin(), lines.end(), refusal);
    ASSERT_TRUE(at != lines.end() && at + 1 != lines.end()) << shown->screen.text();
    EXPECT_EQ(*(at + 1), hint);
}

// Ctrl-S holds the terminal, and Ctrl-Q lets it go on.
TEST_F(WatchTableTest, AHeldTerminalDoesNotHoldThePoll)
{
    start();
    const auto shown = table({"DM:7", "--interval", "20"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    shown->type("\023");
    shown->resize(100, 30); // all has to be drawn again
    ASSERT_NO_FATAL_FAILURE(waitForRequests(100));
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    shown->type("\021");
    shown->waitUntil([&] { return has(*shown, "DM:7", " 12"); }, "12");
    shown->waitUntil([&] { return shown->screen.lines.at(29) == KEYS_LINE; }, "q quit");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

// Screens are left out while nobody reads what was sent, and the terminal is given back all the same.
TEST_F(WatchTableTest, AnUnreadTerminalDoesNotHoldThePoll)
{
    start({"--plant", "tank", "--plant-period", "10"});
    const auto shown = table({"DM:0:120", "--interval", "20"}, 250, 130);
    shown->waitUntil([&] { return has(*shown, "DM:0", "good"); }, "good");
    for (int i = 0; i < 10; ++i) {
        const long requests = answered();
        shown->resize(250, static_cast<unsigned short>(130 + i % 2)); // some 6 KB for each
        ASSERT_NO_FATAL_FAILURE(waitForRequests(requests + 20));
    }
    shown->waitForText("q quit");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

// However many screens the way to the terminal would hold, one is on its way.
TEST_F(WatchTableTest, TheNextScreenWaitsForTheOneBefore)
{
    start();
    const auto shown = table({"DM:7", "--interval", "20"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    shown->answers = false;
    shown->waitUntil([&] { return shown->screen.questions == 1; }, "a question");
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    const long later = answered() + 100;
    shown->waitUntil([&] { return answered() >= later; }, "more requests");
    EXPECT_EQ(shown->screen.questions, 1u);
    EXPECT_TRUE(has(*shown, "DM:7", " 0 ")) << shown->screen.text();
    shown->answers = true;
    shown->waitUntil([&] { return has(*shown, "DM:7", " 12"); }, "12");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

TEST_F(WatchTableTest, ATerminalThatDoesNotAnswerIsDrawnToo)
{
    start();
    const auto shown = table({"DM:7"});
    shown->answers = false;
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    shown->waitUntil([&] { return has(*shown, "DM:7", " 12"); }, "12");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

// Nobody could resume it: its parent, this test, is of another session.
TEST_F(WatchTableTest, CtrlZOfAnOrphanDoesNotStopIt)
{
    start();
    const auto shown = table({"DM:7"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    shown->type("\032");
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    shown->waitUntil([&] { return shown->screen.isAlternate && has(*shown, "DM:7", " 12"); }, "12");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

TEST_F(WatchTableTest, CtrlZStopsItUntilTheShellResumesIt)
{
    start();
    PtyProcess shown({"/bin/bash", "-m", "-c", std::string(FINS_PANEL_PATH) + " watch " + host() + " DM:7\n"
                                                   "echo it is stopped\nread -r line\nfg\necho it ended with $?\n"},
                     80, 24);
    shown.waitUntil([&] { return has(shown, "DM:7", "good"); }, "good");
    shown.type("\032");
    shown.waitForText("it is stopped");
    EXPECT_FALSE(shown.screen.isAlternate);
    EXPECT_TRUE(shown.screen.isCursorShown);
    EXPECT_TRUE(shown.hasKeysAsBefore());
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    shown.type("go on\n");
    shown.waitUntil([&] { return shown.screen.isAlternate && has(shown, "DM:7", " 12"); }, "12");
    shown.type("q");
    shown.waitForText("it ended with 0");
    EXPECT_EQ(shown.wait(), 0);
    expectClean(shown);
}

TEST_F(WatchTableTest, ASignalThatIsIgnoredStaysSo)
{
    start();
    PtyProcess shown({"/bin/bash", "-c", "trap '' INT TSTP QUIT; exec " + std::string(FINS_PANEL_PATH) + " watch "
                                             + host() + " DM:7"},
                     80, 24);
    shown.waitUntil([&] { return has(shown, "DM:7", "good"); }, "good");
    for (const int number : {SIGINT, SIGTSTP, SIGQUIT})
        shown.sendSignal(number);
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    shown.waitUntil([&] { return has(shown, "DM:7", " 12"); }, "12");
    EXPECT_TRUE(shown.screen.isAlternate);
    shown.type("q");
    EXPECT_EQ(shown.wait(), 0);
    expectClean(shown);
}

TEST_F(WatchTableTest, WideNamesAnd40Columns)
{
    start();
    const PanelFiles files;
    const std::string project = files.put("plant.toml", "[tags]\n\"水位水位水\" = { type = \"DM\", address = 7 }\n");
    const auto shown = table({"水位水位水", "DM:9", "--project", project}, 40, 10, {{"NO_COLOR", "1"}});
    shown->waitForText("good");
    EXPECT_EQ(shown->screen.lines.at(1), "TAG          VALUE  QUALITY");
    EXPECT_EQ(shown->screen.lines.at(2), "水位水位水       0  good");
    EXPECT_EQ(shown->screen.lines.at(3), "DM:9             0  good");
}

TEST_F(WatchTableTest, NoColourIfNotWanted)
{
    start();
    const auto shown = table({"DM:7"}, 80, 24, {{"NO_COLOR", "1"}});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    EXPECT_FALSE(shown->screen.hasColour);
}

TEST_F(WatchTableTest, AsciiWhereTheTerminalHasNoUtf8)
{
    start();
    const auto shown = table({"DM:7"}, 80, 24, {{"LANG", "C"}});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good           _"); }, "an ASCII course");
}

TEST_F(WatchTableTest, LinesOnATerminal)
{
    start();
    const auto lines = table({"DM:7", "--lines", "--for", "0.3"});
    EXPECT_EQ(lines->wait(), 0);
    const auto dumb = table({"DM:7", "--for", "0.3"}, 80, 24, {{"TERM", "dumb"}});
    EXPECT_EQ(dumb->wait(), 0);
    for (const auto *shown : {lines.get(), dumb.get()}) {
        EXPECT_FALSE(shown->screen.isAlternate);
        EXPECT_NE(shown->screen.text().find(" DM:7 - 0"), std::string::npos) << shown->screen.text();
    }
}

TEST_F(WatchTableTest, JsonLines)
{
    start();
    const auto panel = watch({"DM:7", "--json", "--changes", "1"});
    const std::string first = panel->readLine();
    EXPECT_EQ(first.substr(35), "\"tag\":\"DM:7\",\"item\":\"DM:7\",\"event\":\"first\",\"old\":null,\"value\":0,"
                                "\"unit\":\"\",\"quality\":\"good\"}") << first;
    EXPECT_EQ(first.substr(0, 11), "{\"time\":\"20");
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    EXPECT_EQ(panel->readLine().substr(35), "\"tag\":\"DM:7\",\"item\":\"DM:7\",\"event\":\"change\",\"old\":0,"
                                            "\"value\":12,\"unit\":\"\",\"quality\":\"good\"}");
    EXPECT_EQ(panel->wait(), 0);
}

TEST_F(WatchTableTest, CsvLines)
{
    start();
    const auto panel = watch({"DM:7", "--csv", "--changes", "1"});
    EXPECT_EQ(panel->readLine(), "time,tag,item,event,old,value,unit,quality");
    EXPECT_EQ(panel->readLine().substr(24), ",DM:7,DM:7,first,,0,,good");
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    EXPECT_EQ(panel->readLine().substr(24), ",DM:7,DM:7,change,0,12,,good");
    EXPECT_EQ(panel->wait(), 0);
}

TEST_F(WatchTableTest, LostLinkInCsv)
{
    start();
    const auto panel = watch({"DM:7", "--csv", "--timeout", "200"});
    panel->waitForLine(",first,");
    EXPECT_EQ(tell("fault silence"), "ok");
    EXPECT_EQ(panel->readLine().substr(24), ",DM:7,DM:7,quality,0,0,,last known");
    EXPECT_EQ(tell("fault silence off"), "ok");
    EXPECT_EQ(panel->readLine().substr(24), ",DM:7,DM:7,quality,0,0,,good");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(WatchTableTest, FormatsExcludeEachOther)
{
    for (const Words &both : {Words{"--json", "--csv"}, Words{"--lines", "--csv"}, Words{"--lines", "--json"}}) {
        const PanelRun ended = runPanel({"watch", "127.0.0.1:1", "DM:7", both[0], both[1]});
        EXPECT_EQ(ended.code, 2);
        EXPECT_EQ(ended.out, "");
    }
}

} // namespace
