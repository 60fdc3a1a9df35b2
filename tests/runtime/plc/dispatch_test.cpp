#include "plc_fixture.h"

#include <set>
#include <stdexcept>

// Events come in dispatch() and nowhere else, one at a time, and the descriptor tells of them.

class Dispatch : public PlcFixture {};
class ReadyFd : public PlcFixture {};

TEST_F(Dispatch, RunsEveryCallbackOnItsOwnThread)
{
    Plc plc = Plc::open(config());
    std::set<std::thread::id> threads;
    std::set<std::string> kinds;
    const auto note = [&](const char *kind) {
        threads.insert(std::this_thread::get_id());
        kinds.insert(kind);
    };
    const Watch watch = plc.watch({"DM:0"}, [&](const Samples &) { note("samples"); });
    const Handle states = plc.onState([&](const State &) { note("state"); });
    const Handle lines = plc.onMessage([&](const std::string &) { note("message"); });
    const Operation write = plc.write({{"DM:1", number(5)}}, [&](const Outcomes &) { note("outcomes"); });
    std::thread::id dispatcher;
    std::thread thread([&] {
        dispatcher = std::this_thread::get_id();
        EXPECT_TRUE(until(plc, [&] { return kinds.size() == 4; }));
    });
    thread.join();
    EXPECT_EQ(threads, std::set<std::thread::id>{dispatcher});
}

TEST_F(Dispatch, IsTheOnlyPlaceWhereCallbacksRun)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    for (int value = 1; value <= 3; ++value) {
        served.set(0, {value});
        served.awaitRound();
    }
    EXPECT_EQ(seen.calls, 0);
    plc.dispatch();
    EXPECT_EQ(seen.calls, 1);
}

TEST_F(Dispatch, DoesNothingInsideACallback)
{
    Plc plc = Plc::open(config());
    int depth = 0;
    int deepest = 0;
    int calls = 0;
    const auto nest = [&] {
        deepest = std::max(deepest, ++depth);
        EXPECT_TRUE(plc.dispatch(1h)); // neither waits nor delivers, and the Plc is open
        --depth;
        ++calls;
    };
    const Watch watch = plc.watch({"DM:0"}, [&](const Samples &) { nest(); });
    const Handle states = plc.onState([&](const State &) { nest(); });
    ASSERT_TRUE(until(plc, [&] { return calls >= 3; }));
    EXPECT_EQ(deepest, 1);
}

TEST_F(Dispatch, LetsACallbackCallEveryOtherFunction)
{
    Config with = config();
    with.recipes = {{"mix", {{"DM:20", {"7"}}}}};
    Plc plc = Plc::open(with);
    Told written, recipe;
    Seen inner;
    std::vector<Handle> handles;
    fins::RecipeValues read;
    bool isRead = false;
    bool isClosed = false;
    const Watch watch = plc.watch({"DM:0"}, [&](const Samples &) {
        if (!handles.empty())
            return;
        handles.push_back(plc.watch({"DM:1"}, inner.call()));
        handles.push_back(plc.write({{"DM:1", number(3)}}, written.call()));
        handles.push_back(plc.writeRecipe("mix", recipe.call()));
        handles.push_back(plc.readRecipe("mix", [&](const fins::RecipeValues &values) {
            read = values;
            isRead = true;
        }));
        handles.push_back(plc.onState([&](const State &state) { isClosed = state.phase == Phase::CLOSED; }));
        handles.push_back(plc.onMessage([](const std::string &) {}));
        EXPECT_EQ(plc.snapshot({"DM:1"}).size(), 1u);
        EXPECT_NE(plc.state().phase, Phase::CLOSED);
        EXPECT_GE(plc.readyFd(), 0);
    });
    ASSERT_TRUE(until(plc, [&] { return written.times == 1 && recipe.times == 1 && isRead && inner.endsWith("3"); }));
    EXPECT_EQ(written.fate(), Fate::VERIFIED);
    EXPECT_EQ(recipe.fate(), Fate::VERIFIED);
    ASSERT_EQ(read.values.size(), 1u);
    EXPECT_EQ(read.values[0].text, "7");
    const Handle closer = plc.onState([&](const State &) { plc.close(); });
    while (plc.dispatch(1h)) {
    }
    EXPECT_TRUE(isClosed);
}

TEST_F(Dispatch, WaitsForTheFirstEvent)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    becomeQuiet(plc);
    const int before = seen.calls;
    std::thread thread([&] { plc.dispatch(1h); });
    served.set(0, {44});
    served.release();
    thread.join();
    EXPECT_EQ(seen.calls, before + 1);
    EXPECT_TRUE(seen.endsWith("44"));
}

TEST_F(Dispatch, IsWokenByClose)
{
    Plc plc = Plc::open(config());
    ASSERT_TRUE(untilOnline(plc));
    becomeQuiet(plc);
    std::thread thread([&] {
        while (plc.dispatch(1h)) {
        }
    });
    plc.close();
    thread.join();
    EXPECT_FALSE(plc.dispatch(1h));
}

// Two threads share the events: no callback runs while another does, and nothing is lost.
TEST_F(Dispatch, ServesTwoThreadsOneCallbackAtATime)
{
    Plc plc = Plc::open(config());
    std::atomic<int> running{0};
    std::atomic<int> mostRunning{0};
    std::atomic<int> latest{-1};
    const auto run = [&] {
        mostRunning = std::max(mostRunning.load(), ++running);
        std::this_thread::yield();
        --running;
    };
    const Watch watch = plc.watch({"DM:0"}, [&](const Samples &samples) {
        run();
        const Value &value = samples.back().value;
        latest = value.index() == 0 ? -1 : static_cast<int>(std::get<std::int64_t>(value));
    });
    const Watch other = plc.watch({"DM:1"}, [&](const Samples &) { run(); });
    const auto deliver = [&] {
        while (plc.dispatch(50ms)) {
        }
    };
    std::thread one(deliver), two(deliver);
    for (int value = 1; value <= 100; ++value) {
        served.set(0, {value, 1000 - value});
        served.awaitRound();
    }
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (latest != 100 && std::chrono::steady_clock::now() < deadline)
        served.awaitRound();
    plc.close();
    one.join();
    two.join();
    EXPECT_EQ(latest, 100);
    EXPECT_EQ(mostRunning, 1);
}

TEST_F(Dispatch, WaitsWhileAnotherThreadDelivers)
{
    Plc plc = Plc::open(config());
    std::atomic<bool> isInside{false};
    std::atomic<bool> mayReturn{false};
    std::atomic<bool> hasOverlapped{false};
    const Watch watch = plc.watch({"DM:0"}, [&](const Samples &) {
        isInside = true;
        while (!mayReturn)
            std::this_thread::yield();
        isInside = false;
    });
    std::thread one([&] { plc.dispatch(); });
    while (!isInside)
        std::this_thread::yield();
    std::atomic<int> rounds{0};
    std::thread two([&] {
        plc.dispatch(1h); // something comes after the callback at the latest
        hasOverlapped = isInside.load();
        ++rounds;
    });
    served.awaitRound();
    EXPECT_EQ(rounds, 0);
    mayReturn = true;
    one.join();
    served.set(0, {1});
    two.join();
    EXPECT_FALSE(hasOverlapped);
}

TEST_F(Dispatch, LetsAnExceptionOutAndKeepsTheOtherEvents)
{
    Plc plc = Plc::open(config());
    std::vector<Phase> phases;
    const Handle states = plc.onState([&](const State &state) {
        phases.push_back(state.phase);
        if (phases.size() == 1)
            throw std::runtime_error("of the application");
    });
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    served.awaitRound();
    served.awaitRound(); // the link is up, and its first read dealt with
    EXPECT_THROW(plc.dispatch(), std::runtime_error);
    EXPECT_EQ(phases.size(), 1u);
    EXPECT_TRUE(isReadable(plc.readyFd()));
    plc.dispatch();
    ASSERT_EQ(phases.back(), Phase::ONLINE);
    for (std::size_t i = 1; i < phases.size(); ++i) // one after the other, none left out
        EXPECT_EQ(static_cast<int>(phases[i]), static_cast<int>(phases[i - 1]) + 1);
    EXPECT_TRUE(seen.endsWith("0"));
}

TEST_F(Dispatch, KeepsTheOutcomeBehindAProgressThatThrows)
{
    Config with = config();
    with.recipes = {{"mix", {{"DM:20", {"7"}}}}};
    Plc plc = Plc::open(with);
    Told told;
    int progresses = 0;
    const Operation write = plc.writeRecipe("mix", told.call(), {}, [&](std::size_t, std::size_t) {
        ++progresses;
        throw std::runtime_error("of the application");
    });
    served.awaitWrites(1);
    served.awaitRound(); // the words are read back
    served.awaitRound();
    served.awaitRound();
    EXPECT_THROW(plc.dispatch(), std::runtime_error);
    const auto holds = [&] {
        try {
            plc.dispatch(20ms);
        } catch (const std::runtime_error &) {
        }
        return told.times > 0;
    };
    ASSERT_TRUE(until(plc, holds));
    EXPECT_EQ(told.fate(), Fate::VERIFIED);
    EXPECT_EQ(told.times, 1);
}

TEST_F(Dispatch, LeavesWhatComesMeanwhileForTheNextCall)
{
    Plc plc = Plc::open(config());
    ASSERT_TRUE(untilOnline(plc));
    becomeQuiet(plc);
    int calls = 0;
    std::vector<Handle> more;
    const Handle first = plc.onState([&](const State &) {
        ++calls;
        more.push_back(plc.onState([&](const State &) { ++calls; }));
    });
    plc.dispatch();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(isReadable(plc.readyFd()));
    plc.dispatch();
    EXPECT_EQ(calls, 2);
}

TEST_F(ReadyFd, IsReadableExactlyWhileEventsWait)
{
    Plc plc = Plc::open(config());
    ASSERT_TRUE(untilOnline(plc));
    becomeQuiet(plc);
    EXPECT_FALSE(isReadable(plc.readyFd()));
    Seen seen;
    const Watch watch = plc.watch({"DM:3"}, seen.call());
    EXPECT_TRUE(isReadable(plc.readyFd()));
    EXPECT_TRUE(isReadable(plc.readyFd()));
    plc.dispatch();
    EXPECT_FALSE(isReadable(plc.readyFd()));
    served.release();
    EXPECT_TRUE(isReadable(plc.readyFd(), 20000));
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    becomeQuiet(plc);
    EXPECT_FALSE(isReadable(plc.readyFd()));
}

// The wait of dispatch() takes the event; nothing is left to be read then.
TEST_F(ReadyFd, IsNotReadableAfterAWaitThatDelivered)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    for (int value = 1; value <= 20; ++value) {
        served.set(0, {value});
        ASSERT_TRUE(until(plc, [&] { return seen.endsWith(std::to_string(value)); }));
    }
    becomeQuiet(plc);
    EXPECT_FALSE(isReadable(plc.readyFd()));
}

TEST_F(ReadyFd, StaysTheSame)
{
    Plc plc = Plc::open(config());
    const int before = plc.readyFd();
    ASSERT_TRUE(untilOnline(plc));
    served.hangUp();
    Plc moved = std::move(plc);
    EXPECT_EQ(moved.readyFd(), before);
    moved.close();
    EXPECT_EQ(moved.readyFd(), before);
}
