#include "scenario_fixture.h"

// Rejected replies, the loss of the link and its recovery, and the PLC's refusal because of its operating mode.

class LinkScenario : public ScenarioTest {
protected:
    void start(const std::string &property = "1#0#0#3#64")
    {
        initialise(property);
        ASSERT_NO_FATAL_FAILURE(connect());
    }

    // One write refused with `endCode` (four hex digits), in a session that just began.
    void refuseWrite(const std::string &endCode, int result)
    {
        writeWords(7, "DM", 100, {5});
        play("> FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 82 0064 00 0001  0005\n"
             "< FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 " + endCode
             + " = " + std::to_string(result));
    }
};

TEST_F(LinkScenario, RejectedRepliesUpToTheLimitDropTheLink)
{
    start();
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 02  0101 0000  1234 = 8
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 00  0101 0000  1234 = 8
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 FF  0101 0000  1234 = 2
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 01  0101 0000  1234 = 0
    )");
    EXPECT_EQ(Numbers{0}, words(7, "DM", 100));
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(LinkScenario, RecoveryTakesTheNewNodesAndGoesOnCountingServiceIds)
{
    start("1#0#0#1#64");
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < = 2
        > FINS 0000000C 00000000 00000000 00000000
        < FINS 00000010 00000001 00000000 0000000B 00000033
        > FINS 0000001A 00000002 00000000  800002 003300 000B00 02  0101 82 0064 00 0001
        < FINS 00000018 00000002 00000000  C00002 000B00 003300 02  0101 0000  1234
    )");
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges());
}

TEST_F(LinkScenario, RejectedHandshakesCountToo)
{
    initialise("1#0#0#2#64");
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000000C 00000000 00000000 00000000
        < = 8
        > FINS 0000000C 00000000 00000000 00000000
        < = 2
        > FINS 0000000C 00000000 00000000 00000000
        < = 8
        < FINS 00000010 00000001 00000000 0000000A 00000032 = 1
    )");
}

TEST_F(LinkScenario, OnlyRejectionsInARowCount)
{
    start();
    watch({{7, "DM", 100, 1}});
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(send());
        EXPECT_EQ(8, receive(Bytes()));
        EXPECT_EQ(8, receive(Bytes()));
        EXPECT_EQ(1, receive(plc.answer(sent())));
    }
}

TEST_F(LinkScenario, HandshakeResetsTheCount)
{
    initialise("1#0#0#2#64");
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000000C 00000000 00000000 00000000
        < = 8
        < FINS 00000010 00000001 00000000 0000000A 00000032
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < = 8
        < = 2
    )");
}

TEST_F(LinkScenario, AcceptedWriteResetsTheCount)
{
    start("1#0#0#2#64");
    for (int round = 0; round < 2; ++round) {
        writeWords(7, "DM", 100, {round});
        ASSERT_TRUE(send());
        EXPECT_EQ(8, receive(Bytes()));
        EXPECT_EQ(1, receive(plc.answer(sent())));
    }
}

TEST_F(LinkScenario, CountStartsAgainAfterTheLinkWasDropped)
{
    start("1#0#0#2#64");
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    EXPECT_EQ(8, receive(Bytes()));
    EXPECT_EQ(2, receive(Bytes()));
    ASSERT_TRUE(send());
    EXPECT_EQ(8, receive(Bytes()));
    EXPECT_EQ(2, receive(Bytes()));
}

TEST_F(LinkScenario, LimitsOfOneAndBelowDropTheLinkAtOnce)
{
    for (const char *property : {"1#0#0#1#64", "1#0#0#0#64", "1#0#0#-5#64"}) {
        SCOPED_TRACE(property);
        initialise(property);
        watch({{7, "DM", 100, 1}});
        ASSERT_TRUE(send());
        EXPECT_EQ(2, receive(Bytes()));
    }
}

TEST_F(LinkScenario, NullAndEmptyRepliesAreRejected)
{
    start();
    watch({{7, "DM", 100, 10}});
    ASSERT_TRUE(send());
    EXPECT_EQ(8, receive(QByteArray()));
    EXPECT_EQ("7#DM100(10)(0)", info);
    EXPECT_EQ(8, receive(QByteArray("")));
    EXPECT_EQ("7#DM100(10)(0)", info);
}

TEST_F(LinkScenario, ShortAndLongRepliesAreRejected)
{
    start("1#0#0#9#64");
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < FINS 00000017 00000002 00000000  C00002 000A00 003200 01  0101 0000  12 = 8
    )");
    EXPECT_EQ("7#DM100(1)(31)", info);
    play(R"(
        < FINS 00000019 00000002 00000000  C00002 000A00 003200 01  0101 0000  1234 56 = 8
        < 46 = 8
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 01  0101 0000  1234 = 1
    )");
    EXPECT_EQ(Numbers{0x1234}, words(7, "DM", 100));
}

TEST_F(LinkScenario, PollGoesOnWithTheNextBlockAfterALoss)
{
    start("1#0#0#1#64");
    watch({{7, "WR", 1, 1}, {7, "HR", 1, 1}, {7, "DM", 1, 1}});
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    exchange(3);
    EXPECT_EQ((Lines{"handshake", "read 82 0001 1", "read B1 0001 1"}), plc.takeLog())
        << "the lost block and the handshake's block each had their turn";
}

// The handshake takes the turn of the block behind the one that was given up, round after round.
TEST_F(LinkScenario, BlockBehindARefusedOneIsNeverRead)
{
    start("1#0#0#1#64");
    watch({{7, "WR", 1, 1}, {7, "HR", 1, 1}, {7, "DM", 1, 1}});
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(send());
        EXPECT_EQ("WR", frame.regType.toStdString());
        EXPECT_EQ(2, receive(Bytes()));
        exchange(2);
        EXPECT_EQ((Lines{"handshake", "read 82 0001 1"}), plc.takeLog());
    }
}

TEST_F(LinkScenario, FailedWriteFallsBackToThePlcsValue)
{
    start("1#0#0#1#64");
    watch({{7, "DM", 100, 2}});
    plc.word(0x82, 100) = 3;
    plc.word(0x82, 101) = 5;
    exchange(1);
    takeChanges();
    writeWords(7, "DM", 100, {5, 5});
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges());
    EXPECT_EQ((Numbers{5, 5}), words(7, "DM", 100, 2));
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges()) << "only the word that falls back";
    EXPECT_EQ((Numbers{3, 5}), words(7, "DM", 100, 2));
    plc.takeLog();
    exchange(2);
    EXPECT_EQ((Lines{"handshake", "read 82 0064 2"}), plc.takeLog()) << "a failed write is not tried again";
}

// Deliberate: the job that meets the missing handshake counts as served by the handshake's reply.
TEST_F(LinkScenario, WriteThatMeetsTheMissingHandshakeIsDoneWithoutBeingSent)
{
    start("1#0#0#1#64");
    watch({{7, "DM", 100, 1}});
    writeWords(7, "DM", 200, {1});
    writeWords(7, "DM", 201, {2});
    writeWords(7, "DM", 202, {3});
    takeChanges();
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    exchange(2);
    EXPECT_EQ((Lines{"handshake", "write 82 00CA 1"}), plc.takeLog());
    EXPECT_EQ((Numbers{0, 2, 3}), words(7, "DM", 200, 3));
    EXPECT_EQ(0, plc.word(0x82, 201));
    EXPECT_EQ(3, plc.word(0x82, 202));
}

// Six writes and the polls between them: one result 2 each, six and a fifth of it and one.
TEST_F(LinkScenario, BringDownEndsTheQueuedWritesOneByOne)
{
    start("1#0#0#1#64");
    watch({{7, "DM", 300, 1}});
    ASSERT_TRUE(send());
    for (int i = 0; i < 6; ++i)
        writeWords(7, "DM", 100 + i, {9});
    for (int result = 0; result < 7; ++result) {
        ASSERT_TRUE(send());
        EXPECT_EQ(2, receive(Bytes()));
    }
    EXPECT_EQ(Numbers{9}, words(7, "DM", 105)) << "the last write still waits";
    ASSERT_TRUE(send());
    EXPECT_EQ(0, frame.requestId);
    EXPECT_EQ("", frame.regType.toStdString());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ(Numbers{0}, words(7, "DM", 105));
    exchange(3);
    EXPECT_EQ((Lines{"handshake", "read 82 012C 1", "read 82 012C 1"}), plc.takeLog());
}

TEST_F(LinkScenario, JobAfterARecoveryIsNotReportedAsFailed)
{
    start("1#0#0#1#64");
    conditionRead({7, "DM", 100, 1});
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ(Lines{"-1 -1 -1 -1"}, takeChanges());
    conditionRead({7, "DM", 100, 1});
    exchange(1);
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
    conditionRead({7, "DM", 100, 1});
    exchange(1);
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
    EXPECT_EQ((Lines{"handshake", "read 82 0064 1"}), plc.takeLog());
}

TEST_F(LinkScenario, RejectedReplyIsNotAnEndOfTheJob)
{
    start();
    conditionRead({7, "DM", 100, 1});
    ASSERT_TRUE(send());
    EXPECT_EQ(8, receive(Bytes()));
    EXPECT_EQ(Lines{}, takeChanges());
    EXPECT_EQ(1, receive(plc.answer(sent())));
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
}

// Deliberate: the refused write keeps its service ID behind the mode change, so its later answer counts as stale.
TEST_F(LinkScenario, ModeRefusalSendsTheModeChangeFirstAndThenTheWriteWithItsOldServiceId)
{
    start();
    writeWords(7, "DM", 100, {5});
    play(R"(
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 82 0064 00 0001  0005
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 2203 = 8
        > FINS 00000017 00000002 00000000  800002 003200 000A00 02  0401 FFFF 02
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 02  0401 0000 = 1
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 82 0064 00 0001  0005
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000 = 8
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 82 0064 00 0001  0005
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000 = 8
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 82 0064 00 0001  0005
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000 = 2
        .
    )");
    EXPECT_EQ(Numbers{0}, words(7, "DM", 100)) << "the write counts as failed";
}

TEST_F(LinkScenario, ModeChangeCarriesNoVariable)
{
    start();
    refuseWrite("2203", 8);
    ASSERT_TRUE(send());
    EXPECT_EQ(31, frame.sendLen);
    EXPECT_EQ(30, frame.rcvLen);
    EXPECT_EQ(0, frame.dataLen);
    EXPECT_TRUE(frame.regType.isEmpty());
    EXPECT_EQ(8, receive(Bytes()));
    EXPECT_EQ("0#0(0)(0)", info);
}

TEST_F(LinkScenario, EveryModeRefusalSendsTheModeChange)
{
    for (const char *endCode : {"2203", "2204", "2206"}) {
        SCOPED_TRACE(endCode);
        ASSERT_NO_FATAL_FAILURE(reload());
        start();
        refuseWrite(endCode, 8);
        play("> FINS 00000017 00000002 00000000  800002 003200 000A00 02  0401 FFFF 02");
    }
}

// Deliberate: every other end code of a write, errors included, counts as its acknowledgement.
TEST_F(LinkScenario, EveryOtherEndCodeAcknowledgesTheWrite)
{
    for (const char *endCode : {"0000", "0001", "1101", "1103", "2103", "2303", "0003", "2200", "2201", "2202", "2205",
                                "2207", "2208", "2243", "2283", "A203"}) {
        SCOPED_TRACE(endCode);
        ASSERT_NO_FATAL_FAILURE(reload());
        start();
        refuseWrite(endCode, 1);
        play(".");
        EXPECT_EQ(Numbers{5}, words(7, "DM", 100));
    }
}

// What a runtime does to keep the PLC's mode: the frame is left unsent, and the connection's node addresses told again.
TEST_F(LinkScenario, ModeChangeThatIsNotSentEndsTheWriteAndTheConnectionGoesOn)
{
    start();
    watch({{7, "DM", 300, 1}});
    refuseWrite("2206", 8);
    takeChanges();
    ASSERT_TRUE(send());
    EXPECT_EQ(0x04, frame.frame[26]);
    EXPECT_EQ(8, receive(Bytes()));
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ(Numbers{0}, words(7, "DM", 100)) << "the write has failed";
    play("> FINS 0000000C 00000000 00000000 00000000\n"
         "< FINS 00000010 00000001 00000000 0000000A 00000032\n"
         "> FINS 0000001A 00000002 00000000  800002 003200 000A00 03  0101 82 012C 00 0001\n");
}

TEST_F(LinkScenario, RefusedModeChangeIsQueuedOnceMoreAndNotAgain)
{
    start("1#0#0#9#64");
    refuseWrite("2203", 8);
    play(R"(
        > FINS 00000017 00000002 00000000  800002 003200 000A00 02  0401 FFFF 02
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 02  0401 2204 = 8
        > FINS 00000017 00000002 00000000  800002 003200 000A00 03  0401 FFFF 02
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 03  0401 2206 = 8
        > FINS 00000017 00000002 00000000  800002 003200 000A00 03  0401 FFFF 02
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 03  0401 0000 = 1
        > FINS 00000017 00000002 00000000  800002 003200 000A00 02  0401 FFFF 02
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 02  0401 0000 = 8
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 03  0401 0000 = 1
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 82 0064 00 0001  0005
    )");
}

TEST_F(LinkScenario, ModeRefusalCountsAsARejectedReply)
{
    start("1#0#0#1#64");
    refuseWrite("2203", 2);
    play(".");
}

TEST_F(LinkScenario, ReadRefusedByTheModeSendsNoModeChange)
{
    start();
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 01  0101 2203  1234 = 1
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 02  0101 82 0064 00 0001
    )");
}
