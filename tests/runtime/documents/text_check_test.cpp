#include "documents/text_check.h"

#include <gtest/gtest.h>

namespace {

// "POSITION: what is wrong", or "".
std::string badOf(const std::string &text, const std::string &allowed = "")
{
    const std::optional<BadCharacter> bad = findBadCharacter(text, allowed);
    return bad ? std::to_string(bad->at) + ": " + bad->what : "";
}

std::string control(std::size_t at, const char *name)
{
    return std::to_string(at) + ": " + name + " is a control character; remove it";
}

const char NO_UTF8[] = "this is not UTF-8; save the file as UTF-8";

} // namespace

TEST(TextCheck, LetsTextsPass)
{
    // The last of one, two, three and four bytes, and those beside the refused ones.
    for (const char *text : {"", " ~", "\xC2\xA0", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80",
                             "\xF4\x8F\xBF\xBF", "\xED\x9F\xBF", "\xEE\x80\x80", "\xE2\x80\x90", "\xE2\x80\xAF",
                             "\xE2\x81\xA5", "\xE2\x81\xAA", "\xD8\x9B", "\xD8\x9D", "\xE2\x80\x8D"})
        EXPECT_EQ(badOf(text), "") << text;
}

TEST(TextCheck, FindsControlCharacters)
{
    EXPECT_EQ(badOf(std::string("a\0", 2)), control(1, "U+0000"));
    EXPECT_EQ(badOf("a\x1F"), control(1, "U+001F"));
    EXPECT_EQ(badOf("\xC3\xBC\x7F"), control(2, "U+007F"));
    EXPECT_EQ(badOf("\xC2\x80"), control(0, "U+0080"));
    EXPECT_EQ(badOf("\xC2\x9F"), control(0, "U+009F"));
    EXPECT_EQ(badOf("a\tb", "\t"), "");
    EXPECT_EQ(badOf("a\tb\n", "\t"), control(3, "U+000A"));
}

TEST(TextCheck, FindsMarksOfDirection)
{
    EXPECT_EQ(badOf("\xD8\x9C"), control(0, "U+061C"));
    EXPECT_EQ(badOf("\xE2\x80\x8E"), control(0, "U+200E"));
    EXPECT_EQ(badOf("\xE2\x80\x8F"), control(0, "U+200F"));
    EXPECT_EQ(badOf("\xE2\x80\xAA"), control(0, "U+202A"));
    EXPECT_EQ(badOf("\xE2\x80\xAE"), control(0, "U+202E"));
    EXPECT_EQ(badOf("\xE2\x81\xA6"), control(0, "U+2066"));
    EXPECT_EQ(badOf("\xE2\x81\xA9"), control(0, "U+2069"));
}

TEST(TextCheck, FindsWhatIsNoUtf8)
{
    // Bytes that continue nothing or are none, too few of them, longer than needed, surrogates, and past the last.
    for (const char *text : {"\x80", "\xBF", "\xFF", "\xFE", "\xC3", "\xC3(", "\xE2\x82", "\xF0\x90\x80", "\xC1\xBF",
                             "\xC0\x80", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
                             "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80"})
        EXPECT_EQ(badOf(std::string("ab") + text), std::string("2: ") + NO_UTF8) << text;
}

TEST(TextCheck, NamesThePlaceInAFile)
{
    Problems problems;
    EXPECT_TRUE(checkCharacters("a\tb\r\nc\n", "f", problems));
    EXPECT_FALSE(problems.any());
    EXPECT_FALSE(checkCharacters("\n\xC3\xBC\xE2\x82\xAC\x1B\x1B\n", "f", problems));
    ASSERT_EQ(problems.lines().size(), 1u);
    EXPECT_EQ(problems.lines()[0], "f:2:3: U+001B is a control character; remove it");
}

TEST(TextCheck, ReplacesThem)
{
    EXPECT_EQ(withoutBadCharacters("a\x1B[2J\xFF\xC3\xBC"), "a?[2J?\xC3\xBC");
    EXPECT_EQ(withoutBadCharacters("\x01\x02\n"), "???");
    EXPECT_EQ(withoutBadCharacters("\xC2\x9B" "b\xE2\x80\xAE"), "??b???"); // each byte of a control character
}
