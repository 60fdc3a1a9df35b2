#include "link/tcp_link.h"

#include "link/fins_layout.h"
#include "link/reply_judge.h"

#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

// Bytes kept of what is no reply.
static const std::size_t STRAY_LIMIT = 16;

static timeval toTimeval(Millis time)
{
    timeval value = {};
    value.tv_sec  = static_cast<decltype(value.tv_sec)>(time.count() / 1000);
    value.tv_usec = static_cast<decltype(value.tv_usec)>(time.count() % 1000 * 1000);
    return value;
}

TcpLink::TcpLink(Millis timeout, StopSignal *stop)
    : timeout_(timeout), stop_(stop), receiveTimeout_(0), socket_(-1), failure_(LinkFailure::NONE)
{
}

TcpLink::~TcpLink()
{
    close();
}

void TcpLink::close()
{
    const std::lock_guard<std::mutex> lock(socketMutex_);
    if (socket_ >= 0)
        ::close(socket_);
    socket_ = -1;
}

void TcpLink::abort()
{
    const std::lock_guard<std::mutex> lock(socketMutex_);
    if (socket_ >= 0)
        shutdown(socket_, SHUT_RDWR);
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

LinkFailure connectFailure(int error)
{
    switch (error) {
    case ECONNREFUSED: return LinkFailure::REFUSED;
    case EHOSTUNREACH:
    case ENETUNREACH:  return LinkFailure::UNREACHABLE;
    case ETIMEDOUT:    return LinkFailure::CONNECT_TIMEOUT;
    default:           return LinkFailure::OTHER;
    }
}

// Waits for `events` of the descriptor, which may be -1.
TcpLink::Wait TcpLink::awaitEvent(int descriptor, short events, TimePoint deadline)
{
    for (;;) {
        const Millis left = std::chrono::ceil<Millis>(deadline - Clock::now());
        if (isStopped() || left.count() <= 0)
            return Wait::OVER;
        pollfd polled[] = {{descriptor, events, 0}, {stop_ ? stop_->fd() : -1, POLLIN, 0}};
        const bool any = ::poll(polled, 2, static_cast<int>(slice(left).count())) > 0;
        if (any && polled[0].revents != 0)
            return Wait::READY;
        if (any)
            return Wait::WOKEN;
        if (left > TICK)
            tick();
    }
}

// The same where a wake is for somebody else, who looks for himself before the next pause.
bool TcpLink::awaitDone(int descriptor, short events, TimePoint deadline)
{
    Wait wait = awaitEvent(descriptor, events, deadline);
    while (wait == Wait::WOKEN) {
        stop_->clear();
        wait = awaitEvent(descriptor, events, deadline);
    }
    return wait == Wait::READY;
}

// Returns false with problem() set.
bool TcpLink::connectTo(const addrinfo &address, TimePoint deadline)
{
    const int made = socket(address.ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const bool isConnected = made >= 0 && ::connect(made, address.ai_addr, address.ai_addrlen) == 0;
    int error = isConnected ? 0 : errno;
    if (error == EINPROGRESS) {
        socklen_t size = sizeof error;
        if (awaitDone(made, POLLOUT, deadline))
            getsockopt(made, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    if (error == 0) {
        adopt(made);
        return true;
    }
    if (made >= 0)
        ::close(made);
    if (error == EINPROGRESS)
        return notConnected(LinkFailure::CONNECT_TIMEOUT, "no connection in time");
    return notConnected(connectFailure(error), std::generic_category().message(error));
}

// The addresses of the host, or null with problem() set.
NameLookup::Addresses TcpLink::resolve(const std::string &host, const std::string &port, TimePoint deadline)
{
    NameLookup::Addresses found = NameLookup::ofNumbers(host, port);
    if (found)
        return found;
    try {
        if (!lookup_ || !lookup_->isOf(host, port))
            lookup_ = NameLookup::begin(host, port);
    } catch (const std::exception &error) { // the system lacks a thread or a descriptor
        notConnected(LinkFailure::OTHER, error.what());
        return nullptr;
    }
    if (!awaitDone(lookup_->fd(), POLLIN, deadline)) {
        notConnected(LinkFailure::RESOLVE_TIMEOUT, "the host name was not resolved in time");
        return nullptr;
    }
    std::string problem;
    found = lookup_->take(problem);
    lookup_.reset();
    if (!found)
        notConnected(LinkFailure::NOT_RESOLVED, "cannot resolve the host name: " + problem);
    return found;
}

static std::string addressText(const addrinfo &address)
{
    char text[NI_MAXHOST] = "";
    getnameinfo(address.ai_addr, address.ai_addrlen, text, sizeof text, nullptr, 0, NI_NUMERICHOST);
    return text;
}

bool TcpLink::connect(const std::string &host, const std::string &port)
{
    close();
    stray_.clear();
    address_.clear();
    failure_ = LinkFailure::NONE;
    connectTime_ = {};
    const TimePoint start = Clock::now();
    const NameLookup::Addresses found = resolve(host, port, deadlineFrom(start));
    const TimePoint resolvedAt = Clock::now();
    resolveTime_ = resolvedAt - start;
    if (!found)
        return false;
    address_ = addressText(*found);
    bool isConnected = false;
    for (const addrinfo *address = found.get(); address && !isConnected; address = address->ai_next) {
        isConnected = connectTo(*address, deadlineFrom(start));
        if (isConnected)
            address_ = addressText(*address);
    }
    connectTime_ = Clock::now() - resolvedAt;
    return isConnected;
}

bool TcpLink::pauseUntil(TimePoint end)
{
    if (awaitEvent(socket_, POLLRDHUP, end) != Wait::READY)
        return true;
    lost("the PLC closed the connection");
    return false;
}

void TcpLink::adopt(int connected)
{
    fcntl(connected, F_SETFL, fcntl(connected, F_GETFL) & ~O_NONBLOCK);
    {
        const std::lock_guard<std::mutex> lock(socketMutex_);
        socket_ = connected;
        if (isStopped())
            shutdown(socket_, SHUT_RDWR); // abort() came before
    }
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
        } else if (isStopped()) {
            return ExchangeStatus::INTERRUPTED;
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            // Part of the request may be on its way, so the connection cannot be used again.
            return lost("the request could not be sent in time");
        } else if (errno != EINTR) {
            return lost(std::generic_category().message(errno));
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
    const int problem = errno;
    if (isStopped() && received == 0)
        return ExchangeStatus::INTERRUPTED;
    if (received == 0)
        return lost("the PLC closed the connection");
    if (problem != EINTR && problem != EAGAIN && problem != EWOULDBLOCK)
        return lost(std::generic_category().message(problem));
    if (isStopped())
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
