#include "data/write_completion.h"
#include "driver_fixture.h"

#include <chrono>
#include <future>

namespace {

VARIABLE variable(const char *regType, qint32 address, qint32 count)
{
    VARIABLE result = VARIABLE();
    result.regType = QLatin1String(regType);
    result.address = address;
    result.count = count;
    return result;
}

/// What a request is, by its command code: "handshake", "read" or "write", and the address that it serves.
std::string describe(const FRAME_PRO &request)
{
    if (request.sendLen == 20)
        return "handshake";
    const std::string command = request.frame[26] == 0x01 && request.frame[27] == 0x01 ? "read "
        : request.frame[26] == 0x01 && request.frame[27] == 0x02                       ? "write "
                                                                                       : "other ";
    return command + request.regType.toStdString() + " " + std::to_string(request.address);
}

/// Connected; writes at DM 1000 and up, conditional reads at HR 200 and up, poll blocks at WR 300 and up.
class SendScheduler : public DriverTest {
protected:
    SendScheduler() { driver.connected = 1; }

    static void queueWrites(int number)
    {
        for (int i = 0; i < number; ++i)
            driver.writeList.append(variable("DM", 1000 + i, 1));
    }

    static void queueConditionReads(int number)
    {
        for (int i = 0; i < number; ++i)
            driver.conditionReadList.append(variable("HR", 200 + i, 1));
    }

    static void poll(int blocks)
    {
        for (int i = 0; i < blocks; ++i)
            driver.readList.append(variable("WR", 300 + i, 1));
    }

    /// Recipe blocks CIO 10, 20, ... of two words each, their words in the recipe buffer from 100, 102, ... on.
    void planRecipe(int blocks)
    {
        for (int i = 0; i < blocks; ++i) {
            _RCP_VAR_PRO block = _RCP_VAR_PRO();
            block.requestTag = 70 + i;
            block.regType = QLatin1String("CIO");
            block.address = 10 + 10 * i;
            block.count = 2;
            block.bufferOffset = 100 + 2 * i;
            driver.recipeBlocks.append(block);
        }
        for (int i = 0; i < 2 * blocks; ++i)
            recipeWords[static_cast<std::size_t>(100 + i)] = quint16(0x1101 + 0x1101 * i);
    }

    void requestRecipeWrite(quint8 flag = 1) { sharedBlock[RECIPE_WRITE_FLAG] = flag; }
    void requestRecipeRead(quint8 flag = 1) { sharedBlock[RECIPE_READ_FLAG] = flag; }

    /// The next request, or "nothing".
    static std::string next()
    {
        FRAME_PRO out = FRAME_PRO();
        return intf_getSendFrame(&out) == 1 ? describe(out) : "nothing";
    }

    /// The next request, whose job then ends well.
    static std::string nextAndDone()
    {
        const std::string request = next();
        driver.frameList.clear();
        dealListWhenFinish();
        return request;
    }

    static std::vector<std::string> nextAndDone(int number)
    {
        std::vector<std::string> requests;
        for (int i = 0; i < number; ++i)
            requests.push_back(nextAndDone());
        return requests;
    }
};

typedef std::vector<std::string> Requests;

// ---- The request in flight -----------------------------------------------------------------------------------------

FRAME_PRO numberedRequest(int number)
{
    FRAME_PRO request = FRAME_PRO();
    for (int i = 0; i < VALUE_BUFFER_SIZE; ++i) {
        request.frame[i] = quint8(i % 251 + number);
        request.value[i] = quint8(i % 241 + number);
    }
    request.sendLen = number + 1;
    request.rcvLen = number + 2;
    request.dataPos = number + 3;
    request.dataLen = number + 4;
    request.reservedField = number + 5;
    request.requestId = number + 6;
    request.requestTag = number + 7;
    request.regType = QString::number(number + 8);
    request.address = number + 9;
    request.count = number + 10;
    return request;
}

void expectSame(const FRAME_PRO &actual, const FRAME_PRO &expected)
{
    EXPECT_TRUE(std::equal(actual.frame, actual.frame + VALUE_BUFFER_SIZE, expected.frame));
    EXPECT_EQ(actual.sendLen, expected.sendLen);
    EXPECT_EQ(actual.rcvLen, expected.rcvLen);
    EXPECT_EQ(actual.dataPos, expected.dataPos);
    EXPECT_EQ(actual.dataLen, expected.dataLen);
    EXPECT_EQ(actual.reservedField, expected.reservedField);
    EXPECT_EQ(actual.requestId, expected.requestId);
    EXPECT_EQ(actual.requestTag, expected.requestTag);
    EXPECT_EQ(actual.regType.toStdString(), expected.regType.toStdString());
    EXPECT_EQ(actual.address, expected.address);
    EXPECT_EQ(actual.count, expected.count);
    EXPECT_TRUE(std::equal(actual.value, actual.value + VALUE_BUFFER_SIZE, expected.value));
}

TEST_F(SendScheduler, HandsOutEveryFieldOfTheHead)
{
    driver.frameList.append(numberedRequest(1));
    driver.frameList.append(numberedRequest(50));
    FRAME_PRO out = FRAME_PRO();
    EXPECT_EQ(intf_getSendFrame(&out), 1);
    expectSame(out, numberedRequest(1));
}

TEST_F(SendScheduler, RepeatsTheHeadOnEveryCallWhateverWaits)
{
    queueWrites(1);
    queueConditionReads(1);
    poll(1);
    planRecipe(1);
    requestRecipeWrite();
    requestRecipeRead();
    driver.frameList.append(numberedRequest(1));
    driver.frameList.append(numberedRequest(50));
    driver.jobType = JOB_POLL;
    driver.jobCount = 2;
    for (int call = 0; call < 3; ++call) {
        FRAME_PRO out = FRAME_PRO();
        EXPECT_EQ(intf_getSendFrame(&out), 1);
        expectSame(out, numberedRequest(1));
    }
    EXPECT_EQ(driver.frameList.size(), 2);
    EXPECT_EQ(driver.jobType, JOB_POLL);
    EXPECT_EQ(driver.jobCount, 2);
}

TEST_F(SendScheduler, HandsOutTheSameNewRequestAgain)
{
    poll(1);
    FRAME_PRO first = FRAME_PRO();
    FRAME_PRO second = FRAME_PRO();
    EXPECT_EQ(intf_getSendFrame(&first), 1);
    EXPECT_EQ(intf_getSendFrame(&second), 1);
    expectSame(second, first);
    expectSame(first, driver.frameList.first());
    EXPECT_EQ(driver.frameList.size(), 1);
    EXPECT_EQ(driver.sid, 1);
}

TEST_F(SendScheduler, SendsTheHandshakeWhileNotConnected)
{
    driver.connected = 0;
    poll(1);
    EXPECT_EQ(next(), "handshake");
    EXPECT_EQ(driver.jobType, JOB_POLL);
    EXPECT_EQ(driver.jobVar.address, 300);
}

// ---- Nothing to do -------------------------------------------------------------------------------------------------

TEST_F(SendScheduler, IdleTurnReturnsZero)
{
    FRAME_PRO out = numberedRequest(1);
    EXPECT_EQ(intf_getSendFrame(&out), 0);
    EXPECT_EQ(driver.jobType, JOB_NONE);
    expectSame(out, numberedRequest(1));
}

TEST_F(SendScheduler, IdleTurnResetsTheJob)
{
    driver.jobType = JOB_WRITE;
    driver.jobCount = 4;
    EXPECT_EQ(next(), "nothing");
    EXPECT_EQ(driver.jobType, JOB_NONE);
    EXPECT_EQ(driver.jobCount, 0);
    EXPECT_TRUE(driver.frameList.isEmpty());
}

TEST_F(SendScheduler, FiveWritesWithoutPollingAreFollowedByAnIdleTurn)
{
    queueWrites(6);
    driver.jobCount = 5;
    EXPECT_EQ(next(), "nothing");
    EXPECT_EQ(driver.jobCount, 0);
    EXPECT_EQ(next(), "write DM 1000");
}

TEST_F(SendScheduler, ThreeConditionalReadsWithoutPollingAreFollowedByAnIdleTurn)
{
    queueConditionReads(1);
    driver.jobCount = 3;
    EXPECT_EQ(next(), "nothing");
    EXPECT_EQ(driver.jobCount, 0);
    EXPECT_EQ(next(), "read HR 200");
}

// ---- Writes, conditional reads and the poll ------------------------------------------------------------------------

/// Every list has an entry; `jobCount` decides.
class SendSchedulerTurn : public SendScheduler {
protected:
    SendSchedulerTurn()
    {
        queueWrites(1);
        queueConditionReads(1);
        poll(1);
    }

    static std::string nextAt(qint32 jobCount)
    {
        driver.jobCount = jobCount;
        return next();
    }
};

TEST_F(SendSchedulerTurn, WritesGoFirst)
{
    EXPECT_EQ(nextAt(0), "write DM 1000");
    EXPECT_EQ(driver.jobType, JOB_WRITE);
    EXPECT_EQ(driver.jobCount, 1);
}

TEST_F(SendSchedulerTurn, FifthWriteGoesBeforeThePoll)
{
    EXPECT_EQ(nextAt(4), "write DM 1000");
    EXPECT_EQ(driver.jobCount, 5);
}

TEST_F(SendSchedulerTurn, SixthWriteLetsThePollGo)
{
    EXPECT_EQ(nextAt(5), "read WR 300");
    EXPECT_EQ(driver.jobType, JOB_POLL);
    EXPECT_EQ(driver.jobCount, 0);
}

TEST_F(SendSchedulerTurn, ThirdConditionalReadGoesBeforeThePoll)
{
    driver.writeList.clear();
    EXPECT_EQ(nextAt(2), "read HR 200");
    EXPECT_EQ(driver.jobType, JOB_CONDITION_READ);
    EXPECT_EQ(driver.jobCount, 3);
}

TEST_F(SendSchedulerTurn, FourthConditionalReadLetsThePollGo)
{
    driver.writeList.clear();
    EXPECT_EQ(nextAt(3), "read WR 300");
    EXPECT_EQ(driver.jobType, JOB_POLL);
    EXPECT_EQ(driver.jobCount, 0);
}

TEST_F(SendScheduler, SixWritesPendingWithPolling)
{
    queueWrites(6);
    poll(2);
    EXPECT_EQ(nextAndDone(7), (Requests{"write DM 1000", "write DM 1001", "write DM 1002", "write DM 1003",
                                        "write DM 1004", "read WR 300", "write DM 1005"}));
}

TEST_F(SendScheduler, WritesCountAgainstConditionalReads)
{
    queueWrites(2);
    queueConditionReads(3);
    poll(1);
    EXPECT_EQ(nextAndDone(7), (Requests{"write DM 1000", "write DM 1001", "read HR 200", "read WR 300", "read HR 201",
                                        "read HR 202", "read WR 300"}));
}

TEST_F(SendScheduler, PollWalksItsBlocksInACircle)
{
    poll(3);
    EXPECT_EQ(nextAndDone(4), (Requests{"read WR 300", "read WR 301", "read WR 302", "read WR 300"}));
}

TEST_F(SendScheduler, ListsKeepTheirHeadsWhileTheJobRuns)
{
    queueWrites(2);
    queueConditionReads(2);
    poll(2);
    EXPECT_EQ(next(), "write DM 1000");
    driver.frameList.clear();
    driver.jobCount = 5;
    EXPECT_EQ(next(), "read WR 300");
    driver.frameList.clear();
    driver.writeList.removeFirst();
    driver.writeList.removeFirst();
    EXPECT_EQ(next(), "read HR 200");
    EXPECT_EQ(driver.readList.first().address, 300);
    EXPECT_EQ(driver.conditionReadList.first().address, 200);
    EXPECT_EQ(driver.conditionReadList.size(), 2);
    EXPECT_EQ(driver.readList.size(), 2);
}

/// The whole record becomes the job, and its request serves it.
void expectJobIs(const VARIABLE &expected)
{
    EXPECT_EQ(driver.jobVar.requestId, expected.requestId);
    EXPECT_EQ(driver.jobVar.requestTag, expected.requestTag);
    EXPECT_EQ(driver.jobVar.regType.toStdString(), expected.regType.toStdString());
    EXPECT_EQ(driver.jobVar.address, expected.address);
    EXPECT_EQ(driver.jobVar.count, expected.count);
    EXPECT_TRUE(std::equal(expected.value, expected.value + VALUE_BUFFER_SIZE, driver.jobVar.value));
    EXPECT_EQ(driver.frameList.first().requestId, expected.requestId);
    EXPECT_EQ(driver.frameList.first().requestTag, expected.requestTag);
}

VARIABLE fullVariable()
{
    VARIABLE result = variable("DM", 5, 2);
    result.requestId = 31;
    result.requestTag = 32;
    std::fill_n(result.value, int(VALUE_BUFFER_SIZE), quint8(0x5A));
    return result;
}

TEST_F(SendScheduler, WriteJobIsTheWholeHead)
{
    driver.writeList.append(fullVariable());
    next();
    expectJobIs(fullVariable());
}

TEST_F(SendScheduler, ConditionalReadJobIsTheWholeHead)
{
    driver.conditionReadList.append(fullVariable());
    next();
    expectJobIs(fullVariable());
}

TEST_F(SendScheduler, PollJobIsTheWholeHead)
{
    driver.readList.append(fullVariable());
    next();
    expectJobIs(fullVariable());
}

// ---- Recipe requests -----------------------------------------------------------------------------------------------

TEST_F(SendScheduler, RecipeWriteSendsTheBlocksWords)
{
    planRecipe(2);
    requestRecipeWrite();
    driver.recipeIndex = 1;
    EXPECT_EQ(next(), "write CIO 20");
    EXPECT_EQ(driver.jobType, JOB_RECIPE_WRITE);
    EXPECT_EQ(driver.jobVar.requestTag, 71);
    EXPECT_EQ(driver.jobVar.count, 2);
    const FRAME_PRO &request = driver.frameList.first();
    EXPECT_EQ(request.requestTag, 71);
    EXPECT_EQ(request.sendLen, 38);
    // Words 102 and 103 of the recipe buffer: 3303 and 4404.
    const quint8 data[] = {0x33, 0x03, 0x44, 0x04};
    EXPECT_TRUE(std::equal(data, data + 4, request.frame + 34));
}

TEST_F(SendScheduler, RecipeReadAsksForTheBlock)
{
    planRecipe(2);
    requestRecipeRead();
    driver.recipeIndex = 1;
    EXPECT_EQ(next(), "read CIO 20");
    EXPECT_EQ(driver.jobType, JOB_RECIPE_READ);
    EXPECT_EQ(driver.jobVar.requestTag, 71);
    EXPECT_EQ(driver.frameList.first().dataLen, 4);
    EXPECT_TRUE(std::all_of(driver.jobVar.value, driver.jobVar.value + VALUE_BUFFER_SIZE,
                            [](quint8 byte) { return byte == 0; }));
}

TEST_F(SendScheduler, RecipeWriteGoesThroughItsBlocksAndEnds)
{
    planRecipe(2);
    requestRecipeWrite();
    EXPECT_EQ(nextAndDone(3), (Requests{"write CIO 10", "write CIO 20", "nothing"}));
}

TEST_F(SendScheduler, RecipeReadGoesThroughItsBlocksAndEnds)
{
    planRecipe(2);
    requestRecipeRead();
    EXPECT_EQ(nextAndDone(3), (Requests{"read CIO 10", "read CIO 20", "nothing"}));
}

TEST_F(SendScheduler, RecipesGoBeforeEverythingElse)
{
    queueWrites(1);
    queueConditionReads(1);
    poll(1);
    planRecipe(1);
    requestRecipeRead();
    driver.jobCount = 2;
    EXPECT_EQ(next(), "read CIO 10");
    EXPECT_EQ(driver.jobCount, 2);
}

TEST_F(SendScheduler, OnlyTheWriteIsServedWhenBothRecipesAreRequested)
{
    planRecipe(2);
    requestRecipeWrite();
    requestRecipeRead();
    EXPECT_EQ(nextAndDone(), "write CIO 10");
    EXPECT_EQ(nextAndDone(), "write CIO 20");
    EXPECT_EQ(sharedBlock[RECIPE_READ_FLAG], 1);
    EXPECT_EQ(nextAndDone(), "read CIO 10");
}

TEST_F(SendScheduler, OnlyTheValueOneRequestsARecipe)
{
    planRecipe(1);
    requestRecipeWrite(2);
    requestRecipeRead(255);
    EXPECT_EQ(next(), "nothing");
    requestRecipeRead();
    EXPECT_EQ(next(), "read CIO 10");
}

TEST_F(SendScheduler, OtherBytesOfTheSharedBlockRequestNothing)
{
    planRecipe(1);
    std::fill(sharedBlock.begin(), sharedBlock.end() - 2, quint8(1));
    EXPECT_EQ(next(), "nothing");
}

TEST_F(SendScheduler, RecipeRequestsStayUntouched)
{
    planRecipe(1);
    requestRecipeWrite();
    requestRecipeRead();
    next();
    EXPECT_EQ(sharedBlock[RECIPE_WRITE_FLAG], 1);
    EXPECT_EQ(sharedBlock[RECIPE_READ_FLAG], 1);
}

TEST_F(SendScheduler, WithoutASharedBlockNoRecipeIsRequested)
{
    planRecipe(1);
    poll(1);
    driver.runtimeBlock = nullptr;
    EXPECT_EQ(next(), "read WR 300");
}

TEST_F(SendScheduler, WithoutAMutexNoRecipeIsRequested)
{
    planRecipe(1);
    poll(1);
    requestRecipeWrite();
    requestRecipeRead();
    driver.runtimeMutex = nullptr;
    EXPECT_EQ(next(), "read WR 300");
}

// ---- Deliberate: past the last recipe block, the job in progress is repeated ---------------------------------------

struct RepeatRow {
    const char *name;
    qint32      jobType;
    const char *expected;
};

const RepeatRow REPEAT_ROWS[] = {
    {"None",            JOB_NONE,           "nothing"},
    {"Unused",          1,                  "nothing"},
    {"Write",           JOB_WRITE,          "write AR 9"},
    {"ConditionalRead", JOB_CONDITION_READ, "read AR 9"},
    {"Poll",            JOB_POLL,           "read AR 9"},
    {"RecipeWrite",     JOB_RECIPE_WRITE,   "write AR 9"},
    {"RecipeRead",      JOB_RECIPE_READ,    "read AR 9"},
    {"Unknown",         7,                  "nothing"},
};

class SendSchedulerRepeat : public SendScheduler, public ::testing::WithParamInterface<RepeatRow> {
protected:
    SendSchedulerRepeat()
    {
        planRecipe(2);
        queueWrites(1);
        poll(1);
        driver.recipeIndex = 2;
        driver.jobVar = variable("AR", 9, 1);
        driver.jobType = GetParam().jobType;
    }

    static void expectRepeatedUntilTheFlagIsCleared()
    {
        EXPECT_EQ(next(), GetParam().expected);
        driver.frameList.clear();
        EXPECT_EQ(next(), GetParam().expected);
        EXPECT_EQ(driver.jobType, GetParam().jobType);
        EXPECT_EQ(driver.recipeIndex, 2);
    }
};

TEST_P(SendSchedulerRepeat, WhileAWriteIsRequested)
{
    requestRecipeWrite();
    expectRepeatedUntilTheFlagIsCleared();
}

TEST_P(SendSchedulerRepeat, WhileAReadIsRequested)
{
    requestRecipeRead();
    expectRepeatedUntilTheFlagIsCleared();
}

std::string repeatName(const ::testing::TestParamInfo<RepeatRow> &info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(EveryJobType, SendSchedulerRepeat, ::testing::ValuesIn(REPEAT_ROWS), repeatName);

// ---- The runtime's mutex -------------------------------------------------------------------------------------------

TEST_F(SendScheduler, ReadsTheRequestsUnderTheMutex)
{
    planRecipe(1);
    mutex.lock();
    std::future<std::string> request = std::async(std::launch::async, [] { return next(); });
    EXPECT_EQ(request.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    requestRecipeRead();
    mutex.unlock();
    EXPECT_EQ(request.get(), "read CIO 10");
}

TEST_F(SendScheduler, LeavesTheMutexFree)
{
    planRecipe(1);
    requestRecipeWrite();
    EXPECT_EQ(next(), "write CIO 10");
    ASSERT_TRUE(mutex.tryLock());
    mutex.unlock();
}

TEST_F(SendScheduler, LeavesTheMutexFreeWhenNothingIsToBeSent)
{
    requestRecipeWrite();
    EXPECT_EQ(next(), "nothing");
    ASSERT_TRUE(mutex.tryLock());
    mutex.unlock();
}

TEST_F(SendScheduler, RepeatsARequestWithoutTheMutex)
{
    driver.frameList.append(numberedRequest(1));
    mutex.lock();
    std::future<std::string> request = std::async(std::launch::async, [] { return next(); });
    EXPECT_EQ(request.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    mutex.unlock();
    request.wait();
}

} // namespace
