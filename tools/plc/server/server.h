#ifndef PLC_SERVER_SERVER_H
#define PLC_SERVER_SERVER_H

#include "server/connection.h"

#include <asio.hpp>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The listening socket and the connections that came in through it.

namespace plc {

/// Why an address cannot be listened on, and how to mend it.
std::string listenProblem(const asio::ip::tcp::endpoint &address, const asio::error_code &error);

class Server {
public:
    /// Binds `address`. Throws asio::system_error if that is not possible.
    Server(asio::io_context &context, const asio::ip::tcp::endpoint &address, Plc &state,
           const ConnectionOptions &settings, std::size_t clients);

    asio::ip::tcp::endpoint endpoint() const { return local; }

    /// Begins or ends listening, as the fault `refuse` has it. To be called whenever faults have changed.
    void applyFaults();

    /// The connections that are open.
    std::vector<Connection::Client> clients() const;

    /// Closes every connection. Returns how many there were.
    std::size_t disconnectAll();

private:
    void open();
    void acceptNext();
    void retryAccept();
    void closeOldestWithoutNode();
    void admit(asio::ip::tcp::socket &&socket);

    asio::ip::tcp::acceptor                         acceptor;
    asio::steady_timer                              retry;
    asio::ip::tcp::endpoint                         local;
    Plc                                            &plc;
    ConnectionOptions                               options;
    std::size_t                                     connectionLimit;
    unsigned                                        lastId = 0;
    bool                                            isListening = false;
    std::map<unsigned, std::shared_ptr<Connection>> connections;
};

} // namespace plc

#endif
