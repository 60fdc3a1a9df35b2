#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/area_walk.h"

// The panel's reads, answered from the data image.

static void readWords(qint32 requestTag, const QString &regType, qint32 address, qint32 count, quint8 *out)
{
    AreaWalk walk(requestTag, regType);
    for (qint32 i = 0; i < count; ++i) {
        const quint8 *word = shownValue(walk.to(wrapAdd(address, i)));
        *out++ = word[0];
        *out++ = word[1];
    }
}

static void readBits(qint32 requestTag, const QString &wordType, qint32 address, qint32 count, quint8 *out)
{
    qint32 index = -1;
    for (qint32 i = 0; i < count; ++i) {
        const qint32 at = wrapAdd(address, i);
        index = getIndexOfBit(requestTag, wordType, at, index);
        const quint8 *word = shownValue(driver.dataAreas.at(index));
        const qint32 bit = at % 16;
        out[i] = bit >= 0 && (word[bit / 8] >> (bit % 8) & 1) != 0 ? 1 : 0;
    }
}

qint32 intf_getData(qint32 requestTag, QString regType, qint32 address, qint32 count, quint8 *out)
{
    if (isBitType(regType))
        readBits(requestTag, wordTypeOf(regType), address, count, out);
    else
        readWords(requestTag, sharedName(regType), address, count, out);
    return 1;
}
