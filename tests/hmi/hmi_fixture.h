#ifndef TESTS_HMI_HMI_FIXTURE_H
#define TESTS_HMI_HMI_FIXTURE_H

#include "cli/sources.h"
#include "support/process.h"
#include "support/temporary_folder.h"
#include "window/main_window.h"

#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>

#include <gtest/gtest.h>

#include <memory>
#include <string>

// The panel with its window, without a screen, against a running simulator. Clicks and keys are those of a user.

/// A simulator on a port of its own.
class Simulator {
public:
    explicit Simulator(const std::vector<std::string> &options = {}, const std::string &port = "0")
        : process_(command(options, port))
    {
        const std::string line = process_.readLine();
        host_ = line.substr(std::string("listening on ").size());
    }

    const std::string &host() const { return host_; }
    std::string port() const { return host_.substr(host_.rfind(':') + 1); }

    /// Gives a command and returns its answer.
    std::string tell(const std::string &line)
    {
        process_.writeLine(line);
        const std::string answer = process_.readLine();
        EXPECT_EQ(answer.substr(0, 2), "ok") << line << ": " << answer;
        return answer;
    }

    /// The values of an item, such as "500" of DM:3.
    std::string read(const std::string &item)
    {
        const std::string answer = tell("read " + item);
        return answer.substr(std::min<std::size_t>(3, answer.size()));
    }

    void write(const std::string &item, const std::string &values) { tell("write " + item + " " + values); }

    Process &process() { return process_; }

private:
    static std::vector<std::string> command(const std::vector<std::string> &options, const std::string &port)
    {
        std::vector<std::string> words = {FINS_PLC_PATH, "--port", port};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    Process     process_;
    std::string host_;
};

/// Handles events until the condition holds; false when it does not within 20 s.
template <typename Condition>
bool until(Condition holds)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!holds()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        QTest::qWait(5);
    }
    return true;
}

class HmiTest : public ::testing::Test {
protected:
    explicit HmiTest(const std::vector<std::string> &options = {}) : plc(options) {}

    void TearDown() override
    {
        window.reset();
        panel.reset();
    }

    /// Opens the window on a project; the connection is put before `text`.
    void openProject(const std::string &text, QSize size = {800, 480})
    {
        const std::string head = "[connection]\nhost = \"" + plc.host() + "\"\ntimeout_ms = 300\n[driver]\ninterval_ms = "
                                 + std::to_string(intervalMs) + "\n";
        Options options;
        options.projects = {folder.put("plant.toml", head + text)};
        open(options, size);
    }

    void openItems(const std::vector<std::string> &items, QSize size = {800, 480})
    {
        Options options;
        options.words = {plc.host()};
        options.words.insert(options.words.end(), items.begin(), items.end());
        open(options, size);
    }

    void open(const Options &options, QSize size)
    {
        panel  = std::make_unique<Panel>(readSources(options), folder.path());
        window = std::make_unique<MainWindow>(*panel);
        window->resize(size);
        window->show();
        QApplication::setActiveWindow(window.get());
    }

    bool untilOnline() const
    {
        return until([this] { return panel->stations().front().state().phase == fins::Phase::ONLINE; });
    }

    /// The element of that label.
    Element *element(const std::string &label) const
    {
        for (Element *one : window->view().elements()) {
            if (one->accessibleName().toStdString() == label)
                return one;
        }
        ADD_FAILURE() << "there is no element " << label;
        throw std::runtime_error("no element " + label);
    }

    std::string spoken(const std::string &label) const { return element(label)->spoken().toStdString(); }

    bool untilSpoken(const std::string &label, const std::string &part) const
    {
        const bool is = until([&] { return spoken(label).find(part) != std::string::npos; });
        EXPECT_TRUE(is) << label << " says: " << spoken(label) << "; not: " << part;
        return is;
    }

    void click(const std::string &label) const { QTest::mouseClick(element(label), Qt::LeftButton); }

    Overlay *overlay() const { return window->actions().open(); }

    /// The button of what is open whose text begins so.
    QPushButton *button(const std::string &text) const
    {
        for (Overlay *one : window->findChildren<Overlay *>()) {
            for (QPushButton *button : one->findChildren<QPushButton *>()) {
                if (one->isVisible() && button->text().startsWith(QString::fromStdString(text)))
                    return button;
            }
        }
        ADD_FAILURE() << "there is no button " << text;
        throw std::runtime_error("no button " + text);
    }

    void press(const std::string &text) const { QTest::mouseClick(button(text), Qt::LeftButton); }

    /// All that is written in what is open.
    std::string written() const
    {
        std::string text;
        if (!overlay())
            return text;
        for (const QLabel *label : overlay()->findChildren<QLabel *>())
            text += label->text().toStdString() + "\n";
        return text;
    }

    bool untilWritten(const std::string &part) const
    {
        const bool is = until([&] { return written().find(part) != std::string::npos; });
        EXPECT_TRUE(is) << "what is open says: " << written() << "; not: " << part;
        return is;
    }

    /// The latest event of the journal with that text in its words; fails if there is none.
    JournalEvent event(const std::string &words) const
    {
        for (std::size_t i = 0; i < panel->journal().size(); ++i) {
            if (panel->journal().at(i).words.find(words) != std::string::npos)
                return panel->journal().at(i);
        }
        ADD_FAILURE() << "the journal has no " << words << ":\n" << panel->journal().csv();
        return {};
    }

    bool untilEvent(const std::string &words) const
    {
        return until([&] { return panel->journal().csv().find(words) != std::string::npos; });
    }

    int                         intervalMs = 1; // of a project
    TemporaryFolder             folder;
    Simulator                   plc;
    std::unique_ptr<Panel>      panel;
    std::unique_ptr<MainWindow> window;
};

#endif
