#include "terminal/terminal.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(TakeKey, KeysOfSeveralTerminals)
{
    const std::pair<const char *, Key> KEYS[] = {
        {"q", Key::QUIT},          {"Q", Key::QUIT},          {"k", Key::UP},          {"j", Key::DOWN},
        {"\033[A", Key::UP},       {"\033OA", Key::UP},       {"\033[B", Key::DOWN},   {"\033OB", Key::DOWN},
        {"\033[5~", Key::PAGE_UP}, {"\033[6~", Key::PAGE_DOWN},
        {"\033[H", Key::HOME},     {"\033OH", Key::HOME},     {"\033[1~", Key::HOME},
        {"\033[F", Key::END},      {"\033OF", Key::END},      {"\033[4~", Key::END},
        {"\033[0n", Key::ANSWER},
    };
    for (const auto &[bytes, key] : KEYS) {
        std::string keys = bytes;
        EXPECT_EQ(takeKey(keys), key) << bytes + 1;
        EXPECT_EQ(keys, "");
    }
}

TEST(TakeKey, WaitsForTheRestOfASequence)
{
    std::string keys = "\033[";
    EXPECT_EQ(takeKey(keys), Key::NONE);
    keys += "6";
    EXPECT_EQ(takeKey(keys), Key::NONE);
    keys += "~q";
    EXPECT_EQ(takeKey(keys), Key::PAGE_DOWN);
    EXPECT_EQ(takeKey(keys), Key::QUIT);
    EXPECT_EQ(takeKey(keys), Key::NONE);
}

TEST(TakeKey, SkipsWhatIsNoKey)
{
    std::string keys = "xy\033[Zzq";
    EXPECT_EQ(takeKey(keys), Key::QUIT);
    EXPECT_EQ(keys, "");
}

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
