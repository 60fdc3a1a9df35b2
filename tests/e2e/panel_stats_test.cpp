#include "panel_run.h"

// Statistics, decoded traces, hints, and messages that are counted instead of repeated.

namespace {

class StatsTest : public PanelTest {
protected:
    static std::string lineWith(const std::string &text, const std::string &start)
    {
        for (const std::string &line : linesOf(text)) {
            if (line.find(start) == 0)
                return line;
        }
        return "no line '" + start + "' in " + text;
    }
};

TEST_F(StatsTest, OfAGoodRead)
{
    start();
    const PanelRun ended = run("read", {"DM:0:10", "--stats"});
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(lineWith(ended.err, "  link"), "  link         connections 1, reconnects 0, lost or not made 0");
    EXPECT_EQ(lineWith(ended.err, "  requests     2, retries 0, ").substr(0, 29), "  requests     2, retries 0, ");
    EXPECT_EQ(lineWith(ended.err, "  replies"), "  replies      2, refused 0");
    EXPECT_EQ(lineWith(ended.err, "  rejected"), "  rejected     0, missing 0, wrong 0");
    EXPECT_EQ(lineWith(ended.err, "  words        read 10, written 0, ").substr(0, 35),
              "  words        read 10, written 0, ");
    EXPECT_EQ(lineWith(ended.err, "  round trip   min ").substr(0, 19), "  round trip   min ");
}

TEST_F(StatsTest, NotWithoutTheOption)
{
    start();
    EXPECT_EQ(run("read", {"DM:0"}).err, connectedLine());
}

TEST_F(StatsTest, MissingRepliesRetriesAndAReconnect)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"read", played.host(), "DM:0", "--timeout", "100", "--retries",
                                                       "2", "--stats"});
    {
        const std::unique_ptr<PlayedLink> link = played.accept();
        link->exchangeNodes();
        link->command();
        link->command();
        link->awaitClose();
    }
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    link->command();
    link->answer("0101 0000 002A");
    EXPECT_EQ(panel->wait(), 0);
    const std::string errors = panel->errors();
    EXPECT_EQ(lineWith(errors, "  link"), "  link         connections 2, reconnects 1, lost or not made 1");
    EXPECT_EQ(lineWith(errors, "  requests     5, retries 1, ").substr(0, 29), "  requests     5, retries 1, ");
    EXPECT_EQ(lineWith(errors, "  replies"), "  replies      3, refused 0");
    EXPECT_EQ(lineWith(errors, "  rejected"), "  rejected     2, missing 2, wrong 0");
    EXPECT_EQ(lineWith(errors, "  error        2 x no reply"), "  error        2 x no reply in time");
}

// Half a reply is a missing one, and its error says how much came.
TEST_F(StatsTest, HalfAReply)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"read", played.host(), "DM:0", "--timeout", "100", "--stats"});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    link->command();
    link->send(link->reply("0101 0000 002A").substr(0, 2 * 30));
    link->command();
    link->answer("0101 0000 002A");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 42\n");
    EXPECT_EQ(lineWith(panel->errors(), "  rejected"), "  rejected     1, missing 1, wrong 0");
    EXPECT_EQ(lineWith(panel->errors(), "  error        1 x "),
              "  error        1 x only 30 of 32 bytes of the reply came in time");
}

TEST_F(StatsTest, WrongReplies)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"read", played.host(), "DM:0", "--stats"});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    link->command();
    link->answer("0102 0000 002A");
    link->command();
    link->answer("0101 0000 002A");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(lineWith(panel->errors(), "  rejected"), "  rejected     1, missing 0, wrong 1");
}

TEST_F(StatsTest, RefusalsWithWordsAndAHint)
{
    start({"--fault", "end-code=1104"});
    const std::unique_ptr<Process> panel = startPanel(arguments("read", {"DM:0", "--stats"}));
    EXPECT_EQ(panel->wait(), 1);
    const std::string errors = panel->errors();
    EXPECT_EQ(lineWith(errors, "the PLC refuses"),
              "the PLC refuses to read DM:0: 1104 (the last address is out of range)");
    EXPECT_EQ(lineWith(errors, "hint: "),
              "hint: this PLC has less memory than the largest one; compare the address with its manual");
    EXPECT_NE(errors.find(" x the PLC refuses to read DM:0: 1104 (the last address is out of range)\n"),
              std::string::npos) << errors;
}

TEST_F(StatsTest, FinsTcpErrorsHaveAHint)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"read", played.host(), "DM:0", "--give-up", "0.1"});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->receive(20);
    link->send(nodeReply(0, 0x22));
    EXPECT_EQ(panel->waitForErrorLine("hint: "),
              "hint: add this computer's address in the unit's settings, or switch its IP address filter off");
    EXPECT_EQ(panel->wait(), 3);
}

TEST_F(StatsTest, TraceInWords)
{
    start();
    const PanelRun ended = run("read", {"DM:5", "--trace=line"});
    EXPECT_EQ(ended.err, "> node address request, client node 0\n"
                         "< node address reply, client node 239, PLC node 1\n"
                         + connectedLine()
                         + "> read DM:5 count 1, sid 1\n"
                           "< read reply, done: 0000, sid 1\n");
}

TEST_F(StatsTest, TraceFieldByField)
{
    start();
    const PanelRun ended = run("read", {"DM:5", "--trace=full"});
    EXPECT_NE(ended.err.find("> read DM:5 count 1, sid 1, 34 bytes\n"
                             "     0  46 49 4E 53  magic           FINS\n"), std::string::npos) << ended.err;
    EXPECT_NE(ended.err.find("    29  00 05        word            DM:5\n"), std::string::npos) << ended.err;
    EXPECT_NE(ended.err.find("    28  00 00        end code        done\n"), std::string::npos) << ended.err;
}

TEST_F(StatsTest, TraceStaysHexWithoutAForm)
{
    start();
    const PanelRun ended = run("read", {"--trace", "DM:5"});
    EXPECT_EQ(ended.err.find("> 46 49 4E 53 00 00 00 0C 00 00 00 00 00 00 00 00 00 00 00 00\n"), 0u) << ended.err;
}

TEST_F(StatsTest, UnknownFormOfATrace)
{
    const PanelRun ended = runPanel({"read", "127.0.0.1:1", "DM:5", "--trace=long"});
    EXPECT_EQ(ended.code, 2);
    EXPECT_EQ(ended.out, "");
    EXPECT_NE(ended.err.find("long"), std::string::npos) << ended.err;
}

TEST_F(StatsTest, ARepeatedMessageIsCounted)
{
    // The pauses are 0.1, 0.2, 0.4, 0.8, 1.6, 3.2 and then 5 s: the seventh attempt is made after 6.3 s, the eighth, with
    // the same message, after 11.3 s, or later on a busy machine; a ninth would be after 16.3 s or later.
    const HeldPort closed;
    const std::unique_ptr<Process> panel = startPanel({"read", closed.host(), "DM:0", "--give-up", "16", "--stats"});
    EXPECT_EQ(panel->wait(), 3);
    const std::string failed = "no link to " + closed.host() + ": Connection refused";
    Words expected;
    for (const char *pause : {"100", "200", "400", "800", "1600", "3200", "5000"})
        expected.push_back(failed + ", retrying in " + pause + " ms");
    expected.push_back("(the last message came 1 more time)");
    expected.push_back(noAnswerLine(closed.host(), 16000, nothingListens(closed.number())));
    Words lines = linesOf(panel->errors());
    ASSERT_EQ(lines.size(), expected.size() + 7) << panel->errors();
    EXPECT_EQ(Words(lines.begin(), lines.begin() + 9), expected);
    EXPECT_EQ(lines[10], "  link         connections 0, reconnects 0, lost or not made 8");
    EXPECT_EQ(lines.back(), "  error        8 x " + failed);
}

// Five refusals: one line and its hint, and their number at the end.
TEST_F(StatsTest, RefusalsAreCounted)
{
    PlayedPlc played;
    const std::unique_ptr<Process> panel = startPanel({"watch", played.host(), "HR:0", "--changes", "1", "--retries",
                                                       "1", "--retry-refused", "0.01", "--stats"});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    for (const char *answer : {"0101 1101", "0101 1101", "0101 1101", "0101 1101", "0101 1101", "0101 0000 0001",
                               "0101 0000 0002"}) {
        EXPECT_EQ(link->command(), plainHex("0101 B2 0000 00 0001"));
        link->answer(answer);
    }
    EXPECT_EQ(panel->wait(), 0);
    const std::string refusal = "the PLC refuses to read HR:0: 1101 (there is no such memory area)";
    const Words lines = linesOf(panel->errors());
    ASSERT_EQ(lines.size(), 4u + 8u) << panel->errors();
    EXPECT_EQ(Words(lines.begin(), lines.begin() + 4),
              (Words{"connected to " + played.host() + ": this node 239, PLC node 1", refusal,
                     "hint: this PLC may be of another series; compare its memory areas with 'fins_panel types'",
                     "HR:0 can be read again"}));
    EXPECT_EQ(lines[7], "  replies      8, refused 5");
    EXPECT_EQ(lines.back(), "  error        5 x " + refusal);
}

// Ever other end codes: the first hundred are said, of the others ten a second, and the rest is counted.
TEST_F(StatsTest, RefusalsWithoutEndAreCounted)
{
    PlayedPlc played;
    const auto begin = std::chrono::steady_clock::now();
    const std::unique_ptr<Process> panel = startPanel({"watch", played.host(), "HR:0", "--retries", "1",
                                                       "--retry-refused", "0.01"});
    const std::unique_ptr<PlayedLink> link = played.accept();
    link->exchangeNodes();
    const int CODES = 300;
    for (unsigned i = 0; i < CODES; ++i) {
        link->command();
        link->answer("0101" + hexNumber(0x1101 + i / 60 * 0x100 + i % 60, 4));
    }
    link->command(); // the panel has taken the last of them
    panel->sendSignal(SIGTERM);
    panel->wait();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    int said = 0;
    int leftOut = 0;
    for (const std::string &line : linesOf(panel->errors())) {
        said += line.find("the PLC refuses to read HR:0: ") == 0 ? 1 : 0;
        if (line.find(" left out: too many in a short time)") != std::string::npos)
            leftOut += std::stoi(line.substr(1));
    }
    EXPECT_GE(said, 99); // one of the hundred is the connection's
    EXPECT_LE(said, 100 + 10 * elapsed.count());
    EXPECT_EQ(said + leftOut, CODES);
}

} // namespace
