#include "data/data_image.h"

#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/area_index.h"

/// Appends a record, all zero but its keys, and returns its index.
static qint32 appendArea(qint32 requestTag, const QString &regType, qint32 address, QList<_DATA_> &areas)
{
    _DATA_ area = _DATA_();
    area.requestTag = requestTag;
    area.regType = sharedName(regType);
    area.address = address;
    areas.append(area);
    return static_cast<qint32>(areas.size()) - 1;
}

qint32 findOrAppendArea(qint32 requestTag, const QString &regType, qint32 address, QList<_DATA_> &areas)
{
    const qint32 found = findArea(requestTag, regType, address, areas);
    return found >= 0 ? found : appendArea(requestTag, regType, address, areas);
}

qint32 getIndexOfDataArea(qint32 requestTag, QString regType, qint32 address, QList<_DATA_> &areas)
{
    return findOrAppendArea(requestTag, regType, address, areas);
}

qint32 getIndexOfBit(qint32 requestTag, const QString &wordType, qint32 bitAddress, qint32 previous)
{
    const qint32 word = bitAddress / 16;
    if (previous >= 0 && driver.dataAreas.at(previous).address == word)
        return previous;
    return getIndexOfDataArea(requestTag, wordType, word, driver.dataAreas);
}

const quint8 *shownValue(const _DATA_ &area)
{
    return area.writePending != 0 ? area.writeValue : area.plcValue;
}

static void reportBits(quint32 bits, ReportKeys &keys, qint32 address)
{
    if (keys.bitType.isEmpty())
        keys.bitType = bitTypeOf(keys.regType);
    const ValueChangeCallback report = driver.valueChangeCallback;
    for (qint32 bitAddress = wrapMul(address, 16); bits != 0; bits >>= 1, bitAddress = wrapAdd(bitAddress, 1)) {
        if ((bits & 1) != 0)
            report(driver.stationNo, keys.requestTag, keys.bitType, bitAddress);
    }
}

/// Deliberate: a negative mark never reports, whatever its bits.
static bool isWordWatched(const _DATA_ &area)
{
    return area.wordMonitor > 0 && (area.wordMonitor & 1) != 0;
}

static void reportWord(const ReportKeys &keys, qint32 address)
{
    driver.valueChangeCallback(driver.stationNo, keys.requestTag, keys.regType, address);
}

_DATA_ &reportChange(qint32 index, qint32 before, qint32 after, ReportKeys &keys, qint32 address)
{
    if (before != after) {
        const _DATA_ &area = driver.dataAreas.at(index);
        const quint32 changed = static_cast<quint32>(before ^ after);
        const quint32 bits = changed & static_cast<quint32>(area.bitMonitor) & 0xFFFF;
        const bool wordWatched = isWordWatched(area);
        if (bits != 0)
            reportBits(bits, keys, address);
        if (wordWatched)
            reportWord(keys, address);
    }
    return driver.dataAreas[index];
}

void _wordDataChange(const qint32 *currentValue, const qint32 *newValue, qint32 requestTag, QString regType,
                     qint32 address, qint32 wordOnly)
{
    const qint32 index = getIndexOfDataArea(requestTag, regType, address, driver.dataAreas);
    ReportKeys keys = { requestTag, regType, QString() };
    if (wordOnly == 0)
        reportChange(index, *currentValue, *newValue, keys, address);
    else if (*currentValue != *newValue && isWordWatched(driver.dataAreas.at(index)))
        reportWord(keys, address);
}

// Deliberate: unlike _wordDataChange it reports no word, adds no suffix and does not multiply the address.
void _byteDataChange(const quint8 *currentByte, const quint8 *newByte, qint32 requestTag, QString regType,
                     qint32 address)
{
    const qint32 index = getIndexOfDataArea(requestTag, regType, address, driver.dataAreas);
    const quint32 changed = static_cast<quint32>(*currentByte ^ *newByte);
    for (int bit = 0; bit < 8; ++bit) {
        const quint32 watched = static_cast<quint32>(driver.dataAreas.at(index).bitMonitor);
        if ((changed & watched & (1u << bit)) != 0)
            driver.valueChangeCallback(driver.stationNo, requestTag, regType, wrapAdd(address, bit));
    }
}
