#include "commands/difference_table.h"

#include "support/built_driver.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

RecipeEntry entry(const std::string &name, const std::vector<std::string> &texts)
{
    return makeEntry(TagBook(builtDriver()), name, texts);
}

std::vector<quint8> bytes(const std::string &name, const std::vector<std::string> &texts)
{
    return entry(name, texts).values;
}

} // namespace

TEST(DifferenceTable, HasARowForEachValueThatDiffers)
{
    EXPECT_EQ(differences(entry("DM:5:3", {"1", "2", "3"}), bytes("DM:5:3", {"1", "2", "3"})), Rows());
    EXPECT_EQ(differences(entry("DM:5:3", {"1", "2", "3"}), bytes("DM:5:3", {"9", "2", "8"})),
              (Rows{{"DM:5", "1", "9", ""}, {"DM:7", "3", "8", ""}}));
    EXPECT_EQ(differences(entry("DM:5:2/f32", {"1", "2"}), bytes("DM:5:2/f32", {"1", "2.5"})),
              (Rows{{"DM:7/f32", "2", "2.5", ""}}));
    EXPECT_EQ(differences(entry("DM:5", {"1"}), bytes("DM:5", {"2"})), (Rows{{"DM:5", "1", "2", ""}}));
    EXPECT_EQ(differences(entry("DM:5:2/string", {"AB"}), bytes("DM:5:2/string", {"AC"})),
              (Rows{{"DM:5:2/string", "\"AB\"", "\"AC\"", ""}}));
    RecipeEntry tag = entry("DM:5:2", {"1", "2"});
    tag.name        = "Level";
    tag.format.unit = "bar";
    EXPECT_EQ(differences(tag, bytes("DM:5:2", {"1", "3"})), (Rows{{"Level[1]", "2", "3", "bar"}}));
}

TEST(DifferenceTable, AlignsItsColumns)
{
    EXPECT_EQ(tableText({{"variable", "recipe", "PLC", "unit"}, {"a", "1", "1000", "l"},
                         {"\xC3\xBC" "b", "10", "2", ""}},
                        {false, true, true, false}),
              "variable  recipe   PLC  unit\n"
              "a              1  1000  l\n"
              "\xC3\xBC" "b            10     2\n");
}
