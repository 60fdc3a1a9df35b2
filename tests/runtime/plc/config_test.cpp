#include "plc_fixture.h"
#include "support/temporary_folder.h"

#include <sstream>

// A configuration that cannot work is refused with all that is wrong with it.

class Configuring : public PlcFixture {
protected:
    static std::vector<fins::Problem> problemsOf(const Config &config)
    {
        try {
            static_cast<void>(Plc::open(config));
        } catch (const fins::ConfigError &error) {
            return error.problems();
        }
        return {};
    }

    TemporaryFolder folder;
};

TEST_F(Configuring, TellsAllThatIsWrongWithTheStruct)
{
    Config with = config();
    with.host = "";
    with.timeout = 5ms;
    with.wordsPerFrame = 115;
    with.retries = 0;
    with.queueLimit = 0;
    fins::TagConfig tag;
    tag.name = "1level";
    tag.item = "DM:0";
    fins::TagConfig same;
    same.name = "level";
    same.item = "DM:1";
    with.tags = {tag, same, same};
    with.recipes = {{"mix", {}}};
    const std::vector<fins::Problem> problems = problemsOf(with);
    EXPECT_EQ(problems.size(), 8u);
    for (const fins::Problem &problem : problems) {
        EXPECT_EQ(problem.file, "");
        EXPECT_EQ(problem.line, 0);
        EXPECT_NE(problem.text, "");
    }
    try {
        static_cast<void>(Plc::open(with));
        ADD_FAILURE();
    } catch (const fins::ConfigError &error) {
        EXPECT_EQ(error.what(), problems[0].text + " (and 7 more)");
    }
}

TEST_F(Configuring, TellsWhatIsWrongWithATag)
{
    Config with = config();
    const auto tag = [&](const std::string &name, const std::string &item) -> fins::TagConfig & {
        with.tags.emplace_back();
        with.tags.back().name = name;
        with.tags.back().item = item;
        return with.tags.back();
    };
    tag("bare", "DM");
    tag("text", "DM:0/hex").scale = 2;
    tag("bits", "DM:0/bits").maximum = 5;
    fins::TagConfig &crossed = tag("crossed", "DM:0");
    crossed.minimum = 2;
    crossed.maximum = 1;
    tag("flat", "DM:0").scale = 0;
    tag("far", "DM:0").offset = 1e16;
    tag("long", "DM:0").decimals = 10;
    tag("short", "DM:0").decimals = -2;
    tag("still", "DM:0").deadband = -1;
    tag("hex", "DM:0/hex").deadband = 1;
    std::vector<std::string> texts;
    for (const fins::Problem &problem : problemsOf(with))
        texts.push_back(problem.text);
    const std::vector<std::string> expected = {
        "the tag 'bare': 'DM' is not an item; write TYPE:ADDRESS such as DM:100",
        "the tag 'text' is no number, so it has no scale, offset or decimals",
        "the tag 'bits' is no number, so it has no limits",
        "the minimum of the tag 'crossed' is above its maximum",
        "scale or offset of the tag 'flat' is out of range; use -1e+15 to 1e+15, not 0",
        "scale or offset of the tag 'far' is out of range; use -1e+15 to 1e+15, not 0",
        "decimals of the tag 'long' is out of range; use -1 to 9",
        "decimals of the tag 'short' is out of range; use -1 to 9",
        "the tag 'still' has a deadband that no value can keep; use a number from 0, for numbers only",
        "the tag 'hex' has a deadband that no value can keep; use a number from 0, for numbers only"};
    EXPECT_EQ(texts, expected);
}

TEST_F(Configuring, TakesATagAtTheEndsOfItsRanges)
{
    Config with = config();
    fins::TagConfig tag;
    tag.name     = "level";
    tag.item     = "DM:0";
    tag.offset   = -1e15;
    tag.decimals = 9;
    tag.minimum = tag.maximum = 1;
    with.tags = {tag};
    EXPECT_TRUE(problemsOf(with).empty());
}

TEST_F(Configuring, NeedsASecondAttemptToChangeTheMode)
{
    Config with = config();
    with.allowModeChange = true;
    with.retries = 1;
    const std::vector<fins::Problem> problems = problemsOf(with);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].text, "allowModeChange needs retries of 2 or more: with 1 the driver drops the link instead");
    with.retries = 2;
    EXPECT_TRUE(problemsOf(with).empty());
}

TEST_F(Configuring, TellsTheFileLineAndColumnOfAProject)
{
    Config with = config();
    with.project = folder.put("bad.toml", "[tags]\nlevel = 5\npump = 6\n");
    const std::vector<fins::Problem> problems = problemsOf(with);
    ASSERT_EQ(problems.size(), 2u);
    EXPECT_EQ(problems[0].file, with.project);
    EXPECT_EQ(problems[0].line, 2);
    EXPECT_EQ(problems[0].column, 9);
    EXPECT_EQ(problems[1].line, 3);
    EXPECT_EQ(problems[1].column, 8);
}

TEST_F(Configuring, NamesAProjectThatIsMissing)
{
    Config with = config();
    with.project = folder.path("none.toml");
    const std::vector<fins::Problem> problems = problemsOf(with);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].text.find("none.toml"), std::string::npos) << problems[0].text;
}

TEST_F(Configuring, NamesADriverThatIsMissing)
{
    Config with = config();
    with.library = "/nowhere/driver.so";
    const std::vector<fins::Problem> problems = problemsOf(with);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].text.find("/nowhere/driver.so"), std::string::npos) << problems[0].text;
}

TEST_F(Configuring, NamesADriverThatIsAFolder)
{
    Config with = config();
    with.library = folder.path();
    const std::vector<fins::Problem> problems = problemsOf(with);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].text, "cannot read the driver " + with.library + "; name the library's file");
}

TEST_F(Configuring, TakesTheTagsOfTheProjectAndItsOwn)
{
    served.set(0, {21, 22});
    Config with = config();
    with.project = folder.put("good.toml", "[tags]\nlevel = { type = \"DM\", address = 0 }\n");
    fins::TagConfig own;
    own.name = "own";
    own.item = "DM:1";
    with.tags = {own};
    Plc plc = Plc::open(with);
    Seen seen;
    const Watch watch = plc.watch({"level", "own"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("22"); }));
    EXPECT_EQ(plc.snapshot({"level"})[0].text, "21");
}

TEST_F(Configuring, ReadsTheConnectionOfAProject)
{
    const std::string file = folder.put("line.toml", "[connection]\nhost = \"10.1.2.3:9601\"\ntimeout_ms = 250\n");
    const Config read = Config::ofProject(file);
    EXPECT_EQ(read.host, "10.1.2.3:9601");
    EXPECT_EQ(read.timeout, 250ms);
    EXPECT_EQ(read.project, file);
    EXPECT_FALSE(read.allowModeChange);
    EXPECT_THROW(static_cast<void>(Config::ofProject(folder.put("bad.toml", "[connection]\nhost = 5\n"))), fins::ConfigError);
}

TEST_F(Configuring, ReadsThePlcsOfAProject)
{
    served.set(5, {31});
    const std::string file = folder.put("plant.toml",
        "[driver]\ninterval_ms = 7\n"
        "[plc.press]\nhost = \"10.1.2.3:9601\"\n[plc.press.tags]\nlevel = { type = \"DM\", address = 5 }\n"
        "[plc.oven]\nhost = \"10.1.2.4\"\ninterval_ms = 9\n[plc.oven.tags]\nheat = { type = \"DM\", address = 6 }\n"
        "[recipes.bread]\nvariables = [\"oven.heat\"]\n");
    std::vector<Config> plcs = Config::plcsOf(file);
    ASSERT_EQ(plcs.size(), 2U);
    EXPECT_EQ(plcs[0].name, "press");
    EXPECT_EQ(plcs[0].host, "10.1.2.3:9601");
    EXPECT_EQ(plcs[0].interval, 7ms);
    EXPECT_TRUE(plcs[0].recipes.empty());
    EXPECT_EQ(plcs[1].name, "oven");
    EXPECT_EQ(plcs[1].interval, 9ms);
    EXPECT_EQ(plcs[1].tags.at(0).name, "oven.heat");
    EXPECT_EQ(plcs[1].recipes.at(0).variables.at(0).item, "oven.heat");
    EXPECT_THROW(static_cast<void>(Config::ofProject(file)), fins::ConfigError); // which one?

    plcs[0].host = config().host;
    Plc plc = Plc::open(plcs[0]);
    Seen seen;
    const Watch watch = plc.watch({"press.level", "press.DM:5"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("31"); }));
    EXPECT_EQ(plc.snapshot({"press.DM:5"})[0].name, "press.DM:5");
    EXPECT_THROW(static_cast<void>(plc.snapshot({"oven.heat"})), fins::NameError);
}

TEST_F(Configuring, NamesOfTagsBeginWithThatOfTheirPlc)
{
    Config with = config();
    with.name = "press";
    fins::TagConfig tag;
    tag.name  = "level";
    tag.item  = "DM:5";
    with.tags = {tag};
    try {
        static_cast<void>(Plc::open(with));
        FAIL();
    } catch (const fins::ConfigError &error) {
        EXPECT_STREQ(error.what(), "the tag 'level' does not begin with the name of its PLC; call it press.level");
    }
}

namespace {

// What the lists of tags and recipes say, a line for each tag, variable and value.
std::string linesOf(const std::vector<fins::TagConfig> &tags)
{
    std::ostringstream lines;
    for (const fins::TagConfig &tag : tags) {
        lines << tag.name << " = " << tag.item << " * " << tag.scale << " + " << tag.offset << " ." << tag.decimals << " '"
              << tag.unit << "'";
        if (tag.minimum)
            lines << " from " << *tag.minimum;
        if (tag.maximum)
            lines << " to " << *tag.maximum;
        lines << (tag.readOnly ? " r" : " rw") << " '" << tag.comment << "' on '" << tag.screen << "'" << (tag.group.empty() ? "" : " in " + tag.group) << '\n';
    }
    return lines.str();
}

std::string linesOf(const std::vector<fins::RecipeConfig> &recipes)
{
    std::string lines;
    for (const fins::RecipeConfig &recipe : recipes) {
        lines += recipe.name + "\n";
        for (const fins::RecipeConfig::Variable &variable : recipe.variables) {
            lines += " " + variable.item + "\n";
            for (const std::string &value : variable.values)
                lines += "  " + value + "\n";
        }
    }
    return lines;
}

const char EVERY_KIND[] = R"([defaults]
word_order = "high"
[tags]
Level = { type = "DM", address = 0, data = "s16", scale = 0.1, offset = -2, decimals = 0, unit = "%", min = -1.5, max = 100, comment = "tank 1", screen = "tank" }
Pump = { type = "CIO_bit", address = "0.10", access = "r", group = "Press" }
Doors = { type = "WR_bit", address = "3.15", count = 3 }
Word = { type = "HR", address = 5 }
Flow = { type = "DM", address = 10, count = 2, data = "f32" }
Sum = { type = "DM", address = 20, data = "u64-low" }
Product = { type = "DM", address = 30, count = 4, data = "string" }
Swapped = { type = "DM", address = 40, data = "string", char_order = "low" }
Code = { type = "DM", address = 50, data = "hex" }
[recipes.Lemonade.values]
Level = 10.3
Flow = [0.5, -3]
Product = 'A\"B'
"DM:60" = -1
"Sum/hex" = [1, 2, 3, 65535]
[recipes.Reading]
variables = ["DM:70:3", "Swapped"]
[screens.tank]
[alarms.LevelHigh]
)";

const char EVERY_TAG[] = "Level = DM:0/s16 * 0.1 + -2 .0 '%' from -1.5 to 100 rw 'tank 1' on 'tank'\n"
                         "Pump = CIO_bit:0.10 * 1 + 0 .-1 '' r '' on '' in Press\n"
                         "Doors = WR_bit:3.15:3 * 1 + 0 .-1 '' rw '' on ''\n"
                         "Word = HR:5 * 1 + 0 .-1 '' rw '' on ''\n"
                         "Flow = DM:10:2/f32-high * 1 + 0 .-1 '' rw '' on ''\n"
                         "Sum = DM:20/u64 * 1 + 0 .-1 '' rw '' on ''\n"
                         "Product = DM:30:4/string * 1 + 0 .-1 '' rw '' on ''\n"
                         "Swapped = DM:40/string-low * 1 + 0 .-1 '' rw '' on ''\n"
                         "Code = DM:50/hex * 1 + 0 .-1 '' rw '' on ''\n";

// A value is listed as it is written, whatever decimals are shown of it.
const char EVERY_RECIPE[] = "Lemonade\n"
                            " Level\n  10.3\n"
                            " Flow\n  0.5\n  -3\n"
                            " Product\n  A\\\"B\n"
                            " DM:60\n  65535\n"
                            " Sum/hex\n  0x0001\n  0x0002\n  0x0003\n  0xFFFF\n"
                            "Reading\n"
                            " DM:70:3\n"
                            " Swapped\n";

} // namespace

TEST_F(Configuring, ListsTheTagsAndRecipesOfAProjectAsOneWouldWriteThem)
{
    Config with = config();
    with.project = folder.put("every.toml", EVERY_KIND);
    const Plc plc = Plc::open(with);
    EXPECT_EQ(linesOf(plc.tags()), EVERY_TAG);
    EXPECT_EQ(linesOf(plc.recipes()), EVERY_RECIPE);
}

TEST_F(Configuring, TakesTheListsForTheProjectItself)
{
    Config with = config();
    with.project = folder.put("every.toml", EVERY_KIND);
    const Plc plc = Plc::open(with);
    Config alone = config();
    alone.tags    = plc.tags();
    alone.recipes = plc.recipes();
    const Plc same = Plc::open(alone);
    EXPECT_EQ(linesOf(same.tags()), EVERY_TAG);
    EXPECT_EQ(linesOf(same.recipes()), EVERY_RECIPE);
}

TEST_F(Configuring, ListsItsOwnTagsAndRecipesBehindTheProjects)
{
    Config with = config();
    with.project = folder.put("one.toml", "[tags]\nlevel = { type = \"DM\", address = 0 }\n"
                                          "[recipes.first]\nvariables = [\"level\"]\n");
    fins::TagConfig own;
    own.name    = "own";
    own.item    = "DM:1/u32-low";
    own.comment = "mine";
    own.screen  = "oven";
    own.group   = "heat";
    with.tags    = {own};
    with.recipes = {{"second", {{"own", {"70000"}}}}};
    const Plc plc = Plc::open(with);
    EXPECT_EQ(linesOf(plc.tags()), "level = DM:0 * 1 + 0 .-1 '' rw '' on ''\n"
                                   "own = DM:1/u32 * 1 + 0 .-1 '' rw 'mine' on 'oven' in heat\n");
    EXPECT_EQ(linesOf(plc.recipes()), "first\n level\nsecond\n own\n  70000\n");
}

TEST_F(Configuring, NamesTheRecipesThatThereAre)
{
    Config with = config();
    with.recipes = {{"mix", {{"DM:0", {"1"}}}}, {"empty", {{"DM:9"}}}};
    Plc plc = Plc::open(with);
    try {
        static_cast<void>(plc.readRecipe("mixx", [](const fins::RecipeValues &) {}));
        ADD_FAILURE();
    } catch (const fins::NameError &error) {
        EXPECT_STREQ(error.what(), "there is no recipe 'mixx'; there are mix, empty");
    }
    EXPECT_THROW(static_cast<void>(plc.writeRecipe("empty", [](const Outcomes &) {})), fins::NameError);
}
