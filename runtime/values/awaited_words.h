#ifndef RUNTIME_VALUES_AWAITED_WORDS_H
#define RUNTIME_VALUES_AWAITED_WORDS_H

#include "values/items.h"

#include <set>
#include <utility>

// Which words of some items are still to be seen: the driver answers value reads at once, with 0 for a word that it
// never received, so the panel itself notes what has arrived.

class AwaitedWords {
public:
    /// Adds the words of the items.
    void expect(const std::vector<Item> &items);

    /// The words of a block have been seen; returns how many of them were expected.
    std::size_t settle(const QString &wordType, qint32 address, qint32 count);

    bool complete() const { return words_.empty(); }

    /// True if a word of the item is still expected.
    bool awaits(const Item &item) const;

private:
    std::set<std::pair<QString, qint32>> words_;
};

#endif
