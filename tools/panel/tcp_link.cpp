#include "tcp_link.h"

#include "reply_judge.h"
#include "stop_flag.h"

#include <asio.hpp>

#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

static timeval toTimeval(Millis time)
{
    timeval value = {};
    value.tv_sec  = static_cast<decltype(value.tv_sec)>(time.count() / 1000);
    value.tv_usec = static_cast<decltype(value.tv_usec)>(time.count() % 1000 * 1000);
    return value;
}

TcpLink::TcpLink(Millis timeout) : timeout_(timeout), receiveTimeout_(0), socket_(-1) {}

TcpLink::~TcpLink()
{
    close();
}

void TcpLink::close()
{
    if (socket_ >= 0)
        ::close(socket_);
    socket_ = -1;
}

// Runs `context` until `done`, the deadline or the end of the program.
static bool runUntil(asio::io_context &context, const bool &done, TimePoint deadline)
{
    while (!done && !stopRequested() && Clock::now() < deadline)
        context.run_one_until(std::min(deadline, Clock::now() + Millis(100)));
    return done;
}

bool TcpLink::connect(const std::string &host, const std::string &port)
{
    close();
    const TimePoint deadline = Clock::now() + timeout_;
    asio::io_context context;
    asio::ip::tcp::resolver resolver(context);
    asio::ip::tcp::socket socket(context);
    asio::error_code error;
    bool done = false;
    bool resolved = false;
    resolver.async_resolve(host, port, [&](const asio::error_code &failure, const auto &endpoints) {
        error    = failure;
        done     = static_cast<bool>(failure);
        resolved = !failure;
        if (done)
            return;
        asio::async_connect(socket, endpoints, [&](const asio::error_code &refused, const auto &) {
            error = refused;
            done  = true;
        });
    });
    if (!runUntil(context, done, deadline)) {
        problem_ = resolved ? "no connection in time" : "the host name was not resolved in time";
        return false;
    }
    if (error) {
        problem_ = resolved ? error.message() : "cannot resolve the host name: " + error.message();
        return false;
    }
    socket.native_non_blocking(false, error);
    const int connected = socket.release(error);
    if (error) {
        problem_ = error.message();
        return false;
    }
    adopt(connected);
    return true;
}

void TcpLink::adopt(int connected)
{
    socket_ = connected;
    const int on = 1;
    const timeval sendTimeout = toTimeval(timeout_);
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &sendTimeout, sizeof sendTimeout);
    receiveTimeout_ = Millis(0);
    setReceiveTimeout(timeout_);
    assembler_.reset();
    late_.forget();
}

void TcpLink::setReceiveTimeout(Millis timeout)
{
    if (timeout == receiveTimeout_)
        return;
    const timeval value = toTimeval(timeout);
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value);
    receiveTimeout_ = timeout;
}

ExchangeStatus TcpLink::exchange(const std::uint8_t *request, std::size_t size)
{
    assembler_.beginReply();
    setReceiveTimeout(timeout_);
    const TimePoint start = Clock::now();
    const ExchangeStatus sent = sendAll(request, size);
    if (sent != ExchangeStatus::REPLY)
        return sent;
    const ExchangeStatus status = receiveReply(request, size, start);
    const bool answered = status == ExchangeStatus::REPLY && carriesFins(reply(), replySize())
                          && carriesFins(request, size) && reply()[FRAME_SID] == request[FRAME_SID];
    if (!answered && carriesFins(request, size))
        late_.unanswered(request[FRAME_SID]);
    return status;
}

ExchangeStatus TcpLink::sendAll(const std::uint8_t *request, std::size_t size)
{
    while (size > 0) {
        const ssize_t sent = ::send(socket_, request, size, MSG_NOSIGNAL);
        if (sent >= 0) {
            request += sent;
            size -= static_cast<std::size_t>(sent);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            // Part of the request may be on its way, so the connection cannot be used again.
            return lost("the request could not be sent in time");
        } else if (errno != EINTR) {
            return lost(std::generic_category().message(errno));
        } else if (stopRequested()) {
            return ExchangeStatus::INTERRUPTED;
        }
    }
    return ExchangeStatus::REPLY;
}

ExchangeStatus TcpLink::receiveReply(const std::uint8_t *request, std::size_t size, TimePoint start)
{
    for (;;) {
        const ExchangeStatus received = receiveSome();
        if (received != ExchangeStatus::REPLY)
            return received;
        while (assembler_.state() == AssemblyState::COMPLETE && isLate(request, size))
            assembler_.dropReply();
        switch (assembler_.state()) {
        case AssemblyState::COMPLETE:
            return ExchangeStatus::REPLY;
        case AssemblyState::INCOMPLETE:
            break;
        case AssemblyState::WRONG_MAGIC:
            problem_ = "the reply does not begin with FINS";
            return ExchangeStatus::NO_REPLY;
        case AssemblyState::TOO_SHORT:
        case AssemblyState::TOO_LONG:
            problem_ = "the reply has an impossible length";
            return ExchangeStatus::NO_REPLY;
        }
        if (!awaitUntil(start + timeout_))
            return ExchangeStatus::NO_REPLY;
    }
}

// Receives what is there, or waits for it; an interrupted wait that is not the end of the program counts as nothing.
ExchangeStatus TcpLink::receiveSome()
{
    const ssize_t received = ::recv(socket_, assembler_.room(), assembler_.roomSize(), 0);
    if (received > 0) {
        assembler_.added(static_cast<std::size_t>(received));
        return ExchangeStatus::REPLY;
    }
    if (received == 0)
        return lost("the PLC closed the connection");
    if (errno == EINTR)
        return stopRequested() ? ExchangeStatus::INTERRUPTED : ExchangeStatus::REPLY;
    if (errno != EAGAIN && errno != EWOULDBLOCK)
        return lost(std::generic_category().message(errno));
    problem_ = "no reply in time";
    return ExchangeStatus::NO_REPLY;
}

// Shortens the socket's timeout to what is left of the deadline, at least one millisecond: 0 would mean for ever.
bool TcpLink::awaitUntil(TimePoint deadline)
{
    const Millis left = std::chrono::duration_cast<Millis>(deadline - Clock::now());
    problem_ = "no whole reply in time";
    if (left <= Millis(0))
        return false;
    setReceiveTimeout(left);
    return true;
}

bool TcpLink::isLate(const std::uint8_t *request, std::size_t size)
{
    return carriesFins(request, size) && carriesFins(reply(), replySize())
           && reply()[FRAME_SID] != request[FRAME_SID] && late_.settle(reply()[FRAME_SID]);
}

ExchangeStatus TcpLink::lost(const std::string &reason)
{
    problem_ = reason;
    close();
    return ExchangeStatus::LOST;
}
