#include "plc_fixture.h"
#include "support/temporary_folder.h"

// Recordings that are captures: made, served again, and those of other programs. The captures of the tests are typed
// field by field from the file format's, IPv4's and TCP's layouts.

namespace {

const std::string READ = "0101 82 0064 00 0001";
const std::string OTHER_READ = "0101 82 0065 00 0001";

enum LinkType { NO_LINK_LAYER = 101, ETHERNET = 1, COOKED = 113, BLUETOOTH = 187 };

// Numbers of a capture file are in the order of bytes of the machine that wrote it: here the low one first.
std::string lowFirst(std::size_t value)
{
    const std::string hex = hexNumber(value, 8);
    return hex.substr(6, 2) + hex.substr(4, 2) + hex.substr(2, 2) + hex.substr(0, 2);
}

std::string fileHeader(LinkType type)
{
    return plainHex("D4C3B2A1 0200 0400 00000000 00000000 FFFF0000") + lowFirst(type);
}

// A packet in the file; `cut` bytes of it were not captured.
std::string inFile(const std::string &packet, std::size_t cut = 0)
{
    const std::string plain = plainHex(packet);
    const std::size_t size = plain.size() / 2;
    return lowFirst(0) + lowFirst(0) + lowFirst(size - cut) + lowFirst(size) + plain.substr(0, 2 * (size - cut));
}

enum Direction { REQUEST, REPLY };
enum : unsigned { SYN = 0x02, ACK = 0x10, SYN_ACK = 0x12 };

// 10.0.0.2:50000 is the client, 10.0.0.1:9600 the PLC.
std::string packet(Direction direction, std::size_t sequence, const std::string &payload, unsigned flags = ACK)
{
    const bool isRequest = direction == REQUEST;
    const std::string plain = plainHex(payload);
    return "45 00" + hexNumber(40 + plain.size() / 2, 4) + "0000 4000 40 06 0000" +
           (isRequest ? "0A000002 0A000001 C350 2580" : "0A000001 0A000002 2580 C350") + hexNumber(sequence, 8) +
           "00000000 50" + hexNumber(flags, 2) + "FFFF 0000 0000" + plain;
}

std::string request(std::size_t sequence, const std::string &command, unsigned sid = 0x5A)
{
    return packet(REQUEST, sequence, commandFrame(command, sid));
}

std::string reply(std::size_t sequence, const std::string &response, unsigned sid = 0x5A)
{
    return packet(REPLY, sequence, responseFrame(response, sid));
}

std::string textOf(const std::string &hex)
{
    const std::vector<std::uint8_t> bytes = bytesOfHex(hex);
    return std::string(bytes.begin(), bytes.end());
}

} // namespace

class PlcCaptureTest : public PlcTest {
protected:
    void startReplay(LinkType type, const std::vector<std::string> &packets)
    {
        std::string file = fileHeader(type);
        for (const std::string &one : packets)
            file += inFile(one);
        start({"--replay", folder.put("a.pcap", textOf(file))});
    }

    std::string errorOf(const std::string &content)
    {
        const std::string path = folder.put("a.pcap", content);
        Process failing({FINS_PLC_PATH, "--port", "0", "--replay", path});
        EXPECT_EQ(failing.wait(), 2);
        EXPECT_EQ(failing.output(), "");
        const std::string prefix = "fins_plc: --replay: " + path + ": ";
        const std::string error = failing.errors();
        EXPECT_EQ(error.substr(0, prefix.size()), prefix);
        EXPECT_EQ(error.find('\n'), error.size() - 1);
        return error.substr(prefix.size(), error.size() - prefix.size() - 1);
    }

    // The sender and the flags of the last packet but so many. Without payload it has 56 bytes in the file: 16 of the file,
    // 20 of IPv4 with the address of the sender at 12, and 20 of TCP with the flags at 13. The PLC's port, 9600, is the
    // sender's at 0.
    std::string end(std::size_t back) const
    {
        const std::string file = folder.content("a.pcap");
        const std::string packet = file.substr(file.size() - 56 * back, 56);
        return (packet.substr(36, 2) == "\x25\x80" ? "PLC " : "client ") + hexOfBytes({std::uint8_t(packet.at(49))});
    }

    TemporaryFolder folder;
};

// Through a proxy and back: what the PLC said is said again, with the nodes and service IDs of who asks.
TEST_F(PlcCaptureTest, AProxysCaptureIsServedAgain)
{
    const std::string capture = folder.path("a.pcap");
    Process behind({FINS_PLC_PATH, "--port", "0", "--node", "7"});
    const std::string line = behind.readLine();
    behind.writeLine("write DM:100 4660");
    EXPECT_EQ(behind.readLine(), "ok");
    start({"--proxy", "127.0.0.1" + line.substr(line.rfind(':')), "--record", capture});
    {
        TcpClient client(port);
        client.send(nodeRequest(5));
        EXPECT_EQ(client.receive(24), nodeReply(5, 0, 7));
        client.send(frameSend("80 00 02 00 07 00 00 05 00 01" + READ));
        EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 05 00 00 07 00 01 0101 0000 1234"));
        client.send(frameSend("80 00 02 00 07 00 00 05 00 02 0102 82 0064 00 0001 0007"));
        EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 05 00 00 07 00 02 0102 0000"));
        client.send(frameSend("80 00 02 00 07 00 00 05 00 03" + READ));
        EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 05 00 00 07 00 03 0101 0000 0007"));
    }
    plc->waitForLine("#1 ends");
    TearDown();
    start({"--replay", capture});
    PlcClient client(port);
    client.send(commandFrame(READ, 0x77));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 1234", 0x77));
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 0007"));
    EXPECT_EQ(client.ask("0102 82 0064 00 0001 0007"), plainHex("0102 0000"));
}

// In bytes: 24 of the file; 56 for each packet of the handshake, and for every frame 56 and its own 20 and 24 (nodes), 28
// and 30 (STOP), 34 and 32 (READ). After two READs and a third request it is 964; the reply would be behind 1024.
TEST_F(PlcCaptureTest, TheSimulatorRecordsOneToo)
{
    const std::string capture = folder.path("a.pcap");
    start({"--record", capture, "--record-limit", "1"});
    {
        PlcClient client(port);
        client.send(commandFrame("0402"));
        client.receiveFrame();
        const std::string file = folder.content("a.pcap");
        EXPECT_EQ(hexOfBytes({file.begin(), file.begin() + 24}), fileHeader(NO_LINK_LAYER));
        for (int i = 0; i < 10; ++i)
            client.ask(READ);
        EXPECT_EQ(plc->readErrorLine(),
                  "fins_plc: the recording " + capture + " ends: it has reached its size; --record-limit allows more");
    }
    EXPECT_EQ(folder.content("a.pcap").size(), 964u);
    TearDown();
    start({"--replay", capture});
    PlcClient client(port);
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 0000"));
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
    EXPECT_EQ(tell("mode"), "ok run");
}

// Requests under way at once, whose replies come in another order; a request that is never answered keeps its place.
TEST_F(PlcCaptureTest, RepliesBelongToTheirServiceId)
{
    startReplay(NO_LINK_LAYER, {request(1000, READ, 1), request(1034, READ, 2), request(1068, READ, 3),
                                reply(500, "0101 0000 0003", 3), reply(532, "0101 0000 0002", 2)});
    PlcClient client(port);
    client.send(commandFrame(READ, 9));
    client.send(commandFrame(READ, 10));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 0002", 10));
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 0003"));
}

// The same packet of another client, 10.0.0.2:50001.
static std::string another(std::string packet) { return packet.replace(packet.find("C350"), 4, "C351"); }

TEST_F(PlcCaptureTest, ClientsAreKeptApart)
{
    startReplay(NO_LINK_LAYER, {request(1000, READ, 1), another(request(1000, OTHER_READ, 1)),
                                reply(5000, "0101 0000 1111", 1), another(reply(5000, "0101 0000 2222", 1))});
    PlcClient client(port);
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 1111"));
    EXPECT_EQ(client.ask(OTHER_READ), plainHex("0101 0000 2222"));
}

// The client's SYN: IPv4 with number 1 and a checksum that was added up by hand, TCP to port 9600 without an acknowledgment.
TEST_F(PlcCaptureTest, AConnectionBeginsWithAHandshake)
{
    start({"--record", folder.path("a.pcap")});
    PlcClient(port).ask(READ);
    const std::string file = folder.content("a.pcap");
    const std::string packet = hexOfBytes({file.begin() + 24 + 16, file.begin() + 24 + 16 + 40});
    EXPECT_EQ(packet.substr(0, 40), plainHex("4500 0028 0001 4000 4006 3CCD 7F000001 7F000001"));
    EXPECT_EQ(packet.substr(44, 28), plainHex("2580 00000000 00000000 5002 FFFF"));
    EXPECT_EQ(packet.substr(76), "0000");
}

TEST_F(PlcCaptureTest, TheEndOfAConnectionIsRecorded)
{
    start({"--record", folder.path("a.pcap")});
    PlcClient(port).ask(READ);
    waitForAnswer("clients", "ok 0");
    EXPECT_EQ(end(3), "client 11"); // FIN and ACK
    EXPECT_EQ(end(2), "PLC 11");
    EXPECT_EQ(end(1), "client 10");
    PlcClient hasty(port);
    hasty.ask(READ);
    hasty.reset();
    waitForAnswer("clients", "ok 0");
    EXPECT_EQ(end(1), "client 14"); // RST and ACK
    ASSERT_EQ(tell("fault rst"), "ok");
    PlcClient refused(port);
    refused.send(commandFrame(READ));
    EXPECT_TRUE(refused.endsByReset());
    waitForAnswer("clients", "ok 0");
    EXPECT_EQ(end(1), "PLC 14");
}

TEST_F(PlcCaptureTest, TheEndOfTheSimulatorIsThatOfItsConnections)
{
    start({"--record", folder.path("a.pcap")});
    PlcClient client(port);
    client.ask(READ);
    EXPECT_EQ(tell("quit"), "ok");
    EXPECT_EQ(plc->wait(), 0) << plc->errors();
    plc.reset();
    EXPECT_EQ(end(3), "client 11");
    EXPECT_EQ(end(2), "PLC 11");
    EXPECT_EQ(end(1), "client 10");
}

// Frames over two packets, two in one, retransmissions whole and in part, an ARP packet, and a sequence number that
// begins again at 0.
TEST_F(PlcCaptureTest, FollowsAStreamOverEthernet)
{
    const std::string mac = "020000000001 020000000002 ";
    const std::string first = commandFrame(READ, 1);
    const std::string both = first + commandFrame(OTHER_READ, 2);
    startReplay(ETHERNET,
                {mac + "0806 0001 0800 06 04 0001", mac + "0800" + packet(REQUEST, 0xFFFFFFEF, "", SYN),
                 mac + "0800" + packet(REPLY, 77, "", SYN_ACK),
                 mac + "0800" + packet(REQUEST, 0xFFFFFFF0, both.substr(0, 40)),
                 mac + "0800" + packet(REQUEST, 0xFFFFFFF0, both.substr(0, 40)),
                 mac + "8100 0005 0800" + packet(REQUEST, 0xFFFFFFF0, both),
                 mac + "0800" + reply(78, "0101 0000 0001", 1), mac + "0800" + reply(78, "0101 0000 0001", 1),
                 mac + "0800" + reply(110, "0101 0000 0002", 2)});
    PlcClient client(port);
    EXPECT_EQ(client.ask(OTHER_READ), plainHex("0101 0000 0002"));
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 0001"));
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 0001"));
}

TEST_F(PlcCaptureTest, SaysWhatOfACaptureIsNotUnderstood)
{
    const std::string cooked = "0000 0001 0006 020000000001 0000 0800";
    const std::string file = fileHeader(COOKED) + inFile(cooked + request(1000, READ)) +
                             inFile(cooked + reply(500, "0101 0000 0001")) +
                             inFile(cooked + request(1034, OTHER_READ), 4) +
                             inFile(cooked + request(1068, "0402")) + inFile(cooked + reply(532, "0402 0000"));
    const std::string path = folder.put("a.pcap", textOf(file));
    start({"--replay", path});
    EXPECT_EQ(plc->readErrorLine(), "fins_plc: --replay: " + path +
                                        ": packets left out, cut short, fragments, or over IPv6: 1; pieces of streams "
                                        "missing, or not in their order: 1");
    PlcClient client(port);
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 0001"));
    EXPECT_EQ(client.ask(OTHER_READ), plainHex("0101 0401"));
}

// A header of four words, a packet shorter than its header, and the first part of a fragmented one.
TEST_F(PlcCaptureTest, PacketsThatAreNotWholeAreLeftOut)
{
    const auto broken = [](std::size_t at, const std::string &digits) {
        return plainHex(request(1034, OTHER_READ)).replace(at, digits.size(), digits);
    };
    startReplay(NO_LINK_LAYER, {request(1000, READ), reply(5000, "0101 0000 0001"), broken(0, "44"), broken(4, "0013"),
                                broken(12, "2000")});
    EXPECT_EQ(plc->readErrorLine(), "fins_plc: --replay: " + folder.path("a.pcap") +
                                        ": packets left out, cut short, fragments, or over IPv6: 3");
    PlcClient client(port);
    EXPECT_EQ(client.ask(READ), plainHex("0101 0000 0001"));
}

TEST_F(PlcCaptureTest, BrokenCapturesAreRefusedInALine)
{
    const std::string good = textOf(fileHeader(NO_LINK_LAYER) + inFile(request(1000, READ)));
    EXPECT_EQ(errorOf(good.substr(0, 20)).substr(0, 28), "the capture cannot be read: ");
    EXPECT_EQ(errorOf(good.substr(0, good.size() - 1)).substr(0, 39), "the capture breaks off behind packet 0:");
    EXPECT_EQ(errorOf(good + good.substr(24, 10)).substr(0, 39), "the capture breaks off behind packet 1:");
    EXPECT_EQ(errorOf(textOf(fileHeader(BLUETOOTH))).substr(0, 24), "packets of link type BLU");
    EXPECT_EQ(errorOf(textOf(fileHeader(NO_LINK_LAYER))),
              "there is no FINS command in this capture; make one with --record");
}

TEST_F(PlcCaptureTest, TellsWhatTheRecordingDoesNotHave)
{
    startReplay(NO_LINK_LAYER, {request(1000, READ), reply(500, "0101 0000 0001")});
    EXPECT_EQ(tell("replay"), "ok known=0 unknown=0");
    PlcClient client(port);
    client.ask(READ);
    client.ask("0102 82 0064 00 0001 0001");
    client.ask("0102 82 0064 00 0001 0002");
    client.ask("0402");
    EXPECT_EQ(tell("replay"), "ok known=1 unknown=3 1 time STOP; 2 times WRITE DM 100, 1 word");
    EXPECT_EQ(tell("quit"), "ok");
    EXPECT_EQ(plc->wait(), 0);
    EXPECT_EQ(plc->errors(), "fins_plc: this command is not in the recording: 01028200640000010001\n"
                             "fins_plc: this command is not in the recording: 01028200640000010002\n"
                             "fins_plc: this command is not in the recording: 0402\n"
                             "fins_plc: 1 commands were in the recording, 3 were not\n"
                             "fins_plc: not in the recording: 1 time STOP\n"
                             "fins_plc: not in the recording: 2 times WRITE DM 100, 1 word\n");
    start();
    EXPECT_EQ(tell("replay"), "error no recording is replayed; use --replay FILE");
}

TEST_F(PlcCaptureTest, AThousandRequestsAreNamed)
{
    startReplay(NO_LINK_LAYER, {request(1000, READ), reply(500, "0101 0000 0001")});
    PlcClient client(port);
    for (unsigned address = 1000; address < 2002; ++address)
        client.ask("0101 82" + hexNumber(address, 4) + "00 0001");
    const std::string told = tell("replay");
    EXPECT_NE(told.find("; 1 time READ DM 1999, 1 word; 2 times another command"), std::string::npos) << told;
    EXPECT_EQ(told.substr(0, 47), "ok known=0 unknown=1002 1 time READ DM 1000, 1 ");
}
