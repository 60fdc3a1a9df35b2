#include "plc_fixture.h"
#include "support/temporary_file.h"

#include <filesystem>
#include <sstream>

// Recording a session as text, and serving it again.

class PlcReplayTest : public PlcTest {
protected:
    // The lines of the recording that are frames, without their times.
    std::vector<std::string> recordedFrames()
    {
        std::vector<std::string> frames;
        std::istringstream lines(file.read());
        for (std::string line; std::getline(lines, line);)
            if (!line.empty() && line[0] != '#')
                frames.push_back(line.substr(line.find(' ') + 1));
        return frames;
    }

    void startReplay(const std::vector<std::string> &lines)
    {
        std::string text = "# a comment\n\n";
        for (const std::string &line : lines)
            text += line + "\n";
        file.write(text);
        start({"--replay", file.path()});
    }

    std::string errorOf(const std::string &text)
    {
        file.write(text);
        Process failing({FINS_PLC_PATH, "--port", "0", "--replay", file.path()});
        EXPECT_EQ(failing.wait(), 2) << text;
        EXPECT_EQ(failing.output(), "");
        const std::string prefix = "fins_plc: --replay: " + file.path() + ":";
        EXPECT_EQ(failing.errors().substr(0, prefix.size()), prefix);
        return failing.errors().substr(prefix.size());
    }

    const std::string readCommand = "0101 82 0064 00 0001";
    TemporaryFile     file;
};

TEST_F(PlcReplayTest, RecordsEveryFrame)
{
    start({"--record", file.path()});
    TcpClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receive(24), nodeReply(239));
    client.send(commandFrame(readCommand));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 0000"));
    const std::vector<std::string> frames = recordedFrames();
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_EQ(frames[0], "1 < " + plainHex(nodeRequest()));
    EXPECT_EQ(frames[1], "1 > " + nodeReply(239));
    EXPECT_EQ(frames[2], "1 < " + commandFrame(readCommand));
    EXPECT_EQ(frames[3], "1 > " + responseFrame("0101 0000 0000"));
}

TEST_F(PlcReplayTest, ServesWhatItRecorded)
{
    start({"--record", file.path()});
    ASSERT_EQ(tell("write DM:100 4660"), "ok");
    {
        PlcClient client(port);
        EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 1234"));
    }
    EXPECT_EQ(tell("quit"), "ok");
    EXPECT_EQ(plc->wait(), 0);
    start({"--replay", file.path()});
    PlcClient client(port);
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 1234"));
    EXPECT_EQ(tell("read DM:100"), "ok 0");
}

TEST_F(PlcReplayTest, ARecordingIsBounded)
{
    start({"--record", file.path(), "--record-limit", "1"});
    PlcClient client(port);
    for (int i = 0; i < 20; ++i)
        client.ask(readCommand);
    EXPECT_EQ(plc->readErrorLine(), "fins_plc: the recording " + file.path() +
                                        " ends: it has reached its size; --record-limit allows more");
    const std::string text = file.read();
    EXPECT_LE(text.size(), 1024u);
    EXPECT_GT(text.size(), 900u);
    EXPECT_EQ(text.back(), '\n');
}

TEST_F(PlcReplayTest, ServiceIdAndNodesArePutRight)
{
    // Recorded with service ID 11 between client node 03 and server node 02.
    startReplay({"0.000 4 < " + frameSend("80 00 02 00 02 00 00 03 00 11" + readCommand),
                 "0.001 4 > " + frameSend("C0 00 02 00 03 00 00 02 00 11 0101 0000 ABCD")});
    PlcClient client(port);
    client.send(commandFrame(readCommand, 0x77));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 ABCD", 0x77));
}

TEST_F(PlcReplayTest, AWrongServiceIdStaysWrongByAsMuch)
{
    startReplay({"0 1 < " + commandFrame(readCommand, 0x10), "0 1 > " + responseFrame("0101 0000 ABCD", 0x12)});
    PlcClient client(port);
    client.send(commandFrame(readCommand, 0xFF));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0101 0000 ABCD", 0x01));
}

TEST_F(PlcReplayTest, EqualRequestsInOrderThenTheLastAgain)
{
    startReplay({"0 1 < " + commandFrame(readCommand, 1), "0 1 > " + responseFrame("0101 0000 0001", 1),
                 "0 1 < " + commandFrame(readCommand, 2), "0 1 > " + responseFrame("0101 0000 0002", 2)});
    PlcClient client(port);
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 0001"));
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 0002"));
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 0002"));
}

TEST_F(PlcReplayTest, ClientsOfTheRecordingAreKeptApart)
{
    const std::string other = "0101 82 0065 00 0001";
    startReplay({"0 1 < " + commandFrame(readCommand), "0 2 < " + commandFrame(other),
                 "0 1 > " + responseFrame("0101 0000 0001"), "0 2 > " + responseFrame("0101 0000 0002")});
    PlcClient client(port);
    EXPECT_EQ(client.ask(other), plainHex("0101 0000 0002"));
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 0001"));
}

TEST_F(PlcReplayTest, AsManyRequestsWaitAsThereAreServiceIds)
{
    std::vector<std::string> lines = {"0 1 < " + commandFrame(readCommand, 0)};
    for (unsigned sid = 1; sid < 256; ++sid)
        lines.push_back("0 1 < " + commandFrame("0101 82 0065 00 0001", sid));
    lines.push_back("0 1 > " + responseFrame("0101 0000 0007", 0));
    startReplay(lines);
    PlcClient client(port);
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 0007"));
}

TEST_F(PlcReplayTest, ARequestWithoutReplyIsNotAnswered)
{
    startReplay({"0 1 < " + commandFrame("0402"), "0 1 < " + commandFrame(readCommand),
                 "0 1 > " + responseFrame("0101 0000 0007")});
    PlcClient client(port);
    client.send(commandFrame("0402"));
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 0007"));
}

// A PLC sends it whenever another client asks for the node.
TEST_F(PlcReplayTest, AConnectionConfirmationIsNoReply)
{
    startReplay({"0 1 < " + commandFrame(readCommand), "0 1 > 46494E53000000080000000600000000",
                 "0 1 > " + responseFrame("0101 0000 0007")});
    PlcClient client(port);
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0000 0007"));
}

TEST_F(PlcReplayTest, WhatIsNotInTheRecordingIsSaidOnce)
{
    startReplay({"0 1 < " + commandFrame(readCommand), "0 1 > " + responseFrame("0101 0000 0001")});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 82 0064 00 0002"), plainHex("0101 0401"));
    EXPECT_EQ(client.ask("0101 82 0064 00 0002"), plainHex("0101 0401"));
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0401"));
    EXPECT_EQ(tell("mode"), "ok run");
    EXPECT_EQ(plc->readErrorLine(), "fins_plc: this command is not in the recording: 0101820064000002");
    EXPECT_EQ(plc->readErrorLine(), "fins_plc: this command is not in the recording: 0402");
}

TEST_F(PlcReplayTest, BadLinesHaveTheirNumber)
{
    const std::string good = "0 1 < " + commandFrame(readCommand) + "\n";
    EXPECT_EQ(errorOf(good + "x 1 < 00\n"), "2: 'x' is no time; a line is SECONDS CLIENT < or > HEX\n");
    EXPECT_EQ(errorOf(good + "# note\n0.1 a < 00\n"), "3: 'a' is no number of a client\n");
    EXPECT_EQ(errorOf("0.1 1 = 00\n"), "1: '=' is no direction; use < for received and > for sent\n");
    EXPECT_EQ(errorOf("0.1 1 < 0\n"), "1: the frame is not whole bytes in hexadecimal\n");
    EXPECT_EQ(errorOf("0.1 1 < 0G\n"), "1: the frame is not whole bytes in hexadecimal\n");
    EXPECT_EQ(errorOf("0.1 1 <\n"), "1: the frame is not whole bytes in hexadecimal\n");
    EXPECT_EQ(errorOf("0.1 1 < 00 00\n"), "1: '00' behind the frame is too much; write its bytes without spaces\n");
    EXPECT_EQ(errorOf("0.1 1 < " + std::string(16384, '0') + "\n"), "1: the line is longer than any frame\n");
    EXPECT_EQ(errorOf("0 1 < " + plainHex(nodeRequest()) + "\n"),
              "1: there is no FINS command in this recording; make one with --record\n");
}

TEST_F(PlcReplayTest, RepliesThatLieAboutTheirLengthDoNoHarm)
{
    startReplay({"0 1 < " + commandFrame(readCommand),
                 "0 1 > " + plainHex("46494E53 FFFFFFF8 00000002 00000000 C0 00 02 00 EF 00 00 01 00 5A 0101 0000")});
    PlcClient client(port);
    client.send(commandFrame(readCommand));
    EXPECT_EQ(client.receive(30),
              plainHex("46494E53 FFFFFFF8 00000002 00000000 C0 00 02 00 EF 00 00 01 00 5A 0101 0000"));
}

// By another name, too: a recording would empty its file before the first frame.
TEST_F(PlcReplayTest, ARecordingNeverReplacesWhatIsRead)
{
    const std::string recording = "0.1 1 < " + commandFrame(readCommand) + "\n0.2 1 > " +
                                  responseFrame("0101 0000 1234") + "\n";
    const std::string project = "[plc]\nport = 0\n";
    const std::filesystem::path path = file.path();
    const std::string other = path.parent_path() / "." / path.filename();
    for (const char *input : {"--replay", "--project"}) {
        const std::string text = input == std::string("--replay") ? recording : project;
        file.write(text);
        Process failing({FINS_PLC_PATH, "--port", "0", "--record", other, input, file.path()});
        EXPECT_EQ(failing.wait(), 2);
        EXPECT_EQ(failing.errors(), "fins_plc: --record: " + other + " is the file of --replay or --project and would "
                                    "be lost; choose another one\n");
        EXPECT_EQ(failing.output(), "");
        EXPECT_EQ(file.read(), text);
    }
}

TEST_F(PlcReplayTest, FlagsOfTheEndCodeComeWithARecordedReply)
{
    startReplay({"0.1 1 < " + commandFrame(readCommand), "0.2 1 > " + responseFrame("0101 0000 1234")});
    PlcClient client(port);
    ASSERT_EQ(tell("fault end-code=0040"), "ok");
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 0040 1234"));
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0441"));
    EXPECT_EQ(tell("mode"), "ok run");
    ASSERT_EQ(tell("fault end-code=1101"), "ok");
    EXPECT_EQ(client.ask(readCommand), plainHex("0101 1101"));
}

TEST_F(PlcReplayTest, FilesThatCannotBeUsed)
{
    const struct {
        const char *option;
        const char *error;
    } rows[] = {{"--record", "fins_plc: --record: cannot write /nonexistent/a.txt: No such file or directory\n"},
                {"--replay", "fins_plc: --replay: cannot read /nonexistent/a.txt: No such file or directory\n"}};
    for (const auto &row : rows) {
        Process failing({FINS_PLC_PATH, "--port", "0", row.option, "/nonexistent/a.txt"});
        EXPECT_EQ(failing.wait(), 2);
        EXPECT_EQ(failing.errors(), row.error);
    }
}
