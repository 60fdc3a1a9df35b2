#ifndef TESTS_E2E_PANEL_RUN_H
#define TESTS_E2E_PANEL_RUN_H

#include "plc_fixture.h"
#include "support/held_port.h"

#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

// fins_panel as a user runs it: against the simulator, or against a peer that the test plays itself.

using Words = std::vector<std::string>;

// How a run ended and all that it said.
struct PanelRun {
    int         code;
    std::string out;
    std::string err;
};

inline Words linesOf(const std::string &text)
{
    Words lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

inline std::unique_ptr<Process> startPanel(Words arguments)
{
    arguments.insert(arguments.begin(), FINS_PANEL_PATH);
    return std::make_unique<Process>(arguments);
}

// Messages without the hints that follow some of them.
inline bool isHint(const std::string &line) { return line.find("hint: ") == 0; }

inline std::string withoutHints(const std::string &text)
{
    std::string kept;
    for (const std::string &line : linesOf(text))
        kept += isHint(line) ? "" : line + "\n";
    return kept;
}

inline PanelRun runPanel(const Words &arguments)
{
    const std::unique_ptr<Process> panel = startPanel(arguments);
    const int code = panel->wait();
    return {code, panel->output(), withoutHints(panel->errors())};
}

// The next message on stderr.
inline std::string nextMessage(Process &panel)
{
    std::string line = panel.readErrorLine();
    while (isHint(line))
        line = panel.readErrorLine();
    return line;
}

// Bad usage: nothing on stdout, and this one line on stderr.
inline void expectRefused(const Words &arguments, const std::string &line)
{
    const PanelRun run = runPanel(arguments);
    EXPECT_EQ(run.code, 2) << line;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, line + "\n");
}

// A line of `watch` behind its time.
inline std::string changeOf(const std::string &line)
{
    static const std::regex FORM("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z (.*)");
    std::smatch match;
    return std::regex_match(line, match, FORM) ? match[1].str() : "not a change: " + line;
}

inline std::string nextChange(Process &panel) { return changeOf(panel.readLine()); }

inline std::string nothingListens(int port)
{
    return "the host 127.0.0.1 is there, but nothing listens on TCP port " + std::to_string(port);
}

// The last line of a command that ends without an answer; `why` is the latest trouble.
inline std::string noAnswerLine(const std::string &host, int ms, const std::string &why)
{
    return "fins_panel: no answer from " + host + " within " + std::to_string(ms) + " ms: " + why +
           "; 'fins_panel link " + host + "' tells what to try, --give-up SECONDS waits longer";
}

// Ends a `watch` as a user does.
inline int interrupt(Process &panel)
{
    panel.sendSignal(SIGINT);
    return panel.wait();
}

// Runs of the panel against the simulator, on a port that stays the test's own while no simulator runs.
class PanelTest : public PlcTest {
protected:
    void start(const Words &options = {})
    {
        port = heldPort_.number();
        Words all = {FINS_PLC_PATH, "--port", std::to_string(port)};
        all.insert(all.end(), options.begin(), options.end());
        plc = std::make_unique<Process>(all);
        ASSERT_EQ(plc->readLine(), "listening on " + host());
    }

    // A simulator in the place of the one before, which has ended.
    void startAgain(const Words &options = {}) { start(options); }

    std::string host() const { return heldPort_.host(); }

    Words arguments(const std::string &command, const Words &more) const
    {
        Words all;
        std::istringstream words(command);
        for (std::string word; words >> word;)
            all.push_back(word);
        all.push_back(host());
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    PanelRun run(const std::string &command, const Words &more) const { return runPanel(arguments(command, more)); }

    std::unique_ptr<Process> watch(const Words &more) const { return startPanel(arguments("watch", more)); }

    std::string connectedLine(int node = 239) const
    {
        return "connected to " + host() + ": this node " + std::to_string(node) + ", PLC node 1\n";
    }

    std::string linkLost(const std::string &reason, int delay = 100) const
    {
        return "link to " + host() + " lost: " + reason + ", retrying in " + std::to_string(delay) + " ms";
    }

    // Nobody listens: one or more attempts to connect, and then the lines `last`.
    void expectNoLink(const PanelRun &ended, const std::string &last) const
    {
        EXPECT_EQ(ended.code, 3);
        EXPECT_EQ(ended.out, "");
        const std::string attempt = "no link to " + host() + ": Connection refused, retrying in ";
        ASSERT_EQ(ended.err.find(attempt + "100 ms\n"), 0u) << ended.err;
        ASSERT_GE(ended.err.size(), last.size());
        EXPECT_EQ(ended.err.substr(ended.err.size() - last.size()), last);
        for (const std::string &line : linesOf(ended.err.substr(0, ended.err.size() - last.size())))
            EXPECT_EQ(line.find(attempt), 0u) << line;
    }

    // The end when nobody listens.
    std::string noAnswer(int ms) const { return noAnswerLine(host(), ms, nothingListens(port)) + "\n"; }

    // Ends a simulator that was started with --trace. Returns the frames that it received on each connection.
    std::map<int, Words> endAndCollect()
    {
        EXPECT_EQ(tell("quit"), "ok");
        EXPECT_EQ(plc->wait(), 0);
        std::map<int, Words> received;
        for (const std::string &line : linesOf(plc->errors())) {
            std::istringstream words(line);
            char hash = 0, direction = 0;
            int connection = 0;
            std::string frame;
            words >> hash >> connection >> direction >> frame;
            if (direction == '<')
                received[connection].push_back(frame);
        }
        plc.reset();
        return received;
    }

private:
    HeldPort heldPort_;
};

// The command of a frame: its code and what follows; empty for a node-address request.
inline std::string commandOf(const std::string &frame)
{
    return frame.size() > 2 * 26 ? frame.substr(2 * 26) : "";
}

// On every connection the node-address request comes first and a read second.
inline void expectReadsFirst(const std::map<int, Words> &received)
{
    for (const auto &[connection, frames] : received) {
        ASSERT_FALSE(frames.empty());
        EXPECT_EQ(frames[0], plainHex(nodeRequest())) << connection;
        if (frames.size() > 1) {
            EXPECT_EQ(commandOf(frames[1]).substr(0, 4), "0101") << connection;
        }
    }
}

// ---- A PLC that the test plays -----------------------------------------------------------------------------------

// One connection of the panel. Bytes are hexadecimal text.
class PlayedLink {
public:
    explicit PlayedLink(int accepted) : fd_(accepted) {}
    PlayedLink(const PlayedLink &) = delete;
    PlayedLink &operator=(const PlayedLink &) = delete;
    ~PlayedLink() { close(fd_); }

    void send(const std::string &hex)
    {
        const std::vector<std::uint8_t> bytes = bytesOfHex(hex);
        if (::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("the panel takes no bytes");
    }

    std::string receive(std::size_t count)
    {
        std::vector<std::uint8_t> bytes(count);
        for (std::size_t done = 0; done < count;) {
            const ssize_t n = receiveSome(bytes.data() + done, count - done);
            if (n <= 0)
                throw std::runtime_error("the panel closed the connection");
            done += static_cast<std::size_t>(n);
        }
        return hexOfBytes(bytes);
    }

    // Waits until the panel closes; what it sends before does not matter.
    void awaitClose()
    {
        std::uint8_t bytes[256];
        while (receiveSome(bytes, sizeof bytes) > 0) {
        }
    }

    // The panel asks for a node address and gets 239.
    void exchangeNodes()
    {
        EXPECT_EQ(receive(20), plainHex(nodeRequest()));
        send(nodeReply(239));
    }

    // The next FINS command, from its code on.
    std::string command()
    {
        const std::string head = receive(8);
        const std::string rest = receive(std::stoul(head.substr(8, 8), nullptr, 16));
        sid = static_cast<unsigned>(std::stoul(rest.substr(2 * 17, 2), nullptr, 16));
        return rest.substr(2 * 18);
    }

    // The response to the latest command, from its code on.
    void answer(const std::string &response) { send(reply(response)); }
    std::string reply(const std::string &response) const { return responseFrame(response, sid); }

    unsigned sid = 0;

private:
    ssize_t receiveSome(std::uint8_t *to, std::size_t size)
    {
        pollfd polled = {fd_, POLLIN, 0};
        if (poll(&polled, 1, DEFAULT_DEADLINE_MS) <= 0)
            throw std::runtime_error("the panel sends nothing");
        return recv(fd_, to, size, 0);
    }

    int fd_;
};

// Listens on a port of its own. Until accept() is called, connections are made but never served; once it has stopped
// listening, they are refused.
class PlayedPlc {
public:
    PlayedPlc() = default;
    PlayedPlc(const PlayedPlc &) = delete;
    PlayedPlc &operator=(const PlayedPlc &) = delete;
    ~PlayedPlc() { stopListening(); }

    void stopListening()
    {
        if (fd_ >= 0)
            close(fd_);
        fd_ = -1;
    }

    std::unique_ptr<PlayedLink> accept()
    {
        pollfd polled = {fd_, POLLIN, 0};
        if (poll(&polled, 1, DEFAULT_DEADLINE_MS) <= 0)
            throw std::runtime_error("the panel does not connect");
        return std::make_unique<PlayedLink>(::accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC));
    }

    std::string host() const { return heldPort.host(); }

    std::string linkLost(const std::string &reason, int delay = 100) const
    {
        return "link to " + host() + " lost: " + reason + ", retrying in " + std::to_string(delay) + " ms";
    }

    const HeldPort heldPort;
    const int      port = heldPort.number();

private:
    int fd_ = heldPort.startListening();
};

// A panel, and the PLC that the test plays for it.
class PlayedTest : public ::testing::Test {
protected:
    void begin(const Words &command)
    {
        panel = startPanel(command);
        acceptLink();
    }

    // A link up to the exchange of node addresses; the one before, if any, is closed.
    void acceptLink()
    {
        link = nullptr;
        link = plc.accept();
        link->exchangeNodes();
    }

    std::string connected() const { return "connected to " + plc.host() + ": this node 239, PLC node 1\n"; }

    PlayedPlc                   plc;
    std::unique_ptr<Process>    panel;
    std::unique_ptr<PlayedLink> link;
};

#endif
