#include "plc_fixture.h"

#include <cerrno>

// Faults with an aim, and those that need one to be of use: over TCP, byte by byte.

class PlcFaultAimTest : public PlcTest {
protected:
    // What ends the connection on which `hex` is sent: the error that reading meets, 0 for an orderly end.
    int endAfter(const std::string &hex) const
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const std::vector<std::uint8_t> bytes = bytesOfHex(hex);
        const timeval deadline = {20, 0};
        setsockopt(made, SOL_SOCKET, SO_RCVTIMEO, &deadline, sizeof deadline);
        EXPECT_EQ(connect(made, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        EXPECT_EQ(send(made, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
        char buffer[64];
        ssize_t count = 1;
        while (count > 0)
            count = recv(made, buffer, sizeof buffer, 0);
        const int error = count < 0 ? errno : 0;
        close(made);
        return error;
    }

    const std::string read = "0101 82 0000 00 0002";
    const std::string good = "0101 0000 0000 0000";
    const std::string write = "0102 82 0000 00 0001 0007";
};

TEST_F(PlcFaultAimTest, CutEndsInTheMiddleOfTheReply)
{
    start({"--fault", "cut"});
    PlcClient client(port);
    client.send(commandFrame(write));
    EXPECT_EQ(client.receiveUntilClosed(), plainHex("46494E53 00000016 00000002 00000000 C0000200"));
    EXPECT_EQ(tell("read DM:0"), "ok 7");
    ASSERT_EQ(tell("fault cut=33"), "ok");
    PlcClient second(port);
    second.send(commandFrame(read));
    const std::string whole = responseFrame("0101 0000 0007 0000");
    EXPECT_EQ(second.receiveUntilClosed(), whole.substr(0, whole.size() - 2));
    ASSERT_EQ(tell("fault cut=2000"), "ok");
    PlcClient third(port);
    third.send(commandFrame(read));
    EXPECT_EQ(third.receiveUntilClosed(), whole);
}

TEST_F(PlcFaultAimTest, ReorderSwapsTwoReplies)
{
    start({"--fault", "reorder#2"});
    PlcClient client(port);
    client.send(commandFrame(read, 1) + commandFrame("0402", 2) + commandFrame("0402", 3) + commandFrame("0402", 4) +
                commandFrame("0402", 5));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 2));
    EXPECT_EQ(client.receiveFrame(), responseFrame(good, 1));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 4));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 3));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 5));
}

TEST_F(PlcFaultAimTest, ReorderKeepsClientsApart)
{
    start({"--fault", "reorder:client=240"});
    PlcClient client(port);
    PlcClient struck(port);
    struck.send(commandFrame(write));
    waitForAnswer("read DM:0", "ok 7");
    EXPECT_EQ(client.ask(read), plainHex("0101 0000 0007 0000"));
    struck.send(commandFrame("0402", 2));
    EXPECT_EQ(struck.receiveFrame(), responseFrame("0402 0000", 2).replace(40, 2, "EF"));
}

// The reply to node EF is for F0 instead; behind the last node, FE, comes the first.
TEST_F(PlcFaultAimTest, WrongNodeIsTheNextOne)
{
    start({"--fault", "wrong-node"});
    PlcClient client(port);
    client.send(commandFrame(read));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 F0 00 00 01 00 5A" + good));
    client.send(frameSend("80 00 02 00 01 00 00 FE 00 5A" + read));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 01 00 00 01 00 5A" + good));
    ASSERT_EQ(tell("fault wrong-node off"), "ok");
    EXPECT_EQ(client.ask(read), plainHex(good));
}

TEST_F(PlcFaultAimTest, ResetComesAfterTheCommand)
{
    start({"--fault", "rst"});
    EXPECT_EQ(endAfter(nodeRequest() + commandFrame(write)), ECONNRESET);
    EXPECT_EQ(tell("read DM:0"), "ok 7");
    EXPECT_EQ(tell("clients"), "ok 0");
    ASSERT_EQ(tell("faults off"), "ok");
    ASSERT_EQ(tell("fault close"), "ok");
    EXPECT_EQ(endAfter(nodeRequest() + commandFrame(write)), 0);
}

TEST_F(PlcFaultAimTest, OnRequestNothingIsCarriedOut)
{
    start();
    for (const char *fault : {"rst", "close"}) {
        ASSERT_EQ(tell(std::string("fault ") + fault + ":on=request#1"), "ok");
        PlcClient client(port);
        client.send(commandFrame(write));
        EXPECT_EQ(client.receiveUntilClosed(), "") << fault;
    }
    ASSERT_EQ(tell("fault drop:on=request#1"), "ok");
    PlcClient client(port);
    client.send(commandFrame(write, 1) + commandFrame("0402", 2));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 2));
    EXPECT_EQ(tell("faults"), "ok none");
    EXPECT_EQ(tell("read DM:0"), "ok 0");
}

TEST_F(PlcFaultAimTest, EndCodeOnReplyDeniesWhatWasDone)
{
    start({"--fault", "end-code=2203:on=reply"});
    PlcClient client(port);
    EXPECT_EQ(client.ask(write), plainHex("0102 2203"));
    EXPECT_EQ(tell("read DM:0"), "ok 7");
    EXPECT_EQ(client.ask(read), plainHex("0101 2203"));
    ASSERT_EQ(tell("fault end-code=0040"), "ok");
    EXPECT_EQ(client.ask(read), plainHex("0101 2243"));
    ASSERT_EQ(tell("fault 1 off"), "ok");
    EXPECT_EQ(client.ask(read), plainHex("0101 0040 0007 0000"));
}

// A command that waits is not carried out before its time, nor when its connection has gone.
TEST_F(PlcFaultAimTest, DelayOnRequestComesBeforeTheCommand)
{
    start({"--fault", "delay=60000:on=request,command=write", "--deadline", "300", "--trace"});
    PlcClient slow(port);
    PlcClient quick(port);
    slow.send(commandFrame(write));
    plc->waitForErrorLine("0102820000000001");
    EXPECT_EQ(quick.ask(read), plainHex(good));
    EXPECT_EQ(tell("disconnect"), "ok 2");
    EXPECT_EQ(slow.receiveUntilClosed(), "");
    EXPECT_EQ(tell("read DM:0"), "ok 0");
    ASSERT_EQ(tell("faults off"), "ok");
    ASSERT_EQ(tell("fault delay=1:on=request"), "ok");
    PlcClient late(port);
    EXPECT_EQ(late.ask(write), plainHex("0102 0000"));
    EXPECT_EQ(tell("read DM:0"), "ok 7");
}

TEST_F(PlcFaultAimTest, AddressesThatOverlapPartly)
{
    start({"--fault", "end-code=1103:command=write,area=DM,from=100,to=199"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0063 00 0001 0007"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 82 0063 00 0002 0007 0008"), plainHex("0102 1103"));
    EXPECT_EQ(client.ask("0102 82 00C7 00 0002 0007 0008"), plainHex("0102 1103"));
    EXPECT_EQ(client.ask("0102 82 00C8 00 0001 0007"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 02 00C7 0F 0001 01"), plainHex("0102 1103"));
    EXPECT_EQ(client.ask("0102 B1 0064 00 0001 0007"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0101 82 0063 00 0001"), plainHex("0101 0000 0007"));
    EXPECT_EQ(tell("read DM:99:2"), "ok 7 0");
    EXPECT_EQ(tell("faults counts"), "ok 1 end-code=1103:command=0102,area=DM,from=100,to=199 struck 3");
}

TEST_F(PlcFaultAimTest, AClientByNodeOrAddress)
{
    start({"--fault", "end-code=1103:client=240", "--fault", "end-code=2203:client=127.0.0.2"});
    PlcClient first(port);
    PlcClient second(port);
    EXPECT_EQ(first.ask(read), plainHex(good));
    EXPECT_EQ(second.ask(read), plainHex("0101 1103"));
    ASSERT_EQ(tell("fault end-code=2203:client=127.0.0.1"), "ok");
    EXPECT_EQ(first.ask(read), plainHex("0101 2203"));
    EXPECT_EQ(second.ask(read), plainHex("0101 1103"));
}

TEST_F(PlcFaultAimTest, ExchangesAndConnectionsOfAClient)
{
    start({"--fault", "tcp-error=22:client=10", "--fault", "refuse:client=127.0.0.2"});
    TcpClient refused(port);
    refused.send(nodeRequest(10));
    EXPECT_EQ(refused.receiveUntilClosed(), nodeReply(10, 0x22));
    TcpClient other(port);
    other.send(nodeRequest(11));
    EXPECT_EQ(other.receive(24), nodeReply(11));
    ASSERT_EQ(tell("fault refuse:client=127.0.0.1,after=1#1"), "ok");
    PlcClient letThrough(port);
    EXPECT_EQ(TcpClient(port).receiveUntilClosed(), "");
    EXPECT_EQ(letThrough.ask(read), plainHex(good));
}

TEST_F(PlcFaultAimTest, FaultsOfOneNameAreCombined)
{
    start({"--fault", "end-code=1103:area=DM,from=1000", "--fault", "end-code=2203:command=write", "--fault",
           "end-code=0040:command=read", "--fault", "wrong-sid:command=read", "--fault", "long=1:command=read",
           "--fault", "long=2:area=DM"});
    PlcClient client(port);
    client.send(commandFrame(read, 1) + commandFrame("0102 82 03E8 00 0001 0001", 2) + commandFrame(write, 3) +
                commandFrame("0402", 4));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0040 0000 0000 000000", 2));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0102 1103 0000", 2));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0102 2203 0000", 3));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000", 4));
    ASSERT_EQ(tell("fault end-code off"), "ok");
    EXPECT_EQ(tell("faults"), "ok wrong-sid:command=0101 long=1:command=0101 long=2:area=DM");
}
