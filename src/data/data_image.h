#ifndef DATA_DATA_IMAGE_H
#define DATA_DATA_IMAGE_H

#include "omron_fins_ethernet.h"

// The data image: one record per PLC word, in creation order. Records are added on first contact and never removed
// while the driver runs, so indexes stay valid; references do not, since a callback may add records.

/// Index in `areas` of the first record with the three keys. A missing record is appended, all zero but its keys.
/// `regType` is a word type.
qint32 getIndexOfDataArea(qint32 requestTag, QString regType, qint32 address, QList<_DATA_> &areas);

/// The same, without a copy of the name.
qint32 findOrAppendArea(qint32 requestTag, const QString &regType, qint32 address, QList<_DATA_> &areas);

/// Index in the driver's image of the record that holds the bit at `bitAddress`, appended if it is missing. In a run of
/// bits `previous` is the index of the last one's record, which often holds the next bit, too; else -1.
qint32 getIndexOfBit(qint32 requestTag, const QString &wordType, qint32 bitAddress, qint32 previous);

/// The two bytes that the panel sees of a record: the written value until its write has ended, else the PLC's.
const quint8 *shownValue(const _DATA_ &area);

/// The word in two bytes, low byte first; 0 to 0xFFFF.
inline qint32 wordOf(const quint8 *bytes)
{
    return static_cast<quint16>(bytes[0] | bytes[1] << 8);
}

/// Reports the change of one word from `currentValue` to `newValue` (0 to 0xFFFF): each watched bit that differs, lowest
/// first, then the word if it is watched. Equal values report nothing. `wordOnly` nonzero leaves the bits out. Creates
/// the word's record if it is missing, and changes nothing else.
void _wordDataChange(const qint32 *currentValue, const qint32 *newValue, qint32 requestTag, QString regType,
                     qint32 address, qint32 wordOnly);

/// What the reports of one run of words have in common. `bitType` is empty until it is needed.
struct ReportKeys {
    qint32  requestTag;
    QString regType;
    QString bitType;
};

/// Reports the change of the word at `address`, whose record is at `index`, like _wordDataChange with its bits. Returns
/// the record, which a callback may have moved by adding others.
_DATA_ &reportChange(qint32 index, qint32 before, qint32 after, ReportKeys &keys, qint32 address);

/// Reports each watched bit among bits 0 to 7 that differs between two bytes, under `regType` unchanged and
/// `address` + bit.
void _byteDataChange(const quint8 *currentByte, const quint8 *newByte, qint32 requestTag, QString regType,
                     qint32 address);

#endif
