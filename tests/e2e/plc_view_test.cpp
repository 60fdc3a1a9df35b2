#include "plc_fixture.h"

#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>

// The live view, on a terminal of its own.

class PlcViewTest : public ::testing::Test {
protected:
    void start(const std::vector<std::string> &options, unsigned short columns = 80, unsigned short rows = 24,
               const char *noColour = "")
    {
        std::vector<std::string> arguments = {FINS_PLC_PATH, "--port", "0", "--view"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::vector<char *> argv;
        for (const std::string &argument : arguments)
            argv.push_back(const_cast<char *>(argument.c_str()));
        argv.push_back(nullptr);
        winsize window = {rows, columns, 0, 0};
        pid = forkpty(&terminal, nullptr, nullptr, &window);
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            restoreSignals();
            setenv("TERM", "xterm", 1);
            setenv("NO_COLOR", noColour, 1);
            execv(argv[0], argv.data());
            _exit(127);
        }
        tcgetattr(terminal, &before);
        const std::string prefix = "listening on 127.0.0.1:";
        waitFor("\033[?1049h");
        port = std::stoi(text.substr(text.find(prefix) + prefix.size()));
    }

    // Reads until `wanted` has been shown since the last forget().
    void waitFor(const std::string &wanted)
    {
        const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
        while (text.find(wanted) == std::string::npos && Process::Clock::now() < deadline && receive()) {
        }
        EXPECT_NE(text.find(wanted), std::string::npos) << wanted << " is not in " << text;
    }

    bool receive()
    {
        pollfd polled = {terminal, POLLIN, 0};
        if (poll(&polled, 1, 100) <= 0)
            return true;
        char buffer[4096];
        const ssize_t count = read(terminal, buffer, sizeof buffer);
        if (count > 0)
            text.append(buffer, static_cast<std::size_t>(count));
        return count > 0;
    }

    void forget() { text.clear(); }

    void type(const std::string &keys)
    {
        ASSERT_EQ(write(terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // Exit code, or minus the signal. Reads what is still shown.
    int waitForEnd()
    {
        const Process::Clock::time_point deadline = Process::Clock::now() + std::chrono::seconds(20);
        int status = 0;
        while (waitpid(pid, &status, WNOHANG) != pid) {
            if (Process::Clock::now() >= deadline)
                return -1000;
            receive();
        }
        pid = -1;
        while (receive() && text.find("\033[?1049l") == std::string::npos && Process::Clock::now() < deadline) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    void expectCleanTerminal()
    {
        const std::string leave = "\033[0m\033[?7h\033[?25h\033[?1049l";
        EXPECT_NE(text.find(leave), std::string::npos);
        EXPECT_EQ(text.find('\033', text.find(leave) + leave.size()), std::string::npos);
    }

    void TearDown() override
    {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        if (terminal >= 0)
            close(terminal);
    }

    pid_t       pid = -1;
    int         terminal = -1;
    int         port = 0;
    std::string text; // shown since the last forget()
    termios     before = {};
};

TEST_F(PlcViewTest, ShowsStateClientsPlantAndWrites)
{
    start({"--plant", "--plant-period", "60000", "--fault", "delay=1@0.5"}, 80, 24, "1");
    waitFor("fins_plc 127.0.0.1:" + std::to_string(port) + "  node 1  profile cj2  mode RUN  up 00:00:");
    waitFor("faults delay=1@0.5");
    waitFor("CLIENTS 0 OF 16");
    waitFor("PLANT tank");
    waitFor("set-point    DM:3        50.0 %");
    waitFor("WRITTEN LAST: nothing yet");
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0003 00 0001 0201"), plainHex("0102 0000"));
    waitFor("CLIENTS 1 OF 16");
    waitFor("#1                 239   127.0.0.1:");
    waitFor("DM:3 = 513");
    waitFor("set-point    DM:3        51.3 %");
}

TEST_F(PlcViewTest, ShowsTheConveyor)
{
    start({"--plant", "conveyor", "--plant-period", "60000"}, 80, 24, "1");
    waitFor("PLANT conveyor");
    waitFor("set speed    DM:2        30.0 m/min     thrown out   C:1         0");
    // The plant takes DM:3 for the weight of a part; the view tells what was written.
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 82 0002 00 0002 00FA 0007"), plainHex("0102 0000"));
    waitFor("DM:2 = 250");
    waitFor("DM:3 = 7");
    waitFor("set speed    DM:2        25.0 m/min");
}

TEST_F(PlcViewTest, ShowsTheOven)
{
    start({"--plant", "oven", "--plant-period", "60000"}, 200, 50, "1");
    waitFor("PLANT oven");
    waitFor("zone 1       DM:0        20.0 C         set-point 1  DM:10       150.0 C        heater 1     DM:20");
    type("write CIO_bit:0.6 1\r");
    waitFor("door open    CIO_bit:0.6 on");
}

TEST_F(PlcViewTest, ALongAnswerIsShownWhole)
{
    start({}, 80, 24, "1");
    waitFor("Type a command");
    forget();
    type("read DM:0:50\r");
    // 16 columns before the values, and 32 of them fill the first row; 18 are left.
    std::string values;
    for (int i = 0; i < 18; ++i)
        values += i > 0 ? " 0" : "0";
    waitFor("\033[22;1H\033[2Kread DM:0:50: ok 0 0 0 0 0 0 0 0 0 0 0 0 0 0 " + values);
    waitFor("\033[23;1H\033[2K" + values);
}

TEST_F(PlcViewTest, CtrlCGivesTheTerminalBack)
{
    start({"--plant"});
    waitFor("PLANT tank");
    type("\003");
    EXPECT_EQ(waitForEnd(), 0);
    expectCleanTerminal();
    termios after = {};
    ASSERT_EQ(tcgetattr(terminal, &after), 0);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_EQ(after.c_iflag, before.c_iflag);
}

TEST_F(PlcViewTest, CommandsAreTyped)
{
    start({});
    waitFor("Type a command");
    type("xmodx\177e program\r");
    waitFor("xmode program: error 'xmode' is no command; try help");
    type("gone\025mode program\n");
    waitFor("mode program: ok program");
    waitFor("PROGRAM");
    type("\033[Aquit\r");
    EXPECT_EQ(waitForEnd(), 0);
    expectCleanTerminal();
}

TEST_F(PlcViewTest, FollowsTheSizeOfTheTerminal)
{
    start({}, 80, 24, "1");
    waitFor("\033[24;1H\033[2K> _");
    forget();
    winsize window = {50, 200, 0, 0};
    ASSERT_EQ(ioctl(terminal, TIOCSWINSZ, &window), 0);
    waitFor("\033[50;1H\033[2K> _");
    EXPECT_NE(text.find("CLIENTS 0 OF 16"), std::string::npos);
}

TEST_F(PlcViewTest, LinesEndAtTheRightEdge)
{
    start({"--plant", "oven"}, 30, 12, "1");
    waitFor("\033[12;1H\033[2K> _");
    waitFor("\033[1;1H\033[2Kfins_plc 127.0.0.1:" + std::to_string(port) + "  ");
    EXPECT_EQ(text.find("profile"), std::string::npos);
    EXPECT_EQ(text.find("\033[13;1H"), std::string::npos);
}

TEST_F(PlcViewTest, ColoursUnlessNoColor)
{
    start({});
    waitFor("mode \033[32mRUN\033[0m");
    type("quit\r");
    EXPECT_EQ(waitForEnd(), 0);
    TearDown();
    forget();
    start({}, 80, 24, "1");
    waitFor("mode RUN  up");
    EXPECT_EQ(text.find("\033[32m"), std::string::npos);
    EXPECT_EQ(text.find("\033[1m"), std::string::npos);
}

TEST_F(PlcViewTest, NeedsATerminal)
{
    Process failing({FINS_PLC_PATH, "--port", "0", "--view"});
    EXPECT_EQ(failing.wait(), 2);
    EXPECT_EQ(failing.errors(),
              "fins_plc: --view needs a terminal on standard output; run it in one, with TERM set\n");
    EXPECT_EQ(failing.output(), "");
}

TEST_F(PlcViewTest, TraceNeedsAnotherPlace)
{
    std::string path = FINS_PLC_PATH;
    winsize window = {24, 80, 0, 0};
    pid = forkpty(&terminal, nullptr, nullptr, &window);
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        setenv("TERM", "xterm", 1);
        execl(path.c_str(), path.c_str(), "--port", "0", "--view", "--trace", nullptr);
        _exit(127);
    }
    waitFor("fins_plc: --trace would write into the view; add 2>FILE to keep the trace");
}

TEST_F(PlcViewTest, ShowsThePlcThatIsChosen)
{
    start({"--count", "2"}, 80, 24, "1");
    const std::string::size_type second = text.find("listening on ", text.find(" plc1")) + 13;
    const std::string address = text.substr(second, text.find(" plc2") - second);
    waitFor("127.0.0.1:" + std::to_string(port) + "  node 1");
    forget();
    type("plc plc2\r");
    waitFor(address + "  node 1");
    type("quit\r");
    EXPECT_EQ(waitForEnd(), 0);
}
