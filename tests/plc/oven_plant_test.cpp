#include "plant_fixture.h"

// The oven. Its chance is the Mersenne Twister MT19937, whose numbers for the seed 1 begin with 1791095845, 4282876139,
// 3093770124, 4005303368, 491263, 550290313. Each zone takes one a step: its rest of the division by 3 is added.

class OvenPlantTest : public PlantTest {
protected:
    void SetUp() override { start("oven"); }
};

TEST_F(OvenPlantTest, StartingValues)
{
    EXPECT_EQ(values("DM:0:5"), "200 200 200 0 0");
    EXPECT_EQ(values("DM:10:3"), "1500 1800 1650");
    EXPECT_EQ(values("DM:30:2"), "0 16800"); // 20.0 is 41A00000
    EXPECT_EQ(values("CIO_bit:100.0:2"), "1 0");
}

TEST_F(OvenPlantTest, FirstStepsOfSeed1)
{
    step(); // 25 by the heaters, and 1, 2, 0
    EXPECT_EQ(values("DM:0:3"), "226 227 225");
    EXPECT_EQ(values("DM:20:3"), "100 100 100");
    EXPECT_EQ(values("DM:30:2"), "52429 16820"); // 22.6 is 41B4CCCD
    EXPECT_EQ(values("CIO_bit:0.0:4"), "1 1 1 0");
    step(); // 25 by the heaters, 1 lost, and 2, 1, 1
    EXPECT_EQ(values("DM:0:3"), "252 252 250");
}

TEST_F(OvenPlantTest, TheHeatersThrottleNearTheSetPoints)
{
    set("DM:0", 1451);
    set("DM:1", 1799);
    set("DM:2", 1650);
    step();
    EXPECT_EQ(values("DM:20:3"), "98 2 0");
    EXPECT_EQ(values("CIO_bit:0.0:3"), "1 1 0");
}

TEST_F(OvenPlantTest, GetsReadyAndCountsTheStepsSince)
{
    stepUntil("CIO_bit:0.3", 1);
    EXPECT_EQ(get("T:0"), 1u);
    step(99);
    EXPECT_EQ(get("CIO_bit:0.3"), 1u);
    EXPECT_EQ(get("T:0"), 100u);
    set("DM:11", 2500);
    step();
    EXPECT_EQ(get("CIO_bit:0.3"), 0u);
    EXPECT_EQ(get("T:0"), 0u);
}

TEST_F(OvenPlantTest, HoldsTheSetPoints)
{
    stepUntil("CIO_bit:0.3", 1);
    step(50);
    for (unsigned i = 0; i < 500; ++i) {
        step();
        EXPECT_NEAR(get("DM:0"), 1500, 50);
        EXPECT_NEAR(get("DM:1"), 1800, 50);
        EXPECT_NEAR(get("DM:2"), 1650, 50);
    }
}

TEST_F(OvenPlantTest, AnOpenDoorCoolsAndIsCounted)
{
    stepUntil("CIO_bit:0.3", 1);
    set("CIO_bit:100.1", 1);
    step(50);
    EXPECT_EQ(get("CIO_bit:0.6"), 1u);
    EXPECT_EQ(get("C:0"), 1u);
    EXPECT_EQ(get("CIO_bit:0.3"), 0u);
    EXPECT_LT(get("DM:1"), 1000u);
    set("CIO_bit:100.1", 0);
    step();
    EXPECT_EQ(get("CIO_bit:0.6"), 0u);
    stepUntil("CIO_bit:0.3", 1);
    EXPECT_EQ(get("C:0"), 1u);
}

TEST_F(OvenPlantTest, TheHeatBitTurnsTheHeatersOff)
{
    step();
    EXPECT_EQ(values("DM:20:3"), "100 100 100");
    set("CIO_bit:100.0", 0);
    step();
    EXPECT_EQ(values("DM:20:3"), "0 0 0");
    EXPECT_EQ(values("CIO_bit:0.0:3"), "0 0 0");
}

TEST_F(OvenPlantTest, TellsOfTooMuchHeat)
{
    set("CIO_bit:100.0", 0);
    set("DM:2", 2915); // loses 19 and gains 0 to 2: 2896 to 2898
    step();
    EXPECT_EQ(get("CIO_bit:0.4"), 0u);
    set("DM:2", 2925); // 2906 to 2908
    step();
    EXPECT_EQ(get("CIO_bit:0.4"), 1u);
    EXPECT_EQ(shown("CIO_bit:0.4"), "too hot on");
}

TEST_F(OvenPlantTest, IsShownWithUnits)
{
    step();
    EXPECT_EQ(shown("DM:1"), "zone 2 22.7 C");
    EXPECT_EQ(shown("DM:12"), "set-point 3 165.0 C");
    EXPECT_EQ(shown("DM:20"), "heater 1 100 %");
    EXPECT_EQ(shown("CIO_bit:0.3"), "ready off");
    EXPECT_EQ(shown("CIO_bit:0.6"), "door open off");
}
