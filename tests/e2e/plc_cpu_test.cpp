#include "plc_fixture.h"

#include <map>

// FINS commands for the CPU unit itself: what it is, its clock, cycle time, messages and errors, and who may change it.

namespace {

std::string repeated(const std::string &text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

// "CJ2H-CPU68" in 20 bytes, filled with spaces.
const std::string MODEL = "434A32482D435055363820202020202020202020";
// "CJ2B-EIP21", the same.
const std::string ETHERNET = "434A32422D454950323120202020202020202020";

// Controller data: "02.01" in 20 bytes filled with zeros; 40 for system use; 400 K of program, 23 K of I/O, 32768 words
// of DM, 8 K of timers and counters, 25 banks of EM, the largest of which is 18.
const std::string FIRST_PART = MODEL + "30322E3031" + repeated("00", 15) + "00 18" + repeated("00", 38) +
                               "0190 17 8000 08 19" + repeated("00", 5);
// Bus unit 0 is there, 15 more are not; 32 bytes reserved; no remote I/O; a host interface.
const std::string SECOND_PART = "8000" + repeated("0000", 15) + repeated("00", 32) + "0000 40";

const std::string SPACES_16 = repeated("20", 16);

} // namespace

class PlcCpuTest : public PlcTest {
protected:
    void expectAnswer(PlcClient &client, const std::string &command, const std::string &rest)
    {
        EXPECT_EQ(client.ask(command), plainHex(command.substr(0, 4) + rest)) << command;
    }

    // Sends the command as node 240, which the second client has, and returns the response from the command code on.
    static std::string askAs240(PlcClient &client, const std::string &command)
    {
        client.send(frameSend("80 00 02 00 01 00 00 F0 00 5A" + command));
        return client.receiveFrame().substr(2 * 26);
    }
};

TEST_F(PlcCpuTest, ControllerDataInOneOrTwoParts)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "0501", "0000" + FIRST_PART + SECOND_PART);
    expectAnswer(client, "0501 00", "0000" + FIRST_PART);
    expectAnswer(client, "0501 01", "0000" + SECOND_PART);
    expectAnswer(client, "0501 02", "110C");
    expectAnswer(client, "0501 00 00", "1001");
    EXPECT_EQ(client.ask("0501").size(), 2u * (4 + 159));
    EXPECT_EQ(client.ask("0501 00").size(), 2u * (4 + 92));
    EXPECT_EQ(client.ask("0501 01").size(), 2u * (4 + 67));
}

// 2048 words of DM; 512 timers and counters are no whole K.
TEST_F(PlcCpuTest, ControllerDataFollowTheProfile)
{
    start({"--profile", "small"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0501 00").substr(2 * (4 + 80), 12), plainHex("0190 17 0800 00"));
}

TEST_F(PlcCpuTest, ConnectionDataFromAUnitAddressOn)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "0502 00", "0000 82 00" + MODEL + "10" + ETHERNET);
    expectAnswer(client, "0502 00 01", "0000 01 00" + MODEL);
    expectAnswer(client, "0502 00 02", "0000 82 00" + MODEL + "10" + ETHERNET);
    expectAnswer(client, "0502 01 19", "0000 81 10" + ETHERNET);
    expectAnswer(client, "0502 10", "0000 81 10" + ETHERNET);
    expectAnswer(client, "0502 11", "0000 80");
    expectAnswer(client, "0502", "1002");
    expectAnswer(client, "0502 00 01 00", "1001");
    expectAnswer(client, "0502 00 00", "110C");
    expectAnswer(client, "0502 00 1A", "110C");
}

// Average, longest and shortest in 0.1 ms: 65.0 ms is 028A, 100.1 ms is 03E9, 0.1 ms is 0001.
TEST_F(PlcCpuTest, CycleTimeIsReadAndInitialised)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "0620 01", "0000 0000000A 0000000C 00000009");
    ASSERT_EQ(tell("cycle 65 100.1 0.1"), "ok");
    expectAnswer(client, "0620 01", "0000 0000028A 000003E9 00000001");
    expectAnswer(client, "0620 00", "0000");
    expectAnswer(client, "0620 01", "0000 0000028A 0000028A 0000028A");
    EXPECT_EQ(tell("cycle"), "ok average=65.0 longest=65.0 shortest=65.0");
    expectAnswer(client, "0620 02", "110C");
    expectAnswer(client, "0620", "1002");
    expectAnswer(client, "0620 01 00", "1001");
    ASSERT_EQ(tell("mode program"), "ok program");
    expectAnswer(client, "0620 01", "2202");
    expectAnswer(client, "0620 00", "2202");
    ASSERT_EQ(tell("mode monitor"), "ok monitor");
    expectAnswer(client, "0620 01", "0000 0000028A 0000028A 0000028A");
}

// 28 February 2026 is a Saturday (06); the year has no leap day.
TEST_F(PlcCpuTest, ClockIsWrittenAndRead)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "0702 26 02 28 13 05 00 06", "0000");
    const std::string read = client.ask("0701");
    EXPECT_EQ(read.substr(0, 18), plainHex("0701 0000 26 02 28 13 05"));
    EXPECT_EQ(read.size(), 2u * (4 + 7));
    EXPECT_EQ(read.substr(20), "06");
    EXPECT_EQ(tell("clock").substr(0, 19), "ok 2026-02-28 13:05");
}

// A weekday of the clock's own is kept; without one the calendar has it: 1 March 2026 is a Sunday.
TEST_F(PlcCpuTest, ClockWithoutSecondsAndWeekday)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "0702 26 03 01 08 30 00 03", "0000");
    EXPECT_EQ(client.ask("0701").substr(20), "03");
    expectAnswer(client, "0702 26 03 01 08 30", "0000");
    EXPECT_EQ(client.ask("0701").substr(20), "00");
}

TEST_F(PlcCpuTest, ClockGoesOverTheLeapDay)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "0702 28 02 28 23 59 59 01", "0000");
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
    std::string read = client.ask("0701");
    while (read.substr(8, 6) == "280228" && Process::Clock::now() < deadline)
        read = client.ask("0701");
    EXPECT_EQ(read.substr(8, 10), "2802290000");
    EXPECT_EQ(read.substr(20), "02");
}

TEST_F(PlcCpuTest, ClockRefusesWhatIsNoTime)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "0702 20 01 01 00 00 00 03", "0000");
    for (const char *time : {"2A 01 01 00 00 00 01", "26 13 01 00 00 00 01", "26 00 01 00 00 00 01",
                             "26 02 29 00 00 00 01", "26 01 00 00 00 00 01", "26 01 32 00 00 00 01",
                             "26 01 01 24 00 00 01", "26 01 01 00 60 00 01", "26 01 01 00 00 60 01",
                             "26 01 01 00 00 00 07", "26 01 01 00 00 00 0A", "26 01 01 00 00 A0 01"})
        expectAnswer(client, std::string("0702 ") + time, "110C");
    expectAnswer(client, "0702 26 01 01 00", "1002");
    expectAnswer(client, "0702 26 01 01 00 00 00", "1002");
    expectAnswer(client, "0702 26 01 01 00 00 00 04 00", "1001");
    expectAnswer(client, "0701 00", "1001");
    EXPECT_EQ(client.ask("0701").substr(0, 14), plainHex("0701 0000 20 01 01"));
}

// The Ethernet unit, FE, answers it, and has nothing to tell of the CPU unit's errors.
TEST_F(PlcCpuTest, EchoComesBackFromTheEthernetUnit)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("error fal 1"), "ok");
    expectAnswer(client, "0801 31", "0441");
    client.send(frameSend("80 00 02 00 01 FE 00 EF 00 01 0801"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 01 FE 01 0801 0000"));
    client.send(frameSend("80 00 02 00 01 FE 00 EF 00 02 0801 313200FF"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 01 FE 02 0801 0000 313200FF"));
}

// "PUMP STUCK" and "OK" in 32 bytes each, filled with spaces.
TEST_F(PlcCpuTest, MessagesAreReadAndCleared)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("message 0 PUMP STUCK"), "ok");
    ASSERT_EQ(tell("message 7 OK"), "ok");
    const std::string pump = "50554D5020535455434B" + repeated("20", 22);
    const std::string fine = "4F4B" + repeated("20", 30);
    expectAnswer(client, "0601", "0000 05 04 0000 0000 0081 0000" + SPACES_16);
    expectAnswer(client, "0920 0001", "0000 0001" + pump);
    expectAnswer(client, "0920 0083", "0000 0083" + pump + repeated("20", 32) + fine);
    expectAnswer(client, "0920 0000", "0000 0000");
    expectAnswer(client, "0920 4001", "0000");
    expectAnswer(client, "0601", "0000 05 04 0000 0000 0080 0000" + SPACES_16);
    EXPECT_EQ(tell("message"), "ok 7 'OK'");
}

TEST_F(PlcCpuTest, MessagesRefuseOtherParameters)
{
    start();
    PlcClient client(port);
    for (const char *word : {"0100", "2001", "4100", "C001", "8000", "8200", "A001"})
        expectAnswer(client, std::string("0920 ") + word, "110C");
    expectAnswer(client, "0920 00", "1002");
    expectAnswer(client, "0920 0001 00", "1001");
}

// FALS 5 is worse than FAL 5; of FAL 6 no text is known. An end code with 80 tells of the fatal one, with 40 of the other.
TEST_F(PlcCpuTest, TextsOfErrorsAreRead)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("error fal 5 LOW OIL"), "ok");
    expectAnswer(client, "0920 8005", "0040 0005 4C4F57204F494C" + repeated("20", 9));
    expectAnswer(client, "0920 8006", "0040 0006" + SPACES_16);
    ASSERT_EQ(tell("error fals 5 STOP"), "ok");
    expectAnswer(client, "0920 8005", "00C0 0005 53544F50" + repeated("20", 12));
}

TEST_F(PlcCpuTest, AnErrorFlagsEveryEndCodeWithGoodData)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("write DM:100 4660"), "ok");
    expectAnswer(client, "0101 82 0064 00 0001", "0000 1234");
    ASSERT_EQ(tell("error fal 1"), "ok");
    expectAnswer(client, "0101 82 0064 00 0001", "0040 1234");
    expectAnswer(client, "0102 82 0064 00 0001 5678", "0040");
    expectAnswer(client, "0101 82 8000 00 0001", "1143");
    expectAnswer(client, "0000", "0441");
    ASSERT_EQ(tell("error memory"), "ok");
    expectAnswer(client, "0101 82 0064 00 0001", "00C0 5678");
    ASSERT_EQ(tell("error fal 1 off"), "ok");
    expectAnswer(client, "0101 82 0064 00 0001", "0080 5678");
    ASSERT_EQ(tell("error off"), "ok");
    expectAnswer(client, "0101 82 0064 00 0001", "0000 5678");
}

// An answer that the CPU unit has not given has no flags of it.
TEST_F(PlcCpuTest, ANodeThatIsNotThereHasNoFlags)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("error fal 1"), "ok");
    client.send(frameSend("80 00 02 00 02 00 00 EF 00 02 0402"));
    EXPECT_EQ(client.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 02 00 02 0402 0201"));
}

// Fatal and non-fatal word, then the error code, in the status and in A400 to A402.
TEST_F(PlcCpuTest, EveryErrorHasItsBitAndCode)
{
    start();
    PlcClient client(port);
    const struct {
        const char *error;
        const char *fatal;
        const char *nonFatal;
        const char *code;
    } rows[] = {
        {"memory", "8000", "0000", "80F1"},       {"io-bus 7", "4000", "0000", "80C7"},
        {"duplicate", "2000", "0000", "80E9"},    {"too-many-io", "0800", "0000", "80E1"},
        {"io-setting", "0400", "0000", "80E0"},   {"program", "0200", "0000", "80F0"},
        {"cycle-time", "0100", "0000", "809F"},   {"fals 1", "0040", "0000", "C101"},
        {"fals 511", "0040", "0000", "C2FF"},     {"fal 1", "0000", "8000", "4101"},
        {"fal 511", "0000", "8000", "42FF"},      {"io-verify", "0000", "0200", "00E7"},
        {"bus-unit 15", "0000", "0080", "020F"},  {"battery", "0000", "0010", "00F7"},
        {"bus-unit-setting 3", "0000", "0008", "0403"},
    };
    for (const auto &row : rows) {
        ASSERT_EQ(tell(std::string("error ") + row.error), "ok") << row.error;
        const bool isFatal = std::string(row.nonFatal) == "0000";
        expectAnswer(client, "0601", (isFatal ? "0080 04 04" : "0040 05 04") + std::string(row.fatal) + row.nonFatal +
                                         "0000" + row.code + SPACES_16);
        expectAnswer(client, "0101 B3 0190 00 0003", std::string(isFatal ? "0080" : "0040") + row.code + row.fatal +
                                                         row.nonFatal);
        ASSERT_EQ(tell("error off"), "ok") << row.error;
    }
    expectAnswer(client, "0101 B3 0190 00 0003", "0000 0000 0000 0000");
}

TEST_F(PlcCpuTest, StatusTellsOfTheWorstError)
{
    start();
    PlcClient client(port);
    for (const char *error : {"fal 9 SECOND", "battery", "fals 3 FIRST", "fals 4"})
        ASSERT_EQ(tell(std::string("error ") + error), "ok");
    expectAnswer(client, "0601", "00C0 04 04 0040 8010 0000 C103 4649525354" + repeated("20", 11));
    ASSERT_EQ(tell("error fals 3 off"), "ok");
    expectAnswer(client, "0601", "00C0 04 04 0040 8010 0000 C104" + SPACES_16);
    ASSERT_EQ(tell("error fals 4 off"), "ok");
    expectAnswer(client, "0601", "0040 05 04 0000 8010 0000 4109 5345434F4E44" + repeated("20", 10));
}

TEST_F(PlcCpuTest, BatteryThatIsLowOrMissing)
{
    start();
    PlcClient client(port);
    ASSERT_EQ(tell("battery low"), "ok");
    expectAnswer(client, "0601", "0040 05 04 0000 0010 0000 00F7" + SPACES_16);
    ASSERT_EQ(tell("battery none"), "ok");
    expectAnswer(client, "0601", "0040 01 04 0000 0010 0000 00F7" + SPACES_16);
    ASSERT_EQ(tell("battery good"), "ok");
    expectAnswer(client, "0601", "0000 05 04 0000 0000 0000 0000" + SPACES_16);
}

// FAL and FALS are over with their instruction; a battery stays low until it is changed.
TEST_F(PlcCpuTest, ErrorsAreClearedUnlessTheirCauseRemains)
{
    start();
    PlcClient client(port);
    for (const char *error : {"fal 2", "fals 3", "battery", "cycle-time"})
        ASSERT_EQ(tell(std::string("error ") + error), "ok");
    expectAnswer(client, "2101 00F7", "26CB");
    expectAnswer(client, "2101 4103", "00C0");
    expectAnswer(client, "2101 FFFE", "00C0");
    EXPECT_EQ(tell("error"), "ok C103 fals 3, 4102 fal 2, 00F7 battery");
    expectAnswer(client, "2101 C103", "0040");
    expectAnswer(client, "2101 FFFF", "264B");
    EXPECT_EQ(tell("error"), "ok 00F7 battery");
    expectAnswer(client, "2101 FFFE", "264B");
    ASSERT_EQ(tell("battery good"), "ok");
    expectAnswer(client, "2101 FFFE", "0000");
    expectAnswer(client, "2101 FFFF", "0000");
    expectAnswer(client, "2101 00", "1002");
    expectAnswer(client, "2101", "1002");
    expectAnswer(client, "2101 FFFE 00", "1001");
}

TEST_F(PlcCpuTest, ErrorLogIsReadFromARecordOn)
{
    start();
    PlcClient client(port);
    expectAnswer(client, "2102 0000 0000", "0000 0014 0000 0000");
    expectAnswer(client, "2102 0000 0001", "1104 0014 0000 0000");
    expectAnswer(client, "2102 0001 0001", "1103");
    ASSERT_EQ(tell("clock 2026-03-01 08:15:00"), "ok");
    ASSERT_EQ(tell("error battery"), "ok");
    ASSERT_EQ(tell("clock 1999-12-31 23:59:00"), "ok");
    ASSERT_EQ(tell("error fal 10"), "ok");
    ASSERT_EQ(tell("error off"), "ok");
    // Minute and second, day and hour, year and month; the seconds, which go on, are left out of the comparison.
    const std::string both = client.ask("2102 0000 0002");
    ASSERT_EQ(both.size(), 2u * (4 + 6 + 2 * 10));
    EXPECT_EQ(both.substr(0, 30), plainHex("2102 0000 0014 0002 0002 00F7 0000 15"));
    EXPECT_EQ(both.substr(32, 8), plainHex("01 08 26 03"));
    EXPECT_EQ(both.substr(40, 10), plainHex("410A 0000 59"));
    EXPECT_EQ(both.substr(52), plainHex("31 23 99 12"));
    const std::string second = both.substr(40);
    expectAnswer(client, "2102 0001 0001", "0000 0014 0002 0001" + second);
    expectAnswer(client, "2102 0001 0014", "1104 0014 0002 0001" + second);
    expectAnswer(client, "2102 0000 0001", "0000 0014 0002 0001" + both.substr(20, 20));
    expectAnswer(client, "2102 0002 0001", "1103");
    expectAnswer(client, "2102 0000 00", "1002");
    expectAnswer(client, "2102 0000 0001 00", "1001");
}

// With the 21st error the first record goes. The same records stand in A100 to A199, their number in A300.
TEST_F(PlcCpuTest, ErrorLogKeepsTheLastTwenty)
{
    start();
    PlcClient client(port);
    for (int number = 1; number <= 21; ++number)
        ASSERT_EQ(tell("error fal " + std::to_string(number)), "ok");
    ASSERT_EQ(tell("error off"), "ok");
    const std::string log = client.ask("2102 0000 0014");
    ASSERT_EQ(log.size(), 2u * (4 + 6 + 20 * 10));
    EXPECT_EQ(log.substr(0, 24), plainHex("2102 0000 0014 0014 0014 4102"));
    EXPECT_EQ(log.substr(20 + 19 * 20, 4), "4115");
    EXPECT_EQ(client.ask("0101 B3 0064 00 0064").substr(8), log.substr(20));
    EXPECT_EQ(tell("read AR:300"), "ok 20");
    expectAnswer(client, "2103 00", "1001");
    expectAnswer(client, "2103", "0000");
    expectAnswer(client, "2102 0000 0000", "0000 0014 0000 0000");
    expectAnswer(client, "0101 B3 0064 00 0002", "0000 00000000");
    EXPECT_EQ(tell("read AR:300"), "ok 0");
}

// Stopped by a fatal error the mode stays; the plant stands still, and goes on when the error is cleared.
TEST_F(PlcCpuTest, AFatalErrorStopsThePlant)
{
    start({"--plant", "--plant-period", "1"});
    PlcClient client(port);
    ASSERT_EQ(tell("error fals 1"), "ok");
    expectAnswer(client, "0601", "0080 04 04 0040 0000 0000 C101" + SPACES_16);
    const std::string steps = tell("read DM:4");
    for (int i = 0; i < 50; ++i)
        client.ask("0601");
    EXPECT_EQ(tell("read DM:4"), steps);
    expectAnswer(client, "2101 FFFE", "0000");
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
    while (tell("read DM:4") == steps)
        ASSERT_LT(Process::Clock::now(), deadline);
}

TEST_F(PlcCpuTest, OutputsFallWhenTheProgramStopsOrStarts)
{
    start();
    PlcClient client(port);
    const auto set = [this] {
        for (const char *line : {"write CIO:100 1", "write CIO:6143 7", "write WR:511 2", "write T:4095 3", "write HR:0 4",
                                 "write C:0 5", "write DM:0 6", "write AR:900 8"})
            ASSERT_EQ(tell(line), "ok");
        ASSERT_EQ(tell("read CIO:100"), "ok 1");
    };
    const auto expect = [this](const std::map<std::string, std::string> &values) {
        for (const auto &value : values)
            EXPECT_EQ(tell("read " + value.first), "ok " + value.second) << value.first;
    };
    const std::map<std::string, std::string> kept = {{"HR:0", "4"}, {"C:0", "5"}, {"DM:0", "6"}, {"AR:900", "8"}};
    const std::map<std::string, std::string> cleared = {
        {"CIO:100", "0"}, {"CIO:6143", "0"}, {"WR:511", "0"}, {"T:4095", "0"}};
    const std::map<std::string, std::string> standing = {
        {"CIO:100", "1"}, {"CIO:6143", "7"}, {"WR:511", "2"}, {"T:4095", "3"}};
    set();
    expectAnswer(client, "0102 09 0005 00 0001 01", "0000");
    expectAnswer(client, "0401 FFFF 02", "0000");
    expectAnswer(client, "0401 FFFF 04", "0000");
    expect(standing);
    expectAnswer(client, "0402", "0000");
    expect(cleared);
    expect(kept);
    expectAnswer(client, "0101 09 0005 00 0001", "0000 00");
    set();
    expectAnswer(client, "0402", "0000");
    expect(standing);
    expectAnswer(client, "0401", "0000");
    expect(cleared);
    expect(kept);
    set();
    ASSERT_EQ(tell("write AR_bit:500.12 1"), "ok");
    expectAnswer(client, "0402", "0000");
    expectAnswer(client, "0401", "0000");
    expect(standing);
}

TEST_F(PlcCpuTest, AccessRightGoesFromHandToHand)
{
    start();
    PlcClient first(port);
    PlcClient second(port);
    expectAnswer(first, "0C01 FFFF", "0000");
    expectAnswer(first, "0C01 FFFF", "0000");
    // Unit 0, node 239, the local network.
    EXPECT_EQ(askAs240(second, "0C01 FFFF"), plainHex("0C01 3001 00 EF 00"));
    EXPECT_EQ(askAs240(second, "0C03 FFFF"), plainHex("0C03 0000"));
    EXPECT_EQ(askAs240(second, "0402"), plainHex("0402 3001"));
    EXPECT_EQ(askAs240(second, "0C02 FFFF"), plainHex("0C02 0000"));
    expectAnswer(first, "0C01 FFFF", "3001 00 F0 00");
    expectAnswer(first, "0402", "3001");
    EXPECT_EQ(askAs240(second, "0C03 FFFF"), plainHex("0C03 0000"));
    expectAnswer(first, "0C03 FFFF", "0000");
    expectAnswer(first, "0402", "0000");
    EXPECT_EQ(askAs240(second, "0402"), plainHex("0402 0000"));
}

TEST_F(PlcCpuTest, AccessRightRefusesOtherParameters)
{
    start();
    PlcClient client(port);
    for (const char *command : {"0C01", "0C02", "0C03"}) {
        const std::string code = command;
        expectAnswer(client, code, "1002");
        expectAnswer(client, code + "FF", "1002");
        expectAnswer(client, code + "0000", "1106");
        expectAnswer(client, code + "FFFF00", "1001");
    }
}

// What changes the CPU unit is refused, what reads it or its memory is not.
TEST_F(PlcCpuTest, WithoutTheAccessRightOnlyReadingIsAllowed)
{
    start();
    PlcClient first(port);
    PlcClient second(port);
    ASSERT_EQ(tell("message 0 A"), "ok");
    ASSERT_EQ(tell("error fal 1"), "ok");
    expectAnswer(first, "0C01 FFFF", "0040");
    for (const char *command : {"0401 FFFF 02", "0402", "0702 20 01 01 00 00", "0920 4001", "2101 FFFF", "2103"}) {
        const std::string code = std::string(command).substr(0, 4);
        EXPECT_EQ(askAs240(second, command), plainHex(code + "3041")) << command;
    }
    EXPECT_EQ(askAs240(second, "0702 20"), plainHex("0702 1042"));
    EXPECT_EQ(tell("mode"), "ok run");
    EXPECT_EQ(tell("message"), "ok 0 'A'");
    EXPECT_EQ(tell("error"), "ok 4101 fal 1");
    EXPECT_NE(tell("log"), "ok empty");
    for (const char *command : {"0101 82 0000 00 0001", "0102 82 0000 00 0001 0007", "0501", "0502 00", "0601",
                                "0620 01", "0701", "0920 0001", "2102 0000 0001"})
        EXPECT_EQ(askAs240(second, command).substr(4, 4), "0040") << command;
}

// The right belongs to a device of the network, connected or not.
TEST_F(PlcCpuTest, AccessRightOutlivesTheConnection)
{
    start();
    {
        PlcClient first(port);
        expectAnswer(first, "0C01 FFFF", "0000");
    }
    waitForAnswer("clients", "ok 0");
    PlcClient again(port);
    EXPECT_EQ(askAs240(again, "0402"), plainHex("0402 3001"));
    expectAnswer(again, "0402", "0000");
}
