#include "plc_fixture.h"

#include <functional>
#include <map>

// The plants of the simulator: what a panel sees of them and how they obey.

class PlcPlantTest : public PlcTest {
protected:
    void startPlant() { start({"--plant", "--plant-period", "1"}); }

    unsigned long word(const std::string &place) { return std::stoul(tell("read " + place).substr(3)); }

    // Reads `place` until the value fits.
    void waitFor(const std::string &place, const std::function<bool(unsigned long)> &fits)
    {
        const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
        unsigned long value = word(place);
        while (!fits(value) && Process::Clock::now() < deadline)
            value = word(place);
        EXPECT_TRUE(fits(value)) << place << " is " << value;
    }

    void waitForValue(const std::string &place, unsigned long wanted)
    {
        waitFor(place, [wanted](unsigned long value) { return value == wanted; });
    }

    // Lets the plant do so many steps.
    void letSteps(unsigned long count)
    {
        const unsigned long from = word("DM:4");
        waitFor("DM:4", [from, count](unsigned long now) { return (now + 10000 - from) % 10000 >= count; });
    }
};

TEST_F(PlcPlantTest, WithoutPlantNothingMoves)
{
    start({"--plant-period", "1"});
    EXPECT_EQ(tell("read DM:0:5"), "ok 0 0 0 0 0");
    EXPECT_EQ(tell("read CIO:100"), "ok 0");
}

TEST_F(PlcPlantTest, StartingValues)
{
    start({"--plant", "--plant-period", "60000"});
    EXPECT_EQ(tell("read DM:0:5"), "ok 300 0 0 500 0");
    EXPECT_EQ(tell("read CIO_bit:100.0:4"), "ok 1 0 1 0");
    EXPECT_EQ(tell("read CIO:0"), "ok 0");
}

TEST_F(PlcPlantTest, LivesWithItsOwnPeriod)
{
    start({"--plant"});
    waitFor("DM:4", [](unsigned long steps) { return steps >= 2; });
    waitFor("DM:0", [](unsigned long level) { return level > 300; });
}

TEST_F(PlcPlantTest, HoldsTheSetPoint)
{
    startPlant();
    waitFor("DM:0", [](unsigned long level) { return level >= 500; });
    waitFor("DM:0", [](unsigned long level) { return level <= 460; });
    for (int i = 0; i < 100; ++i) {
        const unsigned long level = word("DM:0");
        EXPECT_GE(level, 400u);
        EXPECT_LE(level, 560u);
    }
    waitFor("C:0", [](unsigned long starts) { return starts >= 3; });
    waitFor("C:1", [](unsigned long batches) { return batches >= 2; });
}

TEST_F(PlcPlantTest, ObeysANewSetPoint)
{
    startPlant();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0003 00 0001 0320"), plainHex("0102 0000"));
    waitFor("DM:0", [](unsigned long level) { return level >= 800; });
    EXPECT_EQ(client.ask("0102 82 0003 00 0001 0064"), plainHex("0102 0000"));
    waitFor("DM:0", [](unsigned long level) { return level <= 100; });
}

TEST_F(PlcPlantTest, PumpAndInletAreOneAndFlowFollows)
{
    startPlant();
    ASSERT_EQ(tell("write DM:3 1000"), "ok");
    ASSERT_EQ(tell("write CIO_bit:100.2 0"), "ok");
    waitForValue("DM:1", 10);
    waitForValue("CIO_bit:0.2", 0);
    waitForValue("DM:2", 0);
    waitForValue("DM:0", 1000);
    waitForValue("CIO_bit:0.0", 0);
    EXPECT_EQ(tell("read CIO_bit:0.0:2"), "ok 0 0");
    waitForValue("DM:1", 0);
    EXPECT_EQ(word("DM:0"), 1000u);
}

TEST_F(PlcPlantTest, DrainsByHand)
{
    startPlant();
    ASSERT_EQ(tell("write CIO_bit:100.0 0"), "ok");
    waitForValue("DM:0", 0);
    letSteps(10);
    EXPECT_EQ(tell("read CIO_bit:0.0:5"), "ok 0 0 1 0 1");
    EXPECT_EQ(tell("read DM:0:3"), "ok 0 0 0");
}

TEST_F(PlcPlantTest, PumpsByHandUntilFull)
{
    startPlant();
    ASSERT_EQ(tell("write CIO_bit:100.0 0 1 0"), "ok");
    waitForValue("DM:0", 1000);
    waitForValue("CIO_bit:0.0", 0);
    EXPECT_EQ(tell("read CIO_bit:0.3:2"), "ok 1 0");
}

TEST_F(PlcPlantTest, AlarmsAtTheirLevels)
{
    startPlant();
    ASSERT_EQ(tell("write CIO_bit:100.0 0 0 0"), "ok"); // by hand: pump off, outlet closed
    waitForValue("CIO_bit:0.2", 0);
    waitForValue("DM:1", 0);
    const struct {
        const char *level;
        const char *alarms;
    } rows[] = {{"899", "ok 0 0"}, {"900", "ok 1 0"}, {"101", "ok 0 0"}, {"100", "ok 0 1"}};
    for (const auto &row : rows) {
        ASSERT_EQ(tell(std::string("write DM:0 ") + row.level), "ok");
        letSteps(2);
        EXPECT_EQ(tell("read CIO_bit:0.3:2"), row.alarms) << row.level;
    }
}

TEST_F(PlcPlantTest, HeartbeatBeats)
{
    startPlant();
    for (int i = 0; i < 3; ++i) {
        waitForValue("CIO_bit:0.5", 1);
        waitForValue("CIO_bit:0.5", 0);
    }
}

TEST_F(PlcPlantTest, ResetSetsTheCountersToZero)
{
    startPlant();
    waitFor("C:1", [](unsigned long batches) { return batches >= 1; });
    ASSERT_EQ(tell("write CIO_bit:100.0 0"), "ok");
    letSteps(20);
    EXPECT_NE(word("C:0"), 0u);
    ASSERT_EQ(tell("write CIO_bit:100.3 1"), "ok");
    waitForValue("CIO_bit:100.3", 0);
    EXPECT_EQ(tell("read C:0:2"), "ok 0 0");
}

TEST_F(PlcPlantTest, CountersWrapAfter9999)
{
    startPlant();
    ASSERT_EQ(tell("write CIO_bit:100.0 0"), "ok");
    letSteps(20);
    ASSERT_EQ(tell("write C:0 9999"), "ok");
    ASSERT_EQ(tell("write DM:4 9990"), "ok");
    ASSERT_EQ(tell("write CIO_bit:100.1 1"), "ok");
    waitForValue("CIO_bit:0.0", 1);
    EXPECT_EQ(word("C:0"), 0u);
    waitFor("DM:4", [](unsigned long steps) { return steps < 9990; });
}

TEST_F(PlcPlantTest, TimersOfThePump)
{
    startPlant();
    ASSERT_EQ(tell("write DM:3 1000"), "ok");
    waitFor("T:1", [](unsigned long run) { return run >= 20; });
    ASSERT_EQ(tell("write CIO_bit:100.0 0"), "ok");
    waitForValue("T:0", 0);
    const unsigned long run = word("T:1");
    letSteps(10);
    EXPECT_EQ(word("T:1"), run);
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 09 0000 00 0001"), plainHex("0101 0000 01"));
    // A rest that goes on keeps the pump from starting.
    ASSERT_EQ(tell("write T:0 60000"), "ok");
    ASSERT_EQ(tell("write CIO_bit:100.1 1"), "ok");
    letSteps(20);
    EXPECT_EQ(word("CIO_bit:0.0"), 0u);
    EXPECT_EQ(client.ask("0101 09 0000 00 0001"), plainHex("0101 0000 00"));
    ASSERT_EQ(tell("write T:0 0"), "ok");
    waitForValue("CIO_bit:0.0", 1);
}

TEST_F(PlcPlantTest, ProgramModeStopsThePlant)
{
    startPlant();
    ASSERT_EQ(tell("write DM:3 1000"), "ok");
    waitForValue("CIO_bit:0.0", 1);
    PlcClient client(port);
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
    const unsigned long steps = word("DM:4");
    for (int i = 0; i < 500; ++i) // each takes the simulator once around its loop, in which its timer could strike
        ASSERT_EQ(word("DM:4"), steps);
    EXPECT_EQ(client.ask("0401 FFFF 02"), plainHex("0401 0000"));
    letSteps(2);
}

TEST_F(PlcPlantTest, WildValuesDoNoHarm)
{
    startPlant();
    ASSERT_EQ(tell("write DM:0 65535 65535 65535 65535 65535"), "ok");
    waitFor("DM:0", [](unsigned long level) { return level <= 1000; });
    waitFor("DM:4", [](unsigned long steps) { return steps < 100; });
    ASSERT_EQ(tell("write T:0 65535 65535"), "ok");
    letSteps(5);
    waitFor("DM:1", [](unsigned long inflow) { return inflow <= 10; });
}

// A jam is where the belt stands for good, so that two runs can be compared however long their steps take.
class PlcConveyorTest : public PlcPlantTest {
protected:
    void startAndWaitForJam(const std::string &seed)
    {
        start({"--plant", "conveyor", "--plant-period", "1", "--seed", seed});
        waitForValue("CIO_bit:0.3", 1);
        waitForValue("DM:0", 0);
    }
};

// Seed 57: a part of 478 g at step 10, one of 484 g at step 24, which jams. The belt speeds up by 20 a step for 15
// steps (240 mm), runs at 300 for 9 (270 mm) and brakes for 14 (210 mm) of the 20 steps to the next part.
TEST_F(PlcConveyorTest, TheSeedDecidesUpToTheJam)
{
    startAndWaitForJam("57");
    EXPECT_EQ(tell("read DM:1:3"), "ok 720 300 484");
    EXPECT_EQ(tell("read C:0:2"), "ok 1 1");
    EXPECT_EQ(tell("read T:0"), "ok 6");
}

// Seed 16: parts of 503, 515, 493 and 520 g at the steps 10, 28, 47 and 63, the last of which jams.
TEST_F(PlcConveyorTest, AnotherSeedDecidesOtherwise)
{
    startAndWaitForJam("16");
    EXPECT_EQ(tell("read DM:1:3"), "ok 1890 300 520");
    EXPECT_EQ(tell("read C:0:2"), "ok 4 0");
    EXPECT_EQ(tell("read T:0"), "ok 5");
}

TEST_F(PlcConveyorTest, AClientClearsTheJam)
{
    startAndWaitForJam("57");
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 30 0064 01 0001 01"), plainHex("0102 0000"));
    waitFor("DM:1", [](unsigned long position) { return position > 720; });
    waitForValue("CIO_bit:100.1", 0);
}

class PlcOvenTest : public PlcPlantTest {
protected:
    // What is read of the first steps, by the number of the step.
    std::map<unsigned long, std::string> course(const std::string &seed)
    {
        start({"--plant", "oven", "--plant-period", "1", "--seed", seed});
        std::map<unsigned long, std::string> seen;
        unsigned long step = 0;
        while (step < 300) {
            const std::string values = tell("read DM:0:5");
            step = std::stoul(values.substr(values.rfind(' ')));
            seen[step] = values;
        }
        TearDown();
        plc.reset();
        return seen;
    }
};

TEST_F(PlcOvenTest, EqualSeedsGiveEqualCourses)
{
    const auto first = course("5");
    const auto second = course("5");
    const auto other = course("6");
    unsigned common = 0;
    unsigned different = 0;
    for (const auto &[step, values] : first) {
        if (step > 0 && second.count(step)) {
            ++common;
            EXPECT_EQ(second.at(step), values) << step;
        }
        if (step > 0 && other.count(step))
            different += other.at(step) != values ? 1 : 0;
    }
    EXPECT_GT(common, 0u);
    EXPECT_GT(different, 0u);
}

TEST_F(PlcOvenTest, ObeysANewSetPoint)
{
    start({"--plant", "oven", "--plant-period", "1"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 000A 00 0001 01F4"), plainHex("0102 0000"));
    waitForValue("CIO_bit:0.3", 1);
    waitFor("DM:0", [](unsigned long temperature) { return temperature >= 450 && temperature <= 550; });
    EXPECT_EQ(client.ask("0102 30 0064 01 0001 01"), plainHex("0102 0000"));
    waitForValue("CIO_bit:0.6", 1);
    waitForValue("CIO_bit:0.3", 0);
}
