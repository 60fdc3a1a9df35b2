#include "panel_files.h"

#include <algorithm>

// Every write that was ordered is reported once, whichever way the command ends, and the exit code follows.

namespace {

const char STOPPED[] = ": a write before it was not done; with --keep-going it would be sent all the same";

long countOf(const PanelRun &run, const std::string &text)
{
    const Words lines = linesOf(run.err);
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string &line) { return line.find(text) != std::string::npos; });
}

} // namespace

class PanelReport : public PanelTest {};

// ---- Order ---------------------------------------------------------------------------------------------------------

TEST_F(PanelReport, WritesStopBehindARefusedOne)
{
    start({"--refuse-writes-in-run=2101", "--trace"});
    const PanelRun stopped = run("write", {"DM:3=600", "DM:100=1", "HR:0=1"});
    EXPECT_EQ(stopped.code, 3);
    EXPECT_EQ(stopped.out, "DM:3 = 0\n");
    EXPECT_EQ(stopped.err, connectedLine() + "refused: DM:3: 2101 (read-only: the area cannot be written)\n"
                               "not sent: DM:100" + STOPPED + "\nnot sent: HR:0" + STOPPED + "\n");
    const Words frames = endAndCollect()[1];
    EXPECT_EQ(std::count_if(frames.begin(), frames.end(),
                            [](const std::string &frame) { return commandOf(frame).substr(0, 4) == "0102"; }), 1);
}

TEST_F(PanelReport, KeepGoingGoesOnBehindARefusedOne)
{
    start({"--refuse-writes-in-run=2101"});
    const PanelRun write = run("write", {"DM:3=600", "DM:100=1", "--keep-going"});
    EXPECT_EQ(write.code, 1);
    EXPECT_EQ(write.err, connectedLine() + "refused: DM:3: 2101 (read-only: the area cannot be written)\n"
                                           "refused: DM:100: 2101 (read-only: the area cannot be written)\n");
}

// A PLC that the test plays: it lets the first item be read, and then gets the first write.
class PanelReportPlayed : public PlayedTest {
protected:
    PanelRun ended()
    {
        const int code = panel->wait();
        return {code, panel->output(), withoutHints(panel->errors())};
    }

    std::string lost() const { return plc.linkLost("the PLC closed the connection") + "\n"; }

    // DM:0=5 and DM:1=6, of which the first is cut off.
    void cutTheFirstOfTwo(const Words &more)
    {
        Words command = {"write", plc.host(), "DM:0=5", "DM:1=6"};
        command.insert(command.end(), more.begin(), more.end());
        begin(command);
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
        link->answer("0101 0000 0000 0000");
        EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
        acceptLink();
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
    }
};

TEST_F(PanelReportPlayed, WritesStopBehindAnUnknownOne)
{
    cutTheFirstOfTwo({});
    link->answer("0101 0000 0000 0000");
    const PanelRun run = ended();
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.out, "DM:0 = 0\n");
    EXPECT_EQ(run.err, connected() + lost() + "no reply to the write of DM:0; it will be read back\n" + connected()
                           + "unconfirmed: DM:0: the PLC holds 0 so far; the write may still arrive\nnot sent: DM:1"
                           + STOPPED + "\n");
}

TEST_F(PanelReportPlayed, KeepGoingGoesOnBehindAnUnknownOne)
{
    cutTheFirstOfTwo({"--keep-going"});
    link->answer("0101 0000 0005 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0001 00 0001 0006"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
    link->answer("0101 0000 0005 0006");
    const PanelRun run = ended();
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "DM:0 = 5\nDM:1 = 6\n");
    EXPECT_EQ(countOf(run, "unconfirmed: "), 0) << run.err;
}

// The first try may have been obeyed, whatever the PLC says of the second.
TEST_F(PanelReportPlayed, ARefusedRepetitionIsReadBack)
{
    begin({"write", plc.host(), "DM:0=5", "--timeout", "200"});
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    link->answer("0102 2101");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0000");
    const PanelRun run = ended();
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err, connected() + "unconfirmed: DM:0: the PLC holds 0 so far; the write may still arrive\n");
}

TEST_F(PanelReportPlayed, AcknowledgedAndNotToBeReadBackIsUnconfirmed)
{
    begin({"write", plc.host(), "DM:0=5", "--timeout", "200", "--retries", "1"});
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 2108");
    const PanelRun run = ended();
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(countOf(run, "unconfirmed: DM:0: the PLC acknowledged the write, and refuses to read it back"), 1)
        << run.err;
}

// The tag that the user typed, not the address behind it.
TEST_F(PanelReportPlayed, TheTagIsNamed)
{
    const PanelFiles files;
    const std::string tags = files.put("tags.toml", "[tags]\nLevel = { type = \"DM\", address = 0 }\n"
                                                    "Pump = { type = \"DM\", address = 1 }\n");
    begin({"--project", tags, "write", plc.host(), "Level=5", "Pump=6", "--timeout", "60000"});
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
    link->answer("0101 0000 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    panel->sendSignal(SIGINT);
    const PanelRun run = ended();
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err, connected() + "unconfirmed: Level: no reply to the write, and it was not read back\n"
                                     "not sent: Pump: interrupted\nfins_panel: interrupted\n");
}

// ---- Ways out of watch ---------------------------------------------------------------------------------------------

struct WayOut {
    const char *name;
    Words       options;
    int         signal; // 0: none
};

void PrintTo(const WayOut &row, std::ostream *out) { *out << row.name; }

class PanelWatchWayOut : public PanelReportPlayed, public ::testing::WithParamInterface<WayOut> {};

INSTANTIATE_TEST_SUITE_P(Ways, PanelWatchWayOut,
                         ::testing::Values(WayOut{"time", {"--for", "0.6"}, 0},
                                           WayOut{"changes", {"--changes", "1", "--for", "2"}, 0},
                                           WayOut{"sigint", {}, SIGINT}, WayOut{"sigterm", {}, SIGTERM},
                                           WayOut{"sighup", {}, SIGHUP}),
                         [](const auto &row) { return std::string(row.param.name); });

// A write without a reply, and one behind it.
TEST_P(PanelWatchWayOut, ReportsBothWrites)
{
    Words command = {"watch", plc.host(), "DM:0", "--write", "DM:0=5", "--write", "DM:9=6", "--timeout", "60000"};
    command.insert(command.end(), GetParam().options.begin(), GetParam().options.end());
    begin(command);
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 000A"));
    link->answer("0101 0000 0000 0000 0000 0000 0000 0000 0000 0000 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    if (GetParam().signal != 0)
        panel->sendSignal(GetParam().signal);
    const PanelRun run = ended();
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(countOf(run, "unconfirmed: DM:0: no reply to the write, and it was not read back"), 1) << run.err;
    EXPECT_EQ(countOf(run, "not sent: DM:9: "), 1) << run.err;
    EXPECT_EQ(countOf(run, "DM:0"), 1) << run.err;
}

TEST_F(PanelReport, WatchWaitsForItsWritesBeforeTheChanges)
{
    start();
    const PanelRun watched = run("watch", {"DM:0", "--write", "DM:0=5", "--write", "DM:9=6", "--changes", "1"});
    EXPECT_EQ(watched.code, 0);
    EXPECT_EQ(watched.err, connectedLine() + "done: DM:0 = 5\ndone: DM:9 = 6\n");
    EXPECT_EQ(tell("read DM:9"), "ok 6");
}

TEST_F(PanelReport, WatchReportsWhatIsNeverReached)
{
    PlayedPlc nobody;
    nobody.stopListening();
    const PanelRun watched = runPanel({"watch", nobody.host(), "DM:0", "--write", "DM:0=5", "--for", "0.3"});
    EXPECT_EQ(watched.code, 3);
    EXPECT_EQ(countOf(watched, "not sent: DM:0: no answer in time"), 1) << watched.err;
}

TEST_F(PanelReport, ARecipeThatNeverReachesThePlcIsNotSent)
{
    PlayedPlc nobody;
    nobody.stopListening();
    const PanelFiles files;
    const std::string recipe = files.put("recipe.txt", "DM:0 = 5\nHR:1 = 6\n");
    const PanelRun write = runPanel({"recipe", "write", nobody.host(), recipe, "--give-up", "0.5"});
    EXPECT_EQ(write.code, 3);
    EXPECT_EQ(countOf(write, "not sent: DM:0: no answer in time"), 1) << write.err;
    EXPECT_EQ(countOf(write, "not sent: HR:1: no answer in time"), 1) << write.err;
    EXPECT_EQ(countOf(write, "unconfirmed"), 0) << write.err;
}

// ---- Values and their quality --------------------------------------------------------------------------------------

// The old value is never good once the link was lost: the read that makes it good brings its value in the same line.
TEST_F(PanelReportPlayed, AReconnectBringsValueAndQualityInOneLine)
{
    begin({"watch", plc.host(), "DM:0", "--csv"});
    link->command();
    link->answer("0101 0000 0001");
    acceptLink();
    link->command();
    link->answer("0101 0000 0002");
    std::string lines = panel->readLine() + "\n";
    for (int i = 0; i < 3; ++i) {
        const std::string line = panel->readLine();
        lines += line.substr(line.find(',') + 1) + "\n";
    }
    EXPECT_EQ(lines, "time,tag,item,event,old,value,unit,quality\nDM:0,DM:0,first,,1,,good\n"
                     "DM:0,DM:0,quality,1,1,,last known\nDM:0,DM:0,change,1,2,,good\n");
}

// Pending until it was read; then the value and its quality in one line.
TEST_F(PanelReportPlayed, AWrittenValueIsGoodWhenItWasRead)
{
    begin({"watch", plc.host(), "DM:0", "--csv", "--write", "DM:0=5"});
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0001");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0005");
    std::string lines = panel->readLine() + "\n";
    for (int i = 0; i < 2; ++i) {
        const std::string line = panel->readLine();
        lines += line.substr(line.find(',') + 1) + "\n";
    }
    EXPECT_EQ(lines, "time,tag,item,event,old,value,unit,quality\nDM:0,DM:0,first,,1,,write pending\n"
                     "DM:0,DM:0,change,1,5,,good\n");
}

// Whoever reads the lines goes away while a write waits for its reply.
TEST_F(PanelReportPlayed, WatchReportsItsWritesWhenNobodyReadsItsLines)
{
    begin({"watch", plc.host(), "DM:0", "--write", "DM:1=5", "--timeout", "300", "--for", "60"});
    panel->closeOutput();
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0002"));
    link->answer("0101 0000 0007 0000");
    const PanelRun run = ended();
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(countOf(run, "not sent: DM:1: interrupted"), 1) << run.err;
}

// ---- Time limits ---------------------------------------------------------------------------------------------------

// The PLC of these tests says nothing, and the timeout lies far beyond the deadline of every wait of the tests.
TEST(PanelLimits, GiveUpEndsAWaitForAReply)
{
    PlayedPlc plc;
    const auto panel = startPanel({"read", plc.host(), "DM:0", "--timeout", "60000", "--give-up", "0.5"});
    const auto link = plc.accept();
    EXPECT_EQ(panel->wait(), 3);
}

TEST(PanelLimits, ForEndsAWaitForAReply)
{
    PlayedPlc plc;
    const auto panel = startPanel({"watch", plc.host(), "DM:0", "--timeout", "60000", "--for", "0.5"});
    const auto link = plc.accept();
    EXPECT_EQ(panel->wait(), 3);
}
