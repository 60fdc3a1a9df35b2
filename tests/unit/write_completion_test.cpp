#include "data/data_image.h"
#include "data/write_completion.h"
#include "driver_fixture.h"

#include <chrono>
#include <future>

namespace {

const qint32 LARGEST = 2147483647;
const qint32 SMALLEST = -2147483647 - 1;

typedef std::vector<Notification> Notifications;
typedef std::vector<qint32> Addresses;

VARIABLE variable(qint32 requestTag, const char *regType, qint32 address, qint32 count)
{
    VARIABLE result = VARIABLE();
    result.requestTag = requestTag;
    result.regType = QLatin1String(regType);
    result.address = address;
    result.count = count;
    return result;
}

Addresses addressesOf(const QList<VARIABLE> &list)
{
    Addresses addresses;
    for (int i = 0; i < list.size(); ++i)
        addresses.push_back(list.at(i).address);
    return addresses;
}

class WriteCompletion : public DriverTest {
protected:
    WriteCompletion() { driver.stationNo = 3; }

    static void finish(qint32 jobType, qint32 commFailed = 0)
    {
        driver.jobType = jobType;
        driver.commFailed = commFailed;
        dealListWhenFinish();
    }

    static void settle(const char *regType, qint32 address, qint32 count, qint32 result)
    {
        _write_FailOrSuc(7, QLatin1String(regType), address, count, result);
    }

    static _DATA_ &word(qint32 address)
    {
        const int index = getIndexOfDataArea(7, QLatin1String("DM"), address, driver.dataAreas);
        return driver.dataAreas[index];
    }

    /// A word of tag 7 that the PLC has as `plc` and the panel wrote as `written`.
    static void pend(qint32 address, int plc, int written, qint32 pendingBits = 0)
    {
        _DATA_ &area = word(address);
        area.plcValue[0] = quint8(plc & 0xFF);
        area.plcValue[1] = quint8(plc >> 8);
        area.writeValue[0] = quint8(written & 0xFF);
        area.writeValue[1] = quint8(written >> 8);
        area.writePending = 1;
        area.pendingBits = pendingBits;
    }

    static int plcWord(qint32 address) { return word(address).plcValue[0] + 256 * word(address).plcValue[1]; }
    static int writtenWord(qint32 address) { return word(address).writeValue[0] + 256 * word(address).writeValue[1]; }
};

// ---- Words ---------------------------------------------------------------------------------------------------------

TEST_F(WriteCompletion, AcceptedWordBecomesThePlcValueSilently)
{
    pend(100, 0x0003, 0x1205);
    word(100).wordMonitor = 1;
    word(100).bitMonitor = 0xFFFF;
    settle("DM", 100, 1, 1);
    EXPECT_EQ(plcWord(100), 0x1205);
    EXPECT_EQ(writtenWord(100), 0x1205);
    EXPECT_EQ(word(100).writePending, 0);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(WriteCompletion, FailedWordFallsBackAndNotifies)
{
    pend(100, 0x0001, 0x8000);
    word(100).wordMonitor = 1;
    word(100).bitMonitor = 0xFFFF;
    settle("DM", 100, 1, 0);
    EXPECT_EQ(plcWord(100), 0x0001);
    EXPECT_EQ(writtenWord(100), 0x8000);
    EXPECT_EQ(word(100).writePending, 0);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1600}, {3, 7, "DM_bit", 1615}, {3, 7, "DM", 100}}));
}

TEST_F(WriteCompletion, FailedWordIsComparedInBothBytes)
{
    pend(100, 0x0500, 0x0400);
    word(100).bitMonitor = 0xFFFF;
    settle("DM", 100, 1, 0);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1608}}));
}

TEST_F(WriteCompletion, FailedWordThatEqualsThePlcValueNotifiesNothing)
{
    pend(100, 0x1234, 0x1234);
    word(100).wordMonitor = 1;
    settle("DM", 100, 1, 0);
    EXPECT_TRUE(notifications().empty());
    EXPECT_EQ(word(100).writePending, 0);
}

TEST_F(WriteCompletion, FailedUnwatchedWordNotifiesNothing)
{
    pend(100, 3, 5);
    settle("DM", 100, 1, 0);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(WriteCompletion, OnlyTheResultOneIsSuccess)
{
    for (const qint32 result : {0, 2, -1}) {
        pend(100, 3, 5);
        settle("DM", 100, 1, result);
        EXPECT_EQ(plcWord(100), 3) << result;
        EXPECT_EQ(word(100).writePending, 0) << result;
    }
}

TEST_F(WriteCompletion, EveryWordOfThePieceIsSettled)
{
    for (int i = 0; i < 5; ++i)
        pend(99 + i, 3, 5 + i);
    settle("DM", 100, 3, 1);
    EXPECT_EQ(plcWord(99), 3);
    EXPECT_EQ(plcWord(100), 6);
    EXPECT_EQ(plcWord(101), 7);
    EXPECT_EQ(plcWord(102), 8);
    EXPECT_EQ(plcWord(103), 3);
    EXPECT_EQ(word(99).writePending, 1);
    EXPECT_EQ(word(102).writePending, 0);
    EXPECT_EQ(word(103).writePending, 1);
}

TEST_F(WriteCompletion, LongPieceEndsAtItsCount)
{
    for (int i = 0; i < 140; ++i)
        pend(100 + i, 1, 2);
    settle("DM", 100, 130, 1);
    for (int i = 0; i < 130; ++i) {
        EXPECT_EQ(word(100 + i).writePending, 0) << i;
        EXPECT_EQ(plcWord(100 + i), 2) << i;
    }
    for (int i = 130; i < 140; ++i) {
        EXPECT_EQ(word(100 + i).writePending, 1) << i;
        EXPECT_EQ(plcWord(100 + i), 1) << i;
    }
}

TEST_F(WriteCompletion, WordsOfAnotherTagStayPending)
{
    pend(100, 3, 5);
    _write_FailOrSuc(8, QLatin1String("DM"), 100, 1, 1);
    EXPECT_EQ(plcWord(100), 3);
    EXPECT_EQ(word(100).writePending, 1);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(WriteCompletion, UnknownWordIsCreated)
{
    settle("DM", 100, 1, 1);
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().address, 100);
}

TEST_F(WriteCompletion, NothingIsSettledWithoutACount)
{
    settle("DM", 100, 0, 1);
    settle("DM", 100, -1, 0);
    settle("DM", 100, SMALLEST, 0);
    settle("DM_bit", 1600, 0, 1);
    settle("DM_bit", 1600, -1, 0);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_TRUE(notifications().empty());
}

TEST_F(WriteCompletion, WordCompletionLeavesPendingBits)
{
    pend(100, 3, 5, 0x0006);
    settle("DM", 100, 1, 1);
    EXPECT_EQ(word(100).pendingBits, 0x0006);
    EXPECT_EQ(word(100).writePending, 0);
}

TEST_F(WriteCompletion, WordAddressesWrap)
{
    pend(SMALLEST, 3, 5);
    settle("DM", LARGEST, 2, 1);
    EXPECT_EQ(plcWord(SMALLEST), 5);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(WriteCompletion, OnlyTheExactSuffixMakesABitType)
{
    settle("DM_BIT", 1600, 1, 0);
    EXPECT_TRUE(notifications().empty());
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().regType.toStdString(), "DM_BIT");
    EXPECT_EQ(driver.dataAreas.first().address, 1600);
}

TEST_F(WriteCompletion, CallbackOfAFailedWordSeesThePlcValue)
{
    driver.valueChangeCallback = &WriteCompletion::readBack;
    for (int i = 0; i < 3; ++i) {
        pend(100 + i, 3 + i, 50 + i);
        word(100 + i).wordMonitor = 1;
    }
    settle("DM", 100, 3, 0);
    EXPECT_EQ(seen(), (std::vector<int>{3, 4, 5}));
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM", 100}, {3, 7, "DM", 101}, {3, 7, "DM", 102}}));
    EXPECT_EQ(word(102).writePending, 0);
    EXPECT_EQ(driver.dataAreas.size(), 603);
}

// ---- Bits ----------------------------------------------------------------------------------------------------------

// Deliberate: every bit of the piece reports under the piece's first address, watched or not.
TEST_F(WriteCompletion, EveryBitReportsUnderTheFirstAddress)
{
    const Notifications three(3, {3, 7, "DM_bit", 1600});
    settle("DM_bit", 1600, 3, 1);
    EXPECT_EQ(notifications(), three);
    notifications().clear();
    settle("DM_bit", 1600, 3, 0);
    EXPECT_EQ(notifications(), three);
}

TEST_F(WriteCompletion, FirstRecordOfTheImageIsNotTakenForTheWordOfABit)
{
    getIndexOfDataArea(7, QLatin1String("HR"), 100, driver.dataAreas);
    driver.dataAreas[0].writePending = 1;
    pend(100, 0, 1, 1);
    settle("DM_bit", 1600, 1, 1);
    EXPECT_EQ(driver.dataAreas.at(0).writePending, 1);
    EXPECT_EQ(word(100).writePending, 0);
    EXPECT_EQ(plcWord(100), 1);
}

TEST_F(WriteCompletion, WatchedBitsReportNothingElse)
{
    pend(100, 0, 1, 1);
    word(100).wordMonitor = 1;
    word(100).bitMonitor = 0xFFFF;
    settle("DM_bit", 1600, 1, 0);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1600}}));
}

TEST_F(WriteCompletion, AcceptedBitAloneBecomesThePlcs)
{
    for (qint32 bit = 0; bit < 16; ++bit) {
        pend(100, 0x0000, 0xFFFF);
        settle("DM_bit", 1600 + bit, 1, 1);
        EXPECT_EQ(plcWord(100), 1 << bit);
        pend(100, 0xFFFF, 0x0000);
        settle("DM_bit", 1600 + bit, 1, 1);
        EXPECT_EQ(plcWord(100), 0xFFFF - (1 << bit));
    }
}

TEST_F(WriteCompletion, FailedBitLeavesThePlcValue)
{
    for (const qint32 result : {0, 2, -1}) {
        pend(100, 0x00F0, 0x00F5);
        settle("DM_bit", 1600, 1, result);
        EXPECT_EQ(plcWord(100), 0x00F0) << result;
        EXPECT_EQ(word(100).writePending, 0) << result;
    }
}

TEST_F(WriteCompletion, WordStaysPendingWhileABitIsOutstanding)
{
    pend(100, 0, 0x0021, 0x0021);
    settle("DM_bit", 1605, 1, 1);
    EXPECT_EQ(word(100).pendingBits, 0x0001);
    EXPECT_EQ(word(100).writePending, 1);
    settle("DM_bit", 1600, 1, 1);
    EXPECT_EQ(word(100).pendingBits, 0);
    EXPECT_EQ(word(100).writePending, 0);
    EXPECT_EQ(plcWord(100), 0x0021);
}

TEST_F(WriteCompletion, FailedBitClearsItsPendingBitToo)
{
    pend(100, 0, 0x8001, 0x8001);
    settle("DM_bit", 1615, 1, 0);
    EXPECT_EQ(word(100).pendingBits, 0x0001);
    EXPECT_EQ(word(100).writePending, 1);
}

TEST_F(WriteCompletion, BitsCrossIntoTheNextWord)
{
    pend(100, 0, 0xC000, 0xC000);
    pend(101, 0, 0x0003, 0x0003);
    settle("DM_bit", 1615, 2, 1);
    EXPECT_EQ(plcWord(100), 0x8000);
    EXPECT_EQ(plcWord(101), 0x0001);
    EXPECT_EQ(word(100).pendingBits, 0x4000);
    EXPECT_EQ(word(101).pendingBits, 0x0002);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

// Deliberate: a word write sets no pending bits, so that a bit's completion ends its pending state.
TEST_F(WriteCompletion, BitCompletionEndsAQueuedWordWriteOfTheSameWord)
{
    pend(100, 0x0000, 0x1201, 0x0001);
    settle("DM_bit", 1600, 1, 1);
    EXPECT_EQ(word(100).writePending, 0);
    EXPECT_EQ(plcWord(100), 0x0001);
    EXPECT_EQ(writtenWord(100), 0x1201);
}

TEST_F(WriteCompletion, UnknownBitCreatesItsWord)
{
    settle("CIO_bit", 1605, 1, 1);
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().requestTag, 7);
    EXPECT_EQ(driver.dataAreas.first().regType.toStdString(), "CIO");
    EXPECT_EQ(driver.dataAreas.first().address, 100);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "CIO_bit", 1605}}));
}

TEST_F(WriteCompletion, BitBelowAddressZeroStoresNothingButReports)
{
    pend(0, 0x0000, 0xFFFF, 0x0001);
    settle("DM_bit", -1, 1, 1);
    EXPECT_EQ(plcWord(0), 0);
    EXPECT_EQ(word(0).pendingBits, 0x0001);
    EXPECT_EQ(word(0).writePending, 1);
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", -1}}));
}

TEST_F(WriteCompletion, BitBelowAddressZeroLeavesAPendingWordWrite)
{
    pend(-1, 0x0000, 0xFFFF, 0);
    settle("DM_bit", -17, 1, 0);
    EXPECT_EQ(word(-1).writePending, 1);
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", -17}}));
}

TEST_F(WriteCompletion, UnknownBitBelowAddressZeroCreatesItsWord)
{
    settle("DM_bit", -17, 1, 1);
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().address, -1);
}

TEST_F(WriteCompletion, BitAddressesWrap)
{
    pend(-0x08000000, 0, 1, 1);
    settle("DM_bit", LARGEST, 2, 1);
    EXPECT_EQ(plcWord(-0x08000000), 1);
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(notifications(), Notifications(2, {3, 7, "DM_bit", LARGEST}));
}

TEST_F(WriteCompletion, CallbackSeesTheSettledBits)
{
    driver.valueChangeCallback = &WriteCompletion::readBack;
    pend(100, 0x0000, 0x0003, 0x0003);
    settle("DM_bit", 1600, 2, 1);
    EXPECT_EQ(seen(), (std::vector<int>{1, 1}));
    EXPECT_EQ(plcWord(100), 0x0003);
    EXPECT_EQ(word(100).pendingBits, 0);
    EXPECT_EQ(word(100).writePending, 0);
    EXPECT_EQ(driver.dataAreas.size(), 401);
}

TEST_F(WriteCompletion, CallbackOfAFailedBitSeesThePlcsBit)
{
    driver.valueChangeCallback = &WriteCompletion::readBack;
    pend(100, 0x0000, 0x0001, 0x0001);
    settle("DM_bit", 1600, 1, 0);
    EXPECT_EQ(seen(), std::vector<int>{0});
}

// ---- End of a write job --------------------------------------------------------------------------------------------

TEST_F(WriteCompletion, FailedWriteJobFallsBackAndLeavesTheQueue)
{
    driver.writeList << variable(7, "DM", 100, 1) << variable(7, "DM", 200, 1);
    pend(100, 3, 5);
    word(100).wordMonitor = 1;
    finish(JOB_WRITE, 1);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM", 100}}));
    EXPECT_EQ(plcWord(100), 3);
    EXPECT_EQ(word(100).writePending, 0);
    EXPECT_EQ(addressesOf(driver.writeList), Addresses{200});
}

TEST_F(WriteCompletion, SuccessfulWriteJobIsSettledSilently)
{
    driver.writeList << variable(7, "DM", 100, 1) << variable(7, "DM", 200, 1);
    pend(100, 3, 5);
    pend(200, 3, 5);
    word(100).wordMonitor = 1;
    finish(JOB_WRITE);
    EXPECT_TRUE(notifications().empty());
    EXPECT_EQ(plcWord(100), 5);
    EXPECT_EQ(plcWord(200), 3);
    EXPECT_EQ(addressesOf(driver.writeList), Addresses{200});
}

TEST_F(WriteCompletion, WriteJobSettlesItsWholePiece)
{
    driver.writeList << variable(7, "DM_bit", 1600, 3);
    finish(JOB_WRITE, 2);
    EXPECT_EQ(notifications(), Notifications(3, {3, 7, "DM_bit", 1600}));
    EXPECT_TRUE(driver.writeList.isEmpty());
}

TEST_F(WriteCompletion, AnyNonzeroFailureFailsTheWrite)
{
    driver.writeList << variable(7, "DM", 100, 1);
    pend(100, 3, 5);
    finish(JOB_WRITE, 2);
    EXPECT_EQ(plcWord(100), 3);
}

TEST_F(WriteCompletion, WriteJobLeavesTheOtherLists)
{
    driver.writeList << variable(7, "DM", 1, 1);
    driver.conditionReadList << variable(7, "DM", 2, 1) << variable(7, "DM", 3, 1);
    driver.readList << variable(7, "DM", 4, 1) << variable(7, "DM", 5, 1);
    sharedBlock[RECIPE_WRITE_FLAG] = 1;
    sharedBlock[RECIPE_READ_FLAG] = 1;
    driver.recipeIndex = 1;
    finish(JOB_WRITE, 1);
    EXPECT_EQ(addressesOf(driver.conditionReadList), (Addresses{2, 3}));
    EXPECT_EQ(addressesOf(driver.readList), (Addresses{4, 5}));
    EXPECT_EQ(sharedBlock[RECIPE_WRITE_FLAG], 1);
    EXPECT_EQ(sharedBlock[RECIPE_READ_FLAG], 1);
    EXPECT_EQ(driver.recipeIndex, 1);
}

TEST_F(WriteCompletion, WriteJobWithoutAQueueEndsQuietly)
{
    finish(JOB_WRITE);
    finish(JOB_WRITE, 1);
    EXPECT_TRUE(notifications().empty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(WriteCompletion, CallbacksOfAWriteJobRunWithTheMutexFree)
{
    driver.valueChangeCallback = &WriteCompletion::tryMutex;
    driver.writeList << variable(7, "DM_bit", 1600, 1);
    finish(JOB_WRITE);
    EXPECT_EQ(seen(), std::vector<int>{1});
}

// ---- End of a conditional read -------------------------------------------------------------------------------------

class WriteCompletionConditionRead : public WriteCompletion {
protected:
    WriteCompletionConditionRead()
    {
        driver.conditionReadList << variable(7, "DM", 100, 2) << variable(7, "DM", 102, 2) << variable(7, "DM", 104, 2);
        driver.readList << variable(7, "DM", 1, 1) << variable(7, "DM", 2, 1);
        driver.currentRead = variable(7, "DM", 100, 2);
    }
};

TEST_F(WriteCompletionConditionRead, SuccessIsReportedWithZero)
{
    finish(JOB_CONDITION_READ);
    EXPECT_EQ(notifications(), (Notifications{{-1, -1, "-1", 0}}));
    EXPECT_EQ(addressesOf(driver.conditionReadList), (Addresses{102, 104}));
    EXPECT_EQ(addressesOf(driver.readList), (Addresses{1, 2}));
}

TEST_F(WriteCompletionConditionRead, FailureIsReportedWithMinusOneAndEmptiesTheQueue)
{
    finish(JOB_CONDITION_READ, 1);
    EXPECT_EQ(notifications(), (Notifications{{-1, -1, "-1", -1}}));
    EXPECT_TRUE(driver.conditionReadList.isEmpty());
}

TEST_F(WriteCompletionConditionRead, AnyNonzeroFailureCounts)
{
    finish(JOB_CONDITION_READ, -5);
    EXPECT_EQ(notifications(), (Notifications{{-1, -1, "-1", -1}}));
    EXPECT_TRUE(driver.conditionReadList.isEmpty());
}

TEST_F(WriteCompletionConditionRead, OtherPiecesAreNotReported)
{
    const VARIABLE others[] = {variable(8, "DM", 100, 2), variable(7, "HR", 100, 2), variable(7, "DM", 101, 2),
                               variable(7, "DM", 100, 3)};
    for (const VARIABLE &other : others) {
        driver.currentRead = other;
        driver.conditionReadList.prepend(variable(7, "DM", 100, 2));
        finish(JOB_CONDITION_READ);
    }
    EXPECT_TRUE(notifications().empty());
    EXPECT_EQ(driver.conditionReadList.size(), 3);
}

TEST_F(WriteCompletionConditionRead, FailureOfAnotherPieceEmptiesTheQueueWithoutReport)
{
    driver.currentRead = variable(7, "DM", 104, 2);
    finish(JOB_CONDITION_READ, 1);
    EXPECT_TRUE(notifications().empty());
    EXPECT_TRUE(driver.conditionReadList.isEmpty());
}

TEST_F(WriteCompletionConditionRead, RequestIdAndValuesAreNotCompared)
{
    driver.currentRead.requestId = 9;
    driver.currentRead.value[0] = 9;
    finish(JOB_CONDITION_READ);
    EXPECT_EQ(notifications(), (Notifications{{-1, -1, "-1", 0}}));
}

TEST_F(WriteCompletionConditionRead, WithoutAQueueEndsQuietly)
{
    driver.conditionReadList.clear();
    finish(JOB_CONDITION_READ);
    finish(JOB_CONDITION_READ, 1);
    EXPECT_TRUE(notifications().empty());
    EXPECT_TRUE(driver.conditionReadList.isEmpty());
}

TEST_F(WriteCompletionConditionRead, CallbackRunsWithTheMutexFree)
{
    driver.valueChangeCallback = &WriteCompletion::tryMutex;
    finish(JOB_CONDITION_READ);
    EXPECT_EQ(seen(), std::vector<int>{1});
}

// ---- End of a poll read --------------------------------------------------------------------------------------------

class WriteCompletionPoll : public WriteCompletion {
protected:
    static Addresses finishWith(int blocks, qint32 commFailed)
    {
        driver.readList.clear();
        for (int i = 0; i < blocks; ++i)
            driver.readList << variable(7, "DM", 1 + i, 1);
        finish(JOB_POLL, commFailed);
        return addressesOf(driver.readList);
    }
};

TEST_F(WriteCompletionPoll, HeadGoesToTheEnd)
{
    EXPECT_EQ(finishWith(3, 0), (Addresses{2, 3, 1}));
    EXPECT_EQ(finishWith(2, 0), (Addresses{2, 1}));
}

TEST_F(WriteCompletionPoll, OneBlockStays)
{
    EXPECT_EQ(finishWith(1, 0), Addresses{1});
    EXPECT_EQ(finishWith(0, 0), Addresses());
}

TEST_F(WriteCompletionPoll, FailureMakesNoDifference)
{
    EXPECT_EQ(finishWith(3, 1), (Addresses{2, 3, 1}));
    EXPECT_EQ(finishWith(1, 1), Addresses{1});
}

TEST_F(WriteCompletionPoll, WholeBlockIsMoved)
{
    VARIABLE head = variable(8, "HR", 5, 6);
    head.requestId = 4;
    std::fill_n(head.value, int(VALUE_BUFFER_SIZE), quint8(0x5A));
    driver.readList << head << variable(7, "DM", 1, 1);
    finish(JOB_POLL);
    const VARIABLE &moved = driver.readList.last();
    EXPECT_EQ(moved.requestId, 4);
    EXPECT_EQ(moved.requestTag, 8);
    EXPECT_EQ(moved.regType.toStdString(), "HR");
    EXPECT_EQ(moved.address, 5);
    EXPECT_EQ(moved.count, 6);
    EXPECT_TRUE(std::equal(head.value, head.value + VALUE_BUFFER_SIZE, moved.value));
}

TEST_F(WriteCompletionPoll, OtherListsStay)
{
    driver.writeList << variable(7, "DM", 1, 1);
    driver.conditionReadList << variable(7, "DM", 1, 1);
    finishWith(2, 0);
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.conditionReadList.size(), 1);
    EXPECT_TRUE(notifications().empty());
}

// ---- End of a recipe block -----------------------------------------------------------------------------------------

struct RecipeRow {
    const char *name;
    JobType     jobType;
    RecipeFlag  flag;
    RecipeFlag  otherFlag;
};

const RecipeRow RECIPE_ROWS[] = {
    {"Write", JOB_RECIPE_WRITE, RECIPE_WRITE_FLAG, RECIPE_READ_FLAG},
    {"Read",  JOB_RECIPE_READ,  RECIPE_READ_FLAG,  RECIPE_WRITE_FLAG},
};

/// A transfer of three blocks; the whole shared block is 1.
class WriteCompletionRecipe : public WriteCompletion, public ::testing::WithParamInterface<RecipeRow> {
protected:
    WriteCompletionRecipe()
    {
        driver.recipeBlocks.resize(3);
        std::fill(sharedBlock.begin(), sharedBlock.end(), quint8(1));
    }

    void expectOpen(qint32 recipeIndex) const
    {
        EXPECT_EQ(driver.recipeIndex, recipeIndex);
        EXPECT_EQ(sharedBlock[GetParam().flag], 1);
    }

    void expectOver() const
    {
        EXPECT_EQ(driver.recipeIndex, 0);
        EXPECT_EQ(sharedBlock[GetParam().flag], 0);
        EXPECT_EQ(sharedBlock[GetParam().otherFlag], 1);
        EXPECT_EQ(std::count(sharedBlock.begin(), sharedBlock.end(), 0), 1);
        EXPECT_TRUE(notifications().empty());
    }

    void expectMutexIsFree()
    {
        ASSERT_TRUE(mutex.tryLock());
        mutex.unlock();
    }
};

TEST_P(WriteCompletionRecipe, IsOverAfterTheLastBlock)
{
    finish(GetParam().jobType);
    expectOpen(1);
    finish(GetParam().jobType);
    expectOpen(2);
    finish(GetParam().jobType);
    expectOver();
}

TEST_P(WriteCompletionRecipe, IsOverAtOnceAfterAFailure)
{
    driver.recipeIndex = 1;
    finish(GetParam().jobType, 1);
    expectOver();
}

TEST_P(WriteCompletionRecipe, IsOverWithoutBlocks)
{
    driver.recipeBlocks.clear();
    finish(GetParam().jobType);
    expectOver();
}

TEST_P(WriteCompletionRecipe, LeavesTheMutexFree)
{
    finish(GetParam().jobType);
    expectMutexIsFree();
    finish(GetParam().jobType, 1);
    expectMutexIsFree();
}

TEST_P(WriteCompletionRecipe, ClearsTheRequestUnderTheMutex)
{
    mutex.lock();
    std::future<void> finished = std::async(std::launch::async, [] { finish(GetParam().jobType, 1); });
    EXPECT_EQ(finished.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_EQ(sharedBlock[GetParam().flag], 1);
    mutex.unlock();
    finished.get();
    expectOver();
}

TEST_P(WriteCompletionRecipe, BlockBeforeTheLastNeedsNoMutex)
{
    mutex.lock();
    std::future<void> finished = std::async(std::launch::async, [] { finish(GetParam().jobType); });
    EXPECT_EQ(finished.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    mutex.unlock();
    finished.get();
    expectOpen(1);
}

TEST_P(WriteCompletionRecipe, WithoutASharedBlockNothingIsCleared)
{
    driver.runtimeBlock = nullptr;
    driver.recipeIndex = 2;
    finish(GetParam().jobType);
    expectOpen(0);
    expectMutexIsFree();
}

TEST_P(WriteCompletionRecipe, WithoutAMutexNothingIsCleared)
{
    driver.runtimeMutex = nullptr;
    driver.recipeIndex = 2;
    finish(GetParam().jobType);
    expectOpen(0);
}

TEST_P(WriteCompletionRecipe, ListsStay)
{
    driver.writeList << variable(7, "DM", 1, 1);
    driver.conditionReadList << variable(7, "DM", 1, 1);
    driver.readList << variable(7, "DM", 1, 1) << variable(7, "DM", 2, 1);
    finish(GetParam().jobType, 1);
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.conditionReadList.size(), 1);
    EXPECT_EQ(addressesOf(driver.readList), (Addresses{1, 2}));
}

std::string recipeName(const ::testing::TestParamInfo<RecipeRow> &info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(BothDirections, WriteCompletionRecipe, ::testing::ValuesIn(RECIPE_ROWS), recipeName);

// ---- No job --------------------------------------------------------------------------------------------------------

TEST_F(WriteCompletion, OtherJobTypesEndNothing)
{
    driver.writeList << variable(7, "DM_bit", 1, 1);
    driver.conditionReadList << variable(7, "DM", 1, 1);
    driver.currentRead = variable(7, "DM", 1, 1);
    driver.readList << variable(7, "DM", 1, 1) << variable(7, "DM", 2, 1);
    driver.recipeIndex = 1;
    sharedBlock[RECIPE_WRITE_FLAG] = 1;
    sharedBlock[RECIPE_READ_FLAG] = 1;
    for (const qint32 jobType : {0, 1, 7, -1}) {
        finish(jobType, 1);
        EXPECT_EQ(driver.jobType, jobType);
    }
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.conditionReadList.size(), 1);
    EXPECT_EQ(addressesOf(driver.readList), (Addresses{1, 2}));
    EXPECT_EQ(driver.recipeIndex, 1);
    EXPECT_EQ(sharedBlock[RECIPE_WRITE_FLAG], 1);
    EXPECT_EQ(sharedBlock[RECIPE_READ_FLAG], 1);
    EXPECT_TRUE(notifications().empty());
}

// Division truncates, so bit -16 lies in word -1 and bit -15 in word 0.
TEST_F(WriteCompletion, LooksUpTheWordOfEachBitBelowZero)
{
    _write_FailOrSuc(7, QLatin1String("DM_bit"), -17, 3, 1);
    ASSERT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(driver.dataAreas.at(0).address, -1);
    EXPECT_EQ(driver.dataAreas.at(1).address, 0);
}

} // namespace
