#include "plc_fixture.h"

#include <fstream>
#include <sstream>

// FINS/TCP framing of the simulator: the byte stream, however it is cut and whatever it holds.

class PlcStreamTest : public PlcTest {
protected:
    // What an unconnected client gets for `hex` before the connection is closed.
    std::string fateOf(const std::string &hex)
    {
        TcpClient client(port);
        client.send(hex);
        return client.receiveUntilClosed();
    }

    std::string fateOfConnected(const std::string &hex)
    {
        PlcClient client(port);
        client.send(hex);
        return client.receiveUntilClosed();
    }
};

TEST_F(PlcStreamTest, SplitAtEveryByte)
{
    start();
    ASSERT_EQ(tell("write DM:100 4660 22136"), "ok");
    const std::string handshake = plainHex(nodeRequest());
    const std::string read = commandFrame("0101 82 0064 00 0002");
    const std::string all = handshake + read;
    for (std::size_t cut = 2; cut < all.size(); cut += 2) {
        TcpClient client(port);
        client.send(all.substr(0, cut));
        // The answer to another client shows that the first part has been looked at.
        tell("stats");
        client.send(all.substr(cut));
        EXPECT_EQ(client.receive(24).substr(0, 32), nodeReply(0).substr(0, 32)) << cut / 2;
        EXPECT_EQ(client.receiveFrame().substr(2 * 26), plainHex("0101 0000 1234 5678")) << cut / 2;
        client.disconnect();
        waitForAnswer("clients", "ok 0");
    }
}

TEST_F(PlcStreamTest, OneByteAtATime)
{
    start();
    TcpClient client(port);
    for (const std::uint8_t byte : bytesOfHex(nodeRequest() + commandFrame("0402")))
        client.sendBytes({byte});
    EXPECT_EQ(client.receive(24), nodeReply(239));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000"));
}

TEST_F(PlcStreamTest, RequestsInOneSegmentAreAnsweredInTurn)
{
    start();
    TcpClient client(port);
    client.send(nodeRequest() + commandFrame("0102 82 0000 00 0001 0007", 1) + commandFrame("0101 82 0000 00 0001", 2) +
                commandFrame("0102 82 0000 00 0001 0008", 3) + commandFrame("0101 82 0000 00 0001", 4));
    EXPECT_EQ(client.receive(24), nodeReply(239));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0102 0000", 1));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 0007", 2));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0102 0000", 3));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 0008", 4));
}

TEST_F(PlcStreamTest, ManyRequestsAheadOfTheirReplies)
{
    start();
    PlcClient client(port);
    std::string requests;
    for (unsigned i = 0; i < 250; ++i)
        requests += commandFrame("0101 82 0000 00 0064", i);
    client.send(requests);
    for (unsigned i = 0; i < 250; ++i)
        ASSERT_EQ(client.receiveFrame().substr(0, 52), responseFrame("", i).replace(8, 8, "000000DE")) << i;
}

TEST_F(PlcStreamTest, WrongMagicIsError1AtItsFirstWrongByte)
{
    start();
    EXPECT_EQ(fateOf("47"), nodeReply(0, 1));
    EXPECT_EQ(fateOf("46 48"), nodeReply(0, 1));
    EXPECT_EQ(fateOf("46 49 4D"), nodeReply(0, 1));
    EXPECT_EQ(fateOf("46 49 4E 54"), nodeReply(0, 1));
    EXPECT_EQ(fateOf("474554202F20485454502F312E310D0A0D0A"), nodeReply(0, 1));
    EXPECT_EQ(fateOfConnected("66494E53 0000001A 00000002 00000000"), errorNotice(1));
}

TEST_F(PlcStreamTest, LengthWithoutRoomForACommandEndsTheConnection)
{
    start();
    EXPECT_EQ(fateOf("46494E53 00000000"), "");
    EXPECT_EQ(fateOf("46494E53 00000007"), "");
}

TEST_F(PlcStreamTest, NodeRequestHasOneLength)
{
    start();
    EXPECT_EQ(fateOf("46494E53 0000000B 00000000 00000000"), "");
    EXPECT_EQ(fateOf("46494E53 0000000D 00000000 00000000"), nodeReply(0, 2));
    EXPECT_EQ(fateOf("46494E53 FFFFFFFF 00000000 00000000"), nodeReply(0, 2));
}

TEST_F(PlcStreamTest, ShortestFrame)
{
    start();
    PlcClient client(port);
    client.send("46494E53 00000014 00000002 00000000 80 00 02 00 01 00 00 EF 00 07 0402");
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 7));
    EXPECT_EQ(fateOfConnected("46494E53 00000013 00000002 00000000"), "");
    EXPECT_EQ(fateOfConnected("46494E53 00000008 00000002 00000000"), "");
}

TEST_F(PlcStreamTest, LongestFrame)
{
    start();
    PlcClient client(port);
    // 2020 bytes of length: 20 without parameters, 6 of address and count, 1994 of data.
    std::string data;
    for (int i = 0; i < 997; ++i)
        data += "A5A5";
    const std::string longest = commandFrame("0102 82 0000 00 03E5" + data);
    EXPECT_EQ(longest.substr(8, 8), "000007E4");
    client.send(longest);
    EXPECT_EQ(client.receiveFrame(), responseFrame("0102 0000"));
    EXPECT_EQ(tell("read DM:996:2"), "ok 42405 0");
    EXPECT_EQ(fateOfConnected("46494E53 000007E5 00000002 00000000"), errorNotice(2));
    EXPECT_EQ(fateOfConnected("46494E53 00010014 00000002 00000000"), errorNotice(2));
    EXPECT_EQ(fateOfConnected("46494E53 01000014 00000002 00000000"), errorNotice(2));
}

TEST_F(PlcStreamTest, UnknownCommandIsError3)
{
    start();
    for (const char *command : {"00000001", "00000003", "00000004", "00000005", "00000006", "00000007", "00000100", "FFFFFFFF"})
        EXPECT_EQ(fateOfConnected(std::string("46494E53 00000008") + command + "00000000"), errorNotice(3)) << command;
    EXPECT_EQ(fateOfConnected("46494E53 000007E4 00000004 00000000"), errorNotice(3));
    EXPECT_EQ(fateOfConnected("46494E53 000007E5 00000004 00000000"), errorNotice(2));
}

// Only the server confirms connections.
TEST_F(PlcStreamTest, ConnectionConfirmationIsError3)
{
    start();
    EXPECT_EQ(fateOf("46494E53 00000008 00000006 00000000"), nodeReply(0, 3));
    EXPECT_EQ(fateOfConnected("46494E53 00000008 00000006 00000000" + commandFrame("0402", 9)), errorNotice(3));
    EXPECT_EQ(tell("mode"), "ok run");
}

TEST_F(PlcStreamTest, ErrorCodeOfARequestIsIgnored)
{
    start();
    TcpClient client(port);
    client.send("46494E53 0000000C 00000000 00000025 00000000");
    EXPECT_EQ(client.receive(24), nodeReply(239));
}

// A write of 120 words whose length is sent modulo 256: 10 bytes are no FINS frame.
TEST_F(PlcStreamTest, WrappedLengthBelowAFrameEndsTheConnection)
{
    start();
    std::string data;
    for (int i = 0; i < 120; ++i)
        data += "0001";
    std::string frame = commandFrame("0102 82 0000 00 0078" + data);
    EXPECT_EQ(frame.substr(8, 8), "0000010A");
    frame.replace(8, 8, "0000000A");
    EXPECT_EQ(fateOfConnected(frame), "");
    EXPECT_EQ(tell("read DM:0"), "ok 0");
}

// A write of 130 words: 286 modulo 256 leaves 30 bytes, a write of two words that announces 130. What follows is no
// header.
TEST_F(PlcStreamTest, WrappedLengthOfAWholeFrameLosesTheStream)
{
    start();
    std::string data;
    for (int i = 0; i < 130; ++i)
        data += "0001";
    std::string frame = commandFrame("0102 82 0000 00 0082" + data);
    EXPECT_EQ(frame.substr(8, 8), "0000011E");
    frame.replace(8, 8, "0000001E");
    EXPECT_EQ(fateOfConnected(frame), responseFrame("0102 1003") + errorNotice(1));
    EXPECT_EQ(tell("read DM:0"), "ok 0");
}

TEST_F(PlcStreamTest, HalfAFrameIsGivenUpAtTheDeadline)
{
    start({"--deadline", "400"});
    EXPECT_EQ(fateOf(""), "");
    EXPECT_EQ(fateOf("46494E53 0000000C 00000000"), "");
    EXPECT_EQ(fateOfConnected("46"), "");
    EXPECT_EQ(fateOfConnected(commandFrame("0402").substr(0, 2 * 27)), "");
    waitForAnswer("clients", "ok 0");
}

TEST_F(PlcStreamTest, SlowSenderDoesNotPutTheDeadlineOff)
{
    start({"--deadline", "500"});
    PlcClient client(port);
    const std::vector<std::uint8_t> frame = bytesOfHex(frameSend(std::string(2 * 2000, '0')));
    std::size_t sent = 0;
    try {
        for (; sent < frame.size(); ++sent) {
            client.sendBytes({frame[sent]});
            poll(nullptr, 0, 10);
        }
    } catch (const std::runtime_error &) {
    }
    EXPECT_LT(sent, frame.size());
    waitForAnswer("clients", "ok 0");
}

TEST_F(PlcStreamTest, IdleConnectionHasNoDeadline)
{
    start({"--deadline", "400"});
    PlcClient idle(port);
    // Another connection that is given up three times over shows that the deadline has passed.
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(fateOf("46"), "");
    EXPECT_EQ(idle.ask("0402"), plainHex("0402 0000"));
}

TEST_F(PlcStreamTest, ClientThatTakesNoRepliesIsGivenUp)
{
    start({"--deadline", "500"});
    PlcClient client(port);
    const std::vector<std::uint8_t> read = bytesOfHex(commandFrame("0101 82 0000 00 03E7"));
    std::vector<std::uint8_t> many;
    for (int i = 0; i < 1000; ++i)
        many.insert(many.end(), read.begin(), read.end());
    bool isClosed = false;
    try {
        for (int i = 0; i < 1000; ++i)
            client.sendBytes(many);
    } catch (const std::runtime_error &) {
        isClosed = true;
    }
    EXPECT_TRUE(isClosed);
    waitForAnswer("clients", "ok 0");
}

// 32 bytes take longer than the deadline, each one far less.
TEST_F(PlcStreamTest, EveryPieceOfAReplyHasADeadlineOfItsOwn)
{
    start({"--deadline", "500", "--fault", "bytewise=30"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 82 0000 00 0001"), plainHex("0101 0000 0000"));
}

TEST_F(PlcStreamTest, ARequestThatIsWholeHasNoDeadline)
{
    start({"--deadline", "500", "--fault", "delay=900:on=request"});
    PlcClient client(port);
    const std::string frame = commandFrame("0402");
    client.send(frame.substr(0, 20));
    poll(nullptr, 0, 50);
    client.send(frame.substr(20));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000"));
}

// Whether the kernel asks the other end of the connections of the port whether it is still there.
static bool areKeptAlive(int port)
{
    std::ifstream table("/proc/net/tcp");
    std::string line;
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        std::string slot, local, remote, state, queues, timer;
        fields >> slot >> local >> remote >> state >> queues >> timer;
        const bool isTheirs = state == "01" && local.substr(local.find(':') + 1) == hexNumber(std::size_t(port), 4);
        if (isTheirs && timer.substr(0, 3) == "02:")
            return true;
    }
    return false;
}

TEST_F(PlcStreamTest, AClientThatVanishesIsNoticed)
{
    start();
    const PlcClient client(port);
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(5);
    while (!areKeptAlive(port) && Process::Clock::now() < deadline)
        poll(nullptr, 0, 5);
    EXPECT_TRUE(areKeptAlive(port));
}

TEST_F(PlcStreamTest, ClientThatStopsSendingStillGetsItsReply)
{
    start();
    PlcClient client(port);
    client.send(commandFrame("0402"));
    client.endSending();
    EXPECT_EQ(client.receiveUntilClosed(), responseFrame("0402 0000"));
}

TEST_F(PlcStreamTest, ErrorNoticeReachesAClientThatKeepsSending)
{
    start();
    PlcClient client(port);
    client.sendBytes(std::vector<std::uint8_t>(20000, 0x47));
    EXPECT_EQ(client.receive(16), errorNotice(1));
}
