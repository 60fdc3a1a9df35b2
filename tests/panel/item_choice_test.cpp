#include "commands/item_choice.h"

#include "support/built_driver.h"
#include "support/usage_error.h"

#include <gtest/gtest.h>

// What is chosen of several PLCs.

namespace {

class PlantChoice : public ::testing::Test {
protected:
    PlantChoice()
    {
        for (TagBook *book : {&press, &oven}) {
            book->setPlc(book == &press ? "press" : "oven");
            for (const char *name : {"Level", "Heat"}) {
                Tag tag = book->resolveItem(book->plc() + (std::string(name) == "Heat" ? "DM:1" : "DM:0"), Access::READ);
                tag.name  = book->plc() + name;
                tag.group = book->plc() == "oven." ? name : "";
                book->add(tag);
            }
        }
    }

    std::string names(const ItemChoice &choice) const
    {
        std::string all;
        for (const Tag &tag : chosenTags({&press, &oven}, choice))
            all += (all.empty() ? "" : " ") + tag.plc + "|" + tag.name;
        return all;
    }

    std::string refusal(const std::string &item) const
    {
        return usageError([&] { names({{item}, "", {}}); });
    }

    TagBook press{builtDriver()};
    TagBook oven{builtDriver()};
};

TEST_F(PlantChoice, NoneIsAllTagsOfAllPlcs)
{
    EXPECT_EQ(names({}), "press.|press.Level press.|press.Heat oven.|oven.Level oven.|oven.Heat");
}

TEST_F(PlantChoice, ANameBelongsToThePlcThatItBeginsWith)
{
    EXPECT_EQ(names({{"oven.DM:7/f32", "press.Heat"}, "", {}}), "oven.|oven.DM:7/f32 press.|press.Heat");
}

TEST_F(PlantChoice, PatternsAndGroupsAreOfAllPlcs)
{
    EXPECT_EQ(names({{"*.Level"}, "", {}}), "press.|press.Level oven.|oven.Level");
    EXPECT_EQ(names({{"press.*"}, "", {"Heat"}}), "press.|press.Level press.|press.Heat oven.|oven.Heat");
}

TEST_F(PlantChoice, ANameOfNoPlcIsRefusedWithWhatThereIs)
{
    EXPECT_EQ(refusal("pres.Level"), "'pres.Level' does not begin with the name of a PLC (did you mean 'press.Level'?); the "
                                     "PLCs are press, oven, write press.DM:100 for an item of one");
    EXPECT_EQ(refusal("DM:100"), "'DM:100' does not begin with the name of a PLC; the PLCs are press, oven, write "
                                 "press.DM:100 for an item of one");
    EXPECT_EQ(refusal("mill.*"), "no tag matches 'mill.*'; the tags are press.Level, press.Heat, oven.Level, oven.Heat");
}

} // namespace
