#ifndef FINS_RUNTIME_PLC_H
#define FINS_RUNTIME_PLC_H

#include "values.h"

#include <memory>
#include <type_traits>

// One PLC: a link that a thread of the library keeps alive, subscriptions to its values, writes and recipes.
//
//     fins::Plc plc = fins::Plc::open({"192.168.250.1"});
//     auto watch = plc.watch({"DM:0", "DM:100/f32"}, [](const fins::Samples &samples) { ... });
//     while (plc.dispatch(std::chrono::seconds(1))) {}
//
// Threads: every function may be called on any thread. Callbacks run inside dispatch() only, on the thread that calls it,
// one at a time, under no lock; they may call every function of the library but dispatch() of the same Plc, and destroy
// what they want, handles and the Plc too. No function waits for the network; dispatch() waits as long as it is told to.
// What a callback throws leaves dispatch(); the other events stay for the next call.

namespace fins {

class Target; // of the library alone

/// Ends what it stands for when it is destroyed; then none of its callbacks runs any more, once one that is running on
/// another thread has returned. It never waits for the network, and may outlive its Plc.
class FINS_RUNTIME_API Handle {
public:
    Handle() = default;
    Handle(Handle &&) noexcept = default;
    Handle &operator=(Handle &&) noexcept;
    ~Handle();

protected:
    friend class Plc;
    explicit Handle(std::shared_ptr<Target> target);
    std::shared_ptr<Target> target_;
};

/// A subscription. It survives every loss of the link, and ends with its handle.
class FINS_RUNTIME_API Watch : public Handle {
    using Handle::Handle;
};

/// A write or recipe under way. Destroying it forgets it: it is carried out, and nobody is told what became of it.
class FINS_RUNTIME_API Operation : public Handle {
    using Handle::Handle;

public:
    /// Takes back what has not been sent. True: nothing of it was sent, nor will be; the outcome NOT_SENT comes. False:
    /// some of it was sent, or it is over; the rest of a write is still taken back, and the outcome tells of each value; a
    /// recipe that has begun is written to its end.
    bool cancel();
};

/// One value of a write: a tag or item, and what it is to hold; as many values as it has. Text is read as people write
/// it, in the form in which the item is shown; a single text may hold several values with commas between them.
struct Assignment {
    std::string        item;
    std::vector<Value> values;

    Assignment(std::string name, Value value) : item(std::move(name)), values{std::move(value)} {}
    Assignment(std::string name, std::vector<Value> several) : item(std::move(name)), values(std::move(several)) {}
    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    Assignment(std::string name, Number number) : item(std::move(name)), values{valueOf(number)} {}

private:
    template <typename Number>
    static Value valueOf(Number number)
    {
        if constexpr (std::is_same_v<Number, bool>)
            return Value(number);
        else if constexpr (std::is_floating_point_v<Number>)
            return Value(static_cast<double>(number));
        else if (number < 0 || static_cast<std::uint64_t>(number) <= INT64_MAX)
            return Value(static_cast<std::int64_t>(number));
        else
            return Value(static_cast<std::uint64_t>(number));
    }
};

struct OperationOptions {
    std::chrono::milliseconds giveUp{10000}; // until what has not been sent is taken back, and the rest is unconfirmed
    bool verify    = true;  // a write: read back, before it is called done; false: ACCEPTED will do
    bool keepGoing = false; // a write: with the values behind one that is refused or unknown
};

class FINS_RUNTIME_API Plc {
public:
    using SamplesCall  = std::function<void(const Samples &)>;
    using OutcomesCall = std::function<void(const Outcomes &)>;
    using RecipeCall   = std::function<void(const RecipeValues &)>;
    using FactsCall    = std::function<void(const PlcFacts &)>;
    using ProgressCall = std::function<void(std::size_t doneWords, std::size_t allWords)>;
    using StateCall    = std::function<void(const State &)>;
    using MessageCall  = std::function<void(const std::string &line)>;

    /// Loads a private copy of the driver, starts the thread and begins to connect; it never waits for the PLC. Throws
    /// ConfigError with all that is wrong, or std::runtime_error if the system lacks memory or threads.
    static Plc open(const Config &config);

    Plc(Plc &&) noexcept;
    Plc &operator=(Plc &&) noexcept;

    /// close(), and the outcomes that are left, on this thread; no other callback.
    ~Plc();

    /// Ends the link at once, without a word to the PLC. Writes under way become UNCONFIRMED or NOT_SENT; their outcomes,
    /// and what else waits, still come in dispatch().
    void close();

    /// Subscribes to tags or items. The first call brings a sample of each value as it is known now, NOT_CONNECTED
    /// included; each further one brings what has changed since, in value or in quality, one sample for each value, the
    /// latest. Throws NameError.
    [[nodiscard]] Watch watch(const std::vector<std::string> &items, SamplesCall call);

    /// The values of tags or items that are being watched, as they are known now; NOT_CONNECTED for others. Throws NameError.
    Samples snapshot(const std::vector<std::string> &items) const;

    /// Writes in the order of the list, as soon as the link is up, after all writes ordered before. The write stops at the
    /// first value that is refused or unknown; the rest is NOT_SENT. `call` comes once, with an outcome for each value.
    [[nodiscard]] Operation write(const std::vector<Assignment> &values, OutcomesCall call, const OperationOptions &options = {});

    /// Writes a recipe of the configuration as one transfer, reads it back, and tells what became of each variable. A transfer
    /// that is cut off is not repeated. Throws NameError.
    [[nodiscard]] Operation writeRecipe(const std::string &name, OutcomesCall call, const OperationOptions &options = {},
                                        ProgressCall progress = {});

    /// Reads the variables of a recipe of the configuration. Throws NameError.
    [[nodiscard]] Operation readRecipe(const std::string &name, RecipeCall call, const OperationOptions &options = {},
                                       ProgressCall progress = {});

    /// Asks the PLC about itself, between requests for its memory and never within a recipe. `call` comes once.
    [[nodiscard]] Operation ask(const std::vector<Topic> &topics, FactsCall call, const OperationOptions &options = {});

    /// The tags and recipes of the project file and of the configuration, in their order, as one would write them into a
    /// configuration: a tag's item with every order of words or characters that is not the usual one.
    std::vector<TagConfig> tags() const;
    std::vector<RecipeConfig> recipes() const;

    State state() const;

    /// `call` is told of the state now and of every change; the latest ones where dispatch() comes too late.
    [[nodiscard]] Handle onState(StateCall call);

    /// `call` gets a line for people about what happens on the link and to writes, as fins_panel says it.
    [[nodiscard]] Handle onMessage(MessageCall call);

    /// A file descriptor that is readable while events wait: for poll(), an event loop or a socket notifier. It stays the
    /// same, and belongs to this object; do not read it.
    int readyFd() const;

    /// Delivers all events that wait, after waiting up to `wait` for the first. False when the Plc is closed and nothing is
    /// left to deliver.
    bool dispatch(std::chrono::milliseconds wait = std::chrono::milliseconds(0));

private:
    class Impl;
    explicit Plc(std::shared_ptr<Impl> impl);
    std::shared_ptr<Target> order(const std::shared_ptr<Target> &target);
    std::shared_ptr<Impl> impl_;
};

} // namespace fins

#endif
