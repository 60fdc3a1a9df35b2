#ifndef RUNTIME_VALUES_ITEMS_H
#define RUNTIME_VALUES_ITEMS_H

#include "common/usage_error.h"
#include "driver/driver_library.h"
#include "values/notation.h"

#include <string>
#include <vector>

// Items as the user names them, TYPE:ADDRESS[:COUNT] in the driver's own names and notation, or as the PLC's manuals
// write them. The driver's address functions say what is valid; the panel knows no range of its own.

struct Item {
    QString regType;
    qint32  address; // word address, or bit address (word * 16 + bit) for a bit type
    qint32  count;   // words, or bits for a bit type
    bool    isBit;
    Notation notation = Notation::DRIVER; // in which it was named, and so is shown

    /// The words that hold the item: their register type, the first and one past the last.
    QString wordType() const;
    qint32  firstWord() const { return isBit ? address / 16 : address; }
    qint32  endWord() const { return isBit ? (address + count - 1) / 16 + 1 : address + count; }

    std::size_t byteSize() const { return static_cast<std::size_t>(count) * (isBit ? 1 : 2); }
};

enum class Access { READ, WRITE };

/// The most that a COUNT may be: far more than any area holds, and small enough for sums of an address and a count.
constexpr long COUNT_LIMIT = 1000000;

/// The register type of an item is none of the driver's.
struct UnknownTypeError : UsageError {
    using UsageError::UsageError;
};

/// Throws UsageError, which says what is wrong and, where the driver gives them, the type's range and notation.
/// COUNT counts pieces of `unit` words, or bits; without it the item is one such piece.
Item parseItem(const DriverLibrary &library, const std::string &text, Access access, qint32 unit = 1);

/// True if a word holds part of both.
bool shareWord(const Item &a, const Item &b);

/// Throws UsageError if two of the items share a word or a bit.
void refuseOverlaps(const std::vector<Item> &items);

/// `item` in pieces of at most `limit` words, or bits for a bit type.
std::vector<Item> cutItem(const Item &item, qint32 limit);

/// The part of `item` that lies in the words from `first` up to `end`; some of it has to.
Item wordsOf(const Item &item, qint32 first, qint32 end);

/// "DM:100", "DM_bit:100.5"; itemText adds the count where it is not 1.
std::string addressText(const QString &regType, qint32 address);
std::string itemText(const QString &regType, qint32 address, qint32 count);

/// For programs, the same text however the item was named.
std::string driverText(const Item &item);

/// The same in the item's notation: "DM:100:2" or "D100:2".
std::string itemText(const Item &item);

/// True if the type's name is that of a bit type.
bool isBitType(const QString &regType);

#endif
