#include "blocked_call.h"
#include "scenario_fixture.h"

// Recipe transfers in both directions, asked for by the two request bytes of the shared block.

namespace {

// The runtime's thread looks at, or changes, a request byte while it holds the mutex. The mutex class is not built with
// a thread checker's instrumentation, so these accesses are left out of the check.
__attribute__((noinline, no_sanitize("thread"))) int peek(const volatile quint8 *byte)
{
    return *byte;
}

__attribute__((noinline, no_sanitize("thread"))) void poke(volatile quint8 *byte, quint8 value)
{
    *byte = value;
}

} // namespace

class RecipeScenario : public ScenarioTest {
protected:
    struct Variable {
        int         stationNo;
        const char *regType;
        int         address;
        int         count;
        int         bufferOffset;
    };

    int setRecipe(const std::vector<Variable> &variables)
    {
        QVector<_RCP_VAR_PRO> list;
        for (const Variable &v : variables) {
            list.append(_RCP_VAR_PRO{v.stationNo, 7, QString::fromLatin1(v.regType), v.address, v.count,
                                     v.bufferOffset, 0});
        }
        return driver->setRcpAddress(list);
    }

    // Three blocks (HR 7, DM 100 to 104, DM 110), handed over out of order and with a gap, and one of another station.
    void start(const std::string &property = "1#0#0#3#64")
    {
        initialise(property);
        ASSERT_NO_FATAL_FAILURE(connect());
        EXPECT_EQ(4, setRecipe({{1, "DM", 110, 1, 5}, {1, "DM", 102, 3, 2}, {2, "DM", 0, 1, 40}, {1, "HR", 7, 2, 20},
                                {1, "DM", 100, 2, 0}}));
        for (int i = 0; i < RECIPE_BUFFER_WORDS; ++i)
            setRecipeWord(i, 0xA000 + i);
    }
};

TEST_F(RecipeScenario, WriteSendsEveryBlockAndThenClearsItsRequest)
{
    start();
    flag(RECIPE_WRITE_REQUEST) = 1;
    play(R"(
        > FINS 0000001E 00000002 00000000  800002 003200 000A00 01  0102 B2 0007 00 0002  A014 A015
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000
        > FINS 00000024 00000002 00000000  800002 003200 000A00 02  0102 82 0064 00 0005  A000 A001 A002 A003 A004
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 02  0102 0000
    )");
    EXPECT_EQ(1, flag(RECIPE_WRITE_REQUEST));
    play(R"(
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 03  0102 82 006E 00 0001  A005
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 03  0102 0000
    )");
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
    EXPECT_EQ(0, flag(RECIPE_READ_REQUEST));
    EXPECT_EQ(Lines{}, takeChanges());
    play(".");
}

TEST_F(RecipeScenario, ReadPlacesEveryWordAndThenClearsItsRequest)
{
    start();
    flag(RECIPE_READ_REQUEST) = 1;
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 B2 0007 00 0002
        < FINS 0000001A 00000002 00000000  C00002 000A00 003200 01  0101 0000  1234 5678
    )");
    EXPECT_EQ((Lines{"0 -1 RWI 20", "0 -1 RWI 21"}), takeChanges());
    EXPECT_EQ(0x1234, recipeWord(20));
    EXPECT_EQ(0x5678, recipeWord(21));
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 02  0101 82 0064 00 0005
        < FINS 00000020 00000002 00000000  C00002 000A00 003200 02  0101 0000  0101 0202 0303 0404 0505
    )");
    EXPECT_EQ((Lines{"0 -1 RWI 0", "0 -1 RWI 1", "0 -1 RWI 2", "0 -1 RWI 3", "0 -1 RWI 4"}), takeChanges());
    EXPECT_EQ(1, flag(RECIPE_READ_REQUEST));
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 03  0101 82 006E 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 03  0101 0000  0606
        .
    )");
    EXPECT_EQ(Lines{"0 -1 RWI 5"}, takeChanges());
    EXPECT_EQ(0, flag(RECIPE_READ_REQUEST));
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(0x0101 * (i + 1), recipeWord(i));
    EXPECT_EQ(0xA006, recipeWord(6)) << "a word of no variable was changed";
    EXPECT_EQ(0xA013, recipeWord(19));
    EXPECT_EQ(0xA016, recipeWord(22));
}

TEST_F(RecipeScenario, WordIsInTheBufferWhenItIsReported)
{
    start();
    flag(RECIPE_READ_REQUEST) = 1;
    plc.word(0xB2, 7) = 0x1111;
    plc.word(0xB2, 8) = 0x2222;
    Numbers seen;
    duringChange = [&] {
        seen.push_back(recipeWord(20));
        seen.push_back(recipeWord(21));
    };
    exchange(1);
    EXPECT_EQ((Numbers{0x1111, 0xA015, 0x1111, 0x2222}), seen);
}

TEST_F(RecipeScenario, ReadWordsEnterTheImageAndReachTheirWatchersFirst)
{
    start();
    watch({{7, "DM", 110, 1}});
    flag(RECIPE_READ_REQUEST) = 1;
    plc.word(0x82, 103) = 0x0103;
    plc.word(0x82, 110) = 0x0110;
    exchange(2);
    takeChanges();
    exchange(1);
    EXPECT_EQ((Lines{"1 7 DM 110", "0 -1 RWI 5"}), takeChanges());
    EXPECT_EQ(Numbers{0x0103}, words(7, "DM", 103));
}

// Deliberate: a read places each variable's words at its own offset, a write takes a block's words as one run.
TEST_F(RecipeScenario, ReadPlacesByVariableWhereWriteTakesOneRun)
{
    initialise("1#0#0#3#64");
    connect();
    setRecipe({{1, "DM", 100, 1, 0}, {1, "DM", 101, 1, 10}});
    for (int i = 0; i < RECIPE_BUFFER_WORDS; ++i)
        setRecipeWord(i, 0x0B00 + i);
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    EXPECT_EQ(0x0B00, plc.word(0x82, 100));
    EXPECT_EQ(0x0B01, plc.word(0x82, 101));
    plc.word(0x82, 100) = 0x1111;
    plc.word(0x82, 101) = 0x2222;
    flag(RECIPE_READ_REQUEST) = 1;
    exchange(1);
    EXPECT_EQ((Lines{"write 82 0064 2", "read 82 0064 2"}), plc.takeLog());
    EXPECT_EQ((Lines{"0 -1 RWI 0", "0 -1 RWI 10"}), takeChanges());
    EXPECT_EQ(0x1111, recipeWord(0));
    EXPECT_EQ(0x0B01, recipeWord(1));
    EXPECT_EQ(0x2222, recipeWord(10));
}

TEST_F(RecipeScenario, OverlappingVariablesShareTheWordsOfTheBlock)
{
    initialise("1#0#0#3#64");
    connect();
    setRecipe({{1, "DM", 100, 2, 0}, {1, "DM", 101, 2, 10}});
    flag(RECIPE_READ_REQUEST) = 1;
    plc.word(0x82, 100) = 1;
    plc.word(0x82, 101) = 2;
    plc.word(0x82, 102) = 3;
    exchange(1);
    EXPECT_EQ(Lines{"read 82 0064 3"}, plc.takeLog());
    EXPECT_EQ((Lines{"0 -1 RWI 0", "0 -1 RWI 1", "0 -1 RWI 10", "0 -1 RWI 11"}), takeChanges());
    EXPECT_EQ(1, recipeWord(0));
    EXPECT_EQ(2, recipeWord(1));
    EXPECT_EQ(2, recipeWord(10));
    EXPECT_EQ(3, recipeWord(11));
}

// Deliberate: the block ends where the inner variable ends; the words behind the reply's end are 0.
TEST_F(RecipeScenario, InnerVariableShortensTheBlock)
{
    initialise("1#0#0#3#64");
    connect();
    setRecipe({{1, "DM", 100, 4, 0}, {1, "DM", 101, 1, 10}});
    setRecipeWord(2, 0x7777);
    setRecipeWord(3, 0x7777);
    setRecipeWord(4, 0x7777);
    flag(RECIPE_READ_REQUEST) = 1;
    plc.word(0x82, 100) = 1;
    plc.word(0x82, 101) = 2;
    plc.word(0x82, 102) = 3;
    exchange(1);
    EXPECT_EQ(Lines{"read 82 0064 2"}, plc.takeLog());
    EXPECT_EQ((Lines{"0 -1 RWI 0", "0 -1 RWI 1", "0 -1 RWI 2", "0 -1 RWI 3", "0 -1 RWI 10"}), takeChanges());
    EXPECT_EQ(2, recipeWord(1));
    EXPECT_EQ(0, recipeWord(2));
    EXPECT_EQ(0, recipeWord(3));
    EXPECT_EQ(0x7777, recipeWord(4));
    EXPECT_EQ(2, recipeWord(10));
}

TEST_F(RecipeScenario, BlocksKeepToTheFrameSize)
{
    initialise("1#0#0#3#4");
    connect();
    setRecipe({{1, "DM", 0, 2, 0}, {1, "DM", 2, 2, 2}, {1, "DM", 4, 2, 4}});
    flag(RECIPE_READ_REQUEST) = 1;
    exchange(2);
    EXPECT_EQ((Lines{"read 82 0000 4", "read 82 0004 2"}), plc.takeLog());
    EXPECT_EQ(0, flag(RECIPE_READ_REQUEST));
}

TEST_F(RecipeScenario, BothRequestsAreServedWriteFirst)
{
    start();
    flag(RECIPE_WRITE_REQUEST) = 1;
    flag(RECIPE_READ_REQUEST) = 1;
    exchange(3);
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
    EXPECT_EQ(1, flag(RECIPE_READ_REQUEST));
    EXPECT_EQ((Lines{"write B2 0007 2", "write 82 0064 5", "write 82 006E 1"}), plc.takeLog());
    exchange(3);
    EXPECT_EQ(0, flag(RECIPE_READ_REQUEST));
    EXPECT_EQ((Lines{"read B2 0007 2", "read 82 0064 5", "read 82 006E 1"}), plc.takeLog());
    EXPECT_FALSE(exchange());
}

TEST_F(RecipeScenario, TransferCanBeAskedForAgain)
{
    start();
    for (int round = 0; round < 2; ++round) {
        flag(RECIPE_WRITE_REQUEST) = 1;
        EXPECT_EQ(3, exchangeAll());
        EXPECT_EQ("write B2 0007 2", plc.takeLog().at(0));
    }
}

TEST_F(RecipeScenario, OnlyTheValueOneIsARequest)
{
    start();
    flag(RECIPE_WRITE_REQUEST) = 2;
    flag(RECIPE_READ_REQUEST) = 0xFF;
    EXPECT_FALSE(send());
}

TEST_F(RecipeScenario, NeighbouringBytesOfTheSharedBlockAreNoRequestAndStayAsTheyAre)
{
    start();
    flag(RECIPE_WRITE_REQUEST - 1) = 1;
    EXPECT_FALSE(send());
    flag(RECIPE_WRITE_REQUEST) = 1;
    EXPECT_EQ(3, exchangeAll());
    flag(RECIPE_READ_REQUEST) = 1;
    EXPECT_EQ(3, exchangeAll());
    EXPECT_EQ(1, flag(RECIPE_WRITE_REQUEST - 1));
}

TEST_F(RecipeScenario, RequestDuringAPollWaitsForItsReply)
{
    start();
    watch({{7, "DM", 100, 1}, {7, "WR", 50, 1}});
    ASSERT_TRUE(send());
    const Bytes poll = sent();
    flag(RECIPE_READ_REQUEST) = 1;
    ASSERT_TRUE(send());
    EXPECT_EQ(toHex(poll), toHex(sent()));
    EXPECT_EQ(1, receive(plc.answer(poll)));
    EXPECT_EQ(Lines{}, takeChanges()) << "the poll's reply was taken for a recipe's";
    exchange(5);
    EXPECT_EQ((Lines{"read B1 0032 1", "read B2 0007 2", "read 82 0064 5", "read 82 006E 1", "read 82 0064 1",
                     "read B1 0032 1"}), plc.takeLog());
}

TEST_F(RecipeScenario, LostLinkEndsTheTransferAndTheNextOneStartsAtTheFirstBlock)
{
    start("1#0#0#1#64");
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
    EXPECT_FALSE(send());
    connect();
    plc.takeLog();
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(3);
    EXPECT_EQ((Lines{"write B2 0007 2", "write 82 0064 5", "write 82 006E 1"}), plc.takeLog());
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
}

TEST_F(RecipeScenario, LostLinkClearsOnlyTheRequestOfItsTransfer)
{
    start("1#0#0#1#64");
    flag(RECIPE_READ_REQUEST) = 1;
    ASSERT_TRUE(send());
    flag(RECIPE_WRITE_REQUEST) = 1;
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ(0, flag(RECIPE_READ_REQUEST));
    EXPECT_EQ(1, flag(RECIPE_WRITE_REQUEST));
}

// Deliberate: the job that meets the missing handshake counts as served by the handshake's reply.
TEST_F(RecipeScenario, HandshakeStandsForTheFirstBlock)
{
    initialise("1#0#0#3#64");
    setRecipe({{1, "DM", 100, 1, 0}, {1, "DM", 200, 1, 1}});
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    EXPECT_EQ(1, flag(RECIPE_WRITE_REQUEST));
    exchange(1);
    EXPECT_EQ((Lines{"handshake", "write 82 00C8 1"}), plc.takeLog());
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
}

// Deliberate: both directions share the position in the plan, and the write goes first at any block.
TEST_F(RecipeScenario, WriteAskedForDuringAReadLeavesOutTheBlocksThatWereRead)
{
    start();
    flag(RECIPE_READ_REQUEST) = 1;
    exchange(1);
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(2);
    EXPECT_EQ((Lines{"read B2 0007 2", "write 82 0064 5", "write 82 006E 1"}), plc.takeLog());
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST)) << "the first block was never written";
    exchange(3);
    EXPECT_EQ((Lines{"read B2 0007 2", "read 82 0064 5", "read 82 006E 1"}), plc.takeLog());
}

// Deliberate: only the end of a transfer takes the position back to the first block.
TEST_F(RecipeScenario, RequestWithdrawnDuringATransferMakesTheNextOneBeginInTheMiddle)
{
    start();
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    flag(RECIPE_WRITE_REQUEST) = 0;
    EXPECT_FALSE(send());
    plc.takeLog();
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(2);
    EXPECT_EQ((Lines{"write 82 0064 5", "write 82 006E 1"}), plc.takeLog());
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
}

TEST_F(RecipeScenario, RequestThatOutlivesALostLinkLosesItsFirstBlock)
{
    start("1#0#0#1#64");
    flag(RECIPE_READ_REQUEST) = 1;
    ASSERT_TRUE(send());
    flag(RECIPE_WRITE_REQUEST) = 1;
    EXPECT_EQ(2, receive(Bytes()));
    exchange(3);
    EXPECT_EQ((Lines{"handshake", "write 82 0064 5", "write 82 006E 1"}), plc.takeLog());
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
}

TEST_F(RecipeScenario, RequestsCarryTheNumberOfTheJobBefore)
{
    start();
    watch({{7, "DM", 500, 1}});
    exchange(1);
    EXPECT_EQ(4, frame.requestId);
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    EXPECT_EQ("HR", frame.regType.toStdString());
    EXPECT_EQ(4, frame.requestId);
}

TEST_F(RecipeScenario, WithoutBlocksAndWithoutJobNothingIsSent)
{
    initialise("1#0#0#3#64");
    flag(RECIPE_WRITE_REQUEST) = 1;
    flag(RECIPE_READ_REQUEST) = 1;
    EXPECT_FALSE(send());
    flag(RECIPE_WRITE_REQUEST) = 0;
    EXPECT_FALSE(send());
    EXPECT_EQ(1, flag(RECIPE_READ_REQUEST));
}

// Deliberate: a request without blocks repeats the last job for as long as the runtime keeps the request up.
TEST_F(RecipeScenario, WithoutBlocksTheLastPollIsRepeated)
{
    initialise("1#0#0#3#64");
    connect();
    watch({{7, "WR", 50, 1}, {7, "DM", 100, 1}});
    exchange(1);
    flag(RECIPE_READ_REQUEST) = 1;
    exchange(2);
    flag(RECIPE_READ_REQUEST) = 0;
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    flag(RECIPE_WRITE_REQUEST) = 0;
    exchange(1);
    EXPECT_EQ(Lines(5, "read B1 0032 1"), plc.takeLog()) << "three repeats have turned the two blocks three times";
}

TEST_F(RecipeScenario, WithoutBlocksTheLastWriteIsRepeatedAndLeavesTheEmptyQueueAlone)
{
    initialise("1#0#0#3#64");
    connect();
    writeWords(7, "DM", 100, {5});
    exchange(1);
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(2);
    flag(RECIPE_WRITE_REQUEST) = 0;
    EXPECT_FALSE(exchange());
    EXPECT_EQ((Lines{"write 82 0064 1", "write 82 0064 1", "write 82 0064 1"}), plc.takeLog());
    EXPECT_EQ(5, plc.word(0x82, 100));
    EXPECT_EQ(Numbers{5}, words(7, "DM", 100));
}

TEST_F(RecipeScenario, RequestRecordsHoldTheWordsOfAWriteAndNoneOfARead)
{
    start();
    flag(RECIPE_WRITE_REQUEST) = 1;
    ASSERT_TRUE(send());
    EXPECT_EQ("14A015A000", toHex(Bytes(frame.value, frame.value + 5)));
    EXPECT_EQ(0, frame.value[1023]);
    EXPECT_EQ(1, receive(plc.answer(sent())));
    exchange(2);
    flag(RECIPE_READ_REQUEST) = 1;
    ASSERT_TRUE(send());
    EXPECT_EQ(Bytes(1024, 0), Bytes(frame.value, frame.value + 1024));
}

TEST_F(RecipeScenario, LargestBlockFillsTheFrame)
{
    initialise("1#0#0#3#600");
    connect();
    setRecipe({{1, "DM", 0, 495, 0}});
    for (int i = 0; i < RECIPE_BUFFER_WORDS; ++i)
        setRecipeWord(i, 0x5000 + i);
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    EXPECT_EQ(1024, frame.sendLen);
    EXPECT_EQ(0x5000, plc.word(0x82, 0));
    EXPECT_EQ(0x5000 + 494, plc.word(0x82, 494));
    EXPECT_EQ(0, plc.word(0x82, 495));
}

TEST_F(RecipeScenario, VariableBeyondTheFrameStopsAtItsEnd)
{
    initialise("1#0#0#3#64");
    connect();
    setRecipe({{1, "DM", 0, 600, 0}});
    for (int i = 0; i < RECIPE_BUFFER_WORDS; ++i)
        setRecipeWord(i, 0x5000 + i);
    flag(RECIPE_WRITE_REQUEST) = 1;
    ASSERT_TRUE(send());
    EXPECT_EQ(1234, frame.sendLen);
    EXPECT_EQ("51EE", toHex(Bytes(frame.frame + 1022, frame.frame + 1024)));
    EXPECT_EQ("FF51", toHex(Bytes(frame.value + 1022, frame.value + 1024)));
    EXPECT_EQ(1, receive(fromHex("FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000")));
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
}

TEST_F(RecipeScenario, LongVariableIsReadWhole)
{
    initialise("1#0#0#3#64");
    connect();
    setRecipe({{1, "DM", 0, 600, 0}});
    for (int i = 0; i < 600; ++i)
        plc.word(0x82, i) = static_cast<std::uint16_t>(0x6000 + i);
    flag(RECIPE_READ_REQUEST) = 1;
    exchange(1);
    for (int i = 0; i < 600; ++i)
        ASSERT_EQ(0x6000 + i, recipeWord(i));
    EXPECT_EQ(600U, takeChanges().size());
}

TEST_F(RecipeScenario, RecipeListOfTheRuntimeStaysAsItWas)
{
    initialise("1#0#0#3#64");
    QVector<_RCP_VAR_PRO> list;
    list.append(_RCP_VAR_PRO{1, 7, QString::fromLatin1("DM"), 110, 1, 5, 0});
    list.append(_RCP_VAR_PRO{1, 7, QString::fromLatin1("DM"), 100, 1, 0, 0});
    list.append(_RCP_VAR_PRO{2, 7, QString::fromLatin1("DM"), 50, 1, 9, 0});
    EXPECT_EQ(2, driver->setRcpAddress(list));
    ASSERT_EQ(3, static_cast<int>(list.size()));
    EXPECT_EQ(110, list.at(0).address);
    EXPECT_EQ(100, list.at(1).address);
    EXPECT_EQ(50, list.at(2).address);
}

TEST_F(RecipeScenario, SchedulerReadsTheRequestsUnderTheMutex)
{
    start();
    flag(RECIPE_WRITE_REQUEST) = 1;
    qint32 result = -1;
    FRAME_PRO out = FRAME_PRO();
    EXPECT_TRUE(waitsForMutex(*mutex, [&] { result = driver->getSendFrame(&out); },
                              [&] { poke(&flag(RECIPE_WRITE_REQUEST), 0); }));
    EXPECT_EQ(0, result) << "the request was read before the mutex was taken";
}

TEST_F(RecipeScenario, SchedulerNeedsNoMutexToHandOutARequestAgain)
{
    start();
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    qint32 result = -1;
    FRAME_PRO out = FRAME_PRO();
    EXPECT_FALSE(waitsForMutex(*mutex, [&] { result = driver->getSendFrame(&out); }, [] {}));
    EXPECT_EQ(1, result);
}

TEST_F(RecipeScenario, RequestIsClearedUnderTheMutex)
{
    start();
    for (const int request : {RECIPE_WRITE_REQUEST, RECIPE_READ_REQUEST}) {
        flag(request) = 1;
        exchange(2);
        ASSERT_TRUE(send());
        const Bytes answer = plc.answer(sent());
        QByteArray reply(reinterpret_cast<const char *>(answer.data()), static_cast<int>(answer.size()));
        QString text;
        qint32 result = -1;
        int whileLocked = -1;
        mutexIsTaken = true;
        EXPECT_TRUE(waitsForMutex(*mutex, [&] { result = driver->dealRcvFrame(reply, text); },
                                  [&] { whileLocked = peek(&flag(request)); }));
        mutexIsTaken = false;
        EXPECT_EQ(1, whileLocked);
        EXPECT_EQ(1, result);
        EXPECT_EQ(0, flag(request));
        takeChanges();
    }
}

TEST_F(RecipeScenario, RepliesBeforeTheLastBlockNeedNoMutex)
{
    start();
    flag(RECIPE_WRITE_REQUEST) = 1;
    ASSERT_TRUE(send());
    const Bytes answer = plc.answer(sent());
    QByteArray reply(reinterpret_cast<const char *>(answer.data()), static_cast<int>(answer.size()));
    QString text;
    qint32 result = -1;
    EXPECT_FALSE(waitsForMutex(*mutex, [&] { result = driver->dealRcvFrame(reply, text); }, [] {}));
    EXPECT_EQ(1, result);
}
