#include "scenario_fixture.h"

#include <set>

// The cyclic poll: requests, the data image and the change notifications.

class PollScenario : public ScenarioTest {
protected:
    // The handshake is the first block's turn, so that the poll goes on with the second block.
    void start(const std::vector<Watched> &addresses, const std::string &property = "1#0#0#3#64")
    {
        initialise(property);
        blocks = watch(addresses);
        ASSERT_NO_FATAL_FAILURE(play(HANDSHAKE));
    }

    int blocks = 0;
};

TEST_F(PollScenario, CycleWithChanges)
{
    start({{7, "DM", 100, 2}, {8, "CIO_bit", 37, 1}});
    EXPECT_EQ(2, blocks);
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0002
        < FINS 0000001A 00000002 00000000  C00002 000A00 003200 01  0101 0000  1234 0001
    )");
    EXPECT_EQ((Lines{"1 7 DM 100", "1 7 DM 101"}), takeChanges());
    EXPECT_EQ("7#DM100(2)(34)", info);
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 02  0101 B0 0002 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 02  0101 0000  0020
    )");
    EXPECT_EQ(Lines{"1 8 CIO_bit 37"}, takeChanges());
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 03  0101 82 0064 00 0002
        < FINS 0000001A 00000002 00000000  C00002 000A00 003200 03  0101 0000  1234 0101
    )");
    EXPECT_EQ(Lines{"1 7 DM 101"}, takeChanges()) << "only the word that changed";
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 04  0101 B0 0002 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 04  0101 0000  0020
    )");
    EXPECT_EQ(Lines{}, takeChanges());
    EXPECT_EQ((Numbers{0x1234, 0x0101}), words(7, "DM", 100, 2));
    EXPECT_EQ((Numbers{0, 1, 0}), bits(8, "CIO_bit", 36, 3));
}

TEST_F(PollScenario, ValueBytesArriveLowByteFirst)
{
    start({{7, "DM", 100, 1}});
    plc.word(0x82, 100) = 0x1234;
    ASSERT_TRUE(exchange());
    quint8 out[3] = {0xEE, 0xEE, 0xEE};
    driver->getData(7, QString::fromLatin1("DM"), 100, 1, out);
    EXPECT_EQ(0x34, out[0]);
    EXPECT_EQ(0x12, out[1]);
    EXPECT_EQ(0xEE, out[2]);
}

TEST_F(PollScenario, BitsAreReportedLowestFirstAndThenTheWord)
{
    start({{7, "DM_bit", 1615, 1}, {7, "DM_bit", 1600, 1}, {7, "DM_bit", 1605, 1}, {7, "DM", 100, 1}});
    plc.word(0x82, 100) = 0xFFFF;
    ASSERT_TRUE(exchange());
    EXPECT_EQ((Lines{"1 7 DM_bit 1600", "1 7 DM_bit 1605", "1 7 DM_bit 1615", "1 7 DM 100"}), takeChanges());
    plc.word(0x82, 100) = 0x7FFF;
    ASSERT_TRUE(exchange());
    EXPECT_EQ((Lines{"1 7 DM_bit 1615", "1 7 DM 100"}), takeChanges());
    plc.word(0x82, 100) = 0x7FFD;
    ASSERT_TRUE(exchange());
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges()) << "an unwatched bit of a watched word";
}

TEST_F(PollScenario, UnwatchedBitOfAWordWatchedByBitsIsNotReported)
{
    start({{7, "CIO_bit", 33, 1}});
    plc.word(0xB0, 2) = 0x0005;
    ASSERT_TRUE(exchange());
    EXPECT_EQ(Lines{}, takeChanges());
    EXPECT_EQ((Numbers{1, 0, 1, 0}), bits(7, "CIO_bit", 32, 4));
}

TEST_F(PollScenario, FirstPollOfZeroIsNotReported)
{
    start({{7, "DM", 100, 1}});
    ASSERT_TRUE(exchange());
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(PollScenario, BlocksTakeTurns)
{
    start({{1, "DM", 500, 1}, {1, "HR", 3, 1}, {1, "WR", 4, 1}});
    EXPECT_EQ(3, blocks);
    exchange(5);
    EXPECT_EQ((Lines{"read B2 0003 1", "read 82 01F4 1", "read B1 0004 1", "read B2 0003 1", "read 82 01F4 1"}),
              plc.takeLog());
}

TEST_F(PollScenario, SingleBlockIsPolledAgainAndAgain)
{
    start({{1, "DM", 500, 1}});
    exchange(3);
    EXPECT_EQ((Lines{"read 82 01F4 1", "read 82 01F4 1", "read 82 01F4 1"}), plc.takeLog());
}

TEST_F(PollScenario, RequestWithoutReplyIsHandedOutUnchanged)
{
    start({{7, "DM", 100, 2}});
    ASSERT_TRUE(send());
    const Bytes first = sent();
    writeWords(7, "DM", 200, {1});
    flag(RECIPE_WRITE_REQUEST) = 1;
    flag(RECIPE_READ_REQUEST) = 1;
    for (int i = 0; i < 3; ++i) {
        frame = FRAME_PRO();
        ASSERT_TRUE(send());
        EXPECT_EQ(toHex(first), toHex(sent()));
        EXPECT_EQ(34, frame.rcvLen);
        EXPECT_EQ(30, frame.dataPos);
        EXPECT_EQ(4, frame.dataLen);
        EXPECT_EQ("DM", frame.regType.toStdString());
        EXPECT_EQ(100, frame.address);
    }
}

TEST_F(PollScenario, ServiceIdsRunTo254AndThenFrom0)
{
    start({{7, "DM", 100, 1}});
    exchange(257);
    ASSERT_EQ(257U, plc.serviceIds().size());
    for (std::size_t i = 0; i < 254; ++i)
        EXPECT_EQ(static_cast<int>(i) + 1, plc.serviceIds()[i]);
    EXPECT_EQ(0, plc.serviceIds()[254]);
    EXPECT_EQ(1, plc.serviceIds()[255]);
    EXPECT_EQ(2, plc.serviceIds()[256]);
}

TEST_F(PollScenario, CountersFollowTheTimersInTheSameArea)
{
    start({{7, "C", 5, 1}, {7, "T", 5, 1}, {7, "C", 4095, 1}});
    EXPECT_EQ(3, blocks);
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 89 8005 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 01  0101 0000  0123
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 02  0101 89 8FFF 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 02  0101 0000  0000
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 03  0101 89 0005 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 03  0101 0000  0456
    )");
    EXPECT_EQ((Lines{"1 7 C 5", "1 7 T 5"}), takeChanges());
    EXPECT_EQ(Numbers{0x0123}, words(7, "C", 5));
    EXPECT_EQ(Numbers{0x0456}, words(7, "T", 5));
}

TEST_F(PollScenario, EveryWordAreaHasItsCode)
{
    start({{1, "CIO", 1, 1}, {1, "WR", 1, 1}, {1, "HR", 1, 1}, {1, "AR", 1, 1}, {1, "DM", 1, 1}});
    exchange(5);
    EXPECT_EQ((Lines{"read B1 0001 1", "read B2 0001 1", "read B3 0001 1", "read 82 0001 1", "read B0 0001 1"}),
              plc.takeLog());
}

TEST_F(PollScenario, BitItemsAreReadAsWordsOfTheirArea)
{
    start({{1, "CIO_bit", 37, 20}, {1, "WR_bit", 16, 16}, {1, "HR_bit", 31, 1}, {1, "AR_bit", 7168, 17},
           {1, "DM_bit", 524287, 1}});
    exchange(5);
    EXPECT_EQ((Lines{"read B1 0001 1", "read B2 0001 1", "read B3 01C0 2", "read 82 7FFF 1", "read B0 0002 2"}),
              plc.takeLog());
}

TEST_F(PollScenario, WordsOfAGapAreReadAlong)
{
    start({{7, "DM", 100, 10}, {7, "DM", 120, 5}});
    EXPECT_EQ(1, blocks);
    exchange(1);
    EXPECT_EQ(Lines{"read 82 0064 25"}, plc.takeLog());
}

TEST_F(PollScenario, BlockShrinksToTheEndOfAnInnerItem)
{
    start({{7, "DM", 100, 3}, {7, "DM_bit", 1605, 1}});
    exchange(1);
    EXPECT_EQ(Lines{"read 82 0064 1"}, plc.takeLog());
}

TEST_F(PollScenario, LongestBlockHasTheConfiguredNumberOfWords)
{
    start({{7, "DM", 0, 60}, {7, "DM", 60, 4}, {7, "HR", 0, 60}, {7, "HR", 60, 5}});
    EXPECT_EQ(3, blocks);
    exchange(3);
    EXPECT_EQ((Lines{"read B2 003C 5", "read 82 0000 64", "read B2 0000 60"}), plc.takeLog());
}

TEST_F(PollScenario, OverlappingBlocksShareTheImage)
{
    start({{7, "DM", 0, 60}, {7, "DM", 50, 20}});
    EXPECT_EQ(2, blocks);
    plc.word(0x82, 49) = 0x0049;
    plc.word(0x82, 55) = 0x0055;
    plc.word(0x82, 69) = 0x0069;
    exchange(1);
    EXPECT_EQ((Lines{"1 7 DM 55", "1 7 DM 69"}), takeChanges());
    plc.word(0x82, 55) = 0x1155;
    exchange(1);
    EXPECT_EQ((Lines{"1 7 DM 49", "1 7 DM 55"}), takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{}, takeChanges()) << "both blocks agree about the shared words";
    EXPECT_EQ(Numbers{0x0049}, words(7, "DM", 49));
    EXPECT_EQ(Numbers{0x1155}, words(7, "DM", 55));
    EXPECT_EQ(Numbers{0x0069}, words(7, "DM", 69));
    EXPECT_EQ((Lines{"read 82 0032 20", "read 82 0000 60", "read 82 0032 20"}), plc.takeLog());
}

TEST_F(PollScenario, OverlappingBlocksOfTwoTagsKeepTwoImages)
{
    start({{1, "DM", 0, 60}, {2, "DM", 50, 20}});
    plc.word(0x82, 55) = 0x0055;
    exchange(1);
    EXPECT_EQ(Lines{"1 2 DM 55"}, takeChanges());
    EXPECT_EQ(Numbers{0}, words(1, "DM", 55));
    exchange(1);
    EXPECT_EQ(Lines{"1 1 DM 55"}, takeChanges());
    EXPECT_EQ(Numbers{0x0055}, words(1, "DM", 55));
}

// Deliberate: merging ignores the tag, and a block carries the tag of its first item only.
TEST_F(PollScenario, ItemsOfTwoTagsInOneBlockArriveUnderTheFirstTag)
{
    start({{1, "DM", 100, 1}, {2, "DM", 101, 1}});
    EXPECT_EQ(1, blocks);
    plc.word(0x82, 100) = 5;
    plc.word(0x82, 101) = 6;
    exchange(1);
    EXPECT_EQ(Lines{"1 1 DM 100"}, takeChanges());
    EXPECT_EQ(Numbers{6}, words(1, "DM", 101));
    EXPECT_EQ(Numbers{0}, words(2, "DM", 101));
}

// Deliberate: the end code of a read is not looked at; whatever came is the value.
TEST_F(PollScenario, RefusedReadIsStoredAsData)
{
    start({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
        < FINS 00000018 00000002 00000000  C00002 000A00 003200 01  0101 1103  4321
    )");
    EXPECT_EQ(Numbers{0x4321}, words(7, "DM", 100));
}

TEST_F(PollScenario, ReadingInsideTheCallbackSeesTheValueFromBefore)
{
    start({{7, "DM", 100, 2}});
    plc.word(0x82, 100) = 11;
    plc.word(0x82, 101) = 12;
    exchange(1);
    takeChanges();
    Numbers seen;
    duringChange = [&] {
        const Numbers now = words(7, "DM", 100, 2);
        seen.insert(seen.end(), now.begin(), now.end());
    };
    plc.word(0x82, 100) = 21;
    plc.word(0x82, 101) = 22;
    exchange(1);
    EXPECT_EQ((Numbers{11, 12, 21, 12}), seen);
    EXPECT_EQ((Numbers{21, 22}), words(7, "DM", 100, 2));
}

TEST_F(PollScenario, ReadingNewWordsInsideTheCallbackKeepsTheStoreInPlace)
{
    start({{7, "DM", 100, 2}});
    plc.word(0x82, 100) = 21;
    plc.word(0x82, 101) = 22;
    duringChange = [&] { words(9, "DM", 1000, 200); };
    exchange(1);
    EXPECT_EQ((Numbers{21, 22}), words(7, "DM", 100, 2));
    EXPECT_EQ(Numbers(200, 0), words(9, "DM", 1000, 200));
}

TEST_F(PollScenario, NewPlanReplacesTheOldOneAndKeepsTheImage)
{
    start({{7, "DM", 100, 2}});
    plc.word(0x82, 100) = 21;
    plc.word(0x82, 101) = 22;
    exchange(1);
    takeChanges();
    EXPECT_EQ(1, watch({{7, "DM", 101, 2}}));
    plc.word(0x82, 101) = 32;
    exchange(1);
    EXPECT_EQ(Lines{"1 7 DM 101"}, takeChanges());
    EXPECT_EQ((Numbers{21, 32}), words(7, "DM", 100, 2));
    EXPECT_EQ((Lines{"read 82 0064 2", "read 82 0065 2"}), plc.takeLog());
}

TEST_F(PollScenario, WordNoLongerWatchedIsReadButNotReported)
{
    start({{7, "DM", 100, 3}, {7, "DM_bit", 1616, 1}});
    watch({{7, "DM", 100, 1}, {7, "DM", 102, 1}});
    plc.word(0x82, 101) = 0xFFFF;
    exchange(1);
    EXPECT_EQ(Lines{}, takeChanges());
    EXPECT_EQ(Numbers{0xFFFF}, words(7, "DM", 101));
}

TEST_F(PollScenario, EmptyPlanEndsThePoll)
{
    start({{7, "DM", 100, 1}});
    EXPECT_EQ(0, watch({}));
    EXPECT_FALSE(send());
}

TEST_F(PollScenario, ChangesInsideTheCallbackCopyDoNotReachTheDriver)
{
    initialise("1#0#0#3#64");
    driver->setAddrValueChangeCallBack([](qint32, qint32, QString regType, qint32) { regType.fill(QLatin1Char('x')); });
    watch({{7, "DM", 100, 1}});
    play(HANDSHAKE);
    plc.word(0x82, 100) = 5;
    exchange(2);
    EXPECT_EQ(Numbers{5}, words(7, "DM", 100));
    EXPECT_EQ((Lines{"read 82 0064 1", "read 82 0064 1"}), plc.takeLog());
}

TEST_F(PollScenario, ImageFollowsAPlcThatNeverRests)
{
    start({{7, "DM", 0, 50}, {7, "DM", 200, 50}, {7, "CIO", 0, 10}});
    ASSERT_EQ(3, blocks);
    std::uint32_t random = 12345;
    for (int cycle = 0; cycle < 60; ++cycle) {
        std::set<std::string> expected;
        for (int change = 0; change < 8; ++change) {
            random = random * 1664525U + 1013904223U;
            const int address = static_cast<int>(random >> 8) % 50 + (random & 0x80 ? 200 : 0);
            plc.word(0x82, address) = static_cast<std::uint16_t>(plc.word(0x82, address) + 0x0101);
            expected.insert("1 7 DM " + std::to_string(address));
        }
        exchange(3);
        const Lines changes = takeChanges();
        EXPECT_EQ(expected, std::set<std::string>(changes.begin(), changes.end()));
        EXPECT_EQ(expected.size(), changes.size()) << "a change was reported twice";
        for (const int first : {0, 200}) {
            const Numbers image = words(7, "DM", first, 50);
            for (int i = 0; i < 50; ++i)
                ASSERT_EQ(plc.word(0x82, first + i), image[static_cast<std::size_t>(i)]) << first + i;
        }
    }
}
