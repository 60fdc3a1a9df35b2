#include "panel_files.h"

// What was read once, for other programs: --json, --csv and --value of read, recipe read and recipe compare.

namespace {

class PanelFormsTest : public PanelTest {
protected:
    void SetUp() override
    {
        start();
        ASSERT_EQ(tell("write DM:0 452 65413 3"), "ok");
        ASSERT_EQ(tell("write CIO_bit:0.0 1"), "ok");
        ASSERT_EQ(tell("write DM:300 15681 8792"), "ok"); // =A"X
        project = files.put("plant.toml",
                            "[connection]\nhost = \"" + host() + "\"\n[tags]\n"
                            "Level = { type = \"DM\", address = 0, scale = 0.1, decimals = 1, unit = \"%\" }\n"
                            "Pump = { type = \"CIO_bit\", address = \"0.0\" }\n"
                            "Name = { type = \"DM\", address = 300, count = 3, data = \"string\" }\n"
                            "[recipes.Mix.values]\nLevel = 45.2\n\"DM:1:2\" = [65413, 4]\nName = \"B\"\n");
    }

    PanelRun panel(const Words &command, const Words &more) const
    {
        Words all = command;
        all.insert(all.end(), {"--project", project, "--quiet"});
        all.insert(all.end(), more.begin(), more.end());
        return runPanel(all);
    }

    PanelFiles  files;
    std::string project;
};

const Words READ = {"read", "Level", "DM:1:2/s16", "Pump", "DM:0/hex", "Name"};

} // namespace

TEST_F(PanelFormsTest, JsonOfRead)
{
    const PanelRun run = panel(READ, {"--json"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(linesOf(run.out),
              (Words{R"({"tag":"Level","item":"DM:0","value":45.2,"text":"45.2","unit":"%","quality":"good"})",
                     R"({"tag":"DM:1:2/s16","item":"DM:1:2","value":[-123,3],"text":"-123 3","unit":"","quality":"good"})",
                     R"({"tag":"Pump","item":"CIO_bit:0.0","value":1,"text":"1","unit":"","quality":"good"})",
                     R"({"tag":"DM:0/hex","item":"DM:0","value":"0x01C4","text":"0x01C4","unit":"","quality":"good"})",
                     R"({"tag":"Name","item":"DM:300:3","value":"=A\"X","text":"\"=A\\\"X\"","unit":"","quality":"good"})"}));
}

TEST_F(PanelFormsTest, CsvOfRead)
{
    const PanelRun run = panel(READ, {"--csv"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(linesOf(run.out), (Words{"tag,item,value,unit,quality", "Level,DM:0,45.2,%,good",
                                       "DM:1:2/s16,DM:1:2,-123 3,,good", "Pump,CIO_bit:0.0,1,,good",
                                       "DM:0/hex,DM:0,0x01C4,,good", R"(Name,DM:300:3,"""=A\""X""",,good)"}));
}

// A value stands as a write takes it.
TEST_F(PanelFormsTest, ValuesOfRead)
{
    const PanelRun run = panel(READ, {"--value"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(linesOf(run.out), (Words{"45.2", "-123 3", "1", "0x01C4", R"(=A\"X)"}));
    EXPECT_EQ(runPanel({"write", host(), "DM:310:3/string=" + linesOf(run.out)[4]}).code, 0);
    EXPECT_EQ(tell("read DM:310:3"), "ok 15681 8792 0");
}

TEST_F(PanelFormsTest, OnlyOneForm)
{
    for (const Words &two : {Words{"--json", "--csv"}, Words{"--csv", "--value"}, Words{"--value", "--json"}}) {
        for (const Words &command : {Words{"read", "Level"}, Words{"recipe", "read", "Mix"}, Words{"recipe", "compare", "Mix"}})
            EXPECT_EQ(panel(command, two).code, 2) << two[0];
    }
    EXPECT_EQ(panel({"recipe", "read", "Mix"}, {"--json", "--output", files.path("out.csv")}).code, 2);
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

TEST_F(PanelFormsTest, RefusedItemsAreThere)
{
    ASSERT_EQ(tell("fault end-code=1103"), "ok");
    const PanelRun json = panel({"read", "Level"}, {"--json"});
    EXPECT_EQ(json.code, 1);
    EXPECT_EQ(json.out, "{\"tag\":\"Level\",\"item\":\"DM:0\",\"value\":null,\"text\":null,\"unit\":\"%\","
                        "\"quality\":\"refused\"}\n");
    EXPECT_EQ(panel({"read", "Level"}, {"--csv"}).out, "tag,item,value,unit,quality\nLevel,DM:0,,%,refused\n");
    EXPECT_EQ(panel({"read", "Level"}, {"--value"}).out, "\n");
    EXPECT_EQ(panel({"read", "Level"}, {}).out, "");
    const PanelRun recipe = panel({"recipe", "read", "Mix"}, {"--value"});
    EXPECT_EQ(recipe.code, 1);
    EXPECT_EQ(recipe.out, "\n\n\n");
    EXPECT_EQ(panel({"recipe", "compare", "Mix"}, {"--csv"}).out,
              "tag,item,recipe,value,unit,quality\nLevel,DM:0,45.2,,%,refused\nDM:1:2,DM:1:2,65413 4,,,refused\n"
              "Name,DM:300:3,\"\"\"B\"\"\",,,refused\n");
}

TEST_F(PanelFormsTest, RecipesRead)
{
    const Words command = {"recipe", "read", "Mix"};
    EXPECT_EQ(linesOf(panel(command, {"--json"}).out),
              (Words{R"({"tag":"Level","item":"DM:0","value":45.2,"text":"45.2","unit":"%","quality":"good"})",
                     R"({"tag":"DM:1:2","item":"DM:1:2","value":[65413,3],"text":"65413 3","unit":"","quality":"good"})",
                     R"({"tag":"Name","item":"DM:300:3","value":"=A\"X","text":"\"=A\\\"X\"","unit":"","quality":"good"})"}));
    EXPECT_EQ(panel(command, {"--csv"}).out, "tag,item,value,unit,quality\nLevel,DM:0,45.2,%,good\n"
                                             "DM:1:2,DM:1:2,65413 3,,good\nName,DM:300:3,\"\"\"=A\\\"\"X\"\"\",,good\n");
    EXPECT_EQ(panel(command, {"--value"}).out, "45.2\n65413 3\n=A\\\"X\n");
}

// The variables that differ, and no others.
TEST_F(PanelFormsTest, RecipesCompared)
{
    const Words command = {"recipe", "compare", "Mix"};
    const PanelRun json = panel(command, {"--json"});
    EXPECT_EQ(json.code, 1);
    EXPECT_EQ(linesOf(json.out),
              (Words{R"({"tag":"DM:1:2","item":"DM:1:2","recipe":[65413,4],"value":[65413,3],"unit":"","quality":"good"})",
                     R"({"tag":"Name","item":"DM:300:3","recipe":"B","value":"=A\"X","unit":"","quality":"good"})"}));
    EXPECT_EQ(linesOf(panel(command, {"--csv"}).out),
              (Words{"tag,item,recipe,value,unit,quality", "DM:1:2,DM:1:2,65413 4,65413 3,,good",
                     R"(Name,DM:300:3,"""B""","""=A\""X""",,good)"}));
    EXPECT_EQ(panel(command, {"--value"}).out, "65413 3\n=A\\\"X\n");
    ASSERT_EQ(tell("write DM:2 4"), "ok");
    ASSERT_EQ(tell("write DM:300 16896 0 0"), "ok");
    const PanelRun same = panel(command, {"--json"});
    EXPECT_EQ(same.code, 0);
    EXPECT_EQ(same.out, "");
}
