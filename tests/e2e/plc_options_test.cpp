#include "plc_fixture.h"
#include "support/temporary_file.h"

#include <fcntl.h>

// The simulator's command line, its start and its end.

class PlcOptionsTest : public PlcTest {
protected:
    // Exit code of a start that must fail; its one line on standard error goes to `error`.
    int exitCode(std::vector<std::string> options)
    {
        options.insert(options.begin(), FINS_PLC_PATH);
        Process failing(options);
        const int code = failing.wait();
        error = failing.errors();
        EXPECT_EQ(failing.output(), "");
        return code;
    }

    // Starts the simulator by a shell, with commands before it and options and redirections behind.
    void startByShell(const std::string &before, const std::string &behind)
    {
        plc = std::make_unique<Process>(std::vector<std::string>{
            "/bin/sh", "-c", before + "exec '" + FINS_PLC_PATH + "' --port 0 " + behind});
        port = std::stoi(plc->readLine().substr(23));
    }

    std::string error;
};

TEST_F(PlcOptionsTest, PortInUse)
{
    start();
    EXPECT_EQ(exitCode({"--port", std::to_string(port)}), 3);
    EXPECT_EQ(error, "fins_plc: cannot listen on 127.0.0.1:" + std::to_string(port) +
                         ": Address already in use; choose another --port (0 picks a free one) or --bind\n");
}

TEST_F(PlcOptionsTest, AddressOfAnotherMachine)
{
    EXPECT_EQ(exitCode({"--port", "0", "--bind", "192.0.2.1"}), 3);
    EXPECT_EQ(error.substr(0, 41), "fins_plc: cannot listen on 192.0.2.1:0: C");
}

TEST_F(PlcOptionsTest, PortIsFreeAtOnceAfterTheEnd)
{
    start();
    const std::string chosen = std::to_string(port);
    PlcClient client(port);
    plc->sendSignal(SIGTERM);
    EXPECT_EQ(plc->wait(), 0);
    plc = std::make_unique<Process>(std::vector<std::string>{FINS_PLC_PATH, "--port", chosen});
    EXPECT_EQ(plc->readLine(), "listening on 127.0.0.1:" + chosen);
    EXPECT_EQ(PlcClient(port).node, 239u);
}

// Two simulators on one port, each at an address of its own: neither listens at the other's.
TEST_F(PlcOptionsTest, BindsElsewhere)
{
    start({"--node", "9"});
    const std::string chosen = std::to_string(port);
    Process elsewhere({FINS_PLC_PATH, "--port", chosen, "--bind", "127.0.0.2"});
    EXPECT_EQ(elsewhere.readLine(), "listening on 127.0.0.2:" + chosen);
    TcpClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receive(24), nodeReply(239, 0, 9));
    elsewhere.writeLine("stats");
    EXPECT_EQ(elsewhere.readLine(), "ok connections=0 requests=0 replies=0");
    elsewhere.writeLine("quit");
    EXPECT_EQ(elsewhere.wait(), 0);
}

TEST_F(PlcOptionsTest, BadOptionsAreExit2WithOneLine)
{
    const std::vector<std::vector<std::string>> rows = {
        {"--port", "x"},          {"--port", "65536"},       {"--port", "-1"},
        {"--port"},               {"--clients", "0"},        {"--clients", "254"},
        {"--node", "0"},          {"--node", "255"},         {"--mode", "debug"},
        {"--plant-period", "0"},  {"--plant-period", "60001"}, {"--deadline", "0"},
        {"--deadline", "3600001"}, {"--seed", "x"},          {"--bind", "localhost:1"},
        {"--fault", "melt"},      {"--fault"},               {"--frobnicate"},
        {"surplus"},              {"--refuse-writes-in-run=xyz"}, {"--refuse-writes-in-run=0000"},
        {"--refuse-writes-in-program=22033"}};
    for (const std::vector<std::string> &row : rows) {
        EXPECT_EQ(exitCode(row), 2) << row.at(0) << ' ' << row.back();
        EXPECT_EQ(error.substr(0, 10), "fins_plc: ") << row.at(0) << ' ' << row.back();
        EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
    }
}

// Such as a variable of a script that nobody has set: "$PROJECT".
TEST_F(PlcOptionsTest, AFileWithoutANameIsRefused)
{
    for (const std::string option : {"--project", "--check-project", "--record", "--replay"}) {
        EXPECT_EQ(exitCode({"--port", "0", option, ""}), 2);
        EXPECT_EQ(error, "fins_plc: " + option + ": '' is no name of a file; see fins_plc --help\n");
    }
}

TEST_F(PlcOptionsTest, BadNumbersAreToldTheirRange)
{
    const struct {
        const char *option;
        const char *value;
        const char *range;
    } rows[] = {{"port", "65536", "0 to 65535"},         {"clients", "254", "1 to 253"},
                {"node", "0", "1 to 254"},               {"plant-period", "60001", "1 to 60000"},
                {"seed", "4294967296", "0 to 4294967295"}, {"deadline", "0", "1 to 3600000"}};
    for (const auto &row : rows) {
        EXPECT_EQ(exitCode({std::string("--") + row.option, row.value}), 2);
        EXPECT_EQ(error, std::string("fins_plc: --") + row.option + ": '" + row.value + "' is no value of " + row.option +
                             "; use " + row.range + "; see fins_plc --help\n");
    }
}

TEST_F(PlcOptionsTest, BoundsOfOptionsAreTaken)
{
    start({"--clients", "253", "--node", "254", "--plant-period", "60000", "--deadline", "3600000", "--seed",
           "4294967295", "--mode", "monitor"});
    EXPECT_EQ(tell("mode"), "ok monitor");
}

TEST_F(PlcOptionsTest, FaultTakesOneValueEach)
{
    start({"--fault", "drop@0.5", "--fault", "delay=1", "--plant"});
    EXPECT_EQ(tell("faults"), "ok delay=1 drop@0.5");
}

TEST_F(PlcOptionsTest, BadFaultSaysWhatIsWrong)
{
    EXPECT_EQ(exitCode({"--fault", "delay=x"}), 2);
    EXPECT_EQ(error, "fins_plc: --fault: 'x' is no value of delay; use 0 to 60000; see fins_plc --help\n");
}

TEST_F(PlcOptionsTest, HelpGoesToStandardOutput)
{
    Process helper({FINS_PLC_PATH, "--help"});
    EXPECT_EQ(helper.wait(), 0);
    for (const char *text : {"--port UINT=9600", "--bind TEXT=127.0.0.1", "--node UINT=1",
                             "--mode TEXT=run", "--profile TEXT=cj2", "--seed UINT=1", "--deadline UINT=30000",
                             "--count UINT:UINT in [1 - 500]=1", "--record-limit UINT:INT in [1 - 1048576]=65536", "--plant", "DM:3 set-point", "wrong-sid",
                             "disconnect", "Exit codes: 0"})
        EXPECT_NE(helper.output().find(text), std::string::npos) << text;
    EXPECT_EQ(helper.errors(), "");
}

TEST_F(PlcOptionsTest, VersionIsThatOfTheBuild)
{
    Process asked({FINS_PLC_PATH, "--version"});
    EXPECT_EQ(asked.wait(), 0);
    EXPECT_EQ(asked.output(), "fins_plc " FINS_VERSION "\n");
    EXPECT_EQ(asked.errors(), "");
    Process helper({FINS_PLC_PATH, "--help"});
    EXPECT_EQ(helper.wait(), 0);
    EXPECT_NE(helper.output().find("\n  --version "), std::string::npos);
}

TEST_F(PlcOptionsTest, SignalsEndItCleanly)
{
    for (const int number : {SIGINT, SIGTERM}) {
        start();
        PlcClient client(port);
        plc->sendSignal(number);
        EXPECT_EQ(plc->wait(), 0) << number;
        EXPECT_EQ(plc->errors(), "");
        EXPECT_EQ(client.receiveUntilClosed(), "");
    }
    plc.reset();
}

// As under nohup, and behind the & of a script.
TEST_F(PlcOptionsTest, IgnoredSignalsStayIgnored)
{
    startByShell("trap '' HUP INT; ", "");
    plc->sendSignal(SIGHUP);
    plc->sendSignal(SIGINT);
    PlcClient client(port);
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
    EXPECT_EQ(tell("mode"), "ok program");
    plc->sendSignal(SIGTERM);
    EXPECT_EQ(plc->wait(), 0);
    plc.reset();
}

TEST_F(PlcOptionsTest, EndOfInputDoesNotEndIt)
{
    start();
    plc->closeInput();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0402"), plainHex("0402 0000"));
    EXPECT_TRUE(plc->isRunning());
    plc->sendSignal(SIGTERM);
    EXPECT_EQ(plc->wait(), 0);
    plc.reset();
}

TEST_F(PlcOptionsTest, CommandsFromAFile)
{
    const TemporaryFile file;
    file.write("write DM:0 5\nread DM:0\nquit\n");
    Process shell({"/bin/sh", "-c", std::string("exec '") + FINS_PLC_PATH + "' --port 0 < '" + file.path() + "'"});
    EXPECT_EQ(shell.wait(), 0);
    const std::string output = shell.output();
    EXPECT_EQ(output.substr(output.find('\n') + 1), "ok\nok 5\nok\n");
}

TEST_F(PlcOptionsTest, TraceShowsFramesOnStandardError)
{
    start({"--trace"});
    TcpClient client(port);
    client.send(nodeRequest());
    EXPECT_EQ(client.receive(24), nodeReply(239));
    client.send(commandFrame("0402"));
    EXPECT_EQ(client.receiveFrame(), responseFrame("0402 0000"));
    client.send("58");
    EXPECT_EQ(client.receiveUntilClosed(), errorNotice(1));
    EXPECT_EQ(plc->readErrorLine(), "#1 < " + plainHex(nodeRequest()));
    EXPECT_EQ(plc->readErrorLine(), "#1 > " + nodeReply(239));
    EXPECT_EQ(plc->readErrorLine(), "#1 < " + commandFrame("0402"));
    EXPECT_EQ(plc->readErrorLine(), "#1 > " + responseFrame("0402 0000"));
    EXPECT_EQ(plc->readErrorLine(), "#1 < 58");
    EXPECT_EQ(plc->readErrorLine(), "#1 > " + errorNotice(1));
}

// Every line is there in the end, or counted.
TEST_F(PlcOptionsTest, ATraceThatNobodyReadsKeepsNoClientWaiting)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    startByShell("", "--trace 2>/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(ends[1]));
    close(ends[1]);
    PlcClient client(port);
    const unsigned requests = 1000; // 4 MB of trace
    for (unsigned i = 0; i < requests; ++i)
        ASSERT_EQ(client.ask("0101 82 0000 00 03E7").size(), 2u * (4 + 1998));
    std::string text;
    unsigned long shown = 0;
    unsigned long lost = 0;
    while (shown + lost < 2 * (1 + requests)) {
        pollfd polled = {ends[0], POLLIN, 0};
        ASSERT_EQ(poll(&polled, 1, DEFAULT_DEADLINE_MS), 1) << shown << " lines and " << lost << " lost";
        char buffer[65536];
        const ssize_t count = read(ends[0], buffer, sizeof buffer);
        ASSERT_GT(count, 0);
        text.append(buffer, static_cast<std::size_t>(count));
        for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
            const std::string line = text.substr(0, end);
            text.erase(0, end + 1);
            if (line.substr(0, 3) == "#1 ")
                ++shown;
            else
                lost += std::stoul(line.substr(10)); // behind "fins_plc: "
        }
    }
    close(ends[0]);
    EXPECT_EQ(shown + lost, 2 * (1 + requests));
    EXPECT_GT(shown, 0u);
    EXPECT_GT(lost, 0u);
}

TEST_F(PlcOptionsTest, WithoutTraceStandardErrorIsEmpty)
{
    start();
    PlcClient client(port);
    client.ask("0402");
    plc->sendSignal(SIGTERM);
    EXPECT_EQ(plc->wait(), 0);
    EXPECT_EQ(plc->errors(), "");
    plc.reset();
}
