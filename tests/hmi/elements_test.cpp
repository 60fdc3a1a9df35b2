#include "hmi_fixture.h"

#include "elements/displays.h"

// What each element shows, in each quality, by what it says to a screen reader.

static const char TAGS[] = R"([tags]
Level = { type = "DM", address = 0, data = "s16", scale = 0.1, decimals = 1, unit = "%", access = "r" }
State = { type = "DM", address = 5, comment = "Mode" }
Pump  = { type = "CIO_bit", address = "0.0" }
Name  = { type = "DM", address = 300, count = 4, data = "string", comment = "Product" }
Three = { type = "DM", address = 10, count = 3 }
)";

static std::string screen(const std::string &elements)
{
    return std::string(TAGS) + "[screens.main]\ntitle = \"Main\"\nelements = [" + elements + "]\n";
}

class Elements : public HmiTest {
protected:
    void show(const std::string &elements)
    {
        plc.write("DM:0", "453");
        plc.write("DM:5", "2");
        plc.write("DM:10", "7 8 9");
        openProject(screen(elements));
        ASSERT_TRUE(untilOnline());
    }
};

TEST_F(Elements, NumberShowsValueUnitAndQuality)
{
    show(R"({ type = "number", tag = "Level", at = [1, 1], size = [2, 1] })");
    EXPECT_TRUE(untilSpoken("Level", "45.3 %, good, changed 0 s ago"));
    plc.write("DM:0", "65535");
    EXPECT_TRUE(untilSpoken("Level", "-0.1 %, good"));
}

TEST_F(Elements, OneOfSeveralValuesIsShown)
{
    show(R"({ type = "number", tag = "Three[2]", at = [1, 1] })");
    EXPECT_TRUE(untilSpoken("Three[2]", "9, good"));
}

TEST_F(Elements, TextShowsAStringAndAFixedText)
{
    plc.write("DM:300", "20300 17742"); // "OLEN" by word: 4F4C 454E
    show(R"({ type = "text", tag = "Name", at = [1, 1] }, { type = "text", text = "Mixing plant", at = [2, 1] })");
    EXPECT_TRUE(untilSpoken("Product", "\"OLEN\", good"));
    EXPECT_EQ(element("Mixing plant")->value(), nullptr);
}

TEST_F(Elements, BarIsFilledBetweenItsEnds)
{
    show(R"({ type = "bar", tag = "Level", min = 40, max = 50, at = [1, 1] })");
    ASSERT_TRUE(untilSpoken("Level", "45.3 %, good"));
    const auto *bar = static_cast<BarElement *>(element("Level"));
    EXPECT_NEAR(bar->filled(), 0.53, 1e-9);
    EXPECT_NE(spoken("Level").find("from 40 to 50"), std::string::npos);
    plc.write("DM:0", "399");
    ASSERT_TRUE(untilSpoken("Level", "39.9 %"));
    EXPECT_EQ(bar->filled(), 0);
    plc.write("DM:0", "900");
    ASSERT_TRUE(untilSpoken("Level", "90.0 %"));
    EXPECT_EQ(bar->filled(), 1);
}

TEST_F(Elements, LampHasAStateForEachValue)
{
    show(R"({ type = "lamp", tag = "State", at = [1, 1], states = [{ value = 0, text = "stopped" }, { value = 2, text = "fault", priority = 2 }] }, { type = "lamp", tag = "Pump", at = [2, 1] })");
    EXPECT_TRUE(untilSpoken("Mode", "fault, abnormal: warning: 2, good"));
    EXPECT_TRUE(untilSpoken("Pump", "off: 0, good"));
    plc.write("DM:5", "1");
    EXPECT_TRUE(untilSpoken("Mode", "no state of this lamp: 1, good"));
    plc.write("DM:5", "0");
    EXPECT_TRUE(untilSpoken("Mode", "stopped: 0, good"));
}

TEST_F(Elements, ValueThatWasNeverReceivedIsADash)
{
    plc.tell("fault silence");
    openProject(screen(R"({ type = "number", tag = "Level", at = [1, 1] }, { type = "lamp", tag = "Pump", at = [2, 1] },
                          { type = "bar", tag = "Level", label = "Bar", min = 0, max = 100, at = [3, 1] })"));
    EXPECT_TRUE(untilSpoken("Level", "\u2014, not connected"));
    EXPECT_TRUE(untilSpoken("Pump", "\u2014, not connected"));
    EXPECT_EQ(static_cast<BarElement *>(element("Bar"))->filled(), 0);
    EXPECT_EQ(static_cast<LampElement *>(element("Pump"))->state(), nullptr);
}

TEST_F(Elements, LostLinkKeepsTheLastValueAndSaysItsAge)
{
    show(R"({ type = "number", tag = "Level", at = [1, 1] }, { type = "lamp", tag = "State", at = [2, 1], states = [{ value = 2, text = "running" }] })");
    ASSERT_TRUE(untilSpoken("Level", "45.3 %, good"));
    plc.tell("fault refuse");
    plc.tell("disconnect");
    EXPECT_TRUE(untilSpoken("Level", "45.3 %, last known, changed"));
    EXPECT_TRUE(untilSpoken("Mode", "running: 2, last known"));
    plc.tell("fault refuse off");
    EXPECT_TRUE(untilSpoken("Level", "45.3 %, good"));
}

TEST_F(Elements, RefusedValueIsSaidToBeRefused)
{
    plc.tell("fault end-code=2108");
    openProject(screen(R"({ type = "number", tag = "Level", at = [1, 1] })"));
    EXPECT_TRUE(untilSpoken("Level", "\u2014, refused"));
}

TEST_F(Elements, CardsShowItemsWithQualityAndAge)
{
    plc.write("DM:0", "453");
    openItems({"DM:0", "CIO_bit:0.0:3", "DM:100/f32"});
    EXPECT_EQ(window->view().elements().size(), 5u);
    EXPECT_TRUE(untilSpoken("DM:0", "453, good"));
    EXPECT_TRUE(untilSpoken("CIO_bit:0.2", "0, good"));
    EXPECT_TRUE(untilSpoken("DM:100/f32", "0, good"));
}

TEST_F(Elements, ProjectWithoutScreensHasCardsByTheScreensOfItsTags)
{
    openProject("[tags]\nA = { type = \"DM\", address = 1, screen = \"Left\" }\nB = { type = \"DM\", address = 2 }\n"
                "C = { type = \"DM\", address = 3, screen = \"Left\" }\n");
    ASSERT_EQ(panel->screens().size(), 2u);
    EXPECT_EQ(panel->screens()[0].title, "Left");
    EXPECT_EQ(panel->screens()[0].cards.size(), 2u);
    EXPECT_EQ(panel->screens()[1].title, plc.host());
    EXPECT_TRUE(untilSpoken("C", "0, good"));
}

TEST_F(Elements, ScreenSwitchShowsTheOtherScreen)
{
    openProject(std::string(TAGS) + "[screens.a]\nelements = [{ type = \"screen\", screen = \"b\", label = \"Go\", at = [1, 1] }]\n"
                                    "[screens.b]\ntitle = \"Second\"\nelements = [{ type = \"number\", tag = \"Level\", at = [1, 1] }]\n");
    QTest::mouseClick(window->view().elements().front(), Qt::LeftButton);
    EXPECT_EQ(window->currentScreen(), 1u);
    EXPECT_EQ(window->windowTitle().toStdString(), "Second");
    EXPECT_TRUE(untilSpoken("Level", "0.0 %, good"));
}

TEST_F(Elements, ElementsOfAGroupLieBelowItsTitle)
{
    show(R"({ type = "group", label = "Valves", at = [1, 1], size = [2, 1] }, { type = "number", tag = "Level", at = [2, 1] })");
    const QRect group = element("Valves")->geometry();
    const QRect number = element("Level")->geometry();
    EXPECT_TRUE(group.contains(number));
    EXPECT_GE(number.top(), group.top() + window->fontMetrics().height());
}
