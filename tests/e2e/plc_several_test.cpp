#include "plc_fixture.h"
#include "support/temporary_file.h"

#include <fstream>
#include <set>

// Several PLCs in one process: each has its port and its state, and the console speaks to one of them.

class PlcSeveralTest : public PlcTest {
protected:
    // Starts `count` PLCs and takes their ports and names from their lines.
    void startSeveral(std::vector<std::string> options, std::size_t count)
    {
        options.insert(options.begin(), FINS_PLC_PATH);
        plc = std::make_unique<Process>(options);
        const std::string prefix = "listening on 127.0.0.1:";
        for (std::size_t i = 0; i < count; ++i) {
            const std::string line = plc->readLine();
            ASSERT_EQ(line.substr(0, prefix.size()), prefix);
            std::size_t end = 0;
            ports.push_back(std::stoi(line.substr(prefix.size()), &end));
            names.push_back(line.substr(prefix.size() + end));
        }
    }

    void startProject(const std::string &text, std::size_t count)
    {
        file.write(text);
        startSeveral({"--project", file.path()}, count);
    }

    // What the refused start says on standard error, without the program's and the file's name.
    std::string errorsOf(const std::string &text, std::vector<std::string> options = {})
    {
        file.write(text);
        options.insert(options.begin(), FINS_PLC_PATH);
        options.insert(options.end(), {"--project", file.path()});
        Process failing(options);
        EXPECT_EQ(failing.wait(), 2) << text;
        std::string errors = failing.errors();
        const std::string prefix = "fins_plc: " + file.path();
        for (std::size_t at = errors.find(prefix); at != std::string::npos; at = errors.find(prefix))
            errors.erase(at, prefix.size());
        return errors;
    }

    long peakKiB() const
    {
        std::ifstream status("/proc/" + std::to_string(plc->id()) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.compare(0, 6, "VmHWM:") == 0)
                return std::stol(line.substr(6));
        throw std::runtime_error("the simulator's memory is not told");
    }

    TemporaryFile            file;
    std::vector<int>         ports;
    std::vector<std::string> names;
};

TEST_F(PlcSeveralTest, EachHasItsOwnState)
{
    startProject("[[plc]]\nname = \"press\"\nnode = 7\n[plc.memory]\n\"DM:0\" = 11\n"
                 "[[plc]]\nmode = \"program\"\nprofile = \"small\"\nfaults = \"end-code=2203:command=write\"\n"
                 "[plc.memory]\n\"DM:0\" = 22\n",
                 2);
    EXPECT_EQ(names, (std::vector<std::string>{" press", " plc2"}));
    TcpClient press(ports[0]);
    press.send(nodeRequest() + frameSend("80 00 02 00 07 00 00 EF 00 01 0101 82 0000 00 0001"));
    EXPECT_EQ(press.receive(24), nodeReply(239, 0, 7));
    EXPECT_EQ(press.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 07 00 01 0101 0000 000B"));
    PlcClient second(ports[1]);
    EXPECT_EQ(second.ask("0101 82 0000 00 0001"), plainHex("0101 0000 0016"));
    EXPECT_EQ(second.ask("0101 82 0800 00 0001"), plainHex("0101 1103"));
    EXPECT_EQ(second.ask("0102 82 0000 00 0001 0001"), plainHex("0102 2203"));
    press.send(frameSend("80 00 02 00 07 00 00 EF 00 02 0102 82 0000 00 0001 0001"));
    EXPECT_EQ(press.receiveFrame(), frameSend("C0 00 02 00 EF 00 00 07 00 02 0102 0000"));
    EXPECT_EQ(tell("read DM:0"), "ok 1");
}

TEST_F(PlcSeveralTest, TheConsoleSpeaksToOne)
{
    startProject("[[plc]]\nname = \"press\"\n[[plc]]\nname = \"oven-2\"\nmode = \"monitor\"\n", 2);
    EXPECT_EQ(tell("plc"), "ok press of press oven-2");
    EXPECT_EQ(tell("mode"), "ok run");
    EXPECT_EQ(tell("plc oven-2"), "ok oven-2");
    EXPECT_EQ(tell("mode"), "ok monitor");
    EXPECT_EQ(tell("fault drop"), "ok");
    EXPECT_EQ(tell("plc mill"), "error 'mill' is no PLC; PLCs are press oven-2");
    EXPECT_EQ(tell("faults"), "ok drop");
    EXPECT_EQ(tell("plc press"), "ok press");
    EXPECT_EQ(tell("faults"), "ok none");
    PlcClient client(ports[1]);
    EXPECT_EQ(tell("clients"), "ok 0");
    EXPECT_EQ(tell("plc oven-2"), "ok oven-2");
    EXPECT_EQ(tell("clients"), "ok 1 239");
    EXPECT_EQ(tell("disconnect"), "ok 1");
}

TEST_F(PlcSeveralTest, OneAloneIsCalledPlc1)
{
    start();
    EXPECT_EQ(tell("plc"), "ok plc1 of plc1");
}

TEST_F(PlcSeveralTest, OptionsApplyToAll)
{
    file.write("[[plc]]\nnode = 7\nport = 1\n[[plc]]\n");
    startSeveral({"--mode", "monitor", "--node", "9", "--port", "0", "--project", file.path()}, 2);
    for (const int each : ports) {
        TcpClient client(each);
        client.send(nodeRequest());
        EXPECT_EQ(client.receive(24), nodeReply(239, 0, 9));
    }
    EXPECT_EQ(tell("mode"), "ok monitor");
    ASSERT_EQ(tell("plc plc2"), "ok plc2");
    EXPECT_EQ(tell("mode"), "ok monitor");
}

// Each has a client and has answered it; their memory is not written.
TEST_F(PlcSeveralTest, AHundredFitInto64Mebibytes)
{
    startSeveral({"--count", "100"}, 100);
    EXPECT_EQ(std::set<int>(ports.begin(), ports.end()).size(), 100u);
    EXPECT_EQ(names.back(), " plc100");
    std::vector<std::unique_ptr<PlcClient>> clients;
    for (const int each : ports) {
        clients.push_back(std::make_unique<PlcClient>(each));
        EXPECT_EQ(clients.back()->ask("0101 82 0064 00 0001"), plainHex("0101 0000 0000"));
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(peakKiB(), 64 * 1024);
#endif
    EXPECT_EQ(tell("plc plc100"), "ok plc100");
    EXPECT_EQ(tell("write DM:100 5"), "ok");
    EXPECT_EQ(clients[99]->ask("0101 82 0064 00 0001"), plainHex("0101 0000 0005"));
    EXPECT_EQ(clients[98]->ask("0101 82 0064 00 0001"), plainHex("0101 0000 0000"));
}

// What a project says of each is kept once.
TEST_F(PlcSeveralTest, AHundredOfALongProjectNeedLittleMemory)
{
    std::string text = "[cpu]\nerrors = [";
    for (int i = 0; i < 20000; ++i)
        text += "'fal 5', ";
    text += "]\n[memory]\n";
    for (int i = 0; i < 20000; ++i)
        text += "'DM:" + std::to_string(i) + "' = 1\n";
    file.write(text);
    plc = std::make_unique<Process>(
        std::vector<std::string>{FINS_PLC_PATH, "--count", "100", "--project", file.path()});
    for (int i = 0; i < 100; ++i)
        plc->readLine();
    EXPECT_EQ(tell("plc plc100"), "ok plc100");
    EXPECT_EQ(tell("read DM:19999:2"), "ok 1 0");
    EXPECT_EQ(tell("error"), "ok 4105 fal 5");
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(peakKiB(), 64 * 1024);
#endif
}

TEST_F(PlcSeveralTest, BadListsAreTold)
{
    const struct {
        const char *text;
        const char *errors;
    } rows[] = {
        {"[[plc]]\nname = \"a b\"\n", ":2:8: name is a text of letters, digits, - and _\n"},
        {"[[plc]]\nname = \"\"\n", ":2:8: name is a text of letters, digits, - and _\n"},
        {"[[plc]]\nname = 5\n", ":2:8: name is a text of letters, digits, - and _\n"},
        {"[[plc]]\nname = \"a\"\n[[plc]]\nname = \"a\"\n", ":4:8: 'a' is the name of another PLC already\n"},
        {"[[plc]]\nname = \"plc2\"\n[[plc]]\n", ":3:1: 'plc2' is the name of another PLC already\n"},
        {"[[plc]]\nport = 9600\n[[plc]]\nnode = 2\nport = 9600\n",
         ":5:8: port 9600 of 127.0.0.1 is that of 'plc1' already\n"},
        {"[[plc]]\nnode = 0\n[[plc]]\ncolour = 1\n",
         ":2:8: '0' is no value of node; use 1 to 254\n:4:1: 'colour' is no setting of [plc]\n"},
        {"[[plc]]\n[memory]\n\"DM:0\" = 1\n",
         ":2:1: with [[plc]] each PLC has its own; use [plc.memory], [plc.cpu] and a plant = FILE behind its [[plc]] "
         "instead of [memory]\n"},
        {"[[plc]]\n[plc.memory]\n\"DM:0\" = 65536\n", ":3:10: 65536 is no u16; use 0 to 65535\n"},
        {"plc = []\n", ":1:7: plc has to be a table, [plc], or 1 to 500 tables [[plc]]\n"},
        {"plc = [1]\n", ":1:7: plc has to be a table, [plc], or 1 to 500 tables [[plc]]\n"},
        {"[plc]\nname = \"a\"\n", ":2:1: 'name' is no setting of [plc]\n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(errorsOf(row.text), row.errors) << row.text;
}

TEST_F(PlcSeveralTest, OptionsOfOneAreRefused)
{
    const std::string two = "[[plc]]\n[[plc]]\n";
    EXPECT_EQ(errorsOf(two, {"--port", "9600"}),
              "fins_plc: --port is of one PLC; name the port of each in the project, or use --port 0\n");
    EXPECT_EQ(errorsOf(two, {"--record", "/dev/null"}),
              "fins_plc: --record and --replay are of one PLC; start it alone\n");
    EXPECT_EQ(errorsOf(two, {"--count", "2"}),
              "fins_plc: --count is for one PLC and the project has 2; leave one of them out\n");
}

// What is in the way of one of them is in the way of all.
TEST_F(PlcSeveralTest, APortThatIsTakenEndsTheStart)
{
    start();
    file.write("[[plc]]\n[[plc]]\nport = " + std::to_string(port) + "\n");
    Process failing({FINS_PLC_PATH, "--project", file.path()});
    EXPECT_EQ(failing.wait(), 3);
    EXPECT_EQ(failing.output(), "");
    EXPECT_EQ(failing.errors(), "fins_plc: cannot listen on 127.0.0.1:" + std::to_string(port) +
                                    ": Address already in use; choose another --port (0 picks a free one) or --bind\n");
}
