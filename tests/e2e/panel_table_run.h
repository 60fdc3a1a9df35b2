#ifndef TESTS_E2E_PANEL_TABLE_RUN_H
#define TESTS_E2E_PANEL_TABLE_RUN_H

#include "panel_files.h"
#include "pty_process.h"

// Runs of the live table, and what is looked for in them.

inline void expectClean(const PtyProcess &shown)
{
    EXPECT_FALSE(shown.screen.isAlternate);
    EXPECT_TRUE(shown.screen.isCursorShown);
    EXPECT_TRUE(shown.hasKeysAsBefore());
}

// The text on the line of `name`, which may be the selected one.
inline bool has(const PtyProcess &shown, const std::string &name, const std::string &text)
{
    for (const std::string &line : shown.screen.lines) {
        if ((line.find(name + " ") == 0 || line.find(name + ">") == 0) && line.find(text) != std::string::npos)
            return true;
    }
    return false;
}

class WatchTableTest : public PanelTest {
protected:
    std::unique_ptr<PtyProcess> table(const Words &more, unsigned short columns = 80, unsigned short rows = 24,
                                      const std::vector<std::pair<std::string, std::string>> &environment = {})
    {
        Words all = arguments("watch", more);
        all.insert(all.begin(), FINS_PANEL_PATH);
        return std::make_unique<PtyProcess>(all, columns, rows, environment);
    }

    // Requests that the simulator has received so far.
    long answered()
    {
        const std::string stats = tell("stats");
        return std::stol(stats.substr(stats.find("requests=") + 9));
    }

    void waitForRequests(long count)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(DEFAULT_DEADLINE_MS);
        while (answered() < count) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the poll stands still";
            poll(nullptr, 0, 10); // leaves the simulator time for the panel
        }
    }
};

#endif
