#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/write_values.h"

// Reads on demand.

static void queuePiece(const KEY_ADDRESS &item, qint32 address, qint32 count, qint32 requestId)
{
    VARIABLE request = VARIABLE();
    request.requestId  = requestId;
    request.requestTag = item.requestTag;
    request.regType    = item.regType;
    request.address    = address;
    request.count      = count;
    if (isBitType(item.regType)) {
        request.regType = wordTypeOf(item.regType);
        request.address = address / 16;
        // Deliberate: the first bit's position is not added, so a run across a word boundary may lack its last word.
        request.count = count % 16 == 0 ? count / 16 : count / 16 + 1;
    }
    putIntoQueue(driver.conditionReadList, request);
    driver.currentRead = request;
}

qint32 intf_addConditionRead(KEY_ADDRESS &item, qint32 requestId)
{
    const qint32 limit = item.dataKind == -1 ? driver.maxBitsPerFrame : driver.wordsPerFrame;
    if (item.count < 1 || item.count <= limit || limit == 0) {
        queuePiece(item, item.address, item.count, requestId);
        return 1;
    }

    const qint32 rest = item.count % limit;
    const qint32 pieces = item.count / limit + (rest != 0 ? 1 : 0);
    for (qint32 k = 0; k < pieces; ++k) {
        const qint32 count = k == pieces - 1 && rest != 0 ? rest : limit;
        queuePiece(item, wrapAdd(item.address, k * limit), count, requestId);
    }
    return 1;
}
