#ifndef DATA_AREA_INDEX_H
#define DATA_AREA_INDEX_H

#include "address/register_table.h"

// A hash table beside the data image that finds a record without a walk through the list.

/// Position in `areas` of the first record with the three keys, or -1.
qint32 findArea(qint32 requestTag, const QString &regType, qint32 address, QList<_DATA_> &areas);

/// Enters the records that the table lacks. `areas` must not be empty.
void enterAreas(QList<_DATA_> &areas);

/// Per entered record the position of the record of the next address, or its own if there was none. A hint only: the
/// record there is to be compared. Valid until records are entered; a look-up enters all that are there.
const qint32 *nextAreas();

/// Whether the record has the three keys. Inline, because every word of every reply asks.
inline bool hasKeys(const _DATA_ &area, qint32 requestTag, const QString &regType, qint32 address)
{
    return area.address == address && area.requestTag == requestTag && sameName(area.regType, regType);
}

#endif
