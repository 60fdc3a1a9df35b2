#ifndef PLC_SERVER_CONNECTION_H
#define PLC_SERVER_CONNECTION_H

#include "recording/recorder.h"
#include "server/session.h"

#include <array>
#include <asio.hpp>
#include <functional>
#include <memory>

// One client's TCP connection. It works in turn: read, answer one frame, send the answer, look for the next frame.
// Nothing is read while an answer is on its way, so a connection holds at most one frame, one read buffer and one
// answer, whatever the peer does.

namespace plc {

struct ConnectionOptions {
    unsigned deadlineMs = 30000; // for the rest of a frame, for the node exchange, and for the peer to take an answer
    bool     isTraced = false;   // frames on standard error
    std::shared_ptr<Recorder> recorder; // keeps all frames; null: none does
};

/// The IP address of the peer, without its port.
std::string ipOf(const asio::ip::tcp::socket &socket);

class Connection : public std::enable_shared_from_this<Connection> {
public:
    using EndHandler = std::function<void(unsigned id)>;

    Connection(asio::ip::tcp::socket &&peer, unsigned number, Plc &state, const ConnectionOptions &settings,
               EndHandler atEnd);

    void start();

    /// Closes the connection at once and reports its end.
    void close(Ending ending = Ending::CLOSED);

    /// What is to be told of the client.
    struct Client {
        unsigned      id;
        unsigned      node;     // 0 before the node address exchange
        std::string   address;  // IP address and port
        std::uint64_t requests; // frames received
    };
    Client client() const { return {id, session.clientNode(), address, requests}; }

private:
    using Step = void (Connection::*)();

    void confirm();
    void readMore();
    void fail(const asio::error_code &error);
    void answerFrames();
    bool answerNextFrame();
    bool answerFrame();
    void answerLate();
    void send(const Answer &answer);
    void beginWriting();
    void writeSome();
    void finishAnswer();
    void finish();
    void discardRest();
    void wait(unsigned ms, Step next);
    void startDeadline(unsigned ms);
    void stopDeadline();
    void note(char direction, const Bytes &bytes) const;

    asio::ip::tcp::socket          socket;
    asio::steady_timer             pause;    // before an answer, and between bytes
    asio::steady_timer             deadline;
    bool                           hasDeadline = false;
    bool                           isClosed = false;
    bool                           isReading = false;
    bool                           mustConfirm = false; // before the next read
    unsigned                       id;
    std::string                    address;
    std::uint64_t                  requests = 0;
    Plc                           &plc;
    ConnectionOptions              options;
    EndHandler                     onEnd;
    Session                        session;
    FrameAssembler                 assembler;
    TcpFrame                       frame;                // that is answered
    TcpError                       frameError = TCP_OK;
    std::array<std::uint8_t, 2048> received;
    Answer                         outgoing;
    std::size_t                    sent = 0; // bytes of `outgoing`
};

} // namespace plc

#endif
