#include "project/recipe_table.h"

#include "support/built_driver.h"
#include "support/temporary_folder.h"

namespace {

RecipeEntry entry(const std::string &name, const std::vector<std::string> &texts)
{
    return makeEntry(TagBook(builtDriver()), name, texts);
}

// Recipe files in a folder of their own, for the time of a test.
class RecipeTableTest : public ::testing::Test {
protected:
    // The recipe as text lines, or the refusal without the folder's name.
    std::string load(const std::string &name, const std::string &text, bool needValues = true)
    {
        const std::string path = files.put(name, text);
        try {
            return recipeFileText("", loadRecipeFile(TagBook(builtDriver()), path, needValues).entries);
        } catch (const UsageError &error) {
            const std::string what = error.what();
            return what.substr(what.find(files.path()) == 0 ? files.path().size() : 0);
        }
    }

    const TemporaryFolder files;
};

} // namespace

TEST_F(RecipeTableTest, ReadsToml)
{
    EXPECT_EQ(load("r.toml", "comment = \"c\"\n[values]\n\"DM:0\" = 5\n\"DM:2:2/f32\" = [1.5, -2]\n"
                             "\"DM:6/hex\" = 0xAB\n"),
              "DM:0 = 5\nDM:2:2/f32 = 1.5 -2\nDM:6/hex = 0x00AB\n");
    EXPECT_EQ(load("r.toml", "variables = [\"DM:0:2\"]\n", false), "DM:0:2 = \n");
    EXPECT_EQ(load("r.toml", "variables = [\"DM:0:2\"]\n"), "r.toml: 'DM:0:2' has no value; give it one");
    EXPECT_EQ(load("r.toml", "[values]\n\"DM:0\" = 65536\n\"DM:99999\" = 1\n"),
              "r.toml:2:10: 'DM:0=65536' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF (and 1 more)");
    EXPECT_EQ(load("r.toml", "value = 1\n"),
              "r.toml:1:1: 'value' is not known here; known are comment, variables, values (and 1 more)");
}

TEST_F(RecipeTableTest, ReadsCsv)
{
    EXPECT_EQ(load("r.csv", "variable,value\nDM:0,5\nDM:2:2,1 2\nDM:4:3/string,\"A, B\"\n"),
              "DM:0 = 5\nDM:2:2 = 1 2\nDM:4:3/string = \"A, B\"\n");
    EXPECT_EQ(load("r.csv", "value,variable\r\n0x10,DM:0\r\n"), "DM:0 = 16\n");
    EXPECT_EQ(load("r.csv", "variable\nDM:0:2\n", false), "DM:0:2 = \n");
    EXPECT_EQ(load("r.csv", "variable,value\nDM:0,\n"), "r.csv: 'DM:0' has no value; give it one");
    EXPECT_EQ(load("r.csv", "variable,value\nDM:0,x\n"),
              "r.csv:2:6: 'DM:0=x' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
    EXPECT_EQ(load("r.csv", "variable,value\nDM:0,1\nDM:0,2\n"),
              "r.csv:3:1: DM:0 and DM:0 overlap; name every word and bit once");
    EXPECT_EQ(load("r.csv", "variable,wert\nDM:0,1\n"),
              "r.csv:1:10: 'wert' is not known here; known are variable, value");
    EXPECT_EQ(load("r.csv", "name,value\nDM:0,1\n"),
              "r.csv:1:1: 'name' is not known here; known are variable, value (and 1 more)");
    EXPECT_EQ(load("r.csv", "variable,value\n"),
              "r.csv:1:1: the recipe holds no variable; add one, such as \"DM:100\" = 1");
}

TEST_F(RecipeTableTest, ReadsText)
{
    EXPECT_EQ(load("r.txt", "DM:0/f32 = 1.5\nDM:2:2/string = \"A #1\" # a text\nDM:5:3/string = \"\\\"\\\\\"\n"),
              "DM:0/f32 = 1.5\nDM:2:2/string = \"A #1\"\nDM:5:3/string = \"\\\"\\\\\"\n");
    EXPECT_EQ(load("r.txt", "DM:0/string = \"A\n"), "r.txt:1: the quote is not closed; end the text with another \"");
    EXPECT_EQ(load("r.txt", "DM:0:2/f32 = 1\n"),
              "r.txt:1: 'DM:0:2/f32' holds 2 values, and 1 is given; write as many as it holds");
    EXPECT_EQ(load("r.txt", "DM:0/f32 = 1e39\n"),
              "r.txt:1: 'DM:0/f32=1e39' does not fit f32; use a decimal number whose size fits f32");
    EXPECT_EQ(load("r.txt", "DM:0 = 1\nDM:1 = 2\nDM:2 = 3\nDM:1 = 4\nDM:0 = 5\n"),
              "r.txt:4: DM:1 and DM:1 overlap; name every word and bit once");
}

TEST_F(RecipeTableTest, WritesEveryFormAsItIsRead)
{
    const std::string text = "DM:0 = 5\nDM:2:2/f32 = 1.5 -2e+20\nDM:6/hex = 0x00AB\nDM:7/bits = 0000_0000_0000_0101\n"
                             "DM:10:4/string = \"A \\\"b\\\", \\\\\"\nDM:20/u64 = 18446744073709551615\n"
                             "DM:24/s64 = -9223372036854775808\n";
    const std::string same = load("r.txt", text);
    ASSERT_EQ(same, text);
    for (const char *name : {"r.toml", "r.csv"}) {
        const Recipe recipe = loadRecipeFile(TagBook(builtDriver()), files.path("r.txt"), true);
        EXPECT_EQ(load(name, recipeFileText(name, recipe.entries)), text) << name;
    }
}

TEST(RecipeTable, WritesNumbersAndTextsOfToml)
{
    EXPECT_EQ(recipeFileText("a.toml", {entry("DM:0", {"5"}), entry("DM:1:2", {"1", "2"}), entry("DM:3/hex", {"1F"}),
                                        entry("DM:4/bits", {"1"}), entry("DM:5/string", {"A\\\""}),
                                        entry("DM:6/u64", {"9223372036854775808"}), entry("DM:10/f32", {"1e20"})}),
              "[values]\n\"DM:0\" = 5\n\"DM:1:2\" = [1, 2]\n\"DM:3/hex\" = 0x001F\n"
              "\"DM:4/bits\" = \"0000_0000_0000_0001\"\n\"DM:5/string\" = \"A\\\\\\\"\"\n"
              "\"DM:6/u64\" = \"9223372036854775808\"\n\"DM:10/f32\" = 1e+20\n");
    RecipeEntry bad = entry("DM:0/bcd16", {"1"});
    bad.values = {0x0A, 0x00};
    EXPECT_EQ(recipeFileText("a.toml", {bad}), "[values]\n\"DM:0/bcd16\" = \"no-bcd:0x000A\"\n");
}

TEST(RecipeTable, WritesCsv)
{
    EXPECT_EQ(recipeFileText("a.csv", {entry("DM:1:2", {"1", "2"}), entry("DM:5:3/string", {"A, \\\"B"})}),
              "variable,value\nDM:1:2,1 2\nDM:5:3/string,\"A, \\\"\"B\"\n");
}

// A text of the PLC that is no formula in a spreadsheet, and is the same when it is read again.
TEST_F(RecipeTableTest, WritesTextsOfCsvAsTexts)
{
    const std::string csv = recipeFileText("r.csv", {entry("DM:0:2/string", {"=1+1"}), entry("DM:5:2/string", {"'=x"}),
                                                     entry("DM:9/s16", {"-5"})});
    EXPECT_EQ(csv, "variable,value\nDM:0:2/string,'=1+1\nDM:5:2/string,''=x\nDM:9/s16,-5\n");
    EXPECT_EQ(load("r.csv", csv), "DM:0:2/string = \"=1+1\"\nDM:5:2/string = \"'=x\"\nDM:9/s16 = -5\n");
}

TEST_F(RecipeTableTest, RefusesControlCharacters)
{
    const std::string what = " U+001B is a control character; remove it";
    EXPECT_EQ(load("r.txt", "DM:0 = 1\nDM:1/string = \"\x1B\"\n"), "r.txt:2:16:" + what);
    EXPECT_EQ(load("r.csv", "variable,value\nDM:1/string,\x1B\n"), "r.csv:2:13:" + what);
    EXPECT_EQ(load("r.toml", "comment = \"\\u001b\"\n[values]\n\"DM:0\" = 1\n"), "r.toml:1:11:" + what);
    EXPECT_EQ(load("r.txt", "DM:0 = 1 # \xFF\n"), "r.txt:1:12: this is not UTF-8; save the file as UTF-8");
}
