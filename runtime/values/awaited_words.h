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
    void expect(const std::vector<Item> &items)
    {
        for (const Item &item : items) {
            for (qint32 word = item.firstWord(); word < item.endWord(); ++word)
                words_.insert({item.wordType(), word});
        }
    }

    /// The words of a block have been seen; returns how many of them were expected.
    std::size_t settle(const QString &wordType, qint32 address, qint32 count)
    {
        const auto first = words_.lower_bound({wordType, address});
        auto last = first;
        std::size_t settled = 0;
        while (last != words_.end() && last->first == wordType && last->second < address + count) {
            ++last;
            ++settled;
        }
        words_.erase(first, last);
        return settled;
    }

    bool complete() const { return words_.empty(); }

    /// True if a word of the item is still expected.
    bool awaits(const Item &item) const
    {
        const auto word = words_.lower_bound({item.wordType(), item.firstWord()});
        return word != words_.end() && word->first == item.wordType() && word->second < item.endWord();
    }

private:
    std::set<std::pair<QString, qint32>> words_;
};

#endif
