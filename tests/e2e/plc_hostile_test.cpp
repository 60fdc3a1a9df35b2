#include "plc_fixture.h"

#include <cstdlib>
#include <fstream>

// A client that asks and asks and never takes an answer: the answers fill both sockets, and the simulator cannot send.

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
