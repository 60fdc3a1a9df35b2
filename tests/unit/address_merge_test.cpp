#include "driver_fixture.h"

#include "poll/address_merge.h"

#include <limits>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

/// What decides a merge, of an item and of a block.
struct Block {
    std::string regType;
    qint32      address;
    qint32      count;
};

bool operator==(const Block &a, const Block &b)
{
    return a.regType == b.regType && a.address == b.address && a.count == b.count;
}

std::ostream &operator<<(std::ostream &out, const Block &block)
{
    return out << block.regType << ' ' << block.address << " x " << block.count;
}

typedef std::vector<Block>  Blocks;
typedef std::vector<qint32> Starts;

KEY_ADDRESS itemOf(const Block &block)
{
    KEY_ADDRESS item;
    item.regType = QString::fromStdString(block.regType);
    item.address = block.address;
    item.count = block.count;
    std::fill_n(item.data, int{VALUE_BUFFER_SIZE}, quint8{0});
    return item;
}

/// An item whose other fields all follow from `mark`.
KEY_ADDRESS markedItem(const Block &block, int mark)
{
    KEY_ADDRESS item = itemOf(block);
    item.name = QString("name %1").arg(mark);
    item.keyField2 = 1000 + mark;
    item.bufferOffset = 2000 + mark;
    item.requestTag = 3000 + mark;
    item.keyField6 = QString("field 6 %1").arg(mark);
    item.dataKind = 4000 + mark;
    for (int i = 0; i < VALUE_BUFFER_SIZE; ++i)
        item.data[i] = static_cast<quint8>(i * 7 + mark);
    return item;
}

/// All but type, address and count are those of markedItem(..., mark).
void expectMark(const KEY_ADDRESS &block, int mark)
{
    SCOPED_TRACE(mark);
    const KEY_ADDRESS opener = markedItem(Block(), mark);
    EXPECT_EQ(block.name.toStdString(), opener.name.toStdString());
    EXPECT_EQ(block.keyField2, 1000 + mark);
    EXPECT_EQ(block.bufferOffset, 2000 + mark);
    EXPECT_EQ(block.requestTag, 3000 + mark);
    EXPECT_EQ(block.keyField6.toStdString(), opener.keyField6.toStdString());
    EXPECT_EQ(block.dataKind, 4000 + mark);
    EXPECT_TRUE(std::equal(block.data, block.data + VALUE_BUFFER_SIZE, opener.data));
}

class AddressMerge : public DriverTest {
protected:
    AddressMerge() { driver.maxWordsPerFrame = 64; }

    static Blocks merge(const Blocks &items, int mode)
    {
        QList<KEY_ADDRESS> list;
        for (const Block &item : items)
            list.append(itemOf(item));
        addrMerge(list, mode);

        Blocks blocks;
        for (int i = 0; i < list.size(); ++i)
            blocks.push_back({list.at(i).regType.toStdString(), list.at(i).address, list.at(i).count});
        return blocks;
    }

    static Starts starts() { return Starts(driver.recipeBlockStart.begin(), driver.recipeBlockStart.end()); }

    static void expectPoll(const Blocks &items, const Blocks &blocks) { EXPECT_EQ(merge(items, MERGE_POLL), blocks); }

    /// Also expects the positions of the items that opened the blocks.
    static void expectRecipe(const Blocks &items, const Blocks &blocks, const Starts &blockStarts)
    {
        EXPECT_EQ(merge(items, MERGE_RECIPE), blocks);
        EXPECT_EQ(starts(), blockStarts);
    }
};

TEST_F(AddressMerge, ModesHaveTheirNumbers)
{
    EXPECT_EQ(int{MERGE_POLL}, 1);
    EXPECT_EQ(int{MERGE_RECIPE}, 2);
}

// ---- Few items -----------------------------------------------------------------------------------------------------

TEST_F(AddressMerge, EmptyListStaysEmpty)
{
    expectPoll({}, {});
    EXPECT_EQ(starts(), Starts());
}

TEST_F(AddressMerge, EmptyRecipeTouchesNothing)
{
    driver.recipeBlockStart.append(9);
    expectRecipe({}, {}, {9});
}

TEST_F(AddressMerge, OneItemIsOneBlock)
{
    expectPoll({{"DM", 100, 10}}, {{"DM", 100, 10}});
}

TEST_F(AddressMerge, OneRecipeItemIsOneBlock)
{
    expectRecipe({{"DM", 100, 10}}, {{"DM", 100, 10}}, {0});
}

TEST_F(AddressMerge, ItemLongerThanAFrameIsNotCut)
{
    expectPoll({{"DM", 0, 200}}, {{"DM", 0, 200}});
    expectRecipe({{"DM", 0, 200}}, {{"DM", 0, 200}}, {0});
}

TEST_F(AddressMerge, LongItemTakesNoTouchingOne)
{
    expectPoll({{"DM", 0, 200}, {"DM", 200, 1}}, {{"DM", 0, 200}, {"DM", 200, 1}});
}

// ---- Folding of bits -----------------------------------------------------------------------------------------------

struct Fold {
    const char *name;
    Block       bits;
    Block       words;
};

std::ostream &operator<<(std::ostream &out, const Fold &fold)
{
    return out << fold.bits;
}

class BitFolding : public AddressMerge, public ::testing::WithParamInterface<Fold> {};

TEST_P(BitFolding, CoversWholeWords)
{
    expectPoll({GetParam().bits}, {GetParam().words});
}

TEST_P(BitFolding, IsNotDoneForRecipes)
{
    expectRecipe({GetParam().bits}, {GetParam().bits}, {0});
}

const Fold FOLDS[] = {
    {"CIO_bits_37_to_56",            {"CIO_bit", 37, 20},      {"CIO", 2, 2}},
    {"CIO_whole_word",               {"CIO_bit", 32, 16},      {"CIO", 2, 1}},
    {"CIO_word_and_a_bit",           {"CIO_bit", 32, 17},      {"CIO", 2, 2}},
    {"CIO_word_but_a_bit",           {"CIO_bit", 32, 15},      {"CIO", 2, 1}},
    {"CIO_up_to_the_end_of_a_word",  {"CIO_bit", 33, 15},      {"CIO", 2, 1}},
    {"CIO_past_the_end_of_a_word",   {"CIO_bit", 33, 16},      {"CIO", 2, 2}},
    {"CIO_last_bit_of_a_word",       {"CIO_bit", 47, 1},       {"CIO", 2, 1}},
    {"CIO_over_the_end_of_a_word",   {"CIO_bit", 47, 2},       {"CIO", 2, 2}},
    {"WR_bit",                       {"WR_bit", 17, 1},        {"WR", 1, 1}},
    {"HR_bit",                       {"HR_bit", 160, 32},      {"HR", 10, 2}},
    {"AR_bit",                       {"AR_bit", 7168, 1},      {"AR", 448, 1}},
    {"DM_bit",                       {"DM_bit", 524287, 1},    {"DM", 32767, 1}},
    {"unknown_type",                 {"EM_bit", 16, 1},        {"EM", 1, 1}},
    {"only_the_suffix_is_cut",       {"E_M_bit", 16, 1},       {"E_M", 1, 1}},
    {"suffix_alone",                 {"_bit", 16, 1},          {"", 1, 1}},
    {"no_bits_at_a_word",            {"CIO_bit", 32, 0},       {"CIO", 2, 0}},
    {"no_bits_within_a_word",        {"CIO_bit", 33, 0},       {"CIO", 2, 1}},
    {"negative_count",               {"CIO_bit", 32, -1},      {"CIO", 2, 1}},
    {"minus_one_word",               {"CIO_bit", 32, -16},     {"CIO", 2, -1}},
    {"lowest_count",                 {"CIO_bit", 0, LOWEST},   {"CIO", 0, -134217728}},
    {"count_that_wraps",             {"CIO_bit", 47, HIGHEST}, {"CIO", 2, -134217726}},
    {"address_minus_1",              {"CIO_bit", -1, 1},       {"CIO", 0, 0}},
    {"address_minus_5",              {"CIO_bit", -5, 10},      {"CIO", 0, 1}},
    {"address_minus_17",             {"CIO_bit", -17, 2},      {"CIO", -1, 1}},
};

INSTANTIATE_TEST_SUITE_P(Items, BitFolding, ::testing::ValuesIn(FOLDS),
                         [](const ::testing::TestParamInfo<Fold> &row) { return row.param.name; });

TEST_F(AddressMerge, OnlyTheExactSuffixIsFolded)
{
    expectPoll({{"CIO_BIT", 37, 20}}, {{"CIO_BIT", 37, 20}});
    expectPoll({{"CIObit", 37, 20}}, {{"CIObit", 37, 20}});
    expectPoll({{"CIO_bits", 37, 20}}, {{"CIO_bits", 37, 20}});
    expectPoll({{"bit", 37, 20}}, {{"bit", 37, 20}});
}

TEST_F(AddressMerge, BitAndWordOfTheSameAreaMerge)
{
    expectPoll({{"CIO_bit", 33, 1}, {"CIO", 2, 1}}, {{"CIO", 2, 1}});
}

TEST_F(AddressMerge, EveryBitItemIsFolded)
{
    expectPoll({{"CIO_bit", 0, 1}, {"DM", 0, 1}, {"WR_bit", 0, 1}}, {{"CIO", 0, 1}, {"WR", 0, 1}, {"DM", 0, 1}});
}

TEST_F(AddressMerge, AnyModeButTheRecipeModeFoldsSortsAndMergesTwice)
{
    const Blocks items = {{"DM", 120, 5}, {"CIO_bit", 37, 20}, {"DM", 100, 10}};
    const Blocks blocks = {{"CIO", 2, 2}, {"DM", 100, 25}};
    for (int mode : {0, 1, 3, -1}) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(merge(items, mode), blocks);
        EXPECT_EQ(starts(), Starts());
    }
}

// ---- Sorting -------------------------------------------------------------------------------------------------------

TEST_F(AddressMerge, AreasComeInTableOrder)
{
    expectPoll({{"DM", 0, 1}, {"C", 0, 1}, {"T", 0, 1}, {"AR", 0, 1}, {"HR", 0, 1}, {"WR", 0, 1}, {"CIO", 0, 1}},
               {{"CIO", 0, 1}, {"WR", 0, 1}, {"HR", 0, 1}, {"AR", 0, 1}, {"T", 0, 1}, {"C", 0, 1}, {"DM", 0, 1}});
}

TEST_F(AddressMerge, HrComesAfterWrAndBeforeArWhateverTheAddresses)
{
    expectPoll({{"AR", 0, 1}, {"HR", 1535, 1}, {"WR", 511, 1}, {"HR", 0, 1}},
               {{"WR", 511, 1}, {"HR", 0, 1}, {"HR", 1535, 1}, {"AR", 0, 1}});
}

TEST_F(AddressMerge, FoldedBitsSortAsTheirWordArea)
{
    expectPoll({{"CIO", 500, 1}, {"CIO_bit", 0, 1}}, {{"CIO", 0, 1}, {"CIO", 500, 1}});
    expectPoll({{"AR_bit", 0, 1}, {"CIO", 500, 1}}, {{"CIO", 500, 1}, {"AR", 0, 1}});
}

TEST_F(AddressMerge, AddressesAscendWithinAnArea)
{
    expectPoll({{"DM", 500, 1}, {"DM", 400, 1}, {"DM", 300, 1}, {"DM", 200, 1}, {"DM", 100, 1}},
               {{"DM", 100, 1}, {"DM", 200, 1}, {"DM", 300, 1}, {"DM", 400, 1}, {"DM", 500, 1}});
}

TEST_F(AddressMerge, TwoItemsAreSorted)
{
    expectPoll({{"DM", 200, 1}, {"DM", 100, 1}}, {{"DM", 100, 1}, {"DM", 200, 1}});
}

TEST_F(AddressMerge, SortIsStable)
{
    expectPoll({{"DM", 100, 10}, {"DM", 100, 3}}, {{"DM", 100, 3}});
    expectPoll({{"DM", 100, 3}, {"DM", 100, 10}}, {{"DM", 100, 10}});
}

TEST_F(AddressMerge, SortDeliberatelyWeighsTypesBy65535)
{
    expectPoll({{"CIO", 65536, 1}, {"WR", 0, 1}}, {{"WR", 0, 1}, {"CIO", 65536, 1}});
    expectPoll({{"WR", 0, 1}, {"CIO", 65535, 1}}, {{"WR", 0, 1}, {"CIO", 65535, 1}});
}

TEST_F(AddressMerge, UnknownTypeSortsByItsBareAddress)
{
    expectPoll({{"DM", 0, 1}, {"EM", 786419, 1}}, {{"EM", 786419, 1}, {"DM", 0, 1}});
    expectPoll({{"EM", 786421, 1}, {"DM", 0, 1}}, {{"DM", 0, 1}, {"EM", 786421, 1}});
}

TEST_F(AddressMerge, WeightsCompareUnsignedSoNegativeOnesComeLast)
{
    expectPoll({{"EM", -1, 1}, {"DM", 0, 1}}, {{"DM", 0, 1}, {"EM", -1, 1}});
    expectPoll({{"CIO", -393211, 1}, {"DM", 0, 1}}, {{"DM", 0, 1}, {"CIO", -393211, 1}});
    expectPoll({{"FM", -1, 1}, {"EM", LOWEST, 1}}, {{"EM", LOWEST, 1}, {"FM", -1, 1}});
}

TEST_F(AddressMerge, RecipeKeepsItsOrder)
{
    expectRecipe({{"DM", 200, 1}, {"CIO", 5, 1}, {"DM", 100, 1}}, {{"DM", 200, 1}, {"CIO", 5, 1}, {"DM", 100, 1}},
                 {0, 1, 2});
}

// ---- First pass, as recipes show it --------------------------------------------------------------------------------

TEST_F(AddressMerge, TouchingItemsJoin)
{
    expectPoll({{"DM", 100, 10}, {"DM", 110, 5}}, {{"DM", 100, 15}});
    expectRecipe({{"DM", 100, 10}, {"DM", 110, 5}}, {{"DM", 100, 15}}, {0});
}

TEST_F(AddressMerge, OverlappingItemsJoin)
{
    expectRecipe({{"DM", 100, 10}, {"DM", 109, 5}}, {{"DM", 100, 14}}, {0});
}

TEST_F(AddressMerge, GapOfOneWordStartsABlock)
{
    expectRecipe({{"DM", 100, 10}, {"DM", 111, 5}}, {{"DM", 100, 10}, {"DM", 111, 5}}, {0, 1});
}

TEST_F(AddressMerge, RecipeKeepsTheGapThatThePollReadsOver)
{
    const Blocks items = {{"DM", 100, 10}, {"DM", 120, 5}};
    expectPoll(items, {{"DM", 100, 25}});
    expectRecipe(items, items, {0, 1});
}

TEST_F(AddressMerge, OtherTypeStartsABlock)
{
    expectRecipe({{"T", 10, 5}, {"C", 15, 5}}, {{"T", 10, 5}, {"C", 15, 5}}, {0, 1});
}

TEST_F(AddressMerge, TypesCompareExactly)
{
    expectRecipe({{"DM", 10, 5}, {"dm", 15, 5}}, {{"DM", 10, 5}, {"dm", 15, 5}}, {0, 1});
    expectPoll({{"EM", 10, 5}, {"FM", 15, 5}}, {{"EM", 10, 5}, {"FM", 15, 5}});
}

TEST_F(AddressMerge, ItemsOfAnUnknownTypeJoin)
{
    expectPoll({{"EM", 10, 5}, {"EM", 15, 5}}, {{"EM", 10, 10}});
}

TEST_F(AddressMerge, RecipeBitsJoinByTheBit)
{
    expectRecipe({{"CIO_bit", 37, 3}, {"CIO_bit", 40, 2}}, {{"CIO_bit", 37, 5}}, {0});
}

TEST_F(AddressMerge, SpanOfAWholeFrameJoins)
{
    expectPoll({{"DM", 0, 60}, {"DM", 60, 4}}, {{"DM", 0, 64}});
    expectRecipe({{"DM", 0, 60}, {"DM", 60, 4}}, {{"DM", 0, 64}}, {0});
}

TEST_F(AddressMerge, SpanAboveAFrameStartsABlock)
{
    expectPoll({{"DM", 0, 60}, {"DM", 60, 5}}, {{"DM", 0, 60}, {"DM", 60, 5}});
    expectRecipe({{"DM", 0, 60}, {"DM", 60, 5}}, {{"DM", 0, 60}, {"DM", 60, 5}}, {0, 1});
}

TEST_F(AddressMerge, SpanOf70WordsStaysTwoBlocks)
{
    expectPoll({{"DM", 0, 60}, {"DM", 60, 10}}, {{"DM", 0, 60}, {"DM", 60, 10}});
}

TEST_F(AddressMerge, BlockStartedBySpanTakesTheNextItem)
{
    expectRecipe({{"DM", 0, 60}, {"DM", 60, 10}, {"DM", 70, 5}}, {{"DM", 0, 60}, {"DM", 60, 15}}, {0, 1});
}

TEST_F(AddressMerge, BlockStartedByAGapTakesTheNextItem)
{
    expectRecipe({{"DM", 0, 2}, {"DM", 60, 10}, {"DM", 70, 5}}, {{"DM", 0, 2}, {"DM", 60, 15}}, {0, 1});
}

TEST_F(AddressMerge, BlockStartedByATypeTakesTheNextItem)
{
    expectRecipe({{"CIO", 0, 2}, {"DM", 2, 10}, {"DM", 12, 5}}, {{"CIO", 0, 2}, {"DM", 2, 15}}, {0, 1});
}

TEST_F(AddressMerge, ThreeTouchingItemsJoin)
{
    expectRecipe({{"DM", 0, 2}, {"DM", 2, 3}, {"DM", 5, 4}}, {{"DM", 0, 9}}, {0});
}

TEST_F(AddressMerge, ItemWithinABlockDeliberatelyCutsItShort)
{
    expectPoll({{"DM", 100, 20}, {"DM", 105, 5}}, {{"DM", 100, 10}});
    expectRecipe({{"DM", 100, 20}, {"DM", 105, 5}}, {{"DM", 100, 10}}, {0});
}

TEST_F(AddressMerge, ItemWithinALongItemCutsItShort)
{
    expectPoll({{"DM", 0, 200}, {"DM", 10, 5}}, {{"DM", 0, 15}});
}

TEST_F(AddressMerge, GapIsMeasuredFromTheShortenedEnd)
{
    expectRecipe({{"DM", 100, 20}, {"DM", 105, 5}, {"DM", 111, 2}}, {{"DM", 100, 10}, {"DM", 111, 2}}, {0, 2});
}

TEST_F(AddressMerge, ItemTouchesTheShortenedEnd)
{
    expectRecipe({{"DM", 100, 20}, {"DM", 105, 5}, {"DM", 110, 2}}, {{"DM", 100, 12}}, {0});
}

TEST_F(AddressMerge, RecipeItemBeforeItsBlockJoinsIt)
{
    expectRecipe({{"DM", 110, 5}, {"DM", 100, 12}}, {{"DM", 110, 2}}, {0});
}

TEST_F(AddressMerge, RecipeBlocksOpenedAt0And3And4)
{
    expectRecipe({{"DM", 0, 1}, {"DM", 1, 1}, {"DM", 2, 1}, {"DM", 10, 1}, {"HR", 0, 1}, {"HR", 1, 1}},
                 {{"DM", 0, 3}, {"DM", 10, 1}, {"HR", 0, 2}}, {0, 3, 4});
}

TEST_F(AddressMerge, RecipeBlockStartsOfEveryBranch)
{
    expectRecipe({{"DM", 0, 60}, {"DM", 60, 10}, {"DM", 80, 1}, {"HR", 81, 1}, {"HR", 90, 1}},
                 {{"DM", 0, 60}, {"DM", 60, 10}, {"DM", 80, 1}, {"HR", 81, 1}, {"HR", 90, 1}}, {0, 1, 2, 3, 4});
}

TEST_F(AddressMerge, RecipeBlockStartsAreAppended)
{
    driver.recipeBlockStart.append(9);
    expectRecipe({{"DM", 0, 1}, {"DM", 5, 1}}, {{"DM", 0, 1}, {"DM", 5, 1}}, {9, 0, 1});
}

TEST_F(AddressMerge, PollLeavesRecipeBlockStarts)
{
    driver.recipeBlockStart.append(9);
    expectPoll({{"DM", 0, 60}, {"DM", 60, 10}, {"HR", 0, 1}}, {{"HR", 0, 1}, {"DM", 0, 60}, {"DM", 60, 10}});
    EXPECT_EQ(starts(), Starts{9});
}

// ---- Second pass ---------------------------------------------------------------------------------------------------

TEST_F(AddressMerge, PollReadsOverAGapUpToAWholeFrame)
{
    expectPoll({{"DM", 0, 10}, {"DM", 54, 10}}, {{"DM", 0, 64}});
    expectPoll({{"DM", 0, 10}, {"DM", 55, 10}}, {{"DM", 0, 10}, {"DM", 55, 10}});
}

// Words that touch are brought together before any gap is read over.
TEST_F(AddressMerge, TouchingWordsMergeBeforeAGapDoes)
{
    driver.maxWordsPerFrame = 10;
    expectPoll({{"DM", 0, 4}, {"DM", 6, 2}, {"DM", 8, 6}}, {{"DM", 0, 4}, {"DM", 6, 8}});
}

TEST_F(AddressMerge, PollReadsOverSeveralGaps)
{
    expectPoll({{"DM", 0, 1}, {"DM", 10, 1}, {"DM", 20, 1}}, {{"DM", 0, 21}});
}

TEST_F(AddressMerge, PollDoesNotReadOverIntoAnotherArea)
{
    expectPoll({{"CIO", 0, 1}, {"DM", 5, 1}}, {{"CIO", 0, 1}, {"DM", 5, 1}});
}

TEST_F(AddressMerge, PollBlockStartedByATypeReadsOverTheNextGap)
{
    expectPoll({{"CIO", 0, 1}, {"DM", 0, 1}, {"DM", 5, 1}}, {{"CIO", 0, 1}, {"DM", 0, 6}});
}

TEST_F(AddressMerge, PollBlockStartedByAGapReadsOverTheNextGap)
{
    expectPoll({{"DM", 100, 10}, {"DM", 200, 5}, {"DM", 210, 2}}, {{"DM", 100, 10}, {"DM", 200, 12}});
}

TEST_F(AddressMerge, PollBlockStartedBySpanReadsOverTheNextGap)
{
    expectPoll({{"DM", 0, 40}, {"DM", 60, 10}, {"DM", 72, 2}}, {{"DM", 0, 40}, {"DM", 60, 14}});
}

TEST_F(AddressMerge, LastBlockStaysAloneAfterAGap)
{
    expectPoll({{"DM", 0, 1}, {"DM", 5, 1}, {"DM", 200, 3}}, {{"DM", 0, 6}, {"DM", 200, 3}});
}

TEST_F(AddressMerge, LastBlockStaysAloneAfterASpan)
{
    expectPoll({{"DM", 0, 1}, {"DM", 5, 35}, {"DM", 60, 10}}, {{"DM", 0, 40}, {"DM", 60, 10}});
}

TEST_F(AddressMerge, EveryBlockStaysAlone)
{
    expectPoll({{"CIO", 0, 1}, {"DM", 0, 40}, {"DM", 50, 20}, {"DM", 500, 3}},
               {{"CIO", 0, 1}, {"DM", 0, 40}, {"DM", 50, 20}, {"DM", 500, 3}});
}

TEST_F(AddressMerge, GapItselfIsLimitedToAFrame)
{
    expectPoll({{"DM", 100, 10}, {"DM", 174, -20}}, {{"DM", 100, 54}});
    expectPoll({{"DM", 100, 10}, {"DM", 175, -20}}, {{"DM", 100, 10}, {"DM", 175, -20}});
}

TEST_F(AddressMerge, SecondPassDeliberatelyCutsABlockShort)
{
    const Blocks items = {{"DM", 0, 60}, {"DM", 30, 40}, {"DM", 31, 2}};
    expectRecipe(items, {{"DM", 0, 60}, {"DM", 30, 3}}, {0, 1});
    expectPoll(items, {{"DM", 0, 33}});
}

TEST_F(AddressMerge, SecondPassMeasuresFromTheShortenedEnd)
{
    expectPoll({{"DM", 0, 60}, {"DM", 30, 40}, {"DM", 31, 2}, {"DM", 97, -40}}, {{"DM", 0, 57}});
    expectPoll({{"DM", 0, 60}, {"DM", 30, 40}, {"DM", 31, 2}, {"DM", 98, -40}}, {{"DM", 0, 33}, {"DM", 98, -40}});
}

// ---- Frame sizes without sense -------------------------------------------------------------------------------------

TEST_F(AddressMerge, NoWordsPerFrameKeepsEveryItemApart)
{
    driver.maxWordsPerFrame = 0;
    const Blocks items = {{"DM", 0, 1}, {"DM", 1, 1}, {"DM", 2, 5}, {"DM", 4, 1}};
    expectPoll(items, items);
    expectRecipe(items, items, {0, 1, 2, 3});
}

TEST_F(AddressMerge, NoWordsPerFrameJoinsItemsWithoutWords)
{
    driver.maxWordsPerFrame = 0;
    expectPoll({{"DM", 5, 0}, {"DM", 5, 0}}, {{"DM", 5, 0}});
}

TEST_F(AddressMerge, NegativeWordsPerFrameKeepsEveryItemApart)
{
    for (qint32 words : {-1, LOWEST}) {
        SCOPED_TRACE(words);
        driver.maxWordsPerFrame = words;
        expectPoll({{"DM", 0, 1}, {"DM", 1, 1}, {"DM", 9, 0}}, {{"DM", 0, 1}, {"DM", 1, 1}, {"DM", 9, 0}});
    }
}

// ---- Wrapping and long lists ---------------------------------------------------------------------------------------

TEST_F(AddressMerge, EndOfABlockWraps)
{
    expectRecipe({{"DM", HIGHEST, 10}, {"DM", HIGHEST, 5}}, {{"DM", HIGHEST, 5}}, {0});
}

TEST_F(AddressMerge, GapAndSpanWrap)
{
    expectRecipe({{"DM", LOWEST, 1}, {"DM", HIGHEST, 1}}, {{"DM", LOWEST, 0}}, {0});
    expectPoll({{"EM", HIGHEST, 1}, {"EM", LOWEST, 1}}, {{"EM", HIGHEST, 2}});
}

TEST_F(AddressMerge, LongTableInReverse)
{
    Blocks items;
    for (qint32 word = 199; word >= 0; --word)
        items.push_back({"DM", word, 1});
    expectPoll(items, {{"DM", 0, 64}, {"DM", 64, 64}, {"DM", 128, 64}, {"DM", 192, 8}});
}

// ---- What a block carries ------------------------------------------------------------------------------------------

TEST_F(AddressMerge, OneItemKeepsItsFields)
{
    for (int mode : {MERGE_POLL, MERGE_RECIPE}) {
        SCOPED_TRACE(mode);
        QList<KEY_ADDRESS> items;
        items.append(markedItem({"CIO_bit", 37, 20}, 1));

        addrMerge(items, mode);
        ASSERT_EQ(items.size(), 1);
        expectMark(items.at(0), 1);
    }
}

TEST_F(AddressMerge, BlockCarriesTheFieldsOfItsFirstItemAfterSorting)
{
    QList<KEY_ADDRESS> items;
    items.append(markedItem({"DM", 400, 1}, 7));
    items.append(markedItem({"DM", 300, 1}, 6));
    items.append(markedItem({"DM", 115, 2}, 3));
    items.append(markedItem({"DM", 110, 5}, 2));
    items.append(markedItem({"DM", 100, 10}, 1));
    items.append(markedItem({"DM", 200, 60}, 4));
    items.append(markedItem({"DM", 260, 10}, 5));

    addrMerge(items, MERGE_POLL);
    ASSERT_EQ(items.size(), 4);
    expectMark(items.at(0), 1);
    expectMark(items.at(1), 4);
    expectMark(items.at(2), 5);
    EXPECT_EQ(items.at(2).count, 41);
    EXPECT_EQ(items.at(3).address, 400);
    expectMark(items.at(3), 7);
}

TEST_F(AddressMerge, RecipeBlockCarriesTheFieldsOfItsFirstItem)
{
    QList<KEY_ADDRESS> items;
    items.append(markedItem({"DM", 100, 10}, 1));
    items.append(markedItem({"DM", 110, 5}, 2));
    items.append(markedItem({"DM", 200, 60}, 3));
    items.append(markedItem({"DM", 260, 10}, 4));
    items.append(markedItem({"HR", 0, 1}, 5));

    addrMerge(items, MERGE_RECIPE);
    ASSERT_EQ(items.size(), 4);
    expectMark(items.at(0), 1);
    expectMark(items.at(1), 3);
    expectMark(items.at(2), 4);
    expectMark(items.at(3), 5);
}

TEST_F(AddressMerge, TagsAreDeliberatelyNotCompared)
{
    for (int mode : {MERGE_POLL, MERGE_RECIPE}) {
        SCOPED_TRACE(mode);
        QList<KEY_ADDRESS> items;
        items.append(markedItem({"DM", 100, 2}, 1));
        items.append(markedItem({"DM", 102, 2}, 2));

        addrMerge(items, mode);
        ASSERT_EQ(items.size(), 1);
        EXPECT_EQ(items.at(0).requestTag, 3001);
        EXPECT_EQ(items.at(0).count, 4);
    }
}

TEST_F(AddressMerge, ItemsOfEqualWeightKeepTheirOrder)
{
    QList<KEY_ADDRESS> items;
    items.append(markedItem({"DM", 100, 2}, 1));
    items.append(markedItem({"DM_bit", 1600, 1}, 2));
    items.append(markedItem({"DM", 100, 2}, 3));

    addrMerge(items, MERGE_POLL);
    ASSERT_EQ(items.size(), 1);
    expectMark(items.at(0), 1);
}

} // namespace
