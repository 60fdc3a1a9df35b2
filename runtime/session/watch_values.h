#ifndef RUNTIME_SESSION_WATCH_VALUES_H
#define RUNTIME_SESSION_WATCH_VALUES_H

#include "driver/change_feed.h"
#include "fins_runtime/values.h"
#include "session/runtime.h"
#include "values/awaited_words.h"
#include "values/tags.h"

#include <functional>

// The watched values: what each is, how far it can be trusted, and what happened to it. A value that was received once
// keeps its text for ever; only its quality tells that the PLC no longer confirms it. A value's text and its quality
// change together: whoever is told of one sees the other as it is then.

using fins::Quality;

struct WatchedValue {
    std::string name;
    Item        item;
    ValueFormat format;
    std::string text;      // "" until it is received
    Quality     quality;
    TimePoint   changedAt; // of the latest change; meaningless while changes is 0
    unsigned long changes; // the first value is none
    std::vector<quint8> bytes = {}; // as received; empty until then
    std::size_t tag = 0;   // which of the tags it is of
};

struct WatchEvent {
    enum Kind { FIRST, CHANGE, QUALITY };

    Kind                kind;
    const WatchedValue &value;
    std::string         old; // text before; "" for FIRST
};

/// The values of the tags, one by one: a tag of several values becomes that many, named by their addresses or, for a
/// tag of a project, by NAME[0], NAME[1] and so on. A value named twice comes once.
std::vector<WatchedValue> singleValues(const std::vector<Tag> &tags);

class WatchValues {
public:
    /// Watches the tags in `runtime`, which outlives this object. `others` are
    /// items that are polled, too. `pending` tells, after every exchange, which items have a write that is not settled:
    /// the values that share a word with one are pending, and good again when they were read after that.
    WatchValues(Runtime &runtime, const std::vector<Tag> &tags, const std::vector<Item> &others,
                std::function<std::vector<Item>()> pending);
    /// The same without tags: watch() has to follow before the first step.
    WatchValues(Runtime &runtime, std::function<std::vector<Item>()> pending);
    WatchValues(const WatchValues &) = delete;
    WatchValues &operator=(const WatchValues &) = delete;

    /// Watches these tags from now on and has `others` polled, too, by Runtime::keep(): Runtime::watch() is free for
    /// more. What was known of a value that was watched before stays known.
    void watch(const std::vector<Tag> &tags, const std::vector<Item> &others);

    /// Calls `call` for everything that happens to a value, during step().
    void onEvent(std::function<void(const WatchEvent &)> call) { call_ = std::move(call); }

    /// Asks anew which items have a write that is not settled; to be called when the answer has changed.
    void notePending();

    /// Nothing is confirmed any more. Called by itself when the runtime loses the link, and to be called when it ends.
    void noteLost();

    /// True if every word of the items belongs to a watched value.
    bool covers(const std::vector<Item> &items) const;

    const std::vector<WatchedValue> &values() const { return values_; }
    unsigned long changes() const { return changes_; }

    /// True if the PLC refused to read a value that was never received.
    bool refused() const;

private:
    using Key = std::pair<qint32, QString>; // the address first: texts take longer to compare

    void noteExchange(const Exchange &exchange);
    void noteSilence();
    void noteRefused(const Item &block);
    void noteFresh(const Item &block);
    void noteChanges();
    void refresh(WatchedValue &value, Quality quality);
    void setQuality(WatchedValue &value, Quality quality);

    Runtime                                &runtime_;
    std::vector<WatchedValue>               values_;
    std::vector<std::size_t>                inOrder_;   // by type and address
    std::vector<std::pair<Key, std::size_t>> byAddress_; // the values that hold a word or a bit, in order
    AwaitedWords                                stale_;     // words not yet read on this link
    std::vector<Change>                     changed_;
    std::vector<bool>                       pending_;
    std::function<std::vector<Item>()>      pendingItems_;
    bool                                    anyPending_; // as of the latest exchange
    std::function<void(const WatchEvent &)> call_;
    unsigned long                           changes_;
    bool                                    silent_;
    std::vector<CallHandle>                 calls_;
};

#endif
