#include "driver_fixture.h"

#include <limits>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

enum { QUEUE_LIMIT = 513, BIT_KIND = -1, WORD_KIND = 0 };

/// One queued read.
struct Read {
    qint32      requestId;
    qint32      requestTag;
    std::string regType;
    qint32      address;
    qint32      count;
};

bool operator==(const Read &a, const Read &b)
{
    return a.requestId == b.requestId && a.requestTag == b.requestTag && a.regType == b.regType
        && a.address == b.address && a.count == b.count;
}

std::ostream &operator<<(std::ostream &out, const Read &read)
{
    return out << read.requestId << ": " << read.requestTag << ' ' << read.regType << ' ' << read.address << " x "
               << read.count;
}

typedef std::vector<Read> Reads;

Read readOf(const VARIABLE &request)
{
    return {request.requestId, request.requestTag, request.regType.toStdString(), request.address, request.count};
}

VARIABLE requestOf(const Read &read)
{
    VARIABLE request = VARIABLE();
    request.requestId = read.requestId;
    request.requestTag = read.requestTag;
    request.regType = QString::fromStdString(read.regType);
    request.address = read.address;
    request.count = read.count;
    return request;
}

class ConditionRead : public DriverTest {
protected:
    ConditionRead()
    {
        driver.wordsPerFrame = 64;
        driver.maxBitsPerFrame = 512;
    }

    /// Asks for a read with tag 7 and id 1, and expects the result that every call has.
    static void ask(const char *regType, qint32 address, qint32 count, qint32 dataKind = WORD_KIND,
                    qint32 requestId = 1, qint32 requestTag = 7)
    {
        KEY_ADDRESS item;
        item.requestTag = requestTag;
        item.regType = regType;
        item.address = address;
        item.dataKind = dataKind;
        item.count = count;
        std::fill_n(item.data, int{VALUE_BUFFER_SIZE}, quint8{0});
        EXPECT_EQ(intf_addConditionRead(item, requestId), 1);
    }

    static void queue(const Reads &reads)
    {
        for (const Read &read : reads)
            driver.conditionReadList.append(requestOf(read));
    }

    /// `size` different reads DM 1000, 1001, ... with id 5.
    static void fillQueue(int size)
    {
        for (int i = 0; i < size; ++i)
            queue({{5, 7, "DM", 1000 + i, 1}});
    }

    static Reads queued()
    {
        Reads reads;
        for (int i = 0; i < driver.conditionReadList.size(); ++i)
            reads.push_back(readOf(driver.conditionReadList.at(i)));
        return reads;
    }

    static Read queuedAt(int i) { return readOf(driver.conditionReadList.at(i)); }
};

// ---- Cutting -------------------------------------------------------------------------------------------------------

TEST_F(ConditionRead, LongItemIsCutWithARest)
{
    ask("DM", 0, 150);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 0, 64}, {1, 7, "DM", 64, 64}, {1, 7, "DM", 128, 22}}));
}

TEST_F(ConditionRead, LongItemIsCutEvenly)
{
    ask("DM", 0, 128);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 0, 64}, {1, 7, "DM", 64, 64}}));
}

TEST_F(ConditionRead, ItemOfOneFrameIsNotCut)
{
    ask("DM", 10, 64);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 10, 64}}));
}

TEST_F(ConditionRead, ItemOneAboveAFrameIsCut)
{
    ask("DM", 10, 65);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 10, 64}, {1, 7, "DM", 74, 1}}));
}

TEST_F(ConditionRead, CountBelow1IsOnePiece)
{
    ask("DM", 10, 0);
    ask("DM", 10, -5);
    ask("DM", 10, LOWEST);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 10, 0}, {1, 7, "DM", 10, -5}, {1, 7, "DM", 10, LOWEST}}));
}

TEST_F(ConditionRead, BitKindIsCutByTheBitLimit)
{
    ask("CIO_bit", 0, 512, BIT_KIND);
    ask("WR_bit", 0, 513, BIT_KIND);
    EXPECT_EQ(queued(), (Reads{{1, 7, "CIO", 0, 32}, {1, 7, "WR", 0, 32}, {1, 7, "WR", 32, 1}}));
}

TEST_F(ConditionRead, KindNotTypeChoosesTheLimit)
{
    ask("DM_bit", 0, 65, WORD_KIND);
    ask("HR", 0, 513, BIT_KIND);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 0, 4}, {1, 7, "DM", 4, 1}, {1, 7, "HR", 0, 512}, {1, 7, "HR", 512, 1}}));
}

TEST_F(ConditionRead, EveryKindButMinus1IsCutByTheWordLimit)
{
    const Reads cut = {{1, 7, "DM", 0, 64}, {1, 7, "DM", 64, 6}};
    for (qint32 dataKind : {0, 1, 2, -2}) {
        SCOPED_TRACE(dataKind);
        driver.conditionReadList.clear();
        ask("DM", 0, 70, dataKind);
        EXPECT_EQ(queued(), cut);
    }
}

TEST_F(ConditionRead, BitsAreCutBeforeTheyBecomeWords)
{
    driver.maxBitsPerFrame = 24;
    ask("CIO_bit", 8, 60, BIT_KIND);
    EXPECT_EQ(queued(), (Reads{{1, 7, "CIO", 0, 2}, {1, 7, "CIO", 2, 2}, {1, 7, "CIO", 3, 1}}));
}

TEST_F(ConditionRead, AddressesOfPiecesWrap)
{
    ask("DM", HIGHEST, 65);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", HIGHEST, 64}, {1, 7, "DM", -2147483585, 1}}));
}

TEST_F(ConditionRead, LimitOf0CutsNothing)
{
    driver.wordsPerFrame = 0;
    driver.maxBitsPerFrame = 0;
    ask("DM", 10, 150);
    ask("CIO_bit", 0, 160, BIT_KIND);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 10, 150}, {1, 7, "CIO", 0, 10}}));
}

TEST_F(ConditionRead, NegativeLimitLeavesAShortItemWhole)
{
    driver.wordsPerFrame = -4;
    ask("DM", 10, -4);
    ask("DM", 10, LOWEST);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 10, -4}, {1, 7, "DM", 10, LOWEST}}));
}

TEST_F(ConditionRead, NegativeLimitLeavesAnItemWithoutItemsWhole)
{
    driver.wordsPerFrame = -5;
    ask("DM", 100, 0);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 100, 0}}));
}

TEST_F(ConditionRead, BitsOfManyWordsAreRoundedUp)
{
    ask("CIO_bit", 0, 33, BIT_KIND);
    ask("CIO_bit", 16, 255, BIT_KIND);
    ask("CIO_bit", 32, 256, BIT_KIND);
    ask("CIO_bit", 48, 257, BIT_KIND);
    EXPECT_EQ(queued(), (Reads{{1, 7, "CIO", 0, 3}, {1, 7, "CIO", 1, 16}, {1, 7, "CIO", 2, 16}, {1, 7, "CIO", 3, 17}}));
}

TEST_F(ConditionRead, LowestLimitIsSurvived)
{
    driver.wordsPerFrame = LOWEST;
    ask("DM", 10, HIGHEST);
    ask("DM", 10, LOWEST);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 10, HIGHEST}, {1, 7, "DM", 10, LOWEST}}));
}

TEST_F(ConditionRead, NegativeLimitGivesALongItemNoPieces)
{
    for (qint32 limit : {-1, -3, -9, -10}) {
        SCOPED_TRACE(limit);
        driver.wordsPerFrame = limit;
        ask("DM", 10, 10);
        ask("DM", 10, HIGHEST);
        EXPECT_EQ(queued(), Reads());
    }
}

// ---- Bits become words ---------------------------------------------------------------------------------------------

struct Conversion {
    const char *name;
    const char *regType;
    qint32      bitAddress;
    qint32      bitCount;
    const char *wordType;
    qint32      address;
    qint32      count;
};

std::ostream &operator<<(std::ostream &out, const Conversion &row)
{
    return out << row.name;
}

class ConditionReadOfBits : public ConditionRead, public ::testing::WithParamInterface<Conversion> {};

TEST_P(ConditionReadOfBits, AsksForWords)
{
    const Conversion &row = GetParam();
    ask(row.regType, row.bitAddress, row.bitCount, BIT_KIND);
    EXPECT_EQ(queued(), (Reads{{1, 7, row.wordType, row.address, row.count}}));
}

const Conversion CONVERSIONS[] = {
    {"CIO_bits_40_to_49_deliberately_one_word_short", "CIO_bit", 40, 10,  "CIO", 2,  1},
    {"last_bit_of_a_word_and_the_next_one_word_short", "WR_bit", 15, 2,   "WR",  0,  1},
    {"fifteen_bits",                                  "HR_bit",  0,  15,  "HR",  0,  1},
    {"sixteen_bits",                                  "HR_bit",  0,  16,  "HR",  0,  1},
    {"seventeen_bits",                                "AR_bit",  0,  17,  "AR",  0,  2},
    {"thirty_two_bits",                               "DM_bit",  47, 32,  "DM",  2,  2},
    {"no_bits",                                       "DM_bit",  48, 0,   "DM",  3,  0},
    {"minus_one_bit",                                 "DM_bit",  48, -1,  "DM",  3,  1},
    {"minus_sixteen_bits",                            "DM_bit",  48, -16, "DM",  3,  -1},
    {"minus_seventeen_bits",                          "DM_bit",  48, -17, "DM",  3,  0},
    {"address_minus_1",                               "DM_bit",  -1, 1,   "DM",  0,  1},
    {"address_minus_17",                              "DM_bit", -17, 1,   "DM",  -1, 1},
    {"unknown_type",                                  "EM_bit",  32, 1,   "EM",  2,  1},
    {"type_with_two_underscores",                     "E_M_bit", 32, 1,   "E",   2,  1},
    {"other_suffix_stays",                            "DM_BIT",  32, 17,  "DM_BIT", 32, 17},
};

INSTANTIATE_TEST_SUITE_P(Rows, ConditionReadOfBits, ::testing::ValuesIn(CONVERSIONS),
                         [](const ::testing::TestParamInfo<Conversion> &row) { return row.param.name; });

// ---- Queueing ------------------------------------------------------------------------------------------------------

TEST_F(ConditionRead, RepeatOfTheOnlyEntryIsDeliberatelyAppended)
{
    ask("DM", 10, 2, WORD_KIND, 1);
    ask("DM", 10, 2, WORD_KIND, 2);
    EXPECT_EQ(queued(), (Reads{{1, 7, "DM", 10, 2}, {2, 7, "DM", 10, 2}}));
}

TEST_F(ConditionRead, RepeatOfTheFirstOfSeveralIsDeliberatelyAppended)
{
    queue({{5, 7, "DM", 10, 2}, {5, 7, "DM", 20, 2}});
    ask("DM", 10, 2);
    EXPECT_EQ(queued(), (Reads{{5, 7, "DM", 10, 2}, {5, 7, "DM", 20, 2}, {1, 7, "DM", 10, 2}}));
}

TEST_F(ConditionRead, RepeatOfAnyOtherReplacesItInPlace)
{
    queue({{5, 7, "DM", 10, 2}, {5, 7, "DM", 20, 2}, {5, 7, "DM", 30, 2}});
    ask("DM", 20, 2);
    ask("DM", 30, 2, WORD_KIND, 2);
    EXPECT_EQ(queued(), (Reads{{5, 7, "DM", 10, 2}, {1, 7, "DM", 20, 2}, {2, 7, "DM", 30, 2}}));
}

TEST_F(ConditionRead, RepeatReplacesTheLastOfEqualEntries)
{
    queue({{5, 7, "DM", 10, 2}, {5, 7, "DM", 20, 2}, {6, 7, "DM", 20, 2}});
    ask("DM", 20, 2);
    EXPECT_EQ(queued(), (Reads{{5, 7, "DM", 10, 2}, {5, 7, "DM", 20, 2}, {1, 7, "DM", 20, 2}}));
}

TEST_F(ConditionRead, EntriesAreComparedByTagTypeAddressAndCount)
{
    const Reads waiting = {{5, 7, "DM", 10, 2}, {5, 8, "DM", 20, 2}, {5, 7, "HR", 20, 2}, {5, 7, "DM", 21, 2},
                           {5, 7, "DM", 20, 3}};
    queue(waiting);
    ask("DM", 20, 2);

    Reads expected = waiting;
    expected.push_back({1, 7, "DM", 20, 2});
    EXPECT_EQ(queued(), expected);
}

TEST_F(ConditionRead, BitsAreComparedAsWords)
{
    queue({{5, 7, "DM", 10, 2}, {5, 7, "CIO", 2, 1}});
    ask("CIO_bit", 40, 10, BIT_KIND);
    EXPECT_EQ(queued(), (Reads{{5, 7, "DM", 10, 2}, {1, 7, "CIO", 2, 1}}));
}

TEST_F(ConditionRead, QueueTakes513)
{
    fillQueue(512);
    ask("HR", 0, 1);
    EXPECT_EQ(driver.conditionReadList.size(), 513);
    EXPECT_EQ(queuedAt(511), (Read{5, 7, "DM", 1511, 1}));
    EXPECT_EQ(queuedAt(512), (Read{1, 7, "HR", 0, 1}));
}

TEST_F(ConditionRead, FullQueueLosesItsLastEntry)
{
    fillQueue(513);
    ask("HR", 0, 1);
    EXPECT_EQ(driver.conditionReadList.size(), 513);
    EXPECT_EQ(queuedAt(511), (Read{5, 7, "DM", 1511, 1}));
    EXPECT_EQ(queuedAt(512), (Read{1, 7, "HR", 0, 1}));
}

TEST_F(ConditionRead, FullQueueStillReplacesInPlace)
{
    fillQueue(513);
    ask("DM", 1001, 1);
    EXPECT_EQ(driver.conditionReadList.size(), 513);
    EXPECT_EQ(queuedAt(1), (Read{1, 7, "DM", 1001, 1}));
    EXPECT_EQ(queuedAt(512), (Read{5, 7, "DM", 1512, 1}));
}

TEST_F(ConditionRead, FullQueueComparesNotItsFirstEntryEither)
{
    fillQueue(513);
    ask("DM", 1000, 1);
    EXPECT_EQ(queuedAt(0), (Read{5, 7, "DM", 1000, 1}));
    EXPECT_EQ(queuedAt(512), (Read{1, 7, "DM", 1000, 1}));
}

TEST_F(ConditionRead, PiecesOfOneItemReplaceEachOtherInAFullQueue)
{
    fillQueue(512);
    ask("HR", 0, 150);
    EXPECT_EQ(driver.conditionReadList.size(), 513);
    EXPECT_EQ(queuedAt(512), (Read{1, 7, "HR", 128, 22}));
}

// ---- The latest request --------------------------------------------------------------------------------------------

TEST_F(ConditionRead, LatestRequestIsTheLastPiece)
{
    ask("DM", 0, 150, WORD_KIND, 3, 9);
    EXPECT_EQ(readOf(driver.currentRead), (Read{3, 9, "DM", 128, 22}));
}

TEST_F(ConditionRead, LatestRequestIsInWords)
{
    ask("CIO_bit", 40, 10, BIT_KIND, 3, 9);
    EXPECT_EQ(readOf(driver.currentRead), (Read{3, 9, "CIO", 2, 1}));
}

TEST_F(ConditionRead, LatestRequestIsSetByAReplacementToo)
{
    queue({{5, 7, "DM", 10, 2}, {5, 7, "DM", 20, 2}});
    ask("DM", 20, 2);
    EXPECT_EQ(readOf(driver.currentRead), (Read{1, 7, "DM", 20, 2}));
}

TEST_F(ConditionRead, LatestRequestIsSetByAFullQueueToo)
{
    fillQueue(513);
    ask("HR", 0, 1);
    EXPECT_EQ(readOf(driver.currentRead), (Read{1, 7, "HR", 0, 1}));
}

TEST_F(ConditionRead, ItemAndOtherQueuesStay)
{
    KEY_ADDRESS item;
    item.requestTag = 7;
    item.regType = "CIO_bit";
    item.address = 40;
    item.dataKind = BIT_KIND;
    item.count = 600;
    std::fill_n(item.data, int{VALUE_BUFFER_SIZE}, quint8{0});
    intf_addConditionRead(item, 1);

    EXPECT_EQ(item.requestTag, 7);
    EXPECT_EQ(item.regType.toStdString(), "CIO_bit");
    EXPECT_EQ(item.address, 40);
    EXPECT_EQ(item.dataKind, int{BIT_KIND});
    EXPECT_EQ(item.count, 600);
    EXPECT_TRUE(driver.readList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_TRUE(notifications().empty());
}

} // namespace
