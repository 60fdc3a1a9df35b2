#include "panel_files.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

// fins_panel log: rows on the clock's grid, gaps, several PLCs, and what becomes of its file.

class PanelLogTest : public PanelTest {
protected:
    std::unique_ptr<Process> log(const Words &more) const { return startPanel(arguments("log -q", more)); }

    // Waits until the condition holds for what the file holds.
    template <typename Condition>
    std::string awaitContent(const std::string &name, Condition holds) const
    {
        const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
        std::string content = files.content(name);
        while (!holds(content) && Process::Clock::now() < deadline) {
            poll(nullptr, 0, 5);
            content = files.content(name);
        }
        EXPECT_TRUE(holds(content)) << content;
        return content;
    }

    static std::ptrdiff_t linesIn(const std::string &text) { return std::count(text.begin(), text.end(), '\n'); }

    PanelFiles files;
};

// The milliseconds of a time 2026-03-01T08:15:30.007Z within its minute.
static int millisOf(const std::string &row)
{
    return std::stoi(row.substr(17, 2)) * 1000 + std::stoi(row.substr(20, 3));
}

TEST_F(PanelLogTest, RowsAreAtWholeMultiplesOfThePeriod)
{
    start();
    ASSERT_EQ(tell("write DM:0 7"), "ok");
    const std::unique_ptr<Process> panel = log({"DM:0", "DM:5/s16", "--every", "50ms"});
    EXPECT_EQ(panel->readLine(), "time,DM:0,DM:0.quality,DM:5/s16,DM:5/s16.quality");
    std::string before;
    int good = 0;
    while (good < 10) {
        const std::string row = panel->readLine();
        EXPECT_EQ(millisOf(row) % 50, 0) << row;
        EXPECT_LT(before, row);
        const std::string values = row.substr(24);
        EXPECT_TRUE(values == ",,not connected,,not connected" || values == ",7,good,0,good") << row;
        good += values == ",7,good,0,good" ? 1 : 0;
        before = row;
    }
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelLogTest, APlcThatGoesAwayLeavesGapsWithTheirQuality)
{
    start();
    ASSERT_EQ(tell("write DM:0 7"), "ok");
    const std::unique_ptr<Process> panel = log({"DM:0", "--every", "20ms"});
    panel->waitForLine(",7,good");
    EXPECT_EQ(tell("quit"), "ok");
    EXPECT_EQ(plc->wait(), 0);
    const std::string gap = panel->waitForLine(",last known");
    EXPECT_EQ(gap.substr(24), ",,last known");
    startAgain();
    ASSERT_EQ(tell("write DM:0 8"), "ok");
    for (std::string row = panel->readLine(); row.substr(24) != ",8,good"; row = panel->readLine())
        EXPECT_TRUE(row.substr(24) == ",,last known" || row.substr(24) == ",0,good") << row;
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelLogTest, OneProcessLogsAllPlcsOfAProject)
{
    start();
    ASSERT_EQ(tell("write DM:0 7"), "ok");
    const HeldPort otherPort;
    const std::string otherHost = otherPort.host();
    Process other({FINS_PLC_PATH, "--port", std::to_string(otherPort.number())});
    EXPECT_EQ(other.readLine(), "listening on " + otherHost);
    other.writeLine("write DM:0 16320"); // 3FC0 in hex
    EXPECT_EQ(other.readLine(), "ok");
    const std::string file = files.put(
        "plant.toml", "[defaults]\nword_order = \"high\"\n[plc.press]\nhost = \"" + host()
                          + "\"\n[plc.press.tags]\nLevel = { type = \"DM\", address = 0, scale = 0.5 }\n[plc.oven]\nhost = \""
                          + otherHost + "\"\n[plc.oven.tags]\nHeat = { type = \"DM\", address = 0, data = \"f32\" }\n");
    const std::unique_ptr<Process> panel = startPanel({"log", "-q", "-p", file, "--every", "20ms"});
    EXPECT_EQ(panel->readLine(), "time,press.Level,press.Level.quality,oven.Heat,oven.Heat.quality");
    panel->waitForLine(",3.5,good,1.5,good");
    EXPECT_EQ(interrupt(*panel), 0);
    // An item without a tag has the project's order, too: 3FC0 0000 is 1.5 with the high word first.
    const std::unique_ptr<Process> items =
        startPanel({"log", "-q", "-p", file, "oven.DM:0/f32", "--every", "20ms", "--influx"});
    const std::string line = items->waitForLine("value=");
    EXPECT_EQ(line.substr(0, line.rfind(' ')), "fins,plc=oven,tag=DM:0/f32-high value=1.5,quality=\"good\"");
    EXPECT_EQ(interrupt(*items), 0);
    // One PLC that is not there does not end what the other one gives.
    other.writeLine("quit");
    EXPECT_EQ(other.wait(), 0);
    const PanelRun run = runPanel({"log", "-q", "-p", file, "--every", "20ms", "--for", "2"});
    EXPECT_EQ(run.code, 3);
    EXPECT_NE(run.out.find(",3.5,good,,not connected\n"), std::string::npos);
    EXPECT_NE(run.err.find("fins_panel: no answer from oven at " + otherHost), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("press"), std::string::npos) << run.err;
}

// The rows of one exchange tell of the second tag alone: the change of the first one is smaller than its dead band.
TEST_F(PanelLogTest, ChangesReachTheDeadBandOfTheirTag)
{
    start();
    const std::string file = files.put("p.toml", "[connection]\nhost = \"" + host() + "\"\n[tags]\n"
                                                 "Level = { type = \"DM\", address = 0, scale = 0.1, deadband = 0.5 }\n"
                                                 "Pump = { type = \"DM\", address = 1 }\n");
    const std::unique_ptr<Process> panel = startPanel({"log", "-q", "-p", file, "--on-change", "--json"});
    const auto next = [&] { return panel->readLine().substr(std::string(R"({"time":"2026-03-01T08:15:30.007Z","values":)").size()); };
    EXPECT_EQ(next(), R"({"Level":{"value":null,"quality":"not connected"},"Pump":{"value":null,"quality":"not connected"}}})");
    EXPECT_EQ(next(), R"({"Level":{"value":0,"quality":"good"},"Pump":{"value":0,"quality":"good"}}})");
    ASSERT_EQ(tell("write DM:0 4 1"), "ok");
    EXPECT_EQ(next(), R"({"Pump":{"value":1,"quality":"good"}}})");
    ASSERT_EQ(tell("write DM:0 5"), "ok");
    EXPECT_EQ(next(), R"({"Level":{"value":0.5,"quality":"good"}}})");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelLogTest, EveryLineIsWholeAfterAKill)
{
    start();
    const std::string file = files.path("log.csv");
    for (int run = 1; run <= 3; ++run) {
        const std::unique_ptr<Process> panel = log({"DM:0:200", "--every", "10ms", "--output", file});
        awaitContent("log.csv", [&](const std::string &text) { return linesIn(text) > 20 * run; });
        panel->sendSignal(SIGKILL);
        EXPECT_EQ(panel->wait(), -SIGKILL);
    }
    const std::string content = files.content("log.csv");
    EXPECT_EQ(content.back(), '\n');
    int headings = 0;
    for (const std::string &line : linesOf(content)) {
        EXPECT_EQ(std::count(line.begin(), line.end(), ','), 400) << line;
        headings += line.find("time,") == 0 ? 1 : 0;
    }
    EXPECT_EQ(headings, 1);
}

// The limit of the size of files stands for a disk that is full; there is room again when the file is emptied.
TEST_F(PanelLogTest, AFullDiskIsSaidAndTheLogGoesOn)
{
    start();
    const std::size_t limit = 8388608; // the private copy of the driver has room in it
    const std::string file  = files.put("log.jsonl", std::string(limit - 300, 'x') + "\n");
    Process panel({"/bin/sh", "-c", "ulimit -f 16384; exec \"$0\" \"$@\"", FINS_PANEL_PATH, "log", "-q", host(), "DM:0",
                   "--every", "10ms", "--json", "--output", file});
    EXPECT_EQ(panel.waitForErrorLine("cannot"),
              "fins_panel: " + file + " cannot be written: File too large; rows are lost until it can");
    EXPECT_EQ(files.content("log.jsonl").back(), '\n');
    std::filesystem::resize_file(file, 0);
    const std::string again = panel.waitForErrorLine("again");
    EXPECT_EQ(again.find("fins_panel: " + file + " is written again; "), 0u) << again;
    panel.sendSignal(SIGINT);
    EXPECT_EQ(panel.wait(), 1); // rows were lost
    EXPECT_EQ(files.content("log.jsonl").find("{\"time\":"), 0u);
}

TEST_F(PanelLogTest, WhatDoesNotGoTogetherIsRefused)
{
    const std::string file = files.put("plant.toml", "[plc.press]\nhost = \"192.0.2.1\"\n[plc.oven]\nhost = \"192.0.2.2\"\n");
    const std::string help = "; see fins_panel --help";
    expectRefused({"log", "192.0.2.1", "DM:0", "--every", "1"},
                  "fins_panel: --every: '1' is not a time such as 100ms, 5s, 1min, 1h or 1d" + help);
    expectRefused({"log", "192.0.2.1", "DM:0", "--every", "1s", "--on-change"},
                  "fins_panel: --every excludes --on-change" + help);
    expectRefused({"log", "192.0.2.1"}, "fins_panel: items is required" + help);
    expectRefused({"log", "-p", file}, "fins_panel: items is required" + help);
    expectRefused({"log", "-p", file, "pres.DM:0"},
                  "fins_panel: 'pres.DM:0' does not begin with the name of a PLC (did you mean 'press.DM:0'?); the PLCs are "
                  "press, oven, write press.DM:100 for an item of one");
    expectRefused({"log", "-p", file, "press.DM:0", "--host", "192.0.2.3"},
                  "fins_panel: --host is for one PLC, and " + file + " has several; choose one with --plc");
    expectRefused({"log", "192.0.2.1", "DM:0", "--output", files.path("none/log.csv")},
                  "fins_panel: " + files.path("none/log.csv") + ": No such file or directory");
}
