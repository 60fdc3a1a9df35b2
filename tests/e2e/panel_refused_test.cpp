#include "panel_run.h"

#include <algorithm>

// Blocks that the PLC refuses to read: they are left out of the poll and tried again, and all others go on.

namespace {

const char REFUSED_HR[] = "the PLC refuses to read HR:100: 1103 (the first address is out of range)";

// A JSON line of `watch` behind its time.
std::string eventOf(const std::string &line)
{
    const std::string::size_type at = line.find("\"tag\"");
    return at == std::string::npos ? "no event: " + line : line.substr(at);
}

std::string event(const std::string &item, const std::string &kind, const std::string &old, const std::string &value,
                  const std::string &quality)
{
    return "\"tag\":\"" + item + "\",\"item\":\"" + item + "\",\"event\":\"" + kind + "\",\"old\":" + old
           + ",\"value\":" + value + ",\"unit\":\"\",\"quality\":\"" + quality + "\"}";
}

// ---- Against the simulator, whose small profile has no HR:100 and no DM:5000 -------------------------------------

class PanelRefusedTest : public PanelTest {
protected:
    void startSmall() { start({"--profile", "small"}); }
};

TEST_F(PanelRefusedTest, AllOthersGoOnOnTheSameLink)
{
    startSmall();
    const auto panel = watch({"CIO:0", "DM:0", "HR:100", "--interval", "1", "--json", "--retry-refused", "0.03"});
    Words first = {eventOf(panel->readLine()), eventOf(panel->readLine()), eventOf(panel->readLine())};
    std::sort(first.begin(), first.end());
    EXPECT_EQ(first, (Words{event("CIO:0", "first", "null", "0", "good"), event("DM:0", "first", "null", "0", "good"),
                            event("HR:100", "quality", "null", "null", "refused")}));
    for (int i = 1; i <= 40; ++i) {
        for (const char *item : {"CIO:0", "DM:0"}) {
            ASSERT_EQ(tell("write " + std::string(item) + " " + std::to_string(i)), "ok");
            EXPECT_EQ(eventOf(panel->readLine()),
                      event(item, "change", std::to_string(i - 1), std::to_string(i), "good"));
        }
    }
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
    EXPECT_EQ(withoutHints(panel->errors()), connectedLine() + REFUSED_HR + "\n");
    EXPECT_EQ(tell("stats").find("ok connections=1 "), 0u);
}

TEST_F(PanelRefusedTest, TheRemedyIsSaidOnceToo)
{
    startSmall();
    const auto panel = watch({"DM:0", "HR:100", "--interval", "1", "--retry-refused", "0.03"});
    EXPECT_EQ(panel->waitForErrorLine("the PLC refuses"), REFUSED_HR);
    EXPECT_EQ(panel->readErrorLine(),
              "hint: this PLC has less memory than the largest one; compare the address with its manual");
    EXPECT_EQ(nextChange(*panel), "DM:0 - 0");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->errors(), "");
}

// A value that was never received ends the watch with 1, as any refusal does.
TEST_F(PanelRefusedTest, WatchEndsWith1)
{
    startSmall();
    const PanelRun ended = run("watch", {"DM:0", "HR:100", "--for", "0.5", "--interval", "1"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(changeOf(linesOf(ended.out).at(0)), "DM:0 - 0");
    EXPECT_EQ(ended.err, connectedLine() + REFUSED_HR + "\n");
}

TEST_F(PanelRefusedTest, ReadShowsAllOthersAndEndsWith1)
{
    startSmall();
    ASSERT_EQ(tell("write DM:7 4711"), "ok");
    ASSERT_EQ(tell("write WR:1 5"), "ok");
    const PanelRun ended = run("read", {"WR:1", "HR:100", "DM:7", "DM:5000", "C:0"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "WR:1 = 5\nDM:7 = 4711\nC:0 = 0\n");
    Words messages = linesOf(ended.err);
    std::sort(messages.begin(), messages.end());
    EXPECT_EQ(messages, (Words{connectedLine().substr(0, connectedLine().size() - 1),
                               "the PLC refuses to read DM:5000: 1103 (the first address is out of range)",
                               REFUSED_HR}));
    EXPECT_EQ(tell("stats").find("ok connections=1 "), 0u);
}

// The refused block has its turn before the first write.
TEST_F(PanelRefusedTest, WriteReadsAllOthersBackAndEndsWith1)
{
    startSmall();
    const PanelRun ended = run("write", {"HR:0=5", "DM:5000=6"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "HR:0 = 5\n");
    EXPECT_EQ(ended.err, connectedLine() + "the PLC refuses to read DM:5000: 1103 (the first address is out of range)\n"
                             "refused: DM:5000: 1103 (the first address is out of range)\n");
    EXPECT_EQ(tell("read HR:0"), "ok 5");
    EXPECT_EQ(tell("stats").find("ok connections=1 "), 0u);
}

// Nothing is left to poll: the link stays, and everything comes back.
TEST_F(PanelRefusedTest, EverythingRefused)
{
    start();
    const auto panel = watch({"DM:0", "CIO:0", "--interval", "1", "--json", "--retry-refused", "0.05"});
    panel->waitForLine("\"first\"");
    panel->waitForLine("\"first\"");
    ASSERT_EQ(tell("fault end-code=2201"), "ok");
    Words refused = {eventOf(panel->readLine()), eventOf(panel->readLine())};
    std::sort(refused.begin(), refused.end());
    EXPECT_EQ(refused, (Words{event("CIO:0", "quality", "0", "0", "refused"),
                              event("DM:0", "quality", "0", "0", "refused")}));
    panel->waitForErrorLine("the PLC refuses to read ");
    panel->waitForErrorLine("the PLC refuses to read ");
    ASSERT_EQ(tell("faults off"), "ok");
    panel->waitForErrorLine(" can be read again");
    Words good = {eventOf(panel->readLine()), eventOf(panel->readLine())};
    std::sort(good.begin(), good.end());
    EXPECT_EQ(good, (Words{event("CIO:0", "quality", "0", "0", "good"), event("DM:0", "quality", "0", "0", "good")}));
    ASSERT_EQ(tell("write DM:0 3"), "ok");
    EXPECT_EQ(eventOf(panel->readLine()), event("DM:0", "change", "0", "3", "good"));
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(tell("stats").find("ok connections=1 "), 0u);
}

// A PLC that is busy is asked again at once, as after a missing reply.
TEST_F(PanelRefusedTest, ABusyPlcLeavesNothingOut)
{
    start();
    const auto panel = watch({"DM:0", "--interval", "1", "--json", "--retries", "3"});
    EXPECT_EQ(eventOf(panel->readLine()), event("DM:0", "first", "null", "0", "good"));
    ASSERT_EQ(tell("fault end-code=0204#2"), "ok");
    ASSERT_EQ(tell("write DM:0 1"), "ok");
    EXPECT_EQ(eventOf(panel->readLine()), event("DM:0", "change", "0", "1", "good"));
    ASSERT_EQ(tell("fault end-code=0204#3"), "ok");
    EXPECT_EQ(eventOf(panel->readLine()), event("DM:0", "quality", "1", "1", "refused"));
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(withoutHints(panel->errors()),
              connectedLine() + "the PLC refuses to read DM:0: 0204 (the destination node is busy)\n");
}

// ---- Blocks of which only a part is refused; the small profile's DM ends at 2047 ----------------------------------

// Items that the driver reads in one request.
TEST_F(PanelRefusedTest, NeighboursAreRead)
{
    startSmall();
    ASSERT_EQ(tell("write DM:2040 7"), "ok");
    const PanelRun ended = run("read", {"DM:2040", "DM:2050"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "DM:2040 = 7\n");
    EXPECT_EQ(ended.err,
              connectedLine() + "the PLC refuses to read DM:2050: 1103 (the first address is out of range)\n");
    EXPECT_EQ(tell("stats").find("ok connections=1 requests=4 "), 0u); // node addresses, the block, its halves
}

// The node addresses, the block of 64 words, and two requests for each of six halvings.
TEST_F(PanelRefusedTest, OneWordOf64IsFoundWithTwelveRequestsMore)
{
    startSmall();
    ASSERT_EQ(tell("write DM:2047 9"), "ok");
    Words items;
    for (int word = 1985; word <= 2048; ++word)
        items.push_back("DM:" + std::to_string(word));
    const PanelRun ended = run("read", items);
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(linesOf(ended.out).size(), 63u);
    EXPECT_EQ(linesOf(ended.out).back(), "DM:2047 = 9");
    EXPECT_EQ(ended.err,
              connectedLine() + "the PLC refuses to read DM:2048: 1103 (the first address is out of range)\n");
    EXPECT_EQ(tell("stats").find("ok connections=1 requests=14 "), 0u) << tell("stats");
}

TEST_F(PanelRefusedTest, AValueWithARefusedWordIsRefused)
{
    startSmall();
    ASSERT_EQ(tell("write DM:2045 1 2 3"), "ok");
    const PanelRun ended = run("read", {"DM:2045/u32", "DM:2047/u32"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "DM:2045/u32 = 131073\n");
    EXPECT_EQ(ended.err,
              connectedLine() + "the PLC refuses to read DM:2048: 1103 (the first address is out of range)\n");
}

TEST_F(PanelRefusedTest, WordsThatTouchAreSaidOnce)
{
    startSmall();
    const auto panel = watch({"DM:2046:5", "--interval", "1", "--json"});
    Words events;
    for (int i = 0; i < 5; ++i)
        events.push_back(eventOf(panel->readLine()));
    std::sort(events.begin(), events.end());
    EXPECT_EQ(events, (Words{event("DM:2046", "first", "null", "0", "good"),
                             event("DM:2047", "first", "null", "0", "good"),
                             event("DM:2048", "quality", "null", "null", "refused"),
                             event("DM:2049", "quality", "null", "null", "refused"),
                             event("DM:2050", "quality", "null", "null", "refused")}));
    ASSERT_EQ(tell("write DM:2047 5"), "ok");
    EXPECT_EQ(eventOf(panel->readLine()), event("DM:2047", "change", "0", "5", "good"));
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
    EXPECT_EQ(panel->errors(),
              connectedLine() + "the PLC refuses to read DM:2048:3: 1103 (the first address is out of range)\n"
                                "hint: this PLC has less memory than the largest one; compare the address with its "
                                "manual\n");
}

// What is written while the poll takes turns is shown as any other change.
TEST_F(PanelRefusedTest, AWriteDuringTheSearchIsShown)
{
    startSmall();
    const auto panel = watch({"DM:2020", "DM:2030", "DM:2040", "DM:2050", "--interval", "1", "--write", "DM:2030=6",
                              "--write", "DM:2020=5"});
    EXPECT_EQ(nextChange(*panel), "DM:2020 - 0");
    panel->waitForLine("DM:2020 0 5");
    EXPECT_EQ(interrupt(*panel), 0);
}

// ---- Against a PLC that the test plays ---------------------------------------------------------------------------

class PanelPlayedRefusalTest : public PlayedTest {
protected:
    // A watch that leaves a block out after `retries` refusals.
    void startWatch(Words more, int retries = 1)
    {
        more.insert(more.end(), {"--retries", std::to_string(retries)});
        Words all = {"watch", plc.host(), "--interval", "0"};
        all.insert(all.end(), more.begin(), more.end());
        begin(all);
    }

    // Answers reads of DM:0 with 7 until another command comes, and returns that one.
    std::string nextBesidesDm()
    {
        std::string command = link->command();
        for (; command == plainHex("0101 82 0000 00 0001"); command = link->command())
            link->answer("0101 0000 0007");
        return command;
    }
};

TEST_F(PanelPlayedRefusalTest, ABlockThatIsMendedComesBack)
{
    startWatch({"DM:0", "HR:0", "--retry-refused", "0.05"});
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(nextBesidesDm(), plainHex("0101 B2 0000 00 0001"));
        link->answer("0101 1101");
    }
    ASSERT_EQ(nextBesidesDm(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 0000 0005");
    EXPECT_EQ(nextChange(*panel), "DM:0 - 7");
    EXPECT_EQ(nextChange(*panel), "HR:0 - 5");
    EXPECT_EQ(nextMessage(*panel), "connected to " + plc.host() + ": this node 239, PLC node 1");
    EXPECT_EQ(nextMessage(*panel), "the PLC refuses to read HR:0: 1101 (there is no such memory area)");
    EXPECT_EQ(nextMessage(*panel), "HR:0 can be read again");
    // It is back in the poll, and a new refusal is said anew.
    ASSERT_EQ(nextBesidesDm(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 0000 0006");
    EXPECT_EQ(nextChange(*panel), "HR:0 5 6");
    ASSERT_EQ(nextBesidesDm(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 1101");
    ASSERT_EQ(nextBesidesDm(), plainHex("0101 B2 0000 00 0001"));
    EXPECT_EQ(nextMessage(*panel), "the PLC refuses to read HR:0: 1101 (there is no such memory area)");
    EXPECT_EQ(interrupt(*panel), 0);
}

// Without a refusal in between nothing but the other block is asked for.
TEST_F(PanelPlayedRefusalTest, ARefusedBlockIsNotAskedForBeforeItsTime)
{
    startWatch({"DM:0", "HR:0", "--retry-refused", "3600"});
    ASSERT_EQ(nextBesidesDm(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 1101");
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
        link->answer("0101 0000 0007");
    }
    EXPECT_EQ(interrupt(*panel), 0);
}

// A hole in the middle of a block: it is found, and no request covers it any more.
TEST_F(PanelPlayedRefusalTest, AHoleIsLeftOut)
{
    startWatch({"DM:0:2", "DM:3", "DM:9", "--retry-refused", "3600"}, 3);
    const auto serve = [this] {
        const std::string command = link->command();
        const auto first = std::stoul(command.substr(6, 4), nullptr, 16);
        const auto count = std::stoul(command.substr(12, 4), nullptr, 16);
        std::string data;
        for (std::size_t word = first; word < first + count; ++word)
            data += hexNumber(100 + word, 4);
        link->answer(first <= 3 && 3 < first + count ? "0101 1103" : "0101 0000" + data);
        return command.substr(6, 4) + " " + command.substr(12, 4);
    };
    Words asked;
    for (int i = 0; i < 5; ++i)
        asked.push_back(serve());
    EXPECT_EQ(asked, (Words{"0000 000A", "0000 0002", "0003 0007", "0003 0001", "0009 0001"}));
    Words lines;
    for (int i = 0; i < 3; ++i)
        lines.push_back(nextChange(*panel));
    EXPECT_EQ(lines, (Words{"DM:0 - 100", "DM:1 - 101", "DM:9 - 109"}));
    std::map<std::string, int> polls;
    for (int i = 0; i < 20; ++i)
        ++polls[serve()];
    EXPECT_EQ(polls, (std::map<std::string, int>{{"0000 0002", 10}, {"0009 0001", 10}}));
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(withoutHints(panel->errors()),
              connected() + "the PLC refuses to read DM:3: 1103 (the first address is out of range)\n");
}

// The driver would take a refused reply of the right length for data.
TEST_F(PanelPlayedRefusalTest, ARefusalAtFullLengthIsNoValue)
{
    startWatch({"HR:0", "--retry-refused", "0.05"});
    EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 1104 0007");
    EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 0000 0009");
    EXPECT_EQ(nextChange(*panel), "HR:0 - 9");
    EXPECT_EQ(interrupt(*panel), 0);
    EXPECT_EQ(panel->output(), "");
}

// A job that meets the missing node addresses is never sent: so no write may wait while nothing can be read.
TEST_F(PanelPlayedRefusalTest, APollHasItsTurnAfterFiveWrites)
{
    Words all = {"HR:0"};
    for (int i = 1; i <= 7; ++i)
        all.insert(all.end(), {"--write", "HR:" + std::to_string(i) + "=" + std::to_string(i)});
    startWatch(all);
    int written = 0;
    const auto expectRead = [&] {
        EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0008"));
        std::string words = "0000";
        for (int i = 1; i <= 7; ++i)
            words += hexNumber(static_cast<std::size_t>(i <= written ? i : 0), 4);
        link->answer("0101 0000" + words);
    };
    const auto expectWrite = [&] {
        ++written;
        const std::string number = hexNumber(static_cast<std::size_t>(written), 4);
        EXPECT_EQ(link->command(), plainHex("0102 B2 " + number + " 00 0001 " + number));
        link->answer("0102 0000");
    };
    expectRead();
    while (written < 5)
        expectWrite();
    expectRead();
    while (written < 7)
        expectWrite();
    expectRead();
    panel->waitForErrorLine("done: HR:7 = 7");
    EXPECT_EQ(interrupt(*panel), 0);
}

// The end of the connection is seen though nothing is sent, and the new one begins with everything.
TEST_F(PanelPlayedRefusalTest, ANewLinkTriesEverything)
{
    startWatch({"HR:0", "--retry-refused", "3600", "--csv"});
    EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 1101");
    panel->waitForLine(",HR:0,HR:0,quality,,,,refused");
    link = nullptr;
    panel->waitForLine(",HR:0,HR:0,quality,,,,not connected");
    acceptLink();
    EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 0000 0004");
    panel->waitForLine(",HR:0,HR:0,first,,4,,good");
    EXPECT_EQ(interrupt(*panel), 0);
}

// A missing reply says nothing about a block that is left out.
TEST_F(PanelPlayedRefusalTest, SilenceLeavesRefusedValuesRefused)
{
    startWatch({"DM:0", "HR:0", "--retry-refused", "3600", "--csv", "--timeout", "50"}, 100);
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0007");
    EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0001"));
    link->answer("0101 1101");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0008");
    panel->readLine();
    EXPECT_EQ(panel->readLine().substr(24), ",DM:0,DM:0,first,,7,,good");
    EXPECT_EQ(panel->readLine().substr(24), ",HR:0,HR:0,quality,,,,refused");
    EXPECT_EQ(panel->readLine().substr(24), ",DM:0,DM:0,quality,7,7,,last known");
    EXPECT_EQ(panel->readLine().substr(24), ",DM:0,DM:0,change,7,8,,good");
    EXPECT_EQ(interrupt(*panel), 0);
}

// One area of seven is refused, whichever has its turn after it.
TEST_F(PanelPlayedRefusalTest, LinkReadsEveryOtherArea)
{
    begin({"link", plc.host(), "--count", "9"});
    try {
        for (;;)
            link->answer(link->command().substr(0, 6) == "0101B3" ? "0101 1101" : "0101 0000 0000"); // B3: AR
    } catch (const std::runtime_error &) { // the panel has closed
    }
    EXPECT_EQ(panel->wait(), 1);
    EXPECT_NE(panel->output().find("read         AR:0 refused: 1101 (there is no such memory area)\n"),
              std::string::npos) << panel->output();
    EXPECT_NE(panel->output().find("round trip   9 reads of one word: "), std::string::npos) << panel->output();
    EXPECT_EQ(linesOf(panel->output()).back(), "result       the PLC answers, but refuses 1 of 7 areas");
}

} // namespace
