#include "panel_plant_run.h"

// Projects of several PLCs: which of them a command is for.

class PanelPlantTest : public PanelTest {
protected:
    void SetUp() override
    {
        start();
        ASSERT_EQ(tell("write DM:0 7"), "ok");
        const std::string tags = ".tags]\nLevel = { type = \"DM\", address = 0 }\n";
        file = files.put("plant.toml", "[plc.press]\nhost = \"192.0.2.1\"\n[plc.press" + tags + "[plc.oven]\nhost = \"" + host()
                                           + "\"\n[plc.oven" + tags + "[recipes.Bread.values]\n\"oven.DM:20\" = 9\n");
    }

    PanelFiles  files;
    std::string file;
};

TEST_F(PanelPlantTest, ItemsNameTheirPlc)
{
    EXPECT_EQ(runPanel({"read", "-p", file, "oven.Level", "oven.DM:1"}).out, "oven.Level = 7\noven.DM:1 = 0\n");
    EXPECT_EQ(runPanel({"write", "-p", file, "oven.Level=8"}).out, "oven.Level = 8\n");
    EXPECT_EQ(tell("read DM:0"), "ok 8");
    const std::unique_ptr<Process> watch = startPanel({"watch", "-p", file, "oven.DM:0:2"});
    EXPECT_EQ(nextChange(*watch), "oven.DM:0 - 8");
    EXPECT_EQ(nextChange(*watch), "oven.DM:1 - 0");
    EXPECT_EQ(interrupt(*watch), 0);
}

TEST_F(PanelPlantTest, RecipesNameTheirPlc)
{
    EXPECT_EQ(runPanel({"recipe", "write", "-p", file, "Bread"}).code, 0);
    EXPECT_EQ(tell("read DM:20"), "ok 9");
}

TEST_F(PanelPlantTest, AnOptionNamesThePlc)
{
    EXPECT_EQ(runPanel({"link", "-p", file, "--plc", "oven"}).code, 0);
    EXPECT_EQ(runPanel({"read", "-p", file, "--plc", "oven"}).out, "oven.Level = 7\n");
    expectRefused({"link", "-p", file, "--plc", "ovem"},
                  "fins_panel: there is no PLC 'ovem' in " + file + " (did you mean 'oven'?)");
}

TEST_F(PanelPlantTest, WithoutAnyNameNothingIsSent)
{
    expectRefused({"link", "-p", file}, "fins_panel: " + file + " has several PLCs: press, oven; name one with --plc, or what "
                                        "is to be worked on, such as press.DM:0");
    expectRefused({"write", "-p", file, "oven.Level=1", "ofen.Level=1"},
                  "fins_panel: 'ofen.Level=1' does not begin with the name of a PLC (did you mean 'oven.Level=1'?); the PLCs are "
                  "press, oven, write press.DM:100 for an item of one");
    EXPECT_EQ(tell("read DM:0"), "ok 7");
}

TEST_F(PanelPlantTest, ListsAreOfAllPlcs)
{
    EXPECT_EQ(runPanel({"complete", "tags", "-p", file}).out, "press.Level\noven.Level\n");
    EXPECT_NE(runPanel({"recipe", "list", "-p", file}).out.find("Bread "), std::string::npos);
    const Words shown = linesOf(runPanel({"recipe", "show", "-p", file, "Bread"}).out);
    ASSERT_EQ(shown.size(), 3U);
    EXPECT_EQ(shown[1], "oven.DM:20  DM:20    word  9");
    EXPECT_EQ(runPanel({"check", "-p", file, "oven.Level", "oven.DM:3"}).out, "oven.Level valid\noven.DM:3 valid\n");
}

TEST_F(PanelPlantTest, CheckProjectCountsThem)
{
    EXPECT_EQ(runPanel({"check-project", file}).out, file + " valid: 2 PLCs, 2 tags, 1 recipe\n");
}

TEST_F(PanelPlantOfTwoTest, AreReadInTheOrderOfTheList)
{
    EXPECT_EQ(run("read", {}).out, "press.Level = 5 %\noven.Level = 7 %\n");
    EXPECT_EQ(run("read", {"oven.Level", "press.DM:0", "oven.DM:1", "press.DM:1", "--value"}).out, "7\n5\n0\n0\n");
    EXPECT_EQ(run("read", {"press.*", "oven.DM:0"}).out, "press.Level = 5 %\noven.DM:0 = 7\n");
}

TEST_F(PanelPlantOfTwoTest, OfAPlcThatIsAwayNothingIsSaid)
{
    endPress();
    const PanelRun json = run("read", {"--json"});
    EXPECT_EQ(json.code, 3);
    EXPECT_EQ(json.out, "{\"tag\":\"press.Level\",\"item\":\"DM:0\",\"value\":null,\"text\":null,\"unit\":\"%\","
                        "\"quality\":\"not connected\"}\n"
                        "{\"tag\":\"oven.Level\",\"item\":\"DM:0\",\"value\":7,\"text\":\"7\",\"unit\":\"%\",\"quality\":\"good\"}\n");
    EXPECT_NE(json.err.find(pressHost), std::string::npos) << json.err;
    EXPECT_EQ(json.err.find(host()), std::string::npos) << json.err;
    EXPECT_EQ(run("read", {}).out, "oven.Level = 7 %\n");
    EXPECT_EQ(run("read", {"press.Level", "oven.Level", "--value"}).out, "\n7\n");
}

TEST_F(PanelPlantOfTwoTest, AreWrittenInTheOrderOfTheList)
{
    const PanelRun ended = run("write", {"press.Level=1", "oven.Level=2", "press.DM:5=3"});
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.out, "press.Level = 1 %\noven.Level = 2 %\npress.DM:5 = 3\n");
    EXPECT_EQ(tellPress("read DM:0"), "ok 1");
    EXPECT_EQ(tellPress("read DM:5"), "ok 3");
    EXPECT_EQ(tell("read DM:0"), "ok 2");
}

TEST_F(PanelPlantOfTwoTest, NothingIsWrittenBehindAPlcThatIsAway)
{
    endPress();
    const PanelRun stopped = run("write", {"press.Level=1", "oven.Level=2"});
    EXPECT_EQ(stopped.code, 3);
    EXPECT_EQ(stopped.out, "");
    EXPECT_NE(stopped.err.find("not sent: press.Level: "), std::string::npos) << stopped.err;
    EXPECT_NE(stopped.err.find("not sent: oven.Level: a write before it was not done"), std::string::npos) << stopped.err;
    EXPECT_EQ(tell("read DM:0"), "ok 7");
    const PanelRun gone = run("write", {"press.Level=1", "oven.Level=2", "--keep-going"});
    EXPECT_EQ(gone.code, 3);
    EXPECT_EQ(gone.out, "oven.Level = 2 %\n");
    EXPECT_EQ(tell("read DM:0"), "ok 2");
}

TEST_F(PanelPlantOfTwoTest, AMistakeInAnyWriteSendsNone)
{
    EXPECT_EQ(run("write", {"press.Level=1", "oven.Level=70000"}).code, 2);
    EXPECT_EQ(tellPress("read DM:0"), "ok 5");
}

TEST_F(PanelPlantOfTwoTest, ConditionsHoldOnAllOfThemAtOnce)
{
    EXPECT_EQ(run("wait", {"press.Level=5", "oven.Level>6"}).out, "press.Level = 5 %\noven.Level = 7 %\n");
    const PanelRun late = run("wait", {"press.Level=5", "oven.Level=8", "--for", "0.3"});
    EXPECT_EQ(late.code, 3);
    EXPECT_EQ(late.err, "fins_panel: not fulfilled within 0.3 s: 'oven.Level=8' (7 %, good)\n");
    EXPECT_EQ(run("wait", {"press.Level=6", "oven.Level=7", "--any"}).code, 0);
    const std::unique_ptr<Process> waiting = startPanel({"wait", "-p", file, "press.Level=6", "oven.Level=8"});
    EXPECT_EQ(tell("write DM:0 8"), "ok");
    EXPECT_EQ(tellPress("write DM:0 6"), "ok");
    EXPECT_EQ(waiting->wait(), 0);
}

TEST_F(PanelPlantOfTwoTest, SomeOptionsAreOfOnePlc)
{
    const std::string program = "fins_panel: ";
    expectRefused({"read", "-p", file, "--stats"}, program + "--stats and --trace are for one PLC; choose one with --plc");
    expectRefused({"read", "-p", file, "--host", host()},
                  program + "--host is for one PLC, and " + file + " has several; choose one with --plc");
    expectRefused({"write", "-p", file, "press.Level=1", "oven.Level=2", "--confirm"},
                  program + "--confirm asks for the values of one PLC; write to one after the other, or leave it out");
    EXPECT_EQ(runPanel({"read", "-q", "-p", file, "--plc", "press", "--stats"}).out, "press.Level = 5 %\n");
}
