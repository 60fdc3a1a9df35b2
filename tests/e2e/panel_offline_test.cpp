#include "panel_run.h"

#include <fstream>

// The panel's commands that need no PLC, its driver library, and its command line.

TEST(PanelTypes, ListsTheTwelveTypes)
{
    const PanelRun run = runPanel({"types"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
    const Words expected = {
        "type     kind     first       last  notation",
        "CIO      word         0       6143  dddd",
        "WR       word         0        511  ddd",
        "HR       word         0       1535  dddd",
        "AR       word         0        959  ddd",
        "T        word         0       4095  dddd",
        "C        word         0       4095  dddd",
        "DM       word         0      32767  ddddd",
        "CIO_bit  bit        0.0    6143.15  ddddd.DD (DD:0~15)",
        "WR_bit   bit        0.0     511.15  dd.DD (DD:0~15)",
        "HR_bit   bit        0.0    1535.15  dddd.DD (DD:0~15)",
        "AR_bit   bit      448.0     959.15  ddd.DD (DD:0~15)",
        "DM_bit   bit        0.0   32767.15  ddddd.DD (DD:0~15)"};
    EXPECT_EQ(linesOf(run.out), expected);
}

TEST(PanelCheck, AcceptsTheEndsOfEveryType)
{
    const Words items = {"CIO:0",       "CIO:6143",        "WR:0",       "WR:511",         "HR:0",         "HR:1535",
                         "AR:0",        "AR:959",          "T:0",        "T:4095",         "C:0",          "C:4095",
                         "DM:0",        "DM:32767",        "CIO_bit:0.0", "CIO_bit:6143.15", "WR_bit:0.0",  "WR_bit:511.15",
                         "HR_bit:0.0",  "HR_bit:1535.15",  "AR_bit:448.0", "AR_bit:959.15", "DM_bit:0.0",   "DM_bit:32767.15"};
    for (const std::string &item : items) {
        const PanelRun run = runPanel({"check", item});
        EXPECT_EQ(run.code, 0) << item;
        EXPECT_EQ(run.out, item + " valid\n");
        EXPECT_EQ(run.err, "") << item;
    }
}

TEST(PanelCheck, ShowsCountsAndGoesOnBehindABadItem)
{
    const PanelRun run = runPanel({"check", "DM:100:2", "DM:32768", "CIO_bit:0.5:1", "WR:-1"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.out, "DM:100:2 valid\nCIO_bit:0.5 valid\n");
    EXPECT_EQ(run.err, "fins_panel: 'DM:32768' lies outside the range 0 to 32767, written ddddd\n"
                       "fins_panel: 'WR:-1' lies outside the range 0 to 511, written ddd\n");
}

// Every kind of bad item is refused alike wherever items are named.
TEST(PanelCheck, RefusesBadItemsInOneLine)
{
    const std::string malformed = ": the address is malformed; the range is ";
    const std::map<std::string, std::string> rows = {
        {"CIO:6144", " lies outside the range 0 to 6143, written dddd"},
        {"WR:512", " lies outside the range 0 to 511, written ddd"},
        {"HR:1536", " lies outside the range 0 to 1535, written dddd"},
        {"AR:960", " lies outside the range 0 to 959, written ddd"},
        {"T:4096", " lies outside the range 0 to 4095, written dddd"},
        {"C:4096", " lies outside the range 0 to 4095, written dddd"},
        {"DM:32767:2", " lies outside the range 0 to 32767, written ddddd"},
        {"CIO_bit:6144.0", " lies outside the range 0.0 to 6143.15, written ddddd.DD (DD:0~15)"},
        {"WR_bit:511.15:2", " lies outside the range 0.0 to 511.15, written dd.DD (DD:0~15)"},
        {"AR_bit:447.15", " lies outside the range 448.0 to 959.15, written ddd.DD (DD:0~15)"},
        {"DM:1.5", malformed + "0 to 32767, written ddddd"},
        {"DM:x", malformed + "0 to 32767, written ddddd"},
        {"DM:", malformed + "0 to 32767, written ddddd"},
        {"DM_bit:1", malformed + "0.0 to 32767.15, written ddddd.DD (DD:0~15)"},
        {"DM_bit:1.16", malformed + "0.0 to 32767.15, written ddddd.DD (DD:0~15)"},
        {"DM:1:0", ": the count '0' is not a number from 1 up"},
        {"DM:1:-1", ": the count '-1' is not a number from 1 up"},
        {"DM:1:x", ": the count 'x' is not a number from 1 up"},
        {"DM:1:2:3", ": the count '2:3' is not a number from 1 up"},
        {"DM", " is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2"},
        {"EM:0", ": there is no register type 'EM'; the types are CIO, WR, HR, AR, T, C, DM, CIO_bit, WR_bit, HR_bit, "
                 "AR_bit, DM_bit"}};
    for (const auto &[item, reason] : rows)
        expectRefused({"check", item}, "fins_panel: '" + item + "'" + reason);
}

TEST(PanelCopies, CountsOnWordByWordAndBitByBit)
{
    const PanelRun words = runPanel({"copies", "HR:10", "3"});
    EXPECT_EQ(words.code, 0);
    EXPECT_EQ(words.out, "HR:10\nHR:11\nHR:12\n");
    EXPECT_EQ(words.err, "");
    EXPECT_EQ(runPanel({"copies", "CIO_bit:0.14", "3"}).out, "CIO_bit:0.14\nCIO_bit:0.15\nCIO_bit:1.0\n");
    EXPECT_EQ(runPanel({"copies", "HR:10", "3", "--step", "100"}).out, "HR:10\nHR:110\nHR:210\n");
    EXPECT_EQ(runPanel({"copies", "DM_bit:0.9", "2", "--step", "17"}).out, "DM_bit:0.9\nDM_bit:1.10\n");
    EXPECT_EQ(runPanel({"copies", "DM:5", "1"}).out, "DM:5\n");
}

TEST(PanelCopies, LimitsToTheLastAddressAndSaysSo)
{
    const PanelRun words = runPanel({"copies", "DM:32766", "4"});
    EXPECT_EQ(words.code, 0);
    EXPECT_EQ(words.out, "DM:32766\nDM:32767\nDM:32767\nDM:32767\n");
    EXPECT_EQ(words.err, "addresses past the last one of DM were set to the last one\n");
    const PanelRun bits = runPanel({"copies", "WR_bit:511.14", "3"});
    EXPECT_EQ(bits.out, "WR_bit:511.14\nWR_bit:511.15\nWR_bit:511.15\n");
    EXPECT_EQ(bits.err, "addresses past the last one of WR_bit were set to the last one\n");
    EXPECT_EQ(runPanel({"copies", "DM:32766", "2"}).err, "");
}

TEST(PanelCopies, LimitsOfItsNumbers)
{
    EXPECT_EQ(linesOf(runPanel({"copies", "DM:0", "100000"}).out).size(), 100000u);
    for (const Words &numbers : {Words{"100001"}, Words{"0"}, Words{"-1"}, Words{"x"}, Words{"2", "--step", "0"},
                                 Words{"2", "--step", "100001"}, Words{"2", "--step", "x"}}) {
        Words arguments = {"copies", "DM:0"};
        arguments.insert(arguments.end(), numbers.begin(), numbers.end());
        const PanelRun run = runPanel(arguments);
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(linesOf(run.err).size(), 1u) << run.err;
        EXPECT_EQ(run.err.find("fins_panel: "), 0u) << run.err;
        EXPECT_NE(run.err.find(numbers.back()), std::string::npos) << run.err;
    }
    expectRefused({"copies", "DM:32768", "2"},
                  "fins_panel: 'DM:32768' lies outside the range 0 to 32767, written ddddd");
}

// ---- The driver library ------------------------------------------------------------------------------------------

TEST(PanelLibrary, IsTheOneThatIsNamed)
{
    EXPECT_EQ(runPanel({"--library", FINS_LIBRARY_PATH, "check", "DM:0"}).out, "DM:0 valid\n");
    EXPECT_EQ(runPanel({"check", "DM:0", "--library", FINS_LIBRARY_PATH}).out, "DM:0 valid\n");
}

TEST(PanelLibrary, MissingFileIsNamed)
{
    const PanelRun run = runPanel({"--library", "/nowhere/driver.so", "types"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(linesOf(run.err).size(), 1u) << run.err;
    EXPECT_EQ(run.err.find("fins_panel: cannot load the driver: /nowhere/driver.so: "), 0u) << run.err;
    EXPECT_NE(run.err.find("; name the library with --library FILE\n"), std::string::npos) << run.err;
}

TEST(PanelLibrary, FileThatIsNoLibraryIsNamed)
{
    const PanelRun run = runPanel({"--library", E2E_SOURCE_FILE, "types"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(linesOf(run.err).size(), 1u) << run.err;
    EXPECT_EQ(run.err.find(std::string("fins_panel: cannot load the driver: ") + E2E_SOURCE_FILE + ": "), 0u) << run.err;
}

// The library of the test has all functions but one.
TEST(PanelLibrary, LackingFunctionIsNamed)
{
    for (const Words &command : {Words{"types"}, Words{"check", "DM:0"}, Words{"read", "127.0.0.1:1", "DM:0"}}) {
        Words arguments = {"--library", INCOMPLETE_LIBRARY};
        arguments.insert(arguments.end(), command.begin(), command.end());
        expectRefused(arguments, std::string("fins_panel: ") + INCOMPLETE_LIBRARY +
                                     " is not a driver for this program: it lacks the function intf_addConditionRead");
    }
}

// ---- The command line --------------------------------------------------------------------------------------------

TEST(PanelUsage, HelpIsNoError)
{
    for (const Words &command : {Words{"--help"}, Words{"watch", "--help"}, Words{"recipe", "read", "--help"}}) {
        const PanelRun run = runPanel(command);
        EXPECT_EQ(run.code, 0);
        EXPECT_EQ(run.err, "");
        EXPECT_NE(run.out.find("Exit codes: 0 done;"), std::string::npos) << run.out;
    }
}

TEST(PanelUsage, VersionIsThatOfTheBuild)
{
    for (const Words &command : {Words{"--version"}, Words{"watch", "--version"}}) {
        const PanelRun run = runPanel(command);
        EXPECT_EQ(run.code, 0);
        EXPECT_EQ(run.out, "fins_panel " FINS_VERSION "\n");
        EXPECT_EQ(run.err, "");
    }
}

// The completion of the shell takes its words from lines of this form.
TEST(PanelUsage, HelpNamesTheVersionOption)
{
    EXPECT_NE(runPanel({"--help"}).out.find("\n  --version "), std::string::npos);
    EXPECT_NE(runPanel({"--help-all"}).out.find("\n  --version "), std::string::npos);
}

// What is wrong stands in one line on stderr, with the name of the culprit.
TEST(PanelUsage, BadCommandLines)
{
    const struct {
        Words       arguments;
        std::string culprit;
    } rows[] = {
        {{"read"}, "host"},
        {{"read", "127.0.0.1:1"}, "items"},
        {{"write", "127.0.0.1:1"}, "items"},
        {{"watch", "127.0.0.1:1"}, "items"},
        {{"recipe", "read", "127.0.0.1:1"}, "file"},
        {{"check"}, "items"},
        {{"copies", "DM:0"}, "count"},
        {{"types", "DM"}, "DM"},
        {{"read", "127.0.0.1:1", "DM:0", "--speed", "9"}, "--speed"},
        {{"read", "127.0.0.1:1", "DM:0", "--timeout", "9"}, "--timeout"},
        {{"read", "127.0.0.1:1", "DM:0", "--timeout", "60001"}, "--timeout"},
        {{"read", "127.0.0.1:1", "DM:0", "--timeout"}, "--timeout"},
        {{"read", "127.0.0.1:1", "DM:0", "--give-up", "0.09"}, "--give-up"},
        {{"read", "127.0.0.1:1", "DM:0", "--give-up", "86401"}, "--give-up"},
        {{"read", "127.0.0.1:1", "DM:0", "--give-up", "never"}, "--give-up"},
        {{"read", "127.0.0.1:1", "DM:0", "--words-per-frame", "0"}, "--words-per-frame"},
        {{"read", "127.0.0.1:1", "DM:0", "--words-per-frame", "1000"}, "--words-per-frame"},
        {{"write", "127.0.0.1:1", "DM:0=1", "--words-per-frame", "115"}, "--words-per-frame"},
        {{"recipe", "write", "127.0.0.1:1", "file", "--words-per-frame", "115"}, "--words-per-frame"},
        {{"read", "127.0.0.1:1", "DM:0", "--retries", "0"}, "--retries"},
        {{"read", "127.0.0.1:1", "DM:0", "--retries", "101"}, "--retries"},
        {{"read", "127.0.0.1:1", "DM:0", "--retries", "many"}, "--retries"},
        {{"read", "127.0.0.1:1", "DM:0", "--station", "-1"}, "--station"},
        {{"read", "127.0.0.1:1", "DM:0", "--station", "256"}, "--station"},
        {{"watch", "127.0.0.1:1", "DM:0", "--interval", "-1"}, "--interval"},
        {{"watch", "127.0.0.1:1", "DM:0", "--interval", "60001"}, "--interval"},
        {{"watch", "127.0.0.1:1", "DM:0", "--for", "0"}, "--for"},
        {{"watch", "127.0.0.1:1", "DM:0", "--for", "long"}, "--for"},
        {{"watch", "127.0.0.1:1", "DM:0", "--changes", "0"}, "--changes"},
        {{"watch", "127.0.0.1:1", "DM:0", "--changes", "1.5"}, "--changes"},
    };
    for (const auto &row : rows) {
        const PanelRun run = runPanel(row.arguments);
        EXPECT_EQ(run.code, 2) << row.culprit << ": " << run.err;
        EXPECT_EQ(run.out, "") << row.culprit;
        EXPECT_EQ(linesOf(run.err).size(), 1u) << run.err;
        EXPECT_EQ(run.err.find("fins_panel: "), 0u) << run.err;
        EXPECT_NE(run.err.find(row.culprit), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("; see fins_panel --help\n"), std::string::npos) << run.err;
    }
}

TEST(PanelUsage, BadHosts)
{
    const std::string ports = "' is not a host; write HOST or HOST:PORT with a port from 1 to 65535";
    for (const char *host : {"127.0.0.1:0", "127.0.0.1:65536", "127.0.0.1:x", "127.0.0.1:", ":9600", "", "[::1]9600"})
        expectRefused({"read", host, "DM:0"}, std::string("fins_panel: '") + host + ports);
    expectRefused({"read", "[::1", "DM:0"},
                  "fins_panel: '[::1' is not a host; write [ADDRESS]:PORT for an IPv6 address");
}

TEST(PanelUsage, FullOutputIsAnError)
{
    Process panel({"/bin/sh", "-c", "exec \"$0\" types > /dev/full", FINS_PANEL_PATH});
    EXPECT_EQ(panel.wait(), 1);
    EXPECT_EQ(panel.errors(), "fins_panel: standard output cannot be written\n");
}
