#include "publish/publish_fixture.h"

// Orders that come through the broker, and what stands between a publisher and a broker: passwords and certificates.

namespace {

const char SET[]    = "fins/press/SetPoint/set";
const char RESULT[] = "fins/press/SetPoint/result";

} // namespace

class PublishWriteTest : public PublishTest {
protected:
    void begin(const Words &options = {"--allow-writes"})
    {
        start();
        ASSERT_EQ(tell("write DM:3 50"), "ok");
        project(TAGS);
        panel = publish(broker.host(), options);
        subscriber.awaitValue("fins/press/SetPoint", "quality", "good");
    }

    Mosquitto                broker;
    Subscriber               subscriber{broker.port.number(), "fins/#"};
    std::unique_ptr<Process> panel;
};

TEST_F(PublishWriteTest, AWriteIsAnsweredWithWhatBecameOfIt)
{
    begin();
    subscriber.publish(SET, R"({"value":70,"id":"order 5"})");
    EXPECT_EQ(subscriber.await(RESULT).payload,
              R"({"fate":"verified","text":"done: press.SetPoint = 70","wanted":"70","held":"70","id":"order 5"})");
    EXPECT_EQ(tell("read DM:3"), "ok 70");
}

TEST_F(PublishWriteTest, APlainTextIsAValueToo)
{
    begin();
    subscriber.publish(SET, "65");
    EXPECT_EQ(subscriber.await(RESULT).json()["fate"], "verified");
    EXPECT_EQ(tell("read DM:3"), "ok 65");
}

TEST_F(PublishWriteTest, TheLimitsOfTheTagHold)
{
    begin();
    subscriber.publish(SET, "91");
    EXPECT_EQ(subscriber.await(RESULT).json()["fate"], "invalid");
    EXPECT_EQ(tell("read DM:3"), "ok 50");
}

TEST_F(PublishWriteTest, WhatIsNoOrderIsAnsweredSo)
{
    begin();
    const std::string form = R"(; write a value such as 70.5, or {"value":70.5,"id":"any"})";
    const auto answerTo = [&](const std::string &payload) {
        subscriber.publish(SET, payload);
        const Received answer = subscriber.await(RESULT);
        EXPECT_EQ(answer.json()["fate"], "invalid");
        return answer.json()["text"].get<std::string>();
    };
    EXPECT_EQ(answerTo(""), "the payload is empty" + form);
    EXPECT_EQ(answerTo("{\"value\":"), "the payload begins like JSON and is none" + form);
    EXPECT_EQ(answerTo("{\"val\":1}"),
              "the payload has no \"value\" that is a number, text, true, false or a list of them" + form);
    EXPECT_EQ(answerTo(std::string(4097, '1')), "the payload is longer than 4096 bytes");
    EXPECT_EQ(tell("read DM:3"), "ok 50");
}

// Its access is not given: whoever may write it does so here.
TEST_F(PublishWriteTest, ATagWithoutAccessRwIsNotWritten)
{
    begin();
    subscriber.publish("fins/press/Level/set", "1");
    const Received answer = subscriber.await("fins/press/Level/result");
    EXPECT_EQ(answer.json()["fate"], "invalid");
    EXPECT_EQ(answer.json()["text"], "no tag of this topic has access = \"rw\" in the project");
    EXPECT_EQ(tell("read DM:0"), "ok 0");
}

TEST_F(PublishWriteTest, ARetainedOrderIsRefused)
{
    subscriber.publish(SET, "70", true);
    subscriber.await(SET);
    begin();
    const Received answer = subscriber.await(RESULT);
    EXPECT_EQ(answer.json()["fate"], "invalid");
    EXPECT_EQ(answer.json()["text"],
              "the message is retained, and would write again at each connection; publish it without retain");
    EXPECT_EQ(tell("read DM:3"), "ok 50");
}

TEST_F(PublishWriteTest, WithoutConsentNothingIsWritten)
{
    begin({});
    subscriber.publish(SET, "70");
    ASSERT_EQ(tell("write DM:0 1"), "ok"); // comes behind whatever the order would bring
    subscriber.awaitValue("fins/press/Level", "value", 0.1);
    EXPECT_EQ(tell("read DM:3"), "ok 50");
    for (const Received &message : subscriber.all)
        EXPECT_NE(message.topic, RESULT);
}

TEST_F(PublishWriteTest, HomeAssistantIsToldOfTheTags)
{
    begin({"--allow-writes", "--home-assistant", "found"});
    Subscriber home(broker.port.number(), "found/#");
    home.run([&] { return home.all.size() >= 2; }, "both tags");
    std::map<std::string, nlohmann::json> told;
    for (const Received &message : home.all)
        told[message.topic] = message.json();
    EXPECT_EQ(told["found/number/fins_2Fpress/fins_2Fpress_2FSetPoint/config"]["command_topic"], SET);
    EXPECT_EQ(told["found/sensor/fins_2Fpress/fins_2Fpress_2FLevel/config"]["state_topic"], "fins/press/Level");
}

// ---- The way to the broker ---------------------------------------------------------------------------------------

namespace {

void runTool(const Words &arguments)
{
    Process tool(arguments);
    ASSERT_EQ(tool.wait(), 0) << tool.errors();
}

std::string secretFile(const TemporaryFolder &folder, const std::string &text)
{
    const std::string file = folder.put("secret", text);
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    return file;
}

} // namespace

TEST_F(PublishTest, APasswordOpensTheBroker)
{
    start();
    const TemporaryFolder users;
    const std::string file = users.put("users", "");
    runTool({MOSQUITTO_PASSWD_PATH, "-b", file, "panel", "lemon tree"});
    const Mosquitto broker("allow_anonymous false\npassword_file " + file + "\n");
    project(TAGS);
    const auto refused = publish(broker.host());
    refused->waitForErrorLine("no connection to the broker " + broker.host() + ": Connection Refused: not authorised");
    refused->sendSignal(SIGKILL);
    refused->wait();
    const std::string secret = secretFile(users, "lemon tree\n");
    const auto panel = publish(broker.host(), {"--user", "panel", "--password-file", secret});
    panel->waitForErrorLine(isConnected(broker.host()));
}

TEST_F(PublishTest, APasswordThatEverybodyCanReadIsRefused)
{
    const std::string file = folder.put("secret", "lemon tree\n");
    std::filesystem::permissions(file, std::filesystem::perms(0644));
    expectRefused({"publish", "127.0.0.1", "DM:0", "--broker", "127.0.0.1", "--user", "panel", "--password-file", file},
                  "fins_panel: everybody can read the password file " + file + "; use chmod 600 " + file);
}

TEST_F(PublishTest, BadOptionsAreRefused)
{
    const Words begin = {"publish", "127.0.0.1", "DM:0", "--broker", "127.0.0.1"};
    const auto refuse = [&](const Words &more, const std::string &line) {
        Words words = begin;
        words.insert(words.end(), more.begin(), more.end());
        expectRefused(words, "fins_panel: " + line);
    };
    refuse({"--tls-cert", "a.pem"},
           "--tls-cert and --tls-key are for TLS; name the broker's authority with --tls-ca FILE");
    const std::string none = folder.path("none.pem");
    refuse({"--tls-ca", none}, "--tls-ca " + none + ": No such file or directory");
    refuse({"--spool", folder.path("spool"), "--prefix", "a+b"},
           "'a+b' cannot begin a topic; give --prefix a text without + and #, such as fins or plant/hall1");
    refuse({"--password-file", "x"}, "--password-file needs the user whose password it is; name them with --user");
}

class PublishTlsTest : public PublishTest {
protected:
    void SetUp() override
    {
        authority("ca");
        certificate("broker", "/CN=127.0.0.1", "subjectAltName=IP:127.0.0.1");
        certificate("panel", "/CN=panel", "subjectAltName=DNS:panel");
        authority("other");
        start();
        project(TAGS);
    }

    void authority(const std::string &name) const
    {
        runTool({OPENSSL_PATH, "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                 "-subj", "/CN=" + name, "-days", "2", "-keyout", pem(name + "_key"), "-out", pem(name)});
    }

    void certificate(const std::string &name, const std::string &subject, const std::string &extension) const
    {
        runTool({OPENSSL_PATH, "req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj",
                 subject, "-keyout", pem(name + "_key"), "-out", pem(name + "_request")});
        folder.put("extension", extension + "\n");
        runTool({OPENSSL_PATH, "x509", "-req", "-in", pem(name + "_request"), "-CA", pem("ca"), "-CAkey", pem("ca_key"),
                 "-CAcreateserial", "-days", "2", "-extfile", folder.path("extension"), "-out", pem(name)});
    }

    std::string pem(const std::string &name) const { return folder.path(name + ".pem"); }

    std::string brokerLines() const
    {
        return "allow_anonymous true\ncafile " + pem("ca") + "\ncertfile " + pem("broker") + "\nkeyfile "
               + pem("broker_key") + "\nrequire_certificate true\n";
    }
};

TEST_F(PublishTlsTest, ConnectsWithItsCertificate)
{
    const Mosquitto broker(brokerLines());
    const auto panel = publish(broker.host(), {"--tls-ca", pem("ca"), "--tls-cert", pem("panel"), "--tls-key",
                                               pem("panel_key")});
    panel->waitForErrorLine(isConnected(broker.host()));
    Subscriber subscriber(broker.port.number(), "fins/#", 1, [this](mosquitto *client) {
        mosquitto_tls_set(client, pem("ca").c_str(), nullptr, pem("panel").c_str(), pem("panel_key").c_str(), nullptr);
    });
    subscriber.awaitValue("fins/press/Level", "quality", "good");
}

TEST_F(PublishTlsTest, ABrokerOfAnotherAuthorityIsNotTrusted)
{
    const Mosquitto broker(brokerLines());
    const auto panel = publish(broker.host(), {"--tls-ca", pem("other"), "--tls-cert", pem("panel"), "--tls-key",
                                               pem("panel_key")});
    const std::string line = panel->waitForErrorLine("no connection to the broker " + broker.host());
    EXPECT_NE(line.find("certificate verify failed"), std::string::npos) << line;
}
