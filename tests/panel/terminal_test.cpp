#include "terminal/terminal.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(TakeKey, keys_of_several_terminals)
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

TEST(TakeKey, waits_for_the_rest_of_a_sequence)
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

TEST(TakeKey, skips_what_is_no_key)
{
    std::string keys = "xy\033[Zzq";
    EXPECT_EQ(takeKey(keys), Key::QUIT);
    EXPECT_EQ(keys, "");
}

TEST(ScreenUpdate, sends_changed_lines_only)
{
    EXPECT_EQ(screenUpdate({"a", "b", "c"}, {"a", "x", "c"}, {80, 24}), "\033[2;1Hx\033[K");
    EXPECT_EQ(screenUpdate({"a", "b"}, {"a", "b"}, {80, 24}), "");
}

TEST(ScreenUpdate, clears_lines_that_are_gone)
{
    EXPECT_EQ(screenUpdate({"a", "b"}, {"a"}, {80, 24}), "\033[2;1H\033[K");
}

TEST(ScreenUpdate, draws_a_new_screen_without_its_empty_lines)
{
    EXPECT_EQ(screenUpdate({}, {"a", "", "c"}, {80, 24}), "\033[1;1Ha\033[K\033[3;1Hc\033[K");
}

TEST(ScreenUpdate, leaves_the_last_column_of_a_full_line)
{
    EXPECT_EQ(screenUpdate({}, {"abcd"}, {4, 2}), "\033[1;1Habcd");
    EXPECT_EQ(screenUpdate({}, {"abc"}, {4, 2}), "\033[1;1Habc\033[K");
}

TEST(ScreenUpdate, nothing_below_the_screen)
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

TEST_F(Style, no_colour_where_it_is_not_wanted)
{
    EXPECT_TRUE(styleOfEnvironment().colour);
    setenv("NO_COLOR", "", 1);
    EXPECT_TRUE(styleOfEnvironment().colour);
    setenv("NO_COLOR", "1", 1);
    EXPECT_FALSE(styleOfEnvironment().colour);
}

TEST_F(Style, character_set_of_the_first_variable_that_is_set)
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
