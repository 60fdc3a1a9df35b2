#include "driver_fixture.h"

#include "poll/recipe.h"

#include <cstring>
#include <limits>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

enum { STATION = 1, OTHER_STATION = 2, TAG = 7, UNUSED_FIELD = 77 };

/// What a recipe variable says, and what a block takes from it.
struct Words {
    std::string regType;
    qint32      address;
    qint32      count;
    qint32      bufferOffset;
};

bool operator==(const Words &a, const Words &b)
{
    return a.regType == b.regType && a.address == b.address && a.count == b.count && a.bufferOffset == b.bufferOffset;
}

std::ostream &operator<<(std::ostream &out, const Words &words)
{
    return out << words.regType << ' ' << words.address << " x " << words.count << " at " << words.bufferOffset;
}

typedef std::vector<Words>  WordsList;
typedef std::vector<qint32> Starts;

_RCP_VAR_PRO variable(const Words &words, qint32 stationNo = STATION, qint32 requestTag = TAG)
{
    _RCP_VAR_PRO var;
    var.stationNo = stationNo;
    var.requestTag = requestTag;
    var.regType = QString::fromStdString(words.regType);
    var.address = words.address;
    var.count = words.count;
    var.bufferOffset = words.bufferOffset;
    var.rcpField7 = UNUSED_FIELD;
    return var;
}

WordsList wordsOf(const QVector<_RCP_VAR_PRO> &vars)
{
    WordsList list;
    for (int i = 0; i < vars.size(); ++i)
        list.push_back({vars.at(i).regType.toStdString(), vars.at(i).address, vars.at(i).count,
                        vars.at(i).bufferOffset});
    return list;
}

class Recipe : public DriverTest {
protected:
    Recipe()
    {
        driver.stationNo = STATION;
        driver.maxWordsPerFrame = 64;
    }

    /// Hands over variables of the driver's station.
    static qint32 plan(const WordsList &list)
    {
        QVector<_RCP_VAR_PRO> vars;
        for (const Words &words : list)
            vars.append(variable(words));
        return intf_setRcpAddress(vars);
    }

    static WordsList sorted() { return wordsOf(driver.recipeVars); }
    static WordsList blocks() { return wordsOf(driver.recipeBlocks); }
    static Starts starts() { return Starts(driver.recipeBlockStart.begin(), driver.recipeBlockStart.end()); }
};

// ---- The plan ------------------------------------------------------------------------------------------------------

TEST_F(Recipe, TouchingVariablesShareABlock)
{
    EXPECT_EQ(plan({{"DM", 100, 2, 0}, {"DM", 102, 3, 2}, {"DM", 110, 1, 5}}), 3);

    EXPECT_EQ(blocks(), (WordsList{{"DM", 100, 5, 0}, {"DM", 110, 1, 5}}));
    EXPECT_EQ(starts(), (Starts{0, 2}));
}

TEST_F(Recipe, VariablesAreSortedFirst)
{
    EXPECT_EQ(plan({{"DM", 110, 1, 5}, {"DM", 100, 2, 0}, {"DM", 102, 3, 2}}), 3);

    EXPECT_EQ(sorted(), (WordsList{{"DM", 100, 2, 0}, {"DM", 102, 3, 2}, {"DM", 110, 1, 5}}));
    EXPECT_EQ(blocks(), (WordsList{{"DM", 100, 5, 0}, {"DM", 110, 1, 5}}));
    EXPECT_EQ(starts(), (Starts{0, 2}));
}

TEST_F(Recipe, VariableOfAnotherStationIsIgnored)
{
    QVector<_RCP_VAR_PRO> vars;
    vars.append(variable({"DM", 100, 1, 0}, OTHER_STATION));
    vars.append(variable({"DM", 101, 1, 1}));
    vars.append(variable({"DM", 102, 1, 2}, -STATION));
    vars.append(variable({"DM", 103, 1, 3}, 0));

    EXPECT_EQ(intf_setRcpAddress(vars), 1);
    EXPECT_EQ(sorted(), (WordsList{{"DM", 101, 1, 1}}));
    EXPECT_EQ(blocks(), (WordsList{{"DM", 101, 1, 1}}));
    EXPECT_EQ(starts(), Starts{0});
}

TEST_F(Recipe, TypesNeverShareABlock)
{
    EXPECT_EQ(plan({{"HR", 0, 1, 0}, {"DM", 1, 1, 1}}), 2);
    EXPECT_EQ(blocks(), (WordsList{{"HR", 0, 1, 0}, {"DM", 1, 1, 1}}));
    EXPECT_EQ(starts(), (Starts{0, 1}));
}

TEST_F(Recipe, NoVariables)
{
    EXPECT_EQ(plan({}), 0);
    EXPECT_EQ(sorted(), WordsList());
    EXPECT_EQ(blocks(), WordsList());
    EXPECT_EQ(starts(), Starts());
}

TEST_F(Recipe, NoVariableOfThisStationLeavesNoPlan)
{
    plan({{"DM", 100, 1, 0}, {"DM", 200, 1, 1}});
    QVector<_RCP_VAR_PRO> vars;
    vars.append(variable({"DM", 100, 1, 0}, OTHER_STATION));

    EXPECT_EQ(intf_setRcpAddress(vars), 0);
    EXPECT_EQ(sorted(), WordsList());
    EXPECT_EQ(blocks(), WordsList());
    EXPECT_EQ(starts(), Starts());
}

TEST_F(Recipe, NewPlanReplacesTheOld)
{
    plan({{"DM", 100, 1, 0}, {"DM", 200, 1, 1}});

    EXPECT_EQ(plan({{"HR", 5, 2, 9}}), 1);
    EXPECT_EQ(sorted(), (WordsList{{"HR", 5, 2, 9}}));
    EXPECT_EQ(blocks(), (WordsList{{"HR", 5, 2, 9}}));
    EXPECT_EQ(starts(), Starts{0});
}

TEST_F(Recipe, GapOfOneWordStartsABlock)
{
    plan({{"DM", 100, 2, 0}, {"DM", 103, 1, 2}});
    EXPECT_EQ(blocks(), (WordsList{{"DM", 100, 2, 0}, {"DM", 103, 1, 2}}));
}

TEST_F(Recipe, BlockFillsAFrame)
{
    plan({{"DM", 0, 60, 0}, {"DM", 60, 4, 60}});
    EXPECT_EQ(blocks(), (WordsList{{"DM", 0, 64, 0}}));
}

TEST_F(Recipe, BlockDoesNotGrowAboveAFrame)
{
    plan({{"DM", 0, 60, 0}, {"DM", 60, 5, 60}, {"DM", 65, 1, 65}});
    EXPECT_EQ(blocks(), (WordsList{{"DM", 0, 60, 0}, {"DM", 60, 6, 60}}));
    EXPECT_EQ(starts(), (Starts{0, 1}));
}

TEST_F(Recipe, VariableLongerThanAFrameIsNotCut)
{
    plan({{"DM", 0, 200, 0}});
    EXPECT_EQ(blocks(), (WordsList{{"DM", 0, 200, 0}}));
}

TEST_F(Recipe, BitsAreNotFolded)
{
    plan({{"DM_bit", 37, 3, 0}, {"DM_bit", 40, 2, 3}, {"DM", 2, 1, 5}});
    EXPECT_EQ(blocks(), (WordsList{{"DM_bit", 37, 5, 0}, {"DM", 2, 1, 5}}));
}

TEST_F(Recipe, AllTypesSortInTableOrder)
{
    EXPECT_EQ(plan({{"DM", 0, 1, 0}, {"C", 0, 1, 1}, {"T", 0, 1, 2}, {"AR", 0, 1, 3}, {"HR", 0, 1, 4}, {"WR", 0, 1, 5},
                    {"CIO", 0, 1, 6}, {"DM_bit", 0, 1, 7}, {"AR_bit", 0, 1, 8}, {"HR_bit", 0, 1, 9},
                    {"WR_bit", 0, 1, 10}, {"CIO_bit", 0, 1, 11}}), 12);
    EXPECT_EQ(sorted(), (WordsList{{"CIO_bit", 0, 1, 11}, {"WR_bit", 0, 1, 10}, {"HR_bit", 0, 1, 9},
                                   {"AR_bit", 0, 1, 8}, {"DM_bit", 0, 1, 7}, {"CIO", 0, 1, 6}, {"WR", 0, 1, 5},
                                   {"HR", 0, 1, 4}, {"AR", 0, 1, 3}, {"T", 0, 1, 2}, {"C", 0, 1, 1}, {"DM", 0, 1, 0}}));
}

TEST_F(Recipe, SortIsStable)
{
    plan({{"DM", 100, 1, 8}, {"DM", 50, 1, 7}, {"DM", 100, 1, 6}, {"DM", 100, 1, 9}});
    EXPECT_EQ(sorted(), (WordsList{{"DM", 50, 1, 7}, {"DM", 100, 1, 8}, {"DM", 100, 1, 6}, {"DM", 100, 1, 9}}));
}

TEST_F(Recipe, TwoVariablesAreSorted)
{
    plan({{"DM", 101, 1, 0}, {"DM", 100, 1, 1}});
    EXPECT_EQ(sorted(), (WordsList{{"DM", 100, 1, 1}, {"DM", 101, 1, 0}}));
}

TEST_F(Recipe, WeightsCompareUnsignedSoNegativeOnesComeLast)
{
    plan({{"FM", -1, 1, 0}, {"EM", LOWEST, 1, 1}, {"DM", 0, 1, 2}});
    EXPECT_EQ(sorted(), (WordsList{{"DM", 0, 1, 2}, {"EM", LOWEST, 1, 1}, {"FM", -1, 1, 0}}));
}

TEST_F(Recipe, SortDeliberatelyWeighsTypesBy65535)
{
    plan({{"CIO", 65536, 1, 0}, {"WR", 0, 1, 1}});
    EXPECT_EQ(sorted(), (WordsList{{"WR", 0, 1, 1}, {"CIO", 65536, 1, 0}}));
}

TEST_F(Recipe, BlockTakesTagAndOffsetOfItsFirstVariable)
{
    QVector<_RCP_VAR_PRO> vars;
    vars.append(variable({"DM", 102, 3, 30}, STATION, 4));
    vars.append(variable({"DM", 100, 2, 40}, STATION, 3));
    vars.append(variable({"DM", 200, 1, 50}, STATION, 5));

    EXPECT_EQ(intf_setRcpAddress(vars), 3);
    EXPECT_EQ(blocks(), (WordsList{{"DM", 100, 5, 40}, {"DM", 200, 1, 50}}));
    EXPECT_EQ(driver.recipeBlocks.at(0).requestTag, 3);
    EXPECT_EQ(driver.recipeBlocks.at(1).requestTag, 5);
}

TEST_F(Recipe, BlockHasNoStationAndNoUnusedField)
{
    plan({{"DM", 100, 1, 0}, {"DM", 200, 1, 1}});
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(driver.recipeBlocks.at(i).stationNo, 0);
        EXPECT_EQ(driver.recipeBlocks.at(i).rcpField7, 0);
    }
}

TEST_F(Recipe, KeptVariableHasAllItsFields)
{
    plan({{"HR", 0, 1, 0}, {"DM", 100, 1, 0}});
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(driver.recipeVars.at(i).stationNo, int{STATION});
        EXPECT_EQ(driver.recipeVars.at(i).requestTag, int{TAG});
        EXPECT_EQ(driver.recipeVars.at(i).rcpField7, int{UNUSED_FIELD});
    }
}

TEST_F(Recipe, RuntimesVariablesStay)
{
    QVector<_RCP_VAR_PRO> vars;
    vars.append(variable({"DM", 110, 1, 5}));
    vars.append(variable({"DM", 100, 2, 0}, OTHER_STATION));
    vars.append(variable({"DM", 102, 3, 2}));

    intf_setRcpAddress(vars);
    EXPECT_EQ(wordsOf(vars), (WordsList{{"DM", 110, 1, 5}, {"DM", 100, 2, 0}, {"DM", 102, 3, 2}}));
    EXPECT_EQ(vars.at(1).stationNo, int{OTHER_STATION});
}

TEST_F(Recipe, OtherStateStays)
{
    driver.recipeIndex = 3;
    driver.jobVar.requestTag = 99;
    plan({{"DM", 100, 1, 0}});
    EXPECT_EQ(driver.recipeIndex, 3);
    EXPECT_EQ(driver.jobVar.requestTag, 99);
    EXPECT_TRUE(driver.readList.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_TRUE(driver.frameList.isEmpty());
}

TEST_F(Recipe, LongTableInReverse)
{
    WordsList list;
    for (qint32 word = 199; word >= 0; --word)
        list.push_back({"DM", word, 1, word});

    EXPECT_EQ(plan(list), 200);
    EXPECT_EQ(blocks(), (WordsList{{"DM", 0, 64, 0}, {"DM", 64, 64, 64}, {"DM", 128, 64, 128}, {"DM", 192, 8, 192}}));
    EXPECT_EQ(starts(), (Starts{0, 64, 128, 192}));
}

// ---- A block as a request ------------------------------------------------------------------------------------------

/// A request that was used before, with bytes behind it that nothing may write.
struct GuardedRequest {
    VARIABLE request;
    quint8   behind[256];
};

class RecipeRequest : public Recipe {
protected:
    RecipeRequest()
    {
        guarded.request.requestId = 123;
        guarded.request.requestTag = -1;
        guarded.request.regType = "used";
        guarded.request.address = -1;
        guarded.request.count = -1;
        std::fill_n(guarded.request.value, int{VALUE_BUFFER_SIZE}, quint8{0xEE});
        std::fill_n(guarded.behind, sizeof guarded.behind, quint8{0xEE});
    }

    ~RecipeRequest() override
    {
        const auto written = [](quint8 byte) { return byte != 0xEE; };
        EXPECT_TRUE(std::none_of(std::begin(guarded.behind), std::end(guarded.behind), written));
    }

    /// Puts `bytes` into the recipe buffer from word `offset` on.
    void fillBuffer(qint32 offset, const std::vector<quint8> &bytes)
    {
        std::memcpy(&recipeWords[static_cast<size_t>(offset)], bytes.data(), bytes.size());
    }

    /// Puts 1 into every byte of the recipe buffer.
    void fillWholeBuffer() { std::fill(recipeWords.begin(), recipeWords.end(), quint16{0x0101}); }

    void fill(qint32 count, qint32 offset, qint32 withData)
    {
        rcpAddrToVar(variable({"DM", 100, count, offset}), guarded.request, withData);
    }

    /// The value holds `bytes`, then zeros.
    void expectValue(std::vector<quint8> bytes) const
    {
        bytes.resize(VALUE_BUFFER_SIZE, 0);
        EXPECT_EQ(std::vector<quint8>(guarded.request.value, guarded.request.value + VALUE_BUFFER_SIZE), bytes);
    }

    GuardedRequest guarded;
};

TEST_F(RecipeRequest, TakesItsKeysFromTheBlock)
{
    rcpAddrToVar(variable({"HR", 20, 3, 4}, STATION, 9), guarded.request, 0);

    EXPECT_EQ(guarded.request.requestTag, 9);
    EXPECT_EQ(guarded.request.regType.toStdString(), "HR");
    EXPECT_EQ(guarded.request.address, 20);
    EXPECT_EQ(guarded.request.count, 3);
}

TEST_F(RecipeRequest, KeepsItsId)
{
    fill(3, 4, 1);
    EXPECT_EQ(guarded.request.requestId, 123);
}

TEST_F(RecipeRequest, WithoutDataIsZero)
{
    fillWholeBuffer();
    fill(3, 4, 0);
    expectValue({});
}

TEST_F(RecipeRequest, WithDataCopiesTheWordsAsTheyLie)
{
    fillBuffer(3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    fill(3, 4, 1);
    expectValue({3, 4, 5, 6, 7, 8});
}

TEST_F(RecipeRequest, AnyNonzeroArgumentMeansWithData)
{
    fillBuffer(0, {1, 2, 3, 4});
    for (qint32 withData : {1, 2, -1}) {
        SCOPED_TRACE(withData);
        fill(1, 1, withData);
        expectValue({3, 4});
    }
}

TEST_F(RecipeRequest, LongestValueButOneWord)
{
    fillWholeBuffer();
    fill(511, 0, 1);
    expectValue(std::vector<quint8>(1022, 1));
}

TEST_F(RecipeRequest, LongestValue)
{
    fillWholeBuffer();
    fill(512, 0, 1);
    expectValue(std::vector<quint8>(1024, 1));
}

TEST_F(RecipeRequest, CopyStopsAtTheEndOfTheValue)
{
    fillWholeBuffer();
    fill(513, 0, 1);
    expectValue(std::vector<quint8>(1024, 1));
    EXPECT_EQ(guarded.request.count, 513);
}

TEST_F(RecipeRequest, CountBelow1CopiesNothing)
{
    fillWholeBuffer();
    for (qint32 count : {0, -1, -512, LOWEST, LOWEST + 1}) {
        SCOPED_TRACE(count);
        fill(count, 0, 1);
        expectValue({});
        EXPECT_EQ(guarded.request.count, count);
    }
}

TEST_F(RecipeRequest, HighestCountStaysWithinTheValue)
{
    fillWholeBuffer();
    for (qint32 count : {0x40000000, HIGHEST}) {
        SCOPED_TRACE(count);
        fill(count, 0, 1);
        EXPECT_EQ(guarded.request.count, count);
    }
}

TEST_F(RecipeRequest, WithDataButWithoutABufferIsZero)
{
    driver.recipeBuffer = nullptr;
    fill(3, 4, 1);
    expectValue({});
    EXPECT_EQ(guarded.request.count, 3);
}

TEST_F(RecipeRequest, WithoutDataNeedsNoBuffer)
{
    driver.recipeBuffer = nullptr;
    fill(3, 4, 0);
    expectValue({});
}

} // namespace
