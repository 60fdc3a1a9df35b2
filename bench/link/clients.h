#ifndef BENCH_LINK_CLIENTS_H
#define BENCH_LINK_CLIENTS_H

#include <memory>

// The clients of the link benchmark: each is connected when it is made, and then makes requests, one at a time.

class Client {
public:
    virtual ~Client() = default;
    virtual void request(long count) = 0;

    /// Changes that were delivered since the client was made.
    virtual long changes() const { return 0; }
};

/// Bare sends and receives of the bytes of a read and its reply.
std::unique_ptr<Client> pingPongClient(int port);

/// The loop of fins_panel with the driver, which polls one block of 64 words; `interval` in ms between requests.
std::unique_ptr<Client> panelClient(int port, long interval);

/// libmodbus, which reads 64 holding registers.
std::unique_ptr<Client> modbusClient(int port);

#endif
