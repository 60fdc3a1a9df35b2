#ifndef HMI_MODEL_STATION_H
#define HMI_MODEL_STATION_H

#include "model/live_value.h"

#include <fins_runtime/plc.h>

#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

// One PLC of the panel: its values as they are known, and its writes. All calls are made in the window's thread and none
// waits for the network; the listeners are called inside dispatch() alone.

/// A write that has ended.
struct WriteEnd {
    LiveValue    *value;
    std::string   oldText; // as it was shown when the write was ordered
    fins::Outcome outcome;
};

/// Of a recipe: its name, and what became of each variable.
struct RecipeEnd {
    std::string    recipe;
    fins::Outcomes outcomes;
};

struct StationListener {
    std::function<void(LiveValue &)>         onValue;
    std::function<void(const WriteEnd &)>    onWriteEnd;
    std::function<void(const RecipeEnd &)>   onRecipeEnd;
    std::function<void(const std::string &)> onLink; // a line: the link is there, or why not
};

class Station {
public:
    /// Begins to connect. Throws fins::ConfigError.
    explicit Station(const fins::Config &config);

    Station(const Station &) = delete;
    Station &operator=(const Station &) = delete;

    /// As people know it: its name in the project, or where it is.
    const std::string &name() const { return name_; }

    const std::vector<fins::TagConfig> &tags() const { return tags_; }

    /// True for names of its tags and items.
    bool owns(const std::string &item) const { return item.compare(0, prefix_.size(), prefix_) == 0; }

    const std::vector<fins::RecipeConfig> &recipes() const { return recipes_; }
    fins::Plc &plc() { return plc_; }

    /// Watches tags or items, once, and tells of them from now on. Each value that has a trend takes the next number from
    /// `trends`. Throws fins::NameError.
    void watch(const std::vector<std::string> &names, StationListener listener, std::size_t &trends);

    /// The values that are watched, in the order of watch(); they stay where they are.
    std::deque<LiveValue> &values() { return values_; }

    /// Null if it is not watched.
    LiveValue *find(const TagValue &tag);

    /// Writes a text as people write it. What becomes of it comes to the listener, once.
    void write(LiveValue &value, const std::string &text, std::chrono::milliseconds giveUp = std::chrono::seconds(10));

    /// Takes back what was ordered for the value and is not yet sent.
    void takeBack(const LiveValue &value);

    /// Writes a recipe of the project; it goes on when nobody looks any more. `onEnd` comes behind the listener's.
    void writeRecipe(const std::string &recipe, fins::Plc::ProgressCall onProgress, std::function<void(const RecipeEnd &)> onEnd);

    const fins::State &state() const { return state_; }

    /// Why nothing can be written now, in words; "" if it can.
    std::string lock() const;

    /// The same for one value: the link, the tag's right, a value that is not good.
    static std::string lockOf(const LiveValue &value);

    /// Delivers what has come. It never waits.
    void dispatch();

    /// Ends the link, and tells what became of each write that was under way.
    void close();

private:
    struct Order {
        LiveValue      *value; // null: a recipe
        std::string     oldText;
        fins::Operation operation;
    };
    using Place = std::list<Order>::iterator;

    void addValues(const std::vector<std::string> &names, std::size_t &trends);
    void take(const fins::Samples &samples);
    void take(const fins::State &state);
    void endOrder(Place order, const fins::Outcomes &outcomes);
    const fins::TagConfig *tagOf(const std::string &name) const;

    fins::Plc                       plc_;
    std::string                     name_;
    std::string                     prefix_; // of the names of its tags and items
    std::vector<fins::TagConfig>    tags_;
    std::vector<fins::RecipeConfig> recipes_;
    std::deque<LiveValue>           values_;
    std::list<Order>                orders_;
    StationListener                 listener_;
    fins::State                     state_;
    std::string                     told_ = "not connected yet"; // why there is no link; "" while there is one
    std::vector<fins::Handle>       handles_; // go first, so that nothing calls what is gone
};

#endif
