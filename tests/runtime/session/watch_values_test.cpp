#include "support/built_driver.h"
#include "session/watch_values.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::string> namesOf(const std::vector<Tag> &tags)
{
    std::vector<std::string> names;
    for (const WatchedValue &value : singleValues(tags))
        names.push_back(value.name);
    return names;
}

using Names = std::vector<std::string>;

TEST(SingleValues, AnItemBecomesItsWordsAndBits)
{
    const TagBook book(builtDriver());
    EXPECT_EQ(namesOf(book.resolveAll({"DM:100:3"}, Access::READ)), (Names{"DM:100", "DM:101", "DM:102"}));
    EXPECT_EQ(namesOf(book.resolveAll({"CIO_bit:0.15:2"}, Access::READ)), (Names{"CIO_bit:0.15", "CIO_bit:1.0"}));
}

TEST(SingleValues, AValueOfTwoWordsStaysWhole)
{
    const TagBook book(builtDriver());
    const std::vector<WatchedValue> values = singleValues(book.resolveAll({"DM:100:2/f32"}, Access::READ));
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0].item.address, 100);
    EXPECT_EQ(values[0].item.count, 2);
    EXPECT_EQ(values[1].item.address, 102);
    EXPECT_EQ(values[1].item.count, 2);
    EXPECT_EQ(values[1].quality, Quality::NOT_CONNECTED);
    EXPECT_EQ(values[1].text, "");
}

TEST(SingleValues, ATextStaysWhole)
{
    const TagBook book(builtDriver());
    EXPECT_EQ(namesOf(book.resolveAll({"DM:100:8/string"}, Access::READ)), Names{"DM:100:8/string"});
}

TEST(SingleValues, ValuesOfATagAreNumbered)
{
    const Tag tag = {"Level", {"DM", 10, 2, false}, ValueFormat(), "", ""};
    const Tag one = {"Pump", {"CIO_bit", 3, 1, true}, ValueFormat(), "", ""};
    EXPECT_EQ(namesOf({tag, one}), (Names{"Level[0]", "Level[1]", "Pump"}));
}

TEST(SingleValues, WhatIsNamedTwiceComesOnce)
{
    const TagBook book(builtDriver());
    EXPECT_EQ(namesOf(book.resolveAll({"DM:1:2", "DM:2:2", "DM:2/hex"}, Access::READ)),
              (Names{"DM:1", "DM:2", "DM:3", "DM:2/hex"}));
}

} // namespace
