#include "plc_fixture.h"

#include <cstdlib>
#include <fstream>
#include <random>
#include <set>

// Clients that ask and never take an answer, which fills both sockets, so that the simulator cannot send; that ask for
// everything there may be; and that come in hundreds and send a byte at a time.

class PlcHostileTest : public PlcTest {
protected:
    // The most memory that the simulator has had so far, in KiB.
    long peakMemory() const
    {
        std::ifstream status("/proc/" + std::to_string(plc->id()) + "/status");
        const std::string field = "VmHWM:";
        for (std::string line; std::getline(status, line);) {
            if (line.compare(0, field.size(), field) == 0)
                return std::stol(line.substr(field.size()));
        }
        throw std::runtime_error("the simulator's memory is not told");
    }

    // Sends `count` reads of 999 words, or as many as the simulator takes.
    static void flood(PlcClient &client, int count)
    {
        const std::vector<std::uint8_t> request = bytesOfHex(commandFrame("0101 82 0000 00 03E7"));
        try {
            for (int i = 0; i < count; ++i)
                client.sendBytes(request);
        } catch (const std::runtime_error &) {
        }
    }
};

TEST_F(PlcHostileTest, WhoTakesNoAnswerIsHungUpOnAtTheDeadline)
{
    start({"--deadline", "500"});
    PlcClient client(port);
    flood(client, 20000);
    waitForAnswer("clients", "ok 0");
}

TEST_F(PlcHostileTest, WhoTakesNoAnswerDoesNotKeepOthersWaiting)
{
    start({"--deadline", "5000"});
    PlcClient client(port);
    flood(client, 10000); // 20 MB of answers, more than two sockets hold
    PlcClient other(port);
    EXPECT_EQ(other.ask("0101 82 0064 00 0001"), "010100000000");
}

TEST_F(PlcHostileTest, AnswersThatNobodyTakesDoNotPileUp)
{
    // What AddressSanitizer, if it is there, holds back of memory that was freed is not the simulator's.
    setenv("ASAN_OPTIONS", "quarantine_size_mb=1", 1);
    start({"--deadline", "500"});
    PlcClient client(port);
    const long before = peakMemory();
    flood(client, 20000); // 40 MB of answers
    waitForAnswer("clients", "ok 0");
    EXPECT_LT(peakMemory() - before, 16 * 1024);
}

class PlcEveryCommandTest : public PlcTest {
protected:
    // 0 to 40 random bytes behind a command code; seldom so many that they are a sensible request.
    std::string randomCommand(unsigned code)
    {
        std::string command = hexNumber(code, 4);
        for (auto left = random() % 41; left > 0; --left)
            command += hexNumber(random() % 256, 2);
        return command;
    }

    // Sends the commands in one piece, and checks that each is answered, in its turn and with its own code.
    void expectAnswers(PlcClient &client, const std::vector<unsigned> &codes)
    {
        std::string frames;
        for (const unsigned code : codes)
            frames += commandFrame(randomCommand(code), code & 0xFF);
        client.send(frames);
        for (const unsigned code : codes) {
            const std::string response = client.receiveFrame();
            const std::string head = "C0000200EF00000100" + hexNumber(code & 0xFF, 2) + hexNumber(code, 4);
            ASSERT_EQ(response.substr(32, 24), head) << response;
        }
    }

    // Words of DM and of HR, which keep their values whatever the mode.
    static std::string heldMemory(PlcClient &client)
    {
        std::string memory = client.ask("0101 B2 0000 00 0200");
        for (unsigned word = 0; word < 32768; word += 512)
            memory += client.ask("0101 82" + hexNumber(word, 4) + "00 0200");
        return memory;
    }

    static void fill(PlcClient &client, const std::string &area, unsigned words)
    {
        for (unsigned word = 0; word < words; word += 512) {
            std::string command = "0102" + area + hexNumber(word, 4) + "00 0200";
            for (unsigned i = word; i < word + 512; ++i)
                command += hexNumber(i ^ 0xA5A5u, 4);
            ASSERT_EQ(client.ask(command), plainHex("0102 0000"));
        }
    }

    std::mt19937 random{65536};
};

// Those that write memory are another test's.
TEST_F(PlcEveryCommandTest, NoneButTheWritersChangesTheMemory)
{
    const std::set<unsigned> writers = {0x0102, 0x0103, 0x0105, 0x2301, 0x2302};
    start();
    PlcClient client(port);
    fill(client, "82", 32768);
    fill(client, "B2", 512);
    const std::string before = heldMemory(client);
    std::vector<unsigned> codes;
    for (unsigned code = 0; code <= 0xFFFF; ++code) {
        if (writers.count(code) == 0)
            codes.push_back(code);
        if (codes.size() < 256 && code != 0xFFFF)
            continue;
        ASSERT_NO_FATAL_FAILURE(expectAnswers(client, codes));
        codes.clear();
    }
    EXPECT_TRUE(heldMemory(client) == before);
    EXPECT_EQ(tell("read DM:0:2"), "ok 42405 42404");
}

TEST_F(PlcEveryCommandTest, KnownOnesSurviveRandomParameters)
{
    start();
    PlcClient client(port);
    for (int round = 0; round < 40; ++round)
        for (const unsigned first : {0x0100u, 0x0400u, 0x0500u, 0x0600u, 0x0700u, 0x0800u, 0x0900u, 0x0C00u, 0x2100u,
                                     0x2300u}) {
            std::vector<unsigned> codes;
            for (unsigned last = 0; last <= 0x20; ++last)
                codes.push_back(first + last);
            ASSERT_NO_FATAL_FAILURE(expectAnswers(client, codes));
        }
    EXPECT_EQ(client.ask("0101 82 0000 00 0001").substr(0, 8), plainHex("0101 0000"));
}

// Four times 250, each with a node of its own, that send their bytes in turn.
TEST_F(PlcHostileTest, AThousandSlowClientsAreAnswered)
{
    start({"--clients", "253"});
    for (int round = 0; round < 4; ++round) {
        std::vector<std::unique_ptr<TcpClient>> clients;
        std::vector<std::vector<std::uint8_t>> requests;
        for (unsigned node = 2; node < 252; ++node) {
            clients.push_back(std::make_unique<TcpClient>(port));
            requests.push_back(bytesOfHex(nodeRequest(node) + frameSend("80 00 02 00 01 00 00" + hexNumber(node, 2) +
                                                                        "00 33 0101 82 0000 00 0001")));
        }
        for (std::size_t at = 0; at < requests[0].size(); ++at)
            for (std::size_t i = 0; i < clients.size(); ++i)
                clients[i]->sendBytes({requests[i][at]});
        for (unsigned node = 2; node < 252; ++node) {
            TcpClient &client = *clients[node - 2];
            EXPECT_EQ(client.receive(24), nodeReply(node));
            EXPECT_EQ(client.receiveFrame(),
                      frameSend("C0 00 02 00" + hexNumber(node, 2) + "00 00 01 00 33 0101 0000 0000"));
        }
        clients.clear();
        waitForAnswer("clients", "ok 0");
    }
}
