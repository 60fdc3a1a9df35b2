#include "plc_fixture.h"

#include <algorithm>

// What an application asks a PLC about itself.

using fins::PlcFacts;
using fins::Topic;

namespace {

const std::vector<Topic> ALL = {Topic::CONTROLLER, Topic::STATUS, Topic::CYCLE_TIME, Topic::CLOCK, Topic::ERROR_LOG};

enum : unsigned { CONTROLLER = 0x0501, STATUS = 0x0601, CYCLE_TIME = 0x0620, CLOCK = 0x0701, ERROR_LOG = 0x2102 };

bool isService(const Request &request)
{
    return request.command != 0 && !request.isRead() && !request.isWrite() && !request.isModeChange();
}

Bytes bytesOf(const std::string &text) { return {text.begin(), text.end()}; }

} // namespace

class Asking : public PlcFixture {
protected:
    Asking()
    {
        Bytes controller = bytesOf("CJ2M-CPU33          02.01");
        controller.resize(159);
        served.tell(CONTROLLER, controller);
        // Running, battery present; RUN; stopped by FALS; battery error; no message; error code and its empty text.
        Bytes status = {0x05, 0x04, 0x00, 0x40, 0x00, 0x10, 0x00, 0x00, 0x00, 0xF7};
        status.resize(26, ' ');
        served.tell(STATUS, status);
        served.tell(CYCLE_TIME, {0, 0, 0x02, 0x8A, 0, 0, 0x03, 0x00, 0, 0, 0x00, 0x64});
        served.tell(CLOCK, {0x26, 0x03, 0x01, 0x08, 0x15, 0x30, 0x00});
        served.tell(ERROR_LOG, {0x00, 0x14, 0x00, 0x01, 0x00, 0x01,
                                0x00, 0xF7, 0x00, 0x00, 0x15, 0x30, 0x01, 0x08, 0x26, 0x03});
    }

    Plc::FactsCall call()
    {
        return [this](const PlcFacts &told) {
            ++times;
            facts = told;
        };
    }

    // Requests with this command are treated so, everything else is answered.
    void treat(unsigned command, const Treatment &treatment)
    {
        served.rule([=](const Request &request) { return request.command == command ? treatment : Treatment(); });
    }

    std::size_t count(unsigned command) const
    {
        const std::vector<Request> all = served.requests();
        return static_cast<std::size_t>(
            std::count_if(all.begin(), all.end(), [=](const Request &request) { return request.command == command; }));
    }

    bool untilTold(Plc &plc) { return until(plc, [&] { return times > 0; }); }

    using Lines = std::vector<std::string>;
    PlcFacts facts;
    int      times = 0;
};

TEST_F(Asking, TellsWhatThePlcIsAndHow)
{
    Plc plc = Plc::open(config());
    const Operation asked = plc.ask(ALL, call());
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.told, ALL);
    EXPECT_EQ(facts.model, "CJ2M-CPU33");
    EXPECT_EQ(facts.version, "02.01");
    EXPECT_EQ(facts.mode, "RUN");
    EXPECT_EQ(facts.errors, (Lines{"FALS: the program has stopped the PLC", "battery error"}));
    EXPECT_EQ(facts.averageMs, 65.0);
    EXPECT_EQ(facts.longestMs, 76.8);
    EXPECT_EQ(facts.shortestMs, 10.0);
    EXPECT_EQ(facts.clock, "2026-03-01 08:15:30");
    EXPECT_EQ(facts.log, (Lines{"2026-03-01 08:15:30  00F7 0000 (battery)"}));
    EXPECT_EQ(facts.problems, Lines());
    while (isReadable(plc.readyFd()))
        plc.dispatch();
    EXPECT_EQ(times, 1);
}

TEST_F(Asking, AsksOnlyAboutWhatItIsToldTo)
{
    Plc plc = Plc::open(config());
    const Operation asked = plc.ask({Topic::CLOCK}, call());
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.told, std::vector<Topic>{Topic::CLOCK});
    EXPECT_EQ(facts.model, "");
    EXPECT_EQ(count(CLOCK), 1u);
    for (const unsigned other : {CONTROLLER, STATUS, CYCLE_TIME, ERROR_LOG})
        EXPECT_EQ(count(other), 0u) << other;
}

TEST_F(Asking, AboutNothingEndsWithNothing)
{
    Plc plc = Plc::open(config());
    const Operation asked = plc.ask({}, call());
    ASSERT_TRUE(untilTold(plc));
    EXPECT_TRUE(facts.told.empty() && facts.problems.empty());
}

// The controller knows nothing of a command: that costs a line, and neither the rest nor the link.
TEST_F(Asking, WhatThePlcDoesNotKnowIsALine)
{
    treat(CYCLE_TIME, {Treatment::ANSWER, 0x0401});
    Plc plc = Plc::open(config());
    const Operation asked = plc.ask(ALL, call());
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.problems, (Lines{"cycle time: the PLC refuses 0401 (undefined command)"}));
    EXPECT_EQ(facts.told, (std::vector<Topic>{Topic::CONTROLLER, Topic::STATUS, Topic::CLOCK, Topic::ERROR_LOG}));
    EXPECT_EQ(facts.averageMs, 0);
    EXPECT_EQ(served.connections(), 1);
}

TEST_F(Asking, WhatMakesNoSenseIsALine)
{
    served.tell(CLOCK, {0x26, 0x13, 0x01, 0x08, 0x15, 0x30, 0x00});
    Plc plc = Plc::open(config());
    const Operation asked = plc.ask({Topic::CLOCK}, call());
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.problems, (Lines{"clock: the reply makes no sense, its data are 7 bytes: 26 13 01 08 15 30 00"}));
    EXPECT_EQ(facts.clock, "");
}

TEST_F(Asking, IsToldInDispatchOnly)
{
    Plc plc = Plc::open(config());
    const Operation asked = plc.ask({Topic::STATUS}, call());
    served.awaitRound();
    EXPECT_TRUE(isReadable(plc.readyFd(), 20000));
    EXPECT_EQ(times, 0);
    EXPECT_TRUE(untilTold(plc));
}

// The driver numbers its requests from 0 to 254.
TEST_F(Asking, HasAServiceIdOfItsOwn)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    const Operation asked = plc.ask(ALL, call());
    ASSERT_TRUE(untilTold(plc));
    served.awaitRound();
    for (const Request &request : served.requests())
        EXPECT_EQ(request.sid == 0xFF, isService(request)) << request.command;
}

TEST_F(Asking, WaitsForTheReplyToTheDriver)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(untilOnline(plc));
    becomeQuiet(plc);
    const std::size_t before = served.requests().size();
    const Operation asked = plc.ask({Topic::STATUS}, call());
    plc.dispatch(50ms);
    EXPECT_EQ(served.requests().size(), before);
    served.release();
    EXPECT_TRUE(untilTold(plc));
    EXPECT_EQ(served.requests().at(before).command, unsigned(STATUS));
}

TEST_F(Asking, WaitsForTheEndOfARecipe)
{
    Config with = config();
    with.wordsPerFrame = 2;
    with.recipes = {{"mix", {{"DM:20:6", {}}}}};
    Plc plc = Plc::open(with);
    ASSERT_TRUE(untilOnline(plc));
    served.rule([](const Request &request) {
        return Treatment{request.address == 20 ? Treatment::HOLD : Treatment::ANSWER};
    });
    bool isRead = false;
    const Operation recipe = plc.readRecipe("mix", [&](const fins::RecipeValues &) { isRead = true; });
    served.awaitHeld();
    const Operation asked = plc.ask({Topic::STATUS}, call());
    served.release();
    EXPECT_TRUE(untilTold(plc));
    EXPECT_TRUE(isRead);
    std::vector<int> order;
    for (const Request &request : served.requests()) {
        if (request.address >= 20 || isService(request))
            order.push_back(request.address);
    }
    EXPECT_EQ(order, (std::vector<int>{20, 22, 24, 0}));
}

// An answer that does not come is waited for, in case that it is late; meanwhile the rest goes on.
TEST_F(Asking, HoldsUpNoWrite)
{
    Config with = config();
    with.timeout = 200ms;
    with.retries = 100;
    treat(CYCLE_TIME, {Treatment::LOSE});
    Plc plc = Plc::open(with);
    const OperationOptions patient{20000ms};
    const Operation first = plc.ask({Topic::CYCLE_TIME}, call(), patient);
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.problems, (Lines{"cycle time: no reply in time"}));
    std::vector<std::string> order;
    const Operation second = plc.ask({Topic::CLOCK}, [&](const PlcFacts &told) { order.push_back(told.clock); }, patient);
    const Operation write = plc.write({{"DM:5", 7}}, [&](const Outcomes &told) {
        order.emplace_back(fins::text(told.front().fate));
    }, patient);
    EXPECT_TRUE(until(plc, [&] { return order.size() == 2; }));
    EXPECT_EQ(order, (Lines{"verified", "2026-03-01 08:15:30"}));
    EXPECT_EQ(served.connections(), 1);
}

TEST_F(Asking, IsRepeatedWhenTheLinkIsLost)
{
    served.rule([isFirst = true](const Request &request) mutable {
        const bool hangsUp = request.command == STATUS && std::exchange(isFirst, false);
        return Treatment{hangsUp ? Treatment::HANG_UP : Treatment::ANSWER};
    });
    Plc plc = Plc::open(config());
    const Operation asked = plc.ask({Topic::CONTROLLER, Topic::STATUS}, call(), {20000ms});
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.problems, Lines());
    EXPECT_EQ(facts.mode, "RUN");
    EXPECT_EQ(count(CONTROLLER), 1u);
    EXPECT_EQ(count(STATUS), 2u);
    EXPECT_EQ(served.connections(), 2);
}

TEST_F(Asking, EndsInTime)
{
    served.holdAll();
    Config with = config();
    with.timeout = 50ms;
    Plc plc = Plc::open(with);
    const Operation asked = plc.ask({Topic::CLOCK, Topic::STATUS}, call(), {200ms});
    ASSERT_TRUE(untilTold(plc));
    EXPECT_TRUE(facts.told.empty());
    EXPECT_EQ(count(CLOCK), 0u);
    EXPECT_EQ(facts.problems, (Lines{"clock: no answer in time", "status: no answer in time"}));
}

TEST_F(Asking, IsTakenBackBeforeItIsSent)
{
    served.stopListening();
    Plc plc = Plc::open(config());
    Operation asked = plc.ask({Topic::STATUS}, call());
    EXPECT_TRUE(asked.cancel());
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.problems, (Lines{"status: it was cancelled"}));
    served.startListening();
    ASSERT_TRUE(untilOnline(plc));
    EXPECT_EQ(count(STATUS), 0u);
    EXPECT_EQ(times, 1);
}

TEST_F(Asking, IsEndedWhenItHasBegun)
{
    treat(CONTROLLER, {Treatment::HOLD});
    Plc plc = Plc::open(config());
    Operation asked = plc.ask({Topic::CONTROLLER, Topic::STATUS}, call());
    served.awaitHeld();
    EXPECT_FALSE(asked.cancel());
    served.release();
    ASSERT_TRUE(untilTold(plc));
    EXPECT_EQ(facts.model, "CJ2M-CPU33");
    EXPECT_EQ(times, 1);
}

TEST_F(Asking, IsToldOnceWhenThePlcIsDestroyed)
{
    treat(STATUS, {Treatment::HOLD});
    Operation asked;
    {
        Plc plc = Plc::open(config());
        asked = plc.ask({Topic::CONTROLLER, Topic::STATUS, Topic::CLOCK}, call());
        served.awaitHeld();
    }
    EXPECT_EQ(times, 1);
    EXPECT_EQ(facts.told, std::vector<Topic>{Topic::CONTROLLER});
    EXPECT_EQ(facts.problems, (Lines{"status: the link was closed", "clock: the link was closed"}));
}

TEST_F(Asking, IsForgottenWithItsHandle)
{
    Plc plc = Plc::open(config());
    {
        const Operation asked = plc.ask({Topic::STATUS}, call());
    }
    bool isDone = false;
    const Operation write = plc.write({{"DM:5", 7}}, [&](const Outcomes &) { isDone = true; });
    EXPECT_TRUE(until(plc, [&] { return isDone; }));
    EXPECT_EQ(times, 0);
}

TEST_F(Asking, AClosedPlcTellsNothing)
{
    Plc plc = Plc::open(config());
    plc.close();
    const Operation asked = plc.ask({Topic::STATUS}, call());
    plc.dispatch();
    EXPECT_EQ(times, 1);
    EXPECT_EQ(facts.problems, (Lines{"status: the link is closed"}));
}
