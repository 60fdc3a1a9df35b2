#include "values/items.h"

#include "common/numbers.h"

#include <algorithm>
#include <limits>
#include <tuple>

static const int ACCESS_READ  = 0;
static const int ACCESS_WRITE = 1;

// What intf_checkAddr answers.
enum {
    CHECK_VALID        = 0,
    CHECK_OUT_OF_RANGE = 2,
    CHECK_MALFORMED    = 4,
    CHECK_NOT_WRITABLE = 6
};

// What intf_getRegDiscription answers.
enum { FIELD_NOTATION, FIELD_MINIMUM, FIELD_MAXIMUM };

bool isBitType(const QString &regType)
{
    return regType.endsWith(QLatin1String("_bit"));
}

QString Item::wordType() const
{
    return isBit ? regType.left(regType.indexOf(QLatin1Char('_'))) : regType;
}

static std::string typeNames(const DriverLibrary &library)
{
    QList<QString> names;
    library.getRegListByType(1, names);
    library.getRegListByType(0, names);
    std::string text;
    for (int i = 0; i < static_cast<int>(names.size()); ++i)
        text += (i ? ", " : "") + names.at(i).toStdString();
    return text;
}

static std::string rangeText(const QList<QString> &fields, const Item &item)
{
    if (item.notation == Notation::MANUAL) {
        const std::string type = item.regType.toStdString() + ":";
        return manualItem(type + fields.at(FIELD_MINIMUM).toStdString()) + " to "
               + manualItem(type + fields.at(FIELD_MAXIMUM).toStdString());
    }
    return fields.at(FIELD_MINIMUM).toStdString() + " to " + fields.at(FIELD_MAXIMUM).toStdString() + ", written "
           + fields.at(FIELD_NOTATION).toStdString();
}

static qint32 parseCount(const std::string &text, const std::string &count)
{
    long value = 0;
    if (!parseNumber(count, 1, COUNT_LIMIT, value))
        throw UsageError("'" + text + "': the count '" + count + "' is not a number from 1 up");
    return static_cast<qint32>(value);
}

// Stores the address into `item`. The driver's arithmetic wraps at 32 bits, so that numbers far outside the range pass
// its check and mean other words.
static qint32 checkAddress(const DriverLibrary &library, const std::string &text, Access access, Item &item)
{
    const QString address = QString::fromStdString(text);
    const qint32 result = library.checkAddr(item.regType, address, &item.address, item.isBit ? -1 : 0, item.count,
                                            access == Access::WRITE ? ACCESS_WRITE : ACCESS_READ);
    const bool wraps = address.section(QLatin1Char('.'), 0, 0).toInt() != item.firstWord()
                    || item.address > std::numeric_limits<qint32>::max() - item.count;
    return result == CHECK_VALID && wraps ? static_cast<qint32>(CHECK_OUT_OF_RANGE) : result;
}

// The address of a bit from 0 to 9 that is written with two digits, as in 10.05, with one; "" for any other.
static std::string withOneDigit(const std::string &address)
{
    const std::size_t point = address.find('.');
    if (point == std::string::npos || address.size() != point + 3 || address[point + 1] != '0')
        return "";
    return address.substr(0, point + 1) + address.substr(point + 2);
}

// The type and count of the item that `text` names; `address` is what the driver is to check.
static Item splitItem(const std::string &text, std::string &address)
{
    const std::optional<std::string> manual = driverItem(text);
    const std::string words  = manual.value_or(text);
    const std::size_t first  = words.find(':');
    const std::size_t second = first == std::string::npos ? first : words.find(':', first + 1);
    if (first == std::string::npos)
        throw UsageError("'" + text + "' is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2");
    address = words.substr(first + 1, second - first - 1);
    Item item = {QString::fromStdString(words.substr(0, first)), 0, 1, false};
    item.isBit    = isBitType(item.regType);
    item.notation = manual ? Notation::MANUAL : Notation::DRIVER;
    if (second != std::string::npos)
        item.count = parseCount(text, words.substr(second + 1));
    return item;
}

// The driver lets addresses of unknown types pass its check, but describes only the types that it knows.
static QList<QString> describe(const DriverLibrary &library, const std::string &text, const Item &item)
{
    QList<QString> fields;
    library.getRegDiscription(item.regType, fields);
    if (fields.size() > FIELD_MAXIMUM)
        return fields;
    if (item.notation == Notation::MANUAL) // its areas are all known, but not of each the bits
        throw UsageError("'" + text + "': the area " + item.wordType().toStdString() + " has no bits; write "
                         + text.substr(0, text.find('.')));
    throw UnknownTypeError("'" + text + "': there is no register type '" + item.regType.toStdString()
                           + "'; the types are " + typeNames(library));
}

Item parseItem(const DriverLibrary &library, const std::string &text, Access access, qint32 unit)
{
    std::string address;
    Item item = splitItem(text, address);
    item.count *= unit;
    const QList<QString> fields = describe(library, text, item);
    const std::string oneDigit = item.isBit ? withOneDigit(address) : "";
    const qint32 result = checkAddress(library, address, access, item);
    switch (result) {
    case CHECK_VALID:
        return item;
    case CHECK_OUT_OF_RANGE:
        throw UsageError("'" + text + "' lies outside the range " + rangeText(fields, item));
    case CHECK_MALFORMED:
        if (item.notation == Notation::MANUAL) // a bit above 15, or a number too long
            throw UsageError("'" + text + "' lies outside the range " + rangeText(fields, item));
        if (!oneDigit.empty())
            throw UsageError("'" + text + "': bits 0 to 9 have one digit; write " + oneDigit);
        throw UsageError("'" + text + "': the address is malformed; the range is " + rangeText(fields, item));
    case CHECK_NOT_WRITABLE:
        throw UsageError("'" + text + "': this register type cannot be written");
    default:
        throw UsageError("'" + text + "': the driver refuses the address with code " + std::to_string(result));
    }
}

// The item as bits of its word type: first and one past the last.
static std::tuple<QString, long, long> bitSpan(const Item &item)
{
    const long unit = item.isBit ? 1 : 16;
    return std::make_tuple(item.wordType(), item.address * unit, (item.address + static_cast<long>(item.count)) * unit);
}

bool shareWord(const Item &a, const Item &b)
{
    return a.wordType() == b.wordType() && a.firstWord() < b.endWord() && b.firstWord() < a.endWord();
}

void refuseOverlaps(const std::vector<Item> &items)
{
    std::vector<Item> sorted = items;
    std::sort(sorted.begin(), sorted.end(), [](const Item &a, const Item &b) { return bitSpan(a) < bitSpan(b); });
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const auto before = bitSpan(sorted[i - 1]);
        const auto after  = bitSpan(sorted[i]);
        if (std::get<0>(before) == std::get<0>(after) && std::get<1>(after) < std::get<2>(before))
            throw UsageError(itemText(sorted[i - 1]) + " and " + itemText(sorted[i])
                             + " overlap; name every word and bit once");
    }
}

std::vector<Item> cutItem(const Item &item, qint32 limit)
{
    std::vector<Item> pieces;
    for (qint32 done = 0; done < item.count; done += limit) {
        Item piece = item;
        piece.address = item.address + done;
        piece.count   = std::min(limit, item.count - done);
        pieces.push_back(piece);
    }
    return pieces;
}

Item wordsOf(const Item &item, qint32 first, qint32 end)
{
    const qint32 unit = item.isBit ? 16 : 1;
    const qint32 from = std::max(item.address, first * unit);
    const qint32 to   = std::min(item.address + item.count, end * unit);
    return {item.regType, from, to - from, item.isBit, item.notation};
}

std::string addressText(const QString &regType, qint32 address)
{
    std::string text = regType.toStdString() + ":";
    if (!isBitType(regType))
        return text + std::to_string(address);
    return text + std::to_string(address / 16) + "." + std::to_string(address % 16);
}

std::string itemText(const QString &regType, qint32 address, qint32 count)
{
    return addressText(regType, address) + (count == 1 ? std::string() : ":" + std::to_string(count));
}

std::string driverText(const Item &item)
{
    return itemText(item.regType, item.address, item.count);
}

std::string itemText(const Item &item)
{
    const std::string text = driverText(item);
    return item.notation == Notation::MANUAL ? manualItem(text) : text;
}
