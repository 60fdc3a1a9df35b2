#ifndef PANEL_PUBLISH_BROKER_H
#define PANEL_PUBLISH_BROKER_H

#include "base/clock.h"
#include "publish/back_off.h"
#include "publish/connecting.h"

#include <poll.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// The connection to the broker, which is made again for ever. Each has a client of libmosquitto of its own, so that the
// library never repeats by itself what it was given before: it could not mark it. All of it runs on the thread that
// calls serve(), but for the attempt to connect, which may wait for a name server or for a host that says nothing.

struct BrokerCalls {
    std::function<void(const std::string &line)> say;
    std::function<void()>           connected;
    std::function<void()>           lost;
    std::function<void(int number)> acknowledged; // what publish() has returned
    std::function<void(const std::string &topic, const std::string &payload, bool retained)> received;
};

class Broker {
public:
    /// Throws UsageError for options that libmosquitto refuses.
    Broker(const BrokerOptions &options, BrokerCalls calls);
    ~Broker();
    Broker(const Broker &) = delete;
    Broker &operator=(const Broker &) = delete;

    bool isConnected() const { return isConnected_; }

    /// Hands a message over, QoS 1. Returns its number, or -1 if it was not taken.
    int publish(const std::string &topic, const std::string &payload, bool retain);

    /// While connected.
    void subscribe(const std::string &topics);

    /// What serve() waits for.
    void addDescriptors(std::vector<pollfd> &polled) const;

    /// When serve() is due at the latest.
    TimePoint due() const;

    /// Connects, sends and receives what can be without a wait.
    void serve(TimePoint now);

    /// Ends the connection in order, and for good.
    void disconnect();

private:
    void begin();
    void takeAttempt(TimePoint now);
    void exchange(TimePoint now);
    void lose(const std::string &reason, TimePoint now);
    std::string reasonOf(int code) const;
    void onAnswer(int code);
    void takeCalls();

    const BrokerOptions         options_;
    const BrokerCalls           calls_;
    BackOff                     backOff_;
    std::shared_ptr<Connecting> connecting_; // while an attempt is made
    Client                      client_;     // from the attempt's end until the connection is lost
    bool                        isConnected_ = false;
    TimePoint                   next_;       // attempt, while there is no client
    TimePoint                   connectedAt_;
    std::string                 refusal_;    // by the broker
    std::string                 logged_;     // the latest error that the library has told of
};

#endif
