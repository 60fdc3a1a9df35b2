#include "hmi_fixture.h"

#include "dialogs/recipe_view.h"
#include "dialogs/trend_view.h"
#include "elements/touch_size.h"
#include "window/problem_window.h"

#include <QtWidgets/QPlainTextEdit>

#include <filesystem>

// The window as a whole: sizes, fonts, directions, the keyboard, the menu, several PLCs.

static const char PROJECT[] = R"([tags]
Level    = { type = "DM", address = 0, unit = "%" }
SetPoint = { type = "DM", address = 3, min = 0, max = 100 }
Pump     = { type = "CIO_bit", address = "0.0" }
[screens.main]
elements = [
  { type = "number", tag = "Level", at = [1, 1], size = [2, 1] },
  { type = "set-point", tag = "SetPoint", at = [8, 5] },
  { type = "lamp", tag = "Pump", at = [3, 1] },
  { type = "trend", tag = "Level", at = [4, 1], size = [4, 3], label = "Course" },
  { type = "button", tag = "Pump", at = [1, 5], mode = "toggle", text = "Start", text_on = "Stop" },
]
[screens.second]
elements = [{ type = "text", text = "Second", at = [1, 1] }]
)";

class Window : public HmiTest {
protected:
    void TearDown() override
    {
        QApplication::setLayoutDirection(Qt::LeftToRight);
        setDotsPerInch(0);
        HmiTest::TearDown();
    }

    // Everything lies within its screen, nothing over anything else, and what is touched is 15 mm wide and high.
    void expectSoundLayout() const
    {
        const int touch = touchPixels(window.get());
        const std::vector<Element *> &elements = window->view().elements();
        for (std::size_t i = 0; i < elements.size(); ++i) {
            const QRect place = elements[i]->geometry();
            EXPECT_TRUE(window->view().rect().contains(place)) << elements[i]->accessibleName().toStdString();
            for (std::size_t j = 0; j < i; ++j)
                EXPECT_FALSE(place.intersects(elements[j]->geometry())) << i << " and " << j;
            if (elements[i]->focusPolicy() != Qt::NoFocus) {
                EXPECT_GE(place.width(), touch);
                EXPECT_GE(place.height(), touch);
            }
        }
        EXPECT_GE(window->menu().height(), touch);
        EXPECT_GE(window->menu().width(), touch);
    }
};

TEST_F(Window, FitsFromTheSmallestPanelToTheLargestScreen)
{
    openProject(PROJECT);
    for (const QSize size : {QSize(480, 272), QSize(800, 480), QSize(1024, 600), QSize(1920, 1080), QSize(3840, 2160)}) {
        window->resize(size);
        QTest::qWait(20);
        ASSERT_EQ(window->size(), size);
        expectSoundLayout();
    }
}

TEST_F(Window, TouchTargetsFollowTheResolution)
{
    setDotsPerInch(254); // 10 pixels a millimetre
    openProject(PROJECT);
    EXPECT_EQ(touchPixels(window.get()), 150);
    QTest::qWait(20);
    expectSoundLayout();
    EXPECT_EQ(window->view().minimumSize(), QSize(8 * 150, 5 * 150));
}

TEST_F(Window, SaysWhatAScreenThatIsTooSmallLacks)
{
    setDotsPerInch(127); // 75 pixels are 15 mm
    openProject(PROJECT, {299, 400});
    EXPECT_EQ(window->complaint().left(70).toStdString(), "299 x 400 pixels are too few for touch targets of 15 mm: 300 x 225 are");
    EXPECT_FALSE(window->view().isVisible());
    window->resize(300, 225);
    QTest::qWait(20);
    EXPECT_EQ(window->complaint(), "");
    EXPECT_TRUE(window->view().isVisible());
}

TEST_F(Window, IsMirroredFromRightToLeft)
{
    openProject(PROJECT);
    const QRect before = element("Level")->geometry();
    QApplication::setLayoutDirection(Qt::RightToLeft);
    window->resize(801, 480); // lays out anew
    QTest::qWait(20);
    expectSoundLayout();
    EXPECT_EQ(before.left(), 0);
    EXPECT_EQ(element("Level")->geometry().right(), window->view().width() - 1);
    EXPECT_FALSE(window->grab().isNull());
}

TEST_F(Window, FontOfTwiceTheSizeLeavesAllItsPlace)
{
    const QFont before = QApplication::font();
    QFont twice = before;
    twice.setPointSizeF(before.pointSizeF() * 2);
    QApplication::setFont(twice);
    openProject(PROJECT, {480, 272});
    QTest::qWait(20);
    expectSoundLayout();
    EXPECT_FALSE(window->grab().isNull());
    QTest::mouseClick(&window->menu(), Qt::LeftButton);
    EXPECT_TRUE(window->rect().contains(overlay()->geometry()));
    QApplication::setFont(before);
}

TEST_F(Window, TabReachesEveryControlAndShowsWhereItIs)
{
    openProject(PROJECT);
    window->menu().setFocus();
    QStringList reached;
    for (int i = 0; i < 20; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        reached << QApplication::focusWidget()->accessibleName();
    }
    for (const char *name : {"SetPoint", "Pump", "Link", "Alarms", "Menu"})
        EXPECT_TRUE(reached.contains(name)) << name << " of " << reached.join(", ").toStdString();
    auto *setPoint = element("SetPoint");
    window->menu().setFocus();
    const QImage without = setPoint->grab().toImage();
    setPoint->setFocus();
    EXPECT_NE(setPoint->grab().toImage(), without);
}

TEST_F(Window, MenuOpensTheOtherScreensAndViews)
{
    openProject(PROJECT);
    QTest::keyClick(window.get(), Qt::Key_F10);
    press("Screens");
    press("second");
    EXPECT_EQ(window->currentScreen(), 1u);
    for (const char *entry : {"Alarms", "Journal", "Links"}) {
        QTest::keyClick(window.get(), Qt::Key_F10);
        press(entry);
        ASSERT_NE(overlay(), nullptr) << entry;
        EXPECT_EQ(overlay()->accessibleName().toStdString(), entry);
        QTest::keyClick(overlay(), Qt::Key_Escape);
        EXPECT_EQ(overlay(), nullptr) << entry;
    }
}

TEST_F(Window, TrendIsShownAloneAndSaved)
{
    openProject(PROJECT);
    ASSERT_TRUE(untilSpoken("Level", "0 %, good"));
    QTest::keyClick(window.get(), Qt::Key_F10);
    press("Trends");
    press("Course");
    ASSERT_NE(dynamic_cast<TrendView *>(overlay()), nullptr);
    press("Save as CSV");
    EXPECT_TRUE(untilWritten("saved as " + folder.path() + "trend-"));
    press("Save as PNG");
    EXPECT_TRUE(untilWritten(".png"));
    int csv = 0, png = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
        const std::string text = folder.content(entry.path().filename().string());
        csv += entry.path().extension() == ".csv" && text.find("Level") != std::string::npos;
        png += entry.path().extension() == ".png" && text.substr(1, 3) == "PNG";
    }
    EXPECT_EQ(csv, 1);
    EXPECT_EQ(png, 1);
}

TEST_F(Window, TrendElementTellsItsValues)
{
    plc.write("DM:0", "42");
    openProject(PROJECT);
    EXPECT_TRUE(untilSpoken("Course", "42"));
}

TEST_F(Window, JournalIsSavedAndWhereItCannotBeThatIsSaid)
{
    openProject(PROJECT);
    ASSERT_TRUE(untilOnline());
    window->actions().showJournal();
    press("Save as CSV");
    EXPECT_TRUE(untilWritten("saved as " + folder.path() + "journal-"));
    EXPECT_EQ(writeNewFile(folder.path("missing/x"), ".csv", "text"),
              "not saved: " + folder.path("missing/x.csv") + " cannot be written: No such file or directory");
}

TEST(Problems, AreAllShownAndTheButtonClosesTheirWindow)
{
    ProblemWindow window({"plant.toml:6:38: there is no tag", "plant.toml:7:1: the condition is missing"});
    window.show();
    const QString text = window.findChild<QPlainTextEdit *>()->toPlainText();
    EXPECT_EQ(text.toStdString(), "plant.toml:6:38: there is no tag\n\nplant.toml:7:1: the condition is missing");
    auto *close = window.findChild<QPushButton *>();
    EXPECT_GE(close->minimumHeight(), touchPixels(&window));
    QTest::mouseClick(close, Qt::LeftButton);
    EXPECT_FALSE(window.isVisible());
}

TEST(SavedFile, NeverReplacesAnother)
{
    const TemporaryFolder folder;
    folder.put("a.csv", "kept");
    EXPECT_EQ(writeNewFile(folder.path("a"), ".csv", "new"), "saved as " + folder.path("a-2.csv"));
    EXPECT_EQ(folder.content("a.csv"), "kept");
    EXPECT_EQ(folder.content("a-2.csv"), "new");
}

TEST_F(Window, ShowsSeveralPlcs)
{
    const Simulator other;
    Options options;
    options.projects = {folder.put("one.toml", "[connection]\nhost = \"" + plc.host() + "\"\n" + PROJECT),
                        folder.put("two.toml", "[connection]\nhost = \"" + other.host() + "\"\n" + PROJECT)};
    open(options, {800, 480});
    EXPECT_EQ(panel->screens().size(), 4u);
    EXPECT_TRUE(until([&] { return window->banner().spoken() == "2 PLCs online"; })) << window->banner().spoken().toStdString();
    plc.write("DM:0", "7");
    EXPECT_TRUE(untilSpoken("Level", "7 %, good"));
    window->showScreen(2);
    EXPECT_TRUE(untilSpoken("Level", "0 %, good"));
    plc.tell("fault refuse");
    plc.tell("disconnect");
    EXPECT_TRUE(until([&] { return window->banner().spoken().contains(QString::fromStdString(plc.host())); }));
    EXPECT_TRUE(untilSpoken("Level", "0 %, good")); // the other one goes on
}

// The values of both are on one screen, and each is written where it lies.
TEST_F(Window, ShowsThePlcsOfOneProject)
{
    const Simulator other;
    Options options;
    options.projects = {folder.put("plant.toml",
        "[plc.press]\nhost = \"" + plc.host() + "\"\n[plc.press.tags]\nLevel = { type = \"DM\", address = 0, unit = \"%\" }\n"
        "[plc.oven]\nhost = \"" + other.host() + "\"\n[plc.oven.tags]\nLevel = { type = \"DM\", address = 0, unit = \"%\" }\n"
        "[recipes.Bread.values]\n\"oven.Level\" = 9\n"
        "[screens.main]\nelements = [\n"
        "{ type = \"number\", tag = \"press.Level\", at = [1, 1] },\n"
        "{ type = \"set-point\", tag = \"oven.Level\", at = [2, 1] },\n"
        "{ type = \"trend\", tags = [\"press.Level\", \"oven.Level\"], label = \"Course\", at = [1, 2], size = [6, 4] },\n"
        "{ type = \"recipe\", recipe = \"Bread\", at = [3, 1] } ]\n"
        "[alarms.Hot]\ntag = \"oven.Level\"\nhigh = 40\ntext = \"too hot\"\n")};
    open(options, {800, 600});
    EXPECT_EQ(panel->screens().size(), 1u);
    EXPECT_TRUE(until([&] { return window->banner().spoken() == "2 PLCs online"; })) << window->banner().spoken().toStdString();
    plc.write("DM:0", "7");
    EXPECT_TRUE(untilSpoken("press.Level", "7 %, good"));
    EXPECT_TRUE(untilSpoken("oven.Level", "0 %, good"));
    click("oven.Level");
    for (const char *key : {"4", "1", "Set", "Write 41 %"})
        press(key);
    EXPECT_TRUE(untilSpoken("oven.Level", "41 %, good"));
    EXPECT_TRUE(untilSpoken("press.Level", "7 %, good"));
    EXPECT_TRUE(until([&] { return panel->alarms().size() == 1; }));
    EXPECT_EQ(panel->alarms().at(0).station->name(), "oven");
    click("Recipe");
    const auto *recipe = dynamic_cast<RecipeView *>(overlay());
    ASSERT_NE(recipe, nullptr);
    ASSERT_TRUE(until([&] { return recipe->status() == "1 of 1 differs"; })) << recipe->status().toStdString();
    EXPECT_EQ(recipe->rows()[0].held, "41");
}
