#include "plant_fixture.h"

// The conveyor. Its chance is the Mersenne Twister MT19937, whose numbers for the seed 1 begin with 1791095845,
// 4282876139, 3093770124, 4005303368, 491263, 550290313, 1298508491, 4290846341, 630311759. A part takes three of them:
// one for its weight (470 plus the rest of the division by 61), one for the steps to the next part (10 plus the rest by
// 11), and one that jams it where the rest by 40 is 0.

class ConveyorPlantTest : public PlantTest {
protected:
    void SetUp() override { start("conveyor"); }
};

TEST_F(ConveyorPlantTest, StartingValues)
{
    EXPECT_EQ(values("DM:0:7"), "0 0 300 0 0 480 520");
    EXPECT_EQ(values("CIO_bit:100.0:3"), "1 0 0");
    EXPECT_EQ(get("T:0"), 10u);
}

TEST_F(ConveyorPlantTest, TheBeltSpeedsUpAndCarries)
{
    step();
    EXPECT_EQ(values("DM:0:2"), "20 2");
    step(2);
    EXPECT_EQ(values("DM:0:2"), "60 12");
    step(12);
    EXPECT_EQ(values("DM:0:2"), "300 240");
    step();
    EXPECT_EQ(values("DM:0:2"), "300 270");
}

TEST_F(ConveyorPlantTest, FirstPartsOfSeed1)
{
    const struct {
        unsigned    step;
        unsigned    weight;
        const char *bits;     // runs, part, ejector, jam
        const char *counters; // good, thrown out
        unsigned    next;     // steps
    } parts[] = {
        {10, 529, "1 1 1 0", "0 1", 13}, // rests 59, 3, 4
        {23, 528, "1 1 1 0", "0 2", 13}, // rests 58, 3, 33
        {36, 497, "1 1 0 0", "1 2", 11}, // rests 27, 1, 39
    };
    for (const auto &part : parts) {
        step(part.step - get("DM:4") - 1);
        EXPECT_EQ(get("CIO_bit:0.1"), 0u) << part.step;
        step();
        EXPECT_EQ(get("DM:3"), part.weight) << part.step;
        EXPECT_EQ(values("CIO_bit:0.0:4"), part.bits) << part.step;
        EXPECT_EQ(values("C:0:2"), part.counters) << part.step;
        EXPECT_EQ(get("T:0"), part.next) << part.step;
    }
    step();
    EXPECT_EQ(values("CIO_bit:0.0:4"), "1 0 0 0");
}

TEST_F(ConveyorPlantTest, TheLimitsDecideWhatIsThrownOut)
{
    set("DM:6", 529);
    step(10);
    EXPECT_EQ(values("C:0:2"), "1 0");
    set("DM:5", 529);
    step(13);
    EXPECT_EQ(values("C:0:2"), "1 1");
}

TEST_F(ConveyorPlantTest, AJamStopsTheBeltUntilItIsCleared)
{
    stepUntil("CIO_bit:0.3", 1);
    step(15);
    EXPECT_EQ(get("DM:0"), 0u);
    const std::string stands = values("DM:0:4") + " " + values("C:0:2") + " " + values("T:0");
    step(100);
    EXPECT_EQ(values("DM:0:4") + " " + values("C:0:2") + " " + values("T:0"), stands);
    set("CIO_bit:100.1", 1);
    step();
    EXPECT_EQ(values("CIO_bit:0.0:4"), "1 0 0 0");
    EXPECT_EQ(get("CIO_bit:100.1"), 0u);
    EXPECT_EQ(get("DM:0"), 20u);
}

TEST_F(ConveyorPlantTest, StopsByHand)
{
    step(15);
    set("CIO_bit:100.0", 0);
    step(15);
    EXPECT_EQ(get("DM:0"), 0u);
    EXPECT_EQ(get("CIO_bit:0.0"), 0u);
}

TEST_F(ConveyorPlantTest, FollowsTheSetSpeedUpToItsMost)
{
    set("DM:2", 601);
    step(40);
    EXPECT_EQ(get("DM:0"), 600u);
    set("DM:2", 55);
    step(28);
    EXPECT_EQ(get("DM:0"), 55u);
}

TEST_F(ConveyorPlantTest, ResetSetsTheCountersToZero)
{
    step(36);
    EXPECT_EQ(values("C:0:2"), "1 2");
    set("CIO_bit:100.2", 1);
    step();
    EXPECT_EQ(values("C:0:2"), "0 0");
    EXPECT_EQ(get("CIO_bit:100.2"), 0u);
}

TEST_F(ConveyorPlantTest, IsShownWithUnits)
{
    step(36);
    EXPECT_EQ(shown("DM:0"), "belt speed 30.0 m/min");
    EXPECT_EQ(shown("DM:1"), "position 870 mm");
    EXPECT_EQ(shown("DM:3"), "last part 497 g");
    EXPECT_EQ(shown("C:1"), "thrown out 2");
    EXPECT_EQ(shown("CIO_bit:0.3"), "jam off");
    EXPECT_EQ(shown("T:0"), "next part 11 steps");
}
