#include "common/suggestion.h"

#include <gtest/gtest.h>

// What a mistyped word was meant to be.

static const std::vector<std::string> WORDS = {"link", "watch", "read", "write", "check-project", "check"};

TEST(Suggestion, MendsOneSlip)
{
    EXPECT_EQ(nearestWord("wach", WORDS), "watch");   // left out
    EXPECT_EQ(nearestWord("wattch", WORDS), "watch"); // too many
    EXPECT_EQ(nearestWord("wstch", WORDS), "watch");  // replaced
    EXPECT_EQ(nearestWord("raed", WORDS), "read");    // swapped
}

TEST(Suggestion, MendsTwoSlipsOfALongWord)
{
    EXPECT_EQ(nearestWord("chek-projct", WORDS), "check-project");
    EXPECT_EQ(nearestWord("look", WORDS), ""); // two of four letters are right
}

TEST(Suggestion, TakesTheNearest)
{
    EXPECT_EQ(nearestWord("chec", WORDS), "check");
    EXPECT_EQ(nearestWord("frobnicate", WORDS), "");
    EXPECT_EQ(nearestWord("", WORDS), "");
    EXPECT_EQ(nearestWord("x", {}), "");
}
