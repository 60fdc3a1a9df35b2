#include "project/project.h"

#include "session/watch_values.h"
#include "support/built_driver.h"
#include "support/temporary_folder.h"

namespace {

using Lines = std::vector<std::string>;

// Project files of several PLCs.
class PlantTest : public ::testing::Test {
protected:
    // The problems, without the folder's name.
    Lines read(const std::string &text)
    {
        files.put("p.toml", text);
        Problems problems;
        plcs = readProjectPlcs(files.path("p.toml"), builtDriver(), problems);
        Lines lines = problems.lines();
        for (std::string &line : lines) {
            for (std::size_t at = line.find(files.path()); at != std::string::npos; at = line.find(files.path()))
                line.erase(at, files.path().size());
        }
        return lines;
    }

    const Project &project(std::size_t plc) const { return plcs.at(plc).project; }
    const TagBook &tags(std::size_t plc) const { return plcs.at(plc).tags; }

    // What is said of a name that `plc` has not; "" if it has it.
    std::string refusal(std::size_t plc, const std::string &name) const
    {
        try {
            tags(plc).resolve(name, Access::READ);
            return "";
        } catch (const UsageError &error) {
            const std::string text = error.what();
            const std::size_t at   = text.find(files.path());
            return at == std::string::npos ? text : text.substr(0, at) + text.substr(at + files.path().size());
        }
    }

    const TemporaryFolder   files;
    std::vector<ProjectPlc> plcs;
};

const char TWO[] = "[plc.press]\nhost = \"10.0.0.1\"\n[plc.press.tags]\nLevel = { type = \"DM\", address = 5 }\n"
                   "[plc.oven]\nhost = \"10.0.0.2:9601\"\n[plc.oven.tags]\nLevel = { type = \"DM\", address = 6 }\n"
                   "Heat = { type = \"DM\", address = 8, data = \"f32\" }\n";

} // namespace

TEST_F(PlantTest, AProjectOfOnePlcHasNoNameForIt)
{
    EXPECT_EQ(read("[connection]\nhost = \"10.0.0.1\"\n[tags]\nLevel = { type = \"DM\", address = 5 }\n"), Lines());
    ASSERT_EQ(plcs.size(), 1U);
    EXPECT_EQ(project(0).plc, "");
    EXPECT_EQ(project(0).host, "10.0.0.1");
    EXPECT_EQ(tags(0).resolve("Level", Access::READ).item.address, 5);
    EXPECT_EQ(tags(0).resolve("DM:7", Access::READ).name, "DM:7");
}

TEST_F(PlantTest, NamesBeginWithThoseOfThePlcs)
{
    EXPECT_EQ(read(TWO), Lines());
    ASSERT_EQ(plcs.size(), 2U);
    EXPECT_EQ(project(0).plc, "press");
    EXPECT_EQ(project(0).host, "10.0.0.1");
    EXPECT_EQ(project(1).plc, "oven");
    EXPECT_EQ(project(1).host, "10.0.0.2:9601");
    EXPECT_EQ(tags(0).resolve("press.Level", Access::READ).item.address, 5);
    EXPECT_EQ(tags(1).resolve("oven.Level", Access::READ).item.address, 6);
    EXPECT_EQ(tags(1).resolve("oven.Heat/hex", Access::READ).name, "oven.Heat/hex");
    EXPECT_EQ(tags(1).resolveWrite("oven.Heat=1").tag.name, "oven.Heat");

    const Tag item = tags(1).resolve("oven.DM:100:2/f32", Access::READ);
    EXPECT_EQ(item.name, "oven.DM:100:2/f32");
    EXPECT_EQ(item.item.count, 4);
    const std::vector<WatchedValue> values = singleValues({item});
    ASSERT_EQ(values.size(), 2U);
    EXPECT_EQ(values[1].name, "oven.DM:102/f32");
    EXPECT_EQ(tags(1).resolveWrite("oven.CIO_bit:3.0=1").tag.name, "oven.CIO_bit:3.0");
    EXPECT_EQ(tags(1).resolveWrite("oven.DM:7/string=abc").tag.name, "oven.DM:7:2/string");
}

TEST_F(PlantTest, NamesOfOtherPlcsAreRefused)
{
    EXPECT_EQ(read(TWO), Lines());
    EXPECT_EQ(refusal(0, "press.Level"), "");
    EXPECT_EQ(refusal(0, "Level"), "'Level' is not of the PLC press, whose tags and items begin with press.");
    EXPECT_EQ(refusal(0, "oven.Level"), "'oven.Level' is not of the PLC press, whose tags and items begin with press.");
    EXPECT_EQ(refusal(0, "DM:0"), "'DM:0' is not of the PLC press, whose tags and items begin with press.");
    EXPECT_EQ(refusal(1, "oven.Pump"), "'oven.Pump' is neither a tag of p.toml nor an item; write a tag's name, or "
                                       "TYPE:ADDRESS such as DM:100:2");
}

TEST_F(PlantTest, WhatAllShareIsSaidOnce)
{
    EXPECT_EQ(read("[connection]\nport = 9700\ntimeout_ms = 250\n[driver]\ninterval_ms = 40\nstation = 3\n"
                   "allow_mode_change = true\n[defaults]\nword_order = \"high\"\n"
                   "[plc.a]\nhost = \"10.0.0.1\"\ninterval_ms = 5\nallow_mode_change = false\nword_order = \"low\"\n"
                   "[plc.b]\nhost = \"10.0.0.2\"\nport = 9800\ntimeout_ms = 300\n"
                   "[plc.c]\nhost = \"10.0.0.3:9900\"\n"),
              Lines());
    ASSERT_EQ(plcs.size(), 3U);
    EXPECT_EQ(project(0).host, "10.0.0.1:9700");
    EXPECT_EQ(project(0).timeoutMs, 250);
    EXPECT_EQ(project(0).intervalMs, 5);
    EXPECT_EQ(project(0).station, 3);
    EXPECT_FALSE(project(0).allowModeChange);
    EXPECT_EQ(tags(0).orders().words, Order::LOW);
    EXPECT_EQ(project(1).host, "10.0.0.2:9800");
    EXPECT_EQ(project(1).timeoutMs, 300);
    EXPECT_EQ(project(1).intervalMs, 40);
    EXPECT_TRUE(project(1).allowModeChange);
    EXPECT_EQ(tags(1).orders().words, Order::HIGH);
    EXPECT_EQ(project(2).host, "10.0.0.3:9900");
}

TEST_F(PlantTest, ARecipeIsOfThePlcOfItsVariables)
{
    EXPECT_EQ(read(std::string(TWO) + "[recipes.Bread.values]\n\"oven.Level\" = 7\n\"oven.DM:20\" = 8\n"
                                      "[recipes.Look]\nvariables = [\"press.Level\"]\n"),
              Lines());
    EXPECT_EQ(project(0).recipes.size(), 1U);
    EXPECT_NE(project(0).findRecipe("Look"), nullptr);
    const Recipe *bread = project(1).findRecipe("Bread");
    ASSERT_NE(bread, nullptr);
    EXPECT_EQ(entryName(bread->entries[0]), "oven.Level");
    EXPECT_EQ(entryName(bread->entries[1]), "oven.DM:20");
    EXPECT_EQ(read(std::string(TWO) + "[recipes.Both.values]\n\"oven.Level\" = 7\n\"press.Level\" = 8\n"),
              (Lines{"p.toml:12:1: 'press.Level' is not of the PLC oven, whose tags and items begin with oven."}));
}

TEST_F(PlantTest, TagFilesLieBesideIt)
{
    files.put("press.csv", "name,type,address\nLevel,DM,5\nPump,CIO_bit,0.5\n");
    EXPECT_EQ(read("[plc.press]\nhost = \"10.0.0.1\"\ntags = \"press.csv\"\n"), Lines());
    EXPECT_EQ(tags(0).resolve("press.Pump", Access::READ).item.address, 5);
    EXPECT_EQ(project(0).files.size(), 2U);
}

TEST_F(PlantTest, ReportsWhatIsWrong)
{
    EXPECT_EQ(read("[connection]\nhost = \"10.0.0.1\"\n[tags]\nLevel = { type = \"DM\", address = 5 }\n"
                   "[plc.press]\nport = 0\nspeed = 1\n[plc.\"a.b\"]\nhost = \"10.0.0.1\"\n[plc]\noven = 5\n"),
              (Lines{"p.toml:2:8: the PLCs are under [plc.NAME]; give each its own host there",
                     "p.toml:3:1: each tag belongs to a PLC; move it to [plc.NAME.tags]",
                     "p.toml:5:1: 'host' is missing; add it, such as host = \"192.168.250.1\"",
                     "p.toml:6:8: 'port' is not a whole number from 1 to 65535",
                     "p.toml:7:1: 'speed' is not known here; known are host, port, timeout_ms, station, retries, "
                     "words_per_frame, interval_ms, allow_mode_change, word_order, char_order, tags",
                     "p.toml:8:6: 'a.b' is not a name of a PLC; use letters, digits, _ and -, a letter first",
                     "p.toml:11:8: the PLC 'oven' is not a table; begin it with a line [plc.oven]"}));
    EXPECT_EQ(read("plc = 5\n"), (Lines{"p.toml:1:7: 'plc' is not a table; begin it with a line [plc]"}));
    EXPECT_EQ(read(std::string(TWO) + "[plc.mixer]\nhost = \"10.0.0.3\"\n[plc.mixer.tags]\nX = { type = \"DM\" }\n"
                                      "[recipes.R]\nvariables = [\"mixer.X\"]\n"),
              (Lines{"p.toml:13:5: 'address' is missing; add it, such as address = 100"}));
}

TEST_F(PlantTest, OneIsNeededWhereThereCanBeOnlyOne)
{
    files.put("p.toml", TWO);
    Problems problems;
    TagBook book(builtDriver());
    readProject(files.path("p.toml"), book, problems);
    EXPECT_EQ(problems.lines(), (Lines{files.path("p.toml") + ": it has 2 PLCs, and one is needed here"}));
}
