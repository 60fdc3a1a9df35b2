#include "terminal/text_width.h"

#include <gtest/gtest.h>

namespace {

const char ACCENT[] = "\xCC\x81";         // U+0301, goes onto the letter before
const char C1[]     = "\xC2\x9B";         // U+009B, as ESC [ for some terminals

TEST(TextWidth, ColumnsOfCharacters)
{
    EXPECT_EQ(textWidth(""), 0u);
    EXPECT_EQ(textWidth("level"), 5u);
    EXPECT_EQ(textWidth("Füllstand"), 9u);
    EXPECT_EQ(textWidth("▁█·"), 3u);
    EXPECT_EQ(textWidth("水位"), 4u);
    EXPECT_EQ(textWidth(std::string("e") + ACCENT), 1u);
}

TEST(TextWidth, WhatCannotBeShownTakesOne)
{
    EXPECT_EQ(textWidth("a\033b"), 3u);
    EXPECT_EQ(textWidth("a\xFF\xFE"), 3u);
    EXPECT_EQ(textWidth("a\xE6\xB0"), 3u); // the third byte is missing
    EXPECT_EQ(textWidth(std::string("a\0b", 3)), 3u);
    EXPECT_EQ(textWidth(C1), 1u);
}

TEST(TextStart, EndsBetweenCharacters)
{
    EXPECT_EQ(textStart("level", 3), "lev");
    EXPECT_EQ(textStart("level", 5), "level");
    EXPECT_EQ(textStart("level", 0), "");
    EXPECT_EQ(textStart("Füll", 2), "Fü");
    EXPECT_EQ(textStart("水位", 3), "水");
    EXPECT_EQ(textStart("水位", 1), "");
    EXPECT_EQ(textStart(std::string("e") + ACCENT + "f", 1), std::string("e") + ACCENT);
}

TEST(Showable, ControlCharactersAndStrayBytesAreQuestionMarks)
{
    EXPECT_EQ(showable("a\033[2Jb\x7f\n"), "a?[2Jb??");
    EXPECT_EQ(showable(std::string("x") + C1 + "y"), "x?y");
    EXPECT_EQ(showable("a\xFF\xE6\xB0"), "a???");
    EXPECT_EQ(showable(std::string("a\0b", 3)), "a?b");
    EXPECT_EQ(showable("水位 Füll ▁"), "水位 Füll ▁");
}

} // namespace
