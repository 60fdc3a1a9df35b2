#include "address/register_table.h"
#include "address/wrapping.h"

#include <QtCore/QStringList>

// Series of addresses for the copies of one variable.

/// Result codes of intf_multiCopy.
enum CopyResult {
    COPY_UNKNOWN_TYPE = 0,
    COPY_COMPLETE     = 1,
    COPY_LIMITED      = 2
};

static qint32 normaliseStep(qint32 step, bool bitType)
{
    if (step == -2)
        return bitType ? 1 : 2;
    return step < 1 ? 1 : step;
}

/// Deliberate: numbers are shown unsigned, so a negative one appears as its 32-bit two's complement.
static QString unsignedText(qint32 number)
{
    return QString::number(static_cast<quint32>(number));
}

static QString addressText(qint32 address, bool bitType)
{
    if (!bitType)
        return unsignedText(address);
    return unsignedText(address / 16) + QLatin1Char('.') + unsignedText(address % 16);
}

// Deliberate: the minimum is never consulted, and only the maximum limits.
qint32 intf_multiCopy(QString regType, qint32 start, qint32 copies, qint32 step, QVector<QString> &texts,
                      QVector<qint32> &addresses)
{
    const int index = findRegister(regType);
    if (index < 0)
        return COPY_UNKNOWN_TYPE;

    const QStringList range = ADDRESS_RANGE_FINS[index].split(QLatin1Char(','));
    const bool bitType = range.at(RANGE_KIND) == QLatin1String("0");
    const QString &maximumText = range.at(RANGE_MAXIMUM);
    qint32 maximum = 0;
    if (bitType)
        a2i_ddd_DD(maximumText, maximum);
    else
        maximum = maximumText.toInt();

    const qint32 distance = normaliseStep(step, isBitType(regType));
    qint32 result = COPY_COMPLETE;
    for (qint32 i = 0; i < copies; ++i) {
        const qint32 address = wrapAdd(start, wrapMul(i, distance));
        const bool limited = address > maximum;
        addresses.append(limited ? maximum : address);
        texts.append(limited ? maximumText : addressText(address, bitType));
        if (limited)
            result = COPY_LIMITED;
    }
    return result;
}
