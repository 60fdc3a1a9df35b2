#include "data/write_values.h"

#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/area_walk.h"

#include <cstring>

/// Deliberate: a full queue holds 513 entries; then the newest request replaces the last.
enum { QUEUE_LAST = 512 };

bool sameVariable(const VARIABLE &a, const VARIABLE &b)
{
    return a.address == b.address && a.count == b.count && a.requestTag == b.requestTag
        && sameName(a.regType, b.regType);
}

void putIntoQueue(QList<VARIABLE> &queue, const VARIABLE &request)
{
    // Deliberate: the head may be in progress and is never replaced, not even by the same variable.
    const int size = static_cast<int>(queue.size());
    for (int i = size - 1; i > 0; --i) {
        if (sameVariable(queue.at(i), request)) {
            queue[i] = request;
            return;
        }
    }
    if (size > QUEUE_LAST)
        queue[QUEUE_LAST] = request;
    else
        queue.append(request);
}

/// Appends the pieces of a write to the queue: each of the frame's size, the last one shorter. Frame size 0 cuts nothing.
static void queueWrite(qint32 requestTag, const QString &regType, qint32 address, qint32 count, const quint8 *data,
                       qint32 requestId)
{
    if (count < 1)
        return;

    const qint32 unitSize = isBitType(regType) ? 1 : 2;
    const qint32 pieceSize = driver.wordsPerFrame != 0 ? driver.wordsPerFrame : count;
    const qint32 rest = count % pieceSize;
    const qint32 pieces = count / pieceSize + (rest != 0 ? 1 : 0);
    for (qint32 k = 0; k < pieces; ++k) {
        VARIABLE piece = VARIABLE();
        piece.requestId  = requestId;
        piece.requestTag = requestTag;
        piece.regType    = regType;
        piece.address    = wrapAdd(address, k * pieceSize);
        piece.count      = k == pieces - 1 && rest != 0 ? rest : pieceSize;
        // A piece longer than the buffer is cut at its end.
        const qint32 units = qMin<qint32>(piece.count, VALUE_BUFFER_SIZE / unitSize);
        const qint64 offset = qint64(unitSize) * k * pieceSize;
        std::memcpy(piece.value, data + offset, static_cast<size_t>(unitSize) * static_cast<size_t>(units));
        putIntoQueue(driver.writeList, piece);
    }
}

qint32 intf_setData(qint32 requestTag, QString regType, qint32 address, qint32 count, const quint8 *data,
                    qint32 requestId)
{
    if (driver.writeDirect == 0)
        queueWrite(requestTag, regType, address, count, data, requestId);
    write_saveDataToArea(requestTag, regType, address, count, data);
    return 1;
}

/// Writes one bit, in the word's record at `index`. A negative bit stores nothing.
/// Deliberate: only the value 1 sets the bit, every other value clears it.
static void saveBit(qint32 index, ReportKeys &keys, qint32 bitAddress, quint8 value)
{
    const qint32 bit = bitAddress % 16;
    if (bit < 0)
        return;

    const qint32 before = wordOf(shownValue(driver.dataAreas.at(index)));
    const qint32 after = _setBitValue(before, bit, value == 1 ? 1 : 0);
    _DATA_ &area = reportChange(index, before, after, keys, bitAddress / 16);
    area.writeValue[0] = static_cast<quint8>(after & 0xFF);
    area.writeValue[1] = static_cast<quint8>(after >> 8);
    area.writePending = 1;
    area.pendingBits = _setBitValue(area.pendingBits, bit, 1);
}

static void saveWords(ReportKeys &keys, qint32 address, qint32 count, const quint8 *data)
{
    AreaWalk walk(keys.requestTag, keys.regType);
    for (qint32 i = 0; i < count; ++i) {
        const quint8 *word = data + 2 * qint64(i);
        const qint32 before = wordOf(shownValue(walk.to(wrapAdd(address, i))));
        _DATA_ &area = walk.report(before, wordOf(word), keys, wrapAdd(address, i));
        area.writeValue[0] = word[0];
        area.writeValue[1] = word[1];
        area.writePending = 1;
    }
}

static void saveBits(ReportKeys &keys, qint32 address, qint32 count, const quint8 *data)
{
    qint32 index = -1;
    for (qint32 i = 0; i < count; ++i) {
        const qint32 at = wrapAdd(address, i);
        index = getIndexOfBit(keys.requestTag, keys.regType, at, index);
        saveBit(index, keys, at, data[i]);
    }
}

void write_saveDataToArea(qint32 requestTag, QString regType, qint32 address, qint32 count, const quint8 *data)
{
    const bool bits = isBitType(regType);
    ReportKeys keys = { requestTag, bits ? wordTypeOf(regType) : sharedName(regType), QString() };
    if (bits)
        saveBits(keys, address, count, data);
    else
        saveWords(keys, address, count, data);
}
