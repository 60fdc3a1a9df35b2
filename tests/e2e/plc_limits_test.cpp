#include "plc_fixture.h"

// Limits of small CPU units, errors of FINS/TCP on demand, and the plants by name.

class PlcLimitsTest : public PlcTest {
protected:
    std::string exchange()
    {
        TcpClient client(port);
        client.send(nodeRequest());
        return client.receive(24);
    }

    std::string refusedExchange()
    {
        TcpClient client(port);
        client.send(nodeRequest());
        return client.receiveUntilClosed();
    }

    unsigned long word(const std::string &place) { return std::stoul(tell("read " + place).substr(3)); }

    void waitForWord(const std::string &place, unsigned long least)
    {
        const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
        unsigned long value = word(place);
        while (value < least && Process::Clock::now() < deadline)
            value = word(place);
        EXPECT_GE(value, least) << place;
    }
};

TEST_F(PlcLimitsTest, TwoConnectionsOfASmallUnit)
{
    start({"--profile", "cp1l"});
    PlcClient first(port);
    PlcClient second(port);
    EXPECT_EQ(refusedExchange(), nodeReply(0, 0x20));
}

TEST_F(PlcLimitsTest, ClientsGoBeforeTheProfile)
{
    start({"--profile", "cp1l", "--clients", "3"});
    PlcClient first(port);
    PlcClient second(port);
    EXPECT_EQ(exchange(), nodeReply(241));
}

TEST_F(PlcLimitsTest, LongestResponse)
{
    start({"--profile", "cp1l"});
    PlcClient client(port);
    // 14 bytes before the data leave 526: 263 words or 526 bits.
    EXPECT_EQ(client.ask("0101 82 0000 00 0107").size(), 2 * (4 + 526u));
    EXPECT_EQ(client.ask("0101 82 0000 00 0108"), plainHex("0101 110B"));
    EXPECT_EQ(client.ask("0101 02 0000 00 020E").size(), 2 * (4 + 526u));
    EXPECT_EQ(client.ask("0101 02 0000 00 020F"), plainHex("0101 110B"));
}

TEST_F(PlcLimitsTest, LongestCommand)
{
    start({"--profile", "cp1l"});
    PlcClient client(port);
    // 18 bytes before the data leave 522: 261 words, or 522 bits of one byte each.
    EXPECT_EQ(client.ask("0102 82 0000 00 0105" + std::string(4 * 261, '1')), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 82 0000 00 0106" + std::string(4 * 262, '1')), plainHex("0102 1001"));
    EXPECT_EQ(client.ask("0102 02 0000 00 020A" + std::string(2 * 522, '0')), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 02 0000 00 020B" + std::string(2 * 523, '0')), plainHex("0102 1001"));
    EXPECT_EQ(tell("read DM:261"), "ok 0");
}

TEST_F(PlcLimitsTest, AreasOfTheSmallProfile)
{
    start({"--profile", "small"});
    PlcClient client(port);
    const struct {
        const char *last;
        const char *past;
    } rows[] = {
        {"0101 82 07FF 00 0001", "0101 82 0800 00 0001"}, // DM, 2048 words
        {"0101 B0 0121 00 0001", "0101 B0 0122 00 0001"}, // CIO, 290
        {"0101 B1 0063 00 0001", "0101 B1 0064 00 0001"}, // WR, 100
        {"0101 B2 0031 00 0001", "0101 B2 0032 00 0001"}, // HR, 50
        {"0101 B3 02F1 00 0001", "0101 B3 02F2 00 0001"}, // AR, 754
        {"0101 89 00FF 00 0001", "0101 89 0100 00 0001"}, // T, 256
        {"0101 89 80FF 00 0001", "0101 89 8100 00 0001"}, // C, 256
    };
    for (const auto &row : rows) {
        EXPECT_EQ(client.ask(row.last), plainHex("0101 0000 0000")) << row.last;
        EXPECT_EQ(client.ask(row.past), plainHex("0101 1103")) << row.past;
    }
    EXPECT_EQ(client.ask("0101 82 07FF 00 0002"), plainHex("0101 1104"));
}

TEST_F(PlcLimitsTest, HoldingAreaOfTheMiddleProfile)
{
    start({"--profile", "cp1l"});
    EXPECT_EQ(tell("read HR:511"), "ok 0");
    EXPECT_EQ(tell("read HR:512"), "error '512' is no address of the area; use 0 to 511");
    EXPECT_EQ(tell("read DM:32767"), "ok 0");
}

TEST_F(PlcLimitsTest, EveryTcpErrorRefusesTheExchange)
{
    start();
    for (const unsigned error : {0x01u, 0x02u, 0x03u, 0x20u, 0x21u, 0x22u, 0x23u, 0x24u, 0x25u}) {
        ASSERT_EQ(tell("tcp-error " + hexNumber(error, 2)), "ok");
        EXPECT_EQ(refusedExchange(), nodeReply(0, error)) << error;
        EXPECT_EQ(refusedExchange(), nodeReply(0, error)) << error;
    }
    ASSERT_EQ(tell("tcp-error off"), "ok");
    EXPECT_EQ(exchange(), nodeReply(239));
}

TEST_F(PlcLimitsTest, TcpErrorOfTheNextExchanges)
{
    start({"--fault", "tcp-error=22#2"});
    EXPECT_EQ(refusedExchange(), nodeReply(0, 0x22));
    EXPECT_EQ(tell("faults"), "ok tcp-error=22#1");
    EXPECT_EQ(refusedExchange(), nodeReply(0, 0x22));
    EXPECT_EQ(tell("faults"), "ok none");
    EXPECT_EQ(exchange(), nodeReply(239));
    ASSERT_EQ(tell("tcp-error 25 1"), "ok");
    EXPECT_EQ(refusedExchange(), nodeReply(0, 0x25));
    EXPECT_EQ(exchange(), nodeReply(239));
}

TEST_F(PlcLimitsTest, TcpErrorsThatAreNone)
{
    start();
    for (const char *text : {"0", "4", "1F", "26", "XY", "022"})
        EXPECT_EQ(tell(std::string("tcp-error ") + text),
                  std::string("error '") + text + "' is no value of tcp-error; use 1, 2, 3 or 20 to 25 (hexadecimal)");
    EXPECT_EQ(tell("tcp-error 22 0"), "error '0' is no number of times; use 1 to 1000000");
    EXPECT_EQ(tell("fault tcp-error"), "error tcp-error needs a value, such as tcp-error=22");
    EXPECT_EQ(exchange(), nodeReply(239));
}

TEST_F(PlcLimitsTest, FaultsForANumberOfTimes)
{
    start({"--fault", "end-code=1101#2"});
    PlcClient client(port);
    EXPECT_EQ(client.ask("0402"), plainHex("0402 1101"));
    EXPECT_EQ(client.ask("0402"), plainHex("0402 1101"));
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
    ASSERT_EQ(tell("fault refuse#1"), "ok");
    EXPECT_EQ(TcpClient(port).receiveUntilClosed(), "");
    EXPECT_EQ(exchange(), nodeReply(240));
    EXPECT_EQ(tell("fault drop#1000001"), "error '1000001' is no number of times; use 1 to 1000000");
}

TEST_F(PlcLimitsTest, PlantsByName)
{
    const struct {
        std::vector<std::string> options;
        const char *setPoint;
    } rows[] = {{{"--plant"}, "ok 300 0 0 500"},
                {{"--plant", "tank"}, "ok 300 0 0 500"},
                {{"--plant=conveyor"}, "ok 0 0 300 0"},
                {{"--plant", "oven"}, "ok 200 200 200 0"}};
    for (const auto &row : rows) {
        std::vector<std::string> options = row.options;
        options.insert(options.end(), {"--plant-period", "60000"});
        start(options);
        EXPECT_EQ(tell("read DM:0:4"), row.setPoint) << row.options.back();
    }
}

TEST_F(PlcLimitsTest, TheConveyorWeighsParts)
{
    start({"--plant", "conveyor", "--plant-period", "1", "--profile", "small"});
    waitForWord("C:0", 1);
    EXPECT_GE(word("DM:3"), 470u);
    EXPECT_LE(word("DM:3"), 530u);
    // Limits that no part meets, and jams cleared as they come.
    ASSERT_EQ(tell("write DM:5 531 470"), "ok");
    const unsigned long good = word("C:0");
    const unsigned long rejected = word("C:1");
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
    while (word("C:1") < rejected + 3 && Process::Clock::now() < deadline)
        ASSERT_EQ(tell("write CIO_bit:100.1 1"), "ok");
    EXPECT_GE(word("C:1"), rejected + 3);
    EXPECT_LE(word("C:0"), good + 1);
}

TEST_F(PlcLimitsTest, TheConveyorJamsAndStops)
{
    start({"--plant", "conveyor", "--plant-period", "1"});
    waitForWord("CIO_bit:0.3", 1);
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
    while (word("DM:0") != 0 && Process::Clock::now() < deadline) {
    }
    EXPECT_EQ(word("DM:0"), 0u);
    EXPECT_EQ(word("CIO_bit:0.0"), 0u);
    ASSERT_EQ(tell("write CIO_bit:100.1 1"), "ok");
    waitForWord("DM:0", 100);
}

TEST_F(PlcLimitsTest, TheOvenHeatsToItsSetPoints)
{
    start({"--plant", "oven", "--plant-period", "1", "--profile", "small"});
    waitForWord("CIO_bit:0.3", 1);
    EXPECT_GE(word("DM:0"), 1440u);
    EXPECT_GE(word("DM:1"), 1740u);
    EXPECT_GE(word("DM:2"), 1590u);
    waitForWord("T:0", 5);
    // The average is between 100 (42C80000) and 200 degrees (43480000).
    EXPECT_GE(word("DM:31"), 0x42C8u);
    EXPECT_LE(word("DM:31"), 0x4348u);
    ASSERT_EQ(tell("write CIO_bit:100.0 0 1"), "ok");
    waitForWord("CIO_bit:0.6", 1);
    const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
    while (word("DM:0") > 600 && Process::Clock::now() < deadline) {
    }
    EXPECT_LE(word("DM:0"), 600u);
    EXPECT_EQ(word("CIO_bit:0.0"), 0u);
    EXPECT_EQ(word("C:0"), 1u);
}

TEST_F(PlcLimitsTest, Listings)
{
    Process plants({FINS_PLC_PATH, "--plants"});
    EXPECT_EQ(plants.wait(), 0);
    for (const char *text :
         {"tank: a pump fills a tank that drains; the level is held\n  DM:0 level, 0.1 %; DM:3 set-point, 0.1 % (write); ",
          "\nconveyor: ", "\noven: three zones are heated to their set-points\n"
          "  DM:0 DM:1 DM:2 temperature of zones 1 to 3, 0.1 C; DM:4 steps;\n"
          "  DM:10 DM:11 DM:12 set-points, 0.1 C (write); DM:20 DM:21 DM:22 heater output, %;\n"})
        EXPECT_NE(plants.output().find(text), std::string::npos) << text;
    Process profiles({FINS_PLC_PATH, "--profiles"});
    EXPECT_EQ(profiles.wait(), 0);
    EXPECT_NE(profiles.output().find("  small        2      540    290  100    50  754   2048   256   256   0"),
              std::string::npos)
        << profiles.output();
}

TEST_F(PlcLimitsTest, NamesThatAreUnknown)
{
    const struct {
        const char *option;
        const char *error;
    } rows[] = {{"--plant=boiler", "fins_plc: --plant: 'boiler' is no plant; plants are tank conveyor oven; "
                                   "see fins_plc --help\n"},
                {"--profile=big", "fins_plc: --profile: 'big' is no profile; profiles are cj2 cp1l small; "
                                  "see fins_plc --help\n"},
                {"--fault=tcp-error=26", "fins_plc: --fault: '26' is no value of tcp-error; use 1, 2, 3 or 20 to "
                                         "25 (hexadecimal); see fins_plc --help\n"}};
    for (const auto &row : rows) {
        Process failing({FINS_PLC_PATH, row.option});
        EXPECT_EQ(failing.wait(), 2) << row.option;
        EXPECT_EQ(failing.errors(), row.error);
    }
}
