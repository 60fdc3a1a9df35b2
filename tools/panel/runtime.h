#ifndef PANEL_RUNTIME_H
#define PANEL_RUNTIME_H

#include "driver_library.h"
#include "items.h"
#include "link_state.h"
#include "low_memory.h"
#include "reply_judge.h"
#include "tcp_link.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

// The communication loop of a panel runtime: it lends the driver its memory, moves frames between the driver and the
// link, and keeps the link alive. Commands give it items to watch, writes and recipes, call step() until they have what
// they want, and are told of every exchange.
//
// The job that meets the missing handshake is completed by the handshake's reply without ever being sent. Therefore
// only reads wait in the driver while it is unconnected: a write is handed over, or a recipe requested, only while the
// link is online and no request is in flight, so that it becomes the next job; and when the link is lost, the driver is
// told of missing replies until it has closed that job and become unconnected.

struct LinkOptions {
    std::string host;
    std::string port;
    Millis timeout{1000};      // to connect, to send and to receive
    Millis interval{0};        // pause after each request
    qint32 wordsPerFrame = 64;
    qint32 retries       = 3;  // rejected or missing replies in a row that drop the link
    qint32 station       = 1;
    bool   trace         = false;
};

/// The most words of one write: above it the length byte of the frame wraps.
constexpr qint32 WRITE_WORDS_LIMIT = 114;

/// One request and what became of it.
struct Exchange {
    const FRAME_PRO &request;
    RequestKind      kind;
    Judgement        judgement; // of the reply as it was received
    bool             accepted;  // by the driver
};

class Runtime {
public:
    Runtime(const DriverLibrary &library, const LinkOptions &options);

    /// Replaces the cyclic poll. At least one item is needed before the first step.
    void watch(const std::vector<Item> &items);

    /// Calls that are made during step(): after each exchange, and when a connection has ended and the driver has
    /// closed the job that was in progress.
    void onExchange(std::function<void(const Exchange &)> call) { exchangeCalls_.push_back(std::move(call)); }
    void onLost(std::function<void()> call) { lostCalls_.push_back(std::move(call)); }

    /// One attempt to connect, one request with its reply, or a pause that ends at `wakeAt` at the latest.
    void step(TimePoint wakeAt);

    LinkPhase phase() const { return state_.phase(); }

    /// True if a read was accepted since the program began.
    bool wasOnline() const { return wasOnline_; }

    /// True if a write handed over now becomes the next request.
    bool canWrite() const;

    /// Hands a write to the driver; canWrite() must be true. At most one frame's worth.
    void write(const Item &item, const std::vector<quint8> &data);

    /// Starts a transfer of the recipe plan; canWrite() must be true. `flag` is RECIPE_WRITE_FLAG or RECIPE_READ_FLAG.
    void startRecipe(std::size_t flag);

    /// True until the transfer has ended, well or not.
    bool recipeRunning() const;

    /// The values as the driver has them.
    std::vector<quint8> values(const Item &item) const;

    const DriverLibrary &library() const { return library_; }
    LowMemory &memory() { return memory_; }
    const LinkOptions &options() const { return options_; }

private:
    void connect();
    void exchange();
    Judgement receive(ExchangeStatus status);
    void handOver(RequestKind kind, const Judgement &judgement);
    void accepted(RequestKind kind);
    void sayRefusal(RequestKind kind, const Judgement &judgement);
    void makeUnconnected();
    void lose(const std::string &reason);
    std::string peer() const { return options_.host + ":" + options_.port; }

    const DriverLibrary &library_;
    const LinkOptions    options_;
    LowMemory            memory_;
    TcpLink              link_;
    LinkState            state_;
    FRAME_PRO            request_;        // the request in flight
    QByteArray           reply_;          // the reply as the driver gets it
    QString              info_;
    bool                 inFlight_;       // the driver still holds a request that awaits its reply
    bool                 wasOnline_;
    int                  writesSincePoll_;
    std::string          problem_;        // of the latest reply that was not accepted
    std::set<std::string> saidRefusals_;
    std::vector<std::function<void(const Exchange &)>> exchangeCalls_;
    std::vector<std::function<void()>>                 lostCalls_;
};

#endif
