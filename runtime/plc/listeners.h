#ifndef RUNTIME_PLC_LISTENERS_H
#define RUNTIME_PLC_LISTENERS_H

#include "plc/target.h"
#include "session/watch_values.h"
#include "values/recipe.h"

#include <atomic>
#include <deque>
#include <utility>

// The targets of events, each with what waits for it. The functions that add to it are called under the lock of the
// queue, and return true if the target is to be queued.

namespace fins {

/// The samples of a watch: of each value the latest, whether it waits or was delivered.
class Subscription : public Target {
public:
    Subscription(std::vector<Tag> tags, Plc::SamplesCall call);

    const std::vector<Tag> &tags() const { return tags_; }

    /// The latest of each value, in the order of the watch.
    std::vector<Sample> &latest() { return latest_; }

    /// latest()[index] has changed; what waited of it before is left out.
    bool changed(std::size_t index);

    void take() override;
    void deliver() override;

protected:
    void letGo() override { call_ = nullptr; }

private:
    const std::vector<Tag>   tags_;
    Plc::SamplesCall         call_;
    std::vector<Sample>      latest_;
    std::vector<bool>        waits_;
    std::vector<std::size_t> order_; // of those that wait
    Samples                  taken_;
};

/// Events of which each is told, up to `limit` of them; then the oldest are left out.
template <typename Event>
class Listener : public Target {
public:
    Listener(std::function<void(const Event &)> call, std::size_t limit) : call_(std::move(call)), limit_(limit) {}

    bool add(const Event &event)
    {
        while (waiting_.size() >= limit_)
            waiting_.pop_front();
        waiting_.push_back(event);
        return true;
    }

    void take() override { taken_.swap(waiting_); }

    void deliver() override
    {
        while (!taken_.empty() && !hasEnded()) {
            const Event event = std::move(taken_.front());
            taken_.pop_front();
            call_(event);
        }
        taken_.clear();
    }

    bool putBack() override
    {
        taken_.insert(taken_.end(), waiting_.begin(), waiting_.end());
        waiting_ = std::exchange(taken_, {});
        return !waiting_.empty();
    }

protected:
    void letGo() override { call_ = nullptr; }

private:
    std::function<void(const Event &)> call_;
    const std::size_t limit_;
    std::deque<Event> waiting_;
    std::deque<Event> taken_;
};

/// A write, recipe or inquiry: its progress, of which the latest is told, and its end, which is told once.
class Undertaking : public Target {
public:
    enum class Kind { WRITE, WRITE_RECIPE, READ_RECIPE, ASK };
    enum class Stage { QUEUED, BEGUN, OVER, CANCELLED };

    Undertaking(Kind what, const OperationOptions &with) : Target(true), kind(what), options(with) {}

    /// Nothing of it was sent, nor will be.
    bool cancelUnsent();

    /// False if it was cancelled. From then on some of it may have been sent.
    bool begin();

    bool progress(std::size_t doneWords, std::size_t allWords);
    void end(Outcomes result);
    void end(RecipeValues result);
    void end(PlcFacts result);

    void take() override;
    void deliver() override;
    bool putBack() override;

    const Kind             kind;
    const OperationOptions options;
    std::chrono::steady_clock::time_point deadline;
    std::vector<RecipeEntry> entries; // values to write, or variables to read
    std::vector<Topic>     topics;    // to ask about
    Plc::OutcomesCall      outcomesCall;
    Plc::RecipeCall        recipeCall;
    Plc::FactsCall         factsCall;
    Plc::ProgressCall      progressCall;
    bool                   tellsProgress = false; // set before it is ordered
    std::function<void()>  wake; // the thread, which looks at isToCancel; set before it is ordered
    std::atomic<Stage>     stage{Stage::QUEUED};
    std::atomic<bool>      isToCancel{false};

protected:
    void letGo() override;

private:
    void end();

    std::pair<std::size_t, std::size_t> progress_{0, 0};
    bool         hasProgress_ = false;
    bool         hasEnd_      = false;
    std::pair<std::size_t, std::size_t> takenProgress_{0, 0};
    bool         hasTakenProgress_ = false;
    bool         hasTakenEnd_      = false;
    Outcomes     outcomes_;
    RecipeValues values_;
    PlcFacts     facts_;
};

/// What has happened to no value yet, for each of the tags.
std::vector<Sample> firstSamples(const std::vector<Tag> &tags);

} // namespace fins

#endif
