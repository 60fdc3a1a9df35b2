#include "panel_files.h"

#include <algorithm>
#include <fstream>

// Which tags and items a command takes: all of a project, patterns, groups, and what a file lists.

namespace {

class PanelItemsTest : public PanelTest {
protected:
    void SetUp() override
    {
        start();
        ASSERT_EQ(tell("write DM:0 10 11 12 13 14"), "ok");
        project = files.put("plant.toml", "[connection]\nhost = \"" + host() + "\"\n" + tags());
    }

    static std::string tags()
    {
        return "[tags]\n"
               "\"press.Level\" = { type = \"DM\", address = 3, group = \"Press\", unit = \"mm\" }\n"
               "Level1 = { type = \"DM\", address = 1, group = \"Tank\" }\n"
               "\"press.Count\" = { type = \"DM\", address = 2, group = \"Press\" }\n"
               "Level2 = { type = \"DM\", address = 0 }\n";
    }

    PanelRun read(const Words &more) const
    {
        Words all = {"read", "--project", project};
        all.insert(all.end(), more.begin(), more.end());
        return runPanel(all);
    }

    std::string values(const Words &more) const
    {
        const PanelRun run = read(more);
        EXPECT_EQ(run.code, 0) << run.err;
        return run.out;
    }

    void expectNothingSent() { EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0"); }

    PanelFiles  files;
    std::string project;
};

// True once the program has a handler of its own for the signal.
bool catches(pid_t program, int signal)
{
    std::ifstream status("/proc/" + std::to_string(program) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.find("SigCgt:") == 0)
            return (std::stoull(line.substr(7), nullptr, 16) >> (signal - 1) & 1) != 0;
    }
    return false;
}

} // namespace

TEST_F(PanelItemsTest, AllTagsInTheirOrder)
{
    EXPECT_EQ(values({}), "press.Level = 13 mm\nLevel1 = 11\npress.Count = 12\nLevel2 = 10\n");
    const auto panel = startPanel({"watch", "-p", project});
    Words first = {nextChange(*panel), nextChange(*panel), nextChange(*panel), nextChange(*panel)};
    std::sort(first.begin(), first.end()); // they come in the order of their addresses
    EXPECT_EQ(first, (Words{"Level1 - 11", "Level2 - 10", "press.Count - 12", "press.Level - 13"}));
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelItemsTest, AllTagsAtAHostOfTheCommandLine)
{
    const std::string without = files.put("none.toml", tags());
    EXPECT_EQ(runPanel({"read", host(), "--project", without}).out,
              "press.Level = 13 mm\nLevel1 = 11\npress.Count = 12\nLevel2 = 10\n");
}

TEST_F(PanelItemsTest, NothingToTakeIsRefused)
{
    const std::string required = "fins_panel: items is required; see fins_panel --help";
    const std::string empty = files.put("empty.toml", "[connection]\nhost = \"" + host() + "\"\n");
    for (const char *command : {"read", "watch"}) {
        expectRefused({command, host()}, required);
        expectRefused({command, "--project", empty}, required);
    }
    expectRefused({"write", "--project", project}, required);
    expectRefused({"check", "--project", project}, required);
    expectRefused({"read", "--project", files.put("none.toml", tags()), "Level1"},
                  "fins_panel: 'Level1' is a tag, and the PLC is missing; give HOST before it, or the project its host");
    expectNothingSent();
}

TEST_F(PanelItemsTest, PatternsAreThoseOfAShell)
{
    EXPECT_EQ(values({"press.*"}), "press.Level = 13 mm\npress.Count = 12\n");
    EXPECT_EQ(values({"Level?"}), "Level1 = 11\nLevel2 = 10\n");
    EXPECT_EQ(values({"[!L]*t"}), "press.Count = 12\n");
    EXPECT_EQ(values({"*"}), "press.Level = 13 mm\nLevel1 = 11\npress.Count = 12\nLevel2 = 10\n");
    EXPECT_EQ(values({"*1/hex", "DM:4"}), "Level1/hex = 0x000B\nDM:4 = 14\n");
}

// What a pattern or a group brings is taken once; what is named twice comes twice, as ever.
TEST_F(PanelItemsTest, EachTagOnce)
{
    EXPECT_EQ(values({"Level2", "L*", "*1", "Level1"}), "Level2 = 10\nLevel1 = 11\n");
    EXPECT_EQ(values({"Level1", "Level1"}), "Level1 = 11\nLevel1 = 11\n");
    EXPECT_EQ(values({"--group", "Press", "*Count", "--group", "Press"}), "press.Count = 12\npress.Level = 13 mm\n");
}

TEST_F(PanelItemsTest, PatternsThatBringNothingAreRefused)
{
    expectRefused({"read", "--project", project, "Press.*"},
                  "fins_panel: no tag matches 'Press.*'; the tags are press.Level, Level1, press.Count, Level2");
    expectRefused({"watch", host(), "DM:*"},
                  "fins_panel: 'DM:*' is a pattern for names of tags, and there are none; name a project with tags by "
                  "--project FILE");
    expectNothingSent();
}

TEST_F(PanelItemsTest, Groups)
{
    EXPECT_EQ(values({"--group", "Press"}), "press.Level = 13 mm\npress.Count = 12\n");
    EXPECT_EQ(values({"--group", "Tank", "--group", "Press", "DM:4"}),
              "DM:4 = 14\nLevel1 = 11\npress.Level = 13 mm\npress.Count = 12\n");
    const auto panel = startPanel({"watch", "--project", project, "--group", "Tank"});
    EXPECT_EQ(nextChange(*panel), "Level1 - 11");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelItemsTest, GroupsThatThereAreNot)
{
    expectRefused({"read", "--project", project, "--group", "Pres"},
                  "fins_panel: there is no group 'Pres' (did you mean 'Press'?); the groups are Press, Tank");
    expectRefused({"read", "--project", project, "--group", ""},
                  "fins_panel: there is no group ''; the groups are Press, Tank");
    expectRefused({"read", host(), "--group", "Press"},
                  "fins_panel: there is no group 'Press': no tag has one; write group = \"NAME\" into the tables of its "
                  "tags in a project");
    expectNothingSent();
}

TEST_F(PanelItemsTest, ItemsOfAFile)
{
    const std::string list = files.put("list.txt", "# of the press\n\n  press.Level \r\nDM:4\t\n*1\n");
    EXPECT_EQ(values({"Level2", "--items", list}), "Level2 = 10\npress.Level = 13 mm\nDM:4 = 14\nLevel1 = 11\n");
    EXPECT_EQ(runPanel({"read", host(), "--items", files.put("one.txt", "DM:1")}).out, "DM:1 = 11\n");
    const auto panel = startPanel({"watch", host(), "--items", files.path("one.txt")});
    EXPECT_EQ(nextChange(*panel), "DM:1 - 11");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelItemsTest, ItemsOfStandardInput)
{
    const auto read = startPanel({"read", "--project", project, "--items", "-"});
    read->writeText("Level1\n# no more\nDM:4");
    read->closeInput();
    EXPECT_EQ(read->wait(), 0);
    EXPECT_EQ(read->output(), "Level1 = 11\nDM:4 = 14\n");
    const auto write = startPanel({"write", "--project", project, "--items", "-"});
    write->writeText("Level1=21\n");
    write->closeInput();
    EXPECT_EQ(write->wait(), 0);
    EXPECT_EQ(tell("read DM:1"), "ok 21");
}

TEST_F(PanelItemsTest, StandardInputThatNeverEndsIsInterrupted)
{
    const auto panel = startPanel({"read", "--project", project, "--items", "-"});
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
    while (!catches(panel->id(), SIGTERM) && Process::Clock::now() < deadline)
        poll(nullptr, 0, 5);
    panel->sendSignal(SIGTERM);
    EXPECT_EQ(panel->wait(), 3);
    EXPECT_EQ(panel->errors(), "fins_panel: interrupted\n");
    expectNothingSent();
}

// A text may end with blanks; what stands before the item is none of it.
TEST_F(PanelItemsTest, WritesOfAFile)
{
    const std::string list = files.put("set.txt", "# set-points\n  Level1=31\n\nDM:20:2/string=AB  \r\n");
    const PanelRun run = runPanel({"write", "--project", project, "Level2=30", "--items", list});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, "Level2 = 30\nLevel1 = 31\nDM:20:2/string = \"AB  \"\n");
    EXPECT_EQ(tell("read DM:20:2"), "ok 16706 8224");
}

TEST_F(PanelItemsTest, FilesNameTheLineThatIsWrong)
{
    const std::string list = files.put("bad.txt", "DM:0\n# a\nDM:40000\n");
    expectRefused({"read", host(), "--items", list},
                  "fins_panel: " + list + ":3: 'DM:40000' lies outside the range 0 to 32767, written ddddd");
    expectRefused({"read", "--project", project, "--items", files.put("x.txt", "x*\n")},
                  "fins_panel: " + files.path("x.txt")
                      + ":1: no tag matches 'x*'; the tags are press.Level, Level1, press.Count, Level2");
    expectRefused({"write", host(), "--items", list},
                  "fins_panel: " + list + ":1: 'DM:0' is not a write; use ITEM=VALUE[,VALUE...], such as DM:100=5");
    const std::string blank = files.put("blank.txt", "\n# nothing\n");
    expectRefused({"read", "--project", project, "--items", blank},
                  "fins_panel: " + blank + ": holds no item; write one a line");
    const std::string escape = files.put("escape.txt", "DM:0\nDM:\x1b[31m\n");
    expectRefused({"read", host(), "--items", escape},
                  "fins_panel: " + escape + ":2:4: U+001B is a control character; remove it");
    expectRefused({"read", host(), "--items", files.path("none.txt")},
                  "fins_panel: " + files.path("none.txt") + ": No such file or directory");
    const std::string large = files.put("large.txt", std::string(2 * 1024 * 1024 + 1, '\n'));
    expectRefused({"read", host(), "--items", large},
                  "fins_panel: " + large + ": is larger than 2048 KiB; use smaller files");
    expectNothingSent();
}

TEST_F(PanelItemsTest, StandardInputIsChecked)
{
    const auto bad = startPanel({"write", host(), "--items", "-"});
    bad->writeText("DM:0=1\nDM:1=x\n");
    bad->closeInput();
    EXPECT_EQ(bad->wait(), 2);
    EXPECT_EQ(bad->errors(), "fins_panel: standard input:2: 'DM:1=x' is not a word value; use -32768 to 65535, or 0x0 to "
                             "0xFFFF\n");
    const auto empty = startPanel({"read", "--project", project, "--items", "-"});
    empty->closeInput();
    EXPECT_EQ(empty->wait(), 2);
    EXPECT_EQ(empty->errors(), "fins_panel: standard input: holds no item; write one a line\n");
    expectNothingSent();
}
