#include "panel_table_run.h"

// What the keys do to the live table.

namespace {

const char ESC[]   = "\033";
const char DOWN[]  = "\033[B";

TEST_F(WatchTableTest, TheFilterNarrowsTheRowsWhileItIsTyped)
{
    start();
    const auto shown = table({"DM:0:30"});
    shown->waitForText("1-18 of 30");
    shown->type("/dm:1");
    shown->waitForText("/dm:1_"); // the last line of a screen comes last
    EXPECT_EQ(shown->screen.lines.at(1), " 11 of 30 shown: dm:1"); // 1 and 10 to 19
    EXPECT_EQ(shown->screen.lines.at(3).find("DM:1 "), 0u) << shown->screen.text();
    EXPECT_EQ(shown->screen.lines.at(13).find("DM:19 "), 0u) << shown->screen.text();
    EXPECT_EQ(shown->screen.lines.at(14), "");
    shown->type("?\n"); // Enter keeps it
    shown->waitForText("10 of 30 shown: dm:1?");
    shown->waitForText("q quit  / filter");
    shown->type("/");
    shown->waitForText("/dm:1?_");
    shown->type(ESC); // drops it
    shown->waitForText("1-18 of 30");
    EXPECT_EQ(shown->screen.text().find(" shown"), std::string::npos) << shown->screen.text();
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

TEST_F(WatchTableTest, SortsByWhatTheHeadNames)
{
    start();
    EXPECT_EQ(tell("write DM:7 9 10 2"), "ok");
    const auto shown = table({"DM:7:3"});
    shown->waitUntil([&] { return has(*shown, "DM:9", " 2 "); }, "2");
    shown->type("ss");
    shown->waitUntil([&] { return shown->screen.lines.at(5).find("DM:8 ") == 0; }, "DM:8 at the bottom");
    EXPECT_EQ(shown->screen.lines.at(1), " by value");
    EXPECT_EQ(shown->screen.lines.at(3).find("DM:9 "), 0u) << shown->screen.text();
    EXPECT_EQ(shown->screen.lines.at(4).find("DM:7 "), 0u) << shown->screen.text();
    EXPECT_EQ(tell("write DM:7 99"), "ok");
    shown->waitUntil([&] { return shown->screen.lines.at(5).find("DM:7 ") == 0; }, "DM:7 at the bottom");
    shown->type("sss");
    shown->waitUntil([&] { return shown->screen.lines.at(2).find("DM:7 ") == 0; }, "the order as given");
}

// Time goes on, and values do, but not on the screen.
TEST_F(WatchTableTest, APauseShowsWhatWasAndSaysSo)
{
    start();
    EXPECT_EQ(tell("write DM:7 4711"), "ok");
    const auto shown = table({"DM:7"});
    shown->waitUntil([&] { return has(*shown, "DM:7", "good"); }, "good");
    shown->type("p");
    shown->waitForText(" PAUSED: 0 s old, polling goes on");
    shown->waitForText("QUALITY THEN");
    EXPECT_EQ(tell("write DM:7 12"), "ok");
    ASSERT_NO_FATAL_FAILURE(waitForRequests(answered() + 20));
    shown->waitForText(" PAUSED: 1 s old, polling goes on");
    EXPECT_TRUE(has(*shown, "DM:7", " 4711 ")) << shown->screen.text();
    shown->type("p");
    shown->waitUntil([&] { return has(*shown, "DM:7", " 12"); }, "12");
    EXPECT_EQ(shown->screen.text().find("PAUSED"), std::string::npos);
}

// Of changes that no screen has shown, too.
TEST_F(WatchTableTest, MinimumAndMaximumSinceTheStartOrTheKey)
{
    start();
    EXPECT_EQ(tell("write DM:7 50"), "ok");
    const auto shown = table({"DM:7"});
    shown->waitUntil([&] { return has(*shown, "DM:7", " 50 "); }, "50");
    for (const char *value : {"3", "4711", "60"}) {
        EXPECT_EQ(tell("write DM:7 " + std::string(value)), "ok");
        ASSERT_NO_FATAL_FAILURE(waitForRequests(answered() + 3));
    }
    const std::string both = "      3    4711  ";
    shown->waitUntil([&] { return has(*shown, "DM:7", " 60") && has(*shown, "DM:7", both); }, both);
    shown->type("r");
    shown->waitUntil([&] { return has(*shown, "DM:7", "     60      60  "); }, "60 and 60");
}

TEST_F(WatchTableTest, GroupsHaveHeadings)
{
    start();
    const PanelFiles files;
    const std::string project = files.put("plant.toml", "[tags]\n"
                                                        "Level = { type = \"DM\", address = 7, group = \"Tank\" }\n"
                                                        "Speed = { type = \"DM\", address = 8 }\n"
                                                        "Valve = { type = \"DM\", address = 9, group = \"Tank\" }\n");
    const auto shown = table({"--project", project});
    shown->waitUntil([&] { return has(*shown, "Valve", "good"); }, "good");
    EXPECT_EQ(shown->screen.lines.at(2).find("Speed "), 0u) << shown->screen.text();
    EXPECT_EQ(shown->screen.lines.at(3), "-- Tank --");
    EXPECT_EQ(shown->screen.lines.at(4).find("Level "), 0u) << shown->screen.text();
    EXPECT_EQ(shown->screen.lines.at(5).find("Valve "), 0u) << shown->screen.text();
}

TEST_F(WatchTableTest, ArrowsSelectAndEscGivesItUp)
{
    start();
    const auto shown = table({"DM:7", "DM:9"}, 80, 24, {{"NO_COLOR", "1"}});
    shown->waitUntil([&] { return has(*shown, "DM:9", "good"); }, "good");
    shown->type("\n");
    shown->waitForText("choose a value by the arrows, then Enter");
    shown->type(std::string(DOWN) + DOWN);
    shown->waitForText("DM:9>");
    EXPECT_EQ(shown->screen.text().find("DM:7>"), std::string::npos);
    shown->type(ESC);
    shown->waitForText("DM:9 ");
}

} // namespace
