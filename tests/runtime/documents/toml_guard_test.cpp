#include "documents/toml_guard.h"

#include <gtest/gtest.h>

// What the TOML parser must not see, and what only looks like it.

namespace {

std::string repeated(const std::string &text, std::size_t times)
{
    std::string all;
    for (std::size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

// "LINE:COLUMN: what is wrong", or an empty text.
std::string dangerOf(const std::string &text)
{
    const std::optional<TomlProblem> found = findTomlDanger(text);
    return found ? std::to_string(found->line) + ":" + std::to_string(found->column) + ": " + found->text : "";
}

const char KEY[] = "a key of more than 32 parts; use fewer points";
const char LEVELS[] = "brackets of more than 32 levels; nest less deeply";

} // namespace

TEST(TomlGuard, KeysHaveAtMost32Parts)
{
    EXPECT_EQ(dangerOf(repeated("a.", 31) + "a = 1\n"), "");
    EXPECT_EQ(dangerOf("\n\n" + repeated("a.", 32) + "a = 1\n"), std::string("3:64: ") + KEY);
    EXPECT_EQ(dangerOf("[" + repeated("a . ", 32) + "a]\n"), std::string("1:128: ") + KEY);
    EXPECT_EQ(dangerOf("x = { " + repeated("\"a\".", 32) + "a = 1 }"), std::string("1:134: ") + KEY);
}

TEST(TomlGuard, PointsOfOneKeyAreNotThoseOfTheNext)
{
    const std::string key = repeated("a.", 31) + "a";
    EXPECT_EQ(dangerOf("[" + key + "]\n" + key + " = { " + key + " = 1.5, " + key + " = [1.5, 2.5] }\n" + key + "=1\n"),
              "");
    EXPECT_EQ(dangerOf("a = [" + repeated("1.5, ", 100) + "]\n"), "");
}

TEST(TomlGuard, BracketsHaveAtMost32Levels)
{
    EXPECT_EQ(dangerOf("a = " + repeated("[", 32) + repeated("]", 32) + "\n"), "");
    EXPECT_EQ(dangerOf("a = " + repeated("[", 33)), std::string("1:37: ") + LEVELS);
    EXPECT_EQ(dangerOf("a = " + repeated("{ b = ", 33)), std::string("1:197: ") + LEVELS);
    EXPECT_EQ(dangerOf(repeated("[[a]]\nb = [[1], [2]]\n", 100)), "");
    EXPECT_EQ(dangerOf(repeated("]", 40) + repeated("[", 33)), std::string("1:73: ") + LEVELS);
}

TEST(TomlGuard, CommentsAreNotLookedAt)
{
    EXPECT_EQ(dangerOf("# " + repeated("a.", 50) + repeated("[", 50) + " \"\na = 1 # \"\"\"\n"), "");
    EXPECT_EQ(dangerOf("# \"\n" + repeated("[", 33)), std::string("2:33: ") + LEVELS);
    EXPECT_EQ(dangerOf("# at the end" + repeated("[", 50)), "");
}

TEST(TomlGuard, StringsAreNotLookedAt)
{
    const std::string danger = repeated("a.", 50) + repeated("[", 50) + "#";
    EXPECT_EQ(dangerOf("a = \"" + danger + "\\\"" + danger + "\\\\\"\n"), "");
    EXPECT_EQ(dangerOf("a = '" + danger + "\\'\n"), "");
    EXPECT_EQ(dangerOf("a = \"\"\"" + danger + "\n" + danger + "\\\"\"\" \"\" " + danger + "\"\"\"\n"), "");
    EXPECT_EQ(dangerOf("a = '''" + danger + "\n'' " + danger + "\\'''\n"), "");
    EXPECT_EQ(dangerOf("a = \"" + danger), "");
    EXPECT_EQ(dangerOf("a = \"\"\"" + danger), "");
    EXPECT_EQ(dangerOf("a = \"\\"), "");
}

TEST(TomlGuard, WhatComesBehindAStringIsLookedAt)
{
    const struct {
        const char *string;
        const char *place; // of the 33rd bracket behind it
    } rows[] = {{R"("")", "1:35: "},         {"''", "1:35: "},           {R"("\"")", "1:37: "},
                {R"('\')", "1:36: "},        {R"("""""")", "1:39: "},    {R"("""a"""")", "1:41: "},
                {R"("""a""""")", "1:42: "},  {"''''''", "1:39: "},       {"'''a''''", "1:41: "},
                {"'''a'''''", "1:42: "},    {R"("""\"""")", "1:41: "},  {"\"open\n", "2:33: "},
                {"'open\n", "2:33: "}};
    for (const auto &row : rows)
        EXPECT_EQ(dangerOf(row.string + repeated("[", 33)), std::string(row.place) + LEVELS) << row.string;
}

TEST(TomlGuard, TextsAreAtMost4MiB)
{
    const std::string line = "# " + std::string(1021, 'x') + "\n";
    const std::string most = repeated(line, 4096);
    ASSERT_EQ(most.size(), 4194304u);
    EXPECT_EQ(dangerOf(most), "");
    EXPECT_EQ(dangerOf(most + "\n"),
              "1:1: the file is larger than 4 MiB; keep what belongs together in smaller files");
}
