#include "hmi_fixture.h"

#include "dialogs/recipe_view.h"

#include <filesystem>

// Recipes as an operator uses them: beside the PLC, written with a second touch, saved as a file.

static const char PROJECT[] = R"([tags]
Speed = { type = "DM", address = 10, scale = 0.01, decimals = 1, unit = "m/s" }
Name  = { type = "DM", address = 20, count = 4, data = "string" }
Three = { type = "DM", address = 30, count = 3 }
[recipes.Mix.values]
Speed = 1.25
Name = "LEMON"
Three = [1, 2, 3]
"DM:40/hex" = "0x00FF"
[recipes.Other]
variables = ["DM:50"]
[screens.main]
elements = [{ type = "recipe", recipe = "Mix", at = [1, 1] }, { type = "recipe", at = [2, 1], label = "All" }]
)";

class Recipes : public HmiTest {
protected:
    void SetUp() override
    {
        plc.write("DM:10", "125");
        plc.write("DM:30", "1 9 3");
        openProject(PROJECT);
        ASSERT_TRUE(untilOnline());
    }

    RecipeView *openMix()
    {
        QTest::mouseClick(window->view().elements().front(), Qt::LeftButton);
        auto *view = dynamic_cast<RecipeView *>(overlay());
        EXPECT_NE(view, nullptr);
        EXPECT_TRUE(until([&] { return view->status().contains("differ"); })) << view->status().toStdString();
        return view;
    }

    static std::string line(const RecipeRow &row)
    {
        static const char *const MATCHES[] = {"unread", "same", "differs", "no value"};
        return row.name + "|" + row.wanted + "|" + row.held + "|" + MATCHES[static_cast<int>(row.match)];
    }
};

TEST_F(Recipes, StandBesideThePlcWithTheDifferencesMarked)
{
    const RecipeView *view = openMix();
    ASSERT_EQ(view->rows().size(), 6u);
    EXPECT_EQ(line(view->rows()[0]), "Speed|1.25|1.25|same");
    EXPECT_EQ(line(view->rows()[1]), "Name|\"LEMON\"|\"\"|differs");
    EXPECT_EQ(line(view->rows()[2]), "Three[0]|1|1|same");
    EXPECT_EQ(line(view->rows()[3]), "Three[1]|2|9|differs");
    EXPECT_EQ(line(view->rows()[5]), "DM:40/hex|0x00FF|0x0000|differs");
    EXPECT_EQ(view->status().toStdString(), "3 of 6 differ");
}

// 1.26 and 1.25 both read 1.3 with one digit.
TEST_F(Recipes, DifferenceThatRoundingHidesIsOne)
{
    plc.write("DM:10", "126");
    EXPECT_EQ(line(openMix()->rows()[0]), "Speed|1.25|1.26|differs");
}

TEST_F(Recipes, AreWrittenWithASecondTouchAndReadBack)
{
    const RecipeView *view = openMix();
    press("Write");
    EXPECT_EQ(plc.read("DM:31"), "9");
    QPushButton *yes = nullptr;
    for (Overlay *one : window->findChildren<Overlay *>()) {
        for (QPushButton *candidate : one->findChildren<QPushButton *>())
            yes = one != view && one->isVisible() && candidate->text() == "Write" ? candidate : yes;
    }
    ASSERT_NE(yes, nullptr);
    QTest::mouseClick(yes, Qt::LeftButton);
    EXPECT_TRUE(until([&] { return view->status().contains("no difference"); })) << view->status().toStdString();
    EXPECT_TRUE(view->status().startsWith("done: 4 written and read back")) << view->status().toStdString();
    EXPECT_EQ(plc.read("DM:30:3"), "1 2 3");
    EXPECT_EQ(plc.read("DM:20"), "19525"); // "LE": 4C45
    EXPECT_EQ(plc.read("DM:40"), "255");
    const JournalEvent written = event("Mix: done: Three");
    EXPECT_NE(written.newText.find("1 2 3"), std::string::npos);
    EXPECT_EQ(written.oldText, ""); // what was there before the write nobody read
}

TEST_F(Recipes, WhatThePlcHoldsIsSavedAsAFileOfItsOwn)
{
    const std::string project = folder.content("plant.toml");
    openMix();
    press("Save");
    ASSERT_TRUE(until([&] { return written().find("saved as ") != std::string::npos; })) << written();
    std::string saved;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
        if (entry.path().filename().string().rfind("Mix-", 0) == 0)
            saved = folder.content(entry.path().filename().string());
    }
    EXPECT_EQ(saved, "comment = \"read from the PLC as Mix\"\n[values]\nSpeed = 1.25\nName = \"\"\nThree = [1, 9, 3]\n"
                     "\"DM:40/hex\" = \"0x0000\"\n");
    EXPECT_EQ(folder.content("plant.toml"), project);
}

TEST_F(Recipes, AreLockedWithoutALink)
{
    const RecipeView *view = openMix();
    plc.tell("fault refuse");
    plc.tell("disconnect");
    EXPECT_TRUE(until([&] { return !button("Write")->isEnabled() && !button("Read")->isEnabled(); }));
    EXPECT_TRUE(until([&] { return view->status().contains("locked: no link"); })) << view->status().toStdString();
}

TEST_F(Recipes, AreChosenFromAllOfTheProject)
{
    click("Recipe"); // both buttons are called so; the first one opens its own
    overlay()->close();
    QTest::mouseClick(window->view().elements()[1], Qt::LeftButton);
    press("Other");
    const auto *view = dynamic_cast<RecipeView *>(overlay());
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(until([&] { return !view->rows().empty() && view->rows()[0].match == RecipeRow::Match::NO_VALUE; }));
    EXPECT_FALSE(button("Write")->isEnabled()); // it has no values
}
