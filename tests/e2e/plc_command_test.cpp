#include "plc_fixture.h"

// FINS commands of the simulator: headers, parameters, end codes, operating modes.

class PlcCommandTest : public PlcTest {};

TEST_F(PlcCommandTest, ReadFrameByFrame)
{
    start();
    ASSERT_EQ(tell("write DM:100 4660 22136"), "ok");
    PlcClient client(port);
    client.send("46494E53 0000001A 00000002 00000000  80 00 02 00 01 00 00 EF 00 01  0101 82 0064 00 0002");
    EXPECT_EQ(client.receive(34),
              plainHex("46494E53 0000001A 00000002 00000000  C0 00 02 00 EF 00 00 01 00 01  0101 0000 1234 5678"));
}

TEST_F(PlcCommandTest, WriteFrameByFrame)
{
    start();
    PlcClient client(port);
    client.send("46494E53 0000001E 00000002 00000000  80 00 02 00 01 00 00 EF 00 FE  0102 82 0064 00 0002 1234 5678");
    EXPECT_EQ(client.receive(30),
              plainHex("46494E53 00000016 00000002 00000000  C0 00 02 00 EF 00 00 01 00 FE  0102 0000"));
    EXPECT_EQ(tell("read DM:99:4"), "ok 0 4660 22136 0");
}

TEST_F(PlcCommandTest, ReplyAboveOneByteHasTheFullLength)
{
    start();
    PlcClient client(port);
    client.send(commandFrame("0101 82 0000 00 03E7"));
    const std::string reply = client.receiveFrame();
    EXPECT_EQ(reply.substr(0, 60), plainHex("46494E53 000007E4 00000002 00000000") +
                                       plainHex("C0 00 02 00 EF 00 00 01 00 5A 0101 0000"));
    EXPECT_EQ(reply.substr(60), std::string(2 * 1998, '0'));
}

TEST_F(PlcCommandTest, ReplyGoesBackToTheSender)
{
    start();
    PlcClient client(port);
    client.send(frameSend("80 00 07 00 01 00 11 22 33 44 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 11 22 33 00 01 00 44 0402 0000"));
}

TEST_F(PlcCommandTest, DestinationNode0IsThisNode)
{
    start();
    PlcClient client(port);
    client.send(frameSend("80 00 02 00 00 00 00 EF 00 01 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 00 00 01 0402 0000"));
}

TEST_F(PlcCommandTest, OtherDestinationsAreRefused)
{
    start();
    PlcClient client(port);
    client.send(frameSend("80 00 02 01 01 00 00 EF 00 01 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 01 01 00 01 0402 0502"));
    client.send(frameSend("80 00 02 00 02 00 00 EF 00 02 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 02 00 02 0402 0201"));
    client.send(frameSend("80 00 02 00 01 10 00 EF 00 03 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 01 10 03 0402 0202"));
    EXPECT_EQ(tell("mode"), "ok run");
}

// The Ethernet unit knows none of the CPU unit's commands.
TEST_F(PlcCommandTest, UnitFEIsTheEthernetUnit)
{
    start();
    PlcClient client(port);
    client.send(frameSend("80 00 02 00 01 FE 00 EF 00 01 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 01 FE 01 0402 0401"));
    client.send(frameSend("80 00 02 00 02 FE 00 EF 00 02 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 02 FE 02 0402 0201"));
    EXPECT_EQ(tell("mode"), "ok run");
}

TEST_F(PlcCommandTest, ABroadcastIsAnsweredByTheNodeItself)
{
    start({"--node", "7"});
    PlcClient client(port);
    client.send(frameSend("80 00 02 00 FF 00 00 EF 00 01 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 07 00 01 0402 0000"));
    EXPECT_EQ(tell("mode"), "ok program");
    client.send(frameSend("81 00 02 00 FF 00 00 EF 00 02 0401"));
    client.send(frameSend("80 00 02 00 07 00 00 EF 00 03 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 07 00 03 0402 0000"));
}

TEST_F(PlcCommandTest, ResponsesAreNotAnswered)
{
    start();
    PlcClient client(port);
    client.send(frameSend("C0 00 02 00 01 00 00 EF 00 01 0402"));
    EXPECT_EQ(client.ask("0601").substr(0, 12), plainHex("0601 0000 05 04"));
}

TEST_F(PlcCommandTest, CommandWithoutResponseIsCarriedOut)
{
    start();
    PlcClient client(port);
    client.send(frameSend("81 00 02 00 01 00 00 EF 00 01 0402"));
    EXPECT_EQ(client.ask("0601").substr(0, 12), plainHex("0601 0000 04 00"));
}

TEST_F(PlcCommandTest, UnknownCommands)
{
    start();
    PlcClient client(port);
    for (const char *command : {"0000", "0100", "0106", "0107", "0201", "0400", "0403", "0503", "0602", "0703", "FFFF"})
        EXPECT_EQ(client.ask(command), plainHex(command + std::string("0401"))) << command;
}

TEST_F(PlcCommandTest, ReadLengths)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101"), plainHex("0101 1002"));
    EXPECT_EQ(client.ask("0101 82 0000 00 00"), plainHex("0101 1002"));
    EXPECT_EQ(client.ask("0101 82 0000 00 0001"), plainHex("0101 0000 0000"));
    EXPECT_EQ(client.ask("0101 82 0000 00 0001 00"), plainHex("0101 1001"));
}

TEST_F(PlcCommandTest, MostItemsOfARead)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 82 0000 00 03E7").size(), 2u * (4 + 1998));
    EXPECT_EQ(client.ask("0101 82 0000 00 03E8"), plainHex("0101 110B"));
    EXPECT_EQ(client.ask("0101 30 0000 00 07CE").size(), 2u * (4 + 1998));
    EXPECT_EQ(client.ask("0101 30 0000 00 07CF"), plainHex("0101 110B"));
    EXPECT_EQ(client.ask("0101 09 0000 00 07CE").size(), 2u * (4 + 1998));
    EXPECT_EQ(client.ask("0101 09 0000 00 07CF"), plainHex("0101 110B"));
}

TEST_F(PlcCommandTest, NoItemsAreANormalEnd)
{
    start();
    ASSERT_EQ(tell("write DM:0 7"), "ok");
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 82 0000 00 0000"), plainHex("0101 0000"));
    EXPECT_EQ(client.ask("0101 30 0000 00 0000"), plainHex("0101 0000"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0000"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0000 0001"), plainHex("0102 1003"));
    EXPECT_EQ(client.ask("0101 82 8000 00 0000"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0101 FF 0000 00 0000"), plainHex("0101 1101"));
    EXPECT_EQ(tell("read DM:0"), "ok 7");
}

TEST_F(PlcCommandTest, WriteLengths)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102"), plainHex("0102 1002"));
    EXPECT_EQ(client.ask("0102 82 0000 00 00"), plainHex("0102 1002"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0001"), plainHex("0102 1003"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 00"), plainHex("0102 1003"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0000 00"), plainHex("0102 1003"));
    EXPECT_EQ(client.ask("0102 30 0000 00 0002 01"), plainHex("0102 1003"));
    EXPECT_EQ(client.ask("0102 30 0000 00 0002 01 01 01"), plainHex("0102 1003"));
    EXPECT_EQ(client.ask("0102 09 0000 00 0002 01 01"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 89 0000 00 0002 01 01"), plainHex("0102 1003"));
    EXPECT_EQ(tell("read CIO:0"), "ok 0");
}

TEST_F(PlcCommandTest, RefusedWriteChangesNothing)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 B1 01FF 00 0002 1111 2222"), plainHex("0102 1104"));
    EXPECT_EQ(tell("read WR:511"), "ok 0");
}

TEST_F(PlcCommandTest, RunGoesToMonitorOrRun)
{
    start({"--mode", "program"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0401 FFFF 02"), plainHex("0401 0000"));
    EXPECT_EQ(tell("mode"), "ok monitor");
    EXPECT_EQ(client.ask("0401 FFFF 04"), plainHex("0401 0000"));
    EXPECT_EQ(tell("mode"), "ok run");
    EXPECT_EQ(client.ask("0401 FFFF"), plainHex("0401 0000"));
    EXPECT_EQ(tell("mode"), "ok monitor");
    EXPECT_EQ(tell("mode run"), "ok run");
    EXPECT_EQ(client.ask("0401"), plainHex("0401 0000"));
    EXPECT_EQ(tell("mode"), "ok monitor");
}

TEST_F(PlcCommandTest, RunRefusesOtherParameters)
{
    start({"--mode", "program"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0401 FF"), plainHex("0401 1002"));
    EXPECT_EQ(client.ask("0401 FFFF 02 00"), plainHex("0401 1001"));
    EXPECT_EQ(client.ask("0401 0000 02"), plainHex("0401 1106"));
    EXPECT_EQ(client.ask("0401 FFFE"), plainHex("0401 1106"));
    for (const char *mode : {"00", "01", "03", "05", "FF"})
        EXPECT_EQ(client.ask(std::string("0401 FFFF") + mode), plainHex("0401 110C")) << mode;
    EXPECT_EQ(tell("mode"), "ok program");
}

TEST_F(PlcCommandTest, StopGoesToProgram)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
    EXPECT_EQ(tell("mode"), "ok program");
    ASSERT_EQ(tell("mode run"), "ok run");
    EXPECT_EQ(client.ask("0402 FFFF"), plainHex("0402 0000"));
    EXPECT_EQ(tell("mode"), "ok program");
}

TEST_F(PlcCommandTest, StopRefusesOtherParameters)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0402 FF"), plainHex("0402 1002"));
    EXPECT_EQ(client.ask("0402 0000"), plainHex("0402 1106"));
    EXPECT_EQ(client.ask("0402 FFFF 00"), plainHex("0402 1001"));
    EXPECT_EQ(tell("mode"), "ok run");
}

// Bit 0 of the status: running; bit 2: the battery is there.
TEST_F(PlcCommandTest, StatusShowsTheMode)
{
    start();
    PlcClient client(port);
    const std::string rest = "0000 0000 0000 0000 20202020 20202020 20202020 20202020";
    EXPECT_EQ(client.ask("0601"), plainHex("0601 0000 05 04" + rest));
    ASSERT_EQ(tell("mode monitor"), "ok monitor");
    EXPECT_EQ(client.ask("0601"), plainHex("0601 0000 05 02" + rest));
    ASSERT_EQ(tell("mode program"), "ok program");
    EXPECT_EQ(client.ask("0601"), plainHex("0601 0000 04 00" + rest));
    EXPECT_EQ(client.ask("0601 00"), plainHex("0601 1001"));
}

TEST_F(PlcCommandTest, WritesAreTakenInEveryModeByDefault)
{
    start();
    PlcClient client(port);
    for (const char *mode : {"run", "monitor", "program"}) {
        tell(std::string("mode ") + mode);
        EXPECT_EQ(client.ask("0102 82 0000 00 0001 0001"), plainHex("0102 0000")) << mode;
    }
}

TEST_F(PlcCommandTest, WritesRefusedInRunUntilMonitor)
{
    start({"--refuse-writes-in-run"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0007"), plainHex("0102 2206"));
    EXPECT_EQ(client.ask("0102 82 8000 00 0001 0007"), plainHex("0102 1103"));
    EXPECT_EQ(client.ask("0101 82 0000 00 0001"), plainHex("0101 0000 0000"));
    EXPECT_EQ(client.ask("0401 FFFF 02"), plainHex("0401 0000"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0007"), plainHex("0102 0000"));
    ASSERT_EQ(tell("mode program"), "ok program");
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0008"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0401 FFFF 04"), plainHex("0401 0000"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0009"), plainHex("0102 2206"));
    EXPECT_EQ(tell("read DM:0"), "ok 8");
}

TEST_F(PlcCommandTest, WritesRefusedInRunWithAChosenCode)
{
    start({"--refuse-writes-in-run=2204"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 30 0000 00 0001 01"), plainHex("0102 2204"));
}

TEST_F(PlcCommandTest, WritesRefusedInProgramUntilMonitor)
{
    start({"--mode", "program", "--refuse-writes-in-program"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0007"), plainHex("0102 2203"));
    EXPECT_EQ(client.ask("0401 FFFF 02"), plainHex("0401 0000"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0007"), plainHex("0102 0000"));
    ASSERT_EQ(tell("mode run"), "ok run");
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0008"), plainHex("0102 0000"));
}

TEST_F(PlcCommandTest, WritesRefusedInProgramWithAChosenCode)
{
    start({"--mode", "program", "--refuse-writes-in-program=22ab"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0007"), plainHex("0102 22AB"));
}
