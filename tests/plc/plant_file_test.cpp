#include "plants/plant.h"
#include "plants/plant_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>

// Plants that users write: what their files do, and what is said of those that are wrong.

class PlantFileTest : public ::testing::Test {
protected:
    void read(const std::string &text, std::uint32_t seed = 1)
    {
        const auto load = [this](const std::string &name) {
            return files.count(name) ? FileContent{files.at(name), ""} : FileContent{"", "is not there"};
        };
        Problems found;
        controller = std::make_unique<plc::Controller>();
        plc::PlantProgram program = plc::readPlant(text, "mill.toml", controller->memory, load, found);
        problems = found.lines();
        plant = found.any() ? nullptr : std::make_unique<plc::Plant>(std::move(program), *controller, seed);
        if (plant)
            plant->begin();
    }

    void start(const std::string &text)
    {
        read(text);
        ASSERT_EQ(problems, std::vector<std::string>());
    }

    unsigned dm(unsigned number) const { return controller->memory.word(plc::AREA_DM, number); }
    void setDm(unsigned number, unsigned value) { controller->memory.setWord(plc::AREA_DM, number, value); }

    // DM:0 of so many steps.
    std::string course(unsigned steps)
    {
        std::string seen;
        for (unsigned i = 0; i < steps; ++i) {
            plant->step();
            seen += (i ? " " : "") + std::to_string(dm(0));
        }
        return seen;
    }

    // The first problem, without the others that follow from it.
    std::string problemOf(const std::string &text)
    {
        read(text);
        return problems.empty() ? "none" : problems.front();
    }

    std::map<std::string, std::string> files;
    std::vector<std::string>           problems;
    std::unique_ptr<plc::Controller>   controller;
    std::unique_ptr<plc::Plant>        plant;
};

TEST_F(PlantFileTest, StepsRunInTheirOrderWithConditionsAndPeriods)
{
    start("[plant]\nperiod = 100\n[plant.program]\nsteps = [\n"
          "{ set = 'DM:0', to = 'DM:0 + 1' },\n"
          "{ set = 'DM:1', to = 'DM:0 * 2', when = 'DM:0 > 2' },\n"
          "{ set = 'DM:2', to = 'DM:2 + 1', every = 2 },\n"
          "{ set = 'DM:3', to = 7 }, { set = 'CIO_bit:1.15', to = true } ]\n");
    EXPECT_EQ(plant->periodMs(), 100u);
    EXPECT_EQ(course(2), "1 2");
    EXPECT_EQ(dm(1), 0u);
    EXPECT_EQ(dm(2), 1u); // in the first step, and then in every second
    EXPECT_EQ(course(1), "3");
    EXPECT_EQ(dm(1), 6u);
    EXPECT_EQ(dm(2), 2u);
    EXPECT_EQ(dm(3), 7u);
    EXPECT_EQ(controller->memory.word(plc::AREA_CIO, 1), 0x8000u);
}

TEST_F(PlantFileTest, ALatchHoldsBetweenItsConditionsAndResetGoesFirst)
{
    start("[plant.program]\nsteps = [\n"
          "{ latch = 'CIO_bit:0.0', on = 'DM:1 >= 90', off = 'DM:1 < 80 or DM:1 > 200' },\n"
          "{ set = 'DM:0', to = 'CIO_bit:0.0' } ]\n");
    std::string seen;
    for (const unsigned level : {85u, 90u, 85u, 79u, 85u, 100u, 201u}) {
        setDm(1, level);
        seen += course(1);
    }
    EXPECT_EQ(seen, "0110010");
}

TEST_F(PlantFileTest, TheCurrentBankOfEmIsThatOfEachStep)
{
    start("[plant.values]\nwide = { at = 'E:8', type = 'u32', show = 'wide' }\n[plant.program]\nsteps = [\n"
          "{ set = 'E:0', to = 'E:1 + 1' }, { set = 'E_bit:2.3', to = true }, { set = 'wide', to = 65538 },\n"
          "{ set = 'DM:0', to = 'E:1 + wide' } ]\n");
    const auto word = [this](unsigned bank, unsigned number) {
        return controller->memory.word(static_cast<plc::AreaIndex>(plc::AREA_E0 + bank), number);
    };
    controller->memory.setWord(static_cast<plc::AreaIndex>(plc::AREA_E0 + 24), 1, 41);
    controller->memory.setWord(plc::AREA_BANK, 0, 24);
    EXPECT_EQ(course(1), "65535"); // 41 and 65538
    EXPECT_EQ(word(24, 0), 42u);
    EXPECT_EQ(word(24, 2), 8u);
    EXPECT_EQ(word(24, 8), 2u);
    EXPECT_EQ(word(24, 9), 1u);
    EXPECT_EQ(plant->values().at(0).place, "E:8");
    controller->memory.setWord(plc::AREA_BANK, 0, 25); // none: what is there reads as 0, and nothing is set
    EXPECT_EQ(course(1), "0");
    EXPECT_EQ(plant->values().at(0).text, "0");
    EXPECT_EQ(word(0, 0), 0u);
    EXPECT_EQ(word(0, 2), 0u);
    EXPECT_EQ(word(24, 0), 42u);
}

TEST_F(PlantFileTest, SignalsAreWorkedOutOnceAtTheBeginningOfAStep)
{
    start("[plant.signals]\nnow = 'DM:0'\nnext = 'now + 10'\nchance = 'noise(0, 9)'\n[plant.program]\nsteps = [\n"
          "{ set = 'DM:0', to = 'DM:0 + 1' }, { set = 'DM:1', to = 'now' }, { set = 'DM:2', to = 'next' },\n"
          "{ set = 'DM:3', to = 'chance * 10 + chance' } ]\n");
    EXPECT_EQ(course(1), "1");
    EXPECT_EQ(dm(1), 0u);
    EXPECT_EQ(dm(2), 10u);
    EXPECT_EQ(dm(3), 55u); // of 1791095845, the first number of the seed 1
}

TEST_F(PlantFileTest, APlaybackTakesTheRowsOneByOne)
{
    files["day.csv"] = "time,flow\n0,1.5\n1,2\n2,-0.04\n3,120\n";
    const std::string step = "[plant.program]\nsteps = [ { set = 'DM:0', to = 'flow + 100' } ]\n";
    start("[plant.signals]\nflow = { csv = 'day.csv', column = 'flow', decimals = 1 }\n" + step);
    EXPECT_EQ(course(6), "115 120 100 1300 115 120");
    start("[plant.signals]\nflow = { csv = 'day.csv', column = 'time', every = 2, repeat = false }\n" + step);
    EXPECT_EQ(course(9), "100 100 101 101 102 102 103 103 103");
}

TEST_F(PlantFileTest, NumbersBeyondTheirTypeStayAtItsEnd)
{
    const struct {
        const char *type;
        const char *number;
        unsigned    low;
        unsigned    high;
        const char *text;
    } rows[] = {
        {"u16", "70000", 65535, 0, "65535 g"},     {"u16", "-1", 0, 0, "0 g"},
        {"s16", "-1", 65535, 0, "-1 g"},           {"s16", "-40000", 32768, 0, "-32768 g"},
        {"bcd16", "1234", 0x1234, 0, "1234 g"},    {"bcd16", "12345", 0x9999, 0, "9999 g"},
        {"u32", "65538", 2, 1, "65538 g"},         {"u32", "4294967296", 65535, 65535, "4294967295 g"},
        {"s32", "-2", 65534, 65535, "-2 g"},       {"f32", "3", 0, 0x4040, "3 g"}, // 3.0 is 40400000
    };
    for (const auto &row : rows) {
        start(std::string("[plant.values]\nv = { at = 'DM:0', type = '") + row.type + "', show = 'v', unit = 'g' }\n"
              "[plant.program]\nsteps = [ { set = 'v', to = '" + row.number + "' } ]\n");
        plant->step();
        EXPECT_EQ(dm(0), row.low) << row.type << " " << row.number;
        EXPECT_EQ(dm(1), row.high) << row.type << " " << row.number;
        EXPECT_EQ(plant->values().at(0).text, row.text);
    }
}

TEST_F(PlantFileTest, ValuesAreReadByTheirTypeAndShownWithTheirDecimals)
{
    start("[plant.values]\ns = { at = 'DM:1', type = 's16', start = -25, show = 'cold', unit = 'C', decimals = 1 }\n"
          "f = { at = 'DM:2', type = 'f32', start = 5, decimals = 1, show = 'half' }\n"
          "flag = { at = 'T_flag:3', start = true, show = 'over' }\n"
          "[plant.program]\nsteps = [ { set = 'DM:0', to = 's + f * 10 + flag' } ]\n");
    EXPECT_EQ(course(1), "26"); // -25 + 50 + 1
    const std::vector<plc::PlantValue> values = plant->values();
    ASSERT_EQ(values.size(), 3u);
    EXPECT_EQ(values[0].place + " " + values[0].name + " " + values[0].text, "DM:1 cold -2.5 C");
    EXPECT_EQ(values[1].text, "0.5");
    EXPECT_EQ(values[2].text, "on");
    setDm(2, 0);
    setDm(3, 0x7FC0); // no number
    EXPECT_EQ(course(1), "0");
}

TEST_F(PlantFileTest, MistakesAreToldWithLineAndColumn)
{
    const std::string step = "[plant.program]\nsteps = [ ";
    const std::string at = "mill.toml:";
    const struct {
        std::string text;
        std::string problem;
    } rows[] = {
        {"[plc]\n", at + "1:1: there is no plant; describe it in a table [plant]"},
        {"plant = 5\n", at + "1:9: there is no plant; describe it in a table [plant]"},
        {"[plant]\nperiod = 0\n", at + "2:10: 'period' is not a whole number from 1 to 60000"},
        {"[plant]\nsteps = []\n",
         at + "2:1: 'steps' is not known here; known are about, period, values, signals, program"},
        {"[plant.values]\nmin = { at = 'DM:0' }\n",
         at + "2:1: 'min' cannot be a name; use letters, digits and _, a letter first, and no word of expressions"},
        {"[plant.values]\nv = 5\n", at + "2:5: 'v' has to be a table, such as { at = \"DM:0\" }"},
        {"[plant.values]\nv = { at = 'DM:32768' }\n", at + "2:12: '32768' is no address of the area; use 0 to 32767"},
        {"[plant.values]\nv = { at = 'CIO_bit:0.1', type = 'u16' }\n", at + "2:34: 'type' is for words; leave it out"},
        {"[plant.values]\nv = { at = 'T_flag:0', type = 's16' }\n", at + "2:31: 'type' is for words; leave it out"},
        {"[plant.values]\nv = { at = 'IR:1', type = 'u32' }\n", at + "2:27: 'type' is for words; leave it out"},
        {"[plant.values]\nv = { at = 'DM:32767', type = 'u32' }\n", at + "2:12: '2' is no count from 1 to 1"},
        {"[plant.values]\nv = { at = 'DM:0', type = 'u8' }\n",
         at + "2:27: 'u8' is no type; use one of u16 s16 bcd16 u32 s32 f32"},
        {"[plant.values]\nv = { at = 'DM:0', start = 65536 }\n",
         at + "2:28: 'start' is not a whole number from 0 to 65535"},
        {"[plant.values]\nv = { at = 'DM:0', start = true }\n",
         at + "2:28: 'start' is not a whole number from 0 to 65535"},
        {"[plant.signals]\na = 'b'\nb = 1\n", at + "2:6: 'b' is no name here; use TYPE:ADDRESS, or a name of "
                                                  "[plant.values] or of a signal above"},
        {"[plant.signals]\na = 1.5\n", at + "2:5: this is no expression; write a text such as \"DM:0 + 1\", or a whole "
                                           "number"},
        {"[plant.signals]\na = { csv = 'b.csv', column = 'c' }\n", at + "2:13: b.csv: is not there"},
        {"[plant.signals]\na = 1\n" + step + "{ set = 'a', to = 1 } ]\n",
         at + "4:19: 'a' is a signal, which no step sets; name a value or TYPE:ADDRESS"},
        {step + "5 ]\n", at + "2:11: a step is a table, such as { set = \"DM:0\", to = \"DM:0 + 1\" }"},
        {step + "{ to = 1 } ]\n", at + "2:11: 'set' is missing; add it, such as { set = \"DM:0\", to = \"DM:0 + 1\" }"},
        {step + "{ set = 'DM:0', to = 'DM:0 +' } ]\n",
         at + "2:39: a value is missing; use a number, TYPE:ADDRESS, a name or a function"},
        {step + "{ latch = 'DM:0', on = 1, off = 0 } ]\n", at + "2:21: 'DM:0' is a word; a latch sets a bit"},
        {step + "{ set = 'CF_bit:1.0', to = 1 } ]\n",
         at + "2:19: 'CF_bit:1.0' is made by the CPU unit at every moment, and no step sets it; name another place"},
        {"[plant.values]\nv = { at = 'CF_bit:1.0', start = true }\n",
         at + "2:34: 'start' is for what can be set, and the CPU unit makes this value at every moment; leave it out"},
        {step + "{ set = 'DM:0', to = 1, evry = 2 } ]\n",
         at + "2:35: 'evry' is not known here; known are latch, set, to, when, every"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(problemOf(row.text), row.problem) << row.text;
}

TEST_F(PlantFileTest, MistakesInAPlaybackAreToldInItsFile)
{
    const std::string signal = "[plant.signals]\na = { csv = 'b.csv', column = 'c' }\n";
    const struct {
        const char *csv;
        const char *problem;
    } rows[] = {
        {"", "b.csv:1:1: there is no column 'c'; name it in the first line"},
        {"d\n1\n", "b.csv:1:1: there is no column 'c'; name it in the first line"},
        {"c\n", "b.csv:2:1: there is no row of numbers behind the header"},
        {"b,c\n1,2\n1\n", "b.csv:3:1: the column 'c' is missing in this line"},
        {"b,c\n1,x\n", "b.csv:2:3: 'x' is no number; write one such as 12 or 0.5"},
        {"c\n1e300\n", "b.csv:2:1: the number 1e300 is too large"},
    };
    for (const auto &row : rows) {
        files["b.csv"] = row.csv;
        EXPECT_EQ(problemOf(signal), row.problem) << row.csv;
    }
}

// The example of the documentation: 8 up and 1 down in its first steps, and then between its two levels.
TEST_F(PlantFileTest, TheDocumentsExampleHoldsItsTemperature)
{
    std::ifstream file(SIMULATOR_DOCUMENT);
    const std::string document{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::size_t begin = document.find("```toml\n[plant]\n");
    ASSERT_NE(begin, std::string::npos);
    start(document.substr(begin + 8, document.find("```\n", begin + 8) - begin - 8));
    EXPECT_EQ(course(2), "207 214");
    EXPECT_EQ(plant->values().at(0).text, "21.4 C");
    course(200);
    for (unsigned i = 0; i < 200; ++i) {
        plant->step();
        EXPECT_NEAR(dm(0), 590, 20) << i;
    }
}
