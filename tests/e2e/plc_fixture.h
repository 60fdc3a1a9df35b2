#ifndef TESTS_E2E_PLC_FIXTURE_H
#define TESTS_E2E_PLC_FIXTURE_H

#include "support/process.h"
#include "support/tcp_client.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

// The FINS/TCP request for a node address: client node 0 asks for a free one.
inline std::string nodeRequest(unsigned node = 0)
{
    return "46494E53 0000000C 00000000 00000000 " + hexNumber(node, 8);
}

// The reply to it. Server node 1 unless told otherwise.
inline std::string nodeReply(unsigned node, unsigned error = 0, unsigned server = 1)
{
    return plainHex("46494E53 00000010 00000001 " + hexNumber(error, 8) + hexNumber(node, 8) + hexNumber(server, 8));
}

inline std::string errorNotice(unsigned error)
{
    return plainHex("46494E53 00000008 00000003 " + hexNumber(error, 8));
}

// A FINS/TCP frame that carries `finsFrame`.
inline std::string frameSend(const std::string &finsFrame)
{
    return plainHex("46494E53 " + hexNumber(8 + plainHex(finsFrame).size() / 2, 8) + "00000002 00000000" + finsFrame);
}

// A command to node 1 from node 239 (EF hex), which the first client gets.
inline std::string commandFrame(const std::string &command, unsigned sid = 0x5A)
{
    return frameSend("80 00 02 00 01 00 00 EF 00 " + hexNumber(sid, 2) + command);
}

inline std::string responseFrame(const std::string &response, unsigned sid = 0x5A)
{
    return frameSend("C0 00 02 00 EF 00 00 01 00 " + hexNumber(sid, 2) + response);
}

// A client with a node address.
class PlcClient : public TcpClient {
public:
    explicit PlcClient(int port) : TcpClient(port)
    {
        send(nodeRequest());
        const std::string reply = receive(24);
        if (reply.substr(0, 32) != plainHex("46494E53 00000010 00000001 00000000"))
            throw std::runtime_error("no node address: " + reply);
        node = std::stoul(reply.substr(32, 8), nullptr, 16);
    }

    // Sends a command and returns its response from the command code on.
    std::string ask(const std::string &command)
    {
        send(commandFrame(command));
        return receiveFrame().substr(2 * 26);
    }

    unsigned long node = 0;
};

// A running simulator. A test ends with the simulator's orderly end, so that a crash or a sanitizer's finding in it
// fails the test.
class PlcTest : public ::testing::Test {
protected:
    void start(const std::vector<std::string> &options = {})
    {
        std::vector<std::string> arguments = {FINS_PLC_PATH, "--port", "0"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        plc = std::make_unique<Process>(arguments);
        const std::string prefix = "listening on 127.0.0.1:";
        const std::string line = plc->readLine();
        ASSERT_EQ(line.substr(0, prefix.size()), prefix);
        port = std::stoi(line.substr(prefix.size()));
    }

    // The answer to a console line.
    std::string tell(const std::string &line)
    {
        plc->writeLine(line);
        return plc->readLine();
    }

    // Repeats a console line until the answer is `wanted`.
    void waitForAnswer(const std::string &line, const std::string &wanted)
    {
        const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
        std::string answer = tell(line);
        while (answer != wanted && Process::Clock::now() < deadline) {
            poll(nullptr, 0, 5);
            answer = tell(line);
        }
        EXPECT_EQ(answer, wanted) << line;
    }

    void TearDown() override
    {
        if (!plc)
            return;
        EXPECT_EQ(tell("quit"), "ok");
        EXPECT_EQ(plc->wait(), 0) << plc->errors();
    }

    std::unique_ptr<Process> plc;
    int                      port = 0;
};

#endif
