#include "panel_files.h"

#include <algorithm>
#include <set>
#include <sys/stat.h>

// Project files: tags and settings in every command, and the check of the file.

class PanelProjectTest : public PanelTest {
protected:
    // A project for the running simulator.
    std::string project(const std::string &more = "") const
    {
        return files.put("plant.toml", "[connection]\nhost = \"" + host() + "\"\n" + more +
                                           "[tags]\n"
                                           "Level = { type = \"DM\", address = 0, data = \"s16\", scale = 0.1, "
                                           "decimals = 1, unit = \"%\" }\n"
                                           "Pump = { type = \"CIO_bit\", address = \"0.0\" }\n"
                                           "Sum = { type = \"DM\", address = 10, count = 2, data = \"u32\" }\n");
    }

    PanelFiles files;
};

TEST_F(PanelProjectTest, TagsAreReadAndWritten)
{
    start();
    const std::string file = project();
    const PanelRun write = runPanel({"write", "--project", file, "Level=-12.3", "Pump=1", "Sum=1,65536", "DM:5=7"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "Level = -12.3 %\nPump = 1\nSum = 1 65536\nDM:5 = 7\n");
    EXPECT_EQ(tell("read DM:0"), "ok 65413");
    EXPECT_EQ(tell("read DM:10:4"), "ok 1 0 0 1");
    const PanelRun read = runPanel({"--project", file, "read", "Level", "Level/hex", "DM:5", "Pump"});
    EXPECT_EQ(read.code, 0);
    EXPECT_EQ(read.out, "Level = -12.3 %\nLevel/hex = 0xFF85\nDM:5 = 7\nPump = 1\n");
    EXPECT_EQ(read.err, connectedLine());
    EXPECT_EQ(runPanel({"check", "--project", file, "Level", "Sum/hex"}).out, "Level valid\nSum/hex valid\n");
}

TEST_F(PanelProjectTest, NamesInWatch)
{
    start();
    ASSERT_EQ(tell("write DM:0 503"), "ok");
    const std::unique_ptr<Process> panel = startPanel({"watch", "--project", project(), "Level"});
    EXPECT_EQ(nextChange(*panel), "Level - 50.3");
    ASSERT_EQ(tell("write DM:0 504"), "ok");
    EXPECT_EQ(nextChange(*panel), "Level 50.3 50.4");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelProjectTest, AnotherPlcThanTheProjects)
{
    start();
    const std::string file = files.put("other.toml", "[connection]\nhost = \"192.0.2.1\"\n"
                                                     "[tags]\nA = { type = \"DM\", address = 0 }\n");
    EXPECT_EQ(runPanel({"read", "--project", file, "--host", host(), "A"}).out, "A = 0\n");
    const std::string without = files.put("none.toml", "[tags]\nA = { type = \"DM\", address = 0 }\n");
    EXPECT_EQ(runPanel({"read", "--project", without, host(), "A"}).out, "A = 0\n");
    EXPECT_EQ(runPanel({"read", "--host", host(), "DM:0"}).out, "DM:0 = 0\n");
    expectRefused({"read", "--project", without}, "fins_panel: host is required; see fins_panel --help");
    expectRefused({"write", "--project", file}, "fins_panel: items is required; see fins_panel --help");
}

TEST_F(PanelProjectTest, SettingsCountUnlessTheirOptionIsGiven)
{
    start({"--trace"});
    const std::string file = project("[driver]\nwords_per_frame = 2\n");
    EXPECT_EQ(runPanel({"read", "--project", file, "DM:20:4"}).code, 0);
    EXPECT_EQ(runPanel({"read", "--project", file, "DM:20:4", "--words-per-frame", "4"}).code, 0);
    const std::map<int, Words> received = endAndCollect();
    ASSERT_EQ(received.at(1).size(), 3u);
    const std::set<std::string> blocks = {commandOf(received.at(1)[1]), commandOf(received.at(1)[2])};
    EXPECT_EQ(blocks, (std::set<std::string>{plainHex("0101 82 0014 00 0002"), plainHex("0101 82 0016 00 0002")}));
    ASSERT_EQ(received.at(2).size(), 2u);
    EXPECT_EQ(commandOf(received.at(2)[1]), plainHex("0101 82 0014 00 0004"));
}

TEST_F(PanelProjectTest, UnknownNamesAreRefused)
{
    start();
    const std::string file = project();
    expectRefused({"read", "--project", file, "Levl"},
                  "fins_panel: 'Levl' is neither a tag of " + file +
                      " nor an item; write a tag's name, or TYPE:ADDRESS such as DM:100:2 (did you mean 'Level'?)");
    expectRefused({"write", "--project", file, "Level=3276.8"},
                  "fins_panel: 'Level=3276.8' does not fit s16; use a number from -3276.8 to 3276.7");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

// Whatever way the value takes, nothing is sent.
TEST_F(PanelProjectTest, LimitsAndRightsOfTags)
{
    start();
    const std::string file = files.put(
        "limits.toml", "[connection]\nhost = \"" + host() + "\"\n[tags]\n"
                       "SetPoint = { type = \"DM\", address = 3, scale = 0.1, unit = \"%\", min = 0, max = 100 }\n"
                       "Level = { type = \"DM\", address = 0, access = \"r\" }\n");
    const std::string above = "'SetPoint=5000' is above the tag's max of 100 %; write a value from 0 to 100 %";
    const std::string right = "'Level' can only be read: the access of the tag is r";
    expectRefused({"write", "--project", file, "DM:9=1", "SetPoint=5000"}, "fins_panel: " + above);
    expectRefused({"write", "--project", file, "Level=5"}, "fins_panel: " + right);
    expectRefused({"watch", "--project", file, "Level", "--write", "SetPoint=5000"}, "fins_panel: " + above);
    expectRefused({"watch", "--project", file, "Level", "--write", "Level=5"}, "fins_panel: " + right);
    const std::string recipe = files.put("mix.txt", "SetPoint = 5000\n");
    expectRefused({"recipe", "write", "--project", file, recipe}, "fins_panel: " + recipe + ":1: " + above);
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
    EXPECT_EQ(runPanel({"write", "--project", file, "SetPoint=100"}).out, "SetPoint = 100 %\n");
    EXPECT_EQ(runPanel({"read", "--project", file, "Level"}).out, "Level = 0\n");
}

TEST(PanelCheckProjectTest, AValidProject)
{
    const PanelFiles files;
    const std::string file = files.put("p.toml", "tags = \"tags.csv\"\n[recipes.A.values]\nLevel = 5\n");
    files.put("tags.csv", "name,type,address\nLevel,DM,0\nPump,CIO_bit,0.5\n");
    const PanelRun check = runPanel({"check-project", file});
    EXPECT_EQ(check.code, 0);
    EXPECT_EQ(check.out, file + " valid: 2 tags, 1 recipe\n");
    EXPECT_EQ(check.err, "");
}

TEST(PanelCheckProjectTest, ScreensAndAlarmsWhereThereAreAny)
{
    const PanelFiles files;
    const std::string tags = "[tags]\nLevel = { type = \"DM\", address = 0, data = \"s16\", min = 0, max = 100 }\n"
                             "Pump = { type = \"CIO_bit\", address = \"0.0\", access = \"r\" }\n"
                             "[recipes.Mix.values]\nLevel = 5\n";
    const std::string screens = "[screens.tank]\nelements = [\n"
                                "{ type = \"bar\", tag = \"Level\", at = [1, 1], size = [1, 3] },\n"
                                "{ type = \"recipe\", recipe = \"Mix\", at = [2, 1] },\n"
                                "{ type = \"screen\", screen = \"oven\", at = [3, 1] }]\n"
                                "[screens.oven]\nelements = [{ type = \"lamp\", tag = \"Pump\", at = [1, 1] }]\n";
    const std::string alarms = "[alarms.High]\ntag = \"Level\"\nhigh = 90\ntext = \"high\"\n";
    EXPECT_EQ(runPanel({"check-project", files.put("a.toml", tags + screens)}).out,
              files.path("a.toml") + " valid: 2 tags, 1 recipe, 2 screens\n");
    EXPECT_EQ(runPanel({"check-project", files.put("b.toml", tags + alarms)}).out,
              files.path("b.toml") + " valid: 2 tags, 1 recipe, 1 alarm\n");
    EXPECT_EQ(runPanel({"check-project", files.put("c.toml", tags + screens + alarms)}).out,
              files.path("c.toml") + " valid: 2 tags, 1 recipe, 2 screens, 1 alarm\n");
}

TEST(PanelCheckProjectTest, EveryErrorOfScreensAndAlarmsOnce)
{
    const PanelFiles files;
    const std::string file = files.put("p.toml", "tags = \"tags.csv\"\n"
                                                 "[screens.tank]\n"
                                                 "elements = [{ type = \"set-point\", tag = \"Level\", at = [9, 1] },\n"
                                                 "  { type = \"number\", tag = \"Pump\", at = [1, 1] },\n"
                                                 "  { type = \"recipe\", recipe = \"Mix\", at = [1, 1] }]\n"
                                                 "[recipes]\n"
                                                 "Mix = 5\n"
                                                 "[alarms]\n"
                                                 "High = 90\n");
    const std::string csv = files.put("tags.csv", "name,type,address,access\nLevel,DM,0,r\nPump,CIO_bit,0.16,\n");
    const PanelRun check = runPanel({"check-project", file});
    EXPECT_EQ(check.code, 2);
    EXPECT_EQ(check.out, "");
    EXPECT_EQ(check.err,
              file + ":3:41: 'Level' can only be read: the access of the tag is r, and a set-point writes it; name another "
                     "tag\n" +
                  file + ":3:56: column 9 lies outside of the grid, which has columns 1 to 8\n" +
                  file + ":5:43: this element overlaps the one of line 4, column 3; move one, or make it smaller\n" +
                  file + ":7:1: the recipe 'Mix' is not a table; begin it with a line [recipes.Mix]\n" +
                  file + ":9:1: the alarm 'High' is not a table; begin it with a line [alarms.High]\n" +
                  csv + ":3:14: 'CIO_bit:0.16': the address is malformed; the range is 0.0 to 6143.15, written ddddd.DD "
                        "(DD:0~15)\n");
}

// What is no table, or no TOML, is told by who reads the file as a whole.
TEST(PanelCheckProjectTest, ScreensThatAreNoTableAreReportedOnce)
{
    const PanelFiles files;
    const std::string file = files.put("p.toml", "screens = 5\nalarms = \"a\"\n");
    EXPECT_EQ(runPanel({"check-project", file}).err,
              file + ":1:11: 'screens' is not a table; begin it with a line [screens]\n" +
                  file + ":2:10: 'alarms' is not a table; begin it with a line [alarms]\n");
    const PanelRun broken = runPanel({"check-project", files.put("p.toml", "screens = = 5\n")});
    EXPECT_EQ(broken.code, 2);
    EXPECT_EQ(std::count(broken.err.begin(), broken.err.end(), '\n'), 1) << broken.err;
}

// They are of a graphical panel: a command line needs the tags alone.
TEST_F(PanelProjectTest, OtherCommandsPassOverScreensAndAlarms)
{
    start();
    const std::string file = files.put("s.toml", "[tags]\nLevel = { type = \"DM\", address = 0 }\n"
                                                 "[screens.tank]\nelements = [7]\n[alarms.High]\n");
    EXPECT_EQ(runPanel({"read", "--project", file, "--host", host(), "Level"}).out, "Level = 0\n");
    EXPECT_EQ(runPanel({"check-project", file}).code, 2);
}

TEST(PanelCheckProjectTest, EveryErrorWithItsPlace)
{
    const PanelFiles files;
    const std::string csv  = files.path("tags.csv");
    const std::string file = files.put("p.toml", "tags = \"tags.csv\"\n"
                                                 "[driver]\n"
                                                 "retries = 0\n"
                                                 "[recipes.A.values]\n"
                                                 "\"DM:99999\" = 1\n");
    files.put("tags.csv", "name,type,address\nLevel,DM,32768\nPump,CIO_bit,0.16\n");
    const PanelRun check = runPanel({"check-project", file});
    EXPECT_EQ(check.code, 2);
    EXPECT_EQ(check.out, "");
    EXPECT_EQ(check.err,
              file + ":3:11: 'retries' is not a whole number from 1 to 100\n" +
                  file + ":5:1: 'DM:99999' lies outside the range 0 to 32767, written ddddd\n" +
                  csv + ":2:10: 'DM:32768' lies outside the range 0 to 32767, written ddddd\n" +
                  csv + ":3:14: 'CIO_bit:0.16': the address is malformed; the range is 0.0 to 6143.15, written "
                        "ddddd.DD (DD:0~15)\n");
    expectRefused({"read", "--project", file, "DM:0"},
                  "fins_panel: " + file + ":3:11: 'retries' is not a whole number from 1 to 100 (and 3 more; see "
                                          "fins_panel check-project " + file + ")");
}

TEST(PanelCheckProjectTest, AModeChangeIsAllowedOrNot)
{
    const PanelFiles files;
    for (const char *value : {"true", "false"}) {
        const std::string file = files.put("p.toml", std::string("[driver]\nallow_mode_change = ") + value + "\n");
        EXPECT_EQ(runPanel({"check-project", file}).out, file + " valid: 0 tags, 0 recipes\n");
    }
    for (const char *value : {"\"true\"", "1", "[true]"}) {
        const std::string file = files.put("p.toml", std::string("[driver]\nallow_mode_change = ") + value + "\n");
        const PanelRun check = runPanel({"check-project", file});
        EXPECT_EQ(check.code, 2) << value;
        EXPECT_EQ(check.err, file + ":2:21: 'allow_mode_change' is neither true nor false, without quotes\n");
    }
}

TEST(PanelCheckProjectTest, FilesThatAreNone)
{
    const PanelFiles files;
    const std::string none = files.path("none.toml");
    expectRefused({"check-project", none}, "fins_panel: " + none + ": No such file or directory");
    expectRefused({"read", "--project", none, "A"}, "fins_panel: " + none + ": No such file or directory");
    const std::string broken = files.put("broken.toml", "[tags\n");
    const PanelRun check = runPanel({"check-project", broken});
    EXPECT_EQ(check.code, 2);
    EXPECT_EQ(check.err.find(broken + ":1:6: this is not TOML: "), 0u) << check.err;
    EXPECT_EQ(linesOf(check.err).size(), 1u);
}

TEST(PanelImportTagsTest, CsvBecomesToml)
{
    const PanelFiles files;
    const std::string csv = files.put("tags.csv", "name,type,address,data,scale,unit,comment\r\n"
                                                  "Level,DM,0,s16,0.1,%,\"level, \"\"upper\"\"\"\r\n"
                                                  "Pump,CIO_bit,0.10,,,,\r\n");
    const std::string toml = "[tags]\n"
                             "Level = { type = \"DM\", address = 0, data = \"s16\", scale = 0.1, unit = \"%\", "
                             "comment = \"level, \\\"upper\\\"\" }\n"
                             "Pump = { type = \"CIO_bit\", address = \"0.10\" }\n";
    const PanelRun shown = runPanel({"import-tags", csv});
    EXPECT_EQ(shown.code, 0);
    EXPECT_EQ(shown.out, toml);
    EXPECT_EQ(runPanel({"import-tags", csv, "--output", files.path("out.toml")}).code, 0);
    EXPECT_EQ(files.content("out.toml"), toml);
    EXPECT_EQ(runPanel({"check-project", files.path("out.toml")}).out,
              files.path("out.toml") + " valid: 2 tags, 0 recipes\n");
    expectRefused({"import-tags", csv, "--output", files.path("none/out.toml")},
                  "fins_panel: " + files.path("none/out.toml") + ": cannot be written: No such file or directory");
    expectRefused({"import-tags", csv, "--output", csv},
                  "fins_panel: " + csv + ": --output would replace a file that is read from; name another one");
    EXPECT_EQ(files.content("tags.csv").substr(0, 9), "name,type");
}

// Each is refused in one line, whatever it would take to read it.
TEST(PanelImportTagsTest, FilesThatNeverEnd)
{
    const PanelFiles files;
    for (const char *command : {"import-tags", "check-project"})
        expectRefused({command, "/dev/zero"}, "fins_panel: /dev/zero: is not a regular file; name a file of text");
    const std::string pipe = files.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    expectRefused({"import-tags", pipe}, "fins_panel: " + pipe + ": is not a regular file; name a file of text");
    const std::string commas = files.put("commas.csv", std::string(3000000, ','));
    expectRefused({"import-tags", commas}, "fins_panel: " + commas + ": is larger than 2048 KiB; use smaller files");
    const PanelRun columns = runPanel({"import-tags", files.put("columns.csv", std::string(120000, ',') + "\n")});
    EXPECT_EQ(columns.code, 2);
    EXPECT_EQ(columns.err, files.path("columns.csv") +
                               ":1:65: the header has more than 64 columns; name each that is needed once\n");
}

TEST(PanelImportTagsTest, EveryErrorWithItsLine)
{
    const PanelFiles files;
    const std::string csv = files.put("tags.csv", "name,type,address\nA,DM,x\nB,DM\nA b,DM,1\n");
    const PanelRun import = runPanel({"import-tags", csv, "--output", files.path("out.toml")});
    EXPECT_EQ(import.code, 2);
    EXPECT_EQ(import.out, "");
    EXPECT_EQ(import.err,
              csv + ":2:6: 'DM:x': the address is malformed; the range is 0 to 32767, written ddddd\n" +
                  csv + ":3:1: the record has 2 fields, and the header 3; write one field for each column\n" +
                  csv + ":4:1: 'A b' is not a name; use letters, digits, _ . and -, a letter first\n");
    EXPECT_EQ(files.content("out.toml"), "");
}
