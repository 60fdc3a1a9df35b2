#ifndef TESTS_PLC_MEMORY_FIXTURE_H
#define TESTS_PLC_MEMORY_FIXTURE_H

#include "fins/fins_command.h"
#include "support/tcp_client.h"

#include <gtest/gtest.h>
#include <string>

// A CPU unit without a socket: commands and answers as hexadecimal digits, from the command code on.
class MemoryTest : public ::testing::Test {
protected:
    std::string ask(const std::string &command)
    {
        std::string answer;
        for (const std::uint8_t byte : plc::runCommand(controller, plc::Slice(bytesOfHex(command))))
            answer += hexNumber(byte, 2);
        return answer;
    }

    void expect(const std::string &command, const std::string &answer)
    {
        EXPECT_EQ(ask(command), plainHex(answer)) << command;
    }

    plc::Controller controller;
};

#endif
