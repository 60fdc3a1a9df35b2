#ifndef TESTS_PUBLISH_PUBLISH_FIXTURE_H
#define TESTS_PUBLISH_PUBLISH_FIXTURE_H

#include "e2e/panel_run.h"
#include "publish/mosquitto.h"
#include "publish/subscriber.h"

#include <memory>
#include <regex>
#include <string>

// A simulator, a broker, and fins_panel publish between them.
class PublishTest : public PanelTest {
protected:
    static void SetUpTestSuite() { mosquitto_lib_init(); }

    static std::string plcLines(const std::string &name, const std::string &plcHost)
    {
        return "[plc." + name + "]\nhost = \"" + plcHost + "\"\ninterval_ms = 5\n[plc." + name + ".tags]\n";
    }

    // A project of the PLC press with these lines of tags.
    std::string project(const std::string &tags) const
    {
        return folder.put("plant.toml", plcLines("press", host()) + tags);
    }

    std::unique_ptr<Process> publish(const std::string &brokerHost, const Words &more = {}) const
    {
        Words words = {"publish", "--project", folder.path("plant.toml"), "--broker", brokerHost, "--spool",
                       folder.path("spool")};
        words.insert(words.end(), more.begin(), more.end());
        return startPanel(words);
    }

    // Waits until the publisher has stored a message with this in it: nothing of it is packed there.
    void waitForSpool(const std::string &text) const
    {
        const auto deadline = Process::Clock::now() + std::chrono::seconds(20);
        while ((folder.content("spool") + folder.content("spool-wal")).find(text) == std::string::npos) {
            ASSERT_LT(Process::Clock::now(), deadline) << text;
            poll(nullptr, 0, 5);
        }
    }

    static std::string isConnected(const std::string &brokerHost) { return "connected to the broker " + brokerHost; }

    const TemporaryFolder folder;
};

// Level counts in tenths of a percent; SetPoint may be written by others, Level not.
inline const char TAGS[] =
    "Level    = { type = \"DM\", address = 0, scale = 0.1, decimals = 1, unit = \"%\" }\n"
    "SetPoint = { type = \"DM\", address = 3, min = 10, max = 90, access = \"rw\" }\n";

#endif
