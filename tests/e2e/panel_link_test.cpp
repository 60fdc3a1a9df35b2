#include "panel_run.h"

// The link to the PLC: cuts, a PLC that restarts, peers that are no PLC or stop in the middle.

class PanelLinkTest : public PanelTest {};

TEST_F(PanelLinkTest, CutInTheMiddleOfAWatch)
{
    start();
    ASSERT_EQ(tell("write DM:0 1 1"), "ok");
    const auto panel = watch({"DM:0:2", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "DM:0 - 1");
    EXPECT_EQ(nextChange(*panel), "DM:1 - 1");
    EXPECT_EQ(nextMessage(*panel) + "\n", connectedLine());
    for (int value = 2; value <= 4; ++value) {
        // What changes while there is no link is seen afterwards, as one change.
        ASSERT_EQ(tell("fault refuse"), "ok");
        ASSERT_EQ(tell("disconnect"), "ok 1");
        panel->waitForErrorLine("link to " + host() + " lost: ");
        ASSERT_EQ(tell("write DM:0 999"), "ok");
        ASSERT_EQ(tell("write DM:0 " + std::to_string(value)), "ok");
        ASSERT_EQ(tell("fault refuse off"), "ok");
        EXPECT_EQ(nextChange(*panel), "DM:0 " + std::to_string(value - 1) + " " + std::to_string(value));
        EXPECT_EQ(panel->waitForErrorLine("connected to ") + "\n", connectedLine());
    }
    ASSERT_EQ(tell("write DM:1 7"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:1 1 7");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

// A counter that never rests: over several cuts every line goes on where the one before ended.
TEST_F(PanelLinkTest, LinesGoOnOverCuts)
{
    start({"--plant", "--plant-period", "3"});
    const auto panel = watch({"DM:4", "--interval", "1"});
    std::string latest = "-";
    for (int cut = 0; cut < 4; ++cut) {
        for (int i = 0; i < 5; ++i) {
            std::istringstream words(nextChange(*panel));
            std::string item, before, after;
            words >> item >> before >> after;
            EXPECT_EQ(before, latest);
            EXPECT_TRUE(latest == "-" || std::stoi(after) > std::stoi(before)) << before << " " << after;
            latest = after;
        }
        ASSERT_EQ(tell("disconnect"), "ok 1");
        panel->waitForErrorLine("link to " + host() + " lost: ");
        panel->waitForErrorLine("connected to " + host());
    }
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelLinkTest, PlcRestartsOnItsPort)
{
    start();
    ASSERT_EQ(tell("write DM:0 5"), "ok");
    const auto panel = watch({"DM:0", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "DM:0 - 5");
    for (const bool isKilled : {true, false}) {
        if (isKilled)
            plc->sendSignal(SIGKILL);
        else
            plc->writeLine("quit");
        plc->wait();
        panel->waitForErrorLine("link to " + host() + " lost: ");
        EXPECT_EQ(nextMessage(*panel), "no link to " + host() + ": Connection refused, retrying in 200 ms");
        startAgain();
        // The new PLC's memory is empty.
        EXPECT_EQ(nextChange(*panel), "DM:0 5 0");
        ASSERT_EQ(tell("write DM:0 5"), "ok");
        EXPECT_EQ(nextChange(*panel), "DM:0 0 5");
    }
    EXPECT_EQ(interrupt(*panel), 0);
}

// After a read was accepted the pauses start anew.
TEST_F(PanelLinkTest, PausesGrowAndStartAnew)
{
    start({"--fault", "refuse"});
    const auto panel = watch({"DM:0", "--interval", "5"});
    for (const char *pause : {"100", "200", "400"})
        EXPECT_EQ(nextMessage(*panel),
                  "no link to " + host() + ": Connection refused, retrying in " + pause + " ms");
    ASSERT_EQ(tell("faults off"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 - 0");
    EXPECT_EQ(nextMessage(*panel) + "\n", connectedLine());
    ASSERT_EQ(tell("disconnect"), "ok 1");
    EXPECT_NE(nextMessage(*panel).find(", retrying in 100 ms"), std::string::npos);
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelLinkTest, AllConnectionsInUse)
{
    start({"--clients", "1"});
    auto other = std::make_unique<PlcClient>(port);
    const auto panel = startPanel(arguments("read", {"DM:0"}));
    EXPECT_EQ(nextMessage(*panel), linkLost("FINS/TCP error 20 (all connections of the PLC are in use)"));
    other = nullptr;
    EXPECT_EQ(panel->readLine(), "DM:0 = 0");
    EXPECT_EQ(panel->wait(), 0);
}

TEST_F(PanelLinkTest, OtherNodeNumbers)
{
    start({"--node", "254"});
    const PanelRun read = run("read", {"DM:0"});
    EXPECT_EQ(read.out, "DM:0 = 0\n");
    EXPECT_NE(read.err.find(", PLC node 254\n"), std::string::npos) << read.err;
}

// ---- Peers that are no proper PLC --------------------------------------------------------------------------------

// What a peer does instead of answering, and what the panel says of it.
struct BadPeer {
    const char *name;
    const char *bytes; // the answer
    const char *reason;
};

void PrintTo(const BadPeer &peer, std::ostream *out) { *out << peer.name; }

const BadPeer BAD_HANDSHAKES[] = {
    {"Nothing", "", "no node addresses: no reply in time"},
    {"HalfAHeader", "46494E53 0000", "no node addresses: only 6 bytes of the reply came in time"},
    {"OneByte", "46", "no node addresses: only 1 byte of the reply came in time"},
    {"HalfAFrame", "46494E53 00000010 00000001 00000000 000000EF",
     "no node addresses: only 20 of 24 bytes of the reply came in time"},
    {"OneByteMissing", "46494E53 00000010 00000001 00000000 000000EF 000000",
     "no node addresses: only 23 of 24 bytes of the reply came in time"},
    {"WrongMagic", "47494E53 00000010 00000001 00000000 000000EF 00000001",
     "no node addresses: the reply does not begin with FINS"},
    {"OneWrongByte", "00", "no node addresses: the reply does not begin with FINS"},
    {"Web", "485454502F312E3120343030204261642052657175657374",
     "no node addresses: the reply does not begin with FINS"},
    {"LongestLength", "46494E53 000007F8 00000001 00000000 000000EF 00000001",
     "no node addresses: only 24 of 2048 bytes of the reply came in time"},
    {"OverlongLength", "46494E53 000007F9 00000001 00000000 000000EF 00000001",
     "no node addresses: the reply has an impossible length"},
    {"NegativeLength", "46494E53 FFFFFFFF 00000001 00000000 000000EF 00000001",
     "no node addresses: the reply has an impossible length"},
    {"ZeroLength", "46494E53 00000000 00000001 00000000 000000EF 00000001",
     "no node addresses: the reply has an impossible length"},
    {"ShortLength", "46494E53 00000007 00000001 00000000 000000EF 00000001",
     "no node addresses: the reply has an impossible length"},
    {"NoNodes", "46494E53 00000008 00000001 00000000",
     "no node addresses: the reply does not answer the request"},
    {"OneNodeOnly", "46494E53 0000000C 00000001 00000000 000000EF",
     "no node addresses: the reply does not answer the request"},
    {"TooManyBytes", "46494E53 00000011 00000001 00000000 000000EF 00000001 00",
     "no node addresses: the reply does not answer the request"},
    {"WrongCommand", "46494E53 00000010 00000002 00000000 000000EF 00000001",
     "no node addresses: the reply does not answer the request"},
    {"ClientNode0", "46494E53 00000010 00000001 00000000 00000000 00000001",
     "no node addresses: this node is to be 0, a node is 1 to 254"},
    {"ClientNode255", "46494E53 00000010 00000001 00000000 000000FF 00000001",
     "no node addresses: this node is to be 255, a node is 1 to 254"},
    {"ClientNodeAbove255", "46494E53 00000010 00000001 00000000 000001EF 00000001",
     "no node addresses: this node is to be 495, a node is 1 to 254"},
    {"ServerNode0", "46494E53 00000010 00000001 00000000 000000EF 00000000",
     "no node addresses: the PLC's node is said to be 0, a node is 1 to 254"},
    {"ServerNode255", "46494E53 00000010 00000001 00000000 000000EF 000000FF",
     "no node addresses: the PLC's node is said to be 255, a node is 1 to 254"},
    {"ServerNodeAbove255", "46494E53 00000010 00000001 00000000 000000EF FF000001",
     "no node addresses: the PLC's node is said to be 4278190081, a node is 1 to 254"},
    {"OneNodeForBoth", "46494E53 00000010 00000001 00000000 00000007 00000007",
     "no node addresses: this node and the PLC's are to be the same, 7"},
    {"Error20", "46494E53 00000010 00000001 00000020 00000000 00000000",
     "FINS/TCP error 20 (all connections of the PLC are in use)"},
    {"Error25", "46494E53 00000010 00000001 00000025 00000000 00000000",
     "FINS/TCP error 25 (the PLC has no free node address for this client)"},
    {"ErrorNotice", "46494E53 00000008 00000003 00000003", "FINS/TCP error 3 (the command is not supported)"},
    {"UnknownError", "46494E53 00000008 00000003 FFFFFFFF", "FINS/TCP error FFFFFFFF"},
};

// The answers to a read of DM:0, in which 5A stands for its service ID.
const BadPeer BAD_REPLIES[] = {
    {"Nothing", "", "no reply in time"},
    {"HalfAFrame", "46494E53 00000018 00000002 00000000 C0000200EF",
     "only 21 of 32 bytes of the reply came in time"},
    {"OneByteMissing", "46494E53 00000018 00000002 00000000 C0000200EF000001005A 0101 0000 00",
     "only 31 of 32 bytes of the reply came in time"},
    {"WrongMagic", "46494E54 00000018 00000002 00000000 C0000200EF000001005A 0101 0000 0007",
     "the reply does not begin with FINS"},
    {"OverlongLength", "46494E53 000007F9 00000002 00000000 C0000200EF000001005A 0101 0000 0007",
     "the reply has an impossible length"},
    {"ZeroLength", "46494E53 00000000 00000002 00000000 C0000200EF000001005A 0101 0000 0007",
     "the reply has an impossible length"},
    {"NodeAddressesAgain", "46494E53 00000010 00000001 00000000 000000EF 00000001",
     "the reply does not answer the request"},
    {"NoFrame", "46494E53 00000008 00000002 00000000", "the reply does not answer the request"},
    {"WithoutEndCode", "46494E53 00000014 00000002 00000000 C0000200EF000001005A 0101",
     "the reply does not answer the request"},
    {"WithoutData", "46494E53 00000016 00000002 00000000 C0000200EF000001005A 0101 0000",
     "the driver rejects the reply"},
    {"TooManyWords", "46494E53 0000001A 00000002 00000000 C0000200EF000001005A 0101 0000 0007 0008",
     "the driver rejects the reply"},
    {"OtherCommand", "46494E53 00000018 00000002 00000000 C0000200EF000001005A 0102 0000 0007",
     "the reply does not answer the request"},
    {"OtherService", "46494E53 00000018 00000002 00000000 C0000200EF000001005B 0101 0000 0007",
     "the reply does not answer the request"},
    {"Command", "46494E53 00000018 00000002 00000000 80000200EF000001005A 0101 0000 0007",
     "the reply is no response but a command"},
    {"FromAnotherNode", "46494E53 00000018 00000002 00000000 C0000200EF000005005A 0101 0000 0007",
     "the reply comes from node 5, not 1"},
    {"FromAnotherNetwork", "46494E53 00000018 00000002 00000000 C0000200EF000201005A 0101 0000 0007",
     "the reply comes from network 2, not 0"},
    {"FromAnotherUnit", "46494E53 00000018 00000002 00000000 C0000200EF000001105A 0101 0000 0007",
     "the reply comes from unit 16, not 0"},
    {"ToAnotherNode", "46494E53 00000018 00000002 00000000 C0000200EE000001005A 0101 0000 0007",
     "the reply is for node 238, not 239"},
    {"ToAnotherNetwork", "46494E53 00000018 00000002 00000000 C0000203EF000001005A 0101 0000 0007",
     "the reply is for network 3, not 0"},
    {"ToAnotherUnit", "46494E53 00000018 00000002 00000000 C0000200EF040001005A 0101 0000 0007",
     "the reply is for unit 4, not 0"},
    {"RefusalOfAnotherNode", "46494E53 00000016 00000002 00000000 C0000200EF000005005A 0101 1103",
     "the reply comes from node 5, not 1"},
    {"ErrorNotice", "46494E53 00000008 00000003 00000001",
     "FINS/TCP error 1 (the header does not begin with FINS)"},
    {"ErrorInTheHeader", "46494E53 00000018 00000002 00000022 C0000200EF000001005A 0101 0000 0007",
     "FINS/TCP error 22 (the PLC does not accept connections from this IP address)"},
};

class PanelBadPeerTest : public PlayedTest, public ::testing::WithParamInterface<BadPeer> {
protected:
    // Only a reply that does not come is waited for.
    void startWatch()
    {
        const bool isAwaited = std::string(GetParam().reason).find("in time") != std::string::npos;
        panel = startPanel({"watch", plc.host(), "DM:0", "--timeout", isAwaited ? "500" : "10000", "--retries", "1"});
    }

    // A connection that is served as it should be: DM:0 is 9.
    void serveWell()
    {
        acceptLink();
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
        link->answer("0101 0000 0009");
    }
};

class PanelBadHandshakeTest : public PanelBadPeerTest {};

INSTANTIATE_TEST_SUITE_P(Answers, PanelBadHandshakeTest, ::testing::ValuesIn(BAD_HANDSHAKES),
                         [](const auto &row) { return std::string(row.param.name); });

// The panel hangs up, says why, and tries again: the value comes with the next good connection.
TEST_P(PanelBadHandshakeTest, IsGivenUp)
{
    startWatch();
    link = plc.accept();
    EXPECT_EQ(link->receive(20), plainHex(nodeRequest()));
    link->send(GetParam().bytes);
    EXPECT_EQ(nextMessage(*panel), plc.linkLost(GetParam().reason));
    link->awaitClose();
    serveWell();
    EXPECT_EQ(nextChange(*panel), "DM:0 - 9");
    EXPECT_EQ(nextMessage(*panel), "connected to " + plc.host() + ": this node 239, PLC node 1");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

class PanelBadReplyTest : public PanelBadPeerTest {};

INSTANTIATE_TEST_SUITE_P(Answers, PanelBadReplyTest, ::testing::ValuesIn(BAD_REPLIES),
                         [](const auto &row) { return std::string(row.param.name); });

// No byte of a bad reply becomes a value.
TEST_P(PanelBadReplyTest, IsNoValue)
{
    startWatch();
    acceptLink();
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    std::string bytes = plainHex(GetParam().bytes);
    if (bytes.size() > 2 * 25)
        bytes.replace(2 * 25, 2, hexNumber(link->sid + (bytes.substr(2 * 25, 2) == "5B"), 2));
    link->send(bytes);
    EXPECT_EQ(panel->waitForErrorLine("link to "), plc.linkLost(GetParam().reason));
    link->awaitClose();
    serveWell();
    EXPECT_EQ(nextChange(*panel), "DM:0 - 9");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

// Half-open: connections are made, but nobody is there.
TEST(PanelHalfOpen, EveryCommandEndsInTime)
{
    PlayedPlc plc;
    for (const Words &command : {Words{"read", "DM:0"}, Words{"write", "DM:0=1"}}) {
        const PanelRun ended = runPanel({command[0], plc.host(), command[1], "--timeout", "50", "--give-up", "0.12"});
        EXPECT_EQ(ended.code, 3);
        EXPECT_EQ(ended.out, "");
        const Words lines = linesOf(ended.err);
        ASSERT_GE(lines.size(), 2u) << ended.err;
        EXPECT_EQ(lines[0], plc.linkLost("no node addresses: no reply in time"));
        EXPECT_EQ(lines.back(), noAnswerLine(plc.host(), 120, "the connection is made, but the node address request is "
                                                              "not answered within 50 ms"));
    }
}

// A peer that sends rubbish without end does not keep the panel busy: it hangs up.
TEST(PanelGarbage, EndlessStreamIsHungUpOn)
{
    PlayedPlc plc;
    const auto panel = startPanel({"watch", plc.host(), "DM:0", "--timeout", "10000"});
    for (const char *pause : {"100", "200"}) {
        const auto link = plc.accept();
        std::string rubbish;
        for (int i = 0; i < 4096; ++i)
            rubbish += hexNumber(static_cast<std::size_t>(i * 7 + 1) & 255, 2);
        try {
            for (;;)
                link->send(rubbish);
        } catch (const std::runtime_error &) {
        }
        EXPECT_EQ(nextMessage(*panel), "link to " + plc.host() +
                                              " lost: no node addresses: the reply does not begin with FINS, "
                                              "retrying in " + pause + " ms");
    }
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

// Complete frames without end, none of which answers.
TEST(PanelGarbage, EndlessFramesAreHungUpOn)
{
    PlayedPlc plc;
    const auto panel = startPanel({"watch", plc.host(), "DM:0", "--timeout", "10000", "--retries", "2"});
    const auto link = plc.accept();
    link->exchangeNodes();
    link->command();
    std::string frames;
    for (unsigned i = 0; i < 64; ++i)
        frames += responseFrame("0101 0000 0007", (link->sid + 100) % 256);
    try {
        for (;;)
            link->send(frames);
    } catch (const std::runtime_error &) {
    }
    EXPECT_NE(panel->waitForErrorLine("link to ").find(", 2 times in a row, retrying in 100 ms"), std::string::npos);
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

// ---- Segments ----------------------------------------------------------------------------------------------------

// Two replies in one segment: the second one is not the reply to the next request.
TEST(PanelSegments, LeftOverBytesNeverReachTheNextRequest)
{
    PlayedPlc plc;
    const auto panel = startPanel({"read", plc.host(), "DM:0", "DM:100"});
    const auto link = plc.accept();
    link->exchangeNodes();
    EXPECT_EQ(link->command(), plainHex("0101 82 0064 00 0001"));
    const unsigned next = link->sid + 1;
    link->send(link->reply("0101 0000 0007") + responseFrame("0101 0000 0063", next));
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    EXPECT_EQ(link->sid, next);
    link->answer("0101 0000 0008");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 8\nDM:100 = 7\n");
}

// The node addresses and the first bytes of the PLC may come in any pieces.
TEST(PanelSegments, RepliesInPieces)
{
    PlayedPlc plc;
    const auto panel = startPanel({"read", plc.host(), "DM:0"});
    const auto link = plc.accept();
    EXPECT_EQ(link->receive(20), plainHex(nodeRequest()));
    const std::string nodes = nodeReply(239);
    for (std::size_t i = 0; i < nodes.size(); i += 2)
        link->send(nodes.substr(i, 2));
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    const std::string reply = link->reply("0101 0000 1234");
    // Cut inside the magic, the length and the data.
    for (const auto &[from, size] : std::vector<std::pair<std::size_t, std::size_t>>{{0, 4}, {4, 10}, {14, 48}, {62, 2}})
        link->send(reply.substr(from, size));
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 4660\n");
}
