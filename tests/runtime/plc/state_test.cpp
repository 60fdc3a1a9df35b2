#include "plc_fixture.h"

#include <algorithm>

// The state of the link, its messages and its times.

class StateOf : public PlcFixture {};
class Times : public PlcFixture {};
class QueueLimit : public PlcFixture {};

TEST_F(StateOf, GoesThroughItsPhasesInTheirOrder)
{
    served.stopListening();
    Plc plc = Plc::open(config());
    std::vector<State> states;
    const Handle listener = plc.onState([&](const State &state) { states.push_back(state); });
    ASSERT_TRUE(until(plc, [&] { return !states.empty() && states.back().losses >= 1 && states.back().phase == Phase::WAITING; }));
    const State failed = states.back();
    EXPECT_EQ(failed.reason, "the host 127.0.0.1 is there, but nothing listens on TCP port " + std::to_string(served.port()));
    EXPECT_FALSE(failed.remedies.empty());
    EXPECT_GT(failed.nextAttempt, std::chrono::system_clock::time_point());
    EXPECT_EQ(failed.connections, 0u);
    EXPECT_EQ(failed.plcNode, 0);
    served.startListening();
    ASSERT_TRUE(until(plc, [&] { return states.back().phase == Phase::ONLINE; }));
    const std::size_t last = states.size() - 1;
    ASSERT_GE(last, 4u);
    const std::vector<Phase> order = {Phase::WAITING, Phase::CONNECTING, Phase::HANDSHAKE, Phase::PROVING, Phase::ONLINE};
    for (std::size_t i = 0; i < order.size(); ++i)
        EXPECT_EQ(states[last - 4 + i].phase, order[i]) << i;
    EXPECT_EQ(states[last].ownNode, 0x0A);
    EXPECT_EQ(states[last].plcNode, 0x32);
    EXPECT_EQ(states[last].connections, 1u);
    EXPECT_EQ(states[last].reason, "");
    EXPECT_TRUE(states[last].remedies.empty());
    for (std::size_t i = 1; i < states.size(); ++i)
        EXPECT_GE(states[i].since, states[i - 1].since);
}

TEST_F(StateOf, IsSilentWhileAReplyIsMissing)
{
    Config with = config();
    with.timeout = 50ms;
    with.retries = 100;
    Plc plc = Plc::open(with);
    const Watch watch = plc.watch({"DM:0"}, [](const Samples &) {});
    ASSERT_TRUE(untilOnline(plc));
    served.rule([](const Request &) { return Treatment{Treatment::LOSE}; });
    ASSERT_TRUE(until(plc, [&] { return plc.state().phase == Phase::SILENT; }));
    EXPECT_EQ(plc.snapshot({"DM:0"})[0].quality, Quality::LAST_KNOWN);
    served.rule(nullptr);
    EXPECT_TRUE(untilOnline(plc));
    EXPECT_EQ(plc.state().losses, 0u);
}

TEST_F(StateOf, IsToldAtOnceToANewListener)
{
    Plc plc = Plc::open(config());
    ASSERT_TRUE(untilOnline(plc));
    becomeQuiet(plc);
    std::vector<Phase> phases;
    const Handle listener = plc.onState([&](const State &state) { phases.push_back(state.phase); });
    plc.dispatch();
    EXPECT_EQ(phases, std::vector<Phase>{Phase::ONLINE});
}

TEST_F(StateOf, CountsLossesAndSaysThemInWords)
{
    served.holdAll(); // until the listener is there
    Plc plc = Plc::open(config());
    std::vector<std::string> lines;
    const Handle listener = plc.onMessage([&](const std::string &line) { lines.push_back(line); });
    served.release();
    const Watch watch = plc.watch({"DM:0"}, [](const Samples &) {});
    ASSERT_TRUE(untilOnline(plc));
    served.hangUp();
    const std::string lost = "link to " + served.host() + " lost: ";
    const auto connects = [&] {
        return std::count_if(lines.begin(), lines.end(), [](const std::string &line) { return line.find("connected to ") == 0; });
    };
    ASSERT_TRUE(until(plc, [&] { return connects() == 2; }));
    const auto isLoss = [&](const std::string &line) { // it is reset where a request was unread
        return line.find(lost + "the PLC closed the connection, retrying in ") == 0
            || line.find(lost + "Connection reset by peer, retrying in ") == 0;
    };
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isLoss), 1);
    EXPECT_EQ(lines.back(), "connected to " + served.host() + ": this node 10, PLC node 50");
}

TEST_F(Times, AreThoseOfTheClocksThatAreGiven)
{
    const std::chrono::system_clock::time_point utc(std::chrono::hours(400000));
    const std::chrono::steady_clock::time_point steady(std::chrono::hours(7));
    Config with = config();
    with.utc = [=] { return utc; };
    with.steady = [=] { return steady; };
    Plc plc = Plc::open(with);
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    EXPECT_EQ(seen.samples.back().utc, utc);
    EXPECT_EQ(seen.samples.back().steady, steady);
    EXPECT_EQ(plc.state().since, utc);
    served.stopListening();
    served.hangUp();
    ASSERT_TRUE(until(plc, [&] { return plc.state().phase == Phase::WAITING; }));
    EXPECT_GT(plc.state().nextAttempt, utc - 1s);
    EXPECT_LE(plc.state().nextAttempt, utc + 5s);
}

TEST_F(Times, OfAValueAreThoseOfTheReplyThatBroughtIt)
{
    std::atomic<int> now{100};
    Config with = config();
    with.utc = [&] { return std::chrono::system_clock::time_point(std::chrono::seconds(now.load())); };
    Plc plc = Plc::open(with);
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    now = 200;
    served.awaitRound();
    EXPECT_EQ(plc.snapshot({"DM:0"})[0].utc.time_since_epoch(), 100s); // unchanged
    served.set(0, {1});
    served.awaitRound();
    now = 300; // dispatch() is late
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("1"); }));
    EXPECT_EQ(seen.samples.back().utc.time_since_epoch(), 200s);
}

TEST_F(QueueLimit, DropsTheOldestStatesAndMessages)
{
    Config with = config();
    with.queueLimit = 3;
    Plc plc = Plc::open(with);
    std::vector<State> states;
    std::vector<std::string> lines;
    const Handle a = plc.onState([&](const State &state) { states.push_back(state); });
    const Handle b = plc.onMessage([&](const std::string &line) { lines.push_back(line); });
    const Watch watch = plc.watch({"DM:0"}, [](const Samples &) {});
    for (int loss = 1; loss <= 4; ++loss) {
        served.awaitRound();
        served.hangUp();
        served.awaitConnections(1 + loss);
    }
    served.awaitRound();
    served.awaitRound();
    plc.dispatch();
    ASSERT_EQ(states.size(), 3u);
    EXPECT_EQ(states[2].phase, Phase::ONLINE);
    EXPECT_EQ(states[2].losses, 4u);
    EXPECT_EQ(states[0].phase, Phase::HANDSHAKE);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[2].find("connected to "), 0u);
    EXPECT_EQ(lines[1].find("link to "), 0u);
    EXPECT_EQ(lines[0].find("connected to "), 0u);
}
