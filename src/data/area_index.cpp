#include "data/area_index.h"

#include "address/wrapping.h"

#include <vector>

// The list of records is the only authority; the table holds nothing but positions in it, and every hit is compared
// with the record itself. Records that were appended since the last look-up are entered first, so the earliest of equal
// records is found. A list that was cleared and filled again, by whomever, is recognised by its first record: that one's
// type name is a copy in memory of its own, which the table keeps alive, so no other record can have it. Then, as after
// the list became shorter, the table is built anew. Beside the table stands for each record where that of the next
// address is, so that runs of addresses need one look-up; these hits are compared with the records, too.

namespace {

const QList<_DATA_> *enteredList;   // the list that the table is of
QString              firstTypeName; // shares the memory of the first record's type name
qint32               enteredCount;  // records entered, from the front of the list
std::vector<qint32>  places;        // position + 1, or 0 for a free place; the size is a power of two
std::vector<qint32>  successors;    // per entered record: position of that of the next address, or its own

} // namespace

/// A number that tells the word types apart by their length and first letter.
static quint32 typeNumber(const QString &regType)
{
    const quint32 letter = regType.isEmpty() ? 0 : regType.constData()->unicode();
    return letter + 0x100u * static_cast<quint32>(regType.size());
}

/// The place of the record with these keys: the one that holds it, or the free one where it belongs.
static size_t placeOf(qint32 requestTag, const QString &regType, qint32 address, const QList<_DATA_> &areas)
{
    const quint32 key = static_cast<quint32>(address) + 0x85EBCA6Bu * static_cast<quint32>(requestTag)
                      + 0x27D4EB2Fu * typeNumber(regType);
    const quint32 hash = 0x9E3779B1u * key;

    const size_t mask = places.size() - 1;
    size_t place = (hash ^ hash >> 15) & mask;
    while (places[place] != 0 && !hasKeys(areas.at(places[place] - 1), requestTag, regType, address))
        place = (place + 1) & mask;
    return place;
}

static qint32 positionOf(qint32 requestTag, const QString &regType, qint32 address, const QList<_DATA_> &areas)
{
    return places[placeOf(requestTag, regType, address, areas)] - 1;
}

static void enter(const QList<_DATA_> &areas, qint32 position)
{
    successors.push_back(position);
    const _DATA_ &area = areas.at(position);
    qint32 &place = places[placeOf(area.requestTag, area.regType, area.address, areas)];
    if (place != 0)
        return;

    place = position + 1;
    const qint32 next = positionOf(area.requestTag, area.regType, wrapAdd(area.address, 1), areas);
    if (next >= 0)
        successors[static_cast<size_t>(position)] = next;
    const qint32 previous = positionOf(area.requestTag, area.regType, wrapSub(area.address, 1), areas);
    if (previous >= 0)
        successors[static_cast<size_t>(previous)] = position;
}

/// Empties the table, gives it room for `count` records, at most half full, and marks the first record.
static void restart(QList<_DATA_> &areas, size_t count)
{
    size_t room = 64;
    while (room < 2 * count)
        room *= 2;
    places.assign(room, 0);
    successors.clear();
    enteredList = &areas;
    enteredCount = 0;

    QString ownCopy;
    ownCopy.reserve(areas.at(0).regType.size() + 1);
    ownCopy += areas.at(0).regType;
    areas[0].regType = ownCopy;
    firstTypeName = ownCopy;
}

/// Whether the entered records are still those at the front of `areas`, which must not be empty.
static bool isKnown(const QList<_DATA_> &areas)
{
    return enteredList == &areas && enteredCount <= areas.size()
        && areas.at(0).regType.constData() == firstTypeName.constData();
}

void enterAreas(QList<_DATA_> &areas)
{
    const size_t count = static_cast<size_t>(areas.size());
    if (!isKnown(areas) || 2 * count > places.size())
        restart(areas, count);
    for (; enteredCount < areas.size(); ++enteredCount)
        enter(areas, enteredCount);
}

qint32 findArea(qint32 requestTag, const QString &regType, qint32 address, QList<_DATA_> &areas)
{
    if (areas.isEmpty())
        return -1;
    if (enteredCount != areas.size() || !isKnown(areas))
        enterAreas(areas);
    return positionOf(requestTag, regType, address, areas);
}

const qint32 *nextAreas()
{
    return successors.data();
}
