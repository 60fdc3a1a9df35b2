#include "plc_fixture.h"
#include "support/temporary_folder.h"

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
