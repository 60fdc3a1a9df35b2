#include "panel_run.h"

// `link`: what an engineer sees of a good link, and of each way in which there is none.

namespace {

class LinkCommandTest : public PanelTest {};

// The lines that begin with `word`.
Words stepsOf(const std::string &out, const std::string &word)
{
    Words found;
    for (const std::string &line : linesOf(out)) {
        if (line.find(word) == 0)
            found.push_back(line);
    }
    return found;
}

void expectProblem(const PanelRun &run, const std::string &problem)
{
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(linesOf(run.out).back(), "result       no link");
    const Words messages = linesOf(run.err);
    ASSERT_GE(messages.size(), 2u) << run.err;
    EXPECT_EQ(messages[0], "fins_panel: " + problem);
    for (std::size_t i = 1; i < messages.size(); ++i)
        EXPECT_EQ(messages[i].find("  try: "), 0u) << messages[i];
}

TEST_F(LinkCommandTest, GoodLink)
{
    start();
    EXPECT_EQ(tell("write DM:0 4711"), "ok");
    const PanelRun ended = run("link", {"--count", "7"});
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(stepsOf(ended.out, "resolve").at(0).find("resolve      127.0.0.1 is 127.0.0.1, "), 0u);
    EXPECT_EQ(stepsOf(ended.out, "connect").at(0).find("connect      TCP port " + std::to_string(port) + ", "), 0u);
    EXPECT_EQ(stepsOf(ended.out, "handshake").at(0).find(
                  "handshake    this computer is node 239, the PLC is node 1, "), 0u);
    EXPECT_EQ(stepsOf(ended.out, "mode ").at(0), "mode         RUN");
    EXPECT_EQ(stepsOf(ended.out, "model ").at(0), "model        CJ2H-CPU68");
    EXPECT_EQ(stepsOf(ended.out, "read").size(), 7u);
    EXPECT_EQ(stepsOf(ended.out, "read         DM:0 = 4711, ").size(), 1u);
    EXPECT_EQ(stepsOf(ended.out, "read         AR:0 = 0, ").size(), 1u);
    EXPECT_EQ(stepsOf(ended.out, "round trip").at(0).find("round trip   7 reads of one word: min "), 0u);
    EXPECT_EQ(linesOf(ended.out).back(), "result       a panel can work with this PLC");
}

TEST_F(LinkCommandTest, RefusedReads)
{
    start({"--fault", "end-code=1101"});
    const PanelRun ended = run("link", {});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(stepsOf(ended.out, "read").size(), 7u);
    EXPECT_EQ(stepsOf(ended.out, "read         DM:0 refused: 1101 (there is no such memory area)").size(), 1u);
    EXPECT_EQ(stepsOf(ended.out, "round trip").size(), 0u);
    EXPECT_EQ(linesOf(ended.out).back(), "result       the PLC answers, but refuses 7 of 7 areas");
}

TEST_F(LinkCommandTest, PortClosed)
{
    const HeldPort closed;
    expectProblem(runPanel({"link", closed.host()}),
                  "the host 127.0.0.1 is there, but nothing listens on TCP port " + std::to_string(closed.number()));
}

// There is no way for TCP to a broadcast address, that of the loopback network included.
TEST_F(LinkCommandTest, HostUnreachable)
{
    expectProblem(runPanel({"link", "127.255.255.255"}),
                  "there is no way to 127.255.255.255: Network is unreachable");
}

TEST_F(LinkCommandTest, HostUnknown)
{
    const PanelRun ended = runPanel({"link", "no-such-plc.invalid"});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(linesOf(ended.out).at(0), "resolve      no-such-plc.invalid failed");
    EXPECT_NE(ended.err.find("'no-such-plc.invalid'"), std::string::npos) << ended.err;
    EXPECT_NE(ended.err.find("\n  try: "), std::string::npos) << ended.err;
}

TEST_F(LinkCommandTest, Silence)
{
    start({"--fault", "silence"});
    expectProblem(run("link", {"--timeout", "100"}),
                  "the connection is made, but the node address request is not answered within 100 ms");
}

TEST_F(LinkCommandTest, SilenceBehindTheHandshake)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"link", played.host(), "--timeout", "100"});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    const int code = panel->wait();
    expectProblem({code, panel->output(), panel->errors()},
                  "the PLC gave a node address, then left requests without an answer within 100 ms");
}

TEST_F(LinkCommandTest, HalfAReply)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"link", played.host(), "--timeout", "100"});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->receive(20);
    link->send("46494E53 00000010 00000001");
    const int code = panel->wait();
    expectProblem({code, panel->output(), panel->errors()},
                  "the connection is made, but there are no node addresses: only 12 of 24 bytes of the reply came in "
                  "time");
}

TEST_F(LinkCommandTest, ClosedAtOnce)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"link", played.host()});
    played.accept()->receive(20);
    const int code = panel->wait();
    expectProblem({code, panel->output(), panel->errors()},
                  "the connection is closed again before a node address is given: the PLC closed the connection");
}

TEST_F(LinkCommandTest, AnotherProtocol)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"link", played.host()});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->receive(20);
    link->send("48 54 54 50");
    const int code = panel->wait();
    expectProblem({code, panel->output(), panel->errors()},
                  "what answers on 127.0.0.1 port " + std::to_string(played.port)
                      + " does not speak FINS/TCP; it began with 48 54 54 50 'HTTP'");
}

TEST_F(LinkCommandTest, UnusableNodeAddresses)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"link", played.host()});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->receive(20);
    link->send(nodeReply(7, 0, 7));
    const int code = panel->wait();
    expectProblem({code, panel->output(), panel->errors()},
                  "the connection is made, but there are no node addresses: this node and the PLC's are to be the "
                  "same, 7");
}

class LinkErrorTest : public ::testing::TestWithParam<std::pair<unsigned, const char *>> {};

TEST_P(LinkErrorTest, IsSaidInWords)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"link", played.host()});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->receive(20);
    link->send(nodeReply(0, GetParam().first));
    const int code = panel->wait();
    expectProblem({code, panel->output(), panel->errors()},
                  std::string("the PLC refuses the connection with FINS/TCP error ") + GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Codes, LinkErrorTest, ::testing::Values(
    std::make_pair(0x20u, "20 (all connections of the PLC are in use)"),
    std::make_pair(0x21u, "21 (this node is already connected)"),
    std::make_pair(0x22u, "22 (the PLC does not accept connections from this IP address)"),
    std::make_pair(0x23u, "23 (the node address of this client is out of range)"),
    std::make_pair(0x24u, "24 (the same node address is used by this client and the PLC)"),
    std::make_pair(0x25u, "25 (the PLC has no free node address for this client)")));

} // namespace
