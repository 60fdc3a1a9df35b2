#include "fins/receive.h"

#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/area_walk.h"
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
    quint8    *bytes; // the reply's own, not those of a copy
    qint32     size;
    qint32     dataPos;
    qint32     wordCount;
    ReportKeys keys;
    qint32     address;
    qint32     count;
};

static DataReply dataReply(QByteArray &reply, const FRAME_PRO &request)
{
    DataReply data = { reinterpret_cast<quint8 *>(reply.data()), static_cast<qint32>(reply.size()), request.dataPos,
                       request.dataLen / 2, { request.requestTag, request.regType, QString() }, request.address,
                       request.count };
    return data;
}

/// Byte `offset` of the data; 0 outside the reply.
static quint8 dataByte(const DataReply &data, qint32 offset)
{
    return get8(data.bytes, data.size, wrapAdd(data.dataPos, offset));
}

/// Stores into byte `offset` of the data; nothing outside the reply.
static void setDataByte(const DataReply &data, qint32 offset, quint8 value)
{
    const qint32 at = wrapAdd(data.dataPos, offset);
    if (at >= 0 && at < data.size)
        data.bytes[at] = value;
}

/// The word in two bytes from the wire, high byte first; 0 to 0xFFFF.
static qint32 wireWord(const quint8 *bytes)
{
    return static_cast<quint16>(bytes[0] << 8 | bytes[1]);
}

/// Stores received words from `address` on, two bytes each from the wire, and reports those that changed. Most words of
/// a cyclic poll do not change, so the loop is made for them; it stays a function of its own to keep its registers.
__attribute__((noinline))
static void storeWords(ReportKeys &keys, qint32 address, qint32 count, const quint8 *bytes)
{
    const QString &regType = sharedName(keys.regType); // the records' own memory, which is found fastest
    AreaWalk walk(keys.requestTag, regType);
    for (qint32 i = 0; i < count; ++i, bytes += 2) {
        const qint32 at = wrapAdd(address, i);
        _DATA_ &area = walk.to(at);
        area.rcvFlag = 0;
        if (wordOf(area.plcValue) == wireWord(bytes))
            continue;

        area.writePending = 0;
        _DATA_ &reported = walk.report(wordOf(area.plcValue), wireWord(bytes), keys, at);
        reported.plcValue[0] = bytes[1];
        reported.plcValue[1] = bytes[0];
    }
}

/// Stores all words of the data. A reply that was checked holds them; of any other, a byte that it lacks is 0.
static void storeData(DataReply &data)
{
    const qint64 end = data.dataPos + 2 * qint64(data.wordCount);
    if (data.dataPos >= 0 && end <= data.size) {
        storeWords(data.keys, data.address, data.wordCount, data.bytes + data.dataPos);
    } else {
        for (qint32 i = 0; i < data.wordCount; ++i) {
            const qint32 offset = wrapMul(2, i);
            const quint8 word[2] = { dataByte(data, offset), dataByte(data, wrapAdd(offset, 1)) };
            storeWords(data.keys, wrapAdd(data.address, i), 1, word);
        }
    }
}

/// Stores the words of one recipe variable into the recipe buffer, and reports each. The variable's data begin at byte
/// `offset` of the reply's data.
static void storeRecipeVariable(const DataReply &data, const _RCP_VAR_PRO &variable, qint32 offset)
{
    for (qint32 j = 0; j < variable.count; ++j) {
        const qint32 at = wrapAdd(offset, wrapMul(2, j));
        const qint32 index = wrapAdd(variable.bufferOffset, j);
        quint8 *word = reinterpret_cast<quint8 *>(driver.recipeBuffer + index);
        word[0] = dataByte(data, wrapAdd(at, 1));
        word[1] = dataByte(data, at);
        driver.valueChangeCallback(0, -1, QLatin1String("RWI"), index);
    }
}

/// Stores the variables of the recipe block in transfer. The plan may have changed since the request was built, so a
/// block that it no longer has is a block without variables.
static void storeRecipeBlock(const DataReply &data)
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
        storeRecipeVariable(data, variable, wrapMul(2, words));
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
static void mergeWrittenBits(const DataReply &data, const quint8 *bits)
{
    for (qint32 i = 0; i < data.wordCount; ++i) {
        const quint8 high = dataByte(data, wrapMul(2, i));
        setDataByte(data, wrapMul(2, i), dataByte(data, wrapAdd(wrapMul(2, i), 1)));
        setDataByte(data, wrapAdd(wrapMul(2, i), 1), high);
    }
    for (qint32 i = 0; i < qMin<qint32>(data.count, VALUE_BUFFER_SIZE); ++i) {
        const qint32 b = data.address % 16 + i;
        setDataByte(data, b / 8, static_cast<quint8>(_setBitValue(dataByte(data, b / 8), b % 8, bits[i])));
    }
}

/// Puts the merged words into a prepared write, and its two-byte CRC behind them. The frame ends at its buffer's end.
static void completePreparedWrite(const DataReply &data, FRAME_PRO &write)
{
    enum { DATA = 7, CRC_SIZE = 2 };
    const qint32 pairs = wrapSub(write.sendLen, DATA + CRC_SIZE) / 2;
    for (qint32 k = 0; k < qMin<qint32>(wrapMul(2, pairs), VALUE_BUFFER_SIZE - DATA); ++k)
        write.frame[DATA + k] = dataByte(data, k ^ 1); // the bytes of each word change places
    if (write.sendLen < CRC_SIZE || write.sendLen > VALUE_BUFFER_SIZE)
        return;
    const quint16 crc = crc16(write.frame, write.sendLen - CRC_SIZE);
    write.frame[write.sendLen - 2] = static_cast<quint8>(crc & 0xFF);
    write.frame[write.sendLen - 1] = static_cast<quint8>(crc >> 8);
}

/// Deliberate: serves a read followed by a prepared write of the same words. No builder queues such a pair, since a
/// write is sent as it is.
static void readModifyWrite(const DataReply &data)
{
    const qint32 index = getIndexOfDataArea(data.keys.requestTag, wordTypeOf(data.keys.regType), data.address / 16,
                                            driver.dataAreas);
    driver.dataAreas[index].rcvFlag = 0;
    mergeWrittenBits(data, driver.frameList.at(0).value);
    if (driver.frameList.size() > 1)
        completePreparedWrite(data, driver.frameList[1]);
}

static void dealData(DataReply data)
{
    if (driver.jobType == JOB_WRITE) {
        readModifyWrite(data);
        return;
    }
    storeData(data);
    if (driver.jobType == JOB_RECIPE_READ)
        storeRecipeBlock(data);
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
    retireFrame();
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
    if (replyClass == REPLY_READ)
        dealData(dataReply(reply, driver.frameList.at(0)));
    return retireHead();
}

qint32 intf_dealRcvFrame(QByteArray &reply, QString &info)
{
    if (driver.frameList.isEmpty()) {
        info = QLatin1String("");
        return RECEIVE_IGNORED;
    }

    const qint32 size = static_cast<qint32>(reply.size());
    putErrorInfo(size, info);
    return dealCheckedReply(check_rcv_data(reinterpret_cast<const quint8 *>(reply.constData()), size), reply);
}
