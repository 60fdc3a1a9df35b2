#ifndef PANEL_PUBLISH_SPOOL_H
#define PANEL_PUBLISH_SPOOL_H

#include "common/descriptor.h"
#include "publish/database.h"
#include "publish/broker_message.h"

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <vector>

// Messages that wait on disk until the broker has acknowledged them: in an SQLite file with a write-ahead log. What has
// been stored is there after the program was killed. The system writes it to the disk in its own time
// (synchronous=NORMAL): after a power cut the latest seconds may be missing, but the file is whole. A disk that has to
// obey at each store would hold up what the PLCs tell meanwhile.

class Spool {
public:
    struct Limits {
        std::chrono::seconds age   = std::chrono::hours(72);
        std::int64_t         bytes = 1 << 30; // of the file, without its log
    };
    using Say = std::function<void(const std::string &line)>;

    /// Opens the file, or makes it. One that is damaged is set aside under another name, which `say` is told. Throws
    /// UsageError if that is not possible, or another program has it open.
    Spool(const std::string &file, const Limits &limits, Say say);

    /// Stores `added` and forgets `done`: all of it, or nothing, and then returns false and problem() says why. Drops
    /// the oldest messages behind `keep` that are more or older at `now` than the limits allow.
    bool commit(const std::deque<BrokerMessage> &added, const std::set<std::int64_t> &done, std::int64_t keep,
                std::int64_t now);

    /// Notes that messages up to `mark` may be handed over from now on. It stands in a file of its own, which takes it
    /// on a full disk, too. Returns false if it cannot be noted.
    bool setMark(std::int64_t mark);

    /// Up to `most` messages behind `id`, in their order. Returns false, and problem() says why, if they cannot be
    /// read.
    bool next(std::int64_t id, std::size_t most, std::vector<BrokerMessage> &messages);

    /// Of the latest message that may have been handed over, now or before the program was started.
    std::int64_t mark() const { return mark_; }

    /// Of the latest message that was stored.
    std::int64_t last() const { return counters_.last; }

    /// How many wait, and how many were dropped since the start.
    std::int64_t count() const { return counters_.count; }
    std::int64_t dropped() const { return counters_.dropped; }

    const std::string &problem() const { return problem_; }

    /// By which the broker knows this spool's program again.
    const std::string &clientId() const { return clientId_; }

private:
    struct Counters {
        std::int64_t last    = 0;
        std::int64_t count   = 0;
        std::int64_t dropped = 0;
    };

    void open();
    void begin(Database &database);
    void makeTables(Database &database);
    void readCounters(Database &database);
    void noteProblem(const DatabaseError &error);
    void setAside(const std::string &why);
    void store(const std::deque<BrokerMessage> &added);
    void forget(const std::set<std::int64_t> &done);
    void readMark();
    void dropOld(std::int64_t keep, std::int64_t before);
    void dropMost(std::int64_t keep);
    void dropped(std::int64_t rows);

    const std::string       file_;
    const Limits            limits_;
    const Say               say_;
    std::optional<Database> database_;
    Descriptor              markFile_;
    Counters                counters_;
    std::int64_t            mark_ = 0;
    std::string             clientId_;
    std::string             problem_;
};

#endif
