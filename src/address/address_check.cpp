#include "address/register_table.h"
#include "address/wrapping.h"

#include <QtCore/QStringList>

// Checks of the addresses that a user types.

/// Result codes of the two checks.
enum CheckResult {
    CHECK_VALID        = 0,
    CHECK_WRONG_KIND   = 1,
    CHECK_OUT_OF_RANGE = 2,
    CHECK_MALFORMED    = 4,
    CHECK_NOT_WRITABLE = 6
};

/// Deliberate: only the end of the run is compared with the maximum, so with `count` 0 the address one past it is valid.
static qint32 checkRange(qint32 address, qint32 count, qint32 minimum, qint32 maximum)
{
    if (address < minimum || wrapAdd(address, count) > maximum + 1)
        return CHECK_OUT_OF_RANGE;
    return CHECK_VALID;
}

static qint32 checkBitAddress(const QStringList &range, const QString &addrText, qint32 *address, qint32 count)
{
    if (a2i_ddd_DD(addrText, *address) != 1)
        return CHECK_MALFORMED;

    qint32 minimum = 0;
    qint32 maximum = 0;
    a2i_ddd_DD(range.at(RANGE_MINIMUM), minimum);
    a2i_ddd_DD(range.at(RANGE_MAXIMUM), maximum);
    return checkRange(*address, count, minimum, maximum);
}

static qint32 checkWordAddress(const QStringList &range, const QString &addrText, qint32 *address, qint32 count)
{
    bool ok = false;
    *address = addrText.toInt(&ok);
    if (!ok)
        return CHECK_MALFORMED;
    return checkRange(*address, count, range.at(RANGE_MINIMUM).toInt(), range.at(RANGE_MAXIMUM).toInt());
}

static qint32 checkAddress(const QStringList &range, const QString &addrText, qint32 *address, qint32 count,
                           bool wordVariable)
{
    const bool wordType = range.at(RANGE_KIND) != QLatin1String("0");
    if (wordVariable != wordType)
        return CHECK_WRONG_KIND;
    return wordType ? checkWordAddress(range, addrText, address, count)
                    : checkBitAddress(range, addrText, address, count);
}

qint32 intf_checkAddrValidity(QString regType, QString addrText, qint32 *address, qint32 count, qint32 wordAccess)
{
    // Deliberate: an unknown register type passes, in both checks.
    const int i = findRegister(regType);
    if (i < 0)
        return CHECK_VALID;
    return checkAddress(ADDRESS_RANGE_FINS[i].split(QLatin1Char(',')), addrText, address, count, wordAccess != 0);
}

qint32 intf_checkAddr(QString regType, QString addrText, qint32 *address, qint32 dataKind, qint32 count, qint32 mode)
{
    const int i = findRegister(regType);
    if (i < 0)
        return CHECK_VALID;

    const QStringList range = ADDRESS_RANGE_FINS[i].split(QLatin1Char(','));
    if (range.at(RANGE_WRITABLE) == QLatin1String("0") && (mode == 1 || mode == 2))
        return CHECK_NOT_WRITABLE;
    return checkAddress(range, addrText, address, count, dataKind != -1);
}
