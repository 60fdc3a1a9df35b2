#include "common/usage_error.h"
#include "table/edit_line.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Value 3, which may be up to 100.
class PlayedEditor : public ValueEditor {
public:
    std::string name(std::size_t value) const override { return "v" + std::to_string(value); }
    std::string held(std::size_t) const override { return holds; }
    std::string allowed(std::size_t) const override { return "up to 100"; }
    std::string obstacle(std::size_t) const override { return hindered; }
    std::string check(std::size_t, const std::string &text) const override
    {
        if (text.empty() || text.size() > 2)
            throw UsageError("'" + text + "' is too much");
        return text + ".0 %";
    }
    void write(std::size_t value, const std::string &text) override { written.push_back(name(value) + "=" + text); }

    std::string holds = "70.0 %";
    std::string hindered;
    std::vector<std::string> written;
};

class EditLineTest : public ::testing::Test {
protected:
    std::string type(const std::string &text)
    {
        std::string said;
        for (const char c : text)
            said = c == '\n' ? line.take({Key::ENTER}) : line.take({Key::TEXT, std::string(1, c)});
        return said;
    }

    PlayedEditor editor;
    EditLine     line{editor};
};

TEST_F(EditLineTest, WritesWhatIsConfirmed)
{
    EXPECT_EQ(line.open(3), "");
    EXPECT_EQ(line.line(), "v3: 70.0 % -> _");
    EXPECT_EQ(line.remark(), "up to 100; Enter goes on, Esc leaves");
    type("75");
    EXPECT_EQ(line.line(), "v3: 70.0 % -> 75_");
    type("\n");
    EXPECT_EQ(line.line(), "write v3: 70.0 % -> 75.0 %? y/n");
    EXPECT_EQ(line.remark(), "y writes it, any other key does not");
    line.noteShown();
    EXPECT_TRUE(editor.written.empty());
    EXPECT_EQ(type("y"), "");
    EXPECT_FALSE(line.isOpen());
    EXPECT_EQ(editor.written, std::vector<std::string>{"v3=75"});
}

TEST_F(EditLineTest, BackspaceTakesACharacterBack)
{
    line.open(3);
    type("7");
    line.take({Key::TEXT, "ü"});
    line.take({Key::BACKSPACE});
    EXPECT_EQ(line.line(), "v3: 70.0 % -> 7_");
    line.take({Key::BACKSPACE});
    line.take({Key::BACKSPACE});
    EXPECT_EQ(line.line(), "v3: 70.0 % -> _");
}

TEST_F(EditLineTest, AMistakeIsSaidAtOnceAndLeadsToNoQuestion)
{
    line.open(3);
    type("175");
    EXPECT_EQ(line.remark(), "'175' is too much");
    type("\n");
    EXPECT_EQ(line.line(), "v3: 70.0 % -> 175_");
    line.take({Key::BACKSPACE});
    EXPECT_EQ(line.remark(), "up to 100; Enter goes on, Esc leaves");
}

TEST_F(EditLineTest, NothingTypedLeadsToNoQuestion)
{
    line.open(3);
    type("\n");
    EXPECT_EQ(line.line(), "v3: 70.0 % -> _");
}

TEST_F(EditLineTest, AnyOtherAnswerWritesNothing)
{
    for (const Keystroke &answer : {Keystroke{Key::TEXT, "n"}, Keystroke{Key::TEXT, "Y"}, Keystroke{Key::ENTER},
                                    Keystroke{Key::ESCAPE}, Keystroke{Key::DOWN}}) {
        line.open(3);
        type("75\n");
        line.noteShown();
        EXPECT_EQ(line.take(answer), "nothing was written: not confirmed");
        EXPECT_FALSE(line.isOpen());
    }
    EXPECT_TRUE(editor.written.empty());
}

TEST_F(EditLineTest, EscLeavesIt)
{
    line.open(3);
    type("7");
    EXPECT_EQ(line.take({Key::ESCAPE}), "nothing was written: the edit was left");
    EXPECT_FALSE(line.isOpen());
    line.open(3);
    EXPECT_EQ(line.line(), "v3: 70.0 % -> _") << "begins empty";
}

TEST_F(EditLineTest, AnAnswerTypedAheadDoesNotCount)
{
    line.open(3);
    line.noteShown();
    type("75\ny");
    EXPECT_TRUE(line.isOpen());
    EXPECT_TRUE(editor.written.empty());
    line.noteShown();
    type("y");
    EXPECT_EQ(editor.written, std::vector<std::string>{"v3=75"});
}

TEST_F(EditLineTest, TheQuestionShowsWhatThePlcHoldsNow)
{
    line.open(3);
    type("75\n");
    editor.holds = "71.5 %";
    EXPECT_EQ(line.line(), "write v3: 71.5 % -> 75.0 %? y/n");
}

TEST_F(EditLineTest, WhatCannotBeWrittenIsNotOpened)
{
    editor.hindered = "no link";
    EXPECT_EQ(line.open(3), "no link");
    EXPECT_FALSE(line.isOpen());
}

TEST_F(EditLineTest, ALinkThatIsLostMeanwhileStopsIt)
{
    line.open(3);
    type("75");
    editor.hindered = "no link";
    EXPECT_EQ(line.remark(), "no link");
    type("\n");
    EXPECT_EQ(line.line(), "v3: 70.0 % -> 75_");
    editor.hindered = "";
    type("\n");
    line.noteShown();
    editor.hindered = "no link";
    EXPECT_EQ(line.remark(), "no link");
    EXPECT_EQ(type("y"), "nothing was written: no link");
    EXPECT_FALSE(line.isOpen());
    EXPECT_TRUE(editor.written.empty());
}

} // namespace
