#include "project/project.h"

#include "project/tag_table.h"
#include "support/built_driver.h"
#include "support/temporary_folder.h"

namespace {

using Lines = std::vector<std::string>;

// A project file, and its tag file beside it, for the time of a test.
class ProjectTest : public ::testing::Test {
protected:
    void put(const std::string &name, const std::string &text) const { files.put(name, text); }

    // The problems of a project with this text, without the folder's name.
    Lines read(const std::string &text)
    {
        put("p.toml", text);
        Problems problems;
        book = std::make_unique<TagBook>(builtDriver());
        project = readProject(files.path("p.toml"), *book, problems);
        return shortened(problems);
    }

    Lines readCsv(const std::string &text)
    {
        put("tags.csv", text);
        Problems problems;
        book = std::make_unique<TagBook>(builtDriver());
        readTagFile(files.path("tags.csv"), *book, problems);
        return shortened(problems);
    }

    Lines shortened(const Problems &problems) const
    {
        Lines lines = problems.lines();
        for (std::string &line : lines) {
            const std::string &folder = files.path();
            for (std::size_t at = line.find(folder); at != std::string::npos; at = line.find(folder))
                line.erase(at, folder.size());
        }
        return lines;
    }

    const TemporaryFolder     files;
    std::unique_ptr<TagBook>  book;
    Project                   project;
};

} // namespace

TEST_F(ProjectTest, AnEmptyProjectIsValid)
{
    EXPECT_EQ(read(""), Lines());
    EXPECT_EQ(project.host, "");
    EXPECT_FALSE(project.timeoutMs.has_value());
    EXPECT_FALSE(project.wordsPerFrame.has_value());
    EXPECT_TRUE(project.recipes.empty());
}

TEST_F(ProjectTest, ReadsConnectionAndDriver)
{
    EXPECT_EQ(read("[connection]\nhost = \"10.0.0.1\"\nport = 9601\ntimeout_ms = 10\n"
                   "[driver]\nstation = 0\nretries = 1\nwords_per_frame = 1\ninterval_ms = 0\n"),
              Lines());
    EXPECT_EQ(project.host, "10.0.0.1:9601");
    EXPECT_EQ(project.timeoutMs, 10);
    EXPECT_EQ(project.station, 0);
    EXPECT_EQ(project.retries, 1);
    EXPECT_EQ(project.wordsPerFrame, 1);
    EXPECT_EQ(project.intervalMs, 0);
    EXPECT_EQ(read("[connection]\nhost = \"[::1]\"\nport = 65535\ntimeout_ms = 60000\n"
                   "[driver]\nstation = 255\nretries = 100\nwords_per_frame = 114\ninterval_ms = 60000\n"),
              Lines());
    EXPECT_EQ(project.host, "[::1]:65535");
    EXPECT_EQ(project.wordsPerFrame, 114);
    EXPECT_EQ(read("[connection]\nhost = \"plc:9601\"\n"), Lines());
    EXPECT_EQ(project.host, "plc:9601");
}

TEST_F(ProjectTest, ReportsConnectionsThatAreNone)
{
    EXPECT_EQ(read("[connection]\nhost = \"plc:0\"\nport = 65536\ntimeout_ms = 9\n"),
              (Lines{"p.toml:2:8: 'plc:0' is not a host; write HOST or HOST:PORT with a port from 1 to 65535",
                     "p.toml:3:8: 'port' is not a whole number from 1 to 65535",
                     "p.toml:4:14: 'timeout_ms' is not a whole number from 10 to 60000"}));
    EXPECT_EQ(read("[connection]\nhost = \"plc:9600\"\nport = 9600\n"),
              (Lines{"p.toml:3:8: the port is given twice; remove it here or from 'host'"}));
    EXPECT_EQ(read("[connection]\nhost = \"[::1]:9600\"\nport = 9600\n"),
              (Lines{"p.toml:3:8: the port is given twice; remove it here or from 'host'"}));
    EXPECT_EQ(read("[connection]\nhost = 5\n"),
              (Lines{"p.toml:2:8: 'host' is not a text; write it between quotes"}));
    EXPECT_EQ(read("connection = 5\n"),
              (Lines{"p.toml:1:14: 'connection' is not a table; begin it with a line [connection]"}));
}

TEST_F(ProjectTest, ReportsDriverSettingsOutOfRange)
{
    EXPECT_EQ(read("[driver]\nstation = 256\nretries = 0\nwords_per_frame = 115\ninterval_ms = -1\nspeed = 1\n"),
              (Lines{"p.toml:2:11: 'station' is not a whole number from 0 to 255",
                     "p.toml:3:11: 'retries' is not a whole number from 1 to 100",
                     "p.toml:4:19: 'words_per_frame' is not a whole number from 1 to 114",
                     "p.toml:5:15: 'interval_ms' is not a whole number from 0 to 60000",
                     "p.toml:6:1: 'speed' is not known here; known are station, retries, words_per_frame, "
                     "interval_ms, allow_mode_change"}));
    EXPECT_EQ(read("[driver]\nretries = \"3\"\n"),
              (Lines{"p.toml:2:11: 'retries' is not a whole number from 1 to 100"}));
    EXPECT_EQ(read("[driver]\nretries = 3.0\n").size(), 1u);
}

TEST_F(ProjectTest, ReadsTags)
{
    EXPECT_EQ(read("[tags]\n"
                   "Level = { type = \"DM\", address = 7, data = \"s16\", scale = 0.1, offset = -4, decimals = 1, "
                   "unit = \"%\", comment = \"c\", screen = \"s\", group = \"g\", min = -4, max = 95.5, access = \"r\" }\n"
                   "Pump = { type = \"CIO_bit\", address = \"100.15\", count = 2, access = \"rw\" }\n"
                   "Text = { type = \"HR\", address = \"12\", count = 3, data = \"string\", char_order = \"low\" }\n"
                   "Sum = { type = \"DM\", address = 20, count = 2, data = \"u32\", word_order = \"high\" }\n"),
              Lines());
    const Tag &level = *book->find("Level");
    EXPECT_EQ(itemText(level.item), "DM:7");
    EXPECT_EQ(level.format.type, DataType::S16);
    EXPECT_EQ(level.format.scale, 0.1);
    EXPECT_EQ(level.format.offset, -4);
    EXPECT_EQ(level.format.decimals, 1);
    EXPECT_EQ(level.format.unit, "%");
    EXPECT_EQ(level.comment, "c");
    EXPECT_EQ(level.screen, "s");
    EXPECT_EQ(level.group, "g");
    EXPECT_EQ(level.minimum, -4);
    EXPECT_EQ(level.maximum, 95.5);
    EXPECT_TRUE(level.readOnly);
    EXPECT_FALSE(book->find("Pump")->minimum.has_value());
    EXPECT_FALSE(book->find("Pump")->readOnly);
    EXPECT_TRUE(book->find("Pump")->remoteWrites);
    EXPECT_FALSE(level.remoteWrites);
    EXPECT_FALSE(book->find("Text")->remoteWrites); // which would have to say so
    EXPECT_EQ(itemText(book->find("Pump")->item), "CIO_bit:100.15:2");
    EXPECT_EQ(itemText(book->find("Text")->item), "HR:12:3");
    EXPECT_EQ(formatText(book->find("Text")->format), "string-low");
    EXPECT_EQ(itemText(book->find("Sum")->item), "DM:20:4");
    EXPECT_EQ(formatText(book->find("Sum")->format), "u32-high");
}

TEST_F(ProjectTest, DefaultsAreForTagsAndItems)
{
    EXPECT_EQ(read("[defaults]\nword_order = \"high\"\nchar_order = \"low\"\n[tags]\n"
                   "A = { type = \"DM\", address = 0, data = \"f32\" }\n"
                   "B = { type = \"DM\", address = 0, data = \"f32\", word_order = \"low\" }\n"
                   "C = { type = \"DM\", address = 0, data = \"string\" }\n"),
              Lines());
    EXPECT_EQ(formatText(book->find("A")->format), "f32-high");
    EXPECT_EQ(formatText(book->find("B")->format), "f32");
    EXPECT_EQ(formatText(book->find("C")->format), "string-low");
    EXPECT_EQ(book->resolve("DM:0/u32", Access::READ).name, "DM:0/u32-high");
    EXPECT_EQ(read("[defaults]\nword_order = \"big\"\nchar_order = \"\"\n"),
              (Lines{"p.toml:2:14: 'big' is not an order; write low or high",
                     "p.toml:3:14: '' is not an order; write low or high"}));
}

TEST_F(ProjectTest, ReportsEveryProblemOfTags)
{
    EXPECT_EQ(read("[tags]\n"
                   "A = { type = \"DM\", address = 32768 }\n"
                   "B = { type = \"EM\", address = 0 }\n"
                   "C = { address = 0 }\n"
                   "D = { type = \"DM\", address = 10.5 }\n"
                   "E = { type = \"CIO_bit\", address = \"0.05\", data = \"u16\" }\n"
                   "F = { type = \"DM\", address = 0, data = \"f16\", colour = \"red\" }\n"
                   "G = { type = \"DM\", address = 0, data = \"hex\", scale = 2, offset = 1, decimals = 0 }\n"
                   "H = 5\n"
                   "I = { type = \"DM\", address = 0, count = 0, word_order = \"x\" }\n"
                   "J = { type = \"DM\", address = 0, scale = 0, decimals = 10 }\n"
                   "\"1x\" = { type = \"DM\", address = 0 }\n"
                   "K = { type = \"DM\", address = 0, scale = \"0.1\", unit = 5 }\n"
                   "L = { type = \"DM\" }\n"
                   "M = { type = \"DM\", address = 32767, data = \"f32\" }\n"
                   "N = { type = \"DM\", address = 0, min = 2, max = 1.5, access = \"w\" }\n"
                   "O = { type = \"DM_bit\", address = \"0.0\", min = 0, max = inf }\n"
                   "P = { type = \"DM\", address = 0, data = \"string\", max = nan, access = 5 }\n"),
              (Lines{
                  "p.toml:2:30: 'DM:32768' lies outside the range 0 to 32767, written ddddd",
                  "p.toml:3:14: 'EM:0': there is no register type 'EM'; the types are CIO, WR, HR, AR, T, C, DM, "
                  "CIO_bit, WR_bit, HR_bit, AR_bit, DM_bit",
                  "p.toml:4:5: 'type' is missing; add it, such as type = \"DM\"",
                  "p.toml:5:30: 'address' is not an address; write a word as a number, and a bit as a text such as "
                  "\"10.5\"",
                  "p.toml:6:35: 'CIO_bit:0.05': bits 0 to 9 have one digit; write 0.5",
                  "p.toml:6:50: a bit has no data type; remove 'data'",
                  "p.toml:7:40: there is no data type 'f16'; the data types are u16, s16, u32, s32, u64, s64, f32, "
                  "f64, bcd16, bcd32, hex, hex32, bits, string, and of the manuals BOOL, INT, UINT, DINT, UDINT, LINT, ULINT, REAL, "
                  "LREAL, WORD, DWORD, UINT_BCD, UDINT_BCD, STRING",
                  "p.toml:7:47: 'colour' is not known here; known are type, data, word_order, char_order, scale, "
                  "offset, decimals, min, max, deadband, address, count, unit, access, comment, screen, group",
                  "p.toml:8:55: only numbers have 'scale'; remove it, or change the type",
                  "p.toml:8:67: only numbers have 'offset'; remove it, or change the type",
                  "p.toml:8:81: only numbers have 'decimals'; remove it, or change the type",
                  "p.toml:9:5: the tag 'H' is not a table; write H = { type = \"DM\", address = 100 }",
                  "p.toml:10:41: 'count' is not a whole number from 1 to 1000000",
                  "p.toml:10:57: 'x' is not an order; write low or high",
                  "p.toml:11:41: 'scale' is 0; write the value of one step, such as 0.1",
                  "p.toml:11:55: 'decimals' is not a whole number from 0 to 9",
                  "p.toml:12:1: '1x' is not a name; use letters, digits, _ . and -, a letter first",
                  "p.toml:13:41: 'scale' is not a number; write one such as 0.1, without quotes",
                  "p.toml:13:55: 'unit' is not a text; write it between quotes",
                  "p.toml:14:5: 'address' is missing; add it, such as address = 100",
                  "p.toml:15:30: 'DM:32767' lies outside the range 0 to 32767, written ddddd",
                  "p.toml:16:48: 'max' is below 'min'; write the lowest value as min, the highest as max",
                  "p.toml:16:62: 'w' is not an access; write r (read only) or rw",
                  "p.toml:17:47: only numbers have 'min'; remove it, or change the type",
                  "p.toml:17:56: 'max' is not a number; write one such as 0.1, without quotes",
                  "p.toml:17:56: only numbers have 'max'; remove it, or change the type",
                  "p.toml:18:56: 'max' is not a number; write one such as 0.1, without quotes",
                  "p.toml:18:56: only numbers have 'max'; remove it, or change the type",
                  "p.toml:18:70: 'access' is not a text; write it between quotes"}));
}

TEST_F(ProjectTest, ReadsTagsFromACsvFile)
{
    put("tags.csv", "name,type,address,count,data,scale,unit,comment,min,max,access\n"
                    "Level,DM,7,,s16,0.1,%,\"the level, of the tank\",-4,95.5,r\n"
                    "Pump,CIO_bit,100.10,,,,,,,,rw\n"
                    "Sum,DM,20,2,u32,,,,,,\n");
    EXPECT_EQ(read("tags = \"tags.csv\"\n"), Lines());
    EXPECT_EQ(book->find("Level")->format.scale, 0.1);
    EXPECT_EQ(book->find("Level")->comment, "the level, of the tank");
    EXPECT_EQ(book->find("Level")->minimum, -4);
    EXPECT_EQ(book->find("Level")->maximum, 95.5);
    EXPECT_TRUE(book->find("Level")->readOnly);
    EXPECT_FALSE(book->find("Pump")->readOnly);
    EXPECT_FALSE(book->find("Sum")->maximum.has_value());
    EXPECT_EQ(itemText(book->find("Pump")->item), "CIO_bit:100.10");
    EXPECT_EQ(itemText(book->find("Sum")->item), "DM:20:4");
    EXPECT_EQ(read("tags = \"" + files.path("tags.csv") + "\"\n"), Lines()) << "an absolute path";
    EXPECT_EQ(book->tags().size(), 3u);
}

TEST_F(ProjectTest, ReportsTagFilesThatAreNone)
{
    EXPECT_EQ(read("tags = \"none.csv\"\n"), (Lines{"p.toml:1:8: none.csv: No such file or directory"}));
    EXPECT_EQ(read("tags = 5\n"),
              (Lines{"p.toml:1:8: 'tags' is neither a table nor a file; write [tags] or tags = \"tags.csv\""}));
}

TEST_F(ProjectTest, ReportsEveryProblemOfCsvTags)
{
    EXPECT_EQ(readCsv("name,type,address,scale,colour\n"
                      "A,DM,32768,,\n"
                      ",DM,0,,\n"
                      "B,DM,x,0,\n"
                      "C,DM,1,,\n"
                      "C,DM,2,,\n"
                      "a b,DM,2,,\n"
                      "D,DM,2,1;5,\n"),
              (Lines{"tags.csv:1:25: 'colour' is not known here; known are name, type, data, word_order, char_order, "
                     "scale, offset, decimals, min, max, deadband, address, count, unit, access, comment, screen, group",
                     "tags.csv:2:6: 'DM:32768' lies outside the range 0 to 32767, written ddddd",
                     "tags.csv:3:1: 'name' is missing; add it, such as Level",
                     "tags.csv:4:6: 'DM:x': the address is malformed; the range is 0 to 32767, written ddddd",
                     "tags.csv:4:8: 'scale' is 0; write the value of one step, such as 0.1",
                     "tags.csv:6:1: there is another tag 'C'; give each a name of its own",
                     "tags.csv:7:1: 'a b' is not a name; use letters, digits, _ . and -, a letter first",
                     "tags.csv:8:8: 'scale' is not a number; write one such as 0.1, without quotes"}));
}

TEST_F(ProjectTest, WritesTagsAsTheyAreRead)
{
    const Lines lines = {
        "Level = { type = \"DM\", address = 7, data = \"s16\", scale = 0.1, offset = -4, decimals = 1, min = -4, max = 95.5, "
        "deadband = 0.5, unit = \"%\", access = \"r\", comment = \"say \\\"hi\\\"\", screen = \"s\", group = \"g\" }",
        "Pump = { type = \"CIO_bit\", address = \"100.10\", count = 2 }",
        "\"F\xC3\xBCll\" = { type = \"HR\", address = 12, count = 3, data = \"string-low\" }",
        "Plain = { type = \"T\", address = 1 }"};
    std::string text = "[tags]\n";
    for (const std::string &line : lines)
        text += line + "\n";
    EXPECT_EQ(read(text), Lines());
    ASSERT_EQ(book->tags().size(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(tagLine(book->tags()[i]), lines[i]);
}

TEST_F(ProjectTest, ADeadBandIsANumberFromZeroAndForNumbers)
{
    EXPECT_EQ(read("[tags]\nA = { type = \"DM\", address = 0, deadband = -1 }\n"
                   "B = { type = \"DM\", address = 0, data = \"hex\", deadband = 1 }\n"),
              (Lines{"p.toml:2:44: 'deadband' is below 0; write the smallest change to be logged, such as 0.5",
                     "p.toml:3:58: only numbers have 'deadband'; remove it, or change the type"}));
}

TEST_F(ProjectTest, ReadsRecipes)
{
    EXPECT_EQ(read("[tags]\nLevel = { type = \"DM\", address = 0, scale = 0.1, unit = \"%\" }\n"
                   "[recipes.Sweet]\ncomment = \"the sweet one\"\nvariables = [\"HR:5:2\"]\n"
                   "[recipes.Sweet.values]\nLevel = 12.3\n\"DM:8:2\" = [1, 0x10]\n\"DM:10/hex\" = 16\n"
                   "\"DM:11/bits\" = 5\n\"DM:12/f32\" = 1.5\n\"DM:20:2/string\" = \"AB\"\n"),
              Lines());
    ASSERT_EQ(project.recipes.size(), 1u);
    const Recipe *recipe = project.findRecipe("Sweet");
    ASSERT_NE(recipe, nullptr);
    EXPECT_EQ(project.findRecipe("sweet"), nullptr);
    EXPECT_EQ(recipe->comment, "the sweet one");
    EXPECT_EQ(recipe->wordCount(), 11u);
    EXPECT_EQ(recipeFileText("", recipe->entries),
              "HR:5:2 = \nLevel = 12.3\nDM:8:2 = 1 16\nDM:10/hex = 0x0010\nDM:11/bits = 0000_0000_0000_0101\n"
              "DM:12/f32 = 1.5\nDM:20:2/string = \"AB\"\n");
}

TEST_F(ProjectTest, ReportsEveryProblemOfRecipes)
{
    EXPECT_EQ(read("[tags]\nBad = { type = \"DM\", address = 40000 }\nBit = { type = \"DM_bit\", address = \"0.0\" }\n"
                   "[recipes.A]\nspeed = 1\nvariables = [5, \"Nope\"]\n"
                   "[recipes.A.values]\n"
                   "\"DM:0\" = 65536\n"
                   "Bad = 1\n"
                   "\"DM:1:2\" = [1, 2, 3]\n"
                   "\"DM:3\" = [1, true]\n"
                   "\"DM:3:2\" = []\n"
                   "Bit = 1\n"
                   "\"DM:5:2\" = [1, 2]\n"
                   "\"DM:6\" = 1\n"
                   "[recipes]\nB = 5\nC = {}\nD = { values = 1, variables = 2 }\n"),
              (Lines{"p.toml:2:32: 'DM:40000' lies outside the range 0 to 32767, written ddddd",
                     "p.toml:5:1: 'speed' is not known here; known are comment, variables, values",
                     "p.toml:6:14: this is not a variable; write its name between quotes",
                     "p.toml:6:17: 'Nope' is neither a tag of p.toml nor an item; write a tag's name, or TYPE:ADDRESS "
                     "such as DM:100:2",
                     "p.toml:8:10: 'DM:0=65536' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF",
                     "p.toml:10:12: 'DM:1:2' holds 2 values, and 3 are given; write as many as it holds",
                     "p.toml:11:14: this is not a value; write a number, or a text between quotes",
                     "p.toml:12:12: there is no value here; write one",
                     "p.toml:13:7: 'Bit' is a bit; recipes hold words",
                     "p.toml:15:1: DM:5:2 and DM:6 overlap; name every word and bit once",
                     "p.toml:17:1: the recipe 'B' is not a table; begin it with a line [recipes.B]",
                     "p.toml:18:5: the recipe holds no variable; add one, such as \"DM:100\" = 1",
                     "p.toml:19:5: the recipe holds no variable; add one, such as \"DM:100\" = 1",
                     "p.toml:19:16: 'values' is not a table; write a line \"DM:100\" = 1 for each variable",
                     "p.toml:19:31: 'variables' is not a list; write names between brackets, such as [\"DM:100\"]"}));
}

TEST_F(ProjectTest, ReportsRecipesThatBreakLimitsAndRights)
{
    EXPECT_EQ(read("[tags]\n"
                   "SetPoint = { type = \"DM\", address = 3, scale = 0.1, unit = \"%\", min = 0, max = 100 }\n"
                   "Level = { type = \"DM\", address = 0, access = \"r\" }\n"
                   "[recipes.A]\nvariables = [\"Level\"]\n"
                   "[recipes.B.values]\n"
                   "SetPoint = 100.1\n"
                   "Level    = 5\n"
                   "[recipes.C.values]\n"
                   "SetPoint = 100\n"),
              (Lines{"p.toml:7:12: 'SetPoint=100.1' is above the tag's max of 100 %; write a value from 0 to 100 %",
                     "p.toml:8:12: 'Level' can only be read: the access of the tag is r"}));
}

TEST_F(ProjectTest, ARecipeMayHoldEveryWordOfAPlc)
{
    const std::string all = "[recipes.A]\nvariables = [\"DM:0:32768\", \"CIO:0:6144\", \"WR:0:512\", \"HR:0:1536\", "
                            "\"AR:0:960\", \"T:0:4096\", \"C:0:4096\"]\n";
    EXPECT_EQ(read(all), Lines());
    EXPECT_EQ(project.recipes[0].wordCount(), 50112u);
}

TEST_F(ProjectTest, ASyntaxErrorIsTheOnlyProblem)
{
    const Lines problems = read("[driver]\nstation = 999\nretries = = 3\n");
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].find("p.toml:3:11: this is not TOML: "), 0u) << problems[0];
    EXPECT_EQ(read("hots = 1\n"),
              (Lines{"p.toml:1:1: 'hots' is not known here; known are connection, driver, defaults, tags, recipes, "
                     "screens, alarms"}));
}

TEST_F(ProjectTest, AnAddressMayHaveItsArea)
{
    EXPECT_EQ(read("[tags]\n"
                   "Level = { address = \"D100\", data = \"REAL\", count = 2 }\n"
                   "Pump = { address = \"W3.05\", data = \"BOOL\" }\n"
                   "Valve = { address = \"100.10\" }\n"
                   "Card = { address = \"100\", data = \"WORD\" }\n"
                   "Both = { type = \"CIO\", address = \"100\" }\n"
                   "[recipes.A.values]\n"
                   "\"D200:2\" = [1, 2]\n"
                   "\"D210/DWORD\" = 305419896\n"),
              Lines());
    EXPECT_EQ(tagLine(*book->find("Level")), "Level = { type = \"DM\", address = 100, count = 2, data = \"f32\" }");
    EXPECT_EQ(tagLine(*book->find("Pump")), "Pump = { type = \"WR_bit\", address = \"3.5\" }");
    EXPECT_EQ(tagLine(*book->find("Valve")), "Valve = { type = \"CIO_bit\", address = \"100.10\" }");
    EXPECT_EQ(tagLine(*book->find("Card")), "Card = { type = \"CIO\", address = 100, data = \"hex\" }");
    EXPECT_EQ(tagLine(*book->find("Both")), "Both = { type = \"CIO\", address = 100 }");
    ASSERT_EQ(project.recipes.size(), 1u);
    EXPECT_EQ(entryName(project.recipes[0].entries[0]), "D200:2");
    EXPECT_EQ(entryName(project.recipes[0].entries[1]), "D210/DWORD");
    EXPECT_EQ(project.recipes[0].entries[1].values, (std::vector<quint8>{0x78, 0x56, 0x34, 0x12}));
}

TEST_F(ProjectTest, AnAddressWithItsAreaIsChecked)
{
    EXPECT_EQ(read("[tags]\n"
                   "A = { type = \"DM\", address = \"D100\" }\n"
                   "B = { address = \"D32768\" }\n"
                   "C = { address = \"T5.00\" }\n"
                   "D = { address = 100 }\n"
                   "E = { address = \"D100\", data = \"BOOL\" }\n"
                   "F = { address = \"D100.00\", data = \"INT\" }\n"
                   "G = { address = \"d100\" }\n"),
              (Lines{"p.toml:2:30: 'D100' names its area itself; remove 'type'",
                     "p.toml:3:17: 'D32768' lies outside the range D0 to D32767",
                     "p.toml:4:17: 'T5.00': the area T has no bits; write T5",
                     "p.toml:5:5: 'type' is missing; add it, such as type = \"DM\"",
                     "p.toml:6:32: 'BOOL' is the type of a bit; name one, such as D100.05",
                     "p.toml:7:35: a bit has no data type; remove 'data'",
                     "p.toml:8:5: 'type' is missing; add it, such as type = \"DM\""}));
}

TEST_F(ProjectTest, AnAddressOfARowMayHaveItsArea)
{
    EXPECT_EQ(readCsv("name,type,address,data\nA,,D100,REAL\nB,DM,5,\nC,,100,\nD,DM,D5,\n"),
              (Lines{"tags.csv:4:1: 'type' is missing; add it, such as type = \"DM\"",
                     "tags.csv:5:6: 'D5' names its area itself; remove 'type'"}));
    EXPECT_EQ(tagLine(*book->find("A")), "A = { type = \"DM\", address = 100, data = \"f32\" }");
}
