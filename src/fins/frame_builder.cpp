#include "fins/frame_builder.h"

#include "address/register_table.h"
#include "address/wrapping.h"

#include <algorithm>
#include <cstring>

/// Largest write that fits a frame: 495 words or 990 bits. What lies beyond is not copied; the lengths still count it.
enum {
    MAX_WRITE_WORDS = (VALUE_BUFFER_SIZE - MEM_DATA) / 2,
    MAX_WRITE_BITS  = VALUE_BUFFER_SIZE - MEM_DATA
};

static void put8(quint8 *to, qint32 value)
{
    to[0] = static_cast<quint8>(value & 0xFF);
}

static void put16(quint8 *to, qint32 value)
{
    put8(to, value >> 8);
    put8(to + 1, value);
}

static void put32(quint8 *to, qint32 value)
{
    put16(to, value >> 16);
    put16(to + 2, value);
}

/// FINS/TCP header of a request of `length` bytes in all.
static void putTcpHeader(quint8 *frame, qint32 command, qint32 length)
{
    std::memcpy(frame + TCP_MAGIC, "FINS", 4);
    // Deliberate: one byte of length. Above 255, that is from 115 words of a write on, it is sent modulo 256.
    put32(frame + TCP_LENGTH,  wrapSub(length, TCP_COMMAND) & 0xFF);
    put32(frame + TCP_COMMAND, command);
    put32(frame + TCP_ERROR,   0);
}

/// FINS/TCP and FINS header of a command of `length` bytes in all, with a fresh service ID.
static void putCommandHeaders(quint8 *frame, qint32 command, qint32 length)
{
    putTcpHeader(frame, 2, length);
    put8 (frame + FINS_ICF, 0x80); // command, response required
    put8 (frame + FINS_RSV, 0x00);
    put8 (frame + FINS_GCT, 0x02);
    put8 (frame + FINS_DNA, driver.dstNode[0]);
    put8 (frame + FINS_DA1, driver.dstNode[1]);
    put8 (frame + FINS_DA2, driver.dstNode[2]);
    put8 (frame + FINS_SNA, driver.srcNode[0]);
    put8 (frame + FINS_SA1, driver.srcNode[1]);
    put8 (frame + FINS_SA2, driver.srcNode[2]);
    put8 (frame + FINS_SID, getSSID());
    put16(frame + CMD_CODE, command);
}

/// Area code of a register type, 0 for an unknown one.
static qint32 areaCodeOf(const QString &regType)
{
    const int i = findRegister(regType);
    return i < 0 ? 0 : AREA_CODE_CS_CJ[i];
}

/// Word address on the wire: timers and counters share an area code, and counters start at 0x8000 in it.
static qint32 wireWord(const QString &regType, qint32 address)
{
    return regType == QLatin1String("C") ? wrapSub(address, 0x8000) : address;
}

/// Parameters of a Memory Area Read or Write by words.
static void putWordArea(quint8 *frame, const VARIABLE &request)
{
    put8 (frame + MEM_AREA,  areaCodeOf(request.regType));
    put16(frame + MEM_WORD,  wireWord(request.regType, request.address));
    put8 (frame + MEM_BIT,   0);
    put16(frame + MEM_COUNT, request.count);
}

/// Parameters of a Memory Area Write by bits.
static void putBitArea(quint8 *frame, const VARIABLE &request)
{
    put8 (frame + MEM_AREA,  areaCodeOf(request.regType));
    put16(frame + MEM_WORD,  request.address / 16);
    put8 (frame + MEM_BIT,   request.address % 16);
    put16(frame + MEM_COUNT, request.count);
}

/// Copies words from the value buffer, low byte first, to the wire, high byte first.
static void putWords(quint8 *to, const quint8 *values, qint32 count)
{
    for (qint32 i = 0; i < qMin<qint32>(count, MAX_WRITE_WORDS); ++i) {
        to[2 * i]     = values[2 * i + 1];
        to[2 * i + 1] = values[2 * i];
    }
}

static void putBits(quint8 *to, const quint8 *values, qint32 count)
{
    for (qint32 i = 0; i < qMin<qint32>(count, MAX_WRITE_BITS); ++i)
        to[i] = values[i];
}

static const FRAME_PRO EMPTY_FRAME = FRAME_PRO();

// Holds the frame that was retired last, if it was the only one. Most frames come one after the other, and two KiB are
// cleared faster than allocated, copied from an empty frame and freed.
static QList<FRAME_PRO> retiredFrames;

/// Makes a frame what EMPTY_FRAME is, without copying it.
static void clearFrame(FRAME_PRO &frame)
{
    std::memset(frame.frame, 0, sizeof frame.frame);
    frame.sendLen       = 0;
    frame.rcvLen        = 0;
    frame.dataPos       = 0;
    frame.dataLen       = 0;
    frame.reservedField = 0;
    frame.requestId     = 0;
    frame.requestTag    = 0;
    frame.regType       = QString();
    frame.address       = 0;
    frame.count         = 0;
    std::memset(frame.value, 0, sizeof frame.value);
}

/// Appends an empty frame, to be filled in place.
static FRAME_PRO &appendFrame()
{
    if (driver.frameList.isEmpty() && !retiredFrames.isEmpty()) {
        driver.frameList.swap(retiredFrames);
        clearFrame(driver.frameList[0]);
    } else {
        driver.frameList.append(EMPTY_FRAME);
    }
    return driver.frameList.last();
}

void retireFrame()
{
    if (driver.frameList.size() > 1) {
        driver.frameList.removeFirst();
        return;
    }
    retiredFrames.clear();
    retiredFrames.swap(driver.frameList);
}

/// Copies what a frame carries along of the variable that it serves.
static void setVariable(FRAME_PRO &frame, const VARIABLE &request)
{
    frame.requestId  = request.requestId;
    frame.requestTag = request.requestTag;
    frame.regType    = request.regType;
    frame.address    = request.address;
    frame.count      = request.count;
    std::copy(request.value, request.value + VALUE_BUFFER_SIZE, frame.value);
}

int getSSID()
{
    // Deliberate: 255 is never used; 254 is followed by 0.
    const int next = (driver.sid + 1) % 256;
    driver.sid = next == 255 ? quint8(0) : static_cast<quint8>(next);
    return driver.sid;
}

// Node address data send, client to server.
void connectToServer()
{
    FRAME_PRO &request = appendFrame();
    putTcpHeader(request.frame, 0, NODE_REQUEST);
    put32(request.frame + NODE_CLIENT, 0);
    request.sendLen = NODE_REQUEST;
    request.rcvLen  = NODE_REPLY;
}

// Memory Area Read, 01 01. Deliberate: bit types are not told apart, so every read is one of words and expects two bytes
// an item; the planners pass word types only.
void getReadFrame(VARIABLE &request)
{
    // Deliberate: the handshake takes the job's place; its reply completes the job.
    if (driver.connected == 0) {
        connectToServer();
        return;
    }

    FRAME_PRO &read = appendFrame();
    putCommandHeaders(read.frame, 0x0101, MEM_DATA);
    putWordArea(read.frame, request);
    read.sendLen = MEM_DATA;
    read.rcvLen  = wrapAdd(REPLY_DATA, wrapMul(2, request.count));
    read.dataPos = REPLY_DATA;
    read.dataLen = wrapMul(2, request.count);
    setVariable(read, request);
}

// Memory Area Write, 01 02.
void getWriteFrame(VARIABLE &request)
{
    if (driver.connected == 0) {
        connectToServer();
        return;
    }

    FRAME_PRO &write = appendFrame();
    const bool bits = isBitType(request.regType);
    write.sendLen = wrapAdd(MEM_DATA, bits ? request.count : wrapMul(2, request.count));
    write.rcvLen  = REPLY_DATA;
    putCommandHeaders(write.frame, 0x0102, write.sendLen);
    if (bits) {
        putBitArea(write.frame, request);
        putBits(write.frame + MEM_DATA, request.value, request.count);
    } else {
        putWordArea(write.frame, request);
        putWords(write.frame + MEM_DATA, request.value, request.count);
    }
    setVariable(write, request);
}

// RUN, 04 01.
void changePLCModeToMonitor()
{
    FRAME_PRO run = EMPTY_FRAME;
    putCommandHeaders(run.frame, 0x0401, RUN_END);
    put16(run.frame + RUN_PROGRAM, 0xFFFF);
    put8 (run.frame + RUN_MODE,    0x02); // MONITOR
    run.sendLen = RUN_END;
    run.rcvLen  = REPLY_DATA;
    // Deliberate: ahead of everything queued, so it goes out before the request that the PLC refused.
    driver.frameList.prepend(run);
}
