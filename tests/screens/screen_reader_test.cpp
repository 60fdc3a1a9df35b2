#include "screens_fixture.h"

// Screens as a whole: their grid, what lies over what, and files that nobody should have written.

class ScreenReading : public ScreensFixture {};

static const char ONE[] = "elements = [{ type = \"alarms\", at = [1, 1] }]\n";

TEST_F(ScreenReading, AFileWithoutScreensHasNone)
{
    EXPECT_EQ(read("[tags]\n"), Lines());
    EXPECT_TRUE(book.screens.empty());
    EXPECT_TRUE(book.alarms.empty());
}

TEST_F(ScreenReading, TheGridAndTheTitle)
{
    EXPECT_EQ(read(std::string("[screens.tank]\ntitle = \"Tank 1\"\ncolumns = 32\nrows = 1\n") + ONE + "[screens.oven]\n" + ONE),
              Lines());
    ASSERT_EQ(book.screens.size(), 2u);
    EXPECT_EQ(book.screens[0].name, "tank");
    EXPECT_EQ(book.screens[0].title, "Tank 1");
    EXPECT_EQ(book.screens[0].columns, 32);
    EXPECT_EQ(book.screens[0].rows, 1);
    EXPECT_EQ(book.screens[1].name, "oven");
    EXPECT_EQ(book.screens[1].title, "oven");
    EXPECT_EQ(book.screens[1].columns, 8);
    EXPECT_EQ(book.screens[1].rows, 5);
}

TEST_F(ScreenReading, ElementsAsTablesOfTheirOwn)
{
    EXPECT_EQ(read("[screens.tank]\nrows = 2\n[[screens.tank.elements]]\ntype = \"alarms\"\nat = [1, 1]\n"
                   "[[screens.tank.elements]]\ntype = \"number\"\ntag = \"Level\"\nat = [1, 2]\n"),
              Lines());
    ASSERT_EQ(book.screens.size(), 1u);
    ASSERT_EQ(book.screens[0].elements.size(), 2u);
    EXPECT_EQ(element(1).place.line, 6);
    EXPECT_EQ(element(1).kind, ElementKind::NUMBER);
    EXPECT_EQ(read("[screens.tank]\n[[screens.tank.elements]]\ntype = \"number\"\nat = [1, 6]\ntga = \"Level\"\n"),
              (Lines{"p.toml:2:1: 'tag' is missing; add it, such as tag = \"Level\"",
                     "p.toml:4:10: row 6 lies outside of the grid, which has rows 1 to 5",
                     "p.toml:5:1: 'tga' is not known here; known are type, at, size, label, tag"}));
}

TEST_F(ScreenReading, WhatIsWrongWithAScreen)
{
    EXPECT_EQ(read("[screens.tank]\ntitle = \"\"\ncolumns = 33\nrows = \"5\"\nelements = []\ncolor = 1\n"),
              (Lines{"p.toml:2:9: 'title' is empty; write a text",
                     "p.toml:3:11: 'columns' is not a whole number from 1 to 32",
                     "p.toml:4:8: 'rows' is not a whole number from 1 to 32",
                     "p.toml:5:12: 'elements' is not a list of elements; write one such as { type = \"number\", tag = \"Level\", "
                     "at = [1, 1] }",
                     "p.toml:6:1: 'color' is not known here; known are title, columns, rows, elements"}));
    EXPECT_EQ(read("[screens.tank]\n"),
              (Lines{"p.toml:1:1: 'elements' is missing; add it, such as elements = [{ type = \"number\", tag = \"Level\", at = "
                     "[1, 1] }]"}));
    EXPECT_EQ(read("[screens]\ntank = 5\n"),
              (Lines{"p.toml:2:1: the screen 'tank' is not a table; begin it with a line [screens.tank]"}));
    EXPECT_EQ(read(std::string("[screens.\"\"]\n") + ONE), (Lines{"p.toml:1:10: the name of the screen is empty; write one"}));
}

// A wrong number of columns says nothing about the elements.
TEST_F(ScreenReading, AWrongGridIsTheOnlyProblem)
{
    EXPECT_EQ(read("[screens.tank]\ncolumns = 0\nelements = [{ type = \"alarms\", at = [12, 1] }]\n"),
              (Lines{"p.toml:2:11: 'columns' is not a whole number from 1 to 32"}));
}

TEST_F(ScreenReading, ElementsMayTouchAndNotOverlap)
{
    EXPECT_EQ(readElements("{ type = \"alarms\", at = [2, 2], size = [2, 2] },\n"
                           "{ type = \"recipe\", at = [4, 2] },\n"
                           "{ type = \"recipe\", at = [2, 4], size = [2, 1] },\n"
                           "{ type = \"recipe\", at = [1, 1], size = [8, 1] },\n"
                           "{ type = \"recipe\", at = [1, 2], size = [1, 4] }"),
              Lines());
    EXPECT_EQ(readElements("{ type = \"alarms\", at = [2, 2], size = [2, 2] },\n"
                           "  { type = \"recipe\", at = [3, 3] },\n"
                           "{ type = \"recipe\", at = [3, 3] },\n"
                           "{ type = \"recipe\", size = [3, 2], at = [1, 1] }"),
              (Lines{"p.toml:4:27: this element overlaps the one of line 3, column 1; move one, or make it smaller",
                     "p.toml:5:25: this element overlaps the one of line 3, column 1; move one, or make it smaller",
                     "p.toml:6:40: this element overlaps the one of line 3, column 1; move one, or make it smaller"}));
}

TEST_F(ScreenReading, AGroupIsAFrameAroundWholeElements)
{
    const std::string group = "{ type = \"group\", at = [2, 2], size = [3, 3] }";
    EXPECT_EQ(readElements(group + ",\n{ type = \"alarms\", at = [2, 2], size = [3, 3] },\n"
                                   "{ type = \"alarms\", at = [5, 2] }"),
              Lines());
    EXPECT_EQ(readElements("{ type = \"alarms\", at = [3, 3] },\n" + group + ",\n"
                           "{ type = \"group\", at = [3, 3], size = [2, 1] },\n"
                           "{ type = \"group\", at = [1, 1], size = [8, 5] }"),
              Lines());
    EXPECT_EQ(readElements(group + ",\n{ type = \"alarms\", at = [4, 2], size = [2, 1] }"),
              (Lines{"p.toml:4:25: this element crosses the edge of the group of line 3, column 1; put it inside as a whole, or "
                     "outside"}));
    EXPECT_EQ(readElements("{ type = \"alarms\", at = [1, 4], size = [2, 1] },\n" + group),
              (Lines{"p.toml:3:25: this element crosses the edge of the group of line 4, column 1; put it inside as a whole, or "
                     "outside"}));
    EXPECT_EQ(readElements(group + ",\n{ type = \"group\", at = [1, 1], size = [2, 2] }"),
              (Lines{"p.toml:4:24: this element crosses the edge of the group of line 3, column 1; put it inside as a whole, or "
                     "outside"}));
    EXPECT_EQ(readElements(group + ",\n" + group),
              (Lines{"p.toml:4:24: this element overlaps the one of line 3, column 1; move one, or make it smaller"}));
}

// What the file says of them is wrong, and was said already.
TEST_F(ScreenReading, ATagThatIsBrokenIsNotReportedAgain)
{
    const std::string screen = "[screens.tank]\nelements = [{ type = \"number\", tag = \"Broken\", at = [1, 1] }]\n";
    EXPECT_EQ(read("[tags]\nBroken = { type = \"DM\" }\n" + screen), Lines());
    EXPECT_EQ(read("[tags]\nOther = { type = \"DM\" }\n" + screen),
              (Lines{"p.toml:4:38: there is no tag 'Broken'; write the name of one, or add it to the file's tags"}));
    EXPECT_EQ(read("[recipes]\nmix = 5\n[screens.tank]\nelements = [{ type = \"recipe\", recipe = \"mix\", at = [1, 1] }]\n"),
              Lines());
}

TEST_F(ScreenReading, TagsOfAFileThatIsBrokenAreNotReportedAgain)
{
    const std::string text = "tags = \"tags.csv\"\n[screens.tank]\n"
                             "elements = [{ type = \"number\", tag = \"Broken\", at = [1, 1] }]\n";
    const Lines unknown = {
        "p.toml:3:38: there is no tag 'Broken'; write the name of one, or add it to the file's tags"};
    EXPECT_EQ(read(text), unknown);
    for (const auto &[file, place] : {std::pair<const char *, Place>("tags.csv", {2, 1}), {"p.toml", {1, 8}}}) {
        Problems problems;
        const DataNode root = parseToml(text, "p.toml", problems);
        problems.add(file, place, "broken");
        readScreens(root, "p.toml", tags, recipes, problems);
        EXPECT_EQ(problems.lines().size(), 1u) << file;
    }
}

TEST_F(ScreenReading, FourHundredElementsAndNotOneMore)
{
    std::string elements;
    for (int i = 0; i < 400; ++i)
        elements += "{ type = \"alarms\", at = [" + std::to_string(i % 32 + 1) + ", " + std::to_string(i / 32 + 1) + "] },\n";
    const std::string begin = "[screens.tank]\ncolumns = 32\nrows = 32\nelements = [\n";
    EXPECT_EQ(read(begin + elements + "]\n"), Lines());
    EXPECT_EQ(book.screens.at(0).elements.size(), 400u);
    EXPECT_EQ(read(begin + elements + "  { type = \"alarms\", at = [32, 32] }, 5 ]\n"),
              (Lines{"p.toml:405:3: a screen has at most 400 elements, and this one has 402; make several screens of it"}));
}

TEST_F(ScreenReading, HostileTablesAreRefusedAndNothingElse)
{
    const std::string deep = std::string(20, '[') + std::string(20, ']');
    const std::vector<std::string> values = {
        "0", "-1", "9223372036854775807", "-9223372036854775808", "1e308", "-1e308", "inf", "nan", "true", "\"\"", "\"5\"",
        "\"[\"", "\"]\"", "\"Speeds[\"", "[]", "[[]]", "{}", "[{}]", "[0, 0]", "[-5, 5]", "[1, 1]", "{ a = { b = [1] } }",
        "1979-05-27", deep};
    const std::vector<std::string> keys = {"type", "at", "size", "label", "tag", "tags", "text", "text_on", "min", "max",
                                           "states", "choices", "minutes", "mode", "value", "recipe", "screen"};
    for (const char *type : {"text", "number", "bar", "lamp", "trend", "button", "set-point", "choice", "recipe", "alarms",
                             "group", "screen"}) {
        for (const std::string &key : keys) {
            for (const std::string &value : values) {
                const std::string begin = key == "type" ? "{ " : std::string("{ type = \"") + type + "\", ";
                const bool isSound = read("[screens.tank]\nelements = [" + begin + key + " = " + value + " }]\n").empty();
                EXPECT_FALSE(isSound && key != "at") << type << " " << key << " = " << value;
            }
        }
    }
    for (const char *key : {"title", "columns", "rows", "elements"}) {
        for (const std::string &value : values)
            read("[screens.tank]\n" + std::string(key) + " = " + value + "\n");
    }
    for (const char *key : {"tag", "high", "low", "value", "hysteresis", "delay_s", "text", "priority"}) {
        for (const std::string &value : values)
            EXPECT_NE(read("[alarms.A]\n" + std::string(key) + " = " + value + "\n"), Lines()) << key << " = " << value;
    }
}

// So many names, none of them there, are told without a look at every tag for each.
TEST_F(ScreenReading, ManyUnknownNamesAreAllReported)
{
    for (int i = 0; i < 20000; ++i)
        tags.push_back(tagOf("Tank" + std::to_string(i), "DM:0"));
    std::string text;
    for (int i = 0; i < 20000; ++i)
        text += "[alarms.A" + std::to_string(i) + "]\ntag = \"Tonk" + std::to_string(i) + "\"\nhigh = 1\ntext = \"t\"\n";
    EXPECT_EQ(read(text).size(), 20000u);
}
