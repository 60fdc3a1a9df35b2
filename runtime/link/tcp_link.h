#ifndef RUNTIME_LINK_TCP_LINK_H
#define RUNTIME_LINK_TCP_LINK_H

#include "base/clock.h"
#include "base/stop_signal.h"
#include "link/late_replies.h"
#include "link/name_lookup.h"
#include "link/reply_assembler.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

// One TCP connection to a PLC: connect, send and receive under deadlines. A steady exchange costs one send and one
// receive; the socket's own receive timeout is the deadline.

enum class ExchangeStatus {
    REPLY,      // reply() holds one reply
    NO_REPLY,   // none came in time, or what came is no FINS/TCP reply: problem() says which
    LOST,       // the connection is closed: problem() says why
    INTERRUPTED // the program is asked to end, or its time is over: the reply may still come
};

/// Why a connection could not be made, or an exchange brought no reply.
enum class LinkFailure {
    NONE,
    NOT_RESOLVED,    // the host name is unknown
    RESOLVE_TIMEOUT, // no name server answered in time
    REFUSED,         // nothing listens on the port
    UNREACHABLE,     // there is no way to the host
    CONNECT_TIMEOUT, // the host does not answer the attempt to connect
    CLOSED,          // the peer has closed or reset the connection
    SILENCE,         // no reply in time
    CUT_REPLY,       // part of a reply came in time, the rest did not
    WRONG_PROTOCOL,  // what came is no FINS/TCP reply
    BAD_NODES,       // the node addresses that the PLC gives cannot be used; only the runtime sees this
    TCP_ERROR,       // the reply's FINS/TCP header refuses; only the runtime sees this
    OTHER
};

/// What the system's error number after an attempt to connect means.
LinkFailure connectFailure(int error);

class TcpLink {
public:
    /// `stop`, which may be null and outlives this object, ends every wait.
    TcpLink(Millis timeout, StopSignal *stop);
    ~TcpLink();
    TcpLink(const TcpLink &) = delete;
    TcpLink &operator=(const TcpLink &) = delete;

    /// No call below waits beyond `limit`, whatever its own timeout; at the limit an exchange is INTERRUPTED.
    void setLimit(TimePoint limit) { limit_ = limit; }
    bool isOver() const { return limit_ != TimePoint::max() && Clock::now() >= limit_; }

    /// Resolves and connects within the timeout. On failure problem() says why.
    bool connect(const std::string &host, const std::string &port);
    void close();

    /// From any thread, once the signal was stopped: ends the wait for a reply.
    void abort();

    bool isStopped() const { return stop_ && stop_->isStopped(); }

    /// Calls `tick` at least every TICK while the link waits for anything.
    void onTick(std::function<void()> tick) { tick_ = std::move(tick); }
    static constexpr Millis TICK{150};

    /// Calls `call` with every late reply that is dropped.
    void onLate(std::function<void(const std::uint8_t *, std::size_t)> call) { lateCall_ = std::move(call); }

    /// Pauses until `end`, or until the signal wakes or stops it. Returns false, with problem() set and the connection
    /// closed, when the peer ends the connection meanwhile.
    bool pauseUntil(TimePoint end);

    /// Sends `request` and awaits its reply, both within the timeout, which counts from `start`. Replies that are known
    /// to be late ones to earlier requests are dropped.
    ExchangeStatus exchange(const std::uint8_t *request, std::size_t size, TimePoint start);

    /// True if the reply to a request with this service ID may still come.
    bool awaitsLate(std::uint8_t sid) const { return late_.owes(sid); }

    /// Valid until the next call.
    const std::uint8_t *reply() const { return assembler_.reply(); }
    std::size_t replySize() const { return assembler_.replySize(); }
    const std::string &problem() const { return problem_; }
    LinkFailure failure() const { return failure_; }

    /// The first bytes that came instead of a FINS/TCP reply; empty unless failure() is WRONG_PROTOCOL.
    const std::string &strayBytes() const { return stray_; }

    /// The host's address as of the last connect(), and the time that it took to find out and to connect to it.
    const std::string &address() const { return address_; }
    Clock::duration resolveTime() const { return resolveTime_; }
    Clock::duration connectTime() const { return connectTime_; }

private:
    void tick();
    enum class Wait { READY, WOKEN, OVER };
    Wait awaitEvent(int descriptor, short events, TimePoint deadline);
    bool awaitDone(int descriptor, short events, TimePoint deadline);
    bool connectTo(const addrinfo &address, TimePoint deadline);
    NameLookup::Addresses resolve(const std::string &host, const std::string &port, TimePoint deadline);
    ExchangeStatus sendAll(const std::uint8_t *request, std::size_t size);
    ExchangeStatus receiveReply(const std::uint8_t *request, std::size_t size, TimePoint start);
    ExchangeStatus receiveSome(TimePoint deadline);
    bool isLate(const std::uint8_t *request, std::size_t size);
    Millis firstWait() const;
    Millis slice(Millis wait) const;
    void setReceiveTimeout(Millis timeout);
    bool notConnected(LinkFailure failure, const std::string &reason);
    void adopt(int connected);
    bool awaitUntil(TimePoint deadline);
    ExchangeStatus noReply(LinkFailure failure, const std::string &reason);
    ExchangeStatus notInTime();
    TimePoint deadlineFrom(TimePoint start) const { return std::min(start + timeout_, limit_); }
    ExchangeStatus lost(const std::string &reason);

    const Millis   timeout_;
    StopSignal *const stop_; // null: none
    TimePoint      limit_ = TimePoint::max();
    Millis         receiveTimeout_; // as the socket has it
    std::mutex     socketMutex_;    // held where socket_ changes, and by abort()
    int            socket_;         // -1: not connected
    std::shared_ptr<NameLookup> lookup_; // the latest; null: none is under way
    ReplyAssembler assembler_;
    LateReplies    late_;
    std::string    problem_;
    LinkFailure    failure_;
    std::string    stray_;
    std::string    address_;
    Clock::duration resolveTime_{0};
    Clock::duration connectTime_{0};
    std::function<void()> tick_; // empty: none
    std::function<void(const std::uint8_t *, std::size_t)> lateCall_; // empty: none
};

#endif
