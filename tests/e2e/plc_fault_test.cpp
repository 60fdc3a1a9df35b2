#include "plc_fixture.h"

#include <algorithm>
#include <chrono>
#include <random>

// Faults of the simulator. That a reply does not come is seen without waiting: the next reply, once the fault is off,
// is that of the next request.

class PlcFaultTest : public PlcTest {
protected:
    const std::string read = "0101 82 0000 00 0002";
    const std::string good = "0101 0000 0000 0000";
};

TEST_F(PlcFaultTest, DropCarriesOutWithoutReply)
{
    start({"--fault", "drop"});
    PlcClient client(port);
    client.send(commandFrame("0102 82 0000 00 0001 0007", 1));
    waitForAnswer("read DM:0", "ok 7");
    ASSERT_EQ(tell("fault drop off"), "ok");
    client.send(commandFrame("0402", 2));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 2));
}

TEST_F(PlcFaultTest, WrongSidIsTheNextOne)
{
    start({"--fault", "wrong-sid"});
    PlcClient client(port);
    client.send(commandFrame(read, 0x10));
    EXPECT_EQ(client.receiveFrame(), responseFrame(good, 0x11));
    client.send(commandFrame(read, 0xFF));
    EXPECT_EQ(client.receiveFrame(), responseFrame(good, 0x00));
    ASSERT_EQ(tell("faults off"), "ok");
    client.send(commandFrame(read, 0x10));
    EXPECT_EQ(client.receiveFrame(), responseFrame(good, 0x10));
}

TEST_F(PlcFaultTest, ShortLacksItsLastBytes)
{
    start({"--fault", "short"});
    PlcClient client(port);
    client.send(commandFrame(read));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 0000 00"));
    ASSERT_EQ(tell("fault short=4"), "ok");
    client.send(commandFrame(read));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000"));
    ASSERT_EQ(tell("fault short=1000"), "ok");
    client.send(commandFrame(read));
    EXPECT_EQ(client.receiveFrame(), frameSend(""));
}

TEST_F(PlcFaultTest, LongHasZerosAdded)
{
    start({"--fault", "long"});
    PlcClient client(port);
    client.send(commandFrame("0402"));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000 00"));
    ASSERT_EQ(tell("fault long=3"), "ok");
    client.send(commandFrame("0402"));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000 000000"));
}

TEST_F(PlcFaultTest, BytewiseIsWholeInTheEnd)
{
    start({"--fault", "bytewise"});
    PlcClient client(port);
    client.send(commandFrame(read));
    EXPECT_EQ(client.receiveFrame(), responseFrame(good));
    ASSERT_EQ(tell("fault bytewise=0"), "ok");
    client.send(commandFrame(read));
    EXPECT_EQ(client.receiveFrame(), responseFrame(good));
}

TEST_F(PlcFaultTest, BytewisePauses)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("fault bytewise=1000"), "ok");
    client.send(commandFrame(read));
    EXPECT_EQ(client.receive(1), "46");
    // The rest of the reply would take half a minute; the end of the connection cuts it off.
    ASSERT_EQ(tell("disconnect"), "ok 1");
    EXPECT_LT(client.receiveUntilClosed().size(), responseFrame(good).size() - 2);
}

TEST_F(PlcFaultTest, DoubleIsTheReplyTwice)
{
    start({"--fault", "double"});
    PlcClient client(port);
    client.send(commandFrame(read, 3));
    EXPECT_EQ(client.receive(2 * 34), responseFrame(good, 3) + responseFrame(good, 3));
    ASSERT_EQ(tell("fault double off"), "ok");
    client.send(commandFrame(read, 4));
    EXPECT_EQ(client.receive(34), responseFrame(good, 4));
}

TEST_F(PlcFaultTest, EndCodeRefusesWithoutCarryingOut)
{
    start({"--fault", "end-code=2108"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0007"), plainHex("0102 2108"));
    EXPECT_EQ(tell("read DM:0"), "ok 0");
    ASSERT_EQ(tell("fault end-code=00fF"), "ok");
    EXPECT_EQ(client.ask(read), plainHex("0101 00FF"));
    ASSERT_EQ(tell("fault end-code off"), "ok");
    EXPECT_EQ(client.ask(read), plainHex(good));
}

// The flags of the CPU unit's own errors, bits 6 and 7, come with a reply that is good otherwise.
TEST_F(PlcFaultTest, FlagsOfTheEndCodeComeWithAGoodReply)
{
    start();
    ASSERT_EQ(tell("write DM:0 4660"), "ok");
    PlcClient client(port);
    for (const char *flags : {"0040", "0080", "00C0"}) {
        ASSERT_EQ(tell(std::string("fault end-code=") + flags), "ok");
        EXPECT_EQ(client.ask(read), plainHex(std::string("0101") + flags + "1234 0000"));
        EXPECT_EQ(client.ask("0601").substr(0, 12), plainHex(std::string("0601") + flags + "05 04"));
        EXPECT_EQ(client.ask("0102 82 0000 00 0001 1234"), plainHex(std::string("0102") + flags));
    }
    ASSERT_EQ(tell("fault end-code=0040#1"), "ok");
    EXPECT_EQ(client.ask("0102 82 0001 00 0001 0007"), plainHex("0102 0040"));
    EXPECT_EQ(tell("read DM:0:2"), "ok 4660 7");
    EXPECT_EQ(client.ask(read), plainHex("0101 0000 1234 0007"));
}

TEST_F(PlcFaultTest, FlagsOfTheEndCodeStayWithAnError)
{
    start({"--fault", "end-code=0040"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 82 8000 00 0001"), plainHex("0101 1143"));
    for (const char *code : {"2243", "8000", "8040", "0041", "0140"}) {
        ASSERT_EQ(tell(std::string("fault end-code=") + code), "ok");
        EXPECT_EQ(client.ask(read), plainHex(std::string("0101") + code));
        EXPECT_EQ(client.ask("0102 82 0000 00 0001 0007"), plainHex(std::string("0102") + code));
    }
    EXPECT_EQ(tell("read DM:0"), "ok 0");
}

TEST_F(PlcFaultTest, CloseComesInsteadOfAReply)
{
    start({"--fault", "close"});
    PlcClient client(port);
    client.send(commandFrame("0102 82 0000 00 0001 0007"));
    EXPECT_EQ(client.receiveUntilClosed(), "");
    EXPECT_EQ(tell("read DM:0"), "ok 7");
    EXPECT_EQ(tell("clients"), "ok 0");
}

TEST_F(PlcFaultTest, SilenceStrikesEverything)
{
    start();
    PlcClient client(port);
    TcpClient newcomer(port);
    ASSERT_EQ(tell("fault silence"), "ok");
    client.send(commandFrame("0102 82 0000 00 0001 0007", 1));
    newcomer.send(nodeRequest());
    waitForAnswer("stats", "ok connections=2 requests=3 replies=1");
    ASSERT_EQ(tell("fault silence off"), "ok");
    client.send(commandFrame(read, 2));
    EXPECT_EQ(client.receiveFrame(), responseFrame(good, 2));
    newcomer.send(nodeRequest());
    EXPECT_EQ(newcomer.receive(24), nodeReply(240));
}

TEST_F(PlcFaultTest, SilenceGivesNoErrorEither)
{
    start({"--fault", "silence"});
    TcpClient client(port);
    client.send("00000000");
    EXPECT_EQ(client.receiveUntilClosed(), "");
}

TEST_F(PlcFaultTest, RefuseFromTheStart)
{
    start({"--fault", "refuse"});
    EXPECT_FALSE(TcpClient::canConnect(port));
    ASSERT_EQ(tell("fault refuse off"), "ok");
    EXPECT_EQ(PlcClient(port).node, 239u);
}

TEST_F(PlcFaultTest, RefuseLeavesConnectionsAlone)
{
    start();
    PlcClient client(port);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(tell("fault refuse"), "ok");
        EXPECT_FALSE(TcpClient::canConnect(port));
        ASSERT_EQ(tell("fault refuse"), "ok");
        EXPECT_EQ(client.ask(read), plainHex(good));
        ASSERT_EQ(tell("faults off"), "ok");
        EXPECT_TRUE(TcpClient::canConnect(port));
    }
}

// One number of the Mersenne twister for each connection: the lower half of its range refuses.
TEST_F(PlcFaultTest, RefuseByChanceClosesAtOnce)
{
    start({"--fault", "refuse@0.5", "--seed", "7"});
    std::mt19937 chance(7);
    for (int i = 0; i < 60; ++i) {
        const bool isRefused = chance() < 0x80000000u;
        TcpClient client(port);
        client.send(nodeRequest());
        client.endSending();
        EXPECT_EQ(client.receiveUntilClosed(), isRefused ? "" : nodeReply(239)) << i;
    }
}

TEST_F(PlcFaultTest, DelayedReplyComesLater)
{
    start();
    PlcClient slow(port);
    PlcClient quick(port);
    ASSERT_EQ(tell("fault delay=60000"), "ok");
    slow.send(commandFrame("0102 82 0000 00 0001 0007"));
    waitForAnswer("read DM:0", "ok 7");
    ASSERT_EQ(tell("fault delay off"), "ok");
    EXPECT_EQ(quick.ask("0402"), plainHex("0402 0000"));
    EXPECT_EQ(tell("stats"), "ok connections=2 requests=4 replies=3");
}

TEST_F(PlcFaultTest, DelayedRepliesKeepTheirOrder)
{
    start({"--fault", "delay=5", "--fault", "jitter=20"});
    TcpClient client(port);
    client.send(nodeRequest());
    for (unsigned sid = 1; sid <= 20; ++sid)
        client.send(commandFrame(read, sid));
    EXPECT_EQ(client.receive(24), nodeReply(239));
    for (unsigned sid = 1; sid <= 20; ++sid)
        EXPECT_EQ(client.receiveFrame(), responseFrame(good, sid));
}

// Only that the time has passed, never that it was no longer: that holds on a slow machine too.
TEST_F(PlcFaultTest, DelayAndJitterTakeTheirTime)
{
    start({"--fault", "delay=80"});
    const Process::Clock::time_point before = Process::Clock::now();
    PlcClient client(port);
    EXPECT_GE(Process::Clock::now() - before, std::chrono::milliseconds(80));
    ASSERT_EQ(tell("faults off"), "ok");
    ASSERT_EQ(tell("fault jitter=20"), "ok");
    const Process::Clock::time_point between = Process::Clock::now();
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(client.ask(read), plainHex(good));
    EXPECT_GE(Process::Clock::now() - between, std::chrono::milliseconds(100));
}

TEST_F(PlcFaultTest, DelayedReplyIsGoneWithItsConnection)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("fault delay=60000"), "ok");
    client.send(commandFrame("0102 82 0000 00 0001 0007"));
    waitForAnswer("read DM:0", "ok 7");
    EXPECT_EQ(tell("disconnect"), "ok 1");
    EXPECT_EQ(client.receiveUntilClosed(), "");
}

TEST_F(PlcFaultTest, OtherFaultsSpareTheNodeExchange)
{
    start({"--fault", "drop", "--fault", "wrong-sid", "--fault", "short", "--fault", "long=5", "--fault", "double",
           "--fault", "end-code=1101", "--fault", "close"});
    TcpClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receive(24), nodeReply(239));
    EXPECT_EQ(tell("stats"), "ok connections=1 requests=1 replies=1");
}

TEST_F(PlcFaultTest, FaultsAddUp)
{
    start({"--fault", "end-code=1101", "--fault", "wrong-sid", "--fault", "long=2", "--fault", "double",
           "--fault", "bytewise=0"});
    TcpClient client(port);
    client.send(nodeRequest() + commandFrame("0402", 1));
    EXPECT_EQ(client.receive(24), nodeReply(239));
    const std::string spoilt = responseFrame("0402 1101 0000", 2);
    EXPECT_EQ(client.receive(2 * 32), spoilt + spoilt);
}

// The pattern of struck requests, for a seed.
class PlcProbabilityTest : public PlcTest {
protected:
    std::string pattern(const std::string &fault, const std::string &seed)
    {
        start({"--fault", fault, "--seed", seed});
        PlcClient client(port);
        std::string text;
        for (int i = 0; i < 100; ++i)
            text += client.ask("0402") == plainHex("0402 1101") ? 'x' : '.';
        TearDown();
        plc.reset();
        return text;
    }

    static std::ptrdiff_t struck(const std::string &text) { return std::count(text.begin(), text.end(), 'x'); }
};

TEST_F(PlcProbabilityTest, SameSeedSamePattern)
{
    const std::string first = pattern("end-code=1101@0.5", "42");
    EXPECT_EQ(pattern("end-code=1101@0.5", "42"), first);
    EXPECT_NE(pattern("end-code=1101@0.5", "43"), first);
    EXPECT_GT(struck(first), 25);
    EXPECT_LT(struck(first), 75);
}

TEST_F(PlcProbabilityTest, RareAndFrequent)
{
    const std::ptrdiff_t rare = struck(pattern("end-code=1101@0.1", "1"));
    const std::ptrdiff_t frequent = struck(pattern("end-code=1101@0.9", "1"));
    EXPECT_GT(rare, 0);
    EXPECT_LT(rare, 30);
    EXPECT_GT(frequent, 70);
    EXPECT_LT(frequent, 100);
}

TEST_F(PlcProbabilityTest, ZeroAndOne)
{
    EXPECT_EQ(pattern("end-code=1101@0", "1"), std::string(100, '.'));
    EXPECT_EQ(pattern("end-code=1101@1", "1"), std::string(100, 'x'));
}
