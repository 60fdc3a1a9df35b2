#ifndef TESTS_E2E_PANEL_PLANT_RUN_H
#define TESTS_E2E_PANEL_PLANT_RUN_H

#include "panel_files.h"

// Runs of commands that work with both PLCs of a project: a press and an oven.
class PanelPlantOfTwoTest : public PanelTest {
protected:
    void SetUp() override
    {
        start();
        const std::string listening = "listening on ";
        press = std::make_unique<Process>(Words{FINS_PLC_PATH, "--port", "0"});
        const std::string line = press->readLine();
        ASSERT_EQ(line.find(listening), 0U);
        pressHost = line.substr(listening.size());
        ASSERT_EQ(tellPress("write DM:0 5"), "ok");
        ASSERT_EQ(tell("write DM:0 7"), "ok");
        const std::string tags = ".tags]\nLevel = { type = \"DM\", address = 0, unit = \"%\" }\n";
        file = files.put("plant.toml", "[plc.press]\nhost = \"" + pressHost + "\"\n[plc.press" + tags
                                           + "[plc.oven]\nhost = \"" + host() + "\"\n[plc.oven" + tags);
    }

    std::string tellPress(const std::string &line)
    {
        press->writeLine(line);
        return press->readLine();
    }

    // The press is not there any more.
    void endPress()
    {
        ASSERT_EQ(tellPress("quit"), "ok");
        ASSERT_EQ(press->wait(), 0);
    }

    PanelRun run(const std::string &command, Words more) const
    {
        more.insert(more.begin(), {command, "-q", "-p", file});
        return runPanel(more);
    }

    PanelFiles               files;
    std::string              file;
    std::unique_ptr<Process> press;
    std::string              pressHost;
};

#endif
