#include "session/ask.h"

#include "loop_fixture.h"

// Service requests between those of the driver.

namespace {

enum : unsigned { CYCLE_TIME = 0x0620, CLOCK = 0x0701, ERROR_LOG = 0x2102 };

} // namespace

class ServiceRequests : public Loop {
protected:
    ServiceRequests()
    {
        served.tell(CYCLE_TIME, {0, 0, 0x02, 0x8A, 0, 0, 0x03, 0x00, 0, 0, 0x00, 0x64});
        served.tell(CLOCK, {0x26, 0x03, 0x01, 0x08, 0x15, 0x30, 0x00});
        options.interval = Millis(0);
        options.retries  = 100;
    }

    void hold(unsigned command)
    {
        served.rule([=](const Request &request) {
            return Treatment{request.command == command ? Treatment::HOLD : Treatment::ANSWER};
        });
    }
};

// The link waits for the late answer before it asks anew, and takes it for nothing else.
TEST_F(ServiceRequests, ALateAnswerIsDropped)
{
    hold(CYCLE_TIME);
    options.timeout = Millis(2000);
    const auto runtime = made();
    const Answer<CycleTime> late = readCycleTime(*runtime, soon());
    EXPECT_EQ(late.reply.end, ServiceEnd::NO_ANSWER);
    EXPECT_EQ(late.reply.problem, "no reply in time");
    EXPECT_FALSE(runtime->canServe());
    served.release();
    const unsigned long before = statistics.requests;
    stepUntilRequests(*runtime, before + 3);
    EXPECT_TRUE(runtime->canServe());
    const Answer<PlcTime> time = readClock(*runtime, soon());
    ASSERT_TRUE(time) << time.reply.problem;
    EXPECT_EQ(plcTimeText(*time), "2026-03-01 08:15:30");
    EXPECT_EQ(statistics.wrong, 0u);
    EXPECT_EQ(statistics.missing, 1u);
    EXPECT_EQ(served.connections(), 1);
}

// It may come for three timeouts more, and then it is not waited for.
TEST_F(ServiceRequests, AnAnswerThatNeverComesHoldsUpTheNextForAWhile)
{
    served.rule([](const Request &request) {
        return Treatment{request.command == CYCLE_TIME ? Treatment::LOSE : Treatment::ANSWER};
    });
    options.timeout = Millis(200);
    const auto runtime = made();
    EXPECT_FALSE(readCycleTime(*runtime, soon()));
    EXPECT_FALSE(runtime->canServe());
    const Answer<PlcTime> time = readClock(*runtime, soon());
    ASSERT_TRUE(time) << time.reply.problem;
    EXPECT_EQ(served.connections(), 1);
}

TEST_F(ServiceRequests, WhatMayNotBeSentNowIsNotSent)
{
    const auto runtime = made();
    const Answer<PlcTime> time = readClock(*runtime, soon(), Turn::NOW);
    EXPECT_EQ(time.reply.end, ServiceEnd::NOT_SENT);
    EXPECT_EQ(time.reply.problem, "it could not be sent in time");
    EXPECT_EQ(served.requests().size(), 0u);
}

// The log says that it has two records, and none comes.
TEST_F(ServiceRequests, ALogWithoutItsRecordsIsNoAnswer)
{
    served.tell(ERROR_LOG, {0x00, 0x14, 0x00, 0x02, 0x00, 0x00});
    const auto runtime = made();
    const Answer<ErrorLog> log = readErrorLog(*runtime, soon());
    EXPECT_FALSE(log);
    EXPECT_EQ(log.reply.end, ServiceEnd::NO_ANSWER);
    EXPECT_EQ(log.reply.problem, "the PLC tells 0 of the 2 records that it has");
}
