#ifndef PLC_PROXY_PROXY_H
#define PLC_PROXY_PROXY_H

#include "proxy/link.h"

#include <map>

// The listening socket of the proxy and the clients that came in through it, each with its own connection to the PLC.

namespace plc {

class Proxy {
public:
    /// Binds `local`. Throws asio::system_error if that is not possible.
    Proxy(asio::io_context &context, const asio::ip::tcp::endpoint &local, const PlcPlaces &places,
          const WitnessSettings &settings);
    Proxy(const Proxy &) = delete;
    Proxy &operator=(const Proxy &) = delete;
    /// Closes every connection.
    ~Proxy();

    asio::ip::tcp::endpoint endpoint() const { return acceptor.local_endpoint(); }

private:
    void acceptNext();
    void retryAccept();

    asio::ip::tcp::acceptor                   acceptor;
    asio::steady_timer                        retry;
    PlcPlaces                                 target;
    WitnessSettings                           witnesses;
    unsigned                                  lastId = 0;
    std::map<unsigned, std::shared_ptr<Link>> links;
};

} // namespace plc

#endif
