#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/data_image.h"

// The panel's reads, answered from the data image.

static void readWords(qint32 requestTag, const QString &regType, qint32 address, qint32 count, quint8 *out)
{
    for (qint32 i = 0; i < count; ++i) {
        const qint32 index = getIndexOfDataArea(requestTag, regType, wrapAdd(address, i), driver.dataAreas);
        const quint8 *word = shownValue(driver.dataAreas.at(index));
        *out++ = word[0];
        *out++ = word[1];
    }
}

static void readBits(qint32 requestTag, const QString &wordType, qint32 address, qint32 count, quint8 *out)
{
    for (qint32 i = 0; i < count; ++i) {
        const qint32 bitAddress = wrapAdd(address, i);
        const qint32 bit = bitAddress % 16;
        const qint32 index = getIndexOfDataArea(requestTag, wordType, bitAddress / 16, driver.dataAreas);
        const quint8 *word = shownValue(driver.dataAreas.at(index));
        out[i] = bit >= 0 && (word[bit / 8] >> (bit % 8) & 1) != 0 ? 1 : 0;
    }
}

qint32 intf_getData(qint32 requestTag, QString regType, qint32 address, qint32 count, quint8 *out)
{
    if (isBitType(regType))
        readBits(requestTag, wordTypeOf(regType), address, count, out);
    else
        readWords(requestTag, regType, address, count, out);
    return 1;
}
