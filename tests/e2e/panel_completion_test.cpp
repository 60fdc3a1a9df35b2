#include "panel_files.h"

// The completion of the shell, asked by a shell.

namespace {

// What is offered for the last word. `words` are those behind the program's name, as the shell splits them: '=' is one.
Words offered(const Words &words)
{
    Words arguments = {"/bin/bash", "--norc", "-c",
                       ". \"$1\"; COMP_WORDS=(\"${@:2}\"); COMP_CWORD=$(($# - 2)); _fins; "
                       "for word in \"${COMPREPLY[@]}\"; do echo \"$word\"; done",
                       "bash", COMPLETION_FILE, FINS_PANEL_PATH};
    arguments.insert(arguments.end(), words.begin(), words.end());
    Process bash(arguments);
    EXPECT_EQ(bash.wait(), 0);
    EXPECT_EQ(bash.errors(), "");
    return linesOf(bash.output());
}

class PanelCompletionTest : public ::testing::Test {
protected:
    PanelFiles  files;
    std::string project = files.put("plant.toml", "[connection]\nhost = \"127.0.0.1\"\n"
                                                  "[tags]\n"
                                                  "Level = { type = \"DM\", address = 0, group = \"Press\" }\n"
                                                  "SetPoint = { type = \"DM\", address = 3, group = \"Tank\" }\n"
                                                  "[recipes.Lemonade.values]\nLevel = 1\n"
                                                  "[recipes.\"a $(touch evil) b\".values]\nLevel = 1\n");
};

} // namespace

TEST_F(PanelCompletionTest, Commands)
{
    EXPECT_EQ(offered({"wa"}), (Words{"watch", "wait"}));
    EXPECT_EQ(offered({"recipe", "w"}), Words{"write"});
    EXPECT_EQ(offered({"plc", "c"}), (Words{"clock", "cycle"}));
    EXPECT_EQ(offered({"--project", project, "ch"}), (Words{"check-project", "check"}));
    EXPECT_EQ(offered({"comp"}), Words{}); // is for the completion only
}

TEST_F(PanelCompletionTest, Options)
{
    EXPECT_EQ(offered({"read", "--wo"}), (Words{"--words-per-frame", "--word-order"}));
    EXPECT_EQ(offered({"--project", project, "watch", "--js"}), Words{"--json"});
    EXPECT_EQ(offered({"recipe", "write", "--tab"}), Words{"--table"});
    EXPECT_EQ(offered({"read", "-"}).front(), "-h");
    EXPECT_EQ(offered({"wait", "--a"}), Words{"--any"});
    EXPECT_EQ(offered({"wait", "-q", "--a"}), Words{"--any"});
}

TEST_F(PanelCompletionTest, ValuesOfOptions)
{
    EXPECT_EQ(offered({"read", "--word-order", ""}), (Words{"low", "high"}));
    EXPECT_EQ(offered({"read", "--as", "f"}), (Words{"f32", "f64"}));
    EXPECT_EQ(offered({"read", "--trace", "="}), (Words{"hex", "line", "full"}));
    EXPECT_EQ(offered({"read", "--trace", "=", "l"}), Words{"line"});
    EXPECT_EQ(offered({"read", "--timeout", ""}), Words{});
}

// Behind an option with a value comes the next argument; behind a flag too.
TEST_F(PanelCompletionTest, TagsOfTheProject)
{
    EXPECT_EQ(offered({"watch", "--project", project, ""}), (Words{"Level", "SetPoint"}));
    EXPECT_EQ(offered({"--project", project, "watch", "Se"}), Words{"SetPoint"});
    EXPECT_EQ(offered({"read", "--project", "=", project, "--timeout", "50", "--stats", "L"}), Words{"Level"});
    EXPECT_EQ(offered({"read", "L"}), Words{});
}

TEST_F(PanelCompletionTest, TagsToWrite)
{
    EXPECT_EQ(offered({"write", "--project", project, "L"}), Words{"Level="});
    EXPECT_EQ(offered({"watch", "--project", project, "--write", "L"}), Words{"Level="});
    EXPECT_EQ(offered({"write", "--project", project, "Level", "="}), Words{});
    EXPECT_EQ(offered({"write", "--project", project, "Level", "=", ""}), Words{});
}

TEST_F(PanelCompletionTest, TagsToWaitFor)
{
    EXPECT_EQ(offered({"wait", "-p", project, "L"}), Words{"Level"});
    EXPECT_EQ(offered({"wait", "-p", project, "Level", "="}), Words{});
}

TEST_F(PanelCompletionTest, GroupsOfTheProject)
{
    EXPECT_EQ(offered({"read", "-p", project, "--group", ""}), (Words{"Press", "Tank"}));
    EXPECT_EQ(offered({"watch", "--project", project, "--group", "T"}), Words{"Tank"});
    EXPECT_EQ(offered({"read", "--group", ""}), Words{});
}

TEST_F(PanelCompletionTest, FilesOfItems)
{
    EXPECT_EQ(offered({"read", "--items", project.substr(0, project.size() - 2)}), Words{project});
}

TEST_F(PanelCompletionTest, RecipesOfTheProject)
{
    EXPECT_EQ(offered({"recipe", "show", "--project", project, "Lem"}), Words{"Lemonade"});
    EXPECT_EQ(offered({"recipe", "show", "--project", project, "a"}), Words{"a $(touch evil) b"});
}

TEST_F(PanelCompletionTest, Files)
{
    EXPECT_EQ(offered({"check-project", project.substr(0, project.size() - 2)}), Words{project});
    EXPECT_EQ(offered({"read", "--project", project.substr(0, project.size() - 2)}), Words{project});
}

TEST_F(PanelCompletionTest, NothingOfAProjectThatIsBroken)
{
    const std::string broken = files.put("broken.toml", "[tags\n");
    EXPECT_EQ(offered({"watch", "--project", broken, ""}), Words{});
    EXPECT_EQ(offered({"watch", "--project", files.path("none.toml"), ""}), Words{});
}
