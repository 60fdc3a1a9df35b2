#ifndef PANEL_PUBLISH_OUTBOX_H
#define PANEL_PUBLISH_OUTBOX_H

#include "base/clock.h"
#include "publish/broker_message.h"
#include "publish/spool.h"

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <unordered_map>

// The way of messages to the broker: into the spool, out of it in their order, and out of the world when the broker has
// acknowledged them. What was handed over on a connection that is lost before the acknowledgement is handed over again,
// and marked. Besides, some topics are announced: the broker is told their latest payload on each connection, and no
// older one.

struct OutboxOptions {
    std::size_t inFlight   = 100;      // handed over and not acknowledged, at the most
    double      replayRate = 1000;     // of what has waited for the broker, so many a second besides what is new
    std::size_t memory     = 16 << 20; // bytes that wait while the spool cannot be written
};

class Outbox {
public:
    using Say = std::function<void(const std::string &line)>;
    /// Hands a message to the broker, and returns its number; -1 if it was not taken.
    using Hand = std::function<int(const std::string &topic, const std::string &payload, bool retain)>;
    using SystemTime = std::chrono::system_clock::time_point;

    Outbox(Spool &spool, const OutboxOptions &options, Hand hand, Say say);

    void add(BrokerMessage message);
    void announce(const std::string &topic, const std::string &payload);

    // What happens on the connection.
    void onConnected(TimePoint now);
    void onLost();
    void onAcknowledged(int number);

    /// Stores and hands over what is due. `utc` is the time of day.
    void work(TimePoint now, SystemTime utc);

    /// When work() is due at the latest, if nothing happens.
    TimePoint due(TimePoint now) const;

    /// Stores what is left, and says what was lost.
    void finish(TimePoint now, SystemTime utc);

    /// Hands over no more samples.
    void stopHanding() { isHanding_ = false; }

    /// True if nothing is in flight, nor waits to be announced.
    bool isIdle() const { return inFlight_.empty() && toAnnounce_.empty(); }

    /// True if there is nothing left to do.
    bool isEmpty() const { return isIdle() && pending_.empty() && sent_ >= spool_.last(); }

    /// "12 messages published, 3 of them again; 0 wait in the spool"
    std::string summary() const;

private:
    struct Flight {
        BrokerMessage       message;
        bool          isSample; // else what was announced, or the latest of a topic once more
        std::uint64_t number;   // in the order in which they were handed over
    };

    // In what is stored.
    std::string store(SystemTime utc);
    bool isStoreDue(TimePoint now) const;
    void noteStored(const std::string &problem, TimePoint now);
    void boundMemory();
    void sayLosses(TimePoint now);

    // In what is handed over.
    void handOver(SystemTime utc);
    bool handAnnounced(SystemTime utc);
    bool handSample(SystemTime utc);
    bool handLatest(SystemTime utc);
    void fetch();
    bool hand(const BrokerMessage &message, bool isSample, SystemTime utc);
    bool isStalled() const { return !problem_.empty(); }
    void refill(TimePoint now);

    Spool              &spool_;
    const OutboxOptions options_;
    const Hand          hand_;
    const Say           say_;
    bool                isConnected_ = false;
    bool                isHanding_   = true;

    std::deque<BrokerMessage> pending_;              // not in the spool yet
    std::size_t         pendingBytes_ = 0;
    std::string         problem_;              // why the spool cannot be written; "" if it can
    TimePoint           nextStore_ = TimePoint::min();
    TimePoint           nextSaid_  = TimePoint::min();
    std::int64_t        saidDropped_ = 0;
    std::int64_t        lost_ = 0;             // for want of memory, and not said yet

    std::deque<BrokerMessage> window_;               // of the spool, to be handed over next
    std::int64_t        sent_ = 0;             // the latest of the spool that was handed over on this connection
    std::int64_t        repeatedUpTo_;         // what may have been handed over on another one
    double              tokens_ = 0;           // messages that may be handed over now
    TimePoint           refilledAt_;

    std::map<std::string, std::string>       announced_;
    std::set<std::string>                    toAnnounce_;
    std::unordered_map<std::string, BrokerMessage> latest_;   // samples that the broker keeps, by topic
    std::set<std::string>                    toRefresh_; // topics: a broker that was restarted may keep nothing

    std::map<int, Flight>  inFlight_;          // by the broker's numbers, which go round
    std::size_t            unstored_ = 0;      // of them that the spool had no room for
    std::set<std::int64_t> done_;              // acknowledged, and still in the spool
    std::uint64_t          handed_ = 0;
    std::uint64_t          acknowledged_ = 0;
    std::uint64_t          repeated_ = 0;
};

#endif
