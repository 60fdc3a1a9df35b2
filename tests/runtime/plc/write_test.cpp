#include "plc_fixture.h"

#include <algorithm>
#include <random>

// What becomes of writes: each outcome, once; their order; consent to a change of the mode; and what can be taken back.

class Writing : public PlcFixture {
protected:
    // Orders a write and waits for its outcome.
    static Told written(Plc &plc, const std::vector<Assignment> &values, const OperationOptions &options = {})
    {
        Told told;
        const Operation write = plc.write(values, told.call(), options);
        EXPECT_TRUE(until(plc, [&] { return told.times > 0; }));
        plc.dispatch();
        EXPECT_EQ(told.times, 1);
        return told;
    }

    void refuseWritesOf(int address, unsigned endCode)
    {
        served.rule([=](const Request &request) {
            return Treatment{Treatment::ANSWER, request.isWrite() && request.address == address ? endCode : 0U};
        });
    }

    // A clock of the deadlines that stands until it is moved.
    Config withClock()
    {
        Config with = config();
        with.steady = [this] { return std::chrono::steady_clock::time_point(std::chrono::seconds(seconds)); };
        return with;
    }

    static OperationOptions unverified()
    {
        OperationOptions options;
        options.verify = false;
        return options;
    }

    static OperationOptions goingOn()
    {
        OperationOptions options;
        options.keepGoing = true;
        return options;
    }

    std::atomic<int> seconds{1000};
};
class Consent : public Writing {};
class Cancelling : public Writing {};

// ---- Outcomes ----------------------------------------------------------------------------------------------------

TEST_F(Writing, IsVerifiedWhenThePlcHoldsTheValue)
{
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0", number(77)}, {"DM:10/f32", Value(1.5)}});
    ASSERT_EQ(told.outcomes.size(), 2u);
    EXPECT_EQ(told.fate(0), Fate::VERIFIED);
    EXPECT_EQ(told.outcomes[0].name, "DM:0");
    EXPECT_EQ(told.outcomes[0].wanted, "77");
    EXPECT_EQ(told.outcomes[0].held, "77");
    EXPECT_EQ(told.outcomes[0].endCode, 0);
    EXPECT_EQ(told.text(0), "done: DM:0 = 77");
    EXPECT_EQ(told.fate(1), Fate::VERIFIED);
    EXPECT_EQ(served.dm(0), 77);
    EXPECT_EQ(served.dm(11), 0x3FC0);
    EXPECT_TRUE(fins::isDone(told.outcomes));
}

TEST_F(Writing, IsAcceptedWhenItIsNotToBeReadBack)
{
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:700", number(77)}}, unverified());
    EXPECT_EQ(told.fate(), Fate::ACCEPTED);
    EXPECT_EQ(told.outcomes[0].held, "");
    EXPECT_TRUE(fins::isDone(told.outcomes));
    for (const Request &request : served.requests())
        EXPECT_FALSE(request.isRead() && request.address == 700);
}

TEST_F(Writing, DiffersWhenThePlcHoldsAnotherValue)
{
    served.set(0, {5});
    served.rule([](const Request &request) {
        return Treatment{request.isWrite() ? Treatment::FORGET : Treatment::ANSWER};
    });
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0", number(77)}});
    EXPECT_EQ(told.fate(), Fate::DIFFERS);
    EXPECT_EQ(told.outcomes[0].held, "5");
    EXPECT_EQ(told.text(), "differs: DM:0 was to be 77, the PLC holds 5");
    EXPECT_FALSE(fins::isDone(told.outcomes));
}

TEST_F(Writing, IsRefusedWithTheEndCodeAndStopsTheRest)
{
    refuseWritesOf(0, 0x2101);
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0", number(1)}, {"DM:100", number(2)}});
    EXPECT_EQ(told.fate(0), Fate::REFUSED);
    EXPECT_EQ(told.outcomes[0].endCode, 0x2101);
    EXPECT_EQ(told.text(0).substr(0, 20), "refused: DM:0: 2101 ");
    EXPECT_EQ(told.fate(1), Fate::NOT_SENT);
    EXPECT_EQ(told.outcomes[1].endCode, 0);
    EXPECT_EQ(served.writes().size(), 1u);
}

TEST_F(Writing, GoesOnBehindARefusedOneIfItIsTo)
{
    refuseWritesOf(0, 0x2101);
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0", number(1)}, {"DM:100", number(2)}}, goingOn());
    EXPECT_EQ(told.fate(0), Fate::REFUSED);
    EXPECT_EQ(told.fate(1), Fate::VERIFIED);
    EXPECT_EQ(served.dm(100), 2);
}

TEST_F(Writing, ThatIsRefusedDoesNotStopTheNextWrite)
{
    refuseWritesOf(0, 0x2101);
    Plc plc = Plc::open(config());
    Told first, second;
    const Operation a = plc.write({{"DM:0", number(1)}}, first.call());
    const Operation b = plc.write({{"DM:1", number(2)}}, second.call());
    ASSERT_TRUE(until(plc, [&] { return second.times > 0; }));
    EXPECT_EQ(first.fate(), Fate::REFUSED);
    EXPECT_EQ(second.fate(), Fate::VERIFIED);
}

TEST_F(Writing, IsUnconfirmedWhenTheLinkIsLostAndItIsNotReadBack)
{
    served.rule([](const Request &request) {
        return Treatment{request.isWrite() ? Treatment::HANG_UP : Treatment::ANSWER};
    });
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0", number(1)}, {"DM:100", number(2)}}, unverified());
    EXPECT_EQ(told.fate(0), Fate::UNCONFIRMED);
    EXPECT_EQ(told.fate(1), Fate::NOT_SENT);
    EXPECT_EQ(served.writes().size(), 1u); // it is not repeated
}

TEST_F(Writing, IsUnconfirmedWhenTheOldValueIsReadBackAfterALoss)
{
    served.set(0, {5});
    served.rule([](const Request &request) {
        return Treatment{request.isWrite() ? Treatment::HANG_UP : Treatment::ANSWER};
    });
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0", number(1)}});
    EXPECT_EQ(told.fate(), Fate::UNCONFIRMED);
    EXPECT_EQ(told.outcomes[0].held, "5");
    EXPECT_EQ(served.writes().size(), 1u);
}

// The link is lost once the reply has stayed away; the PLC had carried the write out.
TEST_F(Writing, IsVerifiedWhenTheNewValueIsReadBackAfterALoss)
{
    std::atomic<bool> isSilent{false};
    served.rule([&](const Request &request) {
        if (request.isWrite())
            isSilent = true;
        return Treatment{request.isWrite() ? Treatment::SILENCE : Treatment::ANSWER};
    });
    Plc plc = Plc::open(config());
    Told told;
    const Operation write = plc.write({{"DM:0", number(1)}}, told.call());
    ASSERT_TRUE(until(plc, [&] { return isSilent.load(); }));
    served.hangUp();
    ASSERT_TRUE(until(plc, [&] { return told.times > 0; }));
    EXPECT_EQ(told.fate(), Fate::VERIFIED);
    EXPECT_EQ(told.outcomes[0].held, "1");
}

TEST_F(Writing, ThatCouldNotBeSentInTimeIsNotSent)
{
    served.stopListening();
    Plc plc = Plc::open(withClock());
    Told first, second;
    OperationOptions longer;
    longer.giveUp = 30s;
    const Operation a = plc.write({{"DM:0", number(1)}}, first.call());
    const Operation b = plc.write({{"DM:1", number(1)}}, second.call(), longer);
    plc.dispatch();
    EXPECT_EQ(first.times, 0);
    seconds += 10;
    const Watch watch = plc.watch({"DM:5"}, [](const Samples &) {}); // the library looks at the clock
    ASSERT_TRUE(until(plc, [&] { return first.times > 0; }));
    EXPECT_EQ(first.fate(), Fate::NOT_SENT);
    EXPECT_EQ(first.text(), "not sent: DM:0: it could not be sent in time");
    EXPECT_EQ(second.times, 0);
    seconds += 20;
    const Watch other = plc.watch({"DM:6"}, [](const Samples &) {});
    ASSERT_TRUE(until(plc, [&] { return second.times > 0; }));
    EXPECT_EQ(second.fate(), Fate::NOT_SENT);
    served.startListening();
    ASSERT_TRUE(untilOnline(plc));
    EXPECT_TRUE(served.writes().empty());
}

TEST_F(Writing, ThatIsNotReadBackInTimeIsUnconfirmed)
{
    Plc plc = Plc::open(withClock());
    std::atomic<bool> isHeld{false};
    served.rule([&](const Request &request) {
        isHeld = isHeld || request.isWrite();
        return Treatment{isHeld && request.isRead() ? Treatment::HOLD : Treatment::ANSWER};
    });
    Told told;
    const Operation write = plc.write({{"DM:0", number(1)}}, told.call());
    served.awaitHeld();
    seconds += 11;
    served.hangUp();
    ASSERT_TRUE(until(plc, [&] { return told.times > 0; }));
    EXPECT_EQ(told.fate(), Fate::UNCONFIRMED);
}

// The deadline of what is over must not become one of the link.
TEST_F(Writing, ThatIsOverDoesNotKeepTheLinkFromComingBack)
{
    Plc plc = Plc::open(withClock());
    const Told told = written(plc, {{"DM:0", number(1)}});
    EXPECT_EQ(told.fate(), Fate::VERIFIED);
    seconds += 3600;
    served.hangUp();
    ASSERT_TRUE(until(plc, [&] { return served.connections() >= 2 && plc.state().phase == Phase::ONLINE; }));
    EXPECT_EQ(served.connections(), 2);
}

TEST_F(Writing, OfWhatCannotBeIsInvalidAndSendsNothing)
{
    Config with = config();
    fins::TagConfig level;
    level.name = "level";
    level.item = "DM:10";
    level.minimum = 0;
    level.maximum = 100;
    fins::TagConfig meter;
    meter.name = "meter";
    meter.item = "DM:11";
    meter.readOnly = true;
    with.tags = {level, meter};
    Plc plc = Plc::open(with);
    const std::vector<std::vector<Assignment>> wrong = {
        {{"level", number(101)}},
        {{"meter", number(1)}},
        {{"DM:20:2", {number(1), number(2)}}, {"DM:21", number(3)}},
        {{"DM:0", Value(std::string("abc"))}},
        {{"DM:0", number(65536)}},
        {{"DM:0", Value()}},
        {{"DM:0:2", number(1)}},
        {{"nowhere", number(1)}},
        {{"DM:0=1", number(1)}},
    };
    for (const std::vector<Assignment> &values : wrong) {
        std::vector<Assignment> all = values;
        all.insert(all.begin(), Assignment("DM:500", number(1)));
        const Told told = written(plc, all);
        ASSERT_EQ(told.outcomes.size(), all.size());
        for (const Outcome &outcome : told.outcomes) {
            EXPECT_EQ(outcome.fate, Fate::INVALID) << outcome.name;
            EXPECT_EQ(outcome.text.substr(0, 9), "invalid: ") << outcome.text;
        }
    }
    served.awaitRound();
    EXPECT_TRUE(served.writes().empty());
}

TEST_F(Writing, OfNothingIsDoneAtOnce)
{
    Plc plc = Plc::open(config());
    const Told told = written(plc, {});
    EXPECT_TRUE(told.outcomes.empty());
    EXPECT_TRUE(fins::isDone(told.outcomes));
}

TEST_F(Writing, TakesEveryKindOfValue)
{
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0/s16", number(-2)},
                                    {"DM:1/f64", Value(-0.5)},
                                    {"DM:10:2/string", Value(std::string("A,B="))},
                                    {"DM_bit:20.3", Value(true)},
                                    {"DM:30/u64", Value(std::uint64_t(18446744073709551615U))},
                                    {"DM:40:3", {number(1), number(2), Value(std::string("3"))}}});
    for (const Outcome &outcome : told.outcomes)
        EXPECT_EQ(outcome.fate, Fate::VERIFIED) << outcome.text;
    EXPECT_EQ(served.dm(0), 0xFFFE);
    EXPECT_EQ(served.dm(4), 0xBFE0);
    EXPECT_EQ(served.dm(10), 0x412C);
    EXPECT_EQ(served.dm(11), 0x423D);
    EXPECT_EQ(served.dm(20), 8);
    EXPECT_EQ(served.dm(33), 0xFFFF);
    EXPECT_EQ(served.dm(42), 3);
}

TEST_F(Writing, KeepsTheOrderOfAllWrites)
{
    Plc plc = Plc::open(config());
    std::vector<Told> told(30);
    std::vector<Operation> writes;
    for (int i = 0; i < 30; ++i) {
        const std::string first = "DM:" + std::to_string(1000 - 20 * i);
        const std::string second = "DM:" + std::to_string(1000 - 20 * i + 2);
        writes.push_back(plc.write({{second, number(i)}, {first, number(i)}}, told[static_cast<std::size_t>(i)].call(),
                                   i % 2 == 0 ? unverified() : OperationOptions()));
    }
    ASSERT_TRUE(until(plc, [&] { return told.back().times > 0; }));
    const std::vector<Request> seen = served.writes();
    ASSERT_EQ(seen.size(), 60u);
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(seen[static_cast<std::size_t>(2 * i)].address, 1000 - 20 * i + 2);
        EXPECT_EQ(seen[static_cast<std::size_t>(2 * i + 1)].address, 1000 - 20 * i);
        EXPECT_TRUE(fins::isDone(told[static_cast<std::size_t>(i)].outcomes));
    }
}

// ---- Consent -----------------------------------------------------------------------------------------------------

TEST_F(Consent, IsNeededForAChangeOfTheMode)
{
    served.enterRunMode();
    Plc plc = Plc::open(config());
    const Told told = written(plc, {{"DM:0", number(1)}});
    EXPECT_EQ(told.fate(), Fate::REFUSED);
    EXPECT_EQ(told.outcomes[0].endCode, 0x2206);
    served.awaitRound();
    EXPECT_EQ(served.modeChanges(), 0);
    EXPECT_EQ(served.dm(0), 0);
}

TEST_F(Consent, LetsARefusedWriteSwitchTheModeOnce)
{
    served.enterRunMode();
    Config with = config();
    with.allowModeChange = true;
    Plc plc = Plc::open(with);
    const Told told = written(plc, {{"DM:0", number(1)}, {"DM:100", number(2)}});
    EXPECT_EQ(told.fate(0), Fate::VERIFIED);
    EXPECT_EQ(told.fate(1), Fate::VERIFIED);
    EXPECT_EQ(served.modeChanges(), 1);
    EXPECT_EQ(served.dm(0), 1);
}

TEST_F(Consent, DoesNotSwitchForOtherRefusals)
{
    refuseWritesOf(0, 0x2101);
    Config with = config();
    with.allowModeChange = true;
    Plc plc = Plc::open(with);
    const Told told = written(plc, {{"DM:0", number(1)}});
    EXPECT_EQ(told.fate(), Fate::REFUSED);
    served.awaitRound();
    EXPECT_EQ(served.modeChanges(), 0);
}

TEST_F(Consent, DoesNotSwitchAgainForAWriteThatIsStillRefused)
{
    refuseWritesOf(0, 0x2203);
    Config with = config();
    with.allowModeChange = true;
    Plc plc = Plc::open(with);
    const Told told = written(plc, {{"DM:0", number(1)}});
    EXPECT_EQ(told.fate(), Fate::REFUSED);
    EXPECT_EQ(told.outcomes[0].endCode, 0x2203);
    served.awaitRound();
    EXPECT_EQ(served.modeChanges(), 1);
}

TEST_F(Consent, DoesNotSwitchForReads)
{
    served.rule([](const Request &request) { return Treatment{Treatment::ANSWER, request.isRead() && request.address != 0 ? 0x2203U : 0U}; });
    Config with = config();
    with.allowModeChange = true;
    Plc plc = Plc::open(with);
    const Watch watch = plc.watch({"DM:500", "DM:0"}, [](const Samples &) {});
    ASSERT_TRUE(until(plc, [&] { return plc.snapshot({"DM:500"})[0].quality == Quality::REFUSED; }));
    served.awaitRound();
    EXPECT_EQ(served.modeChanges(), 0);
}

// ---- Cancelling --------------------------------------------------------------------------------------------------

TEST_F(Cancelling, TakesBackWhatWaits)
{
    Plc plc = Plc::open(config());
    holdWrites();
    Told first, second;
    Operation a = plc.write({{"DM:0", number(1)}}, first.call());
    Operation b = plc.write({{"DM:1", number(2)}}, second.call());
    served.awaitHeld();
    EXPECT_TRUE(b.cancel());
    served.release();
    ASSERT_TRUE(until(plc, [&] { return first.times > 0 && second.times > 0; }));
    EXPECT_EQ(first.fate(), Fate::VERIFIED);
    EXPECT_EQ(second.fate(), Fate::NOT_SENT);
    EXPECT_EQ(second.text(), "not sent: DM:1: it was cancelled");
    EXPECT_EQ(served.writes().size(), 1u);
}

TEST_F(Cancelling, TakesBackWhatWaitsForTheLink)
{
    served.stopListening();
    Plc plc = Plc::open(config());
    Told told;
    Operation write = plc.write({{"DM:0", number(1)}}, told.call());
    EXPECT_TRUE(write.cancel());
    ASSERT_TRUE(until(plc, [&] { return told.times > 0; }));
    EXPECT_EQ(told.fate(), Fate::NOT_SENT);
    served.startListening();
    ASSERT_TRUE(untilOnline(plc));
    EXPECT_TRUE(served.writes().empty());
}

TEST_F(Cancelling, LeavesWhatWasSentAndTakesBackTheRest)
{
    Plc plc = Plc::open(config());
    holdWrites();
    Told told;
    Operation write = plc.write({{"DM:0", number(1)}, {"DM:100", number(2)}}, told.call());
    served.awaitHeld();
    EXPECT_FALSE(write.cancel());
    served.release();
    ASSERT_TRUE(until(plc, [&] { return told.times > 0; }));
    EXPECT_EQ(told.fate(0), Fate::VERIFIED);
    EXPECT_EQ(told.fate(1), Fate::NOT_SENT);
    EXPECT_EQ(served.writes().size(), 1u);
}

TEST_F(Cancelling, ComesTooLateForWhatIsOver)
{
    Plc plc = Plc::open(config());
    Told told;
    Operation write = plc.write({{"DM:0", number(1)}}, told.call());
    ASSERT_TRUE(until(plc, [&] { return told.times > 0; }));
    EXPECT_FALSE(write.cancel());
    Operation invalid = plc.write({{"nowhere", number(1)}}, told.call());
    EXPECT_FALSE(invalid.cancel());
    EXPECT_FALSE(Operation().cancel());
    plc.dispatch();
    EXPECT_EQ(told.times, 2);
}

TEST_F(Cancelling, InsideTheCallbackOfAnotherIsAllowed)
{
    Plc plc = Plc::open(config());
    served.rule([](const Request &request) {
        return Treatment{request.isWrite() && request.address == 1 ? Treatment::HOLD : Treatment::ANSWER};
    });
    Told last;
    Operation third;
    bool wasUnsent = false;
    const Operation first = plc.write({{"DM:0", number(1)}}, [&](const Outcomes &) { wasUnsent = third.cancel(); });
    const Operation second = plc.write({{"DM:1", number(1)}}, [](const Outcomes &) {});
    third = plc.write({{"DM:2", number(1)}}, last.call());
    ASSERT_TRUE(until(plc, [&] { return wasUnsent; }));
    served.release();
    ASSERT_TRUE(until(plc, [&] { return last.times > 0; }));
    EXPECT_EQ(last.fate(), Fate::NOT_SENT);
    served.awaitWrites(2);
    EXPECT_EQ(served.writes().size(), 2u);
}

// Cancelled while the library is about to send it: the record of the PLC is the judge of what cancel() said.
TEST_F(Cancelling, TellsTheTruthInARace)
{
    Plc plc = Plc::open(config());
    const Watch watch = plc.watch({"DM:0"}, [](const Samples &) {});
    ASSERT_TRUE(untilOnline(plc));
    std::minstd_rand random(1);
    int takenBack = 0;
    int sent = 0;
    for (int i = 0; i < 300; ++i) {
        Told told;
        const int address = 1000 + 2 * i;
        Operation write = plc.write({{"DM:" + std::to_string(address), number(1)}}, told.call(), unverified());
        for (auto spin = random() % 3000; spin > 0; --spin)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        const bool wasUnsent = write.cancel();
        ASSERT_TRUE(until(plc, [&] { return told.times > 0; }));
        served.awaitRound();
        const std::vector<Request> seen = served.writes();
        const bool wasSeen = std::any_of(seen.begin(), seen.end(), [&](const Request &request) { return request.address == address; });
        ASSERT_NE(wasUnsent, wasSeen) << i << ": " << told.text();
        EXPECT_EQ(told.fate(), wasUnsent ? Fate::NOT_SENT : Fate::ACCEPTED);
        EXPECT_EQ(told.times, 1);
        takenBack += wasUnsent ? 1 : 0;
        sent += wasUnsent ? 0 : 1;
    }
    RecordProperty("takenBack", takenBack);
    RecordProperty("sent", sent);
}

TEST_F(Cancelling, FromManyThreadsTellsOneOutcome)
{
    Plc plc = Plc::open(config());
    for (int i = 0; i < 50; ++i) {
        Told told;
        Operation write = plc.write({{"DM:" + std::to_string(i), number(1)}}, told.call());
        std::vector<std::thread> threads;
        for (int j = 0; j < 4; ++j)
            threads.emplace_back([&] { write.cancel(); });
        for (std::thread &thread : threads)
            thread.join();
        ASSERT_TRUE(until(plc, [&] { return told.times > 0; }));
        plc.dispatch();
        EXPECT_EQ(told.times, 1);
    }
}
