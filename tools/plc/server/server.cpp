#include "server/server.h"

#include <chrono>
#include <sstream>
#include <utility>

namespace plc {

namespace {

// Connections beyond the clients that may have a node: they are there to be told that all are in use.
const std::size_t EXTRA_CONNECTIONS = 16;
const int RETRY_MS = 100;

} // namespace

std::string listenProblem(const asio::ip::tcp::endpoint &address, const asio::error_code &error)
{
    std::ostringstream place;
    place << address;
    return "cannot listen on " + place.str() + ": " + error.message() +
           "; choose another --port (0 picks a free one) or --bind";
}

Server::Server(asio::io_context &context, const asio::ip::tcp::endpoint &address, Plc &state,
               const ConnectionOptions &settings, std::size_t clients)
    : acceptor(context), retry(context), local(address), plc(state), options(settings),
      connectionLimit(clients + EXTRA_CONNECTIONS)
{
    open();
    local = acceptor.local_endpoint();
    // Only listening shows whether another program listens on the address.
    acceptor.listen();
    isListening = true;
    acceptNext();
    applyFaults();
}

void Server::open()
{
    acceptor.open(local.protocol());
    acceptor.set_option(asio::socket_base::reuse_address(true));
    acceptor.bind(local);
}

// A bound socket that does not listen keeps the port and refuses connections.
void Server::applyFaults()
{
    const bool shallListen = !plc.faults.isCertain(FAULT_REFUSE);
    if (shallListen == isListening)
        return;
    if (!shallListen) {
        retry.cancel();
        acceptor.close();
        open();
    } else {
        acceptor.listen();
        acceptNext();
    }
    isListening = shallListen;
}

std::size_t Server::disconnectAll()
{
    const auto all = connections; // each close() takes its connection out of the map
    for (const auto &entry : all)
        entry.second->close();
    return all.size();
}

std::vector<Connection::Client> Server::clients() const
{
    std::vector<Connection::Client> open;
    for (const auto &entry : connections)
        open.push_back(entry.second->client());
    return open;
}

void Server::acceptNext()
{
    acceptor.async_accept([this](const asio::error_code &error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted)
            return;
        if (error) {
            retryAccept();
            return;
        }
        admit(std::move(socket));
        acceptNext();
    });
}

// Accepting fails for want of descriptors, for instance; trying again at once would keep the processor busy.
void Server::retryAccept()
{
    retry.expires_after(std::chrono::milliseconds(RETRY_MS));
    retry.async_wait([this](const asio::error_code &error) {
        if (!error && isListening)
            acceptNext();
    });
}

// Connections that never ask for a node address must not shut others out until their deadline. There is one: fewer
// clients than connections may have a node.
void Server::closeOldestWithoutNode()
{
    for (const auto &entry : connections) {
        if (entry.second->client().node != 0)
            continue;
        const std::shared_ptr<Connection> oldest = entry.second; // close() takes it out of the map
        oldest->close();
        return;
    }
}

void Server::admit(asio::ip::tcp::socket &&socket)
{
    ++plc.stats.connections;
    const std::string ip = ipOf(socket);
    const FaultTarget newcomer = {Slice(nullptr, 0), 0, ip, plc.controller.memory};
    if (plc.faults.strike(FAULT_REFUSE, newcomer, Moment::REQUEST))
        return; // the socket closes as it goes out of scope
    if (connections.size() >= connectionLimit)
        closeOldestWithoutNode();
    const unsigned id = ++lastId;
    const auto connection = std::make_shared<Connection>(std::move(socket), id, plc, options,
                                                         [this](unsigned ended) { connections.erase(ended); });
    connections[id] = connection;
    connection->start();
}

} // namespace plc
