#include "plant_fixture.h"

#include <vector>

// What all plants have in common. Their courses follow from the seed and from what a panel writes.

class AnyPlantTest : public PlantTest, public ::testing::WithParamInterface<const char *> {
protected:
    using Course = std::vector<std::string>;

    // What a panel sees of 2,000 steps, with a few writes of its own in between.
    Course course(std::uint32_t seed)
    {
        start(GetParam(), seed);
        Course seen;
        for (unsigned i = 0; i < 2000; ++i) {
            if (i == 300)
                set("DM:3", 700);
            if (i == 500)
                set("DM:2", 450);
            if (i == 700)
                set("DM:11", 900);
            if (i % 250 == 0)
                set("CIO_bit:100.1", i / 250 % 2);
            step();
            seen.push_back(values("DM:0:40") + " " + values("CIO:0") + " " + values("T:0:2") + " " + values("C:0:2"));
        }
        return seen;
    }
};

TEST_P(AnyPlantTest, EqualSeedsAndWritesGiveEqualCourses)
{
    const Course first = course(7);
    EXPECT_EQ(course(7), first);
    EXPECT_NE(first.front(), first.back());
}

TEST_P(AnyPlantTest, ASeedChangesAPlantWithChance)
{
    const bool hasChance = GetParam() != std::string("tank");
    EXPECT_EQ(course(7) != course(8), hasChance);
}

TEST_P(AnyPlantTest, StandsStillInProgramModeAndGoesOnBehindIt)
{
    const auto all = [this] { return values("DM:0:40") + values("CIO:0") + values("T:0:2") + values("C:0:2"); };
    start(GetParam());
    step(30);
    const std::string before = all();
    controller->mode = plc::Mode::PROGRAM;
    set("CIO_bit:100.1", 1);
    step(30);
    EXPECT_EQ(all(), before);
    EXPECT_EQ(get("CIO_bit:100.1"), 1u);
    for (const plc::Mode mode : {plc::Mode::MONITOR, plc::Mode::RUN}) {
        const unsigned steps = get("DM:4");
        controller->mode = mode;
        step();
        EXPECT_EQ(get("DM:4"), steps + 1);
    }
}

TEST_P(AnyPlantTest, WildValuesDoNoHarm)
{
    start(GetParam());
    for (unsigned number = 0; number < 40; ++number)
        set("DM:" + std::to_string(number), 65535);
    for (const char *place : {"T:0", "T:1", "C:0", "C:1", "CIO:0", "CIO:100"})
        set(place, 65535);
    step(30);
    EXPECT_LE(get("DM:4"), 30u);
    EXPECT_LE(get("DM:0"), 3000u);
    for (const plc::PlantValue &value : plant->values())
        EXPECT_LE(value.text.size(), 14u) << value.name << " " << value.text;
}

INSTANTIATE_TEST_SUITE_P(Plants, AnyPlantTest, ::testing::Values("tank", "conveyor", "oven"),
                         [](const auto &plantInfo) { return std::string(plantInfo.param); });

TEST(PlantNamesTest, AreThoseThatCanBeMade)
{
    EXPECT_EQ(plc::plantNames(), "tank conveyor oven");
    EXPECT_FALSE(plc::isPlant("mill"));
    plc::Controller controller;
    EXPECT_EQ(plc::makePlant("mill", controller, 1), nullptr);
}
