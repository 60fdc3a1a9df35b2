#include "panel_files.h"

#include <algorithm>

// Recipes of a project and in TOML and CSV files: list, show, compare, and what is said of a cut-off write.

class PanelRecipeFilesTest : public PanelTest {
protected:
    std::string project() const
    {
        return files.put("plant.toml", "[connection]\nhost = \"" + host() + "\"\n"
                                       "[tags]\n"
                                       "Level = { type = \"DM\", address = 3, scale = 0.1, decimals = 1, "
                                       "unit = \"%\" }\n"
                                       "Name = { type = \"DM\", address = 10, count = 4, data = \"string\" }\n"
                                       "[recipes.Sweet]\ncomment = \"the sweet one\"\n"
                                       "[recipes.Sweet.values]\nLevel = 70.5\nName = \"LEMON\"\n"
                                       "\"DM:20:3\" = [1, 2, 3]\n"
                                       "[recipes.Plain]\nvariables = [\"Level\"]\n");
    }

    PanelFiles files;
};

TEST_F(PanelRecipeFilesTest, ListAndShow)
{
    start();
    const std::string file = project();
    const PanelRun list = runPanel({"recipe", "list", "--project", file});
    EXPECT_EQ(list.code, 0);
    EXPECT_EQ(list.out, "recipe  variables  words  comment\n"
                        "Sweet           3      8  the sweet one\n"
                        "Plain           1      1\n");
    EXPECT_EQ(runPanel({"recipe", "show", "Sweet", "--project", file}).out,
              "variable  address  type    value    unit\n"
              "Level     DM:3     word    70.5     %\n"
              "Name      DM:10:4  string  \"LEMON\"\n"
              "DM:20:3   DM:20:3  word    1 2 3\n"
              "3 variables, 8 words: the sweet one\n");
    EXPECT_EQ(runPanel({"recipe", "show", files.put("r.csv", "variable,value\nDM:0/f32,1.5\n")}).out,
              "variable  address  type  value  unit\n"
              "DM:0/f32  DM:0     f32   1.5\n"
              "1 variable, 2 words\n");
    EXPECT_EQ(runPanel({"recipe", "show", "Plain", "--project", file}).out,
              "variable  address  type  value  unit\n"
              "Level     DM:3     word  -      %\n"
              "1 variable, 1 word\n");
    expectRefused({"recipe", "list"},
                  "fins_panel: recipe list shows the recipes of a project; name it with --project FILE");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

TEST_F(PanelRecipeFilesTest, WriteAndCompareByName)
{
    start();
    const std::string file = project();
    const PanelRun before = runPanel({"recipe", "compare", "Sweet", "--project", file});
    EXPECT_EQ(before.code, 1);
    EXPECT_EQ(before.out, "variable   recipe  PLC  unit\n"
                          "Level        70.5  0.0  %\n"
                          "Name      \"LEMON\"   \"\"\n"
                          "DM:20           1    0\n"
                          "DM:21           2    0\n"
                          "DM:22           3    0\n"
                          "3 of 3 variables differ\n");
    const PanelRun write = runPanel({"recipe", "write", "Sweet", "--project", file});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "Level = 70.5\nName = \"LEMON\"\nDM:20:3 = 1 2 3\n");
    EXPECT_EQ(write.err, connectedLine());
    EXPECT_EQ(tell("read DM:3"), "ok 705");
    EXPECT_EQ(tell("read DM:10:4"), "ok 19525 19791 19968 0");
    const PanelRun same = runPanel({"recipe", "compare", "Sweet", "--project", file});
    EXPECT_EQ(same.code, 0);
    EXPECT_EQ(same.out, "no difference: 3 variables as in the recipe\n");
    ASSERT_EQ(tell("write DM:21 9"), "ok");
    const PanelRun one = runPanel({"recipe", "compare", "Sweet", "--project", file});
    EXPECT_EQ(one.code, 1);
    EXPECT_EQ(one.out, "variable  recipe  PLC  unit\nDM:21          2    9\n1 of 3 variables differs\n");
    expectRefused({"recipe", "write", "Plain", "--project", file},
                  "fins_panel: Plain: 'Level' has no value; give it one");
    expectRefused({"recipe", "write", "--project", file, "Sweet", "more"},
                  "fins_panel: 'more' is one argument too many: the PLC is " + host() +
                      "; give another one with --host");
}

TEST_F(PanelRecipeFilesTest, ReadIntoEveryForm)
{
    start();
    const std::string file = project();
    ASSERT_EQ(runPanel({"recipe", "write", "Sweet", "--project", file}).code, 0);
    const std::string toml = files.path("out.toml");
    EXPECT_EQ(runPanel({"recipe", "read", "Sweet", "--project", file, "--output", toml}).code, 0);
    EXPECT_EQ(files.content("out.toml"), "[values]\nLevel = 70.5\nName = \"LEMON\"\n\"DM:20:3\" = [1, 2, 3]\n");
    const std::string csv = files.path("out.csv");
    EXPECT_EQ(runPanel({"recipe", "read", "Sweet", "--project", file, "--output", csv}).code, 0);
    EXPECT_EQ(files.content("out.csv"), "variable,value\nLevel,70.5\nName,LEMON\nDM:20:3,1 2 3\n");
    ASSERT_EQ(tell("write DM:3 1"), "ok");
    EXPECT_EQ(runPanel({"recipe", "write", toml, "--project", file}).code, 0);
    EXPECT_EQ(tell("read DM:3"), "ok 705");
    EXPECT_EQ(runPanel({"recipe", "compare", csv, "--project", file}).code, 0);
}

TEST_F(PanelRecipeFilesTest, TheFilesThatAreReadAreNotReplaced)
{
    start();
    const std::string file = project();
    const std::string csv  = files.put("tags.csv", "name,type,address\nLevel,DM,3\n");
    const std::string text = files.put("r.txt", "Level\n");
    const std::string other = files.put("other.toml", "tags = \"tags.csv\"\n[connection]\nhost = \"" + host() + "\"\n");
    const std::string why = ": --output would replace a file that is read from; name another one";
    expectRefused({"recipe", "read", "Sweet", "--project", file, "--output", file}, "fins_panel: " + file + why);
    expectRefused({"recipe", "read", text, "--project", other, "--output", csv}, "fins_panel: " + csv + why);
    expectRefused({"recipe", "read", text, "--project", other, "--output", text}, "fins_panel: " + text + why);
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
    EXPECT_EQ(files.content("r.txt"), "Level\n");
}

TEST_F(PanelRecipeFilesTest, FilesWithoutAProject)
{
    start();
    const std::string toml = files.put("r.toml", "[values]\n\"DM:0/f32\" = 1.5\n");
    EXPECT_EQ(run("recipe write", {toml}).out, "DM:0/f32 = 1.5\n");
    EXPECT_EQ(tell("read DM:0:2"), "ok 0 16320");
    const std::string bad = files.put("bad.toml", "[values]\n\"DM:0\" = 1.5\n\"DM:99999\" = 1\n");
    expectRefused(arguments("recipe write", {bad}),
                  "fins_panel: " + bad + ":2:10: 'DM:0=1.5' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF (and "
                                         "1 more)");
    const std::string csv = files.put("bad.csv", "variable,value\nDM:0,1\nDM:1,\"2\n");
    expectRefused(arguments("recipe compare", {csv}),
                  "fins_panel: " + csv + ":3:6: the quote is not closed; end the field with another \"");
    expectRefused(arguments("recipe compare", {files.put("none.toml", "variables = [\"DM:0\"]\n")}),
                  "fins_panel: " + files.path("none.toml") + ": 'DM:0' has no value; give it one");
}

TEST_F(PanelRecipeFilesTest, DryRunShowsTheBlocks)
{
    start();
    const PanelRun dry = runPanel({"recipe", "write", "Sweet", "--project", project(), "--dry-run"});
    EXPECT_EQ(dry.code, 0);
    EXPECT_EQ(dry.out, "Level = 70.5\nName = \"LEMON\"\nDM:20:3 = 1 2 3\n"
                       "  DM:3: area 82, wire address 0003 00, count 0001, bytes 02 C1\n"
                       "  DM:10:4: area 82, wire address 000A 00, count 0004, bytes 4C 45 4D 4F 4E 00 00 00\n"
                       "  DM:20:3: area 82, wire address 0014 00, count 0003, bytes 00 01 00 02 00 03\n");
    EXPECT_EQ(dry.err, "if the PLC refuses for its operating mode, it is not asked for another one; --allow-mode-change asks "
                       "for MONITOR mode\ndry run: nothing was sent\n");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

// A PLC that acknowledges every write and holds on to its zeros.
static PanelRun writeInVain(const std::string &project, const Words &more)
{
    PlayedPlc played;
    Words arguments = {"recipe", "write", "Sweet", "--project", project, "--host", played.host()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const std::unique_ptr<Process> panel = startPanel(arguments);
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    const std::vector<std::pair<std::string, std::string>> exchanges = {
        {"0101 82 0003 00 0001", "0101 0000 0000"},
        {"0102 82 0003 00 0001 02C1", "0102 0000"},
        {"0102 82 000A 00 0004 4C45 4D4F 4E00 0000", "0102 0000"},
        {"0102 82 0014 00 0003 0001 0002 0003", "0102 0000"},
        {"0101 82 0003 00 0001", "0101 0000 0000"},
        {"0101 82 000A 00 0004", "0101 0000 0000 0000 0000 0000"},
        {"0101 82 0014 00 0003", "0101 0000 0000 0000 0000"}};
    for (const auto &[command, response] : exchanges) {
        EXPECT_EQ(link->command(), plainHex(command));
        link->answer(response);
    }
    const int code = panel->wait();
    return {code, panel->output(), withoutHints(panel->errors())};
}

TEST_F(PanelRecipeFilesTest, DifferencesAfterAWrite)
{
    start();
    const std::string file = project();
    const PanelRun lines = writeInVain(file, {});
    EXPECT_EQ(lines.code, 1);
    EXPECT_NE(lines.err.find("differs: Level was to be 70.5 %, the PLC holds 0.0 %\n"
                             "differs: Name was to be \"LEMON\", the PLC holds \"\"\n"
                             "differs: DM:20:3 was to be 1 2 3, the PLC holds 0 0 0\n"), std::string::npos)
        << lines.err;
    const PanelRun table = writeInVain(file, {"--table"});
    EXPECT_EQ(table.code, 1);
    EXPECT_EQ(table.out, "Level = 0.0\nName = \"\"\nDM:20:3 = 0 0 0\n");
    EXPECT_NE(table.err.find("variable   recipe  PLC  unit\n"
                             "Level        70.5  0.0  %\n"
                             "Name      \"LEMON\"   \"\"\n"
                             "DM:20           1    0\n"), std::string::npos) << table.err;
    EXPECT_EQ(table.err.find("differs:"), std::string::npos);
}

// No bar where standard error is no terminal.
TEST_F(PanelRecipeFilesTest, LongTransfersSayNothingOnAPipe)
{
    start();
    std::string values;
    for (int i = 0; i < 500; ++i)
        values += (i > 0 ? ", " : "") + std::to_string(i);
    const std::string file = files.put("long.toml", "[values]\n\"DM:0:500\" = [" + values + "]\n");
    const PanelRun write = run("recipe write", {file});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.err, connectedLine());
    EXPECT_EQ(tell("read DM:499"), "ok 499");
}

// ---- A link that goes during a write and does not come back ------------------------------------------------------

// The first of two blocks is acknowledged, the second is not.
TEST(PanelRecipeLossTest, SaysWhatIsAcknowledged)
{
    const PanelFiles files;
    PlayedPlc played;
    const std::string file = files.put("r.toml", "[values]\n\"DM:10\" = 3\n\"DM:0:2\" = [1, 2]\n\"DM:2\" = 9\n");
    const std::unique_ptr<Process> panel =
        startPanel({"recipe", "write", played.host(), file, "--words-per-frame", "3", "--give-up", "1"});
    std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0003 0001 0002 0009"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 000A 00 0001 0003"));
    link = nullptr;
    played.stopListening();
    EXPECT_EQ(panel->wait(), 3);
    EXPECT_EQ(panel->output(), "");
    const Words lines = linesOf(panel->errors());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "no reply to the write of DM:10; it will be read back"),
              lines.end()) << panel->errors();
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[lines.size() - 4], "unconfirmed: DM:10: no reply to the write, and it was not read back");
    EXPECT_EQ(lines[lines.size() - 3], "unconfirmed: DM:0:2: the PLC acknowledged the write, and it was not read back");
    EXPECT_EQ(lines[lines.size() - 2], "unconfirmed: DM:2: the PLC acknowledged the write, and it was not read back");
}
