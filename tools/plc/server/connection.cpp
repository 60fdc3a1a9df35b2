#include "server/connection.h"

#include "recording/recording.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <utility>

namespace plc {

namespace {

// After the last answer the peer has this long to take it and to close. Closing at once while bytes of the peer are
// unread would take the answer away from it.
const unsigned LINGER_MS = 1000;

} // namespace

std::string ipOf(const asio::ip::tcp::socket &socket)
{
    asio::error_code ignored;
    return socket.remote_endpoint(ignored).address().to_string();
}

Connection::Connection(asio::ip::tcp::socket &&peer, unsigned number, Plc &state, const ConnectionOptions &settings,
                       EndHandler atEnd)
    : socket(std::move(peer)), pause(socket.get_executor()), deadline(socket.get_executor()), id(number), plc(state),
      options(settings), onEnd(std::move(atEnd)), session(state, {ipOf(socket), [this] { confirm(); }}), received()
{
    asio::error_code ignored;
    const asio::ip::tcp::endpoint client = socket.remote_endpoint(ignored);
    address = client.address().to_string() + ":" + std::to_string(client.port());
}

void Connection::start()
{
    asio::error_code ignored;
    socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    socket.set_option(asio::socket_base::keep_alive(true), ignored);
    if (options.recorder)
        options.recorder->open(id, socket.remote_endpoint(ignored), socket.local_endpoint(ignored));
    readMore();
}

// Only between two frames: a read that waits is given up for it, with no byte lost.
void Connection::confirm()
{
    mustConfirm = true;
    asio::error_code ignored;
    if (isReading)
        socket.cancel(ignored);
}

void Connection::close(Ending ending)
{
    if (isClosed)
        return;
    isClosed = true;
    asio::error_code ignored;
    socket.close(ignored);
    pause.cancel();
    stopDeadline();
    session.end();
    if (options.recorder)
        options.recorder->close(id, ending);
    onEnd(id);
}

// A deadline that runs already is not put off by further bytes.
void Connection::readMore()
{
    if (mustConfirm) {
        mustConfirm = false;
        send({makeConfirmation()});
        return;
    }
    if (!hasDeadline && (!session.hasNode() || assembler.hasPartial()))
        startDeadline(options.deadlineMs);
    const auto self = shared_from_this();
    isReading = true;
    socket.async_read_some(asio::buffer(received), [this, self](const asio::error_code &error, std::size_t count) {
        isReading = false;
        if (error == asio::error::operation_aborted && mustConfirm && !isClosed) {
            readMore();
            return;
        }
        if (error) {
            fail(error);
            return;
        }
        assembler.append(received.data(), count);
        answerFrames();
    });
}

// What the socket says of its end.
void Connection::fail(const asio::error_code &error)
{
    close(error == asio::error::connection_reset ? Ending::RESET_BY_CLIENT : Ending::CLOSED);
}

void Connection::answerFrames()
{
    while (!isClosed && answerNextFrame()) {
    }
}

// Returns whether to go on at once; otherwise reading, waiting or sending has begun.
bool Connection::answerNextFrame()
{
    frameError = TCP_OK;
    if (assembler.next(&frame, &frameError) == FrameAssembler::Result::NEED_MORE) {
        readMore();
        return false;
    }
    ++requests;
    note('<', frame.bytes);
    const unsigned delayMs = frameError == TCP_OK ? session.delayBefore(frame) : 0;
    if (delayMs == 0)
        return answerFrame();
    stopDeadline(); // the client has done its part
    wait(delayMs, &Connection::answerLate);
    return false;
}

void Connection::answerLate()
{
    if (answerFrame())
        answerFrames();
}

// Returns what answerNextFrame() does.
bool Connection::answerFrame()
{
    const Answer answer = frameError != TCP_OK ? session.reject(frameError) : session.receive(frame);
    if (session.hasNode())
        stopDeadline();
    if (answer.bytes.empty() && !answer.isLast)
        return true;
    send(answer);
    return false;
}

void Connection::send(const Answer &answer)
{
    outgoing = answer;
    sent = 0;
    if (outgoing.isReset) {
        asio::error_code ignored;
        socket.set_option(asio::socket_base::linger(true, 0), ignored);
    }
    if (outgoing.bytes.empty())
        close(outgoing.isReset ? Ending::RESET_BY_PLC : Ending::CLOSED);
    else
        wait(outgoing.delayMs, &Connection::beginWriting);
}

void Connection::beginWriting()
{
    ++plc.stats.replies;
    note('>', outgoing.bytes);
    startDeadline(options.deadlineMs);
    writeSome();
}

void Connection::writeSome()
{
    const std::size_t left = outgoing.bytes.size() - sent;
    const std::size_t count = outgoing.isBytewise ? std::min<std::size_t>(left, 1) : left;
    const auto self = shared_from_this();
    asio::async_write(socket, asio::buffer(outgoing.bytes.data() + sent, count),
                      [this, self](const asio::error_code &error, std::size_t done) {
                          if (error) {
                              fail(error);
                              return;
                          }
                          sent += done;
                          if (sent == outgoing.bytes.size()) {
                              finishAnswer();
                              return;
                          }
                          startDeadline(options.deadlineMs);
                          wait(outgoing.bytePauseMs, &Connection::writeSome);
                      });
}

void Connection::finishAnswer()
{
    stopDeadline();
    if (outgoing.isLast)
        finish();
    else
        answerFrames();
}

void Connection::finish()
{
    session.end();
    asio::error_code ignored;
    socket.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
    startDeadline(LINGER_MS);
    discardRest();
}

void Connection::discardRest()
{
    const auto self = shared_from_this();
    socket.async_read_some(asio::buffer(received), [this, self](const asio::error_code &error, std::size_t) {
        if (error)
            fail(error);
        else
            discardRest();
    });
}

void Connection::wait(unsigned ms, Step next)
{
    if (ms == 0 && !outgoing.isBytewise) {
        (this->*next)();
        return;
    }
    pause.expires_after(std::chrono::milliseconds(ms));
    const auto self = shared_from_this();
    pause.async_wait([this, self, next](const asio::error_code &error) {
        if (!error && !isClosed)
            (this->*next)();
    });
}

void Connection::startDeadline(unsigned ms)
{
    hasDeadline = true;
    deadline.expires_after(std::chrono::milliseconds(ms));
    const auto self = shared_from_this();
    deadline.async_wait([this, self](const asio::error_code &error) {
        // A timer that was set anew just after it ran out still reports the old end.
        if (!error && hasDeadline && deadline.expiry() <= std::chrono::steady_clock::now())
            close();
    });
}

void Connection::stopDeadline()
{
    hasDeadline = false;
    deadline.cancel();
}

void Connection::note(char direction, const Bytes &bytes) const
{
    if (options.recorder)
        options.recorder->add(id, direction, bytes);
    if (options.isTraced)
        std::cerr << '#' << id << ' ' << direction << ' ' << hexText(bytes) << std::endl;
}

} // namespace plc
