#include "panel_run.h"

// `write`: values, frames, read-back, refusals, mode changes, and writes whose reply never came.

class PanelWriteTest : public PanelTest {};

TEST_F(PanelWriteTest, WordsAndBitsAreReadBack)
{
    start();
    const PanelRun write = run("write", {"DM:0:5=471,0,4,500,447", "CIO_bit:0.14:3=1,0,1", "HR:7:2=1,2"});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.out, "DM:0:5 = 471 0 4 500 447\nCIO_bit:0.14:3 = 1 0 1\nHR:7:2 = 1 2\n");
    EXPECT_EQ(write.err, connectedLine());
    EXPECT_EQ(tell("read DM:0:6"), "ok 471 0 4 500 447 0");
    EXPECT_EQ(tell("read CIO:0:2"), "ok 16384 1");
    EXPECT_EQ(tell("read HR:6:4"), "ok 0 1 2 0");
}

TEST_F(PanelWriteTest, LimitsOfWords)
{
    start();
    const PanelRun write = run("write", {"DM:0:7=0,65535,-32768,0xFFFF,0x0,-1,32767"});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.out, "DM:0:7 = 0 65535 32768 65535 0 65535 32767\n");
    EXPECT_EQ(tell("read DM:0:7"), "ok 0 65535 32768 65535 0 65535 32767");
}

TEST_F(PanelWriteTest, ValuesThatNoWordOrBitHolds)
{
    start();
    for (const char *value : {"65536", "-32769", "0x10000", "1.5", "x", "", "--1", "+1", "0x", "1 "})
        expectRefused(arguments("write", {std::string("DM:0=") + value}),
                      std::string("fins_panel: 'DM:0=") + value +
                          "' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
    for (const char *value : {"2", "-1", "yes", ""})
        expectRefused(arguments("write", {std::string("DM_bit:0.0=") + value}),
                      std::string("fins_panel: 'DM_bit:0.0=") + value + "' is not a bit value; use 0 or 1, OFF or ON");
    expectRefused(arguments("write", {"DM:0:3=1,,2"}),
                  "fins_panel: 'DM:0:3=' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
    expectRefused(arguments("write", {"DM:0"}),
                  "fins_panel: 'DM:0' is not a write; use ITEM=VALUE[,VALUE...], such as DM:100=5");
    expectRefused(arguments("write", {"DM:0:3=1,2"}),
                  "fins_panel: 'DM:0:3' holds 3 values, and 2 are given; write as many as it holds");
    expectRefused(arguments("write", {"DM:0:1=1,2"}),
                  "fins_panel: 'DM:0:1' holds 1 value, and 2 are given; write as many as it holds");
    expectRefused(arguments("write", {"DM:950=50,5"}),
                  "fins_panel: 'DM:950' is one value, and 2 are given; write DM:950:2 for as many, or a decimal number "
                  "with a point");
    expectRefused(arguments("watch", {"DM:950", "--write", "DM:950=50,5"}),
                  "fins_panel: 'DM:950' is one value, and 2 are given; write DM:950:2 for as many, or a decimal number "
                  "with a point");
    expectRefused(arguments("watch", {"DM:950", "--write", "DM:950:2=5"}),
                  "fins_panel: 'DM:950:2' holds 2 values, and 1 is given; write as many as it holds");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

TEST_F(PanelWriteTest, OverlappingWritesAreRefused)
{
    start();
    expectRefused(arguments("write", {"DM:0:2=1,2", "DM:1=3"}),
                  "fins_panel: DM:0:2 and DM:1 overlap; name every word and bit once");
    expectRefused(arguments("write", {"DM_bit:1.15=1", "DM:1=3"}),
                  "fins_panel: DM:1 and DM_bit:1.15 overlap; name every word and bit once");
    EXPECT_EQ(run("write", {"DM:0:2=1,2", "DM:2=3", "DM_bit:3.0=1", "DM_bit:3.1=0"}).code, 0);
    EXPECT_EQ(tell("read DM:0:4"), "ok 1 2 3 1");
}

TEST_F(PanelWriteTest, BitsOnSharedWords)
{
    start();
    ASSERT_EQ(tell("write WR:10 32769"), "ok");
    const PanelRun write = run("write", {"WR_bit:10.15=0", "WR_bit:10.3=1", "WR_bit:10.4:2=1,1"});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.out, "WR_bit:10.15 = 0\nWR_bit:10.3 = 1\nWR_bit:10.4:2 = 1 1\n");
    EXPECT_EQ(tell("read WR:9:3"), "ok 0 57 0");
}

TEST_F(PanelWriteTest, TimersAndCountersAreApart)
{
    start();
    EXPECT_EQ(run("write", {"C:5=7", "T:6=8"}).out, "C:5 = 7\nT:6 = 8\n");
    EXPECT_EQ(tell("read C:5:2"), "ok 7 0");
    EXPECT_EQ(tell("read T:5:2"), "ok 0 8");
    EXPECT_EQ(run("write", {"C:4095=9999"}).code, 0);
    EXPECT_EQ(tell("read C:4095"), "ok 9999");
    EXPECT_EQ(tell("read T:4095"), "ok 0");
}

// After the node-address request a read goes first, whatever is to be written.
TEST_F(PanelWriteTest, FramesOnTheWire)
{
    start({"--trace"});
    EXPECT_EQ(run("write", {"C:5=258"}).code, 0);
    EXPECT_EQ(run("write", {"CIO_bit:100.5=1"}).code, 0);
    const std::string read = "46494E53 0000001A 00000002 00000000  80 00 02 00 01 00 00 EF 00 ";
    const std::map<int, Words> expected = {
        {1, {plainHex(nodeRequest()), plainHex(read + "01 0101 89 8005 00 0001"),
             plainHex("46494E53 0000001C 00000002 00000000  80 00 02 00 01 00 00 EF 00 02 0102 89 8005 00 0001 0102"),
             plainHex(read + "03 0101 89 8005 00 0001")}},
        {2, {plainHex(nodeRequest()), plainHex(read + "01 0101 B0 0064 00 0001"),
             plainHex("46494E53 0000001B 00000002 00000000  80 00 02 00 01 00 00 EF 00 02 0102 30 0064 05 0001 01"),
             plainHex(read + "03 0101 B0 0064 00 0001")}}};
    EXPECT_EQ(endAndCollect(), expected);
}

TEST_F(PanelWriteTest, LongWritesGoInSeveralFrames)
{
    start({"--trace"});
    EXPECT_EQ(run("write", {"DM:10:5=1,2,3,4,5", "--words-per-frame", "2"}).out, "DM:10:5 = 1 2 3 4 5\n");
    EXPECT_EQ(tell("read DM:9:7"), "ok 0 1 2 3 4 5 0");
    Words writes;
    const Words frames = endAndCollect()[1];
    for (const std::string &frame : frames)
        if (commandOf(frame).substr(0, 4) == "0102")
            writes.push_back(commandOf(frame));
    const Words expected = {plainHex("0102 82 000A 00 0002 0001 0002"), plainHex("0102 82 000C 00 0002 0003 0004"),
                            plainHex("0102 82 000E 00 0001 0005")};
    EXPECT_EQ(writes, expected);
}

// 114 words are the most for which the length byte holds.
TEST_F(PanelWriteTest, TheLongestFrame)
{
    start();
    std::string values = "1";
    std::string held = " 1";
    for (int i = 2; i <= 115; ++i) {
        values += "," + std::to_string(i);
        held += " " + std::to_string(i);
    }
    const PanelRun write = run("write", {"DM:0:115=" + values, "--words-per-frame", "114"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "DM:0:115 =" + held + "\n");
    EXPECT_EQ(tell("read DM:0:115"), "ok" + held);
    EXPECT_EQ(write.err, connectedLine());
}

TEST_F(PanelWriteTest, ManyWritesInTheirOrder)
{
    start({"--trace"});
    Words writes;
    std::string expected;
    for (int i = 0; i < 13; ++i) {
        writes.push_back("DM:" + std::to_string(100 - 2 * i) + "=" + std::to_string(i + 1));
        expected += "DM:" + std::to_string(100 - 2 * i) + " = " + std::to_string(i + 1) + "\n";
    }
    const PanelRun write = run("write", writes);
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, expected);
    int written = 0;
    const Words frames = endAndCollect()[1];
    for (const std::string &frame : frames) {
        if (commandOf(frame).substr(0, 4) != "0102")
            continue;
        EXPECT_EQ(commandOf(frame), plainHex("0102 82 " + hexNumber(static_cast<std::size_t>(100 - 2 * written), 4) +
                                             "00 0001" + hexNumber(static_cast<std::size_t>(written + 1), 4)));
        ++written;
    }
    EXPECT_EQ(written, 13);
}

// ---- Refusals ----------------------------------------------------------------------------------------------------

class PanelRefusalTest : public PanelTest, public ::testing::WithParamInterface<const char *> {};

INSTANTIATE_TEST_SUITE_P(EndCodes, PanelRefusalTest,
                         ::testing::Values("2205 (wrong operating mode: the PLC is in MONITOR mode)",
                                           "2202 (not possible in this operating mode)",
                                           "2101 (read-only: the area cannot be written)", "7F01"),
                         [](const auto &row) { return "code" + std::string(row.param).substr(0, 4); });

// Any other refusal is final: no mode change, no second try.
TEST_P(PanelRefusalTest, IsFinal)
{
    const std::string said = GetParam();
    start({"--refuse-writes-in-run=" + said.substr(0, 4), "--trace"});
    const PanelRun write = run("write", {"DM:1=5"});
    EXPECT_EQ(write.code, 1);
    EXPECT_EQ(write.out, "DM:1 = 0\n");
    EXPECT_EQ(write.err, connectedLine() + "refused: DM:1: " + said + "\n");
    EXPECT_EQ(tell("mode"), "ok run");
    const Words frames = endAndCollect()[1];
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_EQ(commandOf(frames[2]), plainHex("0102 82 0001 00 0001 0005"));
    EXPECT_EQ(commandOf(frames[3]), plainHex("0101 82 0001 00 0001"));
}

TEST_F(PanelWriteTest, RefusedWriteOfTheValueThatIsThereIsStillRefused)
{
    start({"--refuse-writes-in-run=2101"});
    ASSERT_EQ(tell("write DM:1 5"), "ok");
    const PanelRun write = run("write", {"DM:1=5"});
    EXPECT_EQ(write.code, 1);
    EXPECT_EQ(write.out, "DM:1 = 5\n");
    EXPECT_EQ(linesOf(write.err).size(), 2u) << write.err;
}

TEST_F(PanelWriteTest, ReadsRefusedNothingIsWritten)
{
    start({"--fault", "end-code=1101"});
    const PanelRun write = run("write", {"DM:1=5"});
    EXPECT_EQ(write.code, 3);
    EXPECT_EQ(write.out, "");
    EXPECT_EQ(write.err, connectedLine() + "the PLC refuses to read DM:1: 1101 (there is no such memory area)\n" +
                             "not sent: DM:1: the PLC refuses to read what is to be written, and nothing else proves "
                             "the link\n");
    EXPECT_EQ(tell("read DM:1"), "ok 0");
}

// ---- Writes without a reply --------------------------------------------------------------------------------------

// The PLC of these tests closes the connection at the first write, and then holds `held`.
class PanelUnconfirmedWriteTest : public PlayedTest {
protected:
    void cutAtFirstWrite(const std::string &held)
    {
        begin({"write", plc.host(), "DM:0=5"});
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
        link->answer("0101 0000 0000");
        EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
        acceptLink();
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
        link->answer("0101 0000 " + held);
        code = panel->wait();
    }

    std::string expectedErrors(const std::string &last) const
    {
        return connected() + plc.linkLost("the PLC closed the connection") +
               "\nno reply to the write of DM:0; it will be read back\n" + connected() + last;
    }

    int code = -1;
};

TEST_F(PanelUnconfirmedWriteTest, HasReachedThePlc)
{
    cutAtFirstWrite("0005");
    EXPECT_EQ(code, 0);
    EXPECT_EQ(panel->output(), "DM:0 = 5\n");
    EXPECT_EQ(panel->errors(), expectedErrors(""));
}

TEST_F(PanelUnconfirmedWriteTest, HasNotReachedThePlc)
{
    cutAtFirstWrite("0000");
    EXPECT_EQ(code, 3);
    EXPECT_EQ(panel->output(), "DM:0 = 0\n");
    EXPECT_EQ(panel->errors(),
              expectedErrors("unconfirmed: DM:0: the PLC holds 0 so far; the write may still arrive\n"));
}

TEST(PanelWrite, AcknowledgedButNotHeld)
{
    PlayedPlc plc;
    const auto panel = startPanel({"write", plc.host(), "DM:0:2=5,6"});
    const auto link = plc.accept();
    link->exchangeNodes();
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
    link->answer("0101 0000 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0002 0005 0006"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
    link->answer("0101 0000 0005 0007");
    EXPECT_EQ(panel->wait(), 1);
    EXPECT_EQ(panel->output(), "DM:0:2 = 5 7\n");
    EXPECT_EQ(nextMessage(*panel), "connected to " + plc.host() + ": this node 239, PLC node 1");
    EXPECT_EQ(nextMessage(*panel), "differs: DM:0:2 was to be 5 6, the PLC holds 5 7");
}

// The PLC goes away at the first of two writes and does not come back.
TEST(PanelWrite, OpenWritesAreNamedAtTheEnd)
{
    PlayedPlc plc;
    const auto panel = startPanel({"write", plc.host(), "DM:0=5", "HR:0=6", "--give-up", "1.5"});
    std::unique_ptr<PlayedLink> link = plc.accept();
    link->exchangeNodes();
    link->command();
    link->answer("0101 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    plc.stopListening();
    link = nullptr;
    EXPECT_EQ(panel->wait(), 3);
    EXPECT_EQ(panel->output(), "");
    const Words lines = linesOf(withoutHints(panel->errors()));
    ASSERT_GE(lines.size(), 6u) << panel->errors();
    EXPECT_EQ(lines[2], "no reply to the write of DM:0; it will be read back");
    EXPECT_EQ(lines[lines.size() - 3], "unconfirmed: DM:0: no reply to the write, and it was not read back");
    EXPECT_EQ(lines[lines.size() - 2],
              "not sent: HR:0: a write before it was not done; with --keep-going it would be sent all the same");
    EXPECT_EQ(lines.back(), noAnswerLine(plc.host(), 1500, nothingListens(plc.port)));
}

// The PLC acknowledges, and then goes away before anything is read back.
TEST(PanelWrite, AcknowledgedButNeverReadBack)
{
    PlayedPlc plc;
    const auto panel = startPanel({"write", plc.host(), "DM:0=5", "--give-up", "1.5"});
    std::unique_ptr<PlayedLink> link = plc.accept();
    link->exchangeNodes();
    link->command();
    link->answer("0101 0000 0000");
    link->command();
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    plc.stopListening();
    link = nullptr;
    EXPECT_EQ(panel->wait(), 3);
    EXPECT_EQ(panel->output(), "");
    EXPECT_NE(panel->errors().find("\nunconfirmed: DM:0: the PLC acknowledged the write, and it was not read back\n"),
              std::string::npos) << panel->errors();
}
