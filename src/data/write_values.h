#ifndef DATA_WRITE_VALUES_H
#define DATA_WRITE_VALUES_H

#include "omron_fins_ethernet.h"

// Queueing of requests, and the data image's side of a write.

/// Puts `request` into `queue`. It replaces the entry nearest the end that has the same requestTag, regType, address
/// and count, the head excepted; with 513 entries and no such entry it replaces the last; else it is appended.
void putIntoQueue(QList<VARIABLE> &queue, const VARIABLE &request);

/// Whether two requests have the same requestTag, regType, address and count.
bool sameVariable(const VARIABLE &a, const VARIABLE &b);

/// Stores written values into the data image as pending and reports the changes. `data` holds 2 * count bytes for words,
/// low byte first, or count bytes for bits (1 sets, any other value clears).
void write_saveDataToArea(qint32 requestTag, QString regType, qint32 address, qint32 count, const quint8 *data);

#endif
