#include "panel_plant_run.h"
#include "panel_table_run.h"

#include <algorithm>

// `watch` of several PLCs at once, in lines and in the live table.

namespace {

class PanelPlantWatchTest : public PanelPlantOfTwoTest {
protected:
    std::unique_ptr<Process> watch(Words more)
    {
        more.insert(more.begin(), {"watch", "-p", file});
        return startPanel(more);
    }

    std::unique_ptr<PtyProcess> table(Words more = {})
    {
        more.insert(more.begin(), {FINS_PANEL_PATH, "watch", "-p", file});
        auto shown = std::make_unique<PtyProcess>(more, 100, 24);
        shown->waitUntil([&] { return has(*shown, "press.Level", "good") && has(*shown, "oven.Level", "good"); }, "good");
        return shown;
    }

    // The lines of the first values, in the order of their names.
    static Words firstChanges(Process &panel)
    {
        Words lines = {nextChange(panel), nextChange(panel)};
        std::sort(lines.begin(), lines.end());
        return lines;
    }
};

TEST_F(PanelPlantWatchTest, EveryPlcTellsItsChanges)
{
    const std::unique_ptr<Process> panel = watch({"--changes", "2"});
    EXPECT_EQ(firstChanges(*panel), Words({"oven.Level - 7", "press.Level - 5"}));
    EXPECT_EQ(tell("write DM:0 8"), "ok");
    EXPECT_EQ(nextChange(*panel), "oven.Level 7 8");
    EXPECT_EQ(tellPress("write DM:0 6"), "ok");
    EXPECT_EQ(nextChange(*panel), "press.Level 5 6");
    EXPECT_EQ(panel->wait(), 0);
}

TEST_F(PanelPlantWatchTest, ChosenItemsKeepTheirForm)
{
    ASSERT_EQ(tellPress("write DM:5 65535"), "ok");
    const std::unique_ptr<Process> panel = watch({"press.DM:5/s16", "oven.DM:0", "--csv"});
    EXPECT_EQ(panel->readLine(), "time,tag,item,event,old,value,unit,quality");
    Words lines = {panel->readLine().substr(24), panel->readLine().substr(24)};
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, Words({",oven.DM:0,DM:0,first,,7,,good", ",press.DM:5/s16,DM:5,first,,-1,,good"}));
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelPlantWatchTest, APlcThatGoesTakesNothingFromTheOther)
{
    const std::unique_ptr<Process> panel = watch({"--json", "--timeout", "300"});
    const std::string level = ".Level\",\"item\":\"DM:0\",\"event\":";
    EXPECT_NE(panel->readLine().find("\"first\""), std::string::npos);
    EXPECT_NE(panel->readLine().find("\"first\""), std::string::npos);
    endPress();
    EXPECT_EQ(panel->readLine().substr(35), "\"tag\":\"press" + level + "\"quality\",\"old\":5,\"value\":5,"
                                            "\"unit\":\"%\",\"quality\":\"last known\"}");
    EXPECT_EQ(tell("write DM:0 8"), "ok");
    EXPECT_EQ(panel->readLine().substr(35), "\"tag\":\"oven" + level + "\"change\",\"old\":7,\"value\":8,"
                                            "\"unit\":\"%\",\"quality\":\"good\"}");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelPlantWatchTest, WhoNeverAnswersIsNamedAtTheEnd)
{
    endPress();
    const PanelRun ended = run("watch", {"--for", "1"});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(linesOf(ended.out).size(), 1U) << ended.out;
    EXPECT_NE(ended.out.find(" oven.Level - 7\n"), std::string::npos) << ended.out;
    EXPECT_EQ(ended.err.find("fins_panel: no answer from press at " + pressHost + ": "), 0U) << ended.err;
    EXPECT_EQ(ended.err.find("oven"), std::string::npos) << ended.err;
}

TEST_F(PanelPlantWatchTest, RefusedAndMissingChangesCountInTheEnd)
{
    EXPECT_EQ(run("watch", {"--for", "0.5"}).code, 0);
    const PanelRun late = run("watch", {"--for", "0.5", "--changes", "1"});
    EXPECT_EQ(late.code, 3);
    EXPECT_EQ(late.err, "fins_panel: 0 of 1 changes came in time\n");
    ASSERT_EQ(tellPress("fault end-code=1103"), "ok");
    EXPECT_EQ(run("watch", {"--for", "1"}).code, 1);
}

TEST_F(PanelPlantWatchTest, WritesAreForOnePlc)
{
    expectRefused({"watch", "-p", file, "--write", "press.Level=1", "oven.Level"},
                  "fins_panel: --write is for one PLC; use fins_panel write, or choose one PLC with --plc");
    EXPECT_EQ(tellPress("read DM:0"), "ok 5");
}

TEST_F(PanelPlantWatchTest, TheTableHasAHeadingForEachAndTellsHowManyAnswer)
{
    const auto shown = table();
    shown->waitForText(" 2 of 2 online  0 errors");
    const std::vector<std::string> &lines = shown->screen.lines;
    EXPECT_EQ(lines.at(2), "-- press --");
    EXPECT_EQ(lines.at(3).find("press.Level "), 0U) << shown->screen.text();
    EXPECT_EQ(lines.at(4), "-- oven --");
    EXPECT_EQ(lines.at(5).find("oven.Level "), 0U) << shown->screen.text();
    endPress();
    shown->waitForText(" 1 of 2 online, press: ");
    shown->waitUntil([&] { return has(*shown, "press.Level", "last known"); }, "last known");
    EXPECT_TRUE(has(*shown, "oven.Level", "good"));
    EXPECT_TRUE(has(*shown, "press.Level", " 5 "));
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
    expectClean(*shown);
}

TEST_F(PanelPlantWatchTest, AnEditGoesToThePlcOfTheValue)
{
    const auto shown = table();
    shown->type("\033[B\033[B\n"); // the second value
    shown->waitForText("oven.Level: 7 % -> _");
    shown->type("9\n");
    shown->waitForText("write oven.Level: 7 % -> 9 %? y/n");
    EXPECT_EQ(tell("read DM:0"), "ok 7") << "asked, not written";
    shown->type("y");
    shown->waitUntil([&] { return has(*shown, "oven.Level", "done"); }, "done");
    EXPECT_EQ(tell("read DM:0"), "ok 9");
    EXPECT_EQ(tellPress("read DM:0"), "ok 5");
    shown->waitForText("oven: done: oven.Level = 9 %");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 0);
}

class PanelPlantEditTest : public PanelPlantWatchTest {
protected:
    // The edit is answered by `y`, and the press answers nothing any more: the write waits behind a read.
    std::unique_ptr<PtyProcess> editInSilence(const Words &more)
    {
        auto shown = table(more);
        shown->type("\033[B\n");
        shown->waitForText("press.Level: 5 % -> _");
        shown->type("6\n");
        shown->waitForText("write press.Level: 5 % -> 6 %? y/n");
        EXPECT_EQ(tellPress("fault silence"), "ok");
        shown->type("y");
        shown->waitUntil([&] { return has(*shown, "press.Level", "writing"); }, "writing");
        return shown;
    }
};

TEST_F(PanelPlantEditTest, WhatIsLeftUndoneIsSaidAtTheEnd)
{
    const auto shown = editInSilence({"--timeout", "20000"});
    shown->type("q");
    EXPECT_EQ(shown->wait(), 3);
    EXPECT_NE(shown->screen.text().find("press: not sent: press.Level: "), std::string::npos) << shown->screen.text();
    expectClean(*shown);
}

TEST_F(PanelPlantEditTest, IsNotSentOnTheNextLink)
{
    const auto shown = editInSilence({"--timeout", "2000", "--retries", "1"});
    shown->waitUntil([&] { return has(*shown, "press.Level", "not sent"); }, "not sent");
    EXPECT_EQ(tellPress("fault silence off"), "ok");
    shown->waitUntil([&] { return has(*shown, "press.Level", "good"); }, "good again");
    EXPECT_EQ(tellPress("read DM:0"), "ok 5");
    shown->type("q");
    EXPECT_EQ(shown->wait(), 3);
}

} // namespace
