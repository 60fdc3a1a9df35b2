#include "session/watch_plan.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#ifndef QStringLiteral // Qt 4.8 has none
#define QStringLiteral(text) QString::fromLatin1(text)
#endif

static std::vector<Item> cutToFrames(const std::vector<Item> &items, qint32 wordsPerFrame)
{
    std::vector<Item> pieces;
    for (const Item &item : items) {
        // A run of bits may begin at the last bit of a word, and must still fit.
        const qint32 limit = item.isBit ? wordsPerFrame * 16 - 15 : wordsPerFrame;
        for (const Item &piece : cutItem(item, limit))
            pieces.push_back(piece);
    }
    return pieces;
}

static bool lessByWord(const Item &a, const Item &b)
{
    return std::make_tuple(a.wordType(), a.firstWord(), a.endWord())
           < std::make_tuple(b.wordType(), b.firstWord(), b.endWord());
}

// For each of the sorted pieces: does it share a word with another one?
static std::vector<bool> findShared(const std::vector<Item> &pieces)
{
    std::vector<bool> shared(pieces.size(), false);
    std::size_t farthest = 0; // the earlier piece that reaches farthest
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        const Item &reach = pieces[farthest];
        const bool sameType = reach.wordType() == pieces[i].wordType();
        if (sameType && pieces[i].firstWord() < reach.endWord())
            shared[farthest] = shared[i] = true;
        if (!sameType || pieces[i].endWord() > reach.endWord())
            farthest = i;
    }
    return shared;
}

// The driver hands a type name along with every frame and every change. A literal's copies need no counting.
static QString literalName(const QString &regType)
{
    static const QString NAMES[] = {
        QStringLiteral("CIO"), QStringLiteral("WR"), QStringLiteral("HR"), QStringLiteral("AR"),
        QStringLiteral("T"),   QStringLiteral("C"),  QStringLiteral("DM"),
    };
    const auto *found = std::find(std::begin(NAMES), std::end(NAMES), regType);
    return found == std::end(NAMES) ? regType : *found;
}

std::vector<Item> planPieces(const std::vector<Item> &items, qint32 wordsPerFrame)
{
    std::vector<Item> pieces = cutToFrames(items, wordsPerFrame);
    std::sort(pieces.begin(), pieces.end(), lessByWord);
    const std::vector<bool> shared = findShared(pieces);
    std::vector<Item> parts;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const Item &piece = pieces[i];
        if (!shared[i])
            parts.push_back(piece);
        for (qint32 word = piece.firstWord(); shared[i] && word < piece.endWord(); ++word)
            parts.push_back(wordsOf(piece, word, word + 1));
    }
    std::stable_sort(parts.begin(), parts.end(), lessByWord);
    return parts;
}

QList<KEY_ADDRESS> toAddresses(const std::vector<Item> &pieces)
{
    QList<KEY_ADDRESS> addresses;
    for (const Item &piece : pieces) {
        KEY_ADDRESS address;
        address.requestTag = VARIABLE_TAG;
        address.regType    = literalName(piece.regType);
        address.address    = piece.address;
        address.count      = piece.count;
        address.dataKind   = piece.isBit ? -1 : 0;
        std::fill(address.data, address.data + VALUE_BUFFER_SIZE, quint8(0));
        addresses.append(address);
    }
    return addresses;
}

QList<KEY_ADDRESS> planWatch(const std::vector<Item> &items, qint32 wordsPerFrame)
{
    return toAddresses(planPieces(items, wordsPerFrame));
}
