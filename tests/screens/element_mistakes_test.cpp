#include "screens_fixture.h"

#include <limits>

// Every mistake that an element can have, with its place and text.

class ElementMistakes : public ScreensFixture {};

static const std::string LARGEST = std::to_string(std::numeric_limits<long>::max());

TEST_F(ElementMistakes, TheType)
{
    EXPECT_EQ(readElements(R"({ tag = "Level", at = [1, 1] })"),
              (Lines{"p.toml:3:1: 'type' is missing; add it, such as type = \"number\""}));
    EXPECT_EQ(readElements(R"({ type = 5, at = [1, 1] })"),
              (Lines{"p.toml:3:10: 'type' is not a text; write it between quotes"}));
    EXPECT_EQ(readElements(R"({ type = "gauge", at = [99, 1], colour = 5 })"),
              (Lines{"p.toml:3:10: 'gauge' is not a type; the types are text, number, bar, lamp, trend, button, set-point, "
                     "choice, recipe, alarms, group, screen"}));
    EXPECT_EQ(readElements("5"),
              (Lines{"p.toml:3:1: this is not an element; write { type = \"number\", tag = \"Level\", at = [1, 1] }"}));
}

TEST_F(ElementMistakes, UnknownKeys)
{
    EXPECT_EQ(readElements(R"({ type = "set-point", tag = "SetPoint", at = [1, 1], text = "a" })"),
              (Lines{"p.toml:3:54: 'text' is not known here; known are type, at, size, label, tag"}));
    EXPECT_EQ(readElements(R"({ type = "text", text = "a", at = [1, 1], label = "b" })"),
              (Lines{"p.toml:3:43: 'label' is not known here; known are type, at, size, tag, text"}));
}

TEST_F(ElementMistakes, ThePlaceInTheGrid)
{
    EXPECT_EQ(readElements(R"({ type = "alarms" })"),
              (Lines{"p.toml:3:1: 'at' is missing; add it, such as at = [1, 1]"}));
    for (const char *at : {"5", "[1]", "[1, 2, 3]", "[1, 2.0]", "[1, \"2\"]", "{}", "[1, [2]]", "[-9223372036854775808, 1]"})
        EXPECT_EQ(readElements(std::string(R"({ type = "alarms", at = )") + at + " }"),
                  (Lines{"p.toml:3:25: these are not two whole numbers; write column and row, such as [1, 1]"}))
            << at;
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [9, 1] })"),
              (Lines{"p.toml:3:26: column 9 lies outside of the grid, which has columns 1 to 8"}));
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [1, 0] })"),
              (Lines{"p.toml:3:29: row 0 lies outside of the grid, which has rows 1 to 5"}));
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [-1, )" + LARGEST + "] }"),
              (Lines{"p.toml:3:26: column -1 lies outside of the grid, which has columns 1 to 8"}));
}

TEST_F(ElementMistakes, TheSizeInTheGrid)
{
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [1, 1], size = 2 })"),
              (Lines{"p.toml:3:40: these are not two whole numbers; write columns and rows, such as [2, 1]"}));
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [1, 1], size = [1, 0] })"),
              (Lines{"p.toml:3:44: a size of 0 rows is none; write 1 or more"}));
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [1, 1], size = [-2, 1] })"),
              (Lines{"p.toml:3:41: a size of -2 columns is none; write 1 or more"}));
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [2, 1], size = [8, 1] })"),
              (Lines{"p.toml:3:41: 8 columns from column 2 reach outside of the grid, which has columns 1 to 8"}));
    EXPECT_EQ(readElements(R"({ type = "alarms", at = [1, 5], size = [1, )" + LARGEST + "] }"),
              (Lines{"p.toml:3:44: " + LARGEST + " rows from row 5 reach outside of the grid, which has rows 1 to 5"}));
}

TEST_F(ElementMistakes, TheTag)
{
    EXPECT_EQ(readElements(R"({ type = "number", at = [1, 1] })"),
              (Lines{"p.toml:3:1: 'tag' is missing; add it, such as tag = \"Level\""}));
    EXPECT_EQ(readElements(R"({ type = "number", tag = 5, at = [1, 1] })"),
              (Lines{"p.toml:3:26: this is not a tag; write its name between quotes"}));
    EXPECT_EQ(readElements(R"({ type = "number", tag = "Levl", at = [1, 1] })"),
              (Lines{"p.toml:3:26: there is no tag 'Levl' (did you mean 'Level'?)"}));
    EXPECT_EQ(readElements(R"({ type = "number", tag = "", at = [1, 1] })"),
              (Lines{"p.toml:3:26: there is no tag ''; write the name of one, or add it to the file's tags"}));
}

TEST_F(ElementMistakes, TheIndexOfATagOfSeveralValues)
{
    const std::string range = "the tag 'Speeds' has 8 values; write Speeds[0] to Speeds[7]";
    EXPECT_EQ(readElements(R"({ type = "number", tag = "Speeds", at = [1, 1] })"), (Lines{"p.toml:3:26: " + range}));
    for (const std::string name : {"Speeds[8]", "Speeds[-1]", "Speeds[]", "Speeds[1", "Speeds[1]]", "Speeds[x]", "Speeds[",
                                   "Speeds[99999999999999999999]", "Speeds[1] "})
        EXPECT_EQ(readElements(R"({ type = "number", tag = ")" + name + R"(", at = [1, 1] })"),
                  (Lines{"p.toml:3:26: '" + name + "' is none of its values: " + range}));
    EXPECT_EQ(readElements(R"({ type = "number", tag = "Level[0]", at = [1, 1] })"),
              (Lines{"p.toml:3:26: 'Level[0]': the tag has one value; write Level"}));
}

TEST_F(ElementMistakes, TheKindOfATag)
{
    const auto text = [](const std::string &begin, const std::string &tag) {
        return "{ type = \"" + begin + "\", at = [1, 1], tag = \"" + tag + "\"";
    };
    EXPECT_EQ(readElements(text("number", "Pump") + " }"),
              (Lines{"p.toml:3:39: 'Pump' is a bit, and an element of type number needs a number; name another tag"}));
    EXPECT_EQ(readElements(text("bar", "Code") + ", min = 0, max = 1 }"),
              (Lines{"p.toml:3:36: 'Code' is a text, and a bar needs a number; name another tag"}));
    EXPECT_EQ(readElements(text("lamp", "Product") + " }"),
              (Lines{"p.toml:3:37: 'Product' is a text, and a lamp needs a bit or a number; name another tag"}));
    EXPECT_EQ(readElements(text("trend", "Product") + " }"),
              (Lines{"p.toml:3:38: 'Product' is a text, and a trend needs a bit or a number; name another tag"}));
    EXPECT_EQ(readElements(text("set-point", "Start") + " }"),
              (Lines{"p.toml:3:42: 'Start' is a bit, and a set-point needs a number; name another tag"}));
    EXPECT_EQ(readElements(text("button", "Mode") + ", mode = \"toggle\", text = \"a\", text_on = \"b\" }"),
              (Lines{"p.toml:3:39: 'Mode' is a number, and a button that toggles needs a bit; name another tag"}));
}

TEST_F(ElementMistakes, AControlWritesATagOfOneValue)
{
    EXPECT_EQ(readElements(R"({ type = "set-point", tag = "Measured", at = [1, 1] })"),
              (Lines{"p.toml:3:29: 'Measured' can only be read: the access of the tag is r, and a set-point writes it; name "
                     "another tag"}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Door", text = "a", at = [1, 1] })"),
              (Lines{"p.toml:3:26: 'Door' can only be read: the access of the tag is r, and a button writes it; name "
                     "another tag"}));
    EXPECT_EQ(readElements(R"({ type = "choice", tag = "Speeds[1]", at = [1, 1], choices = [{ value = 0, text = "a" }, )"
                           R"({ value = 1, text = "b" }] })"),
              (Lines{"p.toml:3:26: 'Speeds[1]' is one of 8 values, and a choice writes one alone; make a tag of its own "
                     "for it"}));
}

TEST_F(ElementMistakes, AControlKeepsTheLimitsOfItsTag)
{
    EXPECT_EQ(readElements(R"({ type = "button", tag = "SetPoint", value = 90.5, text = "a", at = [1, 1] })"),
              (Lines{"p.toml:3:46: 'SetPoint=90.5' is above the tag's max of 90 %; write a value within its limits"}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "SetPoint", text = "a", at = [1, 1] })"),
              (Lines{"p.toml:3:1: 'SetPoint=1' is below the tag's min of 10 %; write a value within its limits"}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "SetPoint", value = 10, mode = "momentary", text = "a", at = [1, 1] })"),
              (Lines{"p.toml:3:57: a momentary button writes 0 when it is released, which is below the tag's min of 10 %; "
                     "write mode = \"set\""}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Start", value = 2, text = "a", at = [1, 1] })"),
              (Lines{"p.toml:3:43: 'Start' is a bit, and never 2; write 0 or 1"}));
    EXPECT_EQ(readElements(R"({ type = "choice", tag = "SetPoint", at = [1, 1], choices = [{ value = 10, text = "a" }, )"
                           R"({ value = 100, text = "b" }] })"),
              (Lines{"p.toml:3:100: 'SetPoint=100' is above the tag's max of 90 %; write a value within its limits"}));
}

TEST_F(ElementMistakes, OfAButton)
{
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Start", at = [1, 1] })"),
              (Lines{"p.toml:3:1: 'text' is missing; add it, such as text = \"Start\""}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Start", at = [1, 1], mode = "toggle", text = "Open" })"),
              (Lines{"p.toml:3:1: 'text_on' is missing; add it, such as text_on = \"Close\""}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Start", at = [1, 1], mode = "push", text = "a", text_on = "b" })"),
              (Lines{"p.toml:3:55: 'push' is not a mode; write set, momentary or toggle"}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Start", at = [1, 1], text = "" })"),
              (Lines{"p.toml:3:55: 'text' is empty; write a text"}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Start", at = [1, 1], text = "a", text_on = "b" })"),
              (Lines{"p.toml:3:60: 'text_on' is not known here; known are type, at, size, label, mode, tag, text, value"}));
    EXPECT_EQ(readElements(R"({ type = "button", tag = "Start", at = [1, 1], text = "a", value = "1" })"),
              (Lines{"p.toml:3:68: 'value' is not a number; write one such as 0.1, without quotes"}));
}

TEST_F(ElementMistakes, OfATextAndABar)
{
    EXPECT_EQ(readElements(R"({ type = "text", at = [1, 1] })"),
              (Lines{"p.toml:3:1: 'text' is missing; add it, such as text = \"Mixing plant\""}));
    EXPECT_EQ(readElements(R"({ type = "text", at = [1, 1], text = "a", tag = "Level" })"),
              (Lines{"p.toml:3:38: a text is a fixed one or that of a tag; remove 'text' or 'tag'"}));
    EXPECT_EQ(readElements(R"({ type = "bar", at = [1, 1], tag = "Mode", max = 10 })"),
              (Lines{"p.toml:3:1: 'min' is missing, and the tag has none; add it, such as min = 0"}));
    EXPECT_EQ(readElements(R"({ type = "bar", at = [1, 1], tag = "Mode", min = 1, max = 1 })"),
              (Lines{"p.toml:3:59: a bar from 1 to 1 has no length; write a 'min' that is below 'max'"}));
    EXPECT_EQ(readElements(R"({ type = "bar", at = [1, 1], tag = "Level", min = 200 })"),
              (Lines{"p.toml:3:51: a bar from 200 to 100 has no length; write a 'min' that is below 'max'"}));
    EXPECT_EQ(readElements(R"({ type = "bar", at = [1, 1], tag = "Level", min = nan })"),
              (Lines{"p.toml:3:51: 'min' is not a number; write one such as 0.1, without quotes"}));
}

TEST_F(ElementMistakes, OfStatesAndChoices)
{
    EXPECT_EQ(readElements(R"({ type = "lamp", at = [1, 1], tag = "Mode" })"),
              (Lines{"p.toml:3:1: 'states' is missing; add it, such as states = [{ value = 0, text = \"off\" }, { value = 1, "
                     "text = \"on\" }]"}));
    for (const char *states : {"[]", "5", "{}"})
        EXPECT_EQ(readElements(std::string(R"({ type = "lamp", at = [1, 1], tag = "Mode", states = )") + states + " }"),
                  (Lines{"p.toml:3:54: 'states' is not a list of 1 to 20 entries such as { value = 0, text = \"off\" }"}));
    EXPECT_EQ(readElements(R"({ type = "choice", at = [1, 1], tag = "Mode", choices = [{ value = 0, text = "a" }] })"),
              (Lines{"p.toml:3:57: 'choices' is not a list of 2 to 20 entries such as { value = 0, text = \"off\" }"}));
    EXPECT_EQ(readElements("{ type = \"lamp\", at = [1, 1], tag = \"Pump\", states = [\n{ value = 1, text = \"a\" },\n"
                           "{ value = 1, text = \"b\" },\n{ value = 2, text = \"\" },\n{ text = \"c\", priority = 4 },\n"
                           "{ value = true, txt = \"d\" },\n7] }"),
              (Lines{"p.toml:5:11: the value 1 is there twice; remove one",
                     "p.toml:6:11: 'Pump' is a bit, and never 2; write 0 or 1",
                     "p.toml:6:21: 'text' is empty; write a text",
                     "p.toml:7:1: 'value' is missing; add it, such as value = 0",
                     "p.toml:7:26: 'priority' is not a whole number from 0 to 3",
                     "p.toml:8:1: 'text' is missing; add it, such as text = \"off\"",
                     "p.toml:8:11: 'value' is not a number; write one such as 0.1, without quotes",
                     "p.toml:8:17: 'txt' is not known here; known are value, text, priority",
                     "p.toml:9:1: this is no entry of 'states'; write { value = 0, text = \"off\" }"}));
    EXPECT_EQ(readElements("{ type = \"choice\", at = [1, 1], tag = \"Mode\", choices = [\n{ value = 1, text = \"a\" },\n"
                           "{ value = 2, text = \"b\", priority = 1 }] }"),
              (Lines{"p.toml:5:26: 'priority' is not known here; known are value, text"}));
}

TEST_F(ElementMistakes, OfATrend)
{
    const std::string none = "'tags' is not a list of 1 to 8 tags; write their names, such as [\"Level\", \"SetPoint\"]";
    EXPECT_EQ(readElements(R"({ type = "trend", at = [1, 1] })"),
              (Lines{"p.toml:3:1: 'tag' is missing; add it, such as tag = \"Level\""}));
    for (const char *list : {"[]", "\"Level\"", "{}", R"(["a", "a", "a", "a", "a", "a", "a", "a", "a"])"})
        EXPECT_EQ(readElements(std::string(R"({ type = "trend", at = [1, 1], tags = )") + list + " }"),
                  (Lines{"p.toml:3:39: " + none}));
    EXPECT_EQ(readElements(R"({ type = "trend", at = [1, 1], tags = ["Level", "Speeds[1]", 5, "Levle", "Speeds[1]"] })"),
              (Lines{"p.toml:3:62: this is not a tag; write its name between quotes",
                     "p.toml:3:65: there is no tag 'Levle' (did you mean 'Level'?)",
                     "p.toml:3:74: 'Speeds[1]' is there twice; remove one"}));
    EXPECT_EQ(readElements(R"({ type = "trend", at = [1, 1], tags = ["Level"], tag = "Mode" })"),
              (Lines{"p.toml:3:39: the tags are given twice; remove 'tag' or 'tags'"}));
    for (const char *minutes : {"0", "481", "1.5", "\"10\""})
        EXPECT_EQ(readElements(std::string(R"({ type = "trend", at = [1, 1], tag = "Level", minutes = )") + minutes + " }"),
                  (Lines{"p.toml:3:57: 'minutes' is not a whole number from 1 to 480"}));
}

TEST_F(ElementMistakes, OfWhatNamesARecipeOrAScreen)
{
    EXPECT_EQ(readElements(R"({ type = "recipe", at = [1, 1], recipe = "Lemonad" })"),
              (Lines{"p.toml:3:42: there is no recipe 'Lemonad' (did you mean 'Lemonade'?)"}));
    EXPECT_EQ(readElements(R"({ type = "recipe", at = [1, 1], recipe = 7 })"),
              (Lines{"p.toml:3:42: this is not a recipe; write its name between quotes"}));
    EXPECT_EQ(readElements(R"({ type = "screen", at = [1, 1] })"),
              (Lines{"p.toml:3:1: 'screen' is missing; add it, such as screen = \"oven\""}));
    EXPECT_EQ(readElements(R"({ type = "screen", at = [1, 1], screen = "boiler" })"),
              (Lines{"p.toml:3:42: there is no screen 'boiler'; write the name of one of the file's screens"}));
}
