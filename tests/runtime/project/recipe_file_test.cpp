#include "project/recipe_file.h"

#include "support/built_driver.h"

#include <sstream>

namespace {

using Bytes = std::vector<quint8>;

std::vector<RecipeEntry> read(const std::string &text, bool needValues = false)
{
    std::istringstream input(text);
    return readRecipe(TagBook(builtDriver()), input, "mix.rcp", needValues);
}

std::string refusal(const std::string &text, bool needValues = false)
{
    return usageError([&] { read(text, needValues); });
}

std::string layout(const std::string &text, qint32 wordsPerFrame)
{
    std::string lines;
    for (const RecipeEntry &piece : layOutRecipe(read(text), wordsPerFrame))
        lines += recipeLine(piece) + "\n";
    return lines;
}

} // namespace

TEST(RecipeFile, ReadsVariablesWithValues)
{
    const std::vector<RecipeEntry> entries = read("# a mixture\n\nDM:100:3 = 1 2 0x0300 # three\r\n\tHR:5:1=-1\n", true);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(itemText(entries[0].item), "DM:100:3");
    EXPECT_EQ(entries[0].values, (Bytes{1, 0, 2, 0, 0, 3}));
    EXPECT_EQ(itemText(entries[1].item), "HR:5");
    EXPECT_EQ(entries[1].values, (Bytes{0xFF, 0xFF}));
}

TEST(RecipeFile, ReadsVariablesWithoutValues)
{
    const std::vector<RecipeEntry> entries = read("DM:100:2\nDM:7");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].item.count, 2);
    EXPECT_TRUE(entries[0].values.empty());
    EXPECT_EQ(entries[1].item.count, 1);
}

TEST(RecipeFile, AWriteNeedsValues)
{
    EXPECT_EQ(refusal("DM:1 = 5\nDM:100:2", true), "mix.rcp:2: 'DM:100:2' has no values; write them behind '='");
    EXPECT_EQ(refusal("DM:100 =", false), "mix.rcp:1: 'DM:100' has no values; write them behind '='");
}

TEST(RecipeFile, SaysWhatIsWrongInWhichLine)
{
    EXPECT_EQ(refusal("DM:100:3 = 1 2"),
              "mix.rcp:1: 'DM:100:3' holds 3 values, and 2 are given; write as many as it holds");
    EXPECT_EQ(refusal("DM:100:1 = 1 2"),
              "mix.rcp:1: 'DM:100:1' holds 1 value, and 2 are given; write as many as it holds");
    EXPECT_EQ(refusal("# x\nDM:1 = 65536"),
              "mix.rcp:2: 'DM:1=65536' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
    EXPECT_EQ(refusal("DM:32768 = 1"), "mix.rcp:1: 'DM:32768' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(refusal("DM_bit:1.0 = 1"), "mix.rcp:1: 'DM_bit:1.0' is a bit; recipes hold words");
    EXPECT_EQ(refusal("DM:100 = 1 2"), "mix.rcp:1: 'DM:100' is one value, and 2 are given; write DM:100:2 for as many, "
                                       "or a decimal number with a point");
    EXPECT_EQ(refusal("DM:1 2"), "mix.rcp:1: '2' is not expected here; write TYPE:ADDRESS[:COUNT] = VALUE ...");
    EXPECT_NE(refusal("= 1").find("mix.rcp:1: "), std::string::npos);
}

TEST(RecipeFile, RefusesOverlaps)
{
    EXPECT_EQ(refusal("DM:1:2\nHR:1\nDM:2"), "mix.rcp:3: DM:1:2 and DM:2 overlap; name every word and bit once");
    EXPECT_EQ(refusal("DM:1:2\nDM:3"), "");
}

TEST(RecipeFile, RefusesAFileWithoutVariables)
{
    EXPECT_EQ(refusal(""), "mix.rcp: holds no variable; write lines such as DM:100 = 1 2 3");
    EXPECT_EQ(refusal("# only a comment\n"), refusal(""));
}

TEST(RecipeFile, WritesLinesAsTheyAreRead)
{
    EXPECT_EQ(recipeLine(read("DM:100:3 = 1 2 3").front()), "DM:100:3 = 1 2 3");
    EXPECT_EQ(recipeLine(read("T:4:1 = 65535").front()), "T:4 = 65535");
}

TEST(RecipeFile, LaysTheBufferOutByAddress)
{
    EXPECT_EQ(layout("DM:110 = 9\nHR:3 = 7\nDM:102:2 = 3 4\nDM:100:2 = 1 2", 64),
              "DM:100:2 = 1 2\nDM:102:2 = 3 4\nDM:110 = 9\nHR:3 = 7\n");
}

TEST(RecipeFile, CutsLongVariablesToFrames)
{
    EXPECT_EQ(layout("DM:0:5 = 1 2 3 4 5", 2), "DM:0:2 = 1 2\nDM:2:2 = 3 4\nDM:4 = 5\n");
    EXPECT_EQ(layout("DM:0:2 = 1 2", 2), "DM:0:2 = 1 2\n");
}
