#ifndef BENCH_LINK_CLIENTS_H
#define BENCH_LINK_CLIENTS_H

#include "link/answerer.h"

#include <memory>

// The clients of the link benchmark: each is connected when it is made, and then makes requests, one at a time.

class Client {
public:
    virtual ~Client() = default;
    virtual void request(long count) = 0;

    /// Changes that were delivered since the client was made, and those that were left out for later ones of the same
    /// word.
    virtual long changes() const { return 0; }
    virtual long leftOut() const { return 0; }
};

/// Bare sends and receives of the bytes of a read and its reply.
std::unique_ptr<Client> pingPongClient(int port);

/// Those of a FINS read of 64 words.
std::unique_ptr<Client> finsClient(int port);

/// Bare sends and receives on a thread of its own, which wakes the calling one by a descriptor for each reply. The gate is that of the
/// other end, and outlives the client; so below.
std::unique_ptr<Client> wokenClient(int port, const Gate &gate);

/// The loop of fins_panel with the driver, which polls one block of 64 words; `interval` in ms between requests.
std::unique_ptr<Client> panelClient(int port, long interval);

/// The library's public object, which polls one block of 64 words; its samples are delivered on the calling thread.
std::unique_ptr<Client> plcClient(int port, const Gate &gate);

/// libmodbus, which reads 64 holding registers.
std::unique_ptr<Client> modbusClient(int port);

#endif
