#include "plc_fixture.h"
#include "support/temporary_file.h"
#include "support/temporary_folder.h"

// Runs that are stepped by hand, and plants that users write.

class PlcStepTest : public PlcTest {
protected:
    // What the areas hold that a plant moves, after the commands.
    std::string memoryAfter(const std::vector<std::string> &commands, const std::string &plant, const std::string &seed)
    {
        start({"--plant", plant, "--stepped", "--seed", seed});
        for (const std::string &command : commands)
            EXPECT_EQ(tell(command), "ok") << command;
        std::string all;
        for (const char *place : {"CIO:0:6144", "DM:0:32768", "T:0:4096", "C:0:4096", "WR:0:512", "HR:0:1536"})
            all += tell(std::string("read ") + place) + "\n";
        TearDown();
        plc.reset();
        return all;
    }

    // Runs the simulator with the file as its plant; returns what it says on standard error, the file's name left out.
    std::string refusalOf(const TemporaryFile &file, const std::string &option)
    {
        Process failing({FINS_PLC_PATH, "--port", "0", option, file.path()});
        EXPECT_EQ(failing.wait(), 2);
        EXPECT_EQ(failing.output(), "");
        std::string said = failing.errors();
        for (std::size_t at = said.find(file.path()); at != std::string::npos; at = said.find(file.path()))
            said.replace(at, file.path().size(), "FILE");
        return said;
    }
};

TEST_F(PlcStepTest, OnlyStepMovesThePlant)
{
    start({"--plant", "--stepped", "--plant-period", "1"});
    PlcClient client(port);
    for (int i = 0; i < 200; ++i) // each takes the simulator once around its loop, in which a timer could strike
        ASSERT_EQ(client.ask("0101 82 0004 00 0001"), plainHex("0101 0000 0000"));
    EXPECT_EQ(tell("step 7"), "ok");
    EXPECT_EQ(client.ask("0101 82 0004 00 0001"), plainHex("0101 0000 0007"));
    EXPECT_EQ(tell("step"), "ok");
    EXPECT_EQ(tell("read DM:4"), "ok 8");
    EXPECT_EQ(tell("mode program"), "ok program");
    EXPECT_EQ(tell("step 5"), "ok");
    EXPECT_EQ(tell("read DM:4"), "ok 8");
    EXPECT_EQ(tell("step 0"), "error '0' is no number of steps; use 1 to 100000");
    EXPECT_EQ(tell("step 100001"), "error '100001' is no number of steps; use 1 to 100000");
}

TEST_F(PlcStepTest, WithoutSteppedTimePassesByItself)
{
    start({"--plant", "--plant-period", "60000"});
    EXPECT_EQ(tell("step"), "error time passes by itself; start with --stepped");
    EXPECT_EQ(tell("read DM:4"), "ok 0");
}

// 8 steps of the conveyor, a new set speed, 500 more: the whole memory is the seed's.
TEST_F(PlcStepTest, EqualSeedsAndWritesGiveEqualBytes)
{
    const std::vector<std::string> commands = {"step 8", "write DM:2 450", "step 500"};
    const std::string first = memoryAfter(commands, "conveyor", "7");
    EXPECT_EQ(memoryAfter(commands, "conveyor", "7"), first);
    EXPECT_NE(memoryAfter(commands, "conveyor", "8"), first);
    EXPECT_NE(memoryAfter({"step 8", "step 500"}, "conveyor", "7"), first);
}

TEST_F(PlcStepTest, AProjectBringsItsOwnPlant)
{
    const TemporaryFile file;
    file.write("[plc]\nstepped = true\n[memory]\n'DM:1' = 40\n[plant.values]\nlevel = { at = 'DM:0', start = 5 }\n"
               "[plant.program]\nsteps = [ { set = 'level', to = 'level + DM:1' } ]\n");
    start({"--project", file.path()});
    EXPECT_EQ(tell("read DM:0:2"), "ok 5 40");
    EXPECT_EQ(tell("step 2"), "ok");
    EXPECT_EQ(tell("read DM:0"), "ok 85");
    TearDown();
    start({"--project", file.path(), "--plant", "tank"}); // the command line goes before the file
    EXPECT_EQ(tell("read DM:0"), "ok 300");
}

TEST_F(PlcStepTest, ARecordingNeverReplacesThePlantsFile)
{
    const TemporaryFile file;
    file.write("[plant]\n");
    Process losing({FINS_PLC_PATH, "--port", "0", "--plant", file.path(), "--record", "/" + file.path()});
    EXPECT_EQ(losing.wait(), 2);
    EXPECT_EQ(losing.errors(), "fins_plc: --record: /" + file.path()
                                   + " is the file of --plant and would be lost; choose another one\n");
    EXPECT_EQ(file.read(), "[plant]\n");
}

TEST_F(PlcStepTest, ARecordingNeverReplacesWhatASignalPlays)
{
    const TemporaryFolder folder;
    const std::string rows = "flow\n1\n2\n";
    folder.put("day.csv", rows);
    folder.put("plant.toml", "[plant.signals]\nflow = { csv = \"day.csv\", column = \"flow\" }\n");
    const std::string played = folder.path("day.csv");
    Process losing({FINS_PLC_PATH, "--port", "0", "--plant", folder.path("plant.toml"), "--record", played});
    EXPECT_EQ(losing.wait(), 2);
    EXPECT_EQ(losing.errors(), "fins_plc: --record: " + played
                                   + " is the file of a signal of the plant and would be lost; choose another one\n");
    EXPECT_EQ(folder.content("day.csv"), rows);
}

TEST_F(PlcStepTest, MistakesInAPlantEndTheStart)
{
    const TemporaryFile file;
    file.write("[plant.program]\nsteps = [ { set = 'DM:0', to = 'DM:0 +' },\n  { set = 'HR:60', to = 1 } ]\n");
    const std::string missing = "fins_plc: FILE:2:39: a value is missing; use a number, TYPE:ADDRESS, a name or a "
                                "function\n";
    EXPECT_EQ(refusalOf(file, "--project"), missing);
    EXPECT_EQ(refusalOf(file, "--check-project"), missing);
    file.write("[plc]\nplant = 'tank'\n[plant]\n");
    EXPECT_EQ(refusalOf(file, "--project"),
              "fins_plc: FILE:3:1: the project has a plant already, 'tank' of [plc]; leave one of them out\n");
    file.write("[plc]\nprofile = 'small'\n[plant.program]\nsteps = [ { set = 'HR:60', to = 1 } ]\n");
    EXPECT_EQ(refusalOf(file, "--project"), "fins_plc: FILE:4:19: '60' is no address of the area; use 0 to 49\n");
    Process absent({FINS_PLC_PATH, "--port", "0", "--plant", "nowhere/mill.toml"});
    EXPECT_EQ(absent.wait(), 2);
    EXPECT_EQ(absent.errors(), "fins_plc: nowhere/mill.toml: No such file or directory\n");
}
