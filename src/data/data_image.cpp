#include "data/data_image.h"

#include "address/register_table.h"
#include "address/wrapping.h"

qint32 getIndexOfDataArea(qint32 requestTag, QString regType, qint32 address, QList<_DATA_> &areas)
{
    const qint32 count = static_cast<qint32>(areas.size());
    for (qint32 i = 0; i < count; ++i) {
        const _DATA_ &area = areas.at(i);
        if (area.address == address && area.requestTag == requestTag && area.regType == regType)
            return i;
    }

    _DATA_ area = _DATA_();
    area.requestTag = requestTag;
    area.regType = regType;
    area.address = address;
    areas.append(area);
    return count;
}

const quint8 *shownValue(const _DATA_ &area)
{
    return area.writePending != 0 ? area.writeValue : area.plcValue;
}

qint32 wordOf(const quint8 *bytes)
{
    return bytes[0] + 256 * bytes[1];
}

void _wordDataChange(const qint32 *currentValue, const qint32 *newValue, qint32 requestTag, QString regType,
                     qint32 address, qint32 wordOnly)
{
    const qint32 index = getIndexOfDataArea(requestTag, regType, address, driver.dataAreas);
    if (*currentValue == *newValue)
        return;

    // Each mask is read when it is due: a callback may have added records.
    const quint32 changed = static_cast<quint32>(*currentValue ^ *newValue);
    for (int bit = 0; wordOnly == 0 && bit < 16; ++bit) {
        const quint32 watched = static_cast<quint32>(driver.dataAreas.at(index).bitMonitor);
        if ((changed & watched & (1u << bit)) != 0) {
            driver.valueChangeCallback(driver.stationNo, requestTag, regType + QLatin1String("_bit"),
                                       wrapAdd(wrapMul(address, 16), bit));
        }
    }
    // Deliberate: the remainder keeps the sign, so a negative mark never reports.
    if (driver.dataAreas.at(index).wordMonitor % 2 == 1)
        driver.valueChangeCallback(driver.stationNo, requestTag, regType, address);
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
