#include "fins/receive.h"

#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/data_image.h"
#include "data/write_completion.h"
#include "fins/frame_builder.h"
#include "fins/reply_check.h"

/// Result codes of intf_dealRcvFrame.
enum ReceiveResult {
    RECEIVE_IGNORED      = 0,
    RECEIVE_ACCEPTED     = 1,
    RECEIVE_LINK_DROPPED = 2,
    RECEIVE_REJECTED     = 8
};

/// A reply with data, and what the request that it answers says about them.
struct DataReply {
    QByteArray &bytes;
    qint32      dataPos;
    qint32      wordCount;
    qint32      requestTag;
    QString     regType;
    qint32      address;
    qint32      count;
};

static qint32 sizeOf(const QByteArray &bytes)
{
    return static_cast<qint32>(bytes.size());
}

/// Byte `offset` of the data; 0 outside the reply.
static quint8 dataByte(const DataReply &reply, qint32 offset)
{
    return get8(reinterpret_cast<const quint8 *>(reply.bytes.constData()), sizeOf(reply.bytes),
                wrapAdd(reply.dataPos, offset));
}

/// Stores into byte `offset` of the data; nothing outside the reply.
static void setDataByte(const DataReply &reply, qint32 offset, quint8 value)
{
    const qint32 at = wrapAdd(reply.dataPos, offset);
    if (at >= 0 && at < sizeOf(reply.bytes))
        reply.bytes.data()[at] = static_cast<char>(value);
}

/// Stores one received word into the data image; a change is reported first.
static void storeWord(const DataReply &reply, qint32 i)
{
    const quint8 high = dataByte(reply, wrapMul(2, i));
    const quint8 low = dataByte(reply, wrapAdd(wrapMul(2, i), 1));
    const qint32 address = wrapAdd(reply.address, i);
    const qint32 index = getIndexOfDataArea(reply.requestTag, reply.regType, address, driver.dataAreas);

    _DATA_ &area = driver.dataAreas[index];
    area.rcvFlag = 0;
    if (area.plcValue[0] == low && area.plcValue[1] == high)
        return;

    area.writePending = 0;
    const qint32 before = area.plcValue[0] + 256 * area.plcValue[1];
    const qint32 after = low + 256 * high;
    _wordDataChange(&before, &after, reply.requestTag, reply.regType, address, 0);

    // The callback may have added records, so the record is looked at anew.
    driver.dataAreas[index].plcValue[0] = low;
    driver.dataAreas[index].plcValue[1] = high;
}

/// Stores the words of one recipe variable into the recipe buffer, and reports each. The variable's data begin at byte
/// `offset` of the reply's data.
static void storeRecipeVariable(const DataReply &reply, const _RCP_VAR_PRO &variable, qint32 offset)
{
    for (qint32 j = 0; j < variable.count; ++j) {
        const qint32 at = wrapAdd(offset, wrapMul(2, j));
        const qint32 index = wrapAdd(variable.bufferOffset, j);
        quint8 *word = reinterpret_cast<quint8 *>(driver.recipeBuffer + index);
        word[0] = dataByte(reply, wrapAdd(at, 1));
        word[1] = dataByte(reply, at);
        driver.valueChangeCallback(0, -1, QLatin1String("RWI"), index);
    }
}

/// Stores the variables of the recipe block in transfer. The plan may have changed since the request was built, so a
/// block that it no longer has is a block without variables.
static void storeRecipeBlock(const DataReply &reply)
{
    const qint32 block = driver.recipeIndex;
    const qint32 blockCount = static_cast<qint32>(driver.recipeBlockStart.size());
    if (block < 0 || block >= blockCount || driver.recipeBuffer == nullptr)
        return;

    const qint32 first = driver.recipeBlockStart.at(block);
    const qint32 end = block + 1 < blockCount ? driver.recipeBlockStart.at(block + 1)
                                              : static_cast<qint32>(driver.recipeVars.size());
    for (qint32 k = first; k < end; ++k) {
        const _RCP_VAR_PRO variable = driver.recipeVars.at(k);
        const qint32 words = wrapSub(variable.address, driver.recipeVars.at(first).address);
        storeRecipeVariable(reply, variable, wrapMul(2, words));
    }
}

/// CRC-16 of Modbus RTU.
static quint16 crc16(const quint8 *bytes, qint32 count)
{
    quint32 crc = 0xFFFF;
    for (qint32 i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
    }
    return static_cast<quint16>(crc);
}

/// Merges the bits of the head's value into the words just read.
static void mergeWrittenBits(const DataReply &reply, const quint8 *bits)
{
    for (qint32 i = 0; i < reply.wordCount; ++i) {
        const quint8 high = dataByte(reply, wrapMul(2, i));
        setDataByte(reply, wrapMul(2, i), dataByte(reply, wrapAdd(wrapMul(2, i), 1)));
        setDataByte(reply, wrapAdd(wrapMul(2, i), 1), high);
    }
    for (qint32 i = 0; i < qMin<qint32>(reply.count, VALUE_BUFFER_SIZE); ++i) {
        const qint32 b = reply.address % 16 + i;
        setDataByte(reply, b / 8, static_cast<quint8>(_setBitValue(dataByte(reply, b / 8), b % 8, bits[i])));
    }
}

/// Puts the merged words into a prepared write, and its two-byte CRC behind them. The frame ends at its buffer's end.
static void completePreparedWrite(const DataReply &reply, FRAME_PRO &write)
{
    enum { DATA = 7, CRC_SIZE = 2 };
    const qint32 pairs = wrapSub(write.sendLen, DATA + CRC_SIZE) / 2;
    for (qint32 k = 0; k < qMin<qint32>(wrapMul(2, pairs), VALUE_BUFFER_SIZE - DATA); ++k)
        write.frame[DATA + k] = dataByte(reply, k ^ 1); // the bytes of each word change places
    if (write.sendLen < CRC_SIZE || write.sendLen > VALUE_BUFFER_SIZE)
        return;
    const quint16 crc = crc16(write.frame, write.sendLen - CRC_SIZE);
    write.frame[write.sendLen - 2] = static_cast<quint8>(crc & 0xFF);
    write.frame[write.sendLen - 1] = static_cast<quint8>(crc >> 8);
}

/// Deliberate: serves a read followed by a prepared write of the same words. No builder queues such a pair, since a
/// write is sent as it is.
static void readModifyWrite(const DataReply &reply)
{
    const qint32 index = getIndexOfDataArea(reply.requestTag, wordTypeOf(reply.regType), reply.address / 16,
                                            driver.dataAreas);
    driver.dataAreas[index].rcvFlag = 0;
    mergeWrittenBits(reply, driver.frameList.at(0).value);
    if (driver.frameList.size() > 1)
        completePreparedWrite(reply, driver.frameList[1]);
}

static void storeData(const DataReply &reply)
{
    if (driver.jobType == JOB_WRITE) {
        readModifyWrite(reply);
        return;
    }
    for (qint32 i = 0; i < reply.wordCount; ++i)
        storeWord(reply, i);
    if (driver.jobType == JOB_RECIPE_READ)
        storeRecipeBlock(reply);
}

static qint32 countRejected()
{
    driver.errCount = wrapAdd(driver.errCount, 1);
    if (driver.errCount < driver.retryLimit)
        return RECEIVE_REJECTED;

    driver.connected = 0;
    driver.commFailed = 1;
    driver.frameList.clear();
    driver.errCount = 0;
    dealListWhenFinish();
    return RECEIVE_LINK_DROPPED;
}

/// Retires the head of frameList. Deliberate: a handshake that was queued in place of a job's request completes the
/// job, which is never sent.
static qint32 retireHead()
{
    driver.frameList.removeFirst();
    if (driver.frameList.isEmpty())
        dealListWhenFinish();
    driver.errCount = 0;
    return RECEIVE_ACCEPTED;
}

qint32 dealCheckedReply(int replyClass, QByteArray &reply)
{
    if (replyClass == REPLY_REJECTED)
        return countRejected();
    if (replyClass < REPLY_REJECTED || replyClass > REPLY_LATE_HANDSHAKE)
        return RECEIVE_IGNORED;

    driver.commFailed = 0;
    if (replyClass == REPLY_LATE_HANDSHAKE) {
        driver.errCount = 0;
        return RECEIVE_ACCEPTED;
    }
    if (replyClass == REPLY_READ) {
        const FRAME_PRO &head = driver.frameList.at(0);
        const DataReply data = { reply, head.dataPos, head.dataLen / 2, head.requestTag, head.regType, head.address,
                                 head.count };
        storeData(data);
    }
    return retireHead();
}

qint32 intf_dealRcvFrame(QByteArray &reply, QString &info)
{
    info = QLatin1String("");
    if (driver.frameList.isEmpty())
        return RECEIVE_IGNORED;

    info = getErrorInfo(reply);
    const quint8 *bytes = reinterpret_cast<const quint8 *>(reply.constData());
    return dealCheckedReply(check_rcv_data(bytes, sizeOf(reply)), reply);
}
