#ifndef ADDRESS_REGISTER_TABLE_H
#define ADDRESS_REGISTER_TABLE_H

#include "omron_fins_ethernet.h"

#include <algorithm>

// The register types: their names, FINS memory-area codes, notations and ranges, and what a name or an address text
// means.

/// Number of register types. The range table has one row more, which has no name and is never reached.
enum { REG_COUNT = 12 };

extern QString       REG_LIST[REG_COUNT];
extern const qint32  AREA_CODE_CS_CJ[REG_COUNT];
extern QString       ADDRESS_RANGE_FINS[REG_COUNT + 1];

/// The five comma-separated fields of a range string.
enum RangeField {
    RANGE_NOTATION = 0, // d a decimal digit, DD the bit number
    RANGE_MINIMUM  = 1, // lowest address, in the notation
    RANGE_MAXIMUM  = 2, // highest address, in the notation
    RANGE_KIND     = 3, // "0" bits, "1" words
    RANGE_WRITABLE = 4, // "1" writable
    RANGE_FIELDS   = 5
};

/// Whether two names are equal. Inline, because every word of every reply asks: names in the same memory need no look
/// at their letters, and the letters of short names no call.
inline bool sameName(const QString &a, const QString &b)
{
    return a.isSharedWith(b)
        || (a.size() == b.size() && std::equal(a.constData(), a.constData() + a.size(), b.constData()));
}

/// Assigns a name. Nearly always `to` has that very memory already; then no references need counting.
inline void setName(QString &to, const QString &from)
{
    if (!to.isSharedWith(from))
        to = from;
}

/// Index of `regType` in the tables, or -1.
int findRegister(const QString &regType);

/// `regType`, in the table's memory where it is one of the names, so that thousands of records share it. Any other name
/// is returned itself, and lives as long as the argument.
const QString &sharedName(const QString &regType);

/// Whether `regType` ends in "_bit".
bool isBitType(const QString &regType);

/// The part of `regType` before its first "_": the word type that holds the bits of a bit type.
QString wordTypeOf(const QString &regType);

/// `wordType` followed by "_bit", in the table's memory where it is one of the names.
QString bitTypeOf(const QString &wordType);

/// Parses the bit address text "word.bit" into word * 16 + bit. A bit below 10 has one digit. The word has no range
/// here. Returns 1, or -1 for a malformed text, which leaves `bitAddress` as it was.
qint32 a2i_ddd_DD(QString text, qint32 &bitAddress);

/// Sorting key that keeps register types together, in table order: (index + 1) * 65535 + address, or the bare address
/// of an unknown type. To be compared unsigned. The third argument is ignored.
qint32 getRegAddressWeight(QString regType, qint32 address, qint32);

/// `value` with bit number `bit` set (`on` nonzero) or cleared (`on` 0); unchanged for a bit outside 0 to 31.
qint32 _setBitValue(qint32 value, qint32 bit, qint32 on);

#endif
