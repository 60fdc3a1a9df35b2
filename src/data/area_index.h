#ifndef DATA_AREA_INDEX_H
#define DATA_AREA_INDEX_H

#include "omron_fins_ethernet.h"

// A hash table beside the data image that finds a record without a walk through the list.

/// Position in `areas` of the first record with the three keys, or -1.
qint32 findArea(qint32 requestTag, const QString &regType, qint32 address, QList<_DATA_> &areas);

/// The same for up to `count` consecutive addresses, until one has no record. Returns how many were found.
int findAreas(qint32 requestTag, const QString &regType, qint32 address, int count, QList<_DATA_> &areas,
              qint32 *positions);

#endif
