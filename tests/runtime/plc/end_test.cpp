#include "plc_fixture.h"

#include <netdb.h>

#include <algorithm>
#include <condition_variable>
#include <dlfcn.h>
#include <fcntl.h>
#include <mutex>

// The end of a Plc: what was ordered has its outcome, once; nothing comes afterwards; and nobody waits for the network.

class Close : public PlcFixture {};
class Destructor : public PlcFixture {
protected:
    // The peer has seen nothing of the end but the end of the connection.
    void expectEndOnly(std::size_t requestsBefore)
    {
        served.awaitEnds(1);
        EXPECT_EQ(served.requests().size(), requestsBefore);
    }
};

// ---- A resolver that keeps its answer back -----------------------------------------------------------------------

static const char HELD_NAME[] = "a-plc-whose-name-is-being-looked-up.invalid";

namespace {

struct Gate {
    std::mutex              mutex;
    std::condition_variable changed;
    bool                    isOpen   = false;
    int                     waiting  = 0;
    int                     returned = 0;
};

// Never destroyed: the resolver's thread may end after main().
Gate &gate()
{
    static Gate &made = *new Gate;
    return made;
}

} // namespace

// Stands before the system's resolver in this program.
extern "C" int getaddrinfo(const char *name, const char *service, const addrinfo *hints, addrinfo **found)
{
    static const auto next = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (name == nullptr || std::string(name) != HELD_NAME)
        return next(name, service, hints, found);
    if (hints != nullptr && (hints->ai_flags & AI_NUMERICHOST) != 0)
        return EAI_NONAME;
    std::unique_lock<std::mutex> lock(gate().mutex);
    ++gate().waiting;
    gate().changed.notify_all();
    gate().changed.wait(lock, [] { return gate().isOpen; });
    ++gate().returned;
    gate().changed.notify_all();
    return EAI_NONAME;
}

// ---- close() -----------------------------------------------------------------------------------------------------

TEST_F(Close, MakesAWriteInFlightUnconfirmedOnce)
{
    Plc plc = Plc::open(config());
    holdWrites();
    Told told;
    const Operation write = plc.write({{"DM:0", number(7)}}, told.call());
    served.awaitHeld();
    plc.close();
    EXPECT_EQ(told.times, 0);
    while (plc.dispatch(1h)) {
    }
    ASSERT_EQ(told.times, 1);
    EXPECT_EQ(told.fate(), Fate::UNCONFIRMED);
    EXPECT_EQ(told.text(), "unconfirmed: DM:0: no reply to the write, and it was not read back");
}

TEST_F(Close, LeavesTheWritesBehindNotSentOnce)
{
    Config with = config();
    with.recipes = {{"mix", {{"DM:20", {"7"}}}}};
    Plc plc = Plc::open(with);
    holdWrites();
    Told first, second, recipe;
    fins::RecipeValues read;
    int reads = 0;
    const Operation a = plc.write({{"DM:0", number(7)}, {"DM:100", number(8)}}, first.call());
    const Operation b = plc.write({{"DM:1", number(9)}}, second.call());
    const Operation c = plc.writeRecipe("mix", recipe.call());
    const Operation d = plc.readRecipe("mix", [&](const fins::RecipeValues &values) {
        read = values;
        ++reads;
    });
    served.awaitHeld();
    plc.close();
    while (plc.dispatch(1h)) {
    }
    ASSERT_EQ(first.times, 1);
    EXPECT_EQ(first.fate(0), Fate::UNCONFIRMED);
    EXPECT_EQ(first.fate(1), Fate::NOT_SENT);
    ASSERT_EQ(second.times, 1);
    EXPECT_EQ(second.fate(), Fate::NOT_SENT);
    EXPECT_EQ(second.text(), "not sent: DM:1: the link was closed");
    ASSERT_EQ(recipe.times, 1);
    EXPECT_EQ(recipe.fate(), Fate::NOT_SENT);
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(read.end, fins::RecipeValues::End::NO_ANSWER);
    ASSERT_EQ(read.values.size(), 1u);
    EXPECT_EQ(read.values[0].quality, Quality::NOT_CONNECTED);
    EXPECT_EQ(served.writes().size(), 1u);
}

TEST_F(Close, LeavesAWriteWithoutALinkNotSent)
{
    served.stopListening();
    Plc plc = Plc::open(config());
    Told told;
    const Operation write = plc.write({{"DM:0", number(7)}}, told.call());
    plc.close();
    while (plc.dispatch(1h)) {
    }
    ASSERT_EQ(told.times, 1);
    EXPECT_EQ(told.fate(), Fate::NOT_SENT);
}

TEST_F(Close, LeavesAWriteOrderedAfterItNotSent)
{
    Plc plc = Plc::open(config());
    plc.close();
    Told told;
    const Operation write = plc.write({{"DM:0", number(7)}}, told.call());
    EXPECT_TRUE(isReadable(plc.readyFd()));
    plc.dispatch();
    ASSERT_EQ(told.times, 1);
    EXPECT_EQ(told.fate(), Fate::NOT_SENT);
    EXPECT_EQ(told.text(), "not sent: DM:0: the link is closed");
    EXPECT_FALSE(plc.dispatch(1h));
}

TEST_F(Close, EndsARecipeUnderWay)
{
    Config with = config();
    with.recipes = {{"mix", {{"DM:20", {"7"}}, {"DM:1000", {"8"}}}}};
    Plc plc = Plc::open(with);
    holdWrites();
    Told told;
    const Operation write = plc.writeRecipe("mix", told.call());
    served.awaitHeld();
    plc.close();
    while (plc.dispatch(1h)) {
    }
    ASSERT_EQ(told.times, 1);
    EXPECT_EQ(told.fate(0), Fate::UNCONFIRMED);
    EXPECT_EQ(told.fate(1), Fate::NOT_SENT);
}

TEST_F(Close, LeavesNoValueGood)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    plc.close();
    EXPECT_EQ(plc.snapshot({"DM:0"})[0].quality, Quality::LAST_KNOWN);
    while (plc.dispatch(1h)) {
    }
    EXPECT_TRUE(seen.endsWith("0", Quality::LAST_KNOWN));
}

TEST_F(Close, IsTheLastState)
{
    Plc plc = Plc::open(config());
    std::vector<Phase> phases;
    const Handle states = plc.onState([&](const State &state) { phases.push_back(state.phase); });
    ASSERT_TRUE(untilOnline(plc));
    plc.close();
    plc.close();
    EXPECT_EQ(plc.state().phase, Phase::CLOSED);
    while (plc.dispatch(1h)) {
    }
    ASSERT_FALSE(phases.empty());
    EXPECT_EQ(phases.back(), Phase::CLOSED);
    EXPECT_EQ(std::count(phases.begin(), phases.end(), Phase::CLOSED), 1);
    std::vector<Phase> later;
    const Handle late = plc.onState([&](const State &state) { later.push_back(state.phase); });
    plc.dispatch();
    EXPECT_EQ(later, std::vector<Phase>{Phase::CLOSED});
}

TEST_F(Close, SaysNothingToThePlc)
{
    Plc plc = Plc::open(config());
    served.holdAll();
    served.awaitHeld();
    const std::size_t before = served.requests().size();
    plc.close();
    served.awaitEnds(1);
    EXPECT_EQ(served.requests().size(), before);
}

// Wherever the end falls, every write has one outcome, and a write that is said not to be sent was never seen.
TEST_F(Close, TellsTheTruthOfEveryWriteWheneverItComes)
{
    for (int round = 0; round < 60; ++round) {
        ServedPlc peer;
        Plc plc = Plc::open(configOf(peer.host()));
        Told told[4];
        std::vector<Operation> writes;
        for (int i = 0; i < 4; ++i)
            writes.push_back(plc.write({{"DM:" + std::to_string(10 + i), number(1)}}, told[i].call()));
        while (static_cast<int>(peer.requests().size()) < round % 12)
            std::this_thread::yield();
        plc.close();
        while (plc.dispatch(1h)) {
        }
        const std::vector<Request> seen = peer.writes();
        for (int i = 0; i < 4; ++i) {
            ASSERT_EQ(told[i].times, 1) << round;
            const Fate fate = told[i].fate();
            EXPECT_NE(fate, Fate::INVALID);
            const bool wasSeen = std::any_of(seen.begin(), seen.end(), [&](const Request &request) { return request.address == 10 + i; });
            if (fate == Fate::NOT_SENT) {
                EXPECT_FALSE(wasSeen) << round;
            } else if (fate == Fate::VERIFIED) {
                EXPECT_TRUE(wasSeen) << round;
            }
        }
    }
}

// ---- The destructor ----------------------------------------------------------------------------------------------

TEST_F(Destructor, TellsTheOutcomesThatAreLeftAndNothingElse)
{
    Told inFlight, behind;
    Seen seen;
    int states = 0;
    Operation a, b;
    Watch watch;
    Handle listener;
    {
        Plc plc = Plc::open(config());
        watch = plc.watch({"DM:5"}, seen.call());
        listener = plc.onState([&](const State &) { ++states; });
        holdWrites();
        a = plc.write({{"DM:0", number(7)}}, inFlight.call());
        b = plc.write({{"DM:1", number(7)}}, behind.call());
        served.awaitHeld();
    }
    ASSERT_EQ(inFlight.times, 1);
    EXPECT_EQ(inFlight.fate(), Fate::UNCONFIRMED);
    ASSERT_EQ(behind.times, 1);
    EXPECT_EQ(behind.fate(), Fate::NOT_SENT);
    EXPECT_EQ(seen.calls, 0);
    EXPECT_EQ(states, 0);
}

TEST_F(Destructor, InsideACallbackLosesNoOutcome)
{
    std::optional<Plc> plc = Plc::open(config());
    Told told[3];
    std::vector<Operation> writes;
    holdWrites();
    for (int i = 0; i < 3; ++i)
        writes.push_back(plc->write({{"DM:" + std::to_string(i), number(7)}}, told[i].call()));
    served.awaitHeld();
    int calls = 0;
    const Watch watch = plc->watch({"DM:5"}, [&](const Samples &) {
        ++calls;
        plc.reset();
    });
    plc->dispatch();
    EXPECT_FALSE(plc.has_value());
    EXPECT_EQ(calls, 1);
    for (const Told &one : told)
        ASSERT_EQ(one.times, 1);
    EXPECT_EQ(told[0].fate(), Fate::UNCONFIRMED);
    EXPECT_EQ(told[1].fate(), Fate::NOT_SENT);
    EXPECT_EQ(told[2].fate(), Fate::NOT_SENT);
}

TEST_F(Destructor, InsideAnOutcomeLosesNoOtherOne)
{
    std::optional<Plc> plc = Plc::open(config());
    Told behind;
    int calls = 0;
    served.rule([](const Request &request) {
        return Treatment{request.isWrite() && request.address == 1 ? Treatment::HOLD : Treatment::ANSWER};
    });
    const Operation first = plc->write({{"DM:0", number(7)}}, [&](const Outcomes &) {
        ++calls;
        plc.reset();
    });
    const Operation second = plc->write({{"DM:1", number(7)}}, behind.call());
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (plc && std::chrono::steady_clock::now() < deadline)
        plc->dispatch(20ms);
    EXPECT_EQ(calls, 1);
    ASSERT_EQ(behind.times, 1);
    EXPECT_TRUE(behind.fate() == Fate::NOT_SENT || behind.fate() == Fate::UNCONFIRMED);
}

TEST_F(Destructor, DoesNotWaitForAPlcThatKeepsItsAnswerBack)
{
    std::optional<Plc> plc = Plc::open(config());
    served.awaitRound();
    served.holdAll();
    served.awaitHeld();
    const std::size_t before = served.requests().size();
    plc.reset(); // what is held back is answered afterwards only
    expectEndOnly(before);
    served.release();
}

TEST_F(Destructor, DoesNotWaitForTheNodeAddresses)
{
    served.holdAll();
    std::optional<Plc> plc = Plc::open(config());
    served.awaitHeld();
    EXPECT_EQ(plc->state().phase == Phase::ONLINE, false);
    plc.reset();
    expectEndOnly(1);
}

// Nobody accepts, and the queue of the listener is full: the attempt gets no answer at all.
TEST_F(Destructor, DoesNotWaitForAnAttemptToConnect)
{
    const HeldPort port;
    const int listener = port.startListening();
    ASSERT_EQ(listen(listener, 0), 0);
    std::vector<int> fill;
    for (bool isFull = false; !isFull;) {
        const int one = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_in address = {};
        address.sin_family      = AF_INET;
        address.sin_port        = htons(static_cast<std::uint16_t>(port.number()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int made = connect(one, reinterpret_cast<const sockaddr *>(&address), sizeof address);
        ASSERT_TRUE(made == 0 || errno == EINPROGRESS);
        pollfd polled = {one, POLLOUT, 0};
        isFull = poll(&polled, 1, 200) == 0;
        fill.push_back(one);
    }
    Config with = configOf(port.host());
    with.timeout = 60000ms;
    {
        Plc plc = Plc::open(with);
        ASSERT_TRUE(until(plc, [&] { return plc.state().phase == Phase::CONNECTING; }));
    }
    for (const int one : fill)
        close(one);
    close(listener);
}

TEST_F(Destructor, DoesNotWaitForTheResolver)
{
    Config with = configOf(HELD_NAME);
    with.timeout = 60000ms;
    {
        Plc plc = Plc::open(with);
        std::unique_lock<std::mutex> lock(gate().mutex);
        ASSERT_TRUE(gate().changed.wait_for(lock, 20s, [] { return gate().waiting == 1; }));
    }
    std::unique_lock<std::mutex> lock(gate().mutex);
    EXPECT_EQ(gate().returned, 0);
    gate().isOpen = true;
    gate().changed.notify_all();
    EXPECT_TRUE(gate().changed.wait_for(lock, 20s, [] { return gate().returned == 1; }));
}

// ---- Moving ------------------------------------------------------------------------------------------------------

class Moving : public PlcFixture {};

TEST_F(Moving, APlcKeepsItsEventsAndWhatItsCallbacksStandFor)
{
    Plc plc = Plc::open(config());
    Seen seen;
    Told told;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    const Operation write = plc.write({{"DM:1", number(4)}}, told.call());
    served.awaitRound();
    EXPECT_TRUE(isReadable(plc.readyFd()));
    Plc moved = std::move(plc);
    ASSERT_TRUE(until(moved, [&] { return seen.endsWith("0") && told.times == 1; }));
    EXPECT_EQ(told.fate(), Fate::VERIFIED);
}

TEST_F(Moving, APlcInTheCallbackOfAnotherPlaceIsAllowed)
{
    std::optional<Plc> plc = Plc::open(config());
    std::optional<Plc> moved;
    const Watch watch = plc->watch({"DM:0"}, [&](const Samples &) {
        if (plc) {
            moved.emplace(std::move(*plc));
            plc.reset();
        }
    });
    plc->dispatch();
    ASSERT_TRUE(moved.has_value());
    EXPECT_TRUE(untilOnline(*moved));
}

TEST_F(Moving, AssigningEndsTheOneBefore)
{
    ServedPlc second;
    Plc plc = Plc::open(config());
    Told told;
    holdWrites();
    const Operation write = plc.write({{"DM:0", number(7)}}, told.call());
    served.awaitHeld();
    plc = Plc::open(configOf(second.host()));
    EXPECT_EQ(told.times, 1);
    served.awaitEnds(1);
    EXPECT_TRUE(untilOnline(plc));
    EXPECT_GE(second.connections(), 1);
}
