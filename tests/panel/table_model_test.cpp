#include "common/usage_error.h"
#include "table/table_model.h"

#include <gtest/gtest.h>

namespace {

using fins::Quality;
using Words = std::vector<std::string>;

class PlayedEditor : public ValueEditor {
public:
    std::string name(std::size_t value) const override { return "v" + std::to_string(value); }
    std::string held(std::size_t) const override { return "1"; }
    std::string allowed(std::size_t) const override { return "anything"; }
    std::string obstacle(std::size_t) const override { return hindered; }
    std::string check(std::size_t, const std::string &text) const override { return text; }
    void write(std::size_t value, const std::string &text) override { written.push_back(name(value) + "=" + text); }

    std::string hindered;
    Words written;
};

class TableModelTest : public ::testing::Test {
protected:
    TableModelTest()
    {
        for (const char *name : {"Pump", "Level", "Speed", "Tank[0]"}) {
            ValueRow row;
            row.name    = name;
            row.value   = "1";
            row.quality = Quality::GOOD;
            rows.push_back(row);
        }
        rows[1].unit    = "mm";
        rows[2].comment = "of the pump, mm/s";
    }

    TableContent shown()
    {
        model.take(rows, now);
        TableContent content = {};
        model.fill(content, now);
        return content;
    }

    Words names()
    {
        Words all;
        for (const TableRow &row : shown().rows)
            all.push_back(row.heading.empty() ? row.name : "[" + row.heading + "]");
        return all;
    }

    void press(Key key) { model.press({key}); }
    void type(const std::string &text)
    {
        for (const char c : text)
            model.press({Key::TEXT, std::string(1, c)});
    }

    // The name of the selected row; "" if there is none.
    std::string selected()
    {
        std::string name;
        for (const TableRow &row : shown().rows)
            name += row.isSelected ? row.name : "";
        return name;
    }

    void manyRows(std::size_t count)
    {
        rows.assign(count, rows[0]);
        for (std::size_t i = 0; i < count; ++i)
            rows[i].name = "t" + std::to_string(i);
    }

    PlayedEditor editor;
    TableModel   model{editor};
    std::vector<ValueRow> rows;
    TimePoint    now{Millis(100000)};
};

TEST_F(TableModelTest, ShowsAllInTheirOrder)
{
    EXPECT_EQ(names(), (Words{"Pump", "Level", "Speed", "Tank[0]"}));
    EXPECT_EQ(shown().mode, "");
    EXPECT_EQ(shown().input, "");
    EXPECT_EQ(selected(), "");
}

TEST_F(TableModelTest, QEndsItButNotWhileSomethingIsTyped)
{
    type("/q");
    EXPECT_FALSE(model.wantsEnd());
    press(Key::ESCAPE);
    type("q");
    EXPECT_TRUE(model.wantsEnd());
}

TEST_F(TableModelTest, TheFilterNarrowsWithEveryKey)
{
    type("/");
    EXPECT_EQ(shown().input, "/_");
    type("p");
    EXPECT_EQ(names(), (Words{"Pump", "Speed"}));
    EXPECT_EQ(shown().mode, "2 of 4 shown: p");
    type("U");
    EXPECT_EQ(shown().input, "/pU_");
    EXPECT_EQ(names(), (Words{"Pump", "Speed"})) << "the comment counts, too";
    type("MP,");
    EXPECT_EQ(names(), (Words{"Speed"}));
    press(Key::BACKSPACE);
    EXPECT_EQ(names(), (Words{"Pump", "Speed"}));
}

TEST_F(TableModelTest, TheFilterLooksAtUnitsAndTakesPatterns)
{
    type("/mm");
    EXPECT_EQ(names(), (Words{"Level", "Speed"}));
    press(Key::ESCAPE);
    type("/t?nk[0");
    EXPECT_EQ(names(), (Words{"Tank[0]"}));
    press(Key::ESCAPE);
    type("/l*v");
    EXPECT_EQ(names(), (Words{"Level"}));
}

TEST_F(TableModelTest, EnterKeepsTheFilterAndEscDropsIt)
{
    type("/lev");
    press(Key::ENTER);
    EXPECT_EQ(names(), (Words{"Level"}));
    EXPECT_EQ(shown().input, "");
    EXPECT_EQ(shown().mode, "1 of 4 shown: lev");
    type("/x");
    EXPECT_EQ(names(), Words());
    EXPECT_EQ(shown().mode, "0 of 4 shown: levx");
    press(Key::ESCAPE);
    EXPECT_EQ(names().size(), 4u);
    EXPECT_EQ(shown().mode, "");
}

TEST_F(TableModelTest, SCyclesTheOrderAndTheHeadNamesIt)
{
    rows[0].value = "10";
    rows[1].value = "9";
    rows[2].value = "";
    rows[3].value = "\"text\"";
    rows[3].changedAt = now;
    rows[2].quality = Quality::REFUSED;
    type("s");
    EXPECT_EQ(shown().mode, "by name");
    EXPECT_EQ(names(), (Words{"Level", "Pump", "Speed", "Tank[0]"}));
    type("s");
    EXPECT_EQ(shown().mode, "by value");
    EXPECT_EQ(names(), (Words{"Level", "Pump", "Tank[0]", "Speed"}));
    type("s");
    EXPECT_EQ(shown().mode, "by latest change");
    EXPECT_EQ(names(), (Words{"Tank[0]", "Pump", "Level", "Speed"}));
    type("s");
    EXPECT_EQ(shown().mode, "by quality");
    EXPECT_EQ(names(), (Words{"Speed", "Pump", "Level", "Tank[0]"}));
    type("s");
    EXPECT_EQ(shown().mode, "");
    EXPECT_EQ(names(), (Words{"Pump", "Level", "Speed", "Tank[0]"}));
}

TEST_F(TableModelTest, AnOrderFollowsTheValues)
{
    type("ss");
    rows[3].value = "0";
    EXPECT_EQ(names().front(), "Tank[0]");
    rows[3].value = "2";
    EXPECT_EQ(names().back(), "Tank[0]");
}

TEST_F(TableModelTest, HeadingsOfGroupsInTheGivenOrderOnly)
{
    rows[0].group = "Drive";
    rows[2].group = "Drive";
    rows[3].group = "Tank";
    EXPECT_EQ(names(), (Words{"Level", "[Drive]", "Pump", "Speed", "[Tank]", "Tank[0]"}));
    type("/p");
    EXPECT_EQ(names(), (Words{"[Drive]", "Pump", "Speed"}));
    press(Key::ESCAPE);
    type("s");
    EXPECT_EQ(names(), (Words{"Level", "Pump", "Speed", "Tank[0]"}));
}

TEST_F(TableModelTest, HeadingsOfPlcs)
{
    rows[0].plc = rows[1].plc = "press";
    rows[2].plc = rows[3].plc = "dryer";
    rows[1].group = "Tank";
    EXPECT_EQ(names(), (Words{"[press]", "Pump", "[press: Tank]", "Level", "[dryer]", "Speed", "Tank[0]"}));
}

TEST_F(TableModelTest, AChangeIsNewAMomentAgo)
{
    rows[0].changedAt = now - Millis(1499);
    rows[1].changedAt = now - Millis(1500);
    const TableContent content = shown();
    EXPECT_TRUE(content.rows[0].isNew);
    EXPECT_EQ(content.rows[0].age, "1 s");
    EXPECT_FALSE(content.rows[1].isNew);
    EXPECT_EQ(content.rows[2].age, "-");
}

TEST_F(TableModelTest, APauseShowsWhatWas)
{
    rows[0].changedAt = now;
    EXPECT_TRUE(shown().rows[0].isNew);
    type("p");
    now += std::chrono::seconds(72);
    rows[0].value   = "2";
    rows[0].quality = Quality::LAST_KNOWN;
    rows[0].fate    = "writing";
    const TableContent paused = shown();
    EXPECT_TRUE(paused.isPaused);
    EXPECT_EQ(paused.mode, "PAUSED: 1 min old, polling goes on");
    EXPECT_EQ(paused.rows[0].value, "1");
    EXPECT_EQ(paused.rows[0].quality, Quality::GOOD);
    EXPECT_EQ(paused.rows[0].age, "0 s");
    EXPECT_FALSE(paused.rows[0].isNew) << "nothing may look live";
    EXPECT_EQ(paused.rows[0].maximum, "1");
    type("p");
    const TableContent live = shown();
    EXPECT_FALSE(live.isPaused);
    EXPECT_EQ(live.mode, "");
    EXPECT_EQ(live.rows[0].value, "2");
    EXPECT_EQ(live.rows[0].age, "1 min");
}

TEST_F(TableModelTest, ModesStandTogether)
{
    shown();
    type("ps/l");
    EXPECT_EQ(shown().mode, "PAUSED: 0 s old, polling goes on  1 of 4 shown: l  by name");
}

TEST_F(TableModelTest, MinimumAndMaximumOfGoodValues)
{
    shown();
    rows[0].value = "5";
    shown();
    rows[0].value   = "99";
    rows[0].quality = Quality::LAST_KNOWN;
    shown();
    rows[0].quality = Quality::WRITE_PENDING;
    shown();
    rows[0].value   = "3";
    rows[0].quality = Quality::GOOD;
    model.noteGood(0, "-7"); // between two screens
    const TableContent content = shown();
    EXPECT_EQ(content.rows[0].minimum, "-7");
    EXPECT_EQ(content.rows[0].maximum, "5");
    EXPECT_EQ(content.rows[1].maximum, "1");
}

TEST_F(TableModelTest, NoMinimumOfTextsAndOfWhatNeverCame)
{
    rows[0].value   = "\"text\"";
    rows[1].value   = "";
    rows[1].quality = Quality::NOT_CONNECTED;
    EXPECT_EQ(shown().rows[0].minimum, "");
    EXPECT_EQ(shown().rows[1].maximum, "");
}

TEST_F(TableModelTest, RBeginsMinimumAndMaximumAnew)
{
    rows[0].value = "5";
    shown();
    rows[0].value = "3";
    shown();
    type("r");
    EXPECT_EQ(shown().notice, "minimum and maximum begin anew");
    EXPECT_EQ(shown().rows[0].minimum, "3");
    EXPECT_EQ(shown().rows[0].maximum, "3");
    type("x");
    EXPECT_EQ(shown().notice, "");
}

TEST_F(TableModelTest, APauseKeepsMinimumAndMaximumGoing)
{
    shown();
    type("p");
    rows[0].value = "8";
    EXPECT_EQ(shown().rows[0].maximum, "1");
    rows[0].value = "4";
    type("p");
    EXPECT_EQ(shown().rows[0].maximum, "8");
}

TEST_F(TableModelTest, ArrowsMoveTheSelectionPastHeadings)
{
    rows[2].group = rows[3].group = "Tank";
    shown();
    press(Key::DOWN);
    EXPECT_EQ(selected(), "Pump");
    press(Key::DOWN);
    EXPECT_EQ(selected(), "Level");
    type("j");
    EXPECT_EQ(selected(), "Speed");
    type("jjj");
    EXPECT_EQ(selected(), "Tank[0]");
    type("k");
    EXPECT_EQ(selected(), "Speed");
    press(Key::HOME);
    EXPECT_EQ(selected(), "Pump");
    press(Key::UP);
    EXPECT_EQ(selected(), "Pump");
    press(Key::END);
    EXPECT_EQ(selected(), "Tank[0]");
    press(Key::ESCAPE);
    EXPECT_EQ(selected(), "");
}

TEST_F(TableModelTest, TheSelectionStaysWithItsValue)
{
    shown();
    press(Key::DOWN);
    type("s");
    EXPECT_EQ(selected(), "Pump");
    type("/lev");
    EXPECT_EQ(selected(), "");
    press(Key::ESCAPE);
    EXPECT_EQ(selected(), "") << "what was out of sight is not selected";
}

// 18 rows on a screen of 24 lines.
TEST_F(TableModelTest, PageKeysScrollWithoutASelection)
{
    manyRows(50);
    shown();
    press(Key::PAGE_DOWN);
    EXPECT_EQ(shown().first, 18u);
    press(Key::END);
    EXPECT_EQ(shown().first, 32u);
    press(Key::PAGE_UP);
    EXPECT_EQ(shown().first, 14u);
    press(Key::DOWN);
    EXPECT_EQ(selected(), "t14");
    press(Key::ESCAPE);
    press(Key::HOME);
    EXPECT_EQ(shown().first, 0u);
    model.setSize({80, 60});
    EXPECT_EQ(shown().first, 0u);
}

TEST_F(TableModelTest, TheSelectionIsKeptInView)
{
    manyRows(50);
    shown();
    press(Key::DOWN);
    press(Key::PAGE_DOWN);
    EXPECT_EQ(selected(), "t18");
    EXPECT_EQ(shown().first, 1u);
    press(Key::END);
    EXPECT_EQ(shown().first, 32u);
    press(Key::PAGE_UP);
    EXPECT_EQ(selected(), "t31");
    EXPECT_EQ(shown().first, 31u);
}

TEST_F(TableModelTest, AHeadingComesIntoViewWithItsFirstValue)
{
    manyRows(50);
    for (ValueRow &row : rows)
        row.group = "All";
    shown();
    press(Key::DOWN);
    press(Key::END);
    press(Key::HOME);
    EXPECT_EQ(shown().first, 0u);
}

// A mode takes a line.
TEST_F(TableModelTest, AModeTakesALineOfThePage)
{
    manyRows(50);
    type("s");
    shown();
    press(Key::PAGE_DOWN);
    EXPECT_EQ(shown().first, 17u);
    type("s");
    EXPECT_EQ(shown().first, 0u) << "another order begins at the top";
}

TEST_F(TableModelTest, AHigherScreenShowsTheFirstRowsAgain)
{
    manyRows(50);
    shown();
    press(Key::END);
    EXPECT_EQ(shown().first, 32u);
    model.setSize({80, 60});
    EXPECT_EQ(shown().first, 0u);
}

TEST_F(TableModelTest, EnterEditsTheSelectedValue)
{
    shown();
    press(Key::DOWN);
    press(Key::DOWN);
    press(Key::ENTER);
    EXPECT_EQ(shown().input, "v1: 1 -> _");
    EXPECT_EQ(shown().remark, "anything; Enter goes on, Esc leaves");
    type("spq/r"); // are no commands now
    EXPECT_EQ(shown().input, "v1: 1 -> spq/r_");
    EXPECT_EQ(shown().mode, "");
    press(Key::ENTER);
    type("y");
    EXPECT_TRUE(editor.written.empty()) << "the question was not on the screen";
    shown();
    model.noteShown();
    type("y");
    EXPECT_EQ(editor.written, Words{"v1=spq/r"});
    EXPECT_EQ(shown().input, "");
}

TEST_F(TableModelTest, AnEditStaysWithItsValueWhateverTheOrder)
{
    type("ss");
    shown();
    press(Key::DOWN);
    press(Key::ENTER);
    rows[0].value = "50"; // goes to the bottom
    EXPECT_EQ(shown().input, "v0: 1 -> _");
    EXPECT_EQ(selected(), "Pump");
}

TEST_F(TableModelTest, WhyThereIsNoEdit)
{
    shown();
    press(Key::ENTER);
    EXPECT_EQ(shown().notice, "choose a value by the arrows, then Enter");
    press(Key::DOWN);
    EXPECT_EQ(shown().notice, "");
    editor.hindered = "no link";
    press(Key::ENTER);
    EXPECT_EQ(shown().notice, "no link");
    EXPECT_EQ(shown().input, "");
    editor.hindered = "";
    type("p");
    press(Key::ENTER);
    EXPECT_EQ(shown().notice, "what is shown is paused: p goes on, and then values can be edited");
    EXPECT_EQ(shown().input, "");
}

TEST_F(TableModelTest, TheFateOfAnEditIsShownAtItsRow)
{
    rows[2].fate = "done";
    EXPECT_EQ(shown().rows[2].fate, "done");
    EXPECT_EQ(shown().rows[1].fate, "");
}

TEST_F(TableModelTest, EscTakesAFateAwayButNoneThatComesLater)
{
    rows[2].fate = "writing";
    shown();
    press(Key::ESCAPE);
    EXPECT_EQ(shown().rows[2].fate, "");
    rows[2].fate = "done";
    EXPECT_EQ(shown().rows[2].fate, "done");
    press(Key::ESCAPE);
    EXPECT_EQ(shown().rows[2].fate, "");
    press(Key::DOWN);
    press(Key::ENTER);
    EXPECT_EQ(shown().rows[2].fate, "done") << "until it is another one's";
}

TEST_F(TableModelTest, NoKeyDoesHarmWithoutValues)
{
    rows.clear();
    shown();
    for (const Key key : {Key::UP, Key::DOWN, Key::PAGE_UP, Key::PAGE_DOWN, Key::HOME, Key::END, Key::ENTER, Key::ESCAPE})
        press(key);
    type("sp/x");
    EXPECT_TRUE(shown().rows.empty());
}

} // namespace
