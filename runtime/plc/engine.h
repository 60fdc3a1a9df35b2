#ifndef RUNTIME_PLC_ENGINE_H
#define RUNTIME_PLC_ENGINE_H

#include "base/stop_signal.h"
#include "plc/event_queue.h"
#include "plc/inquiry.h"
#include "plc/listeners.h"
#include "plc/setup.h"
#include "session/recipe_transfer.h"
#include "session/write_queue.h"
#include "session/write_report.h"

#include <atomic>
#include <thread>

// What the thread of one PLC does: it steps the session's loop, carries out writes and recipes one after the other, asks
// the PLC about itself in between, and posts what happens. Everything else of the library only hands it work and takes events from the queue.

namespace fins {

class Engine {
public:
    /// The thread runs from here on. `setup` and `queue` outlive this object.
    Engine(const Setup &setup, EventQueue &queue);

    ~Engine() { close(); }
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    // From any thread:

    /// Ends the link and the thread; what was ordered has its outcome in the queue then.
    void close();
    bool isClosed() const { return isClosed_; }

    void add(const std::shared_ptr<Subscription> &subscription);
    void add(const std::shared_ptr<Undertaking> &undertaking);
    void add(const std::shared_ptr<Listener<State>> &listener);
    void add(const std::shared_ptr<Listener<std::string>> &listener);

    /// A target has ended: it is forgotten.
    void forgetEnded();

    /// Ends a pause: something was cancelled.
    void wake();

    State state() const;

    /// Copies what is known of the values of these names into `samples`.
    void fill(Samples &samples) const;

private:
    struct Place {
        std::shared_ptr<Subscription> subscription;
        std::size_t                   index;
    };
    struct Watched {
        std::vector<Place> places;
        std::chrono::system_clock::time_point utc; // of the reply that brought the value
        TimePoint steady;
    };

    // On the thread:

    void run();
    void takeOrders();
    void dropUnsent();
    void dropInquiries(TimePoint now);
    void noteDeadlines();
    void carryOn();

    void plan();
    void place(const std::vector<std::shared_ptr<Subscription>> &subscriptions);
    void setInterval();
    void noteEvent(const WatchEvent &event);
    void update(Sample &sample, std::size_t value) const;
    void postChanges();
    std::vector<Item> openItems() const;

    void noteState(bool isAttempt);
    void describeTrouble(State &state) const;
    void postState(const State &state);
    void post(const std::string &line);

    void beginReport(const Undertaking &undertaking);
    Outcomes endReport(const std::string &reason);
    void beginWrite(const std::shared_ptr<Undertaking> &write);
    void pollWritten();
    void advanceWrite();
    void pumpWrite(bool isNew);
    void endWrite(const std::string &reason);
    void endUnsent(const std::shared_ptr<Undertaking> &undertaking, const std::string &reason);

    void inquire();
    void endInquiry(Inquiry &inquiry, const std::string &reason);

    void transfer(const std::shared_ptr<Undertaking> &recipe);
    bool goesOn(bool hasBegun, Undertaking &recipe);
    std::string writeRecipe(RecipeTransfer &transfer, const Undertaking &recipe, TimePoint end);
    RecipeValues readRecipe(RecipeTransfer &transfer, const Undertaking &recipe, TimePoint end) const;
    void endAll();

    const Setup &setup_;
    EventQueue  &queue_;
    StopSignal   stop_;

    std::mutex        ordersMutex_; // guards what follows
    std::atomic<bool> hasOrders_{false};
    bool              isReplanned_ = false;
    bool              isClosing_   = false;
    std::vector<std::shared_ptr<Subscription>> subscriptions_;
    std::deque<std::shared_ptr<Undertaking>>   orders_;

    // Guarded by the queue.
    std::vector<std::shared_ptr<Subscription>>          known_; // for snapshots
    std::vector<std::shared_ptr<Listener<State>>>       stateListeners_;
    std::vector<std::shared_ptr<Listener<std::string>>> messageListeners_;
    State             state_;

    // Of the thread.
    std::unique_ptr<Runtime>     runtime_;
    std::unique_ptr<WatchValues> values_;
    std::vector<CallHandle>      calls_;
    std::vector<Watched>         watched_;  // as values_->values()
    std::vector<std::size_t>     changed_;  // of these, in the exchange
    std::vector<bool>            isChanged_;
    std::chrono::system_clock::time_point exchangeUtc_; // when the first of these changed
    TimePoint                    exchangeSteady_;
    bool                         isIdle_ = false; // nothing is watched
    bool                         isTransferring_ = false; // a recipe
    std::deque<std::shared_ptr<Undertaking>> waiting_;
    std::deque<Inquiry>          inquiries_; // wait for no write, nor it for them
    TimePoint                    nextDeadline_ = TimePoint::max(); // of what waits, of inquiries and of the active write
    std::shared_ptr<Undertaking> active_;   // a write
    std::unique_ptr<WriteReport> report_;   // of it, or of a recipe that is written
    std::unique_ptr<WriteQueue>  writes_;   // of the active write
    bool                         isReadBack_ = false; // its items are polled for it alone
    std::mutex                   runtimeMutex_; // held where runtime_ is destroyed, and while it is aborted
    std::mutex                   closeMutex_;   // held by close()
    std::atomic<bool>            isClosed_{false};
    std::thread                  thread_;
};

} // namespace fins

#endif
