#include "proxy/link.h"

#include <chrono>
#include <iostream>
#include <poll.h>
#include <utility>

namespace plc {

namespace {

const std::chrono::seconds CONNECT_PATIENCE(5);

// A socket that is closed after this sends a reset.
void prepareReset(asio::ip::tcp::socket &socket)
{
    asio::error_code ignored;
    socket.set_option(asio::socket_base::linger(true, 0), ignored);
}

// Leaves the error where it is, for who reads.
bool isReset(asio::ip::tcp::socket &socket)
{
    pollfd polled = {socket.native_handle(), 0, 0};
    return poll(&polled, 1, 0) > 0 && (polled.revents & POLLERR) != 0;
}

} // namespace

Link::Link(Socket &&accepted, unsigned number, const PlcPlaces &places, const WitnessSettings &settings,
           EndHandler atEnd)
    : client(std::move(accepted)), plc(client.get_executor()), patience(client.get_executor()), id(number),
      target(places), witness(number, settings), onEnd(std::move(atEnd))
{
}

void Link::start()
{
    const auto self = shared_from_this();
    patience.expires_after(CONNECT_PATIENCE);
    patience.async_wait([this, self](const asio::error_code &error) {
        if (!error)
            giveUp("no answer in " + std::to_string(CONNECT_PATIENCE.count()) + " s");
    });
    asio::async_connect(plc, target, [this, self](const asio::error_code &error, const asio::ip::tcp::endpoint &) {
        if (error)
            giveUp(error.message());
        else if (!isClosed)
            begin();
    });
}

// A client that vanishes must not keep a connection of the PLC, which has few: it is asked whether it is still there.
// The PLC is not.
void Link::begin()
{
    isConnected = true;
    patience.cancel();
    asio::error_code ignored;
    client.set_option(asio::socket_base::keep_alive(true), ignored);
    client.set_option(asio::ip::tcp::no_delay(true), ignored);
    plc.set_option(asio::ip::tcp::no_delay(true), ignored);
    witness.begin(client.remote_endpoint(ignored), plc.remote_endpoint(ignored));
    for (Way *const way : {&requests, &replies}) {
        watchForReset(*way);
        read(*way);
    }
}

void Link::giveUp(const std::string &reason)
{
    if (isClosed || isConnected)
        return;
    std::cerr << "fins_plc: client #" << id << " is closed: no connection to " << target.begin()->host_name() << ':'
              << target.begin()->service_name() << ": " << reason << std::endl;
    close(Ending::CLOSED);
}

Ending Link::resetBy(const Socket &side) const
{
    return &side == &client ? Ending::RESET_BY_CLIENT : Ending::RESET_BY_PLC;
}

void Link::close(Ending ending)
{
    if (isClosed)
        return;
    isClosed = true;
    witness.end(ending);
    patience.cancel();
    for (Socket *const side : {&client, &plc}) {
        if (ending != Ending::CLOSED)
            prepareReset(*side);
        asio::error_code ignored;
        side->close(ignored);
    }
    onEnd(id);
}

void Link::read(Way &way)
{
    const auto self = shared_from_this();
    way.from.async_read_some(asio::buffer(way.buffer), [this, self, &way](const asio::error_code &error,
                                                                          std::size_t count) {
        if (isClosed)
            return;
        if (error == asio::error::eof)
            endWay(way);
        else if (error)
            close(resetBy(way.from));
        else
            pass(way, count);
    });
}

void Link::pass(Way &way, std::size_t count)
{
    way.isPassing = true;
    witness.see(way.direction, way.buffer.data(), count);
    const auto self = shared_from_this();
    asio::async_write(way.to, asio::buffer(way.buffer.data(), count),
                      [this, self, &way](const asio::error_code &error, std::size_t) {
                          way.isPassing = false;
                          if (isClosed)
                              return;
                          if (error)
                              close(resetBy(way.to));
                          else
                              read(way);
                      });
}

void Link::endWay(Way &way)
{
    way.hasEnded = true;
    asio::error_code ignored;
    way.to.shutdown(Socket::shutdown_send, ignored);
    if (requests.hasEnded && replies.hasEnded)
        close(Ending::CLOSED);
}

// While the other side takes nothing, nothing is read, and a reset would not be seen.
void Link::watchForReset(Way &way)
{
    const auto self = shared_from_this();
    way.from.async_wait(Socket::wait_error, [this, self, &way](const asio::error_code &error) {
        if (!error && !isClosed && way.isPassing && isReset(way.from))
            close(resetBy(way.from));
    });
}

} // namespace plc
