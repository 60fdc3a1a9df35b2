#include "link/tcp_link.h"

#include "base/stop_flag.h"
#include "link/fins_layout.h"
#include "link/reply_judge.h"

#include <asio.hpp>

#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

// Bytes kept of what is no reply.
static const std::size_t STRAY_LIMIT = 16;

static const auto NUMERIC = asio::ip::resolver_base::numeric_host | asio::ip::resolver_base::numeric_service;

static timeval toTimeval(Millis time)
{
    timeval value = {};
    value.tv_sec  = static_cast<decltype(value.tv_sec)>(time.count() / 1000);
    value.tv_usec = static_cast<decltype(value.tv_usec)>(time.count() % 1000 * 1000);
    return value;
}

TcpLink::TcpLink(Millis timeout) : timeout_(timeout), receiveTimeout_(0), socket_(-1), failure_(LinkFailure::NONE) {}

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

void TcpLink::tick()
{
    if (tick_)
        tick_();
}

bool TcpLink::notConnected(LinkFailure failure, const std::string &reason)
{
    failure_ = failure;
    problem_ = reason;
    return false;
}

LinkFailure connectFailure(const std::error_code &error)
{
    if (error == asio::error::connection_refused)
        return LinkFailure::REFUSED;
    if (error == asio::error::host_unreachable || error == asio::error::network_unreachable)
        return LinkFailure::UNREACHABLE;
    return error == asio::error::timed_out ? LinkFailure::CONNECT_TIMEOUT : LinkFailure::OTHER;
}

// Lets `context` work until `done`, the deadline or the end of the program.
template <typename Tick>
static bool runUntil(asio::io_context &context, const bool &done, TimePoint deadline, Tick tick)
{
    while (!done && !stopRequested() && Clock::now() < deadline) {
        context.run_one_until(std::min(deadline, Clock::now() + Millis(100)));
        tick();
    }
    return done;
}

bool TcpLink::connect(const std::string &host, const std::string &port)
{
    close();
    stray_.clear();
    address_.clear();
    failure_ = LinkFailure::NONE;
    const TimePoint start = Clock::now();
    TimePoint resolvedAt = start;
    asio::io_context context;
    asio::ip::tcp::resolver resolver(context);
    asio::ip::tcp::socket socket(context);
    asio::error_code error;
    bool done = false;
    bool resolved = false;
    const auto connectTo = [&](const asio::error_code &failure, const auto &endpoints) {
        resolvedAt = Clock::now();
        error    = failure;
        done     = static_cast<bool>(failure);
        resolved = !failure;
        if (done)
            return;
        address_ = endpoints.begin()->endpoint().address().to_string();
        asio::async_connect(socket, endpoints, [&](const asio::error_code &refused, const auto &connected) {
            error = refused;
            done  = true;
            if (!refused)
                address_ = connected.address().to_string();
        });
    };
    // Numbers need no name server and thus no thread of their own.
    const auto numbers = resolver.resolve(host, port, NUMERIC, error);
    if (!error)
        connectTo(error, numbers);
    else
        resolver.async_resolve(host, port, connectTo);
    const bool ended = runUntil(context, done, deadlineFrom(start), [this] { tick(); });
    resolveTime_ = resolvedAt - start;
    connectTime_ = Clock::now() - resolvedAt;
    if (!ended && !resolved)
        return notConnected(LinkFailure::RESOLVE_TIMEOUT, "the host name was not resolved in time");
    if (!ended)
        return notConnected(LinkFailure::CONNECT_TIMEOUT, "no connection in time");
    if (!resolved)
        return notConnected(LinkFailure::NOT_RESOLVED, "cannot resolve the host name: " + error.message());
    if (error)
        return notConnected(connectFailure(error), error.message());
    socket.native_non_blocking(false, error);
    const int connected = socket.release(error);
    if (error)
        return notConnected(LinkFailure::OTHER, error.message());
    adopt(connected);
    return true;
}

bool TcpLink::pauseUntil(TimePoint end)
{
    while (!stopRequested()) {
        const Millis left = std::chrono::ceil<Millis>(end - Clock::now());
        if (left.count() <= 0)
            return true;
        pollfd polled = {socket_, POLLRDHUP, 0};
        if (::poll(&polled, 1, static_cast<int>(std::min(left, TICK).count())) > 0) {
            lost("the PLC closed the connection");
            return false;
        }
        if (left > TICK)
            tick();
    }
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
    setReceiveTimeout(slice(timeout_));
    assembler_.reset();
    late_.forget();
}

// The longest that the first receive of an exchange waits; at least one millisecond: 0 would mean for ever.
Millis TcpLink::firstWait() const
{
    if (limit_ == TimePoint::max())
        return timeout_;
    return std::clamp(std::chrono::duration_cast<Millis>(limit_ - Clock::now()), Millis(1), timeout_);
}

// The longest that one receive may block.
Millis TcpLink::slice(Millis wait) const
{
    return tick_ ? std::min(wait, TICK) : wait;
}

void TcpLink::setReceiveTimeout(Millis timeout)
{
    if (timeout == receiveTimeout_)
        return;
    const timeval value = toTimeval(timeout);
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value);
    receiveTimeout_ = timeout;
}

ExchangeStatus TcpLink::exchange(const std::uint8_t *request, std::size_t size, TimePoint start)
{
    assembler_.beginReply();
    failure_ = LinkFailure::NONE;
    setReceiveTimeout(slice(firstWait()));
    const ExchangeStatus sent = sendAll(request, size);
    if (sent != ExchangeStatus::REPLY)
        return sent;
    const ExchangeStatus status = receiveReply(request, size, start);
    const bool answered = status == ExchangeStatus::REPLY && carriesFins(reply(), replySize())
                          && carriesFins(request, size) && reply()[FINS_SID] == request[FINS_SID];
    if (!answered && carriesFins(request, size))
        late_.unanswered(request[FINS_SID]);
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
    const TimePoint deadline = deadlineFrom(start);
    for (;;) {
        const ExchangeStatus received = receiveSome(deadline);
        if (received != ExchangeStatus::REPLY)
            return received;
        while (assembler_.state() == AssemblyState::COMPLETE && isLate(request, size)) {
            if (lateCall_)
                lateCall_(reply(), replySize());
            assembler_.dropReply();
        }
        switch (assembler_.state()) {
        case AssemblyState::COMPLETE:
            return ExchangeStatus::REPLY;
        case AssemblyState::INCOMPLETE:
            break;
        case AssemblyState::WRONG_MAGIC:
            stray_.assign(reply(), reply() + std::min(assembler_.leftOver(), STRAY_LIMIT));
            return noReply(LinkFailure::WRONG_PROTOCOL, "the reply does not begin with FINS");
        case AssemblyState::TOO_SHORT:
        case AssemblyState::TOO_LONG:
            stray_.assign(reply(), reply() + std::min(assembler_.leftOver(), STRAY_LIMIT));
            return noReply(LinkFailure::WRONG_PROTOCOL, "the reply has an impossible length");
        }
        if (!awaitUntil(deadline))
            return notInTime();
    }
}

// Receives what is there, or waits for it; an interrupted wait that is not the end of the program counts as nothing.
ExchangeStatus TcpLink::receiveSome(TimePoint deadline)
{
    const ssize_t received = ::recv(socket_, assembler_.room(), assembler_.roomSize(), 0);
    if (received > 0) {
        assembler_.added(static_cast<std::size_t>(received));
        return ExchangeStatus::REPLY;
    }
    if (received == 0)
        return lost("the PLC closed the connection");
    const int problem = errno;
    if (problem != EINTR && problem != EAGAIN && problem != EWOULDBLOCK)
        return lost(std::generic_category().message(problem));
    if (stopRequested())
        return ExchangeStatus::INTERRUPTED;
    tick();
    if (problem == EINTR || (tick_ && deadline - Clock::now() >= Millis(1)))
        return ExchangeStatus::REPLY;
    return notInTime();
}

ExchangeStatus TcpLink::notInTime()
{
    if (isOver())
        return ExchangeStatus::INTERRUPTED;
    const std::size_t part = assembler_.leftOver();
    if (part == 0)
        return noReply(LinkFailure::SILENCE, "no reply in time");
    const std::size_t whole = assembler_.expectedSize();
    const std::string size = std::to_string(part) + (whole > 0 ? " of " + std::to_string(whole) : "");
    return noReply(LinkFailure::CUT_REPLY, "only " + size + (size == "1" ? " byte" : " bytes")
                                               + " of the reply came in time");
}

ExchangeStatus TcpLink::noReply(LinkFailure failure, const std::string &reason)
{
    failure_ = failure;
    problem_ = reason;
    return ExchangeStatus::NO_REPLY;
}

// Shortens the socket's timeout to what is left of the deadline, at least one millisecond: 0 would mean for ever.
bool TcpLink::awaitUntil(TimePoint deadline)
{
    const Millis left = std::chrono::duration_cast<Millis>(deadline - Clock::now());
    if (left <= Millis(0))
        return false;
    setReceiveTimeout(slice(left));
    return true;
}

bool TcpLink::isLate(const std::uint8_t *request, std::size_t size)
{
    return carriesFins(request, size) && carriesFins(reply(), replySize())
           && reply()[FINS_SID] != request[FINS_SID] && late_.settle(reply()[FINS_SID]);
}

ExchangeStatus TcpLink::lost(const std::string &reason)
{
    failure_ = LinkFailure::CLOSED;
    problem_ = reason;
    close();
    return ExchangeStatus::LOST;
}
