#include "panel_run.h"

#include <netdb.h>

// `read`: values, frames, refusals, and what happens without a PLC.

class PanelReadTest : public PanelTest {};

TEST_F(PanelReadTest, EndsOfEveryType)
{
    start();
    const struct {
        const char *item;
        const char *value;
    } rows[] = {{"CIO:0", "1"},         {"CIO:6143", "2"},         {"WR:0", "3"},          {"WR:511", "4"},
                {"HR:0", "5"},          {"HR:1535", "6"},          {"AR:0", "7"},          {"AR:959", "8"},
                {"T:0", "9"},           {"T:4095", "10"},          {"C:0", "11"},          {"C:4095", "12"},
                {"DM:0", "13"},         {"DM:32767", "14"},        {"CIO_bit:1.0", "1"},   {"CIO_bit:6142.15", "1"},
                {"WR_bit:1.0", "1"},    {"WR_bit:510.15", "1"},    {"HR_bit:1.0", "1"},    {"HR_bit:1534.15", "1"},
                {"AR_bit:448.0", "1"},  {"AR_bit:958.15", "1"},    {"DM_bit:1.0", "1"},    {"DM_bit:32766.15", "1"}};
    Words items;
    std::string expected;
    for (const auto &row : rows) {
        ASSERT_EQ(tell(std::string("write ") + row.item + " " + row.value), "ok");
        items.push_back(row.item);
        expected += std::string(row.item) + " = " + row.value + "\n";
    }
    const PanelRun read = run("read", items);
    EXPECT_EQ(read.code, 0);
    EXPECT_EQ(read.out, expected);
    EXPECT_EQ(read.err, connectedLine());
}

TEST_F(PanelReadTest, ValuesAreUnsigned)
{
    start();
    ASSERT_EQ(tell("write DM:0 471 0 4 500 447 65535 32768 256"), "ok");
    EXPECT_EQ(run("read", {"DM:0:8"}).out, "DM:0:8 = 471 0 4 500 447 65535 32768 256\n");
    EXPECT_EQ(run("read", {"DM:0"}).out, "DM:0 = 471\n");
    EXPECT_EQ(run("read", {"DM_bit:0.0:9", "DM_bit:7.8"}).out, "DM_bit:0.0:9 = 1 1 1 0 1 0 1 1 1\nDM_bit:7.8 = 1\n");
}

TEST_F(PanelReadTest, OverlappingItemsAndRepeatedItems)
{
    start();
    ASSERT_EQ(tell("write DM:10 1 2 3 4 5 6 7 8"), "ok");
    EXPECT_EQ(run("read", {"DM:10:8", "DM:12:2", "DM_bit:13.2", "DM:12:2", "DM:17"}).out,
              "DM:10:8 = 1 2 3 4 5 6 7 8\nDM:12:2 = 3 4\nDM_bit:13.2 = 1\nDM:12:2 = 3 4\nDM:17 = 8\n");
}

TEST_F(PanelReadTest, FramesOnTheWire)
{
    start({"--trace"});
    EXPECT_EQ(run("read", {"DM:100:10"}).code, 0);
    EXPECT_EQ(run("read", {"C:5"}).code, 0);
    EXPECT_EQ(run("read", {"T:5"}).code, 0);
    EXPECT_EQ(run("read", {"CIO_bit:100.5"}).code, 0);
    const std::string head = "46494E53 0000001A 00000002 00000000  80 00 02 00 01 00 00 EF 00 01 ";
    const std::map<int, Words> expected = {
        {1, {plainHex(nodeRequest()), plainHex(head + "0101 82 0064 00 000A")}},
        {2, {plainHex(nodeRequest()), plainHex(head + "0101 89 8005 00 0001")}},
        {3, {plainHex(nodeRequest()), plainHex(head + "0101 89 0005 00 0001")}},
        {4, {plainHex(nodeRequest()), plainHex(head + "0101 B0 0064 00 0001")}}};
    EXPECT_EQ(endAndCollect(), expected);
}

TEST_F(PanelReadTest, LongItemsComeInSeveralFrames)
{
    start({"--trace"});
    ASSERT_EQ(tell("write DM:0 1 2 3 4 5"), "ok");
    const PanelRun read = run("read", {"DM:0:5", "--words-per-frame", "2"});
    EXPECT_EQ(read.code, 0);
    EXPECT_EQ(read.out, "DM:0:5 = 1 2 3 4 5\n");
    const Words frames = endAndCollect()[1];
    ASSERT_EQ(frames.size(), 4u);
    // The first block's turn went to the node-address request.
    EXPECT_EQ(commandOf(frames[1]), plainHex("0101 82 0002 00 0002"));
    EXPECT_EQ(commandOf(frames[2]), plainHex("0101 82 0004 00 0001"));
    EXPECT_EQ(commandOf(frames[3]), plainHex("0101 82 0000 00 0002"));
}

TEST_F(PanelReadTest, AHundredThousandBitsAndAllWords)
{
    start();
    ASSERT_EQ(tell("write DM_bit:6249.15 1"), "ok");
    const PanelRun bits = run("read", {"DM_bit:0.0:100000", "--words-per-frame", "499"});
    EXPECT_EQ(bits.code, 0);
    EXPECT_EQ(bits.out.size(), std::string("DM_bit:0.0:100000 =\n").size() + 2 * 100000);
    EXPECT_EQ(bits.out.substr(bits.out.size() - 5), " 0 1\n");
    ASSERT_EQ(tell("write DM:32767 7"), "ok");
    const PanelRun words = run("read", {"DM:0:32768", "--words-per-frame", "499"});
    EXPECT_EQ(words.code, 0);
    EXPECT_EQ(words.out.substr(words.out.size() - 5), " 0 7\n");
}

TEST_F(PanelReadTest, TheLongestFrame)
{
    start();
    ASSERT_EQ(tell("write DM:998 5"), "ok");
    const PanelRun read = run("read", {"DM:0:999", "--words-per-frame", "999"});
    EXPECT_EQ(read.code, 0) << read.err;
    EXPECT_EQ(read.out.substr(read.out.size() - 5), " 0 5\n");
    EXPECT_EQ(tell("stats"), "ok connections=1 requests=2 replies=2");
}

TEST_F(PanelReadTest, TraceShowsBothDirections)
{
    start();
    ASSERT_EQ(tell("write DM:0 258"), "ok");
    const PanelRun read = run("read", {"DM:0", "--trace"});
    const Words expected = {
        "> 46 49 4E 53 00 00 00 0C 00 00 00 00 00 00 00 00 00 00 00 00",
        "< 46 49 4E 53 00 00 00 10 00 00 00 01 00 00 00 00 00 00 00 EF 00 00 00 01",
        "connected to " + host() + ": this node 239, PLC node 1",
        "> 46 49 4E 53 00 00 00 1A 00 00 00 02 00 00 00 00 80 00 02 00 01 00 00 EF 00 01 01 01 82 00 00 00 00 01",
        "< 46 49 4E 53 00 00 00 18 00 00 00 02 00 00 00 00 C0 00 02 00 EF 00 00 01 00 01 01 01 00 00 01 02"};
    EXPECT_EQ(linesOf(read.err), expected);
}

TEST_F(PanelReadTest, BeyondTheRangeNothingIsSent)
{
    start();
    expectRefused(arguments("read", {"DM:32768"}),
                  "fins_panel: 'DM:32768' lies outside the range 0 to 32767, written ddddd");
    expectRefused(arguments("read", {"DM:0", "WR:511:2"}),
                  "fins_panel: 'WR:511:2' lies outside the range 0 to 511, written ddd");
    expectRefused(arguments("watch", {"CIO_bit:6143.16"}),
                  "fins_panel: 'CIO_bit:6143.16': the address is malformed; the range is 0.0 to 6143.15, written "
                  "ddddd.DD (DD:0~15)");
    expectRefused(arguments("write", {"DM:0=1", "DM:32767:2=1,2"}),
                  "fins_panel: 'DM:32767:2' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
    EXPECT_EQ(tell("read DM:0"), "ok 0");
}

TEST_F(PanelReadTest, RefusedReadIsSaidOnceAndEndsWith1)
{
    start({"--fault", "end-code=1103"});
    const PanelRun read = run("read", {"DM:4:2"});
    EXPECT_EQ(read.code, 1);
    EXPECT_EQ(read.out, "");
    EXPECT_EQ(read.err,
              connectedLine() + "the PLC refuses to read DM:4:2: 1103 (the first address is out of range)\n");
}

// Of two items one is refused: the other one's value is still shown.
TEST(PanelRead, OneRefusedItemOfTwo)
{
    PlayedPlc plc;
    const auto panel = startPanel({"read", plc.host(), "DM:0", "HR:0"});
    const auto link = plc.accept();
    link->exchangeNodes();
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0007");
    EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 1101");
    EXPECT_EQ(panel->wait(), 1);
    EXPECT_EQ(panel->output(), "DM:0 = 7\n");
    EXPECT_NE(panel->errors().find("the PLC refuses to read HR:0: 1101 (there is no such memory area)\n"),
              std::string::npos) << panel->errors();
}

TEST_F(PanelReadTest, NamesAreResolved)
{
    addrinfo wanted = {};
    wanted.ai_family = AF_INET;
    addrinfo *found = nullptr;
    ASSERT_EQ(getaddrinfo("localhost", nullptr, &wanted, &found), 0)
        << "this machine cannot resolve the name localhost: add the line '127.0.0.1 localhost' to /etc/hosts";
    freeaddrinfo(found);
    start();
    ASSERT_EQ(tell("write DM:0 3"), "ok");
    EXPECT_EQ(runPanel({"read", "localhost:" + std::to_string(port), "DM:0"}).out, "DM:0 = 3\n");
}

TEST(PanelRead, NameThatDoesNotResolve)
{
    const PanelRun run = runPanel({"read", "no..such..host", "DM:0", "--give-up", "0.1"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.out, "");
    const Words lines = linesOf(run.err);
    ASSERT_GE(lines.size(), 2u) << run.err;
    const std::string head = "no link to no..such..host:9600: ";
    EXPECT_EQ(lines[0].find(head + "cannot resolve the host name: "), 0u) << run.err;
    const std::string reason = lines[0].substr(head.size());
    EXPECT_EQ(lines.back(), noAnswerLine("no..such..host:9600", 100,
                                         "there is no host named 'no..such..host': "
                                             + reason.substr(0, reason.find(", retrying"))));
}

TEST_F(PanelReadTest, PlcThatIsNotThere)
{
    start({"--fault", "refuse"});
    for (const Words &command : {Words{"read", "DM:0"}, Words{"write", "DM:0=1"}}) {
        const std::string notSent = command[0] == "write" ? "not sent: DM:0: no answer in time\n" : "";
        expectNoLink(run(command[0], {command[1], "--give-up", "0.1"}), notSent + noAnswer(100));
    }
}

TEST_F(PanelReadTest, WaitsForThePlc)
{
    start({"--fault", "refuse"});
    const auto panel = startPanel(arguments("read", {"DM:0", "--give-up", "10"}));
    EXPECT_EQ(nextMessage(*panel), "no link to " + host() + ": Connection refused, retrying in 100 ms");
    ASSERT_EQ(tell("fault refuse off"), "ok");
    EXPECT_EQ(panel->readLine(), "DM:0 = 0");
    EXPECT_EQ(panel->wait(), 0);
}

TEST_F(PanelReadTest, InterruptedReadIsNotDone)
{
    start({"--fault", "silence"});
    for (const int number : {SIGINT, SIGTERM}) {
        const auto panel = startPanel(arguments("read", {"DM:0", "--timeout", "60000", "--give-up", "60"}));
        waitForAnswer("stats", number == SIGINT ? "ok connections=1 requests=1 replies=0"
                                                : "ok connections=2 requests=2 replies=0");
        panel->sendSignal(number);
        EXPECT_EQ(panel->wait(), 3);
        EXPECT_EQ(panel->output(), "");
        EXPECT_EQ(panel->errors(), "fins_panel: interrupted\n");
    }
}

// Any station number is one of the panel only: the frames are the same.
TEST_F(PanelReadTest, StationIsThePanelsOwnMatter)
{
    start();
    ASSERT_EQ(tell("write DM:0 3"), "ok");
    for (const char *station : {"0", "255"})
        EXPECT_EQ(run("read", {"DM:0", "--station", station}).out, "DM:0 = 3\n");
}
