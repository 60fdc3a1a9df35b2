#include "scenario_fixture.h"

// A second intf_initProperty: what starts afresh and what stays.

class ReconfigurationScenario : public ScenarioTest {
protected:
    void start(const std::string &property = "1#0#0#3#64")
    {
        initialise(property);
        ASSERT_NO_FATAL_FAILURE(connect());
    }

    void setRecipe()
    {
        QVector<_RCP_VAR_PRO> list;
        for (int i = 0; i < 3; ++i)
            list.append(_RCP_VAR_PRO{1, 7, QString::fromLatin1("DM"), 0x300 + 0x10 * i, 1, i, 0});
        EXPECT_EQ(3, driver->setRcpAddress(list));
    }
};

TEST_F(ReconfigurationScenario, QueuesPlanAndImageAreEmptied)
{
    start();
    watch({{7, "DM", 100, 1}});
    plc.word(0x82, 100) = 5;
    exchange(1);
    writeWords(7, "DM", 200, {1});
    conditionRead({7, "DM", 300, 1});
    takeChanges();
    initialise("1#0#0#3#64");
    EXPECT_FALSE(send());
    EXPECT_EQ(Numbers{0}, words(7, "DM", 100));
    EXPECT_EQ(Numbers{0}, words(7, "DM", 200));
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(ReconfigurationScenario, ValueThatHasBecomeZeroIsNotReported)
{
    start();
    watch({{7, "DM", 100, 1}});
    plc.word(0x82, 100) = 5;
    exchange(1);
    EXPECT_EQ(Lines{"1 7 DM 100"}, takeChanges());
    initialise("1#0#0#3#64");
    watch({{7, "DM", 100, 1}});
    plc.word(0x82, 100) = 0;
    exchange(1);
    EXPECT_EQ(Lines{}, takeChanges());
}

TEST_F(ReconfigurationScenario, RequestInFlightIsForgotten)
{
    start();
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    const Bytes request = sent();
    initialise("1#0#0#3#64");
    EXPECT_EQ(0, receive(plc.answer(request)));
    EXPECT_EQ("", info);
}

TEST_F(ReconfigurationScenario, LinkNodesAndServiceIdsStay)
{
    start();
    watch({{7, "DM", 100, 1}});
    exchange(2);
    initialise("1#0#0#3#64");
    watch({{7, "DM", 100, 1}});
    play("> FINS 0000001A 00000002 00000000  800002 003200 000A00 03  0101 82 0064 00 0001");
}

TEST_F(ReconfigurationScenario, RecipeSetUpStays)
{
    start();
    setRecipe();
    initialise("2#0#0#3#64");
    flag(RECIPE_WRITE_REQUEST) = 1;
    EXPECT_EQ(3, exchangeAll());
    EXPECT_EQ((Lines{"write 82 0300 1", "write 82 0310 1", "write 82 0320 1"}), plc.takeLog());
}

// Deliberate: the position in the recipe is not reset.
TEST_F(ReconfigurationScenario, TransferGoesOnWhereItWas)
{
    start();
    setRecipe();
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(1);
    initialise("1#0#0#3#64");
    exchange(2);
    EXPECT_EQ((Lines{"write 82 0300 1", "write 82 0310 1", "write 82 0320 1"}), plc.takeLog());
    EXPECT_EQ(0, flag(RECIPE_WRITE_REQUEST));
}

TEST_F(ReconfigurationScenario, FewerThanFiveFieldsKeepTheSettings)
{
    start("3#0#0#2#64");
    watch({{7, "DM", 100, 1}});
    initialise("9#1#0#9");
    EXPECT_FALSE(send()) << "the plan was kept";
    watch({{7, "DM", 100, 1}});
    writeWords(7, "DM", 100, Numbers(65, 1));
    EXPECT_EQ(Lines{"3 7 DM 100"}, takeChanges());
    exchange(2);
    EXPECT_EQ((Lines{"write 82 0064 64", "write 82 00A4 1"}), plc.takeLog());
    ASSERT_TRUE(send());
    EXPECT_EQ(8, receive(Bytes()));
    EXPECT_EQ(2, receive(Bytes()));
}

TEST_F(ReconfigurationScenario, FifthFieldMakesTheSettingsCountAndASixthIsIgnored)
{
    start("3#0#0#2#64");
    initialise("4#0#0#1#2#1");
    watch({{7, "DM", 100, 1}});
    writeWords(7, "DM", 100, {1, 2, 3});
    EXPECT_EQ(Lines{"4 7 DM 100"}, takeChanges());
    exchange(2);
    EXPECT_EQ((Lines{"write 82 0064 2", "write 82 0066 1"}), plc.takeLog());
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
}

TEST_F(ReconfigurationScenario, FieldsThatAreNoNumbersCountAsZero)
{
    start("3#1#0#5#64");
    initialise("a#b#c#d#e");
    watch({{7, "DM", 100, 1}});
    writeWords(7, "DM", 100, Numbers(100, 1));
    EXPECT_EQ(Lines{"0 7 DM 100"}, takeChanges());
    exchange(1);
    EXPECT_EQ(Lines{"write 82 0064 100"}, plc.takeLog()) << "without a frame size nothing is cut";
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
}

TEST_F(ReconfigurationScenario, RejectedRepliesAreForgotten)
{
    start("1#0#0#2#64");
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    EXPECT_EQ(8, receive(Bytes()));
    initialise("1#0#0#2#64");
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    EXPECT_EQ(8, receive(Bytes()));
}

TEST_F(ReconfigurationScenario, JobCountStartsAgain)
{
    start();
    for (int i = 0; i < 4; ++i)
        writeWords(7, "DM", i, {1});
    exchange(4);
    initialise("1#0#0#3#64");
    for (int i = 0; i < 5; ++i)
        writeWords(7, "DM", i, {1});
    EXPECT_EQ(5, exchangeAll());
}

TEST_F(ReconfigurationScenario, LastJobIsForgotten)
{
    start();
    watch({{7, "DM", 100, 1}});
    exchange(1);
    initialise("1#0#0#3#64");
    flag(RECIPE_READ_REQUEST) = 1;
    EXPECT_FALSE(send()) << "a recipe request without blocks repeated a job from before";
}

TEST_F(ReconfigurationScenario, LostLinkStaysLost)
{
    start("1#0#0#1#64");
    watch({{7, "DM", 100, 1}});
    ASSERT_TRUE(send());
    EXPECT_EQ(2, receive(Bytes()));
    initialise("1#0#0#1#64");
    watch({{7, "DM", 100, 1}});
    play("> FINS 0000000C 00000000 00000000 00000000");
}

TEST_F(ReconfigurationScenario, NewSharedMemoryIsUsed)
{
    start();
    setRecipe();
    LowMemory otherBlock(RUNTIME_BLOCK_SIZE);
    LowMemory otherRecipe(RECIPE_BUFFER_WORDS * 2, 2);
    LowObject<QMutex> otherMutex;
    qint32 status = 0;
    driver->initProperty(otherBlock.address(), 0, otherRecipe.address(), &status, "1#0#0#3#64", otherMutex.address());
    flag(RECIPE_WRITE_REQUEST) = 1;
    EXPECT_FALSE(send()) << "the old block is still looked at";
    otherRecipe.data()[0] = 0x34;
    otherRecipe.data()[1] = 0x12;
    otherBlock.data()[RECIPE_WRITE_REQUEST] = 1;
    EXPECT_EQ(3, exchangeAll());
    EXPECT_EQ(0x1234, plc.word(0x82, 0x300));
    EXPECT_EQ(0, otherBlock.data()[RECIPE_WRITE_REQUEST]);
    EXPECT_EQ(1, flag(RECIPE_WRITE_REQUEST));
}
