#include "plc_fixture.h"

// Handles end what they stand for, whoever destroys them and wherever.

class HandleOf : public PlcFixture {
protected:
    // A callback that owns what the pointer points to.
    template <typename Call>
    static auto holding(const std::shared_ptr<int> &owned, Call call)
    {
        return [owned, call](const auto &event) { call(event); };
    }
};

TEST_F(HandleOf, AWatchMayBeDestroyedInItsOwnCallback)
{
    Plc plc = Plc::open(config());
    int calls = 0;
    std::optional<Watch> watch;
    watch = plc.watch({"DM:0"}, [&](const Samples &) {
        ++calls;
        watch.reset();
    });
    Seen seen;
    const Watch other = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(watch.has_value());
}

TEST_F(HandleOf, AListenerMayBeDestroyedInItsOwnCallback)
{
    Plc plc = Plc::open(config());
    int calls = 0;
    std::optional<Handle> states;
    states = plc.onState([&](const State &) {
        ++calls;
        states.reset();
    });
    served.awaitRound(); // several states wait
    plc.dispatch();
    ASSERT_TRUE(untilOnline(plc));
    plc.dispatch();
    EXPECT_EQ(calls, 1);
}

TEST_F(HandleOf, AnOperationMayBeDestroyedInItsOwnCallback)
{
    Plc plc = Plc::open(config());
    int calls = 0;
    std::optional<Operation> write;
    write = plc.write({{"DM:0", number(1)}}, [&](const Outcomes &) {
        ++calls;
        write.reset();
    });
    ASSERT_TRUE(until(plc, [&] { return calls > 0; }));
    served.awaitRound();
    plc.dispatch();
    EXPECT_EQ(calls, 1);
}

// Both have events that wait; whichever comes first destroys the other.
TEST_F(HandleOf, AWatchDestroyedInAnothersCallbackIsNotCalledAnyMore)
{
    Plc plc = Plc::open(config());
    int calls = 0;
    std::optional<Watch> one, two;
    one = plc.watch({"DM:0"}, [&](const Samples &) {
        ++calls;
        two.reset();
    });
    two = plc.watch({"DM:1"}, [&](const Samples &) {
        ++calls;
        one.reset();
    });
    plc.dispatch();
    EXPECT_EQ(calls, 1);
    EXPECT_NE(one.has_value(), two.has_value());
}

TEST_F(HandleOf, AWatchDestroyedOnAnotherThreadWaitsForItsCallback)
{
    Plc plc = Plc::open(config());
    std::atomic<bool> isDestroying{false};
    std::atomic<bool> hasReturned{false};
    std::optional<Watch> watch;
    std::thread destroyer;
    watch = plc.watch({"DM:0"}, [&](const Samples &) {
        destroyer = std::thread([&] {
            isDestroying = true;
            watch.reset();
            EXPECT_TRUE(hasReturned);
        });
        while (!isDestroying)
            std::this_thread::yield();
        for (int i = 0; i < 1000; ++i) // long enough for a destructor that does not wait
            std::this_thread::yield();
        hasReturned = true;
    });
    plc.dispatch();
    destroyer.join();
}

TEST_F(HandleOf, EndsForGoodWhatItStandsFor)
{
    Plc plc = Plc::open(config());
    int calls = 0;
    Watch watch = plc.watch({"DM:0"}, [&](const Samples &) { ++calls; });
    Handle states = plc.onState([&](const State &) { ++calls; });
    Handle lines = plc.onMessage([&](const std::string &) { ++calls; });
    Operation write = plc.write({{"DM:1", number(2)}}, [&](const Outcomes &) { ++calls; });
    served.awaitWrites(1); // it is carried out, though nobody is told
    watch = Watch();
    states = Handle();
    lines = Handle();
    write = Operation();
    served.set(0, {1});
    served.hangUp();
    served.awaitConnections(2);
    served.awaitRound();
    plc.dispatch();
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(served.dm(1), 2);
}

TEST_F(HandleOf, EndsThePollingOfItsWords)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch kept = plc.watch({"DM:0"}, seen.call());
    {
        const Watch ended = plc.watch({"DM:500"}, seen.call());
        ASSERT_TRUE(until(plc, [&] {
            return plc.snapshot({"DM:500"})[0].quality == Quality::GOOD;
        }));
    }
    served.awaitRound();
    served.awaitRound();
    const std::size_t before = served.requests().size();
    served.awaitRound();
    const std::vector<Request> requests = served.requests();
    for (std::size_t i = before; i < requests.size(); ++i)
        EXPECT_EQ(requests[i].address, 0);
}

TEST_F(HandleOf, EveryKindMayOutliveItsPlc)
{
    int after = 0;
    bool isGone = false;
    const auto count = [&](const auto &...) { after += isGone ? 1 : 0; };
    Watch watch;
    Handle states, lines;
    Operation write;
    {
        Plc plc = Plc::open(config());
        watch  = plc.watch({"DM:0"}, count);
        states = plc.onState(count);
        lines  = plc.onMessage(count);
        write  = plc.write({{"DM:0", number(1)}}, count);
        ASSERT_TRUE(untilOnline(plc));
    }
    isGone = true;
    EXPECT_FALSE(write.cancel());
    watch = Watch();
    states = Handle();
    lines = Handle();
    write = Operation();
    EXPECT_EQ(after, 0);
}

// What a callback owns is given back where its handle goes, and not when and where the library thinks of it.
TEST_F(HandleOf, LetsGoOfItsCallbackWhenItIsDestroyed)
{
    Plc plc = Plc::open(config());
    ASSERT_TRUE(untilOnline(plc));
    becomeQuiet(plc);
    auto owned = std::make_shared<int>(1);
    const std::weak_ptr<int> seen = owned;
    Watch watch = plc.watch({"DM:7"}, holding(owned, [](const Samples &) {}));
    Handle states = plc.onState(holding(owned, [](const State &) {}));
    Handle lines = plc.onMessage(holding(owned, [](const std::string &) {}));
    Operation write = plc.write({{"DM:1", number(2)}}, holding(owned, [](const Outcomes &) {}));
    owned.reset();
    watch = Watch();
    states = Handle();
    lines = Handle();
    EXPECT_FALSE(seen.expired());
    write = Operation();
    EXPECT_TRUE(seen.expired());
}

TEST_F(HandleOf, LetsGoOfItsCallbackAfterTheCallInWhichItIsDestroyed)
{
    Plc plc = Plc::open(config());
    auto owned = std::make_shared<int>(1);
    const std::weak_ptr<int> seen = owned;
    std::optional<Watch> watch;
    bool wasThere = false;
    watch = plc.watch({"DM:7"}, holding(owned, [&](const Samples &) {
        watch.reset();
        wasThere = !seen.expired();
    }));
    owned.reset();
    plc.dispatch();
    EXPECT_TRUE(wasThere);
    EXPECT_TRUE(seen.expired());
}

// The Plc goes with the callback that owns it, on the thread that destroys the handle.
TEST_F(HandleOf, MayOwnThePlcThroughItsCallback)
{
    auto plc = std::make_shared<Plc>(Plc::open(config()));
    ASSERT_TRUE(untilOnline(*plc));
    served.awaitRound();
    Watch watch = plc->watch({"DM:7"}, [plc](const Samples &) {});
    plc.reset();
    EXPECT_EQ(served.ends(), 0);
    watch = Watch();
    served.awaitEnds(1);
}
