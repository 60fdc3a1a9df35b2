#include "plc_fixture.h"
#include "support/temporary_file.h"

#include <sys/stat.h>
#include <unistd.h>

// Project files: the memory and the settings that the simulator starts with, and what is said of bad ones.

class PlcProjectTest : public PlcTest {
protected:
    void startProject(const std::string &text, std::vector<std::string> options = {})
    {
        file.write(text);
        options.insert(options.end(), {"--project", file.path()});
        start(options);
    }

    // What a start with the bad project says on standard error, without the program's and the file's name.
    std::string errorsOf(const std::string &text, const std::string &option = "--project")
    {
        file.write(text);
        Process failing({FINS_PLC_PATH, "--port", "0", option, file.path()});
        EXPECT_EQ(failing.wait(), 2) << text;
        EXPECT_EQ(failing.output(), "");
        std::string errors = failing.errors();
        const std::string prefix = "fins_plc: " + file.path();
        for (std::size_t at = errors.find(prefix); at != std::string::npos; at = errors.find(prefix))
            errors.erase(at, prefix.size());
        return errors;
    }

    TemporaryFile file;
};

TEST_F(PlcProjectTest, WordsListsAndFills)
{
    startProject("[memory]\n\"DM:10\" = 5\n\"DM:11\" = [1, 65535]\n\"DM:20:3\" = 7\n\"T:4\" = 9\n\"HR:1535\" = 1\n");
    EXPECT_EQ(tell("read DM:9:5"), "ok 0 5 1 65535 0");
    EXPECT_EQ(tell("read DM:19:5"), "ok 0 7 7 7 0");
    EXPECT_EQ(tell("read T:4"), "ok 9");
    EXPECT_EQ(tell("read HR:1535"), "ok 1");
}

TEST_F(PlcProjectTest, LaterLinesGoBeforeEarlierOnes)
{
    startProject("[memory]\n\"DM:9:4\" = 7\n\"DM:10\" = 1\n");
    EXPECT_EQ(tell("read DM:9:4"), "ok 7 1 7 7");
}

TEST_F(PlcProjectTest, FloatsLowWordFirst)
{
    // 21.5 is 41AC0000, -1 is BF800000, 0.1 is 3DCCCCCD.
    startProject("[memory]\n\"DM:0\" = 21.5\n\"DM:2\" = { f32 = [-1, 0.1] }\n");
    EXPECT_EQ(tell("read DM:0:6"), "ok 0 16812 0 49024 52429 15820");
}

TEST_F(PlcProjectTest, TypesAtTheirBounds)
{
    startProject("[memory]\n\"DM:0\" = { s16 = [-32768, 32767, -1] }\n\"DM:3\" = { u32 = 4294967295 }\n"
                 "\"DM:5\" = { s32 = [-2147483648, 65536] }\n\"DM:9\" = { bcd16 = 9876 }\n\"DM:10\" = { u16 = 0 }\n");
    EXPECT_EQ(tell("read DM:0:10"), "ok 32768 32767 65535 65535 65535 0 32768 0 1 39030");
}

TEST_F(PlcProjectTest, AFillRepeatsAllWordsOfAValue)
{
    startProject("[memory]\n\"DM:0:4\" = { u32 = 65538 }\n");
    EXPECT_EQ(tell("read DM:0:5"), "ok 2 1 2 1 0");
}

TEST_F(PlcProjectTest, TextsHaveTwoCharactersAWord)
{
    startProject("[memory]\n\"DM:4:4\" = 1\n\"DM:0\" = \"ABC\"\n\"DM:4:3\" = \"AB\"\n"
                 "\"DM:8\" = { string = \"ABC\", low-byte-first = true }\n");
    EXPECT_EQ(tell("read DM:0:2"), "ok 16706 17152");
    EXPECT_EQ(tell("read DM:8:2"), "ok 16961 67");
}

TEST_F(PlcProjectTest, TextsAreFollowedByZeros)
{
    startProject("[memory]\n\"DM:0:5\" = 1\n\"DM:1:3\" = \"AB\"\n");
    EXPECT_EQ(tell("read DM:0:5"), "ok 1 16706 0 0 1");
}

TEST_F(PlcProjectTest, Bits)
{
    startProject("[memory]\n\"CIO_bit:10.14\" = [true, 0, 1]\n\"WR_bit:0.15\" = true\n\"DM_bit:5.0:16\" = true\n");
    EXPECT_EQ(tell("read CIO:10:2"), "ok 16384 1");
    EXPECT_EQ(tell("read WR:0"), "ok 32768");
    EXPECT_EQ(tell("read DM:5:2"), "ok 65535 0");
}

TEST_F(PlcProjectTest, Settings)
{
    startProject("[plc]\nmode = \"program\"\nfaults = [\"delay=1@0.5\", \"drop@0.25\", \"tcp-error=22#1\"]\nplant = \"conveyor\"\n"
                 "plant-period = 60000\nnode = 7\nprofile = \"small\"\nclients = 1\n");
    EXPECT_EQ(tell("mode"), "ok program");
    EXPECT_EQ(tell("faults"), "ok delay=1@0.5 drop@0.25 tcp-error=22#1");
    EXPECT_EQ(tell("read DM:2"), "ok 300");
    EXPECT_EQ(tell("read DM:2048"), "error '2048' is no address of the area; use 0 to 2047");
    ASSERT_EQ(tell("faults off"), "ok");
    TcpClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receive(24), nodeReply(239, 0, 7));
    TcpClient second(port);
    second.send(nodeRequest());
    EXPECT_EQ(second.receiveUntilClosed(), nodeReply(0, 0x20, 7));
}

TEST_F(PlcProjectTest, Refusals)
{
    startProject("[plc]\nrefuse-writes-in-run = true\nrefuse-writes-in-program = \"2204\"\n");
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0001"), plainHex("0102 2206"));
    ASSERT_EQ(tell("mode program"), "ok program");
    EXPECT_EQ(client.ask("0102 82 0000 00 0001 0001"), plainHex("0102 2204"));
}

TEST_F(PlcProjectTest, TheMemoryGoesBeforeThePlantsOwnStart)
{
    startProject("[plc]\nplant = \"tank\"\nplant-period = 60000\n[memory]\n\"DM:3\" = 250\n");
    EXPECT_EQ(tell("read DM:0:4"), "ok 300 0 0 250");
}

TEST_F(PlcProjectTest, TheCommandLineGoesBeforeTheProject)
{
    startProject("[plc]\nmode = \"program\"\nnode = 7\nfaults = \"drop\"\n", {"--mode", "monitor", "--node", "9"});
    EXPECT_EQ(tell("mode"), "ok monitor");
    EXPECT_EQ(tell("faults"), "ok drop");
    TcpClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receive(24), nodeReply(239, 0, 9));
}

TEST_F(PlcProjectTest, EveryErrorHasItsPlace)
{
    EXPECT_EQ(errorsOf("[plc]\nport = 70000\nmode = \"fast\"\ncolour = 1\n\n[memory]\n\"DM:40000\" = 1\n"
                       "\"DM:1\" = 65536\n\"CIO_bit:0.0\" = 2\n\"DM:2:3\" = [1, 2]\n[other]\n"),
              ":2:8: '70000' is no value of port; use 0 to 65535\n"
              ":3:8: 'fast' is no mode; use program, monitor or run\n"
              ":4:1: 'colour' is no setting of [plc]\n"
              ":7:1: '40000' is no address of the area; use 0 to 32767\n"
              ":8:10: 65536 is no u16; use 0 to 65535\n"
              ":9:17: a bit is true, false, 0 or 1\n"
              ":10:12: 2 items for the 3 of the address\n"
              ":11:2: 'other' is no table of a project; use [plc], [cpu], [memory] and [plant]\n");
}

TEST_F(PlcProjectTest, SettingsOfAnotherKind)
{
    const struct {
        const char *line;
        const char *error;
    } rows[] = {
        {"port = \"80\"", ":2:8: port is a number: TCP port, 0 to 65535; 0 picks a free one\n"},
        {"seed = -1", ":2:8: '-1' is no value of seed; use 0 to 4294967295\n"},
        {"seed = 4294967296", ":2:8: '4294967296' is no value of seed; use 0 to 4294967295\n"},
        {"node = 1.5", ":2:8: node is a number: own FINS node, 1 to 254\n"},
        {"bind = 127", ":2:8: bind is a text: IP address to listen on\n"},
        {"plant = \"\"", ":2:9: '' is no plant; plants are tank conveyor oven\n"},
        {"refuse-writes-in-run = 2206", ":2:24: refuse-writes-in-run is true, false or a text: refuse writes in RUN "
                                        "mode, with end code 2206 or this one\n"},
        {"refuse-writes-in-run = \"0000\"", ":2:24: '0000' is no end code; use four hexadecimal digits\n"},
        {"faults = [\"drop\", 1]", ":2:19: faults is a text or a list of texts: begin with fault "
                                  "NAME[=VALUE][:AIM][@PROBABILITY][#TIMES]; repeatable\n"},
        {"mode = [\"run\"]", ":2:8: mode is a text: operating mode at the start: program, monitor or run\n"},
        {"tcp-error = \"22\"", ":2:1: 'tcp-error' is no setting of [plc]\n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(errorsOf(std::string("[plc]\n") + row.line + "\n"), row.error) << row.line;
}

// The command line adds to the project's.
TEST_F(PlcProjectTest, NoMoreFaultsThanAPlcTakes)
{
    std::string text = "[plc]\nfaults = [";
    for (int i = 0; i < 100; ++i)
        text += "\n'delay=1:after=" + std::to_string(i) + "',";
    const std::string reason = "there are 100 faults already; leave one out";
    EXPECT_EQ(errorsOf(text + "\n'drop' ]\n"), ":103:1: " + reason + "\n");
    EXPECT_EQ(errorsOf(text + "\n'drop' ]\n", "--check-project"), ":103:1: " + reason + "\n");
    file.write(text + " ]\n");
    Process failing({FINS_PLC_PATH, "--port", "0", "--fault", "drop", "--project", file.path()});
    EXPECT_EQ(failing.wait(), 2);
    EXPECT_EQ(failing.errors(), "fins_plc: --fault: " + reason + "; see fins_plc --help\n");
}

TEST_F(PlcProjectTest, ValuesThatAreNone)
{
    const struct {
        const char *line;
        const char *error;
    } rows[] = {
        {"\"DM:0\" = -1", ":2:10: -1 is no u16; use 0 to 65535\n"},
        {"\"DM:0\" = true", ":2:10: true and false are for bits, such as CIO_bit:0.0\n"},
        {"\"DM:0\" = []", ":2:10: the list is empty\n"},
        {"\"DM:0\" = \"\"", ":2:10: an empty text fills no word; leave it out\n"},
        {"\"DM:0:1\" = \"ABC\"", ":2:12: 2 items for the 1 of the address\n"},
        {"\"DM:0:3\" = 1.5", ":2:12: 2 items for the 3 of the address; they do not fill it evenly\n"},
        {"\"DM:0\" = { s16 = 32768 }", ":2:18: 32768 is no s16; use -32768 to 32767\n"},
        {"\"DM:0\" = { s16 = -32769 }", ":2:18: -32769 is no s16; use -32768 to 32767\n"},
        {"\"DM:0\" = { bcd16 = 10000 }", ":2:20: 10000 is no bcd16; use 0 to 9999\n"},
        {"\"DM:0\" = { s32 = 2147483648 }", ":2:18: 2147483648 is no s32; use -2147483648 to 2147483647\n"},
        {"\"DM:0\" = { f32 = 1e39 }", ":2:18: the number is too large for an f32\n"},
        {"\"DM:0\" = { u16 = 1.5 }", ":2:18: a number with decimals needs the type f32\n"},
        {"\"DM:0\" = [[1], 2]", ":2:11: a list in a list has no meaning\n"},
        {"\"DM:32767\" = 1.5", ":2:14: '2' is no count from 1 to 1\n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(errorsOf(std::string("[memory]\n") + row.line + "\n"), row.error) << row.line;
}

// What a text has in it reaches the terminal.
TEST_F(PlcProjectTest, AnErrorIsALineWithoutControlCharacters)
{
    EXPECT_EQ(errorsOf("[cpu]\nbattery = \"a\\nb\\u001b[2J\"\n\"c\\rd\" = \"\"\n"),
              ":2:11: 'a?b?[2J' is no state of the battery; use good, low or none\n"
              ":3:1: 'c?d' is no setting of [cpu]\n");
}

TEST_F(PlcProjectTest, WhatIsNoToml)
{
    EXPECT_EQ(errorsOf("[plc]\nport = = 1\n").substr(0, 25), ":2:8: this is not TOML: E");
}

// Texts that the parser must not see, or gives up on; each costs a line, not the program.
TEST_F(PlcProjectTest, WhatBreaksTheParser)
{
    std::string dotted = "a";
    for (int i = 0; i < 223599; ++i)
        dotted += ".a";
    EXPECT_EQ(errorsOf(dotted + " = 1\n"), ":1:64: a key of more than 32 parts; use fewer points\n");
    EXPECT_EQ(errorsOf("[memory]\n\"DM:0\" = " + std::string(33, '[')),
              ":2:42: brackets of more than 32 levels; nest less deeply\n");
    EXPECT_EQ(errorsOf("[plc]\n[\n[memory]\n", "--check-project"), ":2:1: this is not TOML: its syntax is broken\n");
}

TEST_F(PlcProjectTest, FilesThatNeverEnd)
{
    const std::string pipe = file.path() + ".pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string &name : {pipe, std::string("/dev/zero")}) {
        Process failing({FINS_PLC_PATH, "--project", name});
        EXPECT_EQ(failing.wait(), 2);
        EXPECT_EQ(failing.errors(), "fins_plc: " + name + ": is not a regular file; name a file of text\n");
    }
    unlink(pipe.c_str());
}

TEST_F(PlcProjectTest, NoFile)
{
    Process failing({FINS_PLC_PATH, "--project", "/nonexistent/plc.toml"});
    EXPECT_EQ(failing.wait(), 2);
    EXPECT_EQ(failing.errors(), "fins_plc: /nonexistent/plc.toml: No such file or directory\n");
}

TEST_F(PlcProjectTest, CheckProjectSaysThatNothingIsWrong)
{
    file.write("[memory]\n\"DM:0\" = 1\n\"DM:1\" = 1\n");
    Process checking({FINS_PLC_PATH, "--check-project", file.path()});
    EXPECT_EQ(checking.wait(), 0);
    EXPECT_EQ(checking.output(), file.path() + ": no errors, 2 places of memory\n");
    EXPECT_EQ(checking.errors(), "");
    file.write("[memory]\n\"DM:0\" = 1\n");
    Process single({FINS_PLC_PATH, "--check-project", file.path()});
    EXPECT_EQ(single.wait(), 0);
    EXPECT_EQ(single.output(), file.path() + ": no errors, 1 place of memory\n");
}

TEST_F(PlcProjectTest, TheExampleOfTheHelpIsAProject)
{
    Process helper({FINS_PLC_PATH, "--help"});
    EXPECT_EQ(helper.wait(), 0);
    const std::string help = helper.output();
    const std::size_t begin = help.find("  [memory]\n");
    file.write(help.substr(begin, help.find("  [plant] ") - begin));
    Process checking({FINS_PLC_PATH, "--check-project", file.path()});
    EXPECT_EQ(checking.wait(), 0);
    EXPECT_EQ(checking.output(), file.path() + ": no errors, 8 places of memory\n");
    EXPECT_EQ(checking.errors(), "");
}

TEST_F(PlcProjectTest, CheckProjectSaysWhatIsWrong)
{
    EXPECT_EQ(errorsOf("[plc]\nnode = 0\n", "--check-project"),
              ":2:8: '0' is no value of node; use 1 to 254\n");
}
