#include "base/said_once.h"

#include <gtest/gtest.h>

namespace {

std::string numbered(std::size_t number) { return "text " + std::to_string(number); }

TEST(SaidOnce, ATextIsNewOnce)
{
    SaidOnce said;
    EXPECT_TRUE(said.isNew("a"));
    EXPECT_TRUE(said.isNew("b"));
    EXPECT_FALSE(said.isNew("a"));
    EXPECT_FALSE(said.isNew("b"));
}

TEST(SaidOnce, ForgetsWhatBeginsSo)
{
    SaidOnce said;
    for (const char *text : {"read DM:1: 1", "read DM:1: 2", "read DM:10: 1", "read DM:0: 1"})
        EXPECT_TRUE(said.isNew(text));
    said.forget("read DM:1: ");
    EXPECT_TRUE(said.isNew("read DM:1: 1"));
    EXPECT_TRUE(said.isNew("read DM:1: 2"));
    EXPECT_FALSE(said.isNew("read DM:10: 1"));
    EXPECT_FALSE(said.isNew("read DM:0: 1"));
}

TEST(SaidOnce, RemembersAThousandAndThenForgetsTheFirst)
{
    SaidOnce said;
    for (std::size_t i = 0; i < 1000; ++i)
        EXPECT_TRUE(said.isNew(numbered(i)));
    EXPECT_FALSE(said.isNew(numbered(0)));
    EXPECT_TRUE(said.isNew(numbered(1000)));
    EXPECT_FALSE(said.isNew(numbered(1)));
    EXPECT_TRUE(said.isNew(numbered(0)));
    EXPECT_TRUE(said.isNew(numbered(1)));
}

TEST(SaidOnce, GoesOnBehindForgottenOnes)
{
    SaidOnce said;
    for (std::size_t i = 0; i < 1000; ++i)
        said.isNew(numbered(i));
    said.forget("text 99"); // eleven of them
    for (std::size_t i = 1000; i < 1011; ++i)
        EXPECT_TRUE(said.isNew(numbered(i)));
    EXPECT_FALSE(said.isNew(numbered(0)));
    EXPECT_TRUE(said.isNew(numbered(1011)));
    EXPECT_TRUE(said.isNew(numbered(0)));
}

} // namespace
