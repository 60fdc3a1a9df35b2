#include "link/answerer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

// FINS/TCP and FINS: offset, size in bytes, field. Big-endian.
enum {
    TCP_LENGTH    = 4,  // 4  number of bytes behind this field
    TCP_COMMAND   = 8,  // 4  0: the client asks for node addresses, 1: the reply to that, 2: a FINS frame
    TCP_SIZE      = 16,
    NODE_CLIENT   = 16, // 4
    NODE_SERVER   = 20, // 4
    NODE_SIZE     = 24,
    FINS_ICF      = 16, // 1  information control field
    FINS_TO       = 19, // 3  network, node and unit
    FINS_FROM     = 22, // 3
    FINS_SID      = 25, // 1  service ID
    FINS_COMMAND  = 26, // 2  MRC, SRC
    FINS_END_CODE = 28, // 2  of a reply
    REPLY_DATA    = 30, // n  of a reply
    MEM_WORD      = 29, // 2  of a request: word address
    MEM_COUNT     = 32, // 2  of a request
    MEM_DATA      = 34  // n  of a write; a read ends here
};

// Modbus/TCP: offset, size in bytes, field. Big-endian.
enum {
    MBAP_LENGTH     = 4,  // 2  number of bytes behind this field
    MODBUS_FUNCTION = 7,  // 1
    MODBUS_BYTES    = 8,  // 1  of a reply: number of data bytes
    MODBUS_DATA     = 9,  // n  of a reply
    MODBUS_COUNT    = 10, // 2  of a request
    MODBUS_SIZE     = 12
};

constexpr std::size_t BUFFER_SIZE = 2048;

void put16(std::uint8_t *at, std::size_t value)
{
    at[0] = static_cast<std::uint8_t>(value >> 8);
    at[1] = static_cast<std::uint8_t>(value);
}

std::size_t get16(const std::uint8_t *at)
{
    return static_cast<std::size_t>(at[0] << 8 | at[1]);
}

/// Words for a reply: both bytes of the first `changing` ones count the replies, the others stay 0. As little work as a
/// bare answer, so that the clients are compared and not the other ends.
void putWords(std::uint8_t *at, std::size_t count, int changing, std::size_t value)
{
    std::fill_n(at, 2 * std::min(count, static_cast<std::size_t>(changing)), static_cast<std::uint8_t>(value));
}

/// Receives a request and sends its reply. False at the end of the connection.
bool serveRequest(int connection, const Answer &answer, std::uint8_t *reply)
{
    std::uint8_t request[BUFFER_SIZE];
    const ssize_t size = recv(connection, request, sizeof request, 0);
    if (size <= 0)
        return false;
    const std::size_t replySize = answer(request, static_cast<std::size_t>(size), reply);
    return replySize > 0 && send(connection, reply, replySize, MSG_NOSIGNAL) >= 0;
}

int acceptOne(int listener)
{
    const int connection = accept(listener, nullptr, nullptr);
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return connection;
}

void awaitReadable(int watcher, int descriptor)
{
    epoll_event event = {};
    event.events  = EPOLLIN;
    event.data.fd = descriptor;
    epoll_ctl(watcher, EPOLL_CTL_ADD, descriptor, &event);
}

/// Until the first of the connections has ended.
void serve(int listener, const Answer &answer, int connections)
{
    std::uint8_t reply[BUFFER_SIZE] = {};
    if (connections == 1) {
        const int connection = acceptOne(listener);
        while (serveRequest(connection, answer, reply)) {
        }
        return;
    }
    const int watcher = epoll_create1(EPOLL_CLOEXEC);
    awaitReadable(watcher, listener);
    std::vector<epoll_event> events(static_cast<std::size_t>(connections));
    for (;;) {
        const int count = epoll_wait(watcher, events.data(), connections, -1);
        for (int i = 0; i < count; ++i) {
            const int descriptor = events[static_cast<std::size_t>(i)].data.fd;
            if (descriptor == listener)
                awaitReadable(watcher, acceptOne(listener));
            else if (!serveRequest(descriptor, answer, reply))
                return;
        }
    }
}

/// The words of a FINS memory request and where they are in the reply.
struct Access {
    std::size_t   address;
    std::size_t   count;
    const std::uint8_t *written; // null: a read
    std::uint8_t *words;         // of the reply to a read
};

/// The reply with the node addresses, or that to a read or a write, whose words `access` puts or takes.
template <typename Words>
std::size_t finsReply(const std::uint8_t *request, std::size_t size, std::uint8_t *reply, Words access)
{
    if (size < TCP_SIZE)
        return 0;
    std::copy(request, request + TCP_SIZE, reply);
    if (request[TCP_COMMAND + 3] == 0) {
        std::fill(reply + TCP_SIZE, reply + NODE_SIZE, std::uint8_t(0));
        put16(reply + TCP_LENGTH + 2, NODE_SIZE - TCP_COMMAND);
        reply[TCP_COMMAND + 3] = 1;
        reply[NODE_CLIENT + 3] = 5;
        reply[NODE_SERVER + 3] = 9;
        return NODE_SIZE;
    }
    const std::size_t command = size < MEM_DATA ? 0 : get16(request + FINS_COMMAND);
    const std::size_t count = size < MEM_DATA ? 0 : std::min<std::size_t>(get16(request + MEM_COUNT), 999);
    const bool isWrite = command == 0x0102 && size == MEM_DATA + 2 * count;
    if (!isWrite && (command != 0x0101 || size != MEM_DATA))
        return 0;
    std::copy(request + TCP_SIZE, request + FINS_END_CODE, reply + TCP_SIZE);
    reply[FINS_ICF] = 0xC0; // a response
    std::copy(request + FINS_FROM, request + FINS_SID, reply + FINS_TO);
    std::copy(request + FINS_TO, request + FINS_FROM, reply + FINS_FROM);
    put16(reply + FINS_END_CODE, 0);
    const std::size_t replySize = REPLY_DATA + (isWrite ? 0 : 2 * count);
    put16(reply + TCP_LENGTH + 2, replySize - TCP_COMMAND);
    access(Access{get16(request + MEM_WORD), count, isWrite ? request + MEM_DATA : nullptr, reply + REPLY_DATA});
    return replySize;
}

} // namespace

// ---- Gate --------------------------------------------------------------------------------------------------------

Gate::Gate() : fd_(eventfd(0, EFD_CLOEXEC))
{
    if (fd_ < 0)
        throw std::runtime_error("the system has no file descriptor left");
}

Gate::~Gate()
{
    close(fd_);
}

void Gate::open(long replies) const
{
    const auto count = static_cast<std::uint64_t>(replies);
    if (write(fd_, &count, sizeof count) != sizeof count)
        throw std::runtime_error("the gate cannot be opened");
}

void Gate::pass()
{
    while (left_ == 0) {
        if (read(fd_, &left_, sizeof left_) != sizeof left_)
            left_ = 0;
    }
    --left_;
}

// ---- Answers -----------------------------------------------------------------------------------------------------

Answer answerPingPong(Gate *gate)
{
    return [gate](const std::uint8_t *, std::size_t, std::uint8_t *) {
        if (gate)
            gate->pass();
        return READ_REPLY_SIZE;
    };
}

Answer answerFins(int changingWords, Gate *gate)
{
    return [=, value = std::size_t(0)](const std::uint8_t *request, std::size_t size, std::uint8_t *reply) mutable {
        return finsReply(request, size, reply, [&](const Access &access) {
            if (gate && access.count == 64)
                gate->pass();
            putWords(access.words, access.count, changingWords, ++value);
        });
    };
}

Answer answerMemory()
{
    return [memory = std::vector<std::uint8_t>(2 * 0x11000)](const std::uint8_t *request, std::size_t size,
                                                             std::uint8_t *reply) mutable {
        return finsReply(request, size, reply, [&](const Access &access) {
            std::uint8_t *const at = memory.data() + 2 * access.address;
            if (access.written)
                std::copy_n(access.written, 2 * access.count, at);
            else
                std::copy_n(at, 2 * access.count, access.words);
        });
    };
}

/// So much of the time that replies came late is made up for.
constexpr std::chrono::milliseconds CATCH_UP{10};

std::uint64_t stampOf(std::chrono::steady_clock::time_point time)
{
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(time.time_since_epoch()).count());
}

Answer answerStamps(std::chrono::nanoseconds period)
{
    using Clock = std::chrono::steady_clock;
    return [period, next = Clock::time_point()](const std::uint8_t *request, std::size_t size,
                                                std::uint8_t *reply) mutable {
        return finsReply(request, size, reply, [&](const Access &access) {
            if (period.count() > 0) {
                next = std::max(next + period, Clock::now() - CATCH_UP);
                std::this_thread::sleep_until(next);
            }
            const std::uint64_t stamp = stampOf(Clock::now());
            for (std::size_t i = 0; i < 4 && i < access.count; ++i)
                put16(access.words + 2 * i, static_cast<std::size_t>(stamp >> 16 * i & 0xFFFF));
        });
    };
}

Answer answerModbus(int changingWords)
{
    return [changingWords, value = std::size_t(0)](const std::uint8_t *request, std::size_t size,
                                                   std::uint8_t *reply) mutable -> std::size_t {
        if (size != MODBUS_SIZE || request[MODBUS_FUNCTION] != 3)
            return 0;
        const std::size_t count = std::min<std::size_t>(get16(request + MODBUS_COUNT), 125);
        std::copy(request, request + MODBUS_BYTES, reply);
        put16(reply + MBAP_LENGTH, MODBUS_DATA + 2 * count - MBAP_LENGTH - 2);
        reply[MODBUS_BYTES] = static_cast<std::uint8_t>(2 * count);
        putWords(reply + MODBUS_DATA, count, changingWords, ++value);
        return MODBUS_DATA + 2 * count;
    };
}

// ---- The process -------------------------------------------------------------------------------------------------

AnswererProcess::AnswererProcess(const Answer &answer, int connections) : process_(-1), port_(0)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (listener < 0 || bind(listener, generic, length) != 0 || listen(listener, connections) != 0
        || getsockname(listener, generic, &length) != 0)
        throw std::runtime_error(std::string("no loopback port: ") + std::strerror(errno));
    port_ = ntohs(address.sin_port);
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        serve(listener, answer, connections);
        _exit(0);
    }
    close(listener);
    if (process_ < 0)
        throw std::runtime_error(std::string("no process for the other end: ") + std::strerror(errno));
}

AnswererProcess::~AnswererProcess()
{
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}
