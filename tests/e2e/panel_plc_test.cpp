#include "panel_files.h"
#include "pty_process.h"

#include <regex>

// `plc`: what a PLC says of itself, and the few things that it can be told.

namespace {

// A command and the response to it, from the code on; "" for none.
struct Turn {
    std::string command;
    std::string response;
};

const std::string TEXT = "00000000 00000000 00000000 00000000";

std::string statusReply(const std::string &mode, const std::string &errors = "0000 0000 0000 0000",
                        const std::string &end = "0000")
{
    return "0601 " + end + (mode == "00" ? " 04 " : " 05 ") + mode + errors + TEXT;
}

class PanelPlcTest : public PlayedTest {
protected:
    // The whole dialogue of a run; each command has the service ID that the driver leaves free.
    void play(const Words &command, const std::vector<Turn> &turns)
    {
        Words words = {"plc", command.front(), plc.host(), "-q"};
        words.insert(words.end(), command.begin() + 1, command.end());
        begin(words);
        for (const Turn &turn : turns) {
            EXPECT_EQ(link->command(), plainHex(turn.command));
            EXPECT_EQ(link->sid, 0xFFu);
            if (!turn.response.empty())
                link->answer(turn.response);
        }
        code = panel->wait();
        out  = panel->output();
        err  = panel->errors();
    }

    int         code = -1;
    std::string out;
    std::string err;
};

std::string controllerReply()
{
    const std::string model   = "434A314D2D4350553133 20202020202020202020"; // CJ1M-CPU13
    const std::string version = "30342E3030" + std::string(30, '0');         // 04.00
    return "0501 0000" + model + version + std::string(80, '0') + "0014 17 8000 08 00 0000 00 0000";
}

} // namespace

TEST_F(PanelPlcTest, Info)
{
    play({"info"}, {{"0501 00", controllerReply()}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, "model        CJ1M-CPU13\n"
                   "version      04.00\n"
                   "program      20 K words\n"
                   "DM           32768 words\n"
                   "EM banks     0\n"
                   "card         none\n");
}

TEST_F(PanelPlcTest, InfoAsJson)
{
    play({"info", "--json"}, {{"0501 00", controllerReply()}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out, "{\"model\":\"CJ1M-CPU13\",\"version\":\"04.00\",\"program_kwords\":20,\"dm_words\":32768,"
                   "\"em_banks\":0,\"card_kbytes\":null}\n");
}

TEST_F(PanelPlcTest, Mode)
{
    play({"mode"}, {{"0601", statusReply("04")}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, "mode         RUN\nprogram      running\n");
}

TEST_F(PanelPlcTest, Cycle)
{
    play({"cycle", "--json"}, {{"0620 01", "0620 0000 0000028A 00000301 00000007"}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out, "{\"average_ms\":65.0,\"max_ms\":76.9,\"min_ms\":0.7}\n");
}

TEST_F(PanelPlcTest, ErrorsAndTheirLog)
{
    play({"errors"}, {{"0601", statusReply("04", "0000 0010 0000 00F7")},
                      {"2102 0000 0014", "2102 1104 0014 0001 0001 00F7 0000 15 30 01 08 26 03"}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, "fatal        none\n"
                   "non-fatal    battery error\n"
                   "error code   00F7 (battery)\n"
                   "battery      low or missing: the PLC reports a battery error\n"
                   "log          1 of at most 20 records, the oldest first\n"
                   "             2026-03-01 08:15:30  00F7 0000 (battery)\n");
}

TEST_F(PanelPlcTest, AnEmptyLogHasNoFirstRecord)
{
    play({"errors", "--json"}, {{"0601", statusReply("04")}, {"2102 0000 0014", "2102 1103"}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out, "{\"fatal\":[],\"non_fatal\":[],\"error_code\":\"0000\",\"battery_ok\":true,\"log\":[]}\n");
}

TEST_F(PanelPlcTest, ALongLogIsReadInParts)
{
    const std::string record = "00F7 0000 15 30 01 08 26 03";
    std::string twenty;
    for (int i = 0; i < 20; ++i)
        twenty += record;
    play({"errors"}, {{"0601", statusReply("04")},
                      {"2102 0000 0014", "2102 0000 0064 0015 0014" + twenty},
                      {"2102 0014 0014", "2102 1104 0064 0015 0001" + record}});
    EXPECT_EQ(code, 0);
    EXPECT_NE(out.find("log          21 of at most 100 records, the oldest first\n"), std::string::npos) << out;
}

TEST_F(PanelPlcTest, AnUnknownCommandIsOneLine)
{
    for (const auto &[endCode, words] : {std::pair("0401", "undefined command"),
                                         std::pair("0402", "the command is not supported by this model or version")}) {
        play({"cycle"}, {{"0620 01", std::string("0620") + endCode}});
        EXPECT_EQ(code, 1);
        EXPECT_EQ(out, "");
        const std::string text = std::string(endCode) + " (" + words + ")";
        EXPECT_EQ(err, "fins_panel: the PLC does not tell its cycle time: " + text + "\n");
    }
}

TEST_F(PanelPlcTest, AShortReplyIsOneLine)
{
    play({"mode"}, {{"0601", "0601 0000 05 04"}});
    EXPECT_EQ(code, 3);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "fins_panel: no answer about its operating mode: the reply makes no sense, its data are 2 bytes: "
                   "05 04\n");
}

TEST_F(PanelPlcTest, SilenceIsOneLine)
{
    play({"mode", "--timeout", "50"}, {{"0601", ""}});
    EXPECT_EQ(code, 3);
    EXPECT_EQ(err, "fins_panel: no answer about its operating mode: no reply in time\n");
}

TEST_F(PanelPlcTest, FlagsOfTheEndCodeAreANote)
{
    play({"mode"}, {{"0601", statusReply("04", "0000 0000 0000 0000", "0040")}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out, "mode         RUN\nprogram      running\n");
    EXPECT_EQ(err, "fins_panel: the PLC reports a non-fatal error of the CPU unit with its reply; "
                   "'fins_panel plc errors " + plc.host() + "' names it\n");
}

// ---- Changes -----------------------------------------------------------------------------------------------------

TEST_F(PanelPlcTest, ModeIsChangedAndReadBack)
{
    const struct {
        std::string name, request, before, after, shown;
    } rows[] = {
        {"run", "0401 FFFF 04", "00", "04", "mode         RUN\nprogram      running\n"},
        {"monitor", "0401 FFFF 02", "04", "02", "mode         MONITOR\nprogram      running\n"},
        {"program", "0402", "04", "00", "mode         PROGRAM\nprogram      stopped\n"},
    };
    for (const auto &row : rows) {
        play({"mode", row.name, "--yes"}, {{"0601", statusReply(row.before)},
                                           {row.request, row.request.substr(0, 4) + "0000"},
                                           {"0601", statusReply(row.after)}});
        EXPECT_EQ(code, 0) << row.name;
        EXPECT_EQ(err, "");
        EXPECT_EQ(out, row.shown);
    }
}

TEST_F(PanelPlcTest, NothingIsSentWhereTheModeIsTheRightOne)
{
    play({"mode", "run", "--yes"}, {{"0601", statusReply("04")}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out, "mode         RUN\nprogram      running\n");
}

// What was acknowledged is not what holds.
TEST_F(PanelPlcTest, WhatIsReadBackCounts)
{
    play({"mode", "run", "--yes"},
         {{"0601", statusReply("00")}, {"0401 FFFF 04", "0401 0000"}, {"0601", statusReply("02")}});
    EXPECT_EQ(code, 1);
    EXPECT_EQ(out, "mode         MONITOR\nprogram      running\n");
    EXPECT_EQ(err, "fins_panel: the PLC is in MONITOR mode, not in RUN mode\n");
}

TEST_F(PanelPlcTest, ARefusedChangeIsOneLine)
{
    play({"mode", "run", "--yes"}, {{"0601", statusReply("00")}, {"0401 FFFF 04", "0401 3001"}});
    EXPECT_EQ(code, 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "fins_panel: refused: the change to RUN mode: 3001 (another node holds the access right)\n");
}

// Who wanted a change is told that there was none.
TEST_F(PanelPlcTest, AChangeThatWasNeverSentIsNone)
{
    play({"mode", "run", "--yes"}, {{"0601", "0601 0401"}});
    EXPECT_EQ(code, 1);
    EXPECT_EQ(err, "fins_panel: the PLC does not tell its operating mode: 0401 (undefined command)\n"
                   "fins_panel: nothing was changed\n");
    play({"clock", "--set", "--yes", "--timeout", "50"}, {{"0701", ""}});
    EXPECT_EQ(code, 3);
    EXPECT_EQ(err, "fins_panel: no answer about its clock: no reply in time\nfins_panel: nothing was changed\n");
    play({"errors", "--clear", "--yes", "--timeout", "50"}, {{"0601", ""}});
    EXPECT_EQ(err, "fins_panel: no answer about its errors: no reply in time\nfins_panel: nothing was changed\n");
}

TEST_F(PanelPlcTest, AChangeThatWasSentMayHaveBeenDone)
{
    play({"mode", "run", "--yes"}, {{"0601", statusReply("00")}, {"0401 FFFF 04", "0401 0000"}, {"0601", "0601 0401"}});
    EXPECT_EQ(code, 1);
    EXPECT_EQ(err, "fins_panel: the PLC does not tell its operating mode: 0401 (undefined command)\n");
}

TEST_F(PanelPlcTest, ErrorsAreClearedAndReadBack)
{
    const std::string battery = "0000 0010 0000 00F7";
    play({"errors", "--clear", "--yes"}, {{"0601", statusReply("04", battery)},
                                          {"2101 FFFF", "2101 0000"},
                                          {"0601", statusReply("04")}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out, "fatal        none\nnon-fatal    none\nerror code   none\nbattery      present\n");
    play({"errors", "--clear", "--yes"}, {{"0601", statusReply("04", battery)},
                                          {"2101 FFFF", "2101 260B"},
                                          {"0601", statusReply("04", battery)}});
    EXPECT_EQ(code, 1);
    EXPECT_NE(out.find("non-fatal    battery error\n"), std::string::npos) << out;
    EXPECT_NE(err.find("refused: the clearing of the errors: 260B (the cause of the error is still there)\n"),
              std::string::npos) << err;
}

// One form for programs, whether there was something to clear or not.
TEST_F(PanelPlcTest, WhatIsLeftHasNoLog)
{
    const std::string nothing = "{\"fatal\":[],\"non_fatal\":[],\"error_code\":\"0000\",\"battery_ok\":true}\n";
    play({"errors", "--clear", "--yes", "--json"}, {{"0601", statusReply("04", "0000 8000 0000 4105")},
                                                    {"2101 FFFF", "2101 0000"},
                                                    {"0601", statusReply("04")}});
    EXPECT_EQ(out, nothing);
    play({"errors", "--clear", "--yes", "--json"}, {{"0601", statusReply("04")}});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out, nothing);
}

TEST_F(PanelPlcTest, AClockThatDoesNotTakeTheTimeDiffers)
{
    begin({"plc", "clock", plc.host(), "-q", "--set", "--yes"});
    EXPECT_EQ(link->command(), "0701");
    link->answer("0701 0000 00 01 01 00 00 00 06");
    const std::string set = link->command();
    EXPECT_TRUE(std::regex_match(set, std::regex("0702[0-9]{14}"))) << set;
    link->answer("0702 0000");
    EXPECT_EQ(link->command(), "0701");
    link->answer("0701 0000 00 01 01 00 00 00 06");
    EXPECT_EQ(panel->wait(), 1);
    EXPECT_EQ(panel->errors(), "fins_panel: the PLC's clock has not taken this computer's time\n");
}

TEST_F(PanelPlcTest, AClockThatTakesTheTimeIsShown)
{
    begin({"plc", "clock", plc.host(), "-q", "--set", "--yes"});
    EXPECT_EQ(link->command(), "0701");
    link->answer("0701 0000 00 01 01 00 00 00 06");
    const std::string set = link->command();
    link->answer("0702 0000");
    EXPECT_EQ(link->command(), "0701");
    link->answer("0701 0000" + set.substr(4));
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->errors(), "");
    const std::string date = "20" + set.substr(4, 2) + "-" + set.substr(6, 2) + "-" + set.substr(8, 2);
    EXPECT_EQ(panel->output().find("clock        " + date + " "), 0u) << panel->output();
}

TEST_F(PanelPlcTest, NothingIsChangedWithoutConsent)
{
    const std::string line = "fins_panel: what changes the PLC asks first on a terminal, and there is none; run the "
                             "command on one, or give --yes";
    expectRefused({"plc", "mode", plc.host(), "run"}, line);
    expectRefused({"plc", "clock", plc.host(), "--set"}, line);
    expectRefused({"plc", "errors", plc.host(), "--clear"}, line);
}

TEST_F(PanelPlcTest, UnknownModesAreRefused)
{
    expectRefused({"plc", "mode", plc.host(), "runn", "--yes"},
                  "fins_panel: 'runn' is no operating mode; the modes are run, monitor, program (did you mean 'run'?)");
}

TEST_F(PanelPlcTest, ASecondModeIsOneTooMany)
{
    const PanelFiles files;
    const std::string project = files.put("plant.toml", "[connection]\nhost = \"" + plc.host() + "\"\n");
    expectRefused({"plc", "mode", "-p", project, "run", "program", "--yes"},
                  "fins_panel: 'program' is one argument too many: the PLC is " + plc.host()
                      + "; give another one with --host");
    expectRefused({"plc", "info", "-p", project, plc.host()},
                  "fins_panel: '" + plc.host() + "' is one argument too many: the PLC is " + plc.host()
                      + "; give another one with --host");
}

// ---- Against the simulator ---------------------------------------------------------------------------------------

class PlcOfSimulatorTest : public PanelTest {};

TEST_F(PlcOfSimulatorTest, ModeOfAProjectsPlcIsChanged)
{
    start();
    const PanelFiles files;
    const std::string project = files.put("plant.toml", "[connection]\nhost = \"" + host() + "\"\n");
    const PanelRun stopped = runPanel({"plc", "mode", "-p", project, "program", "--yes"});
    EXPECT_EQ(stopped.code, 0) << stopped.err;
    EXPECT_EQ(stopped.out, "mode         PROGRAM\nprogram      stopped\n");
    EXPECT_EQ(tell("mode"), "ok program");
    EXPECT_EQ(runPanel({"plc", "mode", host(), "monitor", "--yes"}).code, 0);
    EXPECT_EQ(tell("mode"), "ok monitor");
}

TEST_F(PlcOfSimulatorTest, ErrorsAreToldAndCleared)
{
    start({"--stepped"}); // its clock stands where it begins
    ASSERT_EQ(tell("error fal 5 PUMP WORN").substr(0, 2), "ok");
    const PanelRun told = runPanel({"plc", "errors", host(), "-q"});
    EXPECT_EQ(told.code, 0) << told.err;
    EXPECT_EQ(told.out, "fatal        none\n"
                        "non-fatal    FAL: reported by the program\n"
                        "error code   4105 (FAL 5)\n"
                        "battery      present\n"
                        "message      PUMP WORN\n"
                        "log          1 of at most 20 records, the oldest first\n"
                        "             2000-01-01 00:00:00  4105 0000 (FAL 5)\n");
    EXPECT_EQ(runPanel({"plc", "errors", host(), "--clear", "--yes"}).code, 0);
    EXPECT_EQ(tell("error"), "ok none");
    // A battery that is low stays so, whatever is cleared.
    ASSERT_EQ(tell("battery low").substr(0, 2), "ok");
    const PanelRun kept = runPanel({"plc", "errors", host(), "-q", "--clear", "--yes"});
    EXPECT_EQ(kept.code, 1);
    EXPECT_NE(kept.out.find("battery      low or missing: the PLC reports a battery error\n"), std::string::npos)
        << kept.out;
}

TEST_F(PlcOfSimulatorTest, ClockAndCycleTimeAreTold)
{
    start({"--stepped"});
    ASSERT_EQ(tell("clock 2026-03-01 08:15:30").substr(0, 2), "ok");
    ASSERT_EQ(tell("cycle 2.5 7 1.5").substr(0, 2), "ok");
    const PanelRun time = runPanel({"plc", "clock", host(), "-q"});
    EXPECT_EQ(time.code, 0) << time.err;
    EXPECT_EQ(time.out.substr(0, time.out.find('\n')), "clock        2026-03-01 08:15:30");
    EXPECT_EQ(runPanel({"plc", "cycle", host(), "-q"}).out,
              "average      2.5 ms\nmax          7.0 ms\nmin          1.5 ms\n");
    EXPECT_EQ(runPanel({"plc", "clock", host(), "--set", "--yes"}).code, 0);
    EXPECT_EQ(tell("clock").find("2026-03-01"), std::string::npos);
}

TEST_F(PlcOfSimulatorTest, TheLinkCommandTellsThem)
{
    start({"--stepped"});
    ASSERT_EQ(tell("mode program").substr(0, 2), "ok");
    ASSERT_EQ(tell("error io-bus 3").substr(0, 2), "ok");
    const PanelRun ended = run("link", {"--count", "1"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    for (const char *line : {"mode         PROGRAM\n", "program      stopped\n", "fatal        I/O bus error\n",
                             "error code   80C3 (I/O bus 3)\n", "clock        2000-01-01 00:00:00\n"})
        EXPECT_NE(ended.out.find(line), std::string::npos) << line << ended.out;
    // In PROGRAM mode there is no cycle.
    EXPECT_NE(ended.out.find("cycle time   not known: the PLC refuses 2202 (not possible in this operating mode)\n"),
              std::string::npos) << ended.out;
}

// ---- The question on a terminal ----------------------------------------------------------------------------------

class PlcQuestionTest : public PanelTest {
protected:
    // The command up to its question.
    void ask(const std::string &command, const std::string &change, const std::string &question)
    {
        Words words = arguments("plc " + command, {change});
        words.insert(words.begin(), FINS_PANEL_PATH);
        terminal = std::make_unique<PtyProcess>(words, 160, 24);
        terminal->waitForText(question);
    }

    int answer(const std::string &keys)
    {
        terminal->type(keys);
        return terminal->wait();
    }

    bool shows(const std::string &text) const { return terminal->screen.text().find(text) != std::string::npos; }

    std::unique_ptr<PtyProcess> terminal;
};

TEST_F(PlcQuestionTest, AYesChangesAndAnythingElseDoesNot)
{
    start();
    for (const char *keys : {"n\n", "\n", "YES\n", "\004"}) {
        ask("mode", "program", "change the PLC from RUN to PROGRAM mode, in which its program stops and its outputs "
                               "fall? [y/N] ");
        EXPECT_EQ(answer(keys), 3) << keys;
        EXPECT_TRUE(shows("\nfins_panel: nothing was changed: not confirmed\n")) << terminal->screen.text();
        EXPECT_EQ(tell("mode"), "ok run");
    }
    ask("mode", "program", "[y/N] ");
    EXPECT_EQ(answer("y\n"), 0);
    EXPECT_EQ(tell("mode"), "ok program");
}

// To go from MONITOR to RUN is another thing than to start a machine that somebody has stopped meanwhile.
TEST_F(PlcQuestionTest, AYesToAnotherModeIsNone)
{
    start({"--mode", "monitor"});
    ask("mode", "run", "change the PLC from MONITOR to RUN mode");
    ASSERT_EQ(tell("mode program"), "ok program");
    EXPECT_EQ(answer("y\n"), 3);
    EXPECT_TRUE(shows("mode         PROGRAM\n")) << terminal->screen.text();
    EXPECT_TRUE(shows("fins_panel: nothing was changed: the PLC is in PROGRAM mode now\n")) << terminal->screen.text();
    EXPECT_EQ(tell("mode"), "ok program");
}

TEST_F(PlcQuestionTest, AModeThatHasComeMeanwhileIsDone)
{
    start({"--mode", "monitor", "--trace"});
    ask("mode", "run", "change the PLC from MONITOR to RUN mode");
    ASSERT_EQ(tell("mode run"), "ok run");
    EXPECT_EQ(answer("y\n"), 0);
    EXPECT_TRUE(shows("mode         RUN\n")) << terminal->screen.text();
    const Words frames = endAndCollect()[1];
    for (const std::string &frame : frames)
        EXPECT_NE(commandOf(frame).substr(0, 4), "0401");
}

TEST_F(PlcQuestionTest, ErrorsThatWereNotShownAreNotCleared)
{
    start();
    ASSERT_EQ(tell("error fal 5 PUMP WORN").substr(0, 2), "ok");
    ask("errors", "--clear", "[y/N] ");
    EXPECT_TRUE(shows("error code   4105 (FAL 5)\n")) << terminal->screen.text();
    ASSERT_EQ(tell("error fals 9 DOOR OPEN").substr(0, 2), "ok");
    EXPECT_EQ(answer("y\n"), 3);
    EXPECT_TRUE(shows("error code   C109 (FALS 9)\n")) << terminal->screen.text();
    EXPECT_TRUE(shows("fins_panel: nothing was changed: the PLC has other errors now\n")) << terminal->screen.text();
    EXPECT_NE(tell("error").find("fal 5"), std::string::npos);
    ask("errors", "--clear", "[y/N] ");
    EXPECT_EQ(answer("y\n"), 0);
    EXPECT_EQ(tell("error"), "ok none");
}

// A program that a fatal error has stopped goes on without it, but for one in PROGRAM mode.
TEST_F(PlcQuestionTest, ClearingAFatalErrorMayStartTheProgram)
{
    start();
    ASSERT_EQ(tell("error fals 9").substr(0, 2), "ok");
    ask("errors", "--clear", "clear the PLC's errors, after which its program may run again and its outputs be live? "
                             "[y/N] ");
    EXPECT_EQ(answer("n\n"), 3);
    ASSERT_EQ(tell("mode program"), "ok program");
    ask("errors", "--clear", "clear the PLC's errors? [y/N] ");
    ASSERT_EQ(tell("mode run"), "ok run");
    EXPECT_EQ(answer("y\n"), 3);
    EXPECT_TRUE(shows("fins_panel: nothing was changed: the PLC is in RUN mode now\n")) << terminal->screen.text();
    EXPECT_NE(tell("error").find("fals 9"), std::string::npos);
    ASSERT_EQ(tell("error off").substr(0, 2), "ok");
    ASSERT_EQ(tell("error fal 5").substr(0, 2), "ok");
    ask("errors", "--clear", "clear the PLC's errors? [y/N] ");
    EXPECT_EQ(answer("n\n"), 3);
}

// The order itself is sent once: nobody knows of one that was lost whether it was done.
TEST_F(PlcQuestionTest, AConnectionLostMeanwhileIsMadeAnewBeforeTheOrder)
{
    start({"--mode", "program"});
    ASSERT_EQ(tell("error fal 5").substr(0, 2), "ok");
    ASSERT_EQ(tell("clock 2020-01-01 00:00:00").substr(0, 2), "ok");
    for (const auto &[command, change] : {std::pair("mode", "monitor"), std::pair("errors", "--clear"),
                                          std::pair("clock", "--set")}) {
        ask(command, change, "[y/N] ");
        ASSERT_EQ(tell("disconnect"), "ok 1");
        EXPECT_EQ(answer("y\n"), 0) << terminal->screen.text();
        EXPECT_FALSE(shows("unconfirmed")) << terminal->screen.text();
    }
    EXPECT_EQ(tell("mode"), "ok monitor");
    EXPECT_EQ(tell("error"), "ok none");
    EXPECT_EQ(tell("clock").find("2020-"), std::string::npos);
}
