#include "plc_fixture.h"

// The simulator's commands on standard input.

class PlcConsoleTest : public PlcTest {
protected:
    void expectError(const std::string &line, const std::string &reason)
    {
        EXPECT_EQ(tell(line), "error " + reason) << line;
    }
};

TEST_F(PlcConsoleTest, ReadsWords)
{
    start();
    ASSERT_EQ(tell("write DM:10 1 2 65535"), "ok");
    EXPECT_EQ(tell("read DM:9:5"), "ok 0 1 2 65535 0");
    EXPECT_EQ(tell("read DM:12"), "ok 65535");
    EXPECT_EQ(tell("read DM:32767"), "ok 0");
    EXPECT_EQ(tell("read  DM:10:1  "), "ok 1");
}

TEST_F(PlcConsoleTest, ReadsTheWholeArea)
{
    start();
    const std::string answer = tell("read DM:0:32768");
    EXPECT_EQ(answer.size(), 2 + 2u * 32768);
    EXPECT_EQ(answer.substr(0, 6), "ok 0 0");
}

TEST_F(PlcConsoleTest, ReadsBits)
{
    start();
    ASSERT_EQ(tell("write CIO:100 32801"), "ok");
    EXPECT_EQ(tell("read CIO_bit:100.0:6"), "ok 1 0 0 0 0 1");
    EXPECT_EQ(tell("read CIO_bit:100.15:2"), "ok 1 0");
}

TEST_F(PlcConsoleTest, WritesBits)
{
    start();
    ASSERT_EQ(tell("write WR_bit:5.14 1 1 1"), "ok");
    EXPECT_EQ(tell("read WR:5:2"), "ok 49152 1");
    ASSERT_EQ(tell("write WR_bit:5.15 0"), "ok");
    EXPECT_EQ(tell("read WR:5"), "ok 16384");
}

TEST_F(PlcConsoleTest, EveryType)
{
    start();
    int value = 1;
    for (const char *type : {"CIO", "WR", "HR", "AR", "DM", "T", "C"})
        EXPECT_EQ(tell(std::string("write ") + type + ":3 " + std::to_string(value++)), "ok") << type;
    value = 1;
    for (const char *type : {"CIO", "WR", "HR", "AR", "DM", "T", "C"})
        EXPECT_EQ(tell(std::string("read ") + type + ":3"), "ok " + std::to_string(value++)) << type;
    EXPECT_EQ(tell("read CIO_bit:3.0:3"), "ok 1 0 0");
    EXPECT_EQ(tell("read WR_bit:3.0:3"), "ok 0 1 0");
    EXPECT_EQ(tell("read HR_bit:3.0:3"), "ok 1 1 0");
    EXPECT_EQ(tell("read AR_bit:3.0:3"), "ok 0 0 1");
    EXPECT_EQ(tell("read DM_bit:3.0:3"), "ok 1 0 1");
}

TEST_F(PlcConsoleTest, ReadsAndWritesBanksAndRegisters)
{
    start();
    EXPECT_EQ(tell("write E18:32767 65535"), "ok");
    EXPECT_EQ(tell("read E18_bit:32767.15"), "ok 1");
    EXPECT_EQ(tell("write BANK:0 24"), "ok");
    EXPECT_EQ(tell("read E:32766:2"), "ok 0 65535");
    EXPECT_EQ(tell("write IR:15 4294967295"), "ok");
    EXPECT_EQ(tell("read IR:14:2"), "ok 0 4294967295");
    EXPECT_EQ(tell("write TK:3 1"), "ok");
    EXPECT_EQ(tell("read TK:2:3"), "ok 0 1 0");
    EXPECT_EQ(tell("read CF_bit:1.13:2"), "ok 1 0");
}

TEST_F(PlcConsoleTest, RefusesBadPlaces)
{
    start();
    const std::string types = "types are CIO WR HR AR DM T C E0 to EF E10 to E18 E BANK DR IR TK CF, and CIO_bit WR_bit "
                              "HR_bit AR_bit DM_bit E0_bit to E18_bit E_bit CF_bit";
    expectError("read", "'' is no TYPE:ADDRESS; " + types);
    expectError("read DM", "'DM' is no TYPE:ADDRESS; " + types);
    expectError("read EM:0", "'EM:0' is no TYPE:ADDRESS; " + types);
    expectError("read dm:0", "'dm:0' is no TYPE:ADDRESS; " + types);
    expectError("read T_bit:0.0", "'T_bit:0.0' is no TYPE:ADDRESS; " + types);
    for (const char *address : {"32768", "", "-1", "1x", "1.5", "99999999999", " "})
        EXPECT_EQ(tell(std::string("read DM:") + address).substr(0, 7), "error '") << address;
    expectError("read WR:512", "'512' is no address of the area; use 0 to 511");
    for (const char *address : {"100", "100.", ".5", "100.16", "100.05", "100.-1", "512.0", "1.2.3", "a.1"})
        expectError(std::string("read WR_bit:") + address,
                    std::string("'") + address + "' is no address of the area; use 0.0 to 511.15");
    expectError("read WR:510:3", "'3' is no count from 1 to 2");
    expectError("read WR:510:0", "'0' is no count from 1 to 2");
    expectError("read WR:510:", "'' is no count from 1 to 2");
    expectError("read WR_bit:511.14:3", "'3' is no count from 1 to 2");
    expectError("read WR:1:1:1", "'1:1' is no count from 1 to 511");
    EXPECT_EQ(tell("read WR:510:2"), "ok 0 0");
    EXPECT_EQ(tell("read WR_bit:511.14:2"), "ok 0 0");
}

TEST_F(PlcConsoleTest, RefusesBadValuesAndWritesNothing)
{
    start();
    expectError("write DM:0", "no value; use write TYPE:ADDRESS VALUE...");
    expectError("write DM:0 1 65536", "'65536' is no value from 0 to 65535");
    expectError("write DM:0 1 x", "'x' is no value from 0 to 65535");
    expectError("write DM:0 1 -1", "'-1' is no value from 0 to 65535");
    expectError("write DM_bit:0.0 1 2", "'2' is no value from 0 to 1");
    expectError("write DM:32766 1 2 3", "'3' is no count from 1 to 2");
    expectError("write DM:0:3 1 2", "2 values for 3 items");
    expectError("write XX:0 1", "'XX:0' is no TYPE:ADDRESS; types are CIO WR HR AR DM T C E0 to EF E10 to E18 E BANK DR IR "
                                "TK CF, and CIO_bit WR_bit HR_bit AR_bit DM_bit E0_bit to E18_bit E_bit CF_bit");
    expectError("write CF_bit:1.2 1", "CF_bit:1.2 is made by the CPU unit at every moment; it cannot be written");
    expectError("write IR:0 4294967296", "'4294967296' is no value from 0 to 4294967295");
    expectError("write TK:0 2", "'2' is no value from 0 to 1");
    EXPECT_EQ(tell("read DM:0:2"), "ok 0 0");
    EXPECT_EQ(tell("read DM:32766:2"), "ok 0 0");
    EXPECT_EQ(tell("write DM:0:2 65535 0"), "ok");
    EXPECT_EQ(tell("read DM:0:2"), "ok 65535 0");
}

TEST_F(PlcConsoleTest, Mode)
{
    start();
    EXPECT_EQ(tell("mode"), "ok run");
    EXPECT_EQ(tell("mode monitor"), "ok monitor");
    EXPECT_EQ(tell("mode program"), "ok program");
    EXPECT_EQ(tell("mode"), "ok program");
    expectError("mode debug", "'debug' is no mode; use program, monitor or run");
    EXPECT_EQ(tell("mode"), "ok program");
}

TEST_F(PlcConsoleTest, FaultsAreListed)
{
    start({"--fault", "delay=7@0.25", "--fault", "drop@0", "--fault", "end-code=0a1B"});
    EXPECT_EQ(tell("faults"), "ok delay=7@0.25 end-code=0A1B");
    EXPECT_EQ(tell("fault delay off"), "ok");
    EXPECT_EQ(tell("fault silence@.5"), "ok");
    EXPECT_EQ(tell("faults"), "ok end-code=0A1B silence@0.5");
    EXPECT_EQ(tell("faults off"), "ok");
    EXPECT_EQ(tell("faults"), "ok none");
}

TEST_F(PlcConsoleTest, FaultValuesAndTheirBounds)
{
    start();
    const char *const good[] = {"delay=0", "delay=60000", "jitter=0", "jitter=60000", "short=1", "short=1000",
                                "long=1", "long=1000", "bytewise=0", "bytewise=1000", "end-code=0001",
                                "end-code=FFFF", "delay=1@0.999", "close@1", "double@1.0"};
    for (const char *fault : good)
        EXPECT_EQ(tell(std::string("fault ") + fault), "ok") << fault;
    EXPECT_EQ(tell("faults"),
              "ok delay=1@0.999 jitter=60000 short=1000 long=1000 bytewise=1000 double end-code=FFFF close");
}

TEST_F(PlcConsoleTest, PresetFaultValues)
{
    start();
    for (const char *fault : {"delay", "jitter", "short", "long", "bytewise"})
        EXPECT_EQ(tell(std::string("fault ") + fault), "ok") << fault;
    EXPECT_EQ(tell("faults"), "ok delay=100 jitter=50 short=1 long=1 bytewise=1");
}

TEST_F(PlcConsoleTest, RefusesBadFaults)
{
    start();
    const std::string names =
        "; faults are delay jitter drop wrong-sid short long bytewise double end-code close silence refuse tcp-error "
        "cut reorder wrong-node rst";
    expectError("fault", "'' is no fault" + names);
    expectError("fault melt", "'melt' is no fault" + names);
    expectError("fault melt off", "'melt' is no fault" + names);
    expectError("fault drop on",
                "'on' is not understood; use fault NAME[=VALUE][:AIM][@PROBABILITY] or fault NAME off");
    expectError("faults on", "'on' is not understood; use faults, faults counts or faults off");
    expectError("fault delay=60001", "'60001' is no value of delay; use 0 to 60000");
    expectError("fault delay=", "'' is no value of delay; use 0 to 60000");
    expectError("fault delay=-1", "'-1' is no value of delay; use 0 to 60000");
    expectError("fault short=0", "'0' is no value of short; use 1 to 1000");
    expectError("fault long=1001", "'1001' is no value of long; use 1 to 1000");
    expectError("fault bytewise=1001", "'1001' is no value of bytewise; use 0 to 1000");
    expectError("fault drop=1", "drop takes no value");
    expectError("fault end-code", "end-code needs a value, such as end-code=1101");
    for (const char *code : {"0000", "111", "11111", "11g1", "", "0x11"})
        expectError(std::string("fault end-code=") + code,
                    std::string("'") + code + "' is no value of end-code; use four hexadecimal digits, not 0000");
    for (const char *probability : {"1.1", "-0.5", "", "x", "0.5x", "1..", "2"})
        expectError(std::string("fault drop@") + probability,
                    std::string("'") + probability + "' is no probability; use 0 to 1");
    EXPECT_EQ(tell("faults"), "ok none");
}

TEST_F(PlcConsoleTest, ClientsAndDisconnect)
{
    start();
    EXPECT_EQ(tell("clients"), "ok 0");
    EXPECT_EQ(tell("disconnect"), "ok 0");
    PlcClient first(port);
    PlcClient second(port);
    EXPECT_EQ(tell("clients"), "ok 2 239 240");
    EXPECT_EQ(tell("disconnect"), "ok 2");
    EXPECT_EQ(first.receiveUntilClosed(), "");
    EXPECT_EQ(second.receiveUntilClosed(), "");
    EXPECT_EQ(tell("clients"), "ok 0");
    EXPECT_EQ(PlcClient(port).node, 239u);
}

TEST_F(PlcConsoleTest, Stats)
{
    start();
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
    PlcClient client(port);
    EXPECT_EQ(tell("stats"), "ok connections=1 requests=1 replies=1");
    client.ask("0402");
    EXPECT_EQ(tell("stats"), "ok connections=1 requests=2 replies=2");
}

TEST_F(PlcConsoleTest, Help)
{
    start();
    EXPECT_EQ(tell("help"), "ok read write mode error battery clock cycle message log step fault faults tcp-error "
                            "clients disconnect plc stats replay help quit");
}

TEST_F(PlcConsoleTest, UnknownCommands)
{
    start();
    expectError("frobnicate now", "'frobnicate' is no command; try help");
    expectError("", "'' is no command; try help");
    expectError("READ DM:0", "'READ' is no command; try help");
}

TEST_F(PlcConsoleTest, RefusesToChangeWhatIsForced)
{
    start({"--mode", "monitor"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("2301 0003 0001 30 0005 02 0000 30 0006 00 0001 09 0007 00"), plainHex("2301 0000"));
    const std::string keeps = " is forced and stays as it is until a client releases it";
    expectError("write CIO_bit:5.2 0", "CIO_bit:5.2" + keeps);
    expectError("write CIO_bit:5.0 1 1 0", "CIO_bit:5.2" + keeps);
    expectError("write CIO:4:3 4 4 1", "CIO_bit:6.0" + keeps);
    expectError("write CIO:5 3", "CIO_bit:5.2" + keeps);
    EXPECT_EQ(tell("read CIO:4:3"), "ok 0 4 0");
    EXPECT_EQ(tell("write CIO_bit:5.1 1 1"), "ok"); // as it is
    EXPECT_EQ(tell("write CIO:4:3 65535 65535 65534"), "ok");
    EXPECT_EQ(tell("read CIO:4:3"), "ok 65535 65535 65534");
    EXPECT_EQ(tell("write T:7 0"), "ok"); // the flag is forced, not the value
    EXPECT_EQ(tell("write IR:7 4294967295"), "ok");
    EXPECT_EQ(client.ask("2302"), plainHex("2302 0000"));
    EXPECT_EQ(tell("write CIO:5:2 0 1"), "ok");
    EXPECT_EQ(tell("read CIO:5:2"), "ok 0 1");
}

// What is not understood is carried out not even in part.
TEST_F(PlcConsoleTest, RefusesWordsThatACommandDoesNotTake)
{
    start();
    const PlcClient client(port);
    EXPECT_EQ(tell("fault delay=1:command=0102"), "ok");
    expectError("read DM:0 DM:1", "'DM:1' is not understood; use read TYPE:ADDRESS[:COUNT]");
    expectError("mode program now", "'now' is not understood; use mode [program|monitor|run]");
    expectError("step 2 x", "'x' is not understood; use step [COUNT]");
    expectError("fault delay off x", "'x' is not understood; use fault NAME[=VALUE][:AIM][@PROBABILITY][#TIMES] | "
                                     "NAME off");
    expectError("faults off delay", "'delay' is not understood; use faults [counts|off]");
    expectError("tcp-error 22 1 2", "'2' is not understood; use tcp-error XX [TIMES] | off");
    expectError("clients 239", "'239' is not understood; use clients");
    expectError("disconnect 239", "'239' is not understood; use disconnect");
    expectError("plc plc1 plc2", "'plc2' is not understood; use plc [NAME]");
    expectError("stats x", "'x' is not understood; use stats");
    expectError("replay x", "'x' is not understood; use replay");
    expectError("help read", "'read' is not understood; use help");
    expectError("quit now", "'now' is not understood; use quit");
    EXPECT_EQ(tell("mode"), "ok run");
    EXPECT_EQ(tell("faults"), "ok delay=1:command=0102");
    EXPECT_EQ(tell("clients"), "ok 1 239");
}

TEST_F(PlcConsoleTest, LinesOfOneWriteAreAnsweredInTurn)
{
    start();
    plc->writeText("write DM:0 1\nread DM:0\nwrite DM:0 2\nread DM:0\nmo");
    plc->writeText("de\n");
    EXPECT_EQ(plc->readLine(), "ok");
    EXPECT_EQ(plc->readLine(), "ok 1");
    EXPECT_EQ(plc->readLine(), "ok");
    EXPECT_EQ(plc->readLine(), "ok 2");
    EXPECT_EQ(plc->readLine(), "ok run");
}

TEST_F(PlcConsoleTest, LongestLine)
{
    start();
    std::string values;
    for (int i = 0; i < 10000; ++i)
        values += " 1";
    EXPECT_EQ(tell("write DM:0" + values), "ok");
    EXPECT_EQ(tell("read DM:9999:2"), "ok 1 0");
    const std::string most = "write DM:0" + std::string(65536 - 12, ' ') + "23"; // 65536 bytes
    EXPECT_EQ(tell(most), "ok");
    expectError(most + "4", "the line is longer than 65536 bytes; write less at once");
    expectError(std::string(200000, 'x'), "the line is longer than 65536 bytes; write less at once");
    EXPECT_EQ(tell("read DM:0"), "ok 23");
}

TEST_F(PlcConsoleTest, GoesOnWhenNobodyReadsItsAnswers)
{
    start();
    plc->closeOutput();
    plc->writeLine("write DM:0 7");
    plc->writeLine("write DM:1 8");
    PlcClient client(port);
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
    while (client.ask("0101 82 0000 00 0002") != plainHex("0101 0000 0007 0008"))
        ASSERT_LT(Process::Clock::now(), deadline);
    plc->writeLine("quit");
    EXPECT_EQ(plc->wait(), 0);
    plc.reset();
}

TEST_F(PlcConsoleTest, LastLineWithoutItsEndCounts)
{
    start();
    plc->writeText("write DM:0 7");
    plc->closeInput();
    EXPECT_EQ(plc->readLine(), "ok");
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 82 0000 00 0001"), plainHex("0101 0000 0007"));
    plc->sendSignal(SIGTERM);
    EXPECT_EQ(plc->wait(), 0);
    plc.reset();
}
