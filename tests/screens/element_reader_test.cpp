#include "screens_fixture.h"

// Every kind of element, read into its record.

namespace {

class ElementReading : public ScreensFixture {
protected:
    // Reads one element and tells whether it is as it should be in what all kinds have.
    void readOne(const std::string &text, ElementKind kind)
    {
        EXPECT_EQ(readElements(text), Lines());
        ASSERT_EQ(book.screens.size(), 2u);
        ASSERT_EQ(book.screens[0].elements.size(), 1u);
        EXPECT_EQ(element().kind, kind);
        EXPECT_EQ(element().place.line, 3);
        EXPECT_EQ(element().place.column, 1);
    }

    void expectTags(const std::vector<std::pair<std::string, std::size_t>> &expected) const
    {
        std::vector<std::pair<std::string, std::size_t>> found;
        for (const TagValue &value : element().tags)
            found.emplace_back(value.tag, value.index);
        EXPECT_EQ(found, expected);
    }

    void expectStates(const std::vector<std::tuple<double, std::string, int>> &expected) const
    {
        std::vector<std::tuple<double, std::string, int>> found;
        for (const ValueText &state : element().states)
            found.emplace_back(state.value, state.text, state.priority);
        EXPECT_EQ(found, expected);
    }
};

} // namespace

TEST_F(ElementReading, ANumberInTheGrid)
{
    readOne(R"({ type = "number", tag = "Level", at = [7, 4], size = [2, 1], label = "Tank 1" })", ElementKind::NUMBER);
    EXPECT_EQ(element().column, 6);
    EXPECT_EQ(element().row, 3);
    EXPECT_EQ(element().columns, 2);
    EXPECT_EQ(element().rows, 1);
    EXPECT_EQ(element().label, "Tank 1");
    expectTags({{"Level", 0}});
}

TEST_F(ElementReading, AnElementIsOneCellWithoutALabel)
{
    readOne(R"({ type = "number", tag = "Speeds[7]", at = [8, 5] })", ElementKind::NUMBER);
    EXPECT_EQ(element().columns, 1);
    EXPECT_EQ(element().rows, 1);
    EXPECT_EQ(element().label, "");
    expectTags({{"Speeds", 7}});
}

TEST_F(ElementReading, AFixedTextOrThatOfATag)
{
    readOne(R"({ type = "text", text = "Mixing plant", at = [3, 1], size = [4, 1] })", ElementKind::TEXT);
    EXPECT_EQ(element().text, "Mixing plant");
    expectTags({});
    for (const char *tag : {"Product", "Code", "Pump", "Level"}) {
        readOne(std::string(R"({ type = "text", tag = ")") + tag + R"(", label = "is", at = [3, 1] })", ElementKind::TEXT);
        expectTags({{tag, 0}});
        EXPECT_EQ(element().text, "");
        EXPECT_EQ(element().label, "is");
    }
}

TEST_F(ElementReading, ABarHasTheLimitsOfItsTagOrItsOwn)
{
    readOne(R"({ type = "bar", tag = "SetPoint", at = [1, 2], size = [1, 4] })", ElementKind::BAR);
    EXPECT_EQ(element().minimum, 10);
    EXPECT_EQ(element().maximum, 90);
    EXPECT_EQ(element().rows, 4);
    readOne(R"({ type = "bar", tag = "SetPoint", at = [1, 2], max = 50.5 })", ElementKind::BAR);
    EXPECT_EQ(element().minimum, 10);
    EXPECT_EQ(element().maximum, 50.5);
    readOne(R"({ type = "bar", tag = "Speeds[0]", at = [1, 2], min = -1, max = 1 })", ElementKind::BAR);
    EXPECT_EQ(element().minimum, -1);
    EXPECT_EQ(element().maximum, 1);
    expectTags({{"Speeds", 0}});
}

TEST_F(ElementReading, ALampOfABitIsOffOrOn)
{
    readOne(R"({ type = "lamp", tag = "Doors[3]", at = [3, 2] })", ElementKind::LAMP);
    expectTags({{"Doors", 3}});
    expectStates({{0, "off", 0}, {1, "on", 0}});
}

TEST_F(ElementReading, ALampHasStates)
{
    readOne(R"({ type = "lamp", tag = "Pump", at = [3, 2], states = [{ value = 1, text = "fault", priority = 3 }] })",
            ElementKind::LAMP);
    expectStates({{1, "fault", 3}});
    readOne(R"({ type = "lamp", tag = "Measured", at = [3, 2], states = [{ value = -2.5, text = "a" }, )"
            R"({ value = 1000, text = "b", priority = 1 }, { value = 0, text = "c", priority = 0 }] })",
            ElementKind::LAMP);
    expectStates({{-2.5, "a", 0}, {1000, "b", 1}, {0, "c", 0}});
}

TEST_F(ElementReading, ATrendOfOneTagOrSeveral)
{
    readOne(R"({ type = "trend", tag = "Level", at = [4, 2], size = [5, 3] })", ElementKind::TREND);
    expectTags({{"Level", 0}});
    EXPECT_EQ(element().span, std::chrono::minutes(10));
    readOne(R"({ type = "trend", tags = ["Level", "Pump", "Speeds[1]", "Speeds[2]"], at = [4, 2], minutes = 480 })",
            ElementKind::TREND);
    expectTags({{"Level", 0}, {"Pump", 0}, {"Speeds", 1}, {"Speeds", 2}});
    EXPECT_EQ(element().span, std::chrono::minutes(480));
}

TEST_F(ElementReading, AButtonSetsAValue)
{
    readOne(R"({ type = "button", tag = "Start", at = [3, 5], text = "Start" })", ElementKind::BUTTON);
    EXPECT_EQ(element().mode, ButtonMode::SET);
    EXPECT_EQ(element().value, 1);
    EXPECT_EQ(element().text, "Start");
    EXPECT_EQ(element().textOn, "");
    expectTags({{"Start", 0}});
    readOne(R"({ type = "button", tag = "SetPoint", at = [3, 5], mode = "set", value = 72.5, text = "Usual", label = "P" })",
            ElementKind::BUTTON);
    EXPECT_EQ(element().mode, ButtonMode::SET);
    EXPECT_EQ(element().value, 72.5);
    EXPECT_EQ(element().label, "P");
}

TEST_F(ElementReading, AMomentaryButtonAndAToggle)
{
    readOne(R"({ type = "button", tag = "Mode", at = [3, 5], mode = "momentary", value = 4, text = "Jog" })",
            ElementKind::BUTTON);
    EXPECT_EQ(element().mode, ButtonMode::MOMENTARY);
    EXPECT_EQ(element().value, 4);
    readOne(R"({ type = "button", tag = "Start", at = [4, 5], mode = "toggle", text = "Open", text_on = "Close" })",
            ElementKind::BUTTON);
    EXPECT_EQ(element().mode, ButtonMode::TOGGLE);
    EXPECT_EQ(element().text, "Open");
    EXPECT_EQ(element().textOn, "Close");
}

TEST_F(ElementReading, ASetPointAndAChoice)
{
    readOne(R"({ type = "set-point", tag = "SetPoint", at = [5, 5] })", ElementKind::SET_POINT);
    expectTags({{"SetPoint", 0}});
    readOne(R"({ type = "choice", tag = "Mode", at = [6, 5], choices = [{ value = 0, text = "off" }, )"
            R"({ value = 1, text = "auto" }] })",
            ElementKind::CHOICE);
    expectTags({{"Mode", 0}});
    expectStates({{0, "off", 0}, {1, "auto", 0}});
}

TEST_F(ElementReading, RecipesAlarmsGroupsAndScreens)
{
    readOne(R"({ type = "recipe", at = [7, 5] })", ElementKind::RECIPE);
    EXPECT_EQ(element().recipe, "");
    readOne(R"({ type = "recipe", at = [7, 5], recipe = "Cola" })", ElementKind::RECIPE);
    EXPECT_EQ(element().recipe, "Cola");
    readOne(R"({ type = "alarms", at = [1, 5], size = [8, 1] })", ElementKind::ALARMS);
    EXPECT_EQ(element().columns, 8);
    readOne(R"({ type = "group", label = "Valves", at = [3, 2], size = [2, 3] })", ElementKind::GROUP);
    EXPECT_EQ(element().label, "Valves");
    readOne(R"({ type = "screen", screen = "oven", at = [8, 5] })", ElementKind::SCREEN);
    EXPECT_EQ(element().screen, "oven");
}

TEST_F(ElementReading, AsMuchAsThereIsRoomFor)
{
    std::string states;
    for (int i = 0; i < 20; ++i)
        states += "{ value = " + std::to_string(i) + ", text = \"s\" }, ";
    readOne("{ type = \"lamp\", tag = \"Mode\", at = [1, 1], states = [" + states + "] }", ElementKind::LAMP);
    EXPECT_EQ(element().states.size(), 20u);
    readOne("{ type = \"choice\", tag = \"Mode\", at = [1, 1], choices = [" + states + "] }", ElementKind::CHOICE);
    EXPECT_EQ(element().states.size(), 20u);
    readOne(R"({ type = "trend", tags = ["Level", "SetPoint", "Pump", "Mode", "Measured", "Speeds[0]", "Doors[0]", "Start"], )"
            R"(at = [1, 1], minutes = 1 })",
            ElementKind::TREND);
    EXPECT_EQ(element().tags.size(), 8u);
    readOne(R"({ type = "alarms", at = [1, 1], size = [8, 5] })", ElementKind::ALARMS);
    readOne(R"({ type = "button", tag = "SetPoint", at = [1, 1], value = 10, text = "least" })", ElementKind::BUTTON);
    readOne(R"({ type = "button", tag = "SetPoint", at = [1, 1], value = 90, text = "most" })", ElementKind::BUTTON);
    states += "{ value = 20, text = \"s\" }";
    EXPECT_EQ(readElements("{ type = \"lamp\", tag = \"Mode\", at = [1, 1], states = [" + states + "] }"),
              (std::vector<std::string>{"p.toml:3:54: 'states' is not a list of 1 to 20 entries such as { value = 0, text = "
                                        "\"off\" }"}));
}
