#include "panel_files.h"

#include <algorithm>

// What the command line takes, what it says of what it does not take, and its help.

namespace {

Words joined(Words words, const Words &more)
{
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

// The sub-commands that a help text lists.
Words commandsIn(const std::string &help)
{
    const std::regex form("  ([a-z-]+) .*");
    Words commands;
    const Words lines = linesOf(help);
    for (auto line = std::find(lines.begin(), lines.end(), "Subcommands:"); line != lines.end() && !line->empty();
         ++line) {
        std::smatch match;
        if (std::regex_match(*line, match, form))
            commands.push_back(match[1]);
    }
    return commands;
}

// Every command with its words.
std::vector<Words> allCommands()
{
    std::vector<Words> commands = {{}};
    for (const std::string &command : commandsIn(runPanel({"--help"}).out)) {
        commands.push_back({command});
        for (const std::string &child : commandsIn(runPanel({command, "--help"}).out))
            commands.push_back({command, child});
    }
    return commands;
}

} // namespace

// ---- Numbers -----------------------------------------------------------------------------------------------------

// strtod takes all of them but the empty one and those with something behind.
TEST(PanelNumbers, AreFiniteAndNothingElse)
{
    const struct {
        Words       arguments;
        std::string option;
        std::string range;
    } rows[] = {
        {{"check", "DM:0"}, "--scale", "-1e+15 to 1e+15, not 0"},
        {{"check", "DM:0"}, "--offset", "-1e+15 to 1e+15"},
        {{"watch", "127.0.0.1:1", "DM:0"}, "--for", "0.001 to 1000000000 seconds"},
        {{"watch", "127.0.0.1:1", "DM:0"}, "--retry-refused", "0.01 to 86400 seconds"},
        {{"read", "127.0.0.1:1", "DM:0"}, "--give-up", "0.1 to 86400 seconds"},
        {{"bench", "127.0.0.1:1"}, "--for", "0.01 to 3600 seconds"},
    };
    for (const auto &row : rows) {
        for (const char *bad : {"nan", "inf", "-inf", "1e400", "1e-400", "0x1p3", "", "1s", "1 ", " 1", "1,5", "1e16"})
            expectRefused(joined(row.arguments, {row.option, bad}),
                          "fins_panel: " + row.option + ": '" + bad + "' is not a number from " + row.range +
                              "; see fins_panel --help");
    }
    expectRefused({"check", "DM:0", "--scale", "0"},
                  "fins_panel: --scale: '0' is not a number from -1e+15 to 1e+15, not 0; see fins_panel --help");
}

TEST(PanelNumbers, AreWholeWhereTheyCount)
{
    const struct {
        Words       arguments;
        std::string option;
        std::string range;
    } rows[] = {
        {{"read", "127.0.0.1:1", "DM:0"}, "--timeout", "10 to 60000 ms"},
        {{"read", "127.0.0.1:1", "DM:0"}, "--words-per-frame", "1 to 999 words"},
        {{"write", "127.0.0.1:1", "DM:0=1"}, "--words-per-frame", "1 to 114 words"},
        {{"read", "127.0.0.1:1", "DM:0"}, "--retries", "1 to 100"},
        {{"read", "127.0.0.1:1", "DM:0"}, "--station", "0 to 255"},
        {{"watch", "127.0.0.1:1", "DM:0"}, "--interval", "0 to 60000 ms"},
        {{"watch", "127.0.0.1:1", "DM:0"}, "--changes", "1 to 1000000000"},
        {{"link", "127.0.0.1:1"}, "--count", "1 to 1000000"},
        {{"bench", "127.0.0.1:1"}, "--words", "1 to 10000 words"},
        {{"check", "DM:0"}, "--decimals", "0 to 9"},
        {{"copies", "DM:0", "1"}, "--step", "1 to 100000"},
    };
    for (const auto &row : rows) {
        for (const char *bad : {"nan", "inf", "20.5", "1e1", "", "20x", "99999999999999999999", "-1"})
            expectRefused(joined(row.arguments, {row.option, bad}),
                          "fins_panel: " + row.option + ": '" + bad + "' is not a whole number from " + row.range +
                              "; see fins_panel --help");
    }
    for (const char *bad : {"8,,16", "8,x", "1000", ""}) {
        const PanelRun run = runPanel({"bench", "127.0.0.1:1", "--sizes", bad});
        EXPECT_EQ(run.code, 2) << bad;
        EXPECT_EQ(run.err.find("fins_panel: --sizes: '"), 0u) << run.err;
        EXPECT_NE(run.err.find("' is not a whole number from 1 to 999 words; see fins_panel --help\n"),
                  std::string::npos) << run.err;
    }
}

TEST(PanelNumbers, ReachTheEndsOfTheirRanges)
{
    for (const Words &ends : {Words{"--scale", "-1e15"}, Words{"--scale", "1e15"}, Words{"--offset", "-1e15"},
                              Words{"--offset", "-40"}, Words{"--scale", "0.1"}, Words{"--decimals", "9"},
                              Words{"--decimals", "0"}})
        EXPECT_EQ(runPanel(joined({"check", "DM:0"}, ends)).out, "DM:0 valid\n") << ends[0] << ends[1];
    EXPECT_EQ(runPanel({"copies", "DM:0", "1", "--step", "100000"}).out, "DM:0\n");
}

// ---- What is not known -------------------------------------------------------------------------------------------

TEST(PanelUnknown, Commands)
{
    const std::string all = "; the commands are link, watch, read, write, wait, log, recipe, plc, publish, check-project, "
                            "import-tags, bench, check, types, copies; see fins_panel --help";
    expectRefused({"wach"}, "fins_panel: there is no command 'wach' (did you mean 'watch'?); see fins_panel --help");
    expectRefused({"raed", "127.0.0.1:1", "DM:0"},
                  "fins_panel: there is no command 'raed' (did you mean 'read'?); see fins_panel --help");
    expectRefused({"look"}, "fins_panel: there is no command 'look'" + all);
    expectRefused({}, "fins_panel: a command is missing" + all);
    expectRefused({"recipe", "wrte", "127.0.0.1:1", "file"},
                  "fins_panel: there is no command 'recipe wrte' (did you mean 'recipe write'?); see fins_panel --help");
    expectRefused({"recipe"}, "fins_panel: a command is missing; the commands of recipe are read, write, compare, list, "
                              "show; see fins_panel --help");
}

TEST(PanelUnknown, Options)
{
    const std::string meant = "fins_panel: there is no option '--tiemout' (did you mean '--timeout'?); see "
                              "fins_panel --help";
    expectRefused({"read", "127.0.0.1:1", "DM:0", "--tiemout", "5"}, meant);
    expectRefused({"recipe", "read", "127.0.0.1:1", "file", "--tiemout=5"}, meant);
    expectRefused({"--projct", "file", "read"},
                  "fins_panel: there is no option '--projct' (did you mean '--project'?); see fins_panel --help");
    expectRefused({"--speed"}, "fins_panel: there is no option '--speed'; see fins_panel --help");
}

TEST(PanelUnknown, ProjectThatIsGivenTwice)
{
    expectRefused({"--project", "a.toml", "read", "--project", "b.toml", "A"},
                  "fins_panel: --project is given twice; leave one out");
    expectRefused({"--host", "a", "read", "--host", "b", "DM:0"},
                  "fins_panel: --host is given twice; leave one out");
}

// ---- The help ----------------------------------------------------------------------------------------------------

TEST(PanelHelp, FitsEightyColumns)
{
    std::vector<Words> commands = allCommands();
    ASSERT_EQ(commands.size(), 26u); // without a command, fifteen, five of recipe and five of plc
    for (Words &command : commands)
        command.push_back("--help");
    commands.push_back({"--help-all"});
    for (const Words &command : commands) {
        const PanelRun run = runPanel(command);
        EXPECT_EQ(run.code, 0);
        for (const std::string &line : linesOf(run.out))
            EXPECT_LE(line.size(), 80u) << line;
    }
}

TEST(PanelHelp, NamesProjectAndHostWhereTheyCount)
{
    const Words neither = {"check-project", "import-tags", "types", "copies", "recipe", "plc"};
    const Words onlyProject = {"check", "list", "show"};
    for (const Words &command : allCommands()) {
        const std::string name = command.empty() ? "" : command.back();
        const std::string help = runPanel(joined(command, {"--help"})).out;
        const bool takesProject = std::find(neither.begin(), neither.end(), name) == neither.end();
        const bool takesHost = takesProject && std::find(onlyProject.begin(), onlyProject.end(), name) == onlyProject.end();
        EXPECT_EQ(help.find("\n  -p,--project FILE ") != std::string::npos, takesProject) << name;
        EXPECT_EQ(help.find("\n  --host HOST ") != std::string::npos, takesHost) << name;
    }
}

TEST(PanelHelp, OfAllCommandsHasThoseOfRecipe)
{
    const std::string help = runPanel({"--help-all"}).out;
    for (const char *heading : {"\nrecipe read\n", "\nrecipe write\n", "\nrecipe list\n", "\nwatch\n", "\ncopies\n"})
        EXPECT_NE(help.find(heading), std::string::npos) << heading;
    EXPECT_NE(help.find("\n    --table "), std::string::npos);
    EXPECT_EQ(help.find("\ncomplete\n"), std::string::npos);
}

TEST(PanelHelp, SaysUnitRangeAndDefault)
{
    const std::string help = runPanel({"read", "--help"}).out;
    EXPECT_NE(help.find("\n  --timeout MS                deadline to connect, to send and for a reply; 10\n"
                        "                              to 60000 ms, default 1000\n"), std::string::npos) << help;
    EXPECT_NE(help.find("\n  --decimals NUMBER           digits behind the point; as many as needed by\n"
                        "                              default; 0 to 9\n"), std::string::npos) << help;
}

// Three consents, none of which is given unless it is asked for.
TEST(PanelHelp, NamesTheConsentsWhereTheyCount)
{
    const struct {
        Words command;
        bool  modeChange, keepGoing, confirm;
    } rows[] = {
        {{"write"}, true, true, true},           {{"watch"}, true, true, false},
        {{"recipe", "write"}, true, false, true}, {{"read"}, false, false, false},
        {{"recipe", "read"}, false, false, false},
    };
    for (const auto &row : rows) {
        const std::string help = runPanel(joined(row.command, {"--help"})).out;
        EXPECT_EQ(help.find("\n  --allow-mode-change ") != std::string::npos, row.modeChange) << row.command.back();
        EXPECT_EQ(help.find("\n  --keep-going ") != std::string::npos, row.keepGoing) << row.command.back();
        EXPECT_EQ(help.find("\n  --confirm ") != std::string::npos, row.confirm) << row.command.back();
        EXPECT_NE(help.find("Only --allow-mode-change and 'plc mode' change the\nPLC's operating mode."),
                  std::string::npos) << help;
    }
}
