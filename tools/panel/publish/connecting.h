#ifndef PANEL_PUBLISH_CONNECTING_H
#define PANEL_PUBLISH_CONNECTING_H

#include "base/stop_signal.h"

#include <mosquitto.h>

#include <memory>
#include <string>

// An attempt to connect to the broker. libmosquitto waits in it for the name server and for the TCP connection, as long
// as the system does; so it runs on a thread of its own, which nobody waits for.

struct BrokerOptions {
    std::string host;
    int         port = 1883;
    std::string clientId;
    std::string user;     // "": none
    std::string password;
    std::string caFile;   // "": no TLS
    std::string certFile; // "": none
    std::string keyFile;
    int         keepAlive = 15; // seconds
    std::string willTopic; // is given `will`, retained, when the program is gone
    std::string will;
};

struct DestroyClient {
    void operator()(mosquitto *client) const { mosquitto_destroy(client); }
};
using Client = std::unique_ptr<mosquitto, DestroyClient>;

/// A client that has not connected yet. Throws UsageError if the options cannot be.
Client newClient(const BrokerOptions &options);

class Connecting {
public:
    /// Throws std::runtime_error if the system lacks a thread or a descriptor.
    static std::shared_ptr<Connecting> begin(Client client, const std::string &host, int port, int keepAlive);

    /// Readable once the attempt has ended.
    int fd() const { return ended_.fd(); }
    bool hasEnded() const;

    /// The client, and why it has not connected; "" if it has. Once, and only after the end.
    Client take(std::string &problem);

private:
    void run(const std::string &host, int port, int keepAlive);

    Client      client_;
    StopSignal  ended_;
    std::string problem_;
    std::string logged_; // the latest error that the library has told of
};

#endif
