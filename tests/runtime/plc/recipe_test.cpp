#include "plc_fixture.h"

#include <algorithm>

// Recipes: words that are written and read as one transfer.

using fins::RecipeValues;

class TheRecipe : public PlcFixture {
protected:
    // DM20 to DM22 and DM40, in three requests.
    Config withRecipe() const
    {
        Config with = config();
        with.wordsPerFrame = 2;
        with.recipes = {{"mix", {{"DM:40", {"7"}}, {"DM:20", {"1"}}, {"DM:21", {"2"}}, {"DM:22", {"3"}}}}};
        return with;
    }

    Told written(Plc &plc)
    {
        Told told;
        const Operation write = plc.writeRecipe("mix", told.call(), {}, [this](std::size_t done, std::size_t all) {
            progress.emplace_back(done, all);
        });
        EXPECT_TRUE(until(plc, [&] { return told.times > 0; }));
        EXPECT_EQ(told.outcomes.size(), 4u);
        told.outcomes.resize(4);
        return told;
    }

    RecipeValues read(Plc &plc)
    {
        RecipeValues values;
        int times = 0;
        const Operation operation = plc.readRecipe("mix", [&](const RecipeValues &all) {
            values = all;
            ++times;
        }, {}, [this](std::size_t done, std::size_t all) { progress.emplace_back(done, all); });
        EXPECT_TRUE(until(plc, [&] { return times > 0; }));
        return values;
    }

    // What is shown of DM40, DM20, DM21 and DM22: the texts of those that are good.
    static std::vector<std::string> goodTexts(const RecipeValues &read)
    {
        std::vector<std::string> texts;
        for (const Sample &sample : read.values)
            texts.push_back(sample.quality == Quality::GOOD ? sample.text : "-");
        return texts;
    }

    // So many words of all four, and more each time; the last are all.
    void expectProgress() const
    {
        ASSERT_FALSE(progress.empty());
        for (const auto &[done, all] : progress) {
            EXPECT_EQ(all, 4u);
            EXPECT_TRUE(done >= 1 && done <= 4) << done;
        }
        EXPECT_EQ(progress.back().first, 4u);
    }

    using Texts = std::vector<std::string>;
    std::vector<std::pair<std::size_t, std::size_t>> progress;
};

TEST_F(TheRecipe, IsWrittenAsAWholeAndReadBack)
{
    Plc plc = Plc::open(withRecipe());
    const Told told = written(plc);
    for (const Outcome &outcome : told.outcomes)
        EXPECT_EQ(outcome.fate, Fate::VERIFIED) << outcome.text;
    EXPECT_EQ(served.dm(40), 7);
    EXPECT_EQ(served.dm(20), 1);
    EXPECT_EQ(served.dm(21), 2);
    EXPECT_EQ(served.dm(22), 3);
    EXPECT_EQ(served.dm(23), 0);
    expectProgress();
}

TEST_F(TheRecipe, IsReadInItsOwnOrder)
{
    served.set(20, {5, 6, 8});
    served.set(40, {9});
    Plc plc = Plc::open(withRecipe());
    const RecipeValues values = read(plc);
    EXPECT_EQ(values.end, RecipeValues::End::DONE);
    EXPECT_EQ(goodTexts(values), (Texts{"9", "5", "6", "8"}));
    EXPECT_TRUE(served.writes().empty());
    expectProgress();
}

// Where nothing is watched the link is polled seldom; a recipe does not wait for that.
TEST_F(TheRecipe, IsReadWithoutPausesWhereNothingIsWatched)
{
    Config with = config();
    with.wordsPerFrame = 1;
    with.recipes = {{"mix", {{"DM:0:100"}}}};
    Plc plc = Plc::open(with);
    const RecipeValues values = read(plc);
    EXPECT_EQ(values.end, RecipeValues::End::DONE);
    EXPECT_EQ(values.values.size(), 100u);
}

TEST_F(TheRecipe, IsReadButForWhatThePlcRefuses)
{
    served.set(20, {5, 6, 8});
    served.set(40, {9});
    served.rule([](const Request &request) {
        const bool hasWord = request.isRead() && request.address <= 21 && request.address + request.count > 21;
        return Treatment{Treatment::ANSWER, hasWord ? 0x1103u : 0u};
    });
    Plc plc = Plc::open(withRecipe());
    const RecipeValues values = read(plc);
    EXPECT_EQ(values.end, RecipeValues::End::REFUSED);
    EXPECT_EQ(goodTexts(values), (Texts{"9", "5", "-", "8"}));
    ASSERT_EQ(values.values.size(), 4u);
    EXPECT_EQ(values.values[2].quality, Quality::REFUSED);
}

// What was read before the refusal is not read again.
TEST_F(TheRecipe, IsReadOnceWhereThePlcRefusesItsEnd)
{
    served.set(20, {5, 6, 8});
    served.rule([](const Request &request) {
        return Treatment{Treatment::ANSWER, request.isRead() && request.address == 40 ? 0x1103u : 0u};
    });
    Plc plc = Plc::open(withRecipe());
    EXPECT_EQ(goodTexts(read(plc)), (Texts{"-", "5", "6", "8"}));
    const std::vector<Request> all = served.requests();
    EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const Request &request) { return request.address == 22; }), 1);
}

TEST_F(TheRecipe, IsReadAnewAfterALostLink)
{
    served.set(20, {5, 6, 8});
    served.set(40, {9});
    std::atomic<bool> isCut{false};
    served.rule([&](const Request &request) {
        const bool cuts = request.isRead() && request.address == 40 && !isCut.exchange(true);
        return Treatment{cuts ? Treatment::HANG_UP : Treatment::ANSWER};
    });
    Plc plc = Plc::open(withRecipe());
    const RecipeValues values = read(plc);
    EXPECT_EQ(values.end, RecipeValues::End::DONE);
    EXPECT_EQ(goodTexts(values), (Texts{"9", "5", "6", "8"}));
    EXPECT_EQ(served.connections(), 2);
}

TEST_F(TheRecipe, IsNotWrittenAgainAfterALostLink)
{
    served.rule([](const Request &request) {
        return Treatment{request.isWrite() && request.address == 22 ? Treatment::HANG_UP : Treatment::ANSWER};
    });
    Plc plc = Plc::open(withRecipe());
    const Told told = written(plc);
    EXPECT_EQ(told.fate(0), Fate::NOT_SENT);
    EXPECT_EQ(told.text(0), "not sent: DM:40: the link was lost before");
    EXPECT_EQ(told.fate(1), Fate::VERIFIED);
    EXPECT_EQ(told.fate(2), Fate::VERIFIED);
    EXPECT_EQ(told.fate(3), Fate::UNCONFIRMED);
    EXPECT_EQ(served.writes().size(), 2u);
}

TEST_F(TheRecipe, StopsAtWhatThePlcRefuses)
{
    served.rule([](const Request &request) {
        return Treatment{Treatment::ANSWER, request.isWrite() && request.address == 22 ? 0x2101u : 0u};
    });
    Plc plc = Plc::open(withRecipe());
    const Told told = written(plc);
    EXPECT_EQ(told.fate(0), Fate::NOT_SENT);
    EXPECT_EQ(told.text(0), "not sent: DM:40: the PLC refused what was to be written before it");
    EXPECT_EQ(told.fate(1), Fate::VERIFIED);
    EXPECT_EQ(told.fate(2), Fate::VERIFIED);
    EXPECT_EQ(told.fate(3), Fate::REFUSED);
    EXPECT_EQ(told.outcomes[3].endCode, 0x2101);
    EXPECT_EQ(served.writes().size(), 2u);
}

TEST_F(TheRecipe, IsWrittenAgainAfterAChangeOfTheMode)
{
    served.enterRunMode();
    Config with = withRecipe();
    with.allowModeChange = true;
    Plc plc = Plc::open(with);
    const Told told = written(plc);
    for (const Outcome &outcome : told.outcomes)
        EXPECT_EQ(outcome.fate, Fate::VERIFIED) << outcome.text;
    EXPECT_EQ(served.modeChanges(), 1);
    EXPECT_EQ(served.writes().size(), 4u);
}
