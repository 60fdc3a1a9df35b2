#ifndef RUNTIME_SESSION_RUNTIME_H
#define RUNTIME_SESSION_RUNTIME_H

#include "base/calls.h"
#include "base/messages.h"
#include "base/said_once.h"
#include "base/stop_signal.h"
#include "driver/driver_library.h"
#include "driver/low_memory.h"
#include "link/reply_judge.h"
#include "link/tcp_link.h"
#include "link/trace.h"
#include "service/service_reply.h"
#include "service/service_request.h"
#include "session/link_state.h"
#include "session/poll_plan.h"
#include "session/statistics.h"
#include "values/items.h"

#include <functional>
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
//
// A read that the PLC refuses is an answer, and is not repeated: the driver is told of missing replies until it closes
// the read. It does so only together with its link, so it then gets the node addresses of the connection, which stands,
// once more. Only where the PLC is said to be busy the read is sent again, as often as `retries` says.
//
// A write that the PLC refuses is closed in the same way, so that nothing behind it goes out by itself. Where the PLC's
// operating mode is the reason the driver would put a RUN command before the write and send both. Its RUN command goes
// out only with the user's consent; the write behind it never does, since the driver would reject its acknowledgement
// for the service ID: who ordered the write hands it over again.

struct LinkOptions {
    std::string host;
    std::string port;
    Millis timeout{1000};      // to connect, to send and to receive
    Millis interval{0};        // pause after each request
    qint32 wordsPerFrame = 64;
    qint32 retries       = 3;  // rejected or missing replies in a row that drop the link
    qint32 station       = 1;
    bool endsUnreachable = false; // no second attempt to connect if the first says that there is nothing to connect to
    bool allowModeChange = false; // a write that the operating mode forbids may switch the PLC to MONITOR mode
    Millis refusedPause  = PollPlan::PAUSE; // until a block that the PLC refused is read again
    TraceMode trace      = TraceMode::NONE;
    Statistics *statistics = nullptr; // counts here; null: nobody wants to know
    StopSignal *stop       = nullptr; // ends every wait; null: nothing does
    std::uint32_t spread   = 0;       // of the pauses before attempts to connect, see LinkState
    bool roundTrips      = false;     // are measured
    bool quiet           = false;     // nothing is said of connections made, missed and lost
};

/// Gives the driver its memory and the settings of the link.
void initDriver(const DriverLibrary &library, const LowMemory &memory, const LinkOptions &options);

/// The most words of one write: above it the length byte of the frame wraps.
constexpr qint32 WRITE_WORDS_LIMIT = 114;

/// One request and what became of it.
struct Exchange {
    const FRAME_PRO &request;
    RequestKind      kind;
    Judgement        judgement; // of the reply as it was received
    bool             accepted;  // by the driver
    bool             switches = false; // a write was refused for the operating mode, and the PLC is asked for another
    bool             leftOut = false; // a read that the PLC refuses in the end: it is not tried by halves
};

/// Why the link is not up, as of the last attempt or loss.
struct LinkTrouble {
    LinkFailure   failure  = LinkFailure::NONE;
    std::uint32_t tcpError = 0; // of LinkFailure::TCP_ERROR
    LinkPhase     phase    = LinkPhase::WAITING; // in which it happened; WAITING: while connecting
    std::string   text;
};

class Runtime {
public:
    /// Throws UsageError for options that do not go together.
    Runtime(const DriverLibrary &library, const LinkOptions &options);

    /// Replaces the cyclic poll, nothing being left out. At least one item is needed before the first step.
    void watch(const std::vector<Item> &items);

    /// Polls `items`, too, whatever watch() is given before or after.
    void keep(const std::vector<Item> &items);

    /// True if a word of the item is left out of the poll, since the PLC refuses to read it.
    bool leavesOut(const Item &item) const { return plan_.leavesOut(item); }

    /// False while parts of refused blocks are tried, and while the poll makes up for what that has broken off.
    bool isSteady() const { return plan_.isSteady(); }

    /// The words of one request from now on, between two steps. Queues, poll and data image of the driver are emptied:
    /// watch() has to follow.
    void setWordsPerFrame(qint32 wordsPerFrame);

    /// Calls that are made during step(): after each exchange, and when a connection has ended and the driver has
    /// closed the job that was in progress.
    /// They last as long as the handle, which does not outlive the runtime.
    [[nodiscard]] CallHandle onExchange(Calls<Exchange>::Call call) { return exchangeCalls_.add(std::move(call)); }
    [[nodiscard]] CallHandle onLost(Calls<>::Call call) { return lostCalls_.add(std::move(call)); }

    /// Calls `call` before each attempt to connect.
    [[nodiscard]] CallHandle onAttempt(Calls<>::Call call) { return attemptCalls_.add(std::move(call)); }

    /// Calls `call` just before a write or a change of the operating mode is sent, each time that it is sent.
    [[nodiscard]] CallHandle onOrder(Calls<FRAME_PRO, RequestKind>::Call call) { return orderCalls_.add(std::move(call)); }

    /// Calls `tick` several times a second while step() waits for something. It may call none of the driver's
    /// functions but through values().
    void onTick(std::function<void()> tick) { link_.onTick(std::move(tick)); }

    /// One attempt to connect, one request with its reply, or a pause; it ends at `wakeAt` at the latest, and a pause when
    /// the signal of the options wakes it. A request
    /// whose reply has not come by then counts as interrupted, and is not reported.
    void step(TimePoint wakeAt);

    /// From any thread: a request that waits for its reply ends at once. The options' signal has been stopped before.
    void abort() { link_.abort(); }

    LinkPhase phase() const { return state_.phase(); }

    bool isStopped() const { return link_.isStopped(); }

    /// The pause after each request from now on.
    void setInterval(Millis interval) { options_.interval = interval; }

    /// True if a read was accepted since the program began.
    bool wasOnline() const { return wasOnline_; }

    /// True if a write handed over now becomes the next request.
    bool canWrite() const;

    /// Hands a write to the driver; canWrite() must be true. At most one frame's worth.
    void write(const Item &item, const std::vector<quint8> &data);

    /// True if a service request may be sent now: the node addresses are known, the driver has no request in flight and
    /// no write to send, no recipe is transferred, and no reply to an earlier service request may still come: for three
    /// timeouts after it should have come one may.
    bool canServe() const;

    /// Sends a service request beside the driver, and awaits its reply until `limit` at the latest; canServe() must be
    /// true. The driver never hears of it, unless the connection is lost.
    ServiceReply serve(const ServiceRequest &request, TimePoint limit);

    /// Starts a transfer of the recipe plan; canWrite() must be true. `flag` is RECIPE_WRITE_FLAG or RECIPE_READ_FLAG.
    void startRecipe(std::size_t flag);

    /// True until the transfer has ended, well or not.
    bool recipeRunning() const;

    /// The values as the driver has them.
    std::vector<quint8> values(const Item &item) const;

    const DriverLibrary &library() const { return library_; }
    LowMemory &memory() { return memory_; }
    const LinkOptions &options() const { return options_; }
    Messages &messages() { return messages_; }
    const Statistics &statistics() const { return statistics_; }
    const TcpLink &link() const { return link_; }
    const LinkTrouble &trouble() const { return trouble_; }

    /// True if nobody wants another attempt to connect: see LinkOptions::endsUnreachable.
    bool isUnreachable() const;

    /// When the next attempt to connect is due.
    TimePoint retryAt() const { return state_.retryAt(); }

    /// False from a request without a good reply until the next accepted one, and while there is no link.
    bool answering() const { return answering_ && state_.phase() != LinkPhase::WAITING; }

    /// This node and the PLC's, as of the latest handshake.
    int clientNode() const { return clientNode_; }
    int serverNode() const { return serverNode_; }

    /// The round trip of the latest reply; 0 unless they are measured.
    Micros roundTrip() const { return roundTrip_; }

private:
    void exchange();
    ExchangeStatus transfer(RequestKind kind, std::size_t size);
    ExchangeStatus send(const std::uint8_t *frame, std::size_t size);
    ServiceReply serviceReply(const std::vector<std::uint8_t> &frame, const Judgement &judgement, std::size_t size) const;
    void count(ExchangeStatus status, const Judgement &judgement);
    void handOver(RequestKind kind, const Judgement &judgement);
    void accepted(RequestKind kind);
    Item polledBlock() const { return {request_.regType, request_.address, request_.count, false}; }
    std::string peer() const { return options_.host + ":" + options_.port; }

    void configure();
    void connect();
    void setPlan();
    void handOverPlan();
    void beginTurn();
    void refuseRead(const Judgement &judgement);
    void noteRead();
    void sayRefusedReads();
    void noteNodes();
    void idle();
    std::string refusalText(RequestKind kind) const;
    void refuse(RequestKind kind, const Judgement &judgement);
    void noteRejection(const Judgement &judgement);
    void makeUnconnected();
    void closeJob();
    void handOverNodes();
    void refuseWrite(const Judgement &judgement);
    void endModeChange(const Judgement &judgement);
    bool startModeChange(const Judgement &judgement);
    void loseInPause();
    void lose(const std::string &reason, LinkFailure failure, std::uint32_t tcpError = 0, const std::string &hint = "");

    const DriverLibrary &library_;
    LinkOptions          options_;
    LowMemory            memory_;
    TcpLink              link_;
    LinkState            state_;
    PollPlan             plan_;
    std::vector<Item>    watched_;        // as of watch()
    std::vector<Item>    kept_;           // as of keep()
    FRAME_PRO            request_;        // the request in flight
    QByteArray           reply_;          // the reply as the driver gets it
    QByteArray           nodes_;          // the reply with the node addresses of this connection
    bool                 hasSwitched_;    // the PLC has changed its mode, and no write was accepted since
    bool                 needsNodes_;     // the driver has forgotten them, though the connection stands
    QString              info_;
    bool                 inFlight_;       // the driver still holds a request that awaits its reply
    bool                 isPoll_;         // the request is one of the cyclic poll
    std::uint8_t         lastSid_;         // the service ID of the request before
    bool                 wasOnline_;
    int                  writesSincePoll_;
    std::string          problem_;        // of the latest reply that was not accepted
    SaidOnce             saidRefusals_;
    Messages             messages_;
    Statistics           ownStatistics_;
    Statistics          &statistics_;
    LinkTrouble          trouble_;
    bool                 answering_;
    int                  clientNode_;
    int                  serverNode_;
    TimePoint            lateUntil_; // the reply to the latest service request may come, if it is owed
    TimePoint            sentAt_;          // when the latest request was sent
    Micros               roundTrip_;
    Calls<Exchange>              exchangeCalls_;
    Calls<>                      lostCalls_;
    Calls<>                      attemptCalls_;
    Calls<FRAME_PRO, RequestKind> orderCalls_;
};

#endif
