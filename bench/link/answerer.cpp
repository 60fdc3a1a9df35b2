#include "link/answerer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

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
    READ_DATA     = 30, // n  of a reply
    READ_COUNT    = 32, // 2  of a request
    READ_SIZE     = 34
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

void serve(int listener, const Answer &answer)
{
    const int connection = accept(listener, nullptr, nullptr);
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    std::uint8_t request[BUFFER_SIZE];
    std::uint8_t reply[BUFFER_SIZE] = {};
    for (;;) {
        const ssize_t size = recv(connection, request, sizeof request, 0);
        if (size <= 0)
            return;
        const std::size_t replySize = answer(request, static_cast<std::size_t>(size), reply);
        if (replySize == 0 || send(connection, reply, replySize, MSG_NOSIGNAL) < 0)
            return;
    }
}

} // namespace

Answer answerPingPong()
{
    return [](const std::uint8_t *, std::size_t, std::uint8_t *) { return READ_REPLY_SIZE; };
}

Answer answerFins(int changingWords)
{
    return [changingWords, value = std::size_t(0)](const std::uint8_t *request, std::size_t size,
                                                   std::uint8_t *reply) mutable -> std::size_t {
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
        if (size != READ_SIZE || get16(request + FINS_COMMAND) != 0x0101)
            return 0;
        const std::size_t count = std::min<std::size_t>(get16(request + READ_COUNT), 999);
        std::copy(request + TCP_SIZE, request + FINS_END_CODE, reply + TCP_SIZE);
        reply[FINS_ICF] = 0xC0; // a response
        std::copy(request + FINS_FROM, request + FINS_SID, reply + FINS_TO);
        std::copy(request + FINS_TO, request + FINS_FROM, reply + FINS_FROM);
        put16(reply + FINS_END_CODE, 0);
        put16(reply + TCP_LENGTH + 2, READ_DATA + 2 * count - TCP_COMMAND);
        putWords(reply + READ_DATA, count, changingWords, ++value);
        return READ_DATA + 2 * count;
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

AnswererProcess::AnswererProcess(const Answer &answer) : process_(-1), port_(0)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (listener < 0 || bind(listener, generic, length) != 0 || listen(listener, 1) != 0
        || getsockname(listener, generic, &length) != 0)
        throw std::runtime_error(std::string("no loopback port: ") + std::strerror(errno));
    port_ = ntohs(address.sin_port);
    process_ = fork();
    if (process_ == 0) {
        serve(listener, answer);
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
