#include "scenario_fixture.h"

// Bit writes: the bits of one word that are outstanding together, and the report of each completion.

class BitWriteScenario : public ScenarioTest {
protected:
    void start(const std::string &property = "1#0#0#3#64")
    {
        initialise(property);
        ASSERT_NO_FATAL_FAILURE(connect());
    }

    // DM 100 holds `value` in the PLC and in the image.
    void pollDm100(int value)
    {
        watch({{7, "DM", 100, 1}});
        plc.word(0x82, 100) = static_cast<std::uint16_t>(value);
        exchange(1);
        watch({});
        takeChanges();
        plc.takeLog();
    }
};

TEST_F(BitWriteScenario, FrameCarriesWordBitAndOneBytePerBit)
{
    start();
    writeBits(7, "CIO_bit", 1605, {1});
    writeBits(7, "DM_bit", 524287, {0});
    writeBits(7, "WR_bit", 14, {1, 0, 1});
    play(R"(
        > FINS 0000001B 00000002 00000000  800002 003200 000A00 01  0102 30 0064 05 0001  01
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000
        > FINS 0000001B 00000002 00000000  800002 003200 000A00 02  0102 02 7FFF 0F 0001  00
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 02  0102 0000
        > FINS 0000001D 00000002 00000000  800002 003200 000A00 03  0102 31 0000 0E 0003  01 00 01
        < FINS 00000016 00000002 00000000  C00002 000A00 003200 03  0102 0000
        .
    )");
}

TEST_F(BitWriteScenario, EveryBitAreaHasItsCode)
{
    start();
    for (const char *regType : {"CIO_bit", "WR_bit", "HR_bit", "AR_bit", "DM_bit"})
        writeBits(7, regType, 7168, {1});
    exchange(5);
    EXPECT_EQ((Lines{"write 30 01C0 1", "write 31 01C0 1", "write 32 01C0 1", "write 33 01C0 1", "write 02 01C0 1"}),
              plc.takeLog());
}

TEST_F(BitWriteScenario, OtherBitsOfTheWordStayAsTheyAre)
{
    start();
    pollDm100(0x8181);
    writeBits(7, "DM_bit", 1605, {1});
    EXPECT_EQ(Numbers{0x81A1}, words(7, "DM", 100));
    writeBits(7, "DM_bit", 1615, {0});
    EXPECT_EQ(Numbers{0x01A1}, words(7, "DM", 100));
    exchange(2);
    EXPECT_EQ(Numbers{0x01A1}, words(7, "DM", 100));
    EXPECT_EQ(0x01A1, plc.word(0x82, 100));
}

TEST_F(BitWriteScenario, WordStaysPendingUntilItsLastBitIsDone)
{
    start();
    writeBits(7, "DM_bit", 1605, {1});
    writeBits(7, "DM_bit", 1614, {1});
    EXPECT_EQ(Numbers{0x4020}, words(7, "DM", 100));
    exchange(1);
    EXPECT_EQ(Lines{"1 7 DM_bit 1605"}, takeChanges());
    EXPECT_EQ(Numbers{0x4020}, words(7, "DM", 100)) << "the second bit is still shown as written";
    exchange(1);
    EXPECT_EQ(Lines{"1 7 DM_bit 1614"}, takeChanges());
    EXPECT_EQ(Numbers{0x4020}, words(7, "DM", 100));
}

TEST_F(BitWriteScenario, FirstCompletionStoresOnlyItsOwnBit)
{
    start("1#0#0#1#64");
    writeBits(7, "DM_bit", 1605, {1});
    writeBits(7, "DM_bit", 1606, {1});
    exchange(1);
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ((Lines{"1 7 DM_bit 1605", "1 7 DM_bit 1606"}), takeChanges());
    EXPECT_EQ(Numbers{0x0020}, words(7, "DM", 100)) << "the failed bit falls back, the first one stays";
}

TEST_F(BitWriteScenario, ClearedBitIsStoredAsCleared)
{
    start("1#0#0#1#64");
    pollDm100(0xFFFF);
    writeBits(7, "DM_bit", 1607, {0});
    writeBits(7, "DM_bit", 1608, {0});
    exchange(1);
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ(Numbers{0xFF7F}, words(7, "DM", 100));
}

TEST_F(BitWriteScenario, EveryBitOfAPieceIsReportedUnderItsFirstAddress)
{
    start();
    writeBits(7, "DM_bit", 1600, {1, 0, 1});
    EXPECT_EQ(Lines{}, takeChanges());
    exchange(1);
    EXPECT_EQ((Lines{"1 7 DM_bit 1600", "1 7 DM_bit 1600", "1 7 DM_bit 1600"}), takeChanges());
    EXPECT_EQ(Numbers{5}, words(7, "DM", 100));
}

TEST_F(BitWriteScenario, FailureIsReportedInTheSameWayAndFallsBack)
{
    start("1#0#0#1#64");
    writeBits(7, "DM_bit", 1600, {1, 0, 1});
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    EXPECT_EQ((Lines{"1 7 DM_bit 1600", "1 7 DM_bit 1600", "1 7 DM_bit 1600"}), takeChanges());
    EXPECT_EQ(Numbers{0}, words(7, "DM", 100));
}

TEST_F(BitWriteScenario, WatchersHearOfTheChangeAtOnceAndOfTheCompletionLater)
{
    start();
    watch({{7, "DM_bit", 1605, 1}, {7, "DM", 100, 1}});
    writeBits(7, "DM_bit", 1605, {1});
    EXPECT_EQ((Lines{"1 7 DM_bit 1605", "1 7 DM 100"}), takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{"1 7 DM_bit 1605"}, takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(BitWriteScenario, WriteOfTheBitsOwnValueIsNoChange)
{
    start();
    pollDm100(0x00F0);
    watch({{7, "DM_bit", 1605, 1}});
    writeBits(7, "DM_bit", 1605, {1});
    EXPECT_EQ(Lines{}, takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{"1 7 DM_bit 1605"}, takeChanges()) << "the completion is reported all the same";
}

// Deliberate: 1 sets a bit, any other value clears it.
TEST_F(BitWriteScenario, OnlyTheValueOneSetsABit)
{
    start();
    pollDm100(0x000F);
    writeBits(7, "DM_bit", 1600, {2, 255, 0, 1});
    EXPECT_EQ(Numbers{0x0008}, words(7, "DM", 100));
}

TEST_F(BitWriteScenario, RangeAcrossAWordBoundaryTouchesBothWords)
{
    start();
    writeBits(7, "DM_bit", 1614, {1, 1, 1, 0});
    EXPECT_EQ((Numbers{0xC000, 0x0001}), words(7, "DM", 100, 2));
    EXPECT_EQ((Numbers{0, 1, 1, 1, 0}), bits(7, "DM_bit", 1613, 5));
    exchange(1);
    EXPECT_EQ(Lines{"write 02 0064 4 bit 14"}, plc.takeLog());
    EXPECT_EQ((Numbers{0xC000, 0x0001}), words(7, "DM", 100, 2));
    EXPECT_EQ(Lines(4, "1 7 DM_bit 1614"), takeChanges());
}

TEST_F(BitWriteScenario, LongBitWriteIsCutByTheWordLimit)
{
    start();
    writeBits(7, "CIO_bit", 3, Numbers(150, 1));
    exchange(3);
    EXPECT_EQ((Lines{"write 30 0000 64 bit 3", "write 30 0004 64 bit 3", "write 30 0008 22 bit 3"}), plc.takeLog());
    EXPECT_EQ(150U, takeChanges().size());
    EXPECT_EQ((Numbers{0xFFF8, 0xFFFF}), words(7, "CIO", 0, 2));
    EXPECT_EQ((Numbers{0xFFFF, 0x01FF, 0}), words(7, "CIO", 8, 3));
}

TEST_F(BitWriteScenario, LargestBitWriteFillsTheFrame)
{
    start("1#0#0#3#990");
    writeBits(7, "CIO_bit", 0, Numbers(990, 1));
    exchange(1);
    EXPECT_EQ(1024, frame.sendLen);
    EXPECT_EQ("F8", toHex(Bytes(frame.frame + 7, frame.frame + 8))) << "990 modulo 256, and 26";
    EXPECT_EQ(0xFFFF, plc.word(0xB0, 60));
    EXPECT_EQ(0x3FFF, plc.word(0xB0, 61));
}

TEST_F(BitWriteScenario, BitWriteBeyondTheFrameStopsAtItsEnd)
{
    start("1#0#0#3#1100");
    writeBits(7, "CIO_bit", 0, Numbers(1100, 1));
    ASSERT_TRUE(send());
    EXPECT_EQ(1134, frame.sendLen);
    EXPECT_EQ(30, frame.rcvLen);
    EXPECT_EQ(0, frame.dataPos);
    EXPECT_EQ(1, frame.frame[1023]);
    EXPECT_EQ(1, frame.value[1023]);
    EXPECT_EQ(1, receive(fromHex("FINS 00000016 00000002 00000000  C00002 000A00 003200 01  0102 0000")));
    EXPECT_EQ(Numbers(1100, 1), bits(7, "CIO_bit", 0, 1100));
    EXPECT_EQ(1100U, takeChanges().size());
}

// Deliberate: a word write sets no bit mask, so a bit's completion ends the word's pending state too.
TEST_F(BitWriteScenario, BitCompletionEndsThePendingStateOfAQueuedWordWrite)
{
    start();
    writeBits(7, "DM_bit", 1600, {1});
    writeWords(7, "DM", 100, {0x0F01});
    EXPECT_EQ(Numbers{0x0F01}, words(7, "DM", 100));
    exchange(1);
    EXPECT_EQ(Numbers{0x0001}, words(7, "DM", 100));
    exchange(1);
    EXPECT_EQ(Numbers{0x0F01}, words(7, "DM", 100));
}

TEST_F(BitWriteScenario, WordCompletionLeavesTheBitOutstandingButShowsThePlcsValue)
{
    start();
    writeWords(7, "DM", 100, {0x0F00});
    writeBits(7, "DM_bit", 1600, {1});
    EXPECT_EQ(Numbers{0x0F01}, words(7, "DM", 100));
    exchange(1);
    EXPECT_EQ(Numbers{0x0F01}, words(7, "DM", 100)) << "the written image, the bit included, became the PLC's value";
    exchange(1);
    EXPECT_EQ(Numbers{0x0F01}, words(7, "DM", 100));
    EXPECT_EQ(0x0F01, plc.word(0x82, 100));
}
