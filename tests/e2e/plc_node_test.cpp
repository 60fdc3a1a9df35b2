#include "plc_fixture.h"

// Node address exchange of the simulator.

class PlcNodeTest : public PlcTest {
protected:
    // The reply to a request for `node` on a connection of its own, which must then be closed.
    void expectRefused(unsigned node, unsigned error, unsigned server = 1)
    {
        TcpClient client(port);
        client.send(nodeRequest(node));
        EXPECT_EQ(client.receiveUntilClosed(), nodeReply(node, error, server));
    }
};

TEST_F(PlcNodeTest, ClientNode0GetsTheFirstAllocatedNode)
{
    start();
    TcpClient client(port);
    client.send("46494E53 0000000C 00000000 00000000 00000000");
    EXPECT_EQ(client.receive(24), plainHex("46494E53 00000010 00000001 00000000 000000EF 00000001"));
}

TEST_F(PlcNodeTest, EachClientGetsItsOwnNode)
{
    start();
    PlcClient first(port);
    PlcClient second(port);
    PlcClient third(port);
    EXPECT_EQ(first.node, 239u);
    EXPECT_EQ(second.node, 240u);
    EXPECT_EQ(third.node, 241u);
    EXPECT_EQ(tell("clients"), "ok 3 239 240 241");
}

TEST_F(PlcNodeTest, RequestedNodeIsTaken)
{
    start();
    TcpClient low(port);
    low.send(nodeRequest(2));
    EXPECT_EQ(low.receive(24), nodeReply(2));
    TcpClient high(port);
    high.send(nodeRequest(254));
    EXPECT_EQ(high.receive(24), nodeReply(254));
    EXPECT_EQ(tell("clients"), "ok 2 2 254");
}

TEST_F(PlcNodeTest, AllocationPassesOverNodesInUse)
{
    start();
    TcpClient explicitly(port);
    explicitly.send(nodeRequest(239));
    EXPECT_EQ(explicitly.receive(24), nodeReply(239));
    PlcClient allocated(port);
    EXPECT_EQ(allocated.node, 240u);
}

TEST_F(PlcNodeTest, AllocationPassesOverTheServersNode)
{
    start({"--node", "239"});
    TcpClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receive(24), nodeReply(240, 0, 239));
}

TEST_F(PlcNodeTest, NodeInUseIsError21)
{
    start();
    TcpClient holder(port);
    holder.send(nodeRequest(9));
    EXPECT_EQ(holder.receive(24), nodeReply(9));
    expectRefused(9, 0x21);
    EXPECT_EQ(tell("clients"), "ok 1 9");
}

TEST_F(PlcNodeTest, NodeIsFreeAgainAfterItsClientLeft)
{
    start();
    {
        TcpClient holder(port);
        holder.send(nodeRequest(9));
        EXPECT_EQ(holder.receive(24), nodeReply(9));
    }
    waitForAnswer("clients", "ok 0");
    TcpClient next(port);
    next.send(nodeRequest(9));
    EXPECT_EQ(next.receive(24), nodeReply(9));
}

TEST_F(PlcNodeTest, NodeAbove254IsError23)
{
    start();
    expectRefused(255, 0x23);
    expectRefused(256, 0x23);
    expectRefused(0xFFFFFFFF, 0x23);
}

TEST_F(PlcNodeTest, ServersOwnNodeIsError24)
{
    start();
    expectRefused(1, 0x24);
}

TEST_F(PlcNodeTest, ServerNodeIsAnOption)
{
    start({"--node", "254"});
    expectRefused(254, 0x24, 254);
    TcpClient client(port);
    client.send(nodeRequest(1));
    EXPECT_EQ(client.receive(24), nodeReply(1, 0, 254));
}

TEST_F(PlcNodeTest, MoreThanTheAllowedClientsIsError20)
{
    start({"--clients", "2"});
    PlcClient first(port);
    {
        PlcClient second(port);
        expectRefused(0, 0x20);
        expectRefused(7, 0x20);
    }
    waitForAnswer("clients", "ok 1 239");
    PlcClient again(port);
    EXPECT_EQ(again.node, 240u);
}

TEST_F(PlcNodeTest, SixteenClientsByDefault)
{
    start();
    std::vector<std::unique_ptr<PlcClient>> clients;
    for (int i = 0; i < 16; ++i)
        clients.push_back(std::make_unique<PlcClient>(port));
    EXPECT_EQ(clients.back()->node, 254u);
    expectRefused(0, 0x20);
}

TEST_F(PlcNodeTest, AllAllocatedNodesInUseIsError25)
{
    start({"--clients", "18"});
    std::vector<std::unique_ptr<PlcClient>> clients;
    for (int i = 0; i < 16; ++i)
        clients.push_back(std::make_unique<PlcClient>(port));
    expectRefused(0, 0x25);
    TcpClient explicitly(port);
    explicitly.send(nodeRequest(238));
    EXPECT_EQ(explicitly.receive(24), nodeReply(238));
}

TEST_F(PlcNodeTest, ConnectionsWithoutNodeAreBoundedToo)
{
    start({"--clients", "1"});
    std::vector<std::unique_ptr<TcpClient>> silent;
    for (int i = 0; i < 17; ++i)
        silent.push_back(std::make_unique<TcpClient>(port));
    // Who comes then takes the place of who has waited longest.
    TcpClient newcomer(port);
    newcomer.send(nodeRequest());
    EXPECT_EQ(newcomer.receive(24), nodeReply(239));
    EXPECT_EQ(silent.front()->receiveUntilClosed(), "");
    silent.at(1)->send(nodeRequest());
    EXPECT_EQ(silent.at(1)->receiveUntilClosed(), nodeReply(0, 0x20));
}

TEST_F(PlcNodeTest, ConnectionsWithoutNodeNeverCostAClientItsPlace)
{
    start({"--clients", "1"});
    PlcClient client(port);
    std::vector<std::unique_ptr<TcpClient>> silent;
    for (int i = 0; i < 40; ++i)
        silent.push_back(std::make_unique<TcpClient>(port));
    EXPECT_EQ(silent.at(23)->receiveUntilClosed(), ""); // 16 places are left to them
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
}

// The holder of a node that another connection from its address asks for is asked whether it still lives. It need not
// answer, and goes on.
TEST_F(PlcNodeTest, TheHolderOfANodeInUseGetsAConfirmation)
{
    start();
    const std::string confirmation = plainHex("46494E53 00000008 00000006 00000000");
    PlcClient holder(port);
    for (int i = 0; i < 3; ++i) {
        expectRefused(239, 0x21);
        EXPECT_EQ(holder.receive(16), confirmation);
        EXPECT_EQ(holder.ask("0101 82 0000 00 0001"), plainHex("0101 0000 0000"));
    }
    EXPECT_EQ(tell("clients"), "ok 1 239");
}

TEST_F(PlcNodeTest, AConfirmationComesBetweenTwoAnswers)
{
    start({"--fault", "delay=300#1"});
    TcpClient holder(port);
    holder.send(nodeRequest(9)); // is answered late
    waitForAnswer("clients", "ok 1 9");
    expectRefused(9, 0x21);
    EXPECT_EQ(holder.receive(24), nodeReply(9));
    EXPECT_EQ(holder.receive(16), plainHex("46494E53 00000008 00000006 00000000"));
}

TEST_F(PlcNodeTest, AConfirmationTakesNothingOfAHalfFrame)
{
    start();
    PlcClient holder(port);
    const std::string read = commandFrame("0101 82 0000 00 0001");
    holder.send(read.substr(0, 20));
    tell("stats"); // the simulator has looked at the first part
    expectRefused(239, 0x21);
    EXPECT_EQ(holder.receive(16), plainHex("46494E53 00000008 00000006 00000000"));
    holder.send(read.substr(20));
    EXPECT_EQ(holder.receiveFrame(), responseFrame("0101 0000 0000"));
}

TEST_F(PlcNodeTest, SecondExchangeOnAConnectionIsError3)
{
    start();
    PlcClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receiveUntilClosed(), errorNotice(3));
    waitForAnswer("clients", "ok 0");
}

TEST_F(PlcNodeTest, CommandBeforeTheExchangeIsError3)
{
    start();
    TcpClient client(port);
    client.send(commandFrame("0601"));
    EXPECT_EQ(client.receiveUntilClosed(), nodeReply(0, 3));
}
