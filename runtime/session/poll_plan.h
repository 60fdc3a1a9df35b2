#ifndef RUNTIME_SESSION_POLL_PLAN_H
#define RUNTIME_SESSION_POLL_PLAN_H

#include "base/clock.h"
#include "values/items.h"

#include <QtCore/QList>

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <utility>
#include <vector>

// What is polled: the watched items without the words that the PLC refuses, which would only cost the others time.
//
// The driver polls what it is given in blocks, of which a PLC refuses the whole for one word. Such a block is tried by
// halves, until only words are left out that are refused on their own. The driver joins whatever lies close enough,
// across words that are left out too; so the plan is given to it in turns, of which none holds both what lies before
// such words and what lies behind them, unless they are farther apart than a block is long.
//
// What is left out is tried again now and then. The time is an argument everywhere.

class PollPlan {
public:
    static constexpr Millis PAUSE{30000};

    /// Words that the PLC refuses, and the end code with which it does.
    struct Refusal {
        Item          block;
        std::uint16_t endCode;
    };

    /// Refused words are tried again `pause` after the latest refusal, so that all others get their turns in between.
    explicit PollPlan(Millis pause) : pause_(pause) {}

    /// Replaces the items; none of them is left out. No block is longer than `wordsPerFrame`.
    void set(const std::vector<Item> &items, qint32 wordsPerFrame);

    /// What is to be polled next, for intf_addrMerge, see planWatch(); and the blocks that this has made of it.
    QList<KEY_ADDRESS> nextTurn();
    void begin(const QList<KEY_ADDRESS> &blocks);

    /// A block of the turn was read or refused.
    void countPoll() { --left_; }

    /// True if every block of the turn had its poll.
    bool turnIsOver() const { return left_ <= 0; }

    /// After a turn: true if there is another one. If not, the same blocks are polled again.
    bool hasNextTurn(TimePoint now);

    /// A block of the turn was refused. False if it is going to be tried by halves, true if it is left out: it is one
    /// word, or not to be halved.
    bool refuse(const Item &block, std::uint16_t endCode, bool byHalves, TimePoint now);

    /// True while the turns go through all that is polled: nothing is being tried, and no turn makes up for one that
    /// was broken off.
    bool isSteady() const { return isSteady_; }

    /// True if noteRead() has to know of every block that is read.
    bool awaitsAny() const { return isTrial_ || !awaited_.empty(); }

    /// A block was read. Returns those of its words that were left out before.
    std::vector<Item> noteRead(const Item &block);

    /// What was found to be refused since the last call; nothing while a part of a refused block is yet to be tried.
    std::vector<Refusal> takeRefusals();

    /// Puts everything back: for a new connection. True if the plan has changed.
    bool putBack();

    /// True if a word of the item is left out.
    bool leavesOut(const Item &item) const;
    bool leavesAnyOut() const { return !refused_.empty() || !cuts_.empty(); }

private:
    using Word  = std::pair<QString, qint32>; // word type and address
    using Words = std::map<Word, std::uint16_t>; // with the end code of each
    using Turn  = std::vector<Item>;

    /// Words to be tried as one block.
    struct Suspect {
        std::vector<Word> words;
        bool isFirstHalf; // the other half follows in suspects_
        bool otherIsRead; // of a second half: the first one was read as a whole
    };

    /// Part of a piece; no block may reach from what is before it into one that is `isApart`.
    struct Part {
        Item item;
        bool isApart;
    };

    void reset();
    std::vector<Word> watchedWords(const Item &block) const;
    Turn trial() const;
    std::vector<Part> parts() const;
    std::deque<Turn> cycle() const;
    void keepRest(const Item &block);
    void tryAgain();

    static std::vector<Refusal> joined(const Words &words, qint32 limit);

    Millis               pause_;
    qint32               wordsPerFrame_ = 1;
    std::vector<Item>    pieces_;           // of the items, in the order of their words
    Words                refused_;          // are left out
    Words                found_;            // of these, what was not yet taken
    Words                awaited_;          // were put back and are not yet read
    std::set<Word>       cuts_;             // no block may reach across the beginning of these
    std::vector<Suspect> suspects_;         // the last one is tried next
    std::deque<Turn>     turns_;            // what is left of the cycle
    std::vector<Item>    blocks_;           // of the turn, in the driver's order
    int                  left_ = 0;         // of these, without their poll
    int                  trialsInARow_ = 0;
    bool                 isTrial_ = false;  // the turn tries what was the last of suspects_
    bool                 isSteady_ = false;
    bool                 isWhole_ = false;  // isSteady_, and the turn is all that is polled
    TimePoint            retryAt_;
};

#endif
