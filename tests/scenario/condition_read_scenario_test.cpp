#include "scenario_fixture.h"

// Reads on demand: their pieces, their end signal and their queue.

class ConditionReadScenario : public ScenarioTest {
protected:
    void start(const std::string &property = "1#0#0#3#64")
    {
        initialise(property);
        ASSERT_NO_FATAL_FAILURE(connect());
    }
};

TEST_F(ConditionReadScenario, EndsWithItsSignalAfterTheDataAreStored)
{
    start();
    conditionRead({7, "DM", 100, 2}, 0, 31);
    Numbers seen;
    duringChange = [&] { seen = words(7, "DM", 100, 2); };
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0002
        < FINS 0000001A 00000002 00000000  C00002 000A00 003200 01  0101 0000  1234 0001
        .
    )");
    EXPECT_EQ(31, frame.requestId);
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
    EXPECT_EQ((Numbers{0x1234, 0x0001}), seen);
}

TEST_F(ConditionReadScenario, WatchersHearOfTheChangeBeforeTheSignal)
{
    start();
    watch({{7, "DM", 100, 1}});
    conditionRead({7, "DM", 100, 1});
    plc.word(0x82, 100) = 3;
    exchange(1);
    EXPECT_EQ((Lines{"1 7 DM 100", "-1 -1 -1 0"}), takeChanges());
}

TEST_F(ConditionReadScenario, LongReadIsCutAndSignalledOnce)
{
    start();
    conditionRead({7, "DM", 0, 150});
    exchange(2);
    EXPECT_EQ(Lines{}, takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
    EXPECT_EQ((Lines{"read 82 0000 64", "read 82 0040 64", "read 82 0080 22"}), plc.takeLog());
}

TEST_F(ConditionReadScenario, ReadOfExactlyTwoPiecesHasNoRest)
{
    start();
    conditionRead({7, "DM", 0, 128});
    conditionRead({7, "HR", 0, 64});
    conditionRead({7, "WR", 0, 65});
    exchange(3);
    EXPECT_FALSE(exchange()) << "the fourth piece waits for an idle turn";
    exchangeAll();
    EXPECT_EQ((Lines{"read 82 0000 64", "read 82 0040 64", "read B2 0000 64", "read B1 0000 64", "read B1 0040 1"}),
              plc.takeLog());
}

TEST_F(ConditionReadScenario, OnlyTheLatestReadIsSignalled)
{
    start();
    conditionRead({7, "DM", 100, 1});
    conditionRead({7, "DM", 200, 1});
    exchange(1);
    EXPECT_EQ(Lines{}, takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
}

TEST_F(ConditionReadScenario, EveryKeyTellsAReadFromTheLatest)
{
    start();
    conditionRead({7, "HR", 101, 2});
    conditionRead({8, "DM", 101, 2});
    conditionRead({8, "HR", 100, 2});
    conditionRead({8, "HR", 101, 1});
    conditionRead({8, "HR", 101, 2});
    ASSERT_EQ(3, exchangeAll());
    EXPECT_EQ(Lines{}, takeChanges());
    ASSERT_EQ(2, exchangeAll());
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
}

TEST_F(ConditionReadScenario, FailedReadIsSignalledAndEmptiesTheQueue)
{
    start("1#0#0#1#64");
    conditionRead({7, "DM", 100, 1});
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < = 2
        .
    )");
    EXPECT_EQ(Lines{"-1 -1 -1 -1"}, takeChanges());
}

TEST_F(ConditionReadScenario, FailureOfAnEarlierReadDropsTheLaterOnesUnsignalled)
{
    start("1#0#0#1#64");
    conditionRead({7, "DM", 100, 1});
    conditionRead({7, "DM", 200, 1});
    conditionRead({7, "DM", 300, 1});
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < = 2
        .
    )");
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(ConditionReadScenario, FailedPieceDropsTheOtherPieces)
{
    start("1#0#0#1#64");
    conditionRead({7, "DM", 0, 150});
    exchange(1);
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_FALSE(send());
    EXPECT_EQ(Lines{}, takeChanges()) << "the second piece is not the one that the runtime waits for";
}

// Deliberate: the job that meets the missing handshake counts as served by the handshake's reply.
TEST_F(ConditionReadScenario, HandshakeEndsTheReadThatMetIt)
{
    initialise("1#0#0#3#64");
    conditionRead({7, "DM", 100, 1});
    play(HANDSHAKE);
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
    play(".");
    EXPECT_EQ(Numbers{0}, words(7, "DM", 100));
}

// Deliberate: the bit number within the first word is not added before the division by 16.
TEST_F(ConditionReadScenario, BitRangeAcrossAWordIsOneWordShort)
{
    start();
    conditionRead({7, "CIO_bit", 40, 10}, -1);
    exchange(1);
    EXPECT_EQ(Lines{"read B0 0002 1"}, plc.takeLog());
}

TEST_F(ConditionReadScenario, BitReadsAreCutByEightTimesTheWordLimit)
{
    start();
    conditionRead({7, "DM_bit", 0, 600}, -1);
    exchange(2);
    EXPECT_EQ((Lines{"read 82 0000 32", "read 82 0020 6"}), plc.takeLog());
}

TEST_F(ConditionReadScenario, BitTypeOfAnotherKindIsCutByTheWordLimit)
{
    start();
    conditionRead({7, "DM_bit", 0, 128}, 0);
    exchange(2);
    EXPECT_EQ((Lines{"read 82 0000 4", "read 82 0004 4"}), plc.takeLog());
}

TEST_F(ConditionReadScenario, LargestBitPieceIsNotCut)
{
    start();
    conditionRead({7, "DM_bit", 0, 512}, -1);
    exchangeAll();
    EXPECT_EQ(Lines{"read 82 0000 32"}, plc.takeLog());
}

TEST_F(ConditionReadScenario, RepeatOfTheHeadIsQueuedAgain)
{
    start();
    conditionRead({7, "DM", 100, 1});
    conditionRead({7, "DM", 100, 1});
    EXPECT_EQ(2, exchangeAll());
    EXPECT_EQ((Lines{"-1 -1 -1 0", "-1 -1 -1 0"}), takeChanges()) << "both equal the latest read";
}

TEST_F(ConditionReadScenario, RepeatOfAWaitingReadTakesItsPlaceAndItsRequestId)
{
    start();
    conditionRead({7, "DM", 100, 1}, 0, 21);
    conditionRead({7, "DM", 200, 1}, 0, 22);
    conditionRead({7, "DM", 300, 1}, 0, 23);
    conditionRead({7, "DM", 200, 1}, 0, 24);
    Numbers ids;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(exchange());
        ids.push_back(frame.requestId);
    }
    EXPECT_EQ((Numbers{21, 24, 23}), ids);
    EXPECT_EQ((Lines{"read 82 0064 1", "read 82 00C8 1", "read 82 012C 1"}), plc.takeLog());
    EXPECT_EQ(0, exchangeAll());
}

TEST_F(ConditionReadScenario, QueueHoldsFiveHundredAndThirteen)
{
    start();
    for (int i = 0; i < 515; ++i)
        conditionRead({7, "DM", i, 1});
    int count = 0;
    for (int idle = 0; idle < 2;) {
        const bool served = exchange();
        count += served ? 1 : 0;
        idle = served ? 0 : idle + 1;
    }
    EXPECT_EQ(513, count);
    const Lines log = plc.takeLog();
    ASSERT_EQ(513U, log.size());
    EXPECT_EQ("read 82 0000 1", log[0]);
    EXPECT_EQ("read 82 01FF 1", log[511]);
    EXPECT_EQ("read 82 0202 1", log[512]) << "the newest one has the last place";
}
