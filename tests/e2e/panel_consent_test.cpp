#include "panel_files.h"

#include <algorithm>

// The PLC's operating mode is changed only where the user allows it, and what became of the change is said.

namespace {

const char IN_PROGRAM[] = "2203 (wrong operating mode: the PLC is in PROGRAM mode)";
const char OPTION[]     = "; the PLC would have to be in MONITOR mode, for which --allow-mode-change asks it";
const char NOT_SENT[]   = ": a write before it was not done; with --keep-going it would be sent all the same";

bool isRun(const std::string &frame) { return commandOf(frame).substr(0, 4) == "0401"; }

std::size_t countRuns(const std::map<int, Words> &received)
{
    std::size_t runs = 0;
    for (const auto &[connection, frames] : received)
        runs += static_cast<std::size_t>(std::count_if(frames.begin(), frames.end(), isRun));
    return runs;
}

struct ModeRow {
    const char *name;
    const char *mode;
    const char *refusal;
    const char *said;
};

void PrintTo(const ModeRow &row, std::ostream *out) { *out << row.name; }

const auto MODES = ::testing::Values(ModeRow{"program2203", "program", "--refuse-writes-in-program", IN_PROGRAM},
                                     ModeRow{"program2204", "program", "--refuse-writes-in-program=2204",
                                             "2204 (wrong operating mode: the PLC is in DEBUG mode)"},
                                     ModeRow{"run2206", "run", "--refuse-writes-in-run",
                                             "2206 (wrong operating mode: the PLC is in RUN mode)"});

} // namespace

class PanelConsent : public PanelTest {
protected:
    void startInProgram(Words more = {})
    {
        more.insert(more.begin(), {"--mode", "program", "--refuse-writes-in-program", "--trace"});
        start(more);
    }

    std::string file(const std::string &text) const { return files.put("recipe.txt", text); }

    PanelFiles files;
};

class PanelConsentModes : public PanelConsent, public ::testing::WithParamInterface<ModeRow> {};

INSTANTIATE_TEST_SUITE_P(EndCodes, PanelConsentModes, MODES,
                         [](const auto &row) { return std::string(row.param.name); });

// One line says the mode that is needed and the option; nothing but reads and that one write goes out.
TEST_P(PanelConsentModes, WithoutConsentTheWriteIsRefusedAndTheModeStays)
{
    start({"--mode", GetParam().mode, GetParam().refusal, "--trace"});
    const PanelRun write = run("write", {"DM:1=5", "DM:2=6"});
    EXPECT_EQ(write.code, 3);
    EXPECT_EQ(write.out, "DM:1 = 0\n");
    EXPECT_EQ(write.err, connectedLine() + "refused: DM:1: " + GetParam().said + OPTION + "\nnot sent: DM:2" + NOT_SENT
                             + "\n");
    EXPECT_EQ(tell("mode"), std::string("ok ") + GetParam().mode);
    EXPECT_EQ(tell("read DM:1:2"), "ok 0 0");
    const std::map<int, Words> received = endAndCollect();
    ASSERT_EQ(received.size(), 1u);
    ASSERT_EQ(received.at(1).size(), 4u);
    EXPECT_EQ(commandOf(received.at(1)[1]), plainHex("0101 82 0001 00 0002"));
    EXPECT_EQ(commandOf(received.at(1)[2]), plainHex("0102 82 0001 00 0001 0005"));
    EXPECT_EQ(commandOf(received.at(1)[3]), plainHex("0101 82 0001 00 0002"));
}

// The write goes out again on the same connection, once, and is read back.
TEST_P(PanelConsentModes, WithConsentTheWriteFollowsTheSwitch)
{
    start({"--mode", GetParam().mode, GetParam().refusal, "--trace"});
    const PanelRun write = run("write", {"DM:1=5", "DM:2=6", "--allow-mode-change"});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.out, "DM:1 = 5\nDM:2 = 6\n");
    EXPECT_EQ(write.err, connectedLine() + "asking the PLC for MONITOR mode\nthe PLC is in MONITOR mode now\n");
    EXPECT_EQ(tell("mode"), "ok monitor");
    EXPECT_EQ(tell("read DM:1:2"), "ok 5 6");
    const std::map<int, Words> received = endAndCollect();
    ASSERT_EQ(received.size(), 1u);
    Words commands;
    for (const std::string &frame : received.at(1)) {
        if (commandOf(frame).substr(0, 4) != "0101")
            commands.push_back(commandOf(frame));
    }
    const Words expected = {"", plainHex("0102 82 0001 00 0001 0005"), plainHex("0401 FFFF 02"),
                            plainHex("0102 82 0001 00 0001 0005"), plainHex("0102 82 0002 00 0001 0006")};
    EXPECT_EQ(commands, expected);
}

TEST_P(PanelConsentModes, WithConsentARecipeEndsComplete)
{
    start({"--mode", GetParam().mode, GetParam().refusal});
    const PanelRun write = run("recipe write", {file("DM:1:2 = 5 6\nDM:100 = 7\nHR:3 = 8\n"), "--allow-mode-change"});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.out, "DM:1:2 = 5 6\nDM:100 = 7\nHR:3 = 8\n");
    EXPECT_EQ(write.err, connectedLine() + "asking the PLC for MONITOR mode\nthe PLC is in MONITOR mode now\n");
    EXPECT_EQ(tell("mode"), "ok monitor");
    EXPECT_EQ(tell("read DM:1:2"), "ok 5 6");
    EXPECT_EQ(tell("read DM:100"), "ok 7");
    EXPECT_EQ(tell("read HR:3"), "ok 8");
}

TEST_P(PanelConsentModes, WithoutConsentNothingBehindTheRefusedBlockIsSent)
{
    start({"--mode", GetParam().mode, GetParam().refusal, "--trace"});
    const PanelRun write = run("recipe write", {file("HR:3 = 8\nDM:1:2 = 5 6\nDM:100 = 7\n")});
    EXPECT_EQ(write.code, 3);
    EXPECT_EQ(write.out, "HR:3 = 0\n");
    const std::string behind = ": the PLC refused what was to be written before it\n";
    EXPECT_EQ(write.err, connectedLine() + "refused: HR:3: " + GetParam().said + OPTION + "\nnot sent: DM:1:2" + behind
                             + "not sent: DM:100" + behind);
    EXPECT_EQ(tell("mode"), std::string("ok ") + GetParam().mode);
    const std::map<int, Words> received = endAndCollect();
    EXPECT_EQ(countRuns(received), 0u);
    EXPECT_EQ(std::count_if(received.at(1).begin(), received.at(1).end(),
                            [](const std::string &frame) { return commandOf(frame).substr(0, 4) == "0102"; }), 1);
}

TEST_F(PanelConsent, WatchKeepsTheModeWithoutIt)
{
    startInProgram();
    const PanelRun watched = run("watch", {"DM:1", "--write", "DM:1=5", "--for", "0.5"});
    EXPECT_EQ(watched.code, 1);
    EXPECT_EQ(watched.err, connectedLine() + "refused: DM:1: " + IN_PROGRAM + OPTION + "\n");
    EXPECT_EQ(tell("mode"), "ok program");
    EXPECT_EQ(countRuns(endAndCollect()), 0u);
}

TEST_F(PanelConsent, AProjectCanGiveIt)
{
    startInProgram();
    const std::string project = files.put("plant.toml", "[connection]\nhost = \"" + host() +
                                                            "\"\n[driver]\nallow_mode_change = true\n");
    const PanelRun write = runPanel({"--project", project, "write", "DM:1=5"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(tell("mode"), "ok monitor");
}

// With one try the driver drops its link at the refusal, and would never ask.
TEST_F(PanelConsent, NeedsTwoTries)
{
    startInProgram();
    expectRefused(arguments("write", {"DM:1=5", "--allow-mode-change", "--retries", "1"}),
                  "fins_panel: --allow-mode-change needs --retries 2 or more: with 1 the driver drops the link instead");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

TEST_F(PanelConsent, ADryRunSaysWhatAWriteMayAskFor)
{
    start();
    const PanelRun without = run("write", {"DM:1=5", "--dry-run"});
    EXPECT_EQ(without.err, "if the PLC refuses for its operating mode, it is not asked for another one; "
                           "--allow-mode-change asks for MONITOR mode\ndry run: nothing was sent\n");
    const PanelRun with = run("write", {"DM:1=5", "--dry-run", "--allow-mode-change"});
    EXPECT_EQ(with.err, "if the PLC refuses for its operating mode, it is asked for MONITOR mode, in which its program "
                        "runs (--allow-mode-change)\ndry run: nothing was sent\n");
    EXPECT_EQ(run("recipe write", {file("DM:1 = 5\n"), "--dry-run"}).err, without.err);
}

// ---- A PLC that answers RUN in its own way -------------------------------------------------------------------------

class PanelModeChange : public PlayedTest {
protected:
    // Up to the RUN command, which is left unanswered.
    void refuseTheWrite(const Words &more = {}, const std::string &endCode = "2203")
    {
        Words arguments = {"write", plc.host(), "DM:0=5", "--allow-mode-change"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        begin(arguments);
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
        link->answer("0101 0000 0000");
        EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
        link->answer("0102 " + endCode);
        EXPECT_EQ(link->command(), plainHex("0401 FFFF 02"));
    }

    void readBack()
    {
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
        link->answer("0101 0000 0000");
    }
};

TEST_F(PanelModeChange, RefusedToo)
{
    refuseTheWrite();
    link->answer("0401 2002");
    readBack();
    EXPECT_EQ(panel->wait(), 1);
    EXPECT_EQ(panel->output(), "DM:0 = 0\n");
    EXPECT_EQ(panel->errors(), connected() + "asking the PLC for MONITOR mode\n"
                                   "the PLC refuses the change to MONITOR mode: 2002 (the memory is protected)\n"
                                   "refused: DM:0: " + IN_PROGRAM + "\n");
}

// The flags of a CPU unit error come with the end code, and change nothing.
TEST_F(PanelModeChange, FlagsOfTheEndCodeDoNotHideTheMode)
{
    refuseTheWrite({}, "2243");
    link->answer("0401 0040");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0005");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 5\n");
}

// A PLC that says yes and refuses all the same is asked once.
TEST_F(PanelModeChange, IsAskedForOnce)
{
    refuseTheWrite();
    link->answer("0401 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    link->answer("0102 2203");
    readBack();
    EXPECT_EQ(panel->wait(), 1);
    EXPECT_EQ(panel->errors(), connected() + "asking the PLC for MONITOR mode\nthe PLC is in MONITOR mode now\n"
                                   "refused: DM:0: " + IN_PROGRAM + OPTION + "\n");
}

// The write goes out again on the next connection, and is not yet said to be refused.
TEST_F(PanelModeChange, IsFollowedByTheWriteWhenTheLinkIsLostBehindIt)
{
    refuseTheWrite();
    link->answer("0401 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    acceptLink();
    readBack();
    EXPECT_EQ(link->command(), plainHex("0102 82 0000 00 0001 0005"));
    link->answer("0102 0000");
    EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
    link->answer("0101 0000 0005");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0 = 5\n");
    EXPECT_EQ(panel->errors().find("refused: "), std::string::npos);
}

TEST_F(PanelModeChange, IsUnconfirmedWhenTheLinkIsLost)
{
    refuseTheWrite({"--give-up", "1"});
    plc.stopListening();
    link = nullptr;
    EXPECT_EQ(panel->wait(), 3);
    const Words lines = linesOf(panel->errors());
    ASSERT_GE(lines.size(), 4u) << panel->errors();
    EXPECT_EQ(lines[1], "asking the PLC for MONITOR mode");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "unconfirmed: the PLC may have been switched to MONITOR mode"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), std::string("refused: DM:0: ") + IN_PROGRAM), 1);
}

TEST_F(PanelModeChange, IsUnconfirmedWhenTheReplyNeverComes)
{
    refuseTheWrite({"--timeout", "200", "--retries", "2", "--give-up", "20"});
    link->awaitClose();
    acceptLink();
    readBack();
    EXPECT_EQ(panel->wait(), 3);
    const std::string errors = panel->errors();
    EXPECT_NE(errors.find("\nunconfirmed: the PLC may have been switched to MONITOR mode\n"), std::string::npos)
        << errors;
}

TEST_F(PanelModeChange, IsUnconfirmedWhenTheProgramIsAskedToEnd)
{
    refuseTheWrite({"--timeout", "60000"});
    panel->sendSignal(SIGTERM);
    EXPECT_EQ(panel->wait(), 3);
    EXPECT_EQ(panel->errors(), connected() + "asking the PLC for MONITOR mode\n"
                                   "unconfirmed: the PLC may have been switched to MONITOR mode\n"
                                   "refused: DM:0: " + IN_PROGRAM + "\nfins_panel: interrupted\n");
}

// The first RUN may have been obeyed, whatever the PLC says of the second.
TEST_F(PanelModeChange, IsUnconfirmedWhenOnlyTheRepetitionIsRefused)
{
    refuseTheWrite({"--timeout", "200", "--retries", "3"});
    EXPECT_EQ(link->command(), plainHex("0401 FFFF 02"));
    link->answer("0401 2002");
    readBack();
    EXPECT_EQ(panel->wait(), 3);
    EXPECT_NE(panel->errors().find("\nunconfirmed: the PLC may have been switched to MONITOR mode\n"),
              std::string::npos) << panel->errors();
}
