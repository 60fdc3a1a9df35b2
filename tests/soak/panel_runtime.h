#ifndef TESTS_SOAK_PANEL_RUNTIME_H
#define TESTS_SOAK_PANEL_RUNTIME_H

#include <random>
#include <string>
#include <vector>

#include "link.h"
#include "omron_fins_ethernet.h"
#include "support/low_memory.h"

// A panel runtime that does everything a runtime may do, at random, and keeps account of every write.

namespace soak {

/// What became of the pieces of the writes that were queued.
struct WriteAccount {
    long long queued = 0;
    long long done = 0;         // acknowledged with end code 0000
    long long refused = 0;      // acknowledged with another end code, which the runtime sees in the reply
    long long failed = 0;       // reported as failed when the link was dropped
    long long byHandshake = 0;  // ended by the reply to a handshake, unsent
    long long cleared = 0;      // emptied by a new configuration

    long long ended() const { return done + refused + failed + byHandshake + cleared; }
};

struct Counters {
    long long    requests = 0;
    long long    reconnects = 0;
    long long    rejected = 0;
    long long    plans = 0;
    long long    configurations = 0;
    long long    recipes = 0;
    long long    conditionReads = 0;
    long long    changes = 0;       // calls of the callback
    long long    wordsCompared = 0;
    long long    bitsOfWrites = 0;  // bits of the PLC compared with what was written
    WriteAccount writes;
};

class PanelRuntime {
public:
    PanelRuntime(Link &link, std::uint32_t seed);
    ~PanelRuntime();

    PanelRuntime(const PanelRuntime &) = delete;
    PanelRuntime &operator=(const PanelRuntime &) = delete;

    /// Random actions and exchanges, with faults, until `requests` in all have been made.
    void run(long long requests);

    /// Ends the faults, lets the queues empty, and throws Failure unless the data image and the recipe buffer are the
    /// PLC's memory, every write is accounted for and the driver falls silent. Leaves a fresh configuration.
    void settle();

    const Counters &counters() const { return counters_; }

private:
    // What is known of the memory that only this runtime writes.
    struct Written {
        int value = 0;
        int sure = 0; // bits whose value is known
    };

    static void onChange(qint32 stationNo, qint32 requestTag, QString regType, qint32 address);

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_()) % limit; }
    void          mark(const VARIABLE &piece, bool isSure);
    void          markWord(const VARIABLE &piece, int word, int value, int bits, bool isSure);

    void configure(std::uint32_t property);
    void act();
    void watchSome();
    void watchAll();
    void planRecipe(std::uint32_t longest);
    void write();
    void readOnCondition();
    void readValues();
    void requestRecipe();

    bool exchange();
    void checkWriteFrame(const VARIABLE &head) const;
    void endWrite(const VARIABLE &head, int result, const QByteArray &reply);
    void checkFailureReport(const VARIABLE &head) const;
    bool isBusy();
    void emptyQueues();
    void leaveRunMode();
    void pollAround();
    void compareImage();
    void compareWrites();
    void compareRecipe();
    void transferRecipe(int flag);
    void checkSilence();

    static PanelRuntime *current_;

    Link                             &link_;
    std::mt19937                      random_;
    LowMemory                         block_{60117};
    LowMemory                         recipe_{2 * 64, 2};
    LowObject<QMutex>                 mutex_;
    FRAME_PRO                         frame_ = FRAME_PRO();
    std::vector<std::vector<Written>> written_; // per range
    Counters                          counters_;
    long long                         bitReports_ = 0; // of the head's tag, type and address in this exchange
    QString                           headType_;
    qint32                            headAddress_ = 0;
};

} // namespace soak

#endif
