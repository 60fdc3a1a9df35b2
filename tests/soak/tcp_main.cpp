// The driver against the simulator over the loopback interface, with a real socket and real losses of the connection.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <sstream>

#include "soak_run.h"
#include "support/process.h"

namespace {

using soak::Bytes;
using soak::Failure;
using Clock = std::chrono::steady_clock;

class TcpLink : public soak::Link {
public:
    explicit TcpLink(long long seed);
    ~TcpLink() override;

    TcpLink(const TcpLink &) = delete;
    TcpLink &operator=(const TcpLink &) = delete;

    void connect() override;
    bool isUp() const override { return socket_ >= 0; }
    Bytes exchange(const Bytes &request) override;
    void setFaults(bool isOn) override;
    void change(const std::string &type, int address, int value) override;
    std::vector<int> words(const std::string &type, int address, int count) override;
    int peer() override;

private:
    enum { DEADLINE_MS = 50, CONNECT_MS = 20000, LONGEST_REPLY = 2028, DISCONNECT_EVERY = 5000 };

    std::string tell(const std::string &line);
    void        close();
    bool        send(const Bytes &request);
    void        discardRest();
    bool        receive(Bytes &bytes, std::size_t count, Clock::time_point deadline);
    Bytes       receiveFrame(Clock::time_point deadline);
    bool        isLate(const Bytes &request, const Bytes &reply) const;

    Process   plc_;
    int       port_ = 0;
    int       socket_ = -1;
    bool      hasFaults_ = false;
    bool      refusesForMode_ = false;
    long long exchanges_ = 0;
};

TcpLink::TcpLink(long long seed)
    : plc_({FINS_PLC_PATH, "--port", "0", "--seed", std::to_string(seed)})
{
    const std::string line = plc_.readLine();
    port_ = std::stoi(line.substr(line.rfind(':') + 1));
}

TcpLink::~TcpLink() { close(); }

// The answer to a console line, behind its "ok".
std::string TcpLink::tell(const std::string &line)
{
    plc_.writeLine(line);
    const std::string answer = plc_.readLine();
    if (answer.substr(0, 2) != "ok")
        throw Failure("the simulator answers '" + line + "' with '" + answer + "'");
    return answer.substr(2);
}

void TcpLink::setFaults(bool isOn)
{
    hasFaults_ = isOn;
    if (!isOn) {
        tell("faults off");
        return;
    }
    for (const char *const fault : {"drop@0.0005", "silence@0.0005", "wrong-sid@0.01", "short=3@0.005", "long=2@0.005",
                                    "double@0.005", "bytewise=0@0.001", "close@0.0015"})
        tell(std::string("fault ") + fault);
    // A refusal that counts as an acknowledgement, and one that has the driver change the PLC's mode, by turns.
    refusesForMode_ = !refusesForMode_;
    tell(refusesForMode_ ? "fault end-code=2203@0.004" : "fault end-code=1101@0.004");
}

void TcpLink::change(const std::string &type, int address, int value)
{
    tell("write " + type + ":" + std::to_string(address) + " " + std::to_string(value));
}

std::vector<int> TcpLink::words(const std::string &type, int address, int count)
{
    std::istringstream answer(tell("read " + type + ":" + std::to_string(address) + ":" + std::to_string(count)));
    std::vector<int>   values;
    for (int value = 0; answer >> value;)
        values.push_back(value);
    if (values.size() != static_cast<std::size_t>(count))
        throw Failure("the simulator gives too few words");
    return values;
}

// Connections that have ended are gone once the simulator counts one client, this link.
int TcpLink::peer()
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(CONNECT_MS);
    while (tell("clients").substr(0, 3) != " 1 ") {
        if (Clock::now() >= deadline)
            throw Failure("the simulator keeps connections that have ended");
        poll(nullptr, 0, 5);
    }
    return plc_.id();
}

void TcpLink::close()
{
    if (socket_ >= 0)
        ::close(socket_);
    socket_ = -1;
}

void TcpLink::connect()
{
    close();
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port_));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(CONNECT_MS);
    for (;;) {
        const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int on = 1;
        setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (::connect(made, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) {
            socket_ = made;
            return;
        }
        ::close(made);
        if (Clock::now() >= deadline)
            throw Failure("the simulator takes no connection");
        poll(nullptr, 0, 5);
    }
}

bool TcpLink::send(const Bytes &request)
{
    for (std::size_t done = 0; done < request.size();) {
        const ssize_t n = ::send(socket_, request.data() + done, request.size() - done, MSG_NOSIGNAL);
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// What is left of earlier replies.
void TcpLink::discardRest()
{
    std::uint8_t rest[4096];
    while (recv(socket_, rest, sizeof rest, MSG_DONTWAIT) > 0) {
    }
}

// Appends exactly `count` bytes. False when they do not come in time; a connection that ends is closed.
bool TcpLink::receive(Bytes &bytes, std::size_t count, Clock::time_point deadline)
{
    for (const std::size_t wanted = bytes.size() + count; bytes.size() < wanted;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd ready = {socket_, POLLIN, 0};
        if (left < 0 || poll(&ready, 1, static_cast<int>(left) + 1) != 1)
            return false;
        std::uint8_t part[2048];
        const std::size_t room = wanted - bytes.size();
        const ssize_t n = recv(socket_, part, room < sizeof part ? room : sizeof part, 0);
        if (n <= 0) {
            close();
            return false;
        }
        bytes.insert(bytes.end(), part, part + n);
    }
    return true;
}

// On a busy machine a reply that comes byte by byte misses the deadline in its middle. Nobody knows then where the next
// one begins, so the connection is given up, as a panel does.
Bytes TcpLink::receiveFrame(Clock::time_point deadline)
{
    Bytes frame;
    if (!receive(frame, 8, deadline)) {
        if (!frame.empty())
            close();
        return Bytes();
    }
    const std::size_t length = frame[6] * 256u + frame[7];
    const bool isHeader = std::equal(frame.begin(), frame.begin() + 4, "FINS") && frame[4] == 0 && frame[5] == 0
                       && length + 8 <= LONGEST_REPLY;
    if (!isHeader && !hasFaults_)
        throw Failure("the simulator sends what is no reply");
    if (isHeader && receive(frame, length, deadline))
        return frame;
    close();
    return Bytes();
}

// A reply to one of the requests before: its service ID is a little older.
bool TcpLink::isLate(const Bytes &request, const Bytes &reply) const
{
    if (request.size() <= 25 || reply.size() <= 25)
        return request.size() > 25 && reply.size() == 24;
    const int age = (request[25] - reply[25] + 255) % 255;
    return age >= 1 && age <= 20;
}

Bytes TcpLink::exchange(const Bytes &request)
{
    if (hasFaults_ && ++exchanges_ % DISCONNECT_EVERY == 0)
        tell("disconnect");
    discardRest();
    if (!send(request)) {
        close();
        return Bytes();
    }
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(DEADLINE_MS);
    Bytes reply = receiveFrame(deadline);
    while (isUp() && isLate(request, reply))
        reply = receiveFrame(deadline);
    const bool isHandshake = request.size() == 20;
    if (isHandshake && (reply.size() != 24 || reply[11] != 1 || reply[15] != 0))
        return Bytes();
    return reply;
}

} // namespace

int main(int argc, char **argv)
{
    soak::Options options;
    options.requests = 20000;
    return soak::runSoak(argc, argv, options,
                         [](const soak::Options &parsed) { return std::make_unique<TcpLink>(parsed.seed); });
}
