#include "terminal/terminal.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(ScreenUpdate, SendsChangedLinesOnly)
{
    EXPECT_EQ(screenUpdate({"a", "b", "c"}, {"a", "x", "c"}, {80, 24}), "\033[2;1Hx\033[K");
    EXPECT_EQ(screenUpdate({"a", "b"}, {"a", "b"}, {80, 24}), "");
}

TEST(ScreenUpdate, ClearsLinesThatAreGone)
{
    EXPECT_EQ(screenUpdate({"a", "b"}, {"a"}, {80, 24}), "\033[2;1H\033[K");
}

TEST(ScreenUpdate, DrawsANewScreenWithoutItsEmptyLines)
{
    EXPECT_EQ(screenUpdate({}, {"a", "", "c"}, {80, 24}), "\033[1;1Ha\033[K\033[3;1Hc\033[K");
}

TEST(ScreenUpdate, LeavesTheLastColumnOfAFullLine)
{
    EXPECT_EQ(screenUpdate({}, {"abcd"}, {4, 2}), "\033[1;1Habcd");
    EXPECT_EQ(screenUpdate({}, {"abc"}, {4, 2}), "\033[1;1Habc\033[K");
}

TEST(ScreenUpdate, NothingBelowTheScreen)
{
    EXPECT_EQ(screenUpdate({}, {"a", "b", "c"}, {80, 2}), "\033[1;1Ha\033[K\033[2;1Hb\033[K");
}

class Style : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const char *name : {"NO_COLOR", "LC_ALL", "LC_CTYPE", "LANG"})
            unsetenv(name);
    }
};

TEST_F(Style, NoColourWhereItIsNotWanted)
{
    EXPECT_TRUE(styleOfEnvironment().colour);
    setenv("NO_COLOR", "", 1);
    EXPECT_TRUE(styleOfEnvironment().colour);
    setenv("NO_COLOR", "1", 1);
    EXPECT_FALSE(styleOfEnvironment().colour);
}

TEST_F(Style, CharacterSetOfTheFirstVariableThatIsSet)
{
    EXPECT_FALSE(styleOfEnvironment().utf8);
    setenv("LANG", "de_DE.UTF-8", 1);
    EXPECT_TRUE(styleOfEnvironment().utf8);
    setenv("LC_CTYPE", "C", 1);
    EXPECT_FALSE(styleOfEnvironment().utf8);
    setenv("LC_ALL", "C.utf8", 1);
    EXPECT_TRUE(styleOfEnvironment().utf8);
}

} // namespace
