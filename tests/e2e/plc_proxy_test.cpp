#include "plc_fixture.h"
#include "support/held_port.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <filesystem>

// The proxy between a client and a PLC, both of which the test plays.

namespace {

const std::string READ = "0101 82 0064 00 000A"; // DM 100, 10 words
const std::string READ_REPLY = "0101 0000 0001 0002 0003 0004 0005 0006 0007 0008 0009 000A";

} // namespace

class PlcProxyTest : public PlcTest {
protected:
    PlcProxyTest() : listener(address.startListening()) {}
    ~PlcProxyTest() override { close(listener); }

    void startProxy(const std::vector<std::string> &options = {})
    {
        std::vector<std::string> all = {"--proxy", address.host()};
        all.insert(all.end(), options.begin(), options.end());
        start(all);
    }

    std::unique_ptr<TcpClient> acceptAtPlc() const
    {
        pollfd polled = {listener, POLLIN, 0};
        if (poll(&polled, 1, DEFAULT_DEADLINE_MS) <= 0)
            throw std::runtime_error("the proxy does not connect");
        return std::make_unique<TcpClient>(TcpClient::Accepted{accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)});
    }

    void connect()
    {
        client = std::make_unique<TcpClient>(port);
        atPlc = acceptAtPlc();
        const std::string line = plc->readLine();
        EXPECT_EQ(line.substr(0, 11), "#1 begins: ");
        EXPECT_EQ(line.substr(line.rfind(' ') + 1), address.host());
    }

    void expectRequest(const std::string &hex)
    {
        client->send(hex);
        EXPECT_EQ(atPlc->receive(plainHex(hex).size() / 2), plainHex(hex));
    }

    void expectReply(const std::string &hex)
    {
        atPlc->send(hex);
        EXPECT_EQ(client->receive(plainHex(hex).size() / 2), plainHex(hex));
    }

    // How long it waits only decides how much the proxy is given.
    bool canSend(int waitMs) const
    {
        pollfd writable = {client->descriptor(), POLLOUT, 0};
        return poll(&writable, 1, waitMs) > 0;
    }

    std::size_t sendSome(const std::uint8_t *bytes, std::size_t count) const
    {
        const ssize_t n = send(client->descriptor(), bytes, count, MSG_DONTWAIT | MSG_NOSIGNAL);
        return n > 0 ? static_cast<std::size_t>(n) : 0;
    }

    void takeSome(std::vector<std::uint8_t> &taken) const
    {
        std::uint8_t buffer[65536];
        pollfd readable = {atPlc->descriptor(), POLLIN, 0};
        if (poll(&readable, 1, DEFAULT_DEADLINE_MS) <= 0)
            throw std::runtime_error("the proxy passes nothing on");
        const ssize_t n = recv(atPlc->descriptor(), buffer, sizeof buffer, 0);
        if (n <= 0)
            throw std::runtime_error("the proxy has ended");
        taken.insert(taken.end(), buffer, buffer + n);
    }

    void expectRefusal(const std::vector<std::string> &options, const std::string &error, int exitCode = 2)
    {
        std::vector<std::string> arguments = {FINS_PLC_PATH};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Process failing(arguments);
        EXPECT_EQ(failing.wait(), exitCode) << error;
        EXPECT_EQ(failing.errors(), error);
        EXPECT_EQ(failing.output(), "");
    }

    HeldPort                   address;
    int                        listener;
    TemporaryFolder            folder;
    std::unique_ptr<TcpClient> client;
    std::unique_ptr<TcpClient> atPlc;
};

TEST_F(PlcProxyTest, PassesFramesAndTellsThemInWords)
{
    startProxy();
    connect();
    expectRequest(nodeRequest());
    expectReply(nodeReply(239));
    expectRequest(commandFrame(READ));
    expectReply(responseFrame(READ_REPLY));
    expectRequest(commandFrame("0101 82 8000 00 0001", 0x5B));
    expectReply(responseFrame("0101 1103", 0x5B));
    client->disconnect();
    atPlc->disconnect();
    for (const char *const line :
         {"#1 < asks for a node", "#1 > client has node 239, PLC node 1", "#1 < SID 5A READ DM 100, 10 words",
          "#1 > SID 5A READ: normal end, 20 bytes", "#1 < SID 5B READ DM 32768, 1 word",
          "#1 > SID 5B READ: 1103 first address out of range", "#1 ends"})
        EXPECT_EQ(plc->readLine(), line);
}

// Frames that come together, and one that comes in pieces: the bytes are the same, and are not held back for the rest.
TEST_F(PlcProxyTest, PassesBytesHoweverTheyAreCut)
{
    startProxy();
    connect();
    expectRequest(commandFrame(READ, 1) + commandFrame(READ, 2));
    expectReply(responseFrame(READ_REPLY, 1) + responseFrame(READ_REPLY, 2).substr(0, 40));
    expectReply(responseFrame(READ_REPLY, 2).substr(40));
    const std::string request = commandFrame(READ, 3);
    for (std::size_t i = 0; i < request.size(); i += 2)
        expectRequest(request.substr(i, 2));
    for (const char *const line : {"#1 < SID 01 READ DM 100, 10 words", "#1 < SID 02 READ DM 100, 10 words",
                                   "#1 > SID 01 READ: normal end, 20 bytes", "#1 > SID 02 READ: normal end, 20 bytes",
                                   "#1 < SID 03 READ DM 100, 10 words"})
        EXPECT_EQ(plc->readLine(), line);
    client->disconnect();
    atPlc->disconnect();
    EXPECT_EQ(plc->readLine(), "#1 ends");
}

TEST_F(PlcProxyTest, PassesWhatIsNoFinsAndSaysSoOnce)
{
    startProxy({"--trace"});
    connect();
    expectRequest("474554202F");
    EXPECT_EQ(plc->readLine(), "#1 < 5 bytes are no FINS; they and later ones are passed on as they are");
    expectReply("0000");
    expectRequest("46494E53 00000007"); // shorter than a header
    expectRequest(commandFrame("0402"));
    EXPECT_EQ(plc->readLine(), "#1 < SID 5A STOP");
    for (const std::string &line : {std::string("#1 < 474554202F"), std::string("#1 > 0000"),
                                    std::string("#1 < 46494E5300000007"), "#1 < " + commandFrame("0402")})
        EXPECT_EQ(plc->readErrorLine(), line);
    client->disconnect();
    atPlc->disconnect();
    EXPECT_EQ(plc->readLine(), "#1 ends");
}

TEST_F(PlcProxyTest, EveryClientHasAConnectionOfItsOwn)
{
    startProxy();
    TcpClient first(port);
    const auto firstAtPlc = acceptAtPlc();
    TcpClient second(port);
    const auto secondAtPlc = acceptAtPlc();
    second.send("02");
    first.send("01");
    EXPECT_EQ(firstAtPlc->receive(1), "01");
    EXPECT_EQ(secondAtPlc->receive(1), "02");
    secondAtPlc->send("03");
    EXPECT_EQ(second.receive(1), "03");
    first.disconnect();
    EXPECT_EQ(firstAtPlc->receiveUntilClosed(), "");
    second.send("04");
    EXPECT_EQ(secondAtPlc->receive(1), "04");
    second.disconnect();
    EXPECT_EQ(secondAtPlc->receiveUntilClosed(), "");
    firstAtPlc->disconnect();
    secondAtPlc->disconnect();
    plc->waitForLine("ends");
    plc->waitForLine("ends");
}

TEST_F(PlcProxyTest, TheEndOfSendingGoesOnAlone)
{
    startProxy();
    connect();
    client->send(commandFrame(READ));
    client->endSending();
    EXPECT_EQ(atPlc->receiveUntilClosed(), commandFrame(READ));
    expectReply(responseFrame(READ_REPLY));
    atPlc->endSending();
    EXPECT_EQ(client->receiveUntilClosed(), "");
    plc->waitForLine("#1 ends");
}

TEST_F(PlcProxyTest, AResetGoesOnInBothDirections)
{
    startProxy();
    connect();
    client->reset();
    EXPECT_TRUE(atPlc->endsByReset());
    EXPECT_EQ(plc->readLine(), "#1 ends: reset");
    client = std::make_unique<TcpClient>(port);
    atPlc = acceptAtPlc();
    expectRequest(nodeRequest());
    atPlc->reset();
    EXPECT_TRUE(client->endsByReset());
    plc->waitForLine("#2 ends: reset");
}

// More than all the buffers of four sockets hold: a proxy that kept reading would take all of it.
TEST_F(PlcProxyTest, WhatThePlcDoesNotTakeIsNotReadFromTheClient)
{
    startProxy();
    connect();
    std::vector<std::uint8_t> bytes(48u << 20);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 2654435761u >> 24);
    std::size_t sent = 0;
    while (sent < bytes.size() && canSend(300))
        sent += sendSome(bytes.data() + sent, bytes.size() - sent);
    EXPECT_LT(sent, bytes.size());
    bytes.resize(std::max<std::size_t>(sent, 2u << 20));
    std::vector<std::uint8_t> taken;
    while (taken.size() < bytes.size()) {
        if (sent < bytes.size() && canSend(0))
            sent += sendSome(bytes.data() + sent, bytes.size() - sent);
        takeSome(taken);
    }
    EXPECT_TRUE(taken == bytes);
    client->disconnect();
    atPlc->disconnect();
    plc->waitForLine("#1 ends");
}

// The client's reset would not be met by reading: nothing is read.
TEST_F(PlcProxyTest, AResetGoesOnWhileThePlcTakesNothing)
{
    startProxy();
    connect();
    const std::vector<std::uint8_t> bytes(1u << 20);
    while (canSend(300))
        sendSome(bytes.data(), bytes.size());
    client->reset();
    plc->waitForLine("#1 ends: reset");
    EXPECT_TRUE(atPlc->endsByReset());
}

TEST_F(PlcProxyTest, AClientIsClosedWhenThePlcIsNotThere)
{
    close(listener);
    listener = -1;
    startProxy();
    TcpClient early(port);
    EXPECT_EQ(early.receiveUntilClosed(), "");
    EXPECT_EQ(plc->readErrorLine(),
              "fins_plc: client #1 is closed: no connection to " + address.host() + ": Connection refused");
    listener = address.startListening();
    client = std::make_unique<TcpClient>(port);
    atPlc = acceptAtPlc();
    expectRequest(nodeRequest());
    client->disconnect();
    atPlc->disconnect();
    plc->waitForLine("#2 ends");
}

TEST_F(PlcProxyTest, ThePortOfThePlcIsTheOneOfFins)
{
    start({"--proxy", "255.255.255.255"}); // which no connection goes to
    TcpClient refused(port);
    const std::string prefix = "fins_plc: client #1 is closed: no connection to 255.255.255.255:9600: ";
    EXPECT_EQ(plc->readErrorLine().substr(0, prefix.size()), prefix);
}

// With the place for waiting connections taken, the PLC answers the next one when it is asked again, a second later.
TEST_F(PlcProxyTest, APlcThatIsBusyIsWaitedFor)
{
    ASSERT_EQ(listen(listener, 0), 0);
    const TcpClient waiting(address.number());
    startProxy();
    client = std::make_unique<TcpClient>(port);
    client->send(nodeRequest());
    pollfd closed = {client->descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&closed, 1, 200), 0);
    acceptAtPlc();
    atPlc = acceptAtPlc();
    EXPECT_EQ(atPlc->receive(plainHex(nodeRequest()).size() / 2), plainHex(nodeRequest()));
    client->disconnect();
    atPlc->disconnect();
    plc->waitForLine("#1 ends");
}

// The PLC hears what the client says and nothing else, to the end. The recording has it all, with the beginning of a
// frame.
TEST_F(PlcProxyTest, ASignalEndsItWithTheRecordingWhole)
{
    startProxy({"--record", folder.path("a.txt")});
    connect();
    expectRequest(nodeRequest());
    expectReply(nodeReply(239));
    expectRequest("46494E53 0000");
    plc->sendSignal(SIGINT);
    EXPECT_EQ(plc->wait(), 0);
    EXPECT_EQ(atPlc->receiveUntilClosed(), "");
    EXPECT_EQ(client->receiveUntilClosed(), "");
    std::string frames;
    const std::string text = folder.content("a.txt");
    for (std::size_t at = text.find('\n') + 1; at < text.size(); at = text.find('\n', at) + 1)
        frames += text.substr(text.find(' ', at), text.find('\n', at) - text.find(' ', at)) + "\n";
    EXPECT_EQ(frames, " 1 < " + plainHex(nodeRequest()) + "\n 1 > " + nodeReply(239) + "\n 1 < 46494E530000\n");
    plc = nullptr;
}

TEST_F(PlcProxyTest, AFullDiskEndsTheRecordingAndNothingElse)
{
    for (const char *const name : {"full.txt", "full.pcap"}) {
        std::filesystem::create_symlink("/dev/full", folder.path(name));
        startProxy({"--record", folder.path(name)});
        connect();
        expectRequest(nodeRequest());
        expectReply(nodeReply(239));
        EXPECT_EQ(plc->readErrorLine(),
                  "fins_plc: the recording " + folder.path(name) + " ends: it cannot be written any more");
        client->disconnect();
        atPlc->disconnect();
        plc->waitForLine("#1 ends");
        TearDown();
        EXPECT_EQ(plc->errors(), "");
    }
    plc = nullptr;
}

TEST_F(PlcProxyTest, KnowsOneCommand)
{
    startProxy();
    EXPECT_EQ(tell("mode run"), "error 'mode run' is no command; a proxy knows quit alone");
}

TEST_F(PlcProxyTest, BadUsage)
{
    const std::string usage = "' is no address of a PLC; use HOST, HOST:PORT or [IPV6]:PORT; see fins_plc --help\n";
    for (const char *const bad : {":9600", "plc:", "plc:0", "plc:65536", "plc:96x", "[::1", "[::1]9600", "::1"})
        expectRefusal({"--proxy", bad}, "fins_plc: --proxy: '" + std::string(bad) + usage);
    for (const std::vector<std::string> &other : std::vector<std::vector<std::string>>{
             {"--plant", "tank"}, {"--fault", "drop"}, {"--replay", "a.txt"}, {"--view"}, {"--project", "a.toml"}}) {
        std::vector<std::string> options = {"--proxy", "127.0.0.1"};
        options.insert(options.end(), other.begin(), other.end());
        expectRefusal(options,
                      "fins_plc: " + other[0] + ": a proxy simulates nothing; leave it out; see fins_plc --help\n");
    }
    expectRefusal({"--proxy", address.host(), "--port", std::to_string(address.number())},
                  "fins_plc: cannot listen on " + address.host() +
                      ": Address already in use; choose another --port (0 picks a free one) or --bind\n",
                  3);
}
