#include "loop_fixture.h"
#include "session/read_once.h"
#include "session/watch_values.h"

#include "support/usage_error.h"

#include <atomic>
#include <set>

namespace {

class StepUntil : public Loop {};
class ReadingOnce : public Loop {};

} // namespace

// ---- Until something holds ---------------------------------------------------------------------------------------

TEST_F(StepUntil, AsksBeforeItLooksAtTheClock)
{
    const auto runtime = made();
    int asked = 0;
    EXPECT_TRUE(stepUntil(*runtime, TimePoint(), [&] { return ++asked > 0; }));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(served.connections(), 0);
}

TEST_F(StepUntil, EndsInTime)
{
    const auto runtime = made();
    EXPECT_FALSE(stepUntil(*runtime, Clock::now(), [] { return false; }));
    EXPECT_EQ(endedEarly(*runtime), "no answer in time");
    EXPECT_EQ(served.connections(), 0);
}

TEST_F(StepUntil, EndsWhereThereIsNothingToConnectTo)
{
    served.stopListening();
    options.endsUnreachable = true;
    const auto runtime = made();
    EXPECT_FALSE(runtime->isUnreachable());
    EXPECT_FALSE(stepUntil(*runtime, soon(), [] { return false; }));
    EXPECT_TRUE(runtime->isUnreachable());
    EXPECT_EQ(endedEarly(*runtime), "there is no PLC to connect to");
    EXPECT_TRUE(runtime->trouble().failure == LinkFailure::REFUSED);
    EXPECT_EQ(runtime->trouble().tcpError, 0u);
    EXPECT_EQ(statistics.losses, 1u);
    EXPECT_TRUE(lines.empty());
}

// Longer than a label of a name may be: no name server is asked.
TEST_F(StepUntil, EndsWhereTheNameDoesNotExist)
{
    options.host = std::string(64, 'a');
    options.endsUnreachable = true;
    const auto runtime = made();
    EXPECT_FALSE(stepUntil(*runtime, soon(), [this] { return statistics.losses > 1; }));
    EXPECT_TRUE(runtime->isUnreachable());
    EXPECT_TRUE(runtime->trouble().failure == LinkFailure::NOT_RESOLVED);
}

TEST_F(StepUntil, GoesOnUnlessItIsToEndThere)
{
    served.stopListening();
    const auto runtime = made();
    EXPECT_TRUE(stepUntil(*runtime, soon(), [this] { return statistics.losses >= 2; }));
    EXPECT_FALSE(runtime->isUnreachable());
    EXPECT_EQ(lines.size(), 2u);
}

TEST_F(StepUntil, GoesOnWhereThePlcWasThereBefore)
{
    options.endsUnreachable = true;
    const auto runtime = made();
    EXPECT_TRUE(stepUntil(*runtime, soon(), [&] { return runtime->wasOnline(); }));
    served.stopListening();
    served.hangUp();
    const unsigned long before = statistics.losses;
    EXPECT_TRUE(stepUntil(*runtime, soon(), [&] { return statistics.losses >= before + 2; }));
    EXPECT_FALSE(runtime->isUnreachable());
}

TEST_F(StepUntil, EndsWithTheProgram)
{
    StopSignal stop;
    options.stop = &stop;
    const auto runtime = made();
    stop.stop();
    EXPECT_FALSE(stepUntil(*runtime, soon(), [] { return false; }));
    EXPECT_EQ(endedEarly(*runtime), "interrupted");
    EXPECT_EQ(served.connections(), 0);
}

// ---- Read once ---------------------------------------------------------------------------------------------------

TEST_F(ReadingOnce, IsCompleteWhenEveryWordWasReadOrRefused)
{
    served.set(0, {11, 12});
    served.rule([](const Request &request) {
        return Treatment{Treatment::ANSWER, request.isRead() && request.address == 500 ? 0x1103u : 0u};
    });
    const auto runtime = made();
    ReadOnce read(*runtime, {dm(0, 2), dm(500)});
    EXPECT_FALSE(read.complete());
    EXPECT_FALSE(read.anyRefused());
    EXPECT_FALSE(read.allRefused());
    ASSERT_TRUE(stepUntil(*runtime, soon(), [&] { return read.complete(); }));
    EXPECT_TRUE(read.anyRefused());
    EXPECT_FALSE(read.allRefused());
    EXPECT_TRUE(read.refused(dm(500)));
    EXPECT_FALSE(read.refused(dm(0, 2)));
    EXPECT_EQ(runtime->values(dm(0, 2)), (std::vector<quint8>{11, 0, 12, 0}));
    EXPECT_EQ(lines.back(), "the PLC refuses to read DM:500: 1103 (the first address is out of range)");
}

TEST_F(ReadingOnce, KnowsWhenAllIsRefused)
{
    served.rule([](const Request &request) { return Treatment{Treatment::ANSWER, request.isRead() ? 0x1103u : 0u}; });
    const auto runtime = made();
    ReadOnce read(*runtime, {dm(500)});
    ASSERT_TRUE(stepUntil(*runtime, soon(), [&] { return read.complete(); }));
    EXPECT_TRUE(read.allRefused());
}

TEST_F(ReadingOnce, HasNothingRefusedWhereAllCanBeRead)
{
    const auto runtime = made();
    ReadOnce read(*runtime, {dm(0, 2)});
    ASSERT_TRUE(stepUntil(*runtime, soon(), [&] { return read.complete(); }));
    EXPECT_FALSE(read.anyRefused());
    EXPECT_FALSE(read.refused(dm(0)));
    EXPECT_FALSE(read.allRefused());
}

// ---- Attempts to connect -----------------------------------------------------------------------------------------

TEST_F(Loop, WaitsForTheNextAttempt)
{
    served.stopListening();
    const auto runtime = made();
    runtime->step(soon());
    runtime->step(soon());
    EXPECT_EQ(statistics.losses, 2u);
    runtime->step(Clock::now());
    EXPECT_EQ(statistics.losses, 2u);
}

// A name takes a moment to resolve, which the second attempt does not get.
TEST_F(Loop, LearnsNothingFromAnAttemptThatItsTimeCutsShort)
{
    served.stopListening();
    options.host = "localhost";
    const auto runtime = made();
    runtime->step(soon());
    ASSERT_TRUE(runtime->trouble().failure == LinkFailure::REFUSED);
    runtime->step(runtime->retryAt());
    EXPECT_TRUE(runtime->trouble().failure == LinkFailure::REFUSED);
    EXPECT_EQ(statistics.losses, 1u);
    EXPECT_EQ(lines.size(), 1u);
}

TEST_F(Loop, SeesThatTheLinkEndsInAPause)
{
    options.interval = Millis(20000);
    const auto runtime = made();
    runtime->onTick([this] { served.hangUp(); });
    runtime->step(soon()); // connects
    runtime->step(soon()); // node addresses, and a pause
    EXPECT_EQ(statistics.losses, 1u);
    EXPECT_TRUE(runtime->trouble().failure == LinkFailure::CLOSED);
    EXPECT_TRUE(runtime->phase() == LinkPhase::WAITING);
}

TEST_F(Loop, SeesThatTheLinkEndsWhereNothingCanBeRead)
{
    served.rule([](const Request &request) { return Treatment{Treatment::ANSWER, request.isRead() ? 0x1103u : 0u}; });
    const auto runtime = made();
    ReadOnce read(*runtime, {dm(0)});
    ASSERT_TRUE(stepUntil(*runtime, soon(), [&] { return read.complete(); }));
    served.hangUp();
    EXPECT_TRUE(stepUntil(*runtime, soon(), [this] { return statistics.losses == 1; }));
}

// ---- The loop ----------------------------------------------------------------------------------------------------

TEST_F(Loop, NeedsTwoRetriesToChangeTheMode)
{
    options.allowModeChange = true;
    options.retries = 1;
    EXPECT_EQ(usageError([&] { Runtime(*driver, options); }),
              "--allow-mode-change needs --retries 2 or more: with 1 the driver drops the link instead");
    options.retries = 2;
    EXPECT_EQ(usageError([&] { Runtime(*driver, options); }), "");
}

// The node addresses first; the read that comes with them is not sent, and so on with reads of two words each.
TEST_F(Loop, CountsWhatItSendsAndGets)
{
    const auto runtime = made();
    runtime->watch({dm(0, 2)});
    EXPECT_FALSE(runtime->answering());
    stepUntilRequests(*runtime, 6);
    EXPECT_EQ(statistics.connections, 1u);
    EXPECT_EQ(statistics.requests, 6u);
    EXPECT_EQ(statistics.replies, 6u);
    EXPECT_EQ(statistics.retries, 0u);
    EXPECT_EQ(statistics.rejected(), 0u);
    EXPECT_EQ(statistics.wordsRead, 10u);
    EXPECT_EQ(statistics.wordsWritten, 0u);
    EXPECT_EQ(statistics.roundTrips.count(), 0u);
    EXPECT_EQ(runtime->roundTrip(), Micros(0));
    EXPECT_TRUE(runtime->answering());
    EXPECT_EQ(runtime->clientNode(), 0x0A);
    EXPECT_EQ(runtime->serverNode(), 0x32);
    ASSERT_TRUE(runtime->canWrite());
    runtime->write(dm(7, 3), {1, 0, 2, 0, 3, 0});
    runtime->step(soon());
    EXPECT_EQ(statistics.wordsWritten, 3u);
    EXPECT_EQ(served.dm(9), 3);
    EXPECT_EQ(lines, std::vector<std::string>{"connected to " + served.host() + ": this node 10, PLC node 50"});
}

TEST_F(Loop, MeasuresRoundTripsWhereTheyAreAskedFor)
{
    options.roundTrips = true;
    const auto runtime = made();
    stepUntilRequests(*runtime, 4);
    EXPECT_EQ(statistics.roundTrips.count(), 4u);
    EXPECT_GT(runtime->roundTrip(), Micros(0));
    EXPECT_LT(runtime->roundTrip(), Micros(20000000));
}

// The driver repeats what is not answered, under its number.
TEST_F(Loop, CountsMissingRepliesAndWhatIsSentAgain)
{
    std::atomic<int> lost{0};
    served.rule([&](const Request &request) {
        return Treatment{request.isRead() && lost++ < 2 ? Treatment::LOSE : Treatment::ANSWER};
    });
    options.timeout = Millis(100);
    const auto runtime = made();
    EXPECT_TRUE(stepUntil(*runtime, soon(), [&] { return runtime->wasOnline(); }));
    EXPECT_EQ(statistics.missing, 2u);
    EXPECT_EQ(statistics.retries, 2u);
    EXPECT_EQ(statistics.wrong, 0u);
    EXPECT_EQ(statistics.refused, 0u);
    EXPECT_EQ(statistics.losses, 0u);
    EXPECT_EQ(statistics.errorCount(), 2u);
}

TEST_F(Loop, ReadsAgainWhereThePlcIsBusy)
{
    std::atomic<int> busy{0};
    served.rule([&](const Request &request) {
        return Treatment{Treatment::ANSWER, request.isRead() && busy++ < 2 ? 0x0204u : 0u};
    });
    const auto runtime = made();
    EXPECT_TRUE(stepUntil(*runtime, soon(), [&] { return runtime->wasOnline(); }));
    EXPECT_EQ(statistics.refused, 2u);
    EXPECT_EQ(statistics.retries, 2u);
    EXPECT_EQ(statistics.missing, 0u);
    EXPECT_EQ(statistics.losses, 0u);
    EXPECT_EQ(lines.size(), 1u); // of the connection
}

TEST_F(Loop, DropsTheLinkAfterThreeMissingReplies)
{
    served.rule([](const Request &request) {
        return Treatment{request.isRead() ? Treatment::LOSE : Treatment::ANSWER};
    });
    options.timeout = Millis(50);
    const auto runtime = made();
    // A slow machine may lose a connect before that.
    EXPECT_TRUE(stepUntil(*runtime, soon(), [this] { return statistics.missing >= 3 && statistics.losses > 0; }));
    EXPECT_EQ(statistics.missing, 3u);
    EXPECT_TRUE(runtime->trouble().failure == LinkFailure::SILENCE);
    EXPECT_TRUE(runtime->trouble().phase == LinkPhase::PROVING);
    EXPECT_EQ(runtime->trouble().text, "no reply in time, 3 times in a row");
    EXPECT_FALSE(runtime->answering());
    EXPECT_FALSE(runtime->canWrite());
}

// Up to five writes come before the next read.
TEST_F(Loop, LetsThePollHaveItsTurnBetweenWrites)
{
    const auto runtime = made();
    EXPECT_FALSE(runtime->canWrite());
    ASSERT_TRUE(stepUntil(*runtime, soon(), [&] { return runtime->canWrite(); }));
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(runtime->canWrite()) << i;
        runtime->write(dm(10 + i), {1, 0});
        runtime->step(soon());
    }
    EXPECT_EQ(served.writes().size(), 5u);
    EXPECT_FALSE(runtime->canWrite());
    runtime->step(soon());
    EXPECT_TRUE(served.requests().back().isRead());
    EXPECT_TRUE(runtime->canWrite());
}

TEST_F(Loop, TellsOfEveryOrderAndExchange)
{
    served.rule([](const Request &request) {
        return Treatment{Treatment::ANSWER, request.isWrite() && request.address == 11 ? 0x2101u : 0u};
    });
    const auto runtime = made();
    std::vector<std::string> told;
    const CallHandle orders = runtime->onOrder([&](const FRAME_PRO &request, RequestKind) {
        told.push_back("order " + std::to_string(request.address));
    });
    const CallHandle exchanges = runtime->onExchange([&](const Exchange &exchange) {
        if (exchange.kind == RequestKind::WRITE)
            told.push_back(std::to_string(exchange.request.address) + (exchange.accepted ? " accepted" : " not accepted")
                           + (exchange.switches ? ", switches" : "") + (exchange.leftOut ? ", left out" : ""));
    });
    for (const qint32 address : {10, 11, 12}) {
        ASSERT_TRUE(stepUntil(*runtime, soon(), [&] { return runtime->canWrite(); }));
        runtime->write(dm(address), {1, 0});
        runtime->step(soon());
        EXPECT_EQ(runtime->canWrite(), address != 11); // after a refusal a read has to prove the link
    }
    EXPECT_EQ(told, (std::vector<std::string>{"order 10", "10 accepted", "order 11", "11 not accepted", "order 12",
                                              "12 accepted"}));
    EXPECT_EQ(statistics.refused, 1u);
    EXPECT_EQ(statistics.connections, 1u);
    EXPECT_EQ(served.dm(12), 1);
}

// A refused word parts the poll into turns; none of them loses its place to the next one.
TEST_F(Loop, PollsEveryBlockOfEveryTurn)
{
    served.rule([](const Request &request) {
        const bool hasWord = request.isRead() && request.address <= 1 && request.address + request.count > 1;
        return Treatment{Treatment::ANSWER, hasWord ? 0x1103u : 0u};
    });
    options.wordsPerFrame = 3;
    const auto runtime = made();
    runtime->watch({dm(0, 3), dm(100), dm(200), dm(300)});
    EXPECT_TRUE(stepUntil(*runtime, soon(), [&] { return runtime->isSteady() && runtime->leavesOut(dm(1)); }));
    const std::size_t before = served.requests().size();
    stepUntilRequests(*runtime, statistics.requests + 20);
    std::set<int> polled;
    const std::vector<Request> all = served.requests();
    for (std::size_t i = before; i < all.size(); ++i)
        polled.insert(all[i].address);
    EXPECT_EQ(polled, (std::set<int>{0, 2, 100, 200, 300}));
}

// ---- Watched values ----------------------------------------------------------------------------------------------

TEST_F(Loop, KeepsAValuePendingWhileAWriteOfItIsNotSettled)
{
    const auto runtime = made();
    std::vector<Item> written = {dm(1)};
    WatchValues values(*runtime, {{"a", dm(0), ValueFormat(), "", ""}, {"b", dm(1), ValueFormat(), "", ""}}, {},
                       [&] { return written; });
    const auto qualityIs = [&](std::size_t index, Quality quality) { return values.values()[index].quality == quality; };
    EXPECT_TRUE(stepUntil(*runtime, soon(), [&] { return qualityIs(0, Quality::GOOD); }));
    EXPECT_TRUE(qualityIs(1, Quality::WRITE_PENDING));
    stepUntilRequests(*runtime, statistics.requests + 3);
    EXPECT_TRUE(qualityIs(1, Quality::WRITE_PENDING));
    written.clear();
    stepUntilRequests(*runtime, statistics.requests + 2);
    EXPECT_TRUE(qualityIs(0, Quality::GOOD) && qualityIs(1, Quality::GOOD));
    EXPECT_EQ(values.changes(), 0u);
}

TEST_F(Loop, KnowsWhichWordsItsWatchedValuesCover)
{
    const auto runtime = made();
    const WatchValues values(*runtime, {{"a", dm(0, 2), ValueFormat(), "", ""}}, {}, [] { return std::vector<Item>(); });
    EXPECT_TRUE(values.covers({dm(0), dm(1)}));
    EXPECT_TRUE(values.covers({{QString::fromLatin1("DM_bit"), 17, 1, true}}));
    EXPECT_FALSE(values.covers({dm(1, 2)}));
}
