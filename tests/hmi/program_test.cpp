#include "support/process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

// The program fins_hmi: what it says and how it ends. It is told here whether there is a screen.

namespace {

enum class Screen { NONE, OFFSCREEN };

Process start(Screen screen, const std::vector<std::string> &words)
{
    std::vector<std::string> all = {"/usr/bin/env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "QT_QPA_PLATFORM",
                                    "XDG_RUNTIME_DIR=/tmp"};
    if (screen == Screen::OFFSCREEN)
        all.push_back("QT_QPA_PLATFORM=offscreen");
    all.push_back(FINS_HMI_PATH);
    all.insert(all.end(), words.begin(), words.end());
    return Process(all);
}

const char NO_SCREEN[] = "fins_hmi: there is no screen to show the panel on; start it on an X or Wayland desktop, or with "
                         "-platform linuxfb on a frame buffer\n";

// A mistake of every kind: a setting, a tag, a recipe. Screens are read once all of these are right.
const char BAD_TAGS[] = "[connection]\n"
                        "timeout_ms = 5\n"
                        "[tags]\n"
                        "Level = { type = \"DN\", address = 0 }\n"
                        "[recipes.Mix.values]\n"
                        "\"DM:99999\" = 1\n";

const char BAD_SCREENS[] = "[connection]\n"
                           "host = \"127.0.0.1:1\"\n"
                           "[tags]\n"
                           "Level = { type = \"DM\", address = 0 }\n"
                           "[screens.main]\n"
                           "elements = [{ type = \"number\", tag = \"Levle\", at = [9, 1] }]\n"
                           "[alarms.High]\n"
                           "tag = \"Level\"\n"
                           "text = \"x\"\n";

} // namespace

TEST(HmiProgram, SaysItsOptionsAndVersionWithoutAScreen)
{
    Process help = start(Screen::NONE, {"--help"});
    EXPECT_EQ(help.wait(), 0);
    EXPECT_NE(help.output().find("--full-screen"), std::string::npos);
    EXPECT_EQ(help.errors(), "");
    Process version = start(Screen::NONE, {"--version"});
    EXPECT_EQ(version.wait(), 0);
    EXPECT_EQ(version.output(), "fins_hmi " FINS_VERSION "\n");
}

TEST(HmiProgram, WithoutAScreenItSaysSo)
{
    Process hmi = start(Screen::NONE, {"127.0.0.1:1", "DM:0"});
    EXPECT_EQ(hmi.wait(), 2);
    EXPECT_EQ(hmi.errors(), NO_SCREEN);
}

TEST(HmiProgram, NothingToShowIsBadUsage)
{
    Process hmi = start(Screen::NONE, {"127.0.0.1:1"});
    EXPECT_EQ(hmi.wait(), 2);
    EXPECT_EQ(hmi.errors(), "fins_hmi: there is nothing to show of 127.0.0.1:1; name items, such as DM:0 or CIO_bit:0.0:3\n"
                                + std::string(NO_SCREEN));
}

TEST(HmiProgram, UnknownOptionIsBadUsage)
{
    Process hmi = start(Screen::NONE, {"--colour"});
    EXPECT_EQ(hmi.wait(), 2);
    EXPECT_EQ(hmi.errors().substr(0, 10), "fins_hmi: ");
    EXPECT_NE(hmi.errors().find("--help"), std::string::npos);
}

TEST(HmiProgram, TagsWithMistakesAreAllSaid)
{
    const TemporaryFolder folder;
    const std::string file = folder.put("bad.toml", BAD_TAGS);
    Process hmi = start(Screen::NONE, {"--project", file});
    EXPECT_EQ(hmi.wait(), 2);
    for (const char *place : {":2:14: ", ":4:18: ", ":6:1: "})
        EXPECT_NE(hmi.errors().find(file + place), std::string::npos) << place << " in\n" << hmi.errors();
}

TEST(HmiProgram, ScreensWithMistakesAreAllSaid)
{
    const TemporaryFolder folder;
    const std::string file = folder.put("bad.toml", BAD_SCREENS);
    Process hmi = start(Screen::NONE, {"--project", file});
    EXPECT_EQ(hmi.wait(), 2);
    for (const char *place : {":6:38: ", ":6:53: ", ":7:1: "})
        EXPECT_NE(hmi.errors().find(file + place), std::string::npos) << place << " in\n" << hmi.errors();
    EXPECT_NE(hmi.errors().find("did you mean"), std::string::npos) << hmi.errors();
}

TEST(HmiProgram, AWindowShowsTheMistakesAndTheEndIsTheSame)
{
    const TemporaryFolder folder;
    Process hmi = start(Screen::OFFSCREEN, {"--project", folder.put("bad.toml", BAD_SCREENS)});
    hmi.waitForErrorLine(":6:53: ");
    EXPECT_TRUE(hmi.isRunning());
    hmi.sendSignal(SIGTERM);
    EXPECT_EQ(hmi.wait(), 2);
}

TEST(HmiProgram, AMissingDriverIsSaid)
{
    Process hmi = start(Screen::NONE, {"127.0.0.1:1", "DM:0", "--library", "/nowhere/driver.so"});
    EXPECT_EQ(hmi.wait(), 2);
    EXPECT_NE(hmi.errors().find("/nowhere/driver.so"), std::string::npos) << hmi.errors();
}

TEST(HmiProgram, ASignalClosesTheWindow)
{
    Process plc({FINS_PLC_PATH, "--port", "0"});
    const std::string host = plc.readLine().substr(std::string("listening on ").size());
    Process hmi = start(Screen::OFFSCREEN, {host, "DM:0"});
    for (std::string answer; answer.find("clients=1") == std::string::npos && answer.substr(0, 4) != "ok 1";) {
        plc.writeLine("clients");
        answer = plc.readLine();
    }
    hmi.sendSignal(SIGTERM);
    EXPECT_EQ(hmi.wait(), 0);
    EXPECT_EQ(hmi.errors().find("fins_hmi"), std::string::npos) << hmi.errors();
}
