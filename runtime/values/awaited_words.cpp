#include "values/awaited_words.h"

void AwaitedWords::expect(const std::vector<Item> &items)
{
    for (const Item &item : items) {
        for (qint32 word = item.firstWord(); word < item.endWord(); ++word)
            words_.insert({item.wordType(), word});
    }
}

std::size_t AwaitedWords::settle(const QString &wordType, qint32 address, qint32 count)
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

bool AwaitedWords::awaits(const Item &item) const
{
    const auto word = words_.lower_bound({item.wordType(), item.firstWord()});
    return word != words_.end() && word->first == item.wordType() && word->second < item.endWord();
}
