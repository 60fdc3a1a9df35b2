#include "poll/poll_list.h"

#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/data_image.h"
#include "poll/address_merge.h"

// The set of watched addresses: marks in the data image, and the cyclic read plan.

/// The requestId of every cyclic poll entry.
enum { POLL_REQUEST_ID = 4 };

qint32 _setDataAreaMonitorFlag(qint32 requestTag, QString regType, qint32 address, qint32 count)
{
    const bool bits = isBitType(regType);
    const QString wordType = bits ? wordTypeOf(regType) : regType;
    for (qint32 i = 0; i < count; ++i) {
        const qint32 at = wrapAdd(address, i);
        const qint32 index = getIndexOfDataArea(requestTag, wordType, bits ? at / 16 : at, driver.dataAreas);
        _DATA_ &area = driver.dataAreas[index];
        if (bits)
            area.bitMonitor = _setBitValue(area.bitMonitor, at % 16, 1);
        else
            area.wordMonitor = _setBitValue(area.wordMonitor, 0, 1);
    }
    return 0;
}

static void clearMonitorFlags()
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        driver.dataAreas[i].wordMonitor = 0;
        driver.dataAreas[i].bitMonitor = 0;
    }
}

qint32 intf_addrMerge(QList<KEY_ADDRESS> &addresses)
{
    clearMonitorFlags();
    for (int i = 0; i < addresses.size(); ++i) {
        const KEY_ADDRESS &item = addresses.at(i);
        _setDataAreaMonitorFlag(item.requestTag, item.regType, item.address, item.count);
    }

    driver.readList.clear();
    addrMerge(addresses, MERGE_POLL);
    QString regType; // the runtime's own, once for the blocks of a type, which follow each other
    for (int i = 0; i < addresses.size(); ++i) {
        const KEY_ADDRESS &block = addresses.at(i);
        if (!sameName(regType, block.regType))
            regType = block.regType;
        VARIABLE read = VARIABLE();
        read.requestId  = POLL_REQUEST_ID;
        read.requestTag = block.requestTag;
        read.regType    = regType;
        read.address    = block.address;
        read.count      = block.count;
        driver.readList.append(read);
    }
    return static_cast<qint32>(driver.readList.size());
}
