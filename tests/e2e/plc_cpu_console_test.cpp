#include "plc_fixture.h"
#include "support/temporary_file.h"

// The state of the CPU unit as lines on standard input and the table [cpu] of a project set and tell it.

class PlcCpuConsoleTest : public PlcTest {
protected:
    void expectError(const std::string &line, const std::string &reason)
    {
        EXPECT_EQ(tell(line), "error " + reason) << line;
    }

    void startProject(const std::string &text)
    {
        file.write(text);
        start({"--project", file.path()});
    }

    // What a start with the bad project says on standard error, without the program's and the file's name.
    std::string errorsOf(const std::string &text)
    {
        file.write(text);
        Process failing({FINS_PLC_PATH, "--check-project", file.path()});
        EXPECT_EQ(failing.wait(), 2) << text;
        const std::string prefix = "fins_plc: " + file.path();
        const std::string errors = failing.errors();
        EXPECT_EQ(errors.substr(0, prefix.size()), prefix);
        return errors.substr(prefix.size());
    }

    TemporaryFile file;
};

TEST_F(PlcCpuConsoleTest, ErrorsComeAndGo)
{
    start();
    EXPECT_EQ(tell("error"), "ok none");
    EXPECT_EQ(tell("error bus-unit 0"), "ok");
    EXPECT_EQ(tell("error fal 5 PUMP STUCK "), "ok");
    EXPECT_EQ(tell("error io-bus 2"), "ok");
    EXPECT_EQ(tell("error"), "ok 80C2 io-bus 2, 4105 fal 5 'PUMP STUCK', 0200 bus-unit 0");
    EXPECT_EQ(tell("error fal 5 FAN"), "ok");
    EXPECT_EQ(tell("error io-bus 2 off"), "ok");
    EXPECT_EQ(tell("error"), "ok 4105 fal 5 'FAN', 0200 bus-unit 0");
    EXPECT_EQ(tell("error off"), "ok");
    EXPECT_EQ(tell("error"), "ok none");
}

TEST_F(PlcCpuConsoleTest, RefusesBadErrors)
{
    start();
    expectError("error melt", "'melt' is no error; errors are memory io-bus duplicate too-many-io io-setting program "
                              "cycle-time fals fal io-verify bus-unit battery bus-unit-setting");
    for (const char *number : {"", "0", "512", "x", "-1"})
        expectError(std::string("error fal ") + number,
                    std::string("'") + number + "' is no number of fal; use 1 to 511");
    expectError("error io-bus 8", "'8' is no number of io-bus; use 0 to 7");
    expectError("error bus-unit 16", "'16' is no number of bus-unit; use 0 to 15");
    expectError("error memory now", "'now' is not understood; memory takes nothing but off");
    expectError("error bus-unit 3 now", "'now' is not understood; bus-unit 3 takes nothing but off");
    expectError("error fal 1 12345678901234567", "'12345678901234567' is no text of 1 to 16 printable ASCII characters");
    expectError("error fal 1 \t\x01", "'\x01' is no text of 1 to 16 printable ASCII characters");
    expectError("error memory off", "memory does not stand");
    expectError("error fal 7 off", "fal 7 does not stand");
    EXPECT_EQ(tell("error"), "ok none");
    EXPECT_EQ(tell("log"), "ok empty");
}

TEST_F(PlcCpuConsoleTest, Battery)
{
    start();
    EXPECT_EQ(tell("battery"), "ok good");
    EXPECT_EQ(tell("battery low \r"), "ok");
    EXPECT_EQ(tell("battery"), "ok low");
    EXPECT_EQ(tell("battery none"), "ok");
    EXPECT_EQ(tell("battery"), "ok none");
    EXPECT_EQ(tell("error"), "ok 00F7 battery");
    EXPECT_EQ(tell("error battery off"), "ok");
    EXPECT_EQ(tell("battery"), "ok good");
    EXPECT_EQ(tell("error battery"), "ok");
    EXPECT_EQ(tell("battery"), "ok low");
    EXPECT_EQ(tell("battery none"), "ok");
    EXPECT_EQ(tell("error off"), "ok");
    EXPECT_EQ(tell("battery"), "ok good");
    expectError("battery flat", "'flat' is no state of the battery; use good, low or none");
}

TEST_F(PlcCpuConsoleTest, Clock)
{
    start();
    EXPECT_EQ(tell("clock 2024-02-29 12:30:00"), "ok");
    const std::string shown = tell("clock");
    EXPECT_EQ(shown.substr(0, 19), "ok 2024-02-29 12:30");
    EXPECT_EQ(shown.substr(22), " weekday 4");
    for (const char *time : {"now", "2026-02-29 00:00:00", "1997-12-31 23:59:59", "2098-01-01 00:00:00",
                             "2026-01-01 24:00:00", "2026-01-01", "2026-01-01 00:00:00 x"})
        expectError(std::string("clock ") + time,
                    std::string("'") + time + "' is no time; use YYYY-MM-DD HH:MM:SS, 1998 to 2097");
    EXPECT_EQ(tell("clock").substr(0, 16), "ok 2024-02-29 12");
    EXPECT_EQ(tell("clock 1998-01-01 00:00:00"), "ok");
    EXPECT_EQ(tell("clock 2097-12-31 23:00:00"), "ok");
    EXPECT_EQ(tell("clock").substr(0, 16), "ok 2097-12-31 23");
}

TEST_F(PlcCpuConsoleTest, Cycle)
{
    start();
    EXPECT_EQ(tell("cycle"), "ok average=1.0 longest=1.2 shortest=0.9");
    EXPECT_EQ(tell("cycle 2.5 4.1 1.9"), "ok");
    EXPECT_EQ(tell("cycle"), "ok average=2.5 longest=4.1 shortest=1.9");
    EXPECT_EQ(tell("cycle 40000"), "ok");
    EXPECT_EQ(tell("cycle"), "ok average=40000.0 longest=40000.0 shortest=40000.0");
    for (const char *times : {"0", "40000.1", "1.05", "x", "nan", "1 2", "1 2 1 1", "3 2 1", "1 2 1.5", "-1"})
        expectError(std::string("cycle ") + times, std::string("'") + times +
                                                       "' is no cycle time; use one of 0.1 to 40000 ms, or average, "
                                                       "longest and shortest");
    EXPECT_EQ(tell("cycle"), "ok average=40000.0 longest=40000.0 shortest=40000.0");
}

TEST_F(PlcCpuConsoleTest, Messages)
{
    start();
    EXPECT_EQ(tell("message"), "ok none");
    EXPECT_EQ(tell("message 7 12345678901234567890123456789012"), "ok");
    EXPECT_EQ(tell("message 0 A  B"), "ok");
    EXPECT_EQ(tell("message"), "ok 0 'A  B', 7 '12345678901234567890123456789012'");
    EXPECT_EQ(tell("message 7 off"), "ok");
    EXPECT_EQ(tell("message"), "ok 0 'A  B'");
    expectError("message 8 X", "'8' is no number of a message; use 0 to 7");
    expectError("message X", "'X' is no number of a message; use 0 to 7");
    expectError("message 1", "'' is no text of 1 to 32 printable ASCII characters");
    expectError("message 1 123456789012345678901234567890123",
                "'123456789012345678901234567890123' is no text of 1 to 32 printable ASCII characters");
}

TEST_F(PlcCpuConsoleTest, LogIsToldAndEmptied)
{
    start();
    ASSERT_EQ(tell("clock 2026-03-01 08:15:00"), "ok");
    ASSERT_EQ(tell("error fals 2"), "ok");
    ASSERT_EQ(tell("error fals 2 AGAIN"), "ok");
    const std::string told = tell("log");
    EXPECT_EQ(told.substr(0, 24), "ok C102 2026-03-01 08:15");
    EXPECT_EQ(told.size(), 27u);
    expectError("log empty", "'empty' is not understood; use log or log clear");
    EXPECT_EQ(tell("log clear"), "ok");
    EXPECT_EQ(tell("log"), "ok empty");
    EXPECT_EQ(tell("error"), "ok C102 fals 2 'AGAIN'");
}

// The clock is set before errors are logged, wherever its line stands.
TEST_F(PlcCpuConsoleTest, ProjectSetsTheStateAtTheStart)
{
    startProject("[cpu]\nerrors = [\"fal 5 PUMP\", \"io-bus 1\"]\nmessages = \"3 HELLO\"\nbattery = \"none\"\n"
                 "cycle = \"2.5\"\nclock = \"2026-03-01 08:15:00\"\nmodel = \"X1\"\nversion = \"1.2\"\n");
    EXPECT_EQ(tell("error"), "ok 80C1 io-bus 1, 4105 fal 5 'PUMP', 00F7 battery");
    EXPECT_EQ(tell("message"), "ok 3 'HELLO'");
    EXPECT_EQ(tell("battery"), "ok none");
    EXPECT_EQ(tell("cycle"), "ok average=2.5 longest=2.5 shortest=2.5");
    EXPECT_EQ(tell("log").substr(0, 24), "ok 00F7 2026-03-01 08:15");
    PlcClient client(port);
    // "X1" with 18 spaces, "1.2" with 17 zeros.
    EXPECT_EQ(client.ask("0501 00").substr(8, 80), plainHex("5831 202020202020202020202020202020202020"
                                                            "312E32 0000000000000000000000000000000000"));
}

// Time that is stepped begins where the project says, or in 2000; the zone of the machine has no part in it.
TEST_F(PlcCpuConsoleTest, ClockOfASteppedRun)
{
    start({"--stepped", "--plant-period", "60000"});
    EXPECT_EQ(tell("clock"), "ok 2000-01-01 00:00:00 weekday 6");
    EXPECT_EQ(tell("step 2"), "ok");
    EXPECT_EQ(tell("clock"), "ok 2000-01-01 00:02:00 weekday 6");
    EXPECT_EQ(tell("quit"), "ok");
    EXPECT_EQ(plc->wait(), 0);
    file.write("[plc]\nstepped = true\nplant-period = 60000\n[cpu]\nclock = \"2024-02-28 23:59:00\"\n"
               "errors = \"fal 1\"\n");
    start({"--project", file.path()});
    EXPECT_EQ(tell("log"), "ok 4101 2024-02-28 23:59:00");
    EXPECT_EQ(tell("step"), "ok");
    EXPECT_EQ(tell("clock"), "ok 2024-02-29 00:00:00 weekday 4");
}

TEST_F(PlcCpuConsoleTest, ProjectLinesThatAreWrong)
{
    const struct {
        const char *line;
        const char *error;
    } rows[] = {
        {"speed = \"1\"", ":2:1: 'speed' is no setting of [cpu]\n"},
        {"clock = 5", ":2:9: clock is a text: what its clock shows at the start, YYYY-MM-DD HH:MM:SS\n"},
        {"clock = [\"2026-01-01 00:00:00\"]",
         ":2:9: clock is a text: what its clock shows at the start, YYYY-MM-DD HH:MM:SS\n"},
        {"errors = [\"fal 1\", 5]", ":2:20: errors is a text or a list of texts: errors that stand, NAME [NUMBER] "
                                   "[TEXT] as the console takes them\n"},
        {"errors = [\"fal 1\", \"fal 0\"]", ":2:20: '0' is no number of fal; use 1 to 511\n"},
        {"battery = \"flat\"", ":2:11: 'flat' is no state of the battery; use good, low or none\n"},
        {"messages = \"8 A\"", ":2:12: '8' is no number of a message; use 0 to 7\n"},
        {"model = \"\"", ":2:9: '' is no text of 1 to 20 printable ASCII characters\n"},
        {"version = \"123456789012345678901\"",
         ":2:11: '123456789012345678901' is no text of 1 to 20 printable ASCII characters\n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(errorsOf(std::string("[cpu]\n") + row.line + "\n"), row.error) << row.line;
    EXPECT_EQ(errorsOf("cpu = 1\n"), ":1:7: cpu has to be a table, [cpu]\n");
}
