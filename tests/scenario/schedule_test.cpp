#include "scenario_fixture.h"

// The order in which writes, conditional reads and the poll take turns.

class ScheduleScenario : public ScenarioTest {
protected:
    void start()
    {
        initialise("1#0#0#3#64");
        ASSERT_NO_FATAL_FAILURE(connect());
    }

    void queueWrites(int count)
    {
        for (int i = 0; i < count; ++i)
            writeWords(7, "DM", 0x200 + i, {i});
    }

    void queueConditionReads(int count)
    {
        for (int i = 0; i < count; ++i)
            conditionRead({7, "HR", 0x10 + i, 1});
    }

    // The letters of the next `count` commands: W write, C conditional read (of HR), P poll (of DM), - nothing to send.
    std::string turns(int count)
    {
        std::string letters;
        for (int i = 0; i < count; ++i) {
            if (!exchange()) {
                letters += '-';
                continue;
            }
            const std::string line = plc.takeLog().at(0);
            letters += line.compare(0, 5, "write") == 0 ? 'W' : line.compare(0, 7, "read B2") == 0 ? 'C' : 'P';
        }
        return letters;
    }
};

TEST_F(ScheduleScenario, SixWritesAndAPoll)
{
    start();
    watch({{7, "DM", 0x100, 1}});
    queueWrites(6);
    exchange(8);
    EXPECT_EQ((Lines{"write 82 0200 1", "write 82 0201 1", "write 82 0202 1", "write 82 0203 1", "write 82 0204 1",
                     "read 82 0100 1", "write 82 0205 1", "read 82 0100 1"}), plc.takeLog());
}

TEST_F(ScheduleScenario, FiveWritesNeedNoPollBetween)
{
    start();
    watch({{7, "DM", 0x100, 1}});
    queueWrites(5);
    EXPECT_EQ("WWWWWPP", turns(7));
}

TEST_F(ScheduleScenario, ThreeConditionalReadsAndThenThePoll)
{
    start();
    watch({{7, "DM", 0x100, 1}});
    queueConditionReads(4);
    EXPECT_EQ("CCCPCP", turns(6));
}

TEST_F(ScheduleScenario, WritesAndConditionalReadsAreCountedTogether)
{
    start();
    watch({{7, "DM", 0x100, 1}});
    queueConditionReads(3);
    queueWrites(2);
    EXPECT_EQ("WWCPCCP", turns(7));
}

TEST_F(ScheduleScenario, ThreeWritesLeaveNoRoomForAConditionalRead)
{
    start();
    watch({{7, "DM", 0x100, 1}});
    queueConditionReads(1);
    queueWrites(3);
    EXPECT_EQ("WWWPCP", turns(6));
}

TEST_F(ScheduleScenario, WriteOvertakesWaitingConditionalReads)
{
    start();
    watch({{7, "DM", 0x100, 1}});
    queueConditionReads(3);
    EXPECT_EQ("C", turns(1));
    queueWrites(1);
    EXPECT_EQ("WCPC", turns(4));
}

TEST_F(ScheduleScenario, WithoutPollTheSixthWriteWaitsForAnIdleTurn)
{
    start();
    queueWrites(6);
    EXPECT_EQ("WWWWW-W-", turns(8));
}

TEST_F(ScheduleScenario, WithoutPollTheFourthConditionalReadWaitsForAnIdleTurn)
{
    start();
    queueConditionReads(4);
    EXPECT_EQ("CCC-C-", turns(6));
}

TEST_F(ScheduleScenario, IdleTurnForgetsTheCount)
{
    start();
    queueWrites(4);
    EXPECT_EQ("WWWW-", turns(5));
    queueWrites(5);
    EXPECT_EQ("WWWWW-", turns(6));
}

TEST_F(ScheduleScenario, PollForgetsTheCount)
{
    start();
    watch({{7, "DM", 0x100, 1}});
    queueWrites(4);
    EXPECT_EQ("WWWWP", turns(5));
    queueWrites(5);
    EXPECT_EQ("WWWWWP", turns(6));
}

TEST_F(ScheduleScenario, PollGoesOnWhereItWasAfterWrites)
{
    start();
    watch({{7, "DM", 0x100, 1}, {7, "WR", 0x10, 1}, {7, "AR", 0x20, 1}});
    exchange(1);
    queueWrites(1);
    exchange(4);
    EXPECT_EQ((Lines{"read B1 0010 1", "write 82 0200 1", "read B3 0020 1", "read 82 0100 1", "read B1 0010 1"}),
              plc.takeLog());
}

TEST_F(ScheduleScenario, RecipeComesBeforeWrites)
{
    start();
    QVector<_RCP_VAR_PRO> variables(1);
    variables[0] = _RCP_VAR_PRO{1, 7, QString::fromLatin1("DM"), 0x300, 1, 0, 0};
    EXPECT_EQ(1, driver->setRcpAddress(variables));
    queueWrites(1);
    flag(RECIPE_WRITE_REQUEST) = 1;
    exchange(2);
    EXPECT_EQ((Lines{"write 82 0300 1", "write 82 0200 1"}), plc.takeLog());
}
