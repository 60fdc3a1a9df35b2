#ifndef PANEL_TCP_LINK_H
#define PANEL_TCP_LINK_H

#include "late_replies.h"
#include "link_state.h"
#include "reply_assembler.h"

#include <cstddef>
#include <cstdint>
#include <string>

// One TCP connection to a PLC: connect, send and receive under deadlines. A steady exchange costs one send and one
// receive; the socket's own receive timeout is the deadline.

enum class ExchangeStatus {
    REPLY,      // reply() holds one reply
    NO_REPLY,   // none came in time, or what came is no FINS/TCP reply: problem() says which
    LOST,       // the connection is closed: problem() says why
    INTERRUPTED // the program is asked to end
};

class TcpLink {
public:
    explicit TcpLink(Millis timeout);
    ~TcpLink();
    TcpLink(const TcpLink &) = delete;
    TcpLink &operator=(const TcpLink &) = delete;

    /// Resolves and connects within the timeout. On failure problem() says why.
    bool connect(const std::string &host, const std::string &port);
    void close();

    /// Sends `request` and awaits its reply, both within the timeout. Replies that are known to be late ones to earlier
    /// requests are dropped.
    ExchangeStatus exchange(const std::uint8_t *request, std::size_t size);

    /// Valid until the next call.
    const std::uint8_t *reply() const { return assembler_.reply(); }
    std::size_t replySize() const { return assembler_.replySize(); }
    const std::string &problem() const { return problem_; }

private:
    void adopt(int connected);
    ExchangeStatus sendAll(const std::uint8_t *request, std::size_t size);
    ExchangeStatus receiveReply(const std::uint8_t *request, std::size_t size, TimePoint start);
    ExchangeStatus receiveSome();
    ExchangeStatus lost(const std::string &reason);
    bool isLate(const std::uint8_t *request, std::size_t size);
    bool awaitUntil(TimePoint deadline);
    void setReceiveTimeout(Millis timeout);

    const Millis   timeout_;
    Millis         receiveTimeout_; // as the socket has it
    int            socket_;         // -1: not connected
    ReplyAssembler assembler_;
    LateReplies    late_;
    std::string    problem_;
};

#endif
