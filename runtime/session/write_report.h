#ifndef RUNTIME_SESSION_WRITE_REPORT_H
#define RUNTIME_SESSION_WRITE_REPORT_H

#include "fins_runtime/values.h"
#include "session/runtime.h"
#include "values/awaited_words.h"
#include "values/tags.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

// What becomes of the writes that a command was told to make. Every one of them is reported once, whichever way the
// command ends, and the verdict follows; see "What became of a write" in docs/panel.md. The report watches the
// exchanges with the PLC itself and needs no word from whoever sends the writes: a write that was sent is unconfirmed
// until its reply came, and it is done only when the PLC's words were read afterwards and agree. A change of the
// operating mode that went out with a write is reported in the same way.

using fins::Fate;

enum class WriteVerdict {
    DONE,         // the PLC holds every value
    NOT_AS_ASKED, // a write was refused or differs, and nothing is unknown
    UNKNOWN       // a write is unconfirmed or was not sent, or a mode change is unconfirmed
};

class WriteReport {
public:
    struct Order {
        std::string         name; // as the user names it
        Item                item;
        ValueFormat         format;
        std::vector<quint8> data; // wanted
        std::optional<Fate> fate = std::nullopt; // none: not yet known
        std::uint16_t       endCode = 0;         // of a refusal
        std::string         text = "";           // the line that tells the fate; "" until it is known
        std::optional<std::vector<quint8>> held = std::nullopt; // as read back
    };

    /// `runtime` outlives this object. Without `readsBack` an acknowledged write is ACCEPTED, and one without a reply
    /// when the link is lost is unconfirmed.
    explicit WriteReport(Runtime &runtime, bool readsBack = true);

    /// Reports what finish() has not.
    ~WriteReport() { finish(); }
    WriteReport(const WriteReport &) = delete;
    WriteReport &operator=(const WriteReport &) = delete;

    /// Adds a write that is going to be made; no other one shares a word or bit with it. `data` holds the item's bytes.
    void add(const std::string &name, const Item &item, const ValueFormat &format, const std::vector<quint8> &data);

    /// Calls `call` in finish(), in the order of the writes, for each that was read back, refused ones included; without
    /// it a write that is done is reported as a message.
    void onResult(std::function<void(const Order &)> call) { resultCall_ = std::move(call); }

    /// Says no line for a write that differs: the command shows it in its own way, after finish().
    void leaveDifferencesOut() { saysDifferences_ = false; }

    /// True if every write that was sent has been answered and read back, as far as the PLC lets it be read. What it
    /// does not let be read is unconfirmed from then on.
    bool settled();

    /// The writes of which nothing is known yet, sent or not.
    std::vector<Item> openItems() const;

    const std::vector<Order> &orders() const { return orders_; }

    /// Reports all that has not been reported; `reason` says why writes were not sent.
    void finish(const std::string &reason = "the command ended first");

    /// What holds for all writes together. Only after finish().
    WriteVerdict verdict() const;

private:
    enum class Cell : quint8 {
        UNSENT,
        SENT,     // once, and not answered
        DOUBTFUL, // again after a time without an answer: a refusal tells nothing of the time before
        REFUSED,
        AGAIN,    // refused for the operating mode, which has been changed since: it goes out once more
        DONE      // acknowledged
    };
    enum class Mode { NOT_ASKED, ASKED, DOUBTFUL };

    struct Progress {
        std::vector<Cell> cells;   // a word or bit each
        AwaitedWords          unread;  // words not read since the write was sent
        std::string       refusal; // of the PLC, in words
        bool              isUnreadable;
        bool              isSaidUnanswered;
    };

    template <typename Change>
    void change(const FRAME_PRO &request, Change cellChange);
    void noteOrder(const FRAME_PRO &request, RequestKind kind);
    void noteExchange(const Exchange &exchange);
    void noteWrite(const Exchange &exchange);
    void acceptAll();
    void noteRead(const FRAME_PRO &request);
    void noteModeChange(const Judgement &judgement);
    void noteLost();
    void replaceCells(Cell from, Cell to);
    void settleRefused();
    void loseMode();
    bool awaitsReading(std::size_t index) const;
    std::size_t cellsThatAre(std::size_t index, Cell cell) const;
    void compare(std::size_t index);
    void settle(std::size_t index, Fate fate, const std::string &text);
    void sayHint(std::uint16_t endCode);
    void settleUnread(std::size_t index, const std::string &why);
    void end(std::size_t index, const std::string &reason);
    void say(const std::string &line) { runtime_.messages().sayAlways(line); }

    Runtime              &runtime_;
    const bool            readsBack_;
    std::vector<Order>    orders_;
    std::vector<Progress> progress_; // of the orders
    std::function<void(const Order &)> resultCall_;
    std::set<std::uint16_t> hinted_;
    Mode                  mode_;
    bool                  modeUnknown_; // the PLC may have been switched
    bool                  isFinished_;
    bool                  saysDifferences_;
    std::vector<CallHandle> calls_;
};

#endif
