#include "publish/publish_fixture.h"
#include "publish/tcp_proxy.h"

#include <algorithm>
#include <map>
#include <sys/resource.h>

// `publish` against a real broker: what a subscriber is told, and what is kept while the broker is away.

namespace {

const char LEVEL[] = "fins/press/Level";

// The values of the topic's messages from the first on.
std::vector<double> valuesOf(const Subscriber &subscriber, const std::string &topic)
{
    std::vector<double> values;
    for (const Received &message : subscriber.all) {
        if (message.topic == topic && !message.json()["value"].is_null())
            values.push_back(message.json()["value"].get<double>());
    }
    return values;
}

} // namespace

TEST_F(PublishTest, ASubscriberIsToldValueUnitQualityAndTime)
{
    start();
    ASSERT_EQ(tell("write DM:0 467"), "ok");
    const Mosquitto broker;
    Subscriber subscriber(broker.port.number());
    project(TAGS);
    const auto panel = publish(broker.host());
    const Received level = subscriber.awaitValue(LEVEL, "quality", "good");
    static const std::regex FORM(
        R"re(\{"value":46\.7,"unit":"%","quality":"good","time":"20[0-9-]{8}T[0-9:.]{12}Z"\})re");
    EXPECT_TRUE(std::regex_match(level.payload, FORM)) << level.payload;
    EXPECT_FALSE(level.retained);
    ASSERT_EQ(tell("write DM:0 500"), "ok");
    EXPECT_EQ(subscriber.awaitValue(LEVEL, "value", 50.0).json()["quality"], "good");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PublishTest, NothingWasReceivedYet)
{
    const Mosquitto broker;
    Subscriber subscriber(broker.port.number());
    const HeldPort nobody;
    folder.put("plant.toml", plcLines("press", nobody.host()) + TAGS);
    const auto panel = publish(broker.host());
    EXPECT_EQ(subscriber.await(LEVEL).payload, R"({"value":null,"unit":"%","quality":"not connected","time":null})");
    const Received state = subscriber.awaitValue("fins/press/state", "state", "waiting");
    EXPECT_FALSE(state.json()["reason"].get<std::string>().empty());
}

TEST_F(PublishTest, WhoComesLaterFindsAllOfItRetained)
{
    start();
    ASSERT_EQ(tell("write DM:0 467"), "ok");
    const Mosquitto broker;
    project(TAGS);
    const auto panel = publish(broker.host());
    Subscriber first(broker.port.number());
    for (const char *topic : {LEVEL, "fins/press/SetPoint"})
        first.awaitValue(topic, "quality", "good");
    first.awaitValue("fins/press/state", "state", "online");
    Subscriber second(broker.port.number(), "fins/#");
    second.run([&] { return second.all.size() >= 4; }, "what is retained");
    std::map<std::string, std::string> told;
    for (const Received &message : second.all) {
        EXPECT_TRUE(message.retained) << message.topic;
        told[message.topic] = message.payload;
    }
    EXPECT_EQ(told["fins/state"], "online");
    EXPECT_EQ(nlohmann::json::parse(told["fins/press/state"])["state"], "online");
    EXPECT_EQ(nlohmann::json::parse(told[LEVEL])["value"], 46.7);
    EXPECT_EQ(nlohmann::json::parse(told["fins/press/SetPoint"])["value"], 0);
}

TEST_F(PublishTest, AValueWhosePlcIsLostIsTheLastKnown)
{
    start();
    ASSERT_EQ(tell("write DM:0 467"), "ok");
    const Mosquitto broker;
    Subscriber subscriber(broker.port.number());
    project(TAGS);
    const auto panel = publish(broker.host());
    const Received good = subscriber.awaitValue(LEVEL, "quality", "good");
    plc.reset();
    const Received lost = subscriber.awaitValue(LEVEL, "quality", "last known");
    EXPECT_EQ(lost.json()["value"], 46.7);
    subscriber.awaitValue("fins/press/state", "state", "waiting");
}

TEST_F(PublishTest, TheBrokerTellsThatAKilledPublisherIsGone)
{
    start();
    const Mosquitto broker;
    project(TAGS);
    const auto panel = publish(broker.host());
    Subscriber subscriber(broker.port.number(), "fins/state");
    subscriber.await("fins/state", [](const Received &one) { return one.payload == "online"; });
    panel->sendSignal(SIGKILL);
    subscriber.await("fins/state", [](const Received &one) { return one.payload == "offline"; });
    Subscriber later(broker.port.number(), "fins/state");
    const Received kept = later.await("fins/state");
    EXPECT_EQ(kept.payload, "offline");
    EXPECT_TRUE(kept.retained);
}

TEST_F(PublishTest, AnOrderlyEndIsToldTooAndNothingIsLeft)
{
    start();
    const Mosquitto broker;
    Subscriber subscriber(broker.port.number());
    project(TAGS);
    const auto panel = publish(broker.host());
    subscriber.awaitValue(LEVEL, "quality", "good");
    panel->sendSignal(SIGTERM);
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(subscriber.awaitValue(LEVEL, "quality", "last known").json()["value"], 0.0);
    subscriber.await("fins/state", [](const Received &one) { return one.payload == "offline"; });
    EXPECT_NE(panel->errors().find("; 0 wait in the spool\n"), std::string::npos) << panel->errors();
}

TEST_F(PublishTest, EachPlcOfAProjectHasItsTopics)
{
    start();
    ASSERT_EQ(tell("write DM:0 7"), "ok");
    Process other({FINS_PLC_PATH, "--port", "0"});
    const std::string otherHost = other.readLine().substr(std::string("listening on ").size());
    const Mosquitto broker;
    Subscriber subscriber(broker.port.number());
    const std::string tag = "A = { type = \"DM\", address = 0 }\n";
    folder.put("plant.toml", plcLines("press", host()) + tag + plcLines("oven", otherHost) + tag);
    const auto panel = publish(broker.host());
    other.writeLine("write DM:0 9");
    std::map<std::string, int> told;
    subscriber.run([&] {
        for (const Received &message : subscriber.all) {
            if (message.payload.find("\"quality\":\"good\"") != std::string::npos)
                told[message.topic] = message.json()["value"];
        }
        return told["fins/press/A"] == 7 && told["fins/oven/A"] == 9;
    }, "both PLCs");
}

TEST_F(PublishTest, APlcWithoutANameHasItsHostsOrTheOneThatIsGiven)
{
    start();
    const Mosquitto broker;
    Subscriber subscriber(broker.port.number());
    const auto byHost = startPanel({"publish", host(), "DM:0/f32", "--broker", broker.host(), "--spool",
                                    folder.path("a")});
    subscriber.awaitValue("fins/127.0.0.1/DM:0%2Ff32", "quality", "good");
    const auto byName = startPanel({"publish", host(), "DM:0", "--broker", broker.host(), "--spool", folder.path("b"),
                                    "--name", "press", "--prefix", "plant/hall"});
    subscriber.awaitValue("plant/hall/press/DM:0", "quality", "good");
}

// ---- Outages -----------------------------------------------------------------------------------------------------

TEST_F(PublishTest, WhatHappensWithoutABrokerComesLaterInItsOrder)
{
    start();
    ASSERT_EQ(tell("write DM:0 10"), "ok");
    Mosquitto broker;
    auto subscriber = std::make_unique<Subscriber>(broker.port.number());
    project(TAGS);
    const auto panel = publish(broker.host());
    subscriber->awaitValue(LEVEL, "value", 1.0);
    broker.kill();
    panel->waitForErrorLine("connection to the broker " + broker.host() + " lost");
    for (const int value : {20, 30, 40}) {
        ASSERT_EQ(tell("write DM:0 " + std::to_string(value)), "ok");
        waitForSpool("{\"value\":" + std::to_string(value / 10) + ".0,");
    }
    broker.start();
    subscriber = std::make_unique<Subscriber>(broker.port.number());
    subscriber->awaitValue(LEVEL, "value", 4.0);
    std::vector<double> values = valuesOf(*subscriber, LEVEL);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    if (!values.empty() && values.front() == 1.0)
        values.erase(values.begin()); // not acknowledged when the broker went
    EXPECT_EQ(values, (std::vector<double>{2.0, 3.0, 4.0}));
}

TEST_F(PublishTest, ABrokerThatHasForgottenIsToldTheLatestValuesAgain)
{
    start();
    ASSERT_EQ(tell("write DM:0 467"), "ok");
    Mosquitto broker;
    auto subscriber = std::make_unique<Subscriber>(broker.port.number());
    project(TAGS);
    const auto panel = publish(broker.host());
    subscriber->awaitValue(LEVEL, "quality", "good");
    broker.kill();
    broker.start();
    subscriber = std::make_unique<Subscriber>(broker.port.number());
    const Received again = subscriber->awaitValue(LEVEL, "quality", "good");
    EXPECT_EQ(again.json()["value"], 46.7);
    EXPECT_EQ(again.json()["repeated"], true);
}

TEST_F(PublishTest, ANetworkThatPassesNothingIsNoticed)
{
    start();
    const Mosquitto broker;
    TcpProxy network(broker.port.number());
    Subscriber subscriber(broker.port.number());
    project(TAGS);
    const auto panel = publish(network.host(), {"--keep-alive", "5"});
    subscriber.awaitValue(LEVEL, "value", 0.0);
    network.set(TcpProxy::STALLED);
    ASSERT_EQ(tell("write DM:0 467"), "ok");
    panel->waitForErrorLine("connection to the broker " + network.host() + " lost: it has not answered for some time");
    network.set(TcpProxy::CLOSED);
    network.set(TcpProxy::PASSING);
    subscriber.awaitValue(LEVEL, "value", 46.7);
}

// The values come faster than the broker takes them, and wait for it.
TEST_F(PublishTest, ASlowBrokerGetsAllInTheirOrderAndOnce)
{
    start();
    const Mosquitto broker;
    TcpProxy network(broker.port.number());
    Subscriber subscriber(broker.port.number());
    project(TAGS);
    const auto panel = publish(network.host());
    subscriber.awaitValue(LEVEL, "value", 0.0);
    network.set(TcpProxy::SLOW);
    std::vector<double> wanted = {0.0};
    for (int value = 1; value <= 40; ++value) {
        ASSERT_EQ(tell("write DM:0 " + std::to_string(10 * value)), "ok");
        waitForSpool("{\"value\":" + std::to_string(value) + ".0,");
        wanted.push_back(value);
    }
    subscriber.awaitValue(LEVEL, "value", 40.0);
    const std::vector<double> values = valuesOf(subscriber, LEVEL);
    EXPECT_EQ(values, wanted);
}

TEST_F(PublishTest, AKilledPublisherGoesOnWhereItWas)
{
    start();
    ASSERT_EQ(tell("write DM:0 10"), "ok");
    Mosquitto broker;
    project(TAGS);
    broker.kill();
    auto panel = publish(broker.host());
    panel->waitForErrorLine("no connection to the broker " + broker.host());
    for (const int value : {10, 20, 30}) {
        ASSERT_EQ(tell("write DM:0 " + std::to_string(value)), "ok");
        waitForSpool("{\"value\":" + std::to_string(value / 10) + ".0,");
    }
    panel->sendSignal(SIGKILL);
    panel->wait();
    broker.start();
    Subscriber subscriber(broker.port.number());
    ASSERT_EQ(tell("write DM:0 40"), "ok");
    panel = publish(broker.host());
    subscriber.awaitValue(LEVEL, "value", 4.0);
    EXPECT_EQ(valuesOf(subscriber, LEVEL), (std::vector<double>{1.0, 2.0, 3.0, 4.0}));
}

// A limit of the file's size is a full disk that is the program's alone.
TEST_F(PublishTest, AFullDiskIsSaidAndValuesComeAllTheSame)
{
    start();
    Mosquitto broker;
    broker.kill();
    project(TAGS);
    const auto panel = publish(broker.host());
    ASSERT_EQ(tell("write DM:0 10"), "ok");
    waitForSpool("{\"value\":1.0,");
    const rlimit full = {folder.content("spool-wal").size(), RLIM_INFINITY};
    ASSERT_EQ(prlimit(panel->id(), RLIMIT_FSIZE, &full, nullptr), 0);
    ASSERT_EQ(tell("write DM:0 20"), "ok");
    panel->waitForErrorLine("the spool cannot be written: disk I/O error; what comes waits in memory meanwhile, make "
                            "room");
    broker.start();
    Subscriber subscriber(broker.port.number());
    panel->waitForErrorLine(isConnected(broker.host()));
    ASSERT_EQ(tell("write DM:3 77"), "ok");
    subscriber.awaitValue("fins/press/SetPoint", "value", 77);
    const rlimit plenty = {RLIM_INFINITY, RLIM_INFINITY};
    ASSERT_EQ(prlimit(panel->id(), RLIMIT_FSIZE, &plenty, nullptr), 0);
    panel->waitForErrorLine("the spool can be written again");
    ASSERT_EQ(tell("write DM:3 78"), "ok");
    subscriber.awaitValue("fins/press/SetPoint", "value", 78);
    EXPECT_EQ(interrupt(*panel), 0);
}
