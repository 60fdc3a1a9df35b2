#include "panel_files.h"

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
    expectRefused({"read", "-p", file}, "fins_panel: " + file + " has several PLCs: press, oven; name one with --plc, or what "
                                        "is to be worked on, such as press.DM:0");
    expectRefused({"write", "-p", file, "oven.Level=1", "press.Level=1"},
                  "fins_panel: 'press.Level' is not of the PLC oven, whose tags and items begin with oven.");
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
