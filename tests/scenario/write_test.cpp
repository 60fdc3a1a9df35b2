#include "scenario_fixture.h"

// The panel's word writes: the queue, the frames and the data image until the PLC has answered.

class WriteScenario : public ScenarioTest {
protected:
    void start(const std::string &property = "1#0#0#3#64")
    {
        initialise(property);
        ASSERT_NO_FATAL_FAILURE(connect());
    }

    static Numbers rising(int count, int first = 1)
    {
        Numbers values;
        for (int i = 0; i < count; ++i)
            values.push_back(first + i);
        return values;
    }

    // Exchanges until there is nothing to send even after an idle turn; returns their number.
    int drain()
    {
        int total = 0;
        for (int served = 1; served > 0; total += served)
            served = exchangeAll();
        return total;
    }
};

TEST_F(WriteScenario, ValueIsShownAndReportedBeforeItIsSent)
{
    start();
    watch({{7, "DM", 100, 1}, {7, "DM_bit", 1600, 1}});
    writeWords(7, "DM", 100, {0x1201});
    EXPECT_EQ((Lines{"1 7 DM_bit 1600", "1 7 DM 100"}), takeChanges());
    EXPECT_EQ(Numbers{0x1201}, words(7, "DM", 100));
    play(R"(
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 82 0064 00 0001  1201
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000
    )");
    EXPECT_EQ(5, frame.requestId);
    EXPECT_EQ(7, frame.requestTag);
    EXPECT_EQ(30, frame.rcvLen);
    EXPECT_EQ(Lines{}, takeChanges()) << "a write that ended well is not reported";
    EXPECT_EQ(Numbers{0x1201}, words(7, "DM", 100));
}

TEST_F(WriteScenario, WrittenValueIsThePlcsValueAfterwards)
{
    start();
    watch({{7, "DM", 100, 1}});
    writeWords(7, "DM", 100, {9});
    exchange(1);
    takeChanges();
    exchange(1);
    EXPECT_EQ(Lines{}, takeChanges()) << "the poll brings the value that was written";
    plc.word(0x82, 100) = 0;
    exchange(1);
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges());
}

TEST_F(WriteScenario, WriteOfTheShownValueIsSentWithoutANotification)
{
    start();
    watch({{7, "DM", 100, 1}});
    writeWords(7, "DM", 100, {0});
    EXPECT_EQ(Lines{}, takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{"write 82 0064 1"}, plc.takeLog());
}

TEST_F(WriteScenario, ReadingInsideTheCallbackSeesTheValueFromBefore)
{
    start();
    watch({{7, "DM", 100, 1}});
    Numbers seen;
    duringChange = [&] { seen = words(7, "DM", 100); };
    writeWords(7, "DM", 100, {9});
    EXPECT_EQ(Numbers{0}, seen);
    EXPECT_EQ(Numbers{9}, words(7, "DM", 100));
}

TEST_F(WriteScenario, LongWriteIsCutIntoFrames)
{
    start();
    writeWords(7, "DM", 1000, rising(150));
    EXPECT_EQ(3, drain());
    EXPECT_EQ((Lines{"write 82 03E8 64", "write 82 0428 64", "write 82 0468 22"}), plc.takeLog());
    for (int i = 0; i < 150; ++i)
        ASSERT_EQ(1 + i, plc.word(0x82, 1000 + i));
    EXPECT_EQ(0, plc.word(0x82, 1150));
    EXPECT_EQ(rising(150), words(7, "DM", 1000, 150));
}

TEST_F(WriteScenario, WriteOfTwoFullFramesHasNoRest)
{
    start();
    writeWords(7, "DM", 1000, rising(128));
    EXPECT_EQ(2, drain());
    EXPECT_EQ((Lines{"write 82 03E8 64", "write 82 0428 64"}), plc.takeLog());
}

TEST_F(WriteScenario, CountOfZeroOrLessWritesNothing)
{
    start();
    const quint8 data[2] = {1, 1};
    EXPECT_EQ(1, driver->setData(7, QString::fromLatin1("DM"), 100, 0, data, 5));
    EXPECT_EQ(1, driver->setData(7, QString::fromLatin1("DM"), 100, -64, data, 5));
    EXPECT_FALSE(send());
    EXPECT_EQ(Numbers{0}, words(7, "DM", 100));
}

// Deliberate: the FINS/TCP length is one byte wide, so 266 goes out as 10.
TEST_F(WriteScenario, LengthOfAHundredAndTwentyWordsWraps)
{
    start("1#0#0#3#200");
    writeWords(7, "DM", 100, rising(120));
    ASSERT_TRUE(send());
    ASSERT_EQ(274, frame.sendLen);
    EXPECT_EQ("46494E530000000A0000000200000000", toHex(Bytes(frame.frame, frame.frame + 16)));
    EXPECT_EQ("0102820064000078" "0001", toHex(Bytes(frame.frame + 26, frame.frame + 36)));
    EXPECT_EQ("0078", toHex(Bytes(frame.frame + 272, frame.frame + 274)));
}

TEST_F(WriteScenario, LengthsOnBothSidesOfTheWrap)
{
    start("1#0#0#3#200");
    writeWords(7, "DM", 0, rising(114));
    writeWords(7, "HR", 0, rising(115));
    ASSERT_TRUE(send());
    EXPECT_EQ(262, frame.sendLen);
    EXPECT_EQ("000000FE", toHex(Bytes(frame.frame + 4, frame.frame + 8)));
    EXPECT_EQ(1, receive(plc.answer(sent())));
    ASSERT_TRUE(send());
    EXPECT_EQ(264, frame.sendLen);
    EXPECT_EQ("00000000", toHex(Bytes(frame.frame + 4, frame.frame + 8)));
}

TEST_F(WriteScenario, LargestWriteFillsTheFrame)
{
    start("1#0#0#3#600");
    writeWords(7, "DM", 0, rising(495));
    EXPECT_EQ(1, drain());
    EXPECT_EQ(1024, frame.sendLen);
    EXPECT_EQ(1, plc.word(0x82, 0));
    EXPECT_EQ(495, plc.word(0x82, 494));
}

TEST_F(WriteScenario, WriteBeyondTheFrameStopsAtItsEnd)
{
    start("1#0#0#3#600");
    writeWords(7, "DM", 0, rising(600));
    ASSERT_TRUE(send());
    EXPECT_EQ(1234, frame.sendLen);
    EXPECT_EQ("01EE" "01EF", toHex(Bytes(frame.frame + 1020, frame.frame + 1024)));
    EXPECT_EQ(1, receive(fromHex("FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000")));
    EXPECT_EQ(rising(600), words(7, "DM", 0, 600));
}

TEST_F(WriteScenario, CounterIsWrittenBehindTheTimers)
{
    start();
    writeWords(7, "C", 5, {0x0102});
    writeWords(7, "T", 5, {0x0304});
    play(R"(
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 01  0102 89 8005 00 0001  0102
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000
        > FINS 0000001C 00000002 00000000  800002 003200 000A00 02  0102 89 0005 00 0001  0304
    )");
}

TEST_F(WriteScenario, WaitingWriteIsReplacedByANewerOne)
{
    start();
    writeWords(7, "DM", 200, {1});
    writeWords(7, "DM", 100, {2}, 21);
    writeWords(7, "DM", 300, {3});
    writeWords(7, "DM", 100, {4}, 22);
    exchange(1);
    exchange(1);
    EXPECT_EQ(22, frame.requestId);
    EXPECT_EQ(4, plc.word(0x82, 100));
    EXPECT_EQ(1, drain());
    EXPECT_EQ((Lines{"write 82 00C8 1", "write 82 0064 1", "write 82 012C 1"}), plc.takeLog());
}

TEST_F(WriteScenario, WriteInProgressIsNeverReplaced)
{
    start();
    writeWords(7, "DM", 100, {1});
    ASSERT_TRUE(send());
    const Bytes first = sent();
    writeWords(7, "DM", 100, {2});
    ASSERT_TRUE(send());
    EXPECT_EQ(toHex(first), toHex(sent()));
    EXPECT_EQ(1, receive(plc.answer(first)));
    EXPECT_EQ(1, plc.word(0x82, 100));
    EXPECT_EQ(1, drain());
    EXPECT_EQ(2, plc.word(0x82, 100));
    EXPECT_EQ(Numbers{2}, words(7, "DM", 100));
}

TEST_F(WriteScenario, WritesThatDifferInOneKeyAreNotReplaced)
{
    start();
    writeWords(1, "HR", 0, {0});
    writeWords(7, "DM", 100, {1});
    writeWords(8, "DM", 100, {2});
    writeWords(7, "WR", 100, {3});
    writeWords(7, "DM", 101, {4});
    writeWords(7, "DM", 100, {5, 6});
    EXPECT_EQ(6, drain());
}

// Deliberate: a flood of writes keeps replacing the last place of the queue.
TEST_F(WriteScenario, QueueHoldsFiveHundredAndThirteen)
{
    start();
    for (int i = 0; i < 515; ++i)
        writeWords(7, "DM", i, {i + 1});
    EXPECT_EQ(513, drain());
    EXPECT_EQ(512, plc.word(0x82, 511));
    EXPECT_EQ(0, plc.word(0x82, 512)) << "the thirteenth behind 500 lost its place";
    EXPECT_EQ(0, plc.word(0x82, 513));
    EXPECT_EQ(515, plc.word(0x82, 514));
}

TEST_F(WriteScenario, FullQueueStillReplacesAWaitingWrite)
{
    start();
    for (int i = 0; i < 513; ++i)
        writeWords(7, "DM", i, {i + 1});
    writeWords(7, "DM", 1, {0x7777});
    EXPECT_EQ(513, drain());
    EXPECT_EQ(0x7777, plc.word(0x82, 1));
    EXPECT_EQ(513, plc.word(0x82, 512));
}

TEST_F(WriteScenario, DirectWritesStayInTheImage)
{
    start("1#1#0#3#64");
    watch({{7, "DM", 100, 1}});
    writeWords(7, "DM", 100, {5});
    writeBits(7, "DM_bit", 1616, {1});
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges());
    exchange(2);
    EXPECT_EQ((Lines{"read 82 0064 1", "read 82 0064 1"}), plc.takeLog());
    EXPECT_EQ(Numbers{5}, words(7, "DM", 100)) << "the poll brought nothing new";
    EXPECT_EQ(Numbers{1}, words(7, "DM", 101));
    plc.word(0x82, 100) = 6;
    exchange(1);
    EXPECT_EQ(Numbers{6}, words(7, "DM", 100));
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges());
}

TEST_F(WriteScenario, NewPlcValueReplacesTheShownOneUntilTheWriteEnds)
{
    start();
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    const Bytes poll = sent();
    writeWords(7, "DM", 100, {5});
    plc.word(0x82, 100) = 9;
    EXPECT_EQ(1, receive(plc.answer(poll)));
    EXPECT_EQ(Numbers{9}, words(7, "DM", 100));
    EXPECT_EQ((Lines{"1 7 DM 100", "1 7 DM 100"}), takeChanges());
    exchange(1);
    EXPECT_EQ(Numbers{5}, words(7, "DM", 100));
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(WriteScenario, UnchangedPlcValueLeavesTheWrittenOneShown)
{
    start();
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    const Bytes poll = sent();
    writeWords(7, "DM", 100, {5});
    EXPECT_EQ(1, receive(plc.answer(poll)));
    EXPECT_EQ(Numbers{5}, words(7, "DM", 100));
}

TEST_F(WriteScenario, UnwatchedWordIsWrittenSilently)
{
    start();
    writeWords(7, "DM", 100, {5});
    exchange(1);
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(WriteScenario, PiecesEndOneByOne)
{
    start("1#0#0#1#2");
    watch({{7, "DM", 100, 4}});
    writeWords(7, "DM", 100, {1, 2, 3, 4});
    takeChanges();
    exchange(1);
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ((Lines{"1 7 DM 102", "1 7 DM 103"}), takeChanges()) << "only the failed piece falls back";
    EXPECT_EQ((Numbers{1, 2, 0, 0}), words(7, "DM", 100, 4));
}
