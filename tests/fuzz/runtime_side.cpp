#include "runtime_side.h"

#include "low_memory.h"

#include <cstring>
#include <new>

namespace {

// Of the shared block, as the interface has it.
enum { BLOCK_SIZE = 60117, WRITE_FLAG = 60115, READ_FLAG = 60116 };

// Limits that hold in the driver whatever happens.
enum { QUEUE_MOST = 513, FRAMES_MOST = 3 };

// The driver finds these three by 32-bit addresses. Behind the block and the buffer nothing can be touched.
struct Runtime {
    LowMemory         block{BLOCK_SIZE};
    LowMemory         recipe{2 * RECIPE_WORDS, 2};
    LowObject<QMutex> mutex;
    int               nestedRead = 0;
};

Runtime &runtime()
{
    static Runtime objects;
    return objects;
}

/// A type of bits by the name alone.
bool namesBits(const QString &regType)
{
    return regType.size() >= 4 && regType.mid(regType.size() - 4) == QLatin1String("_bit");
}

/// Bytes that `count` items take in a buffer.
std::size_t sizeOf(const QString &regType, qint32 count)
{
    return count < 1 ? 0 : static_cast<std::size_t>(count) * (namesBits(regType) ? 1 : 2);
}

void onChange(qint32, qint32 requestTag, QString regType, qint32 address)
{
    if (runtime().nestedRead != 0)
        readValues(requestTag, regType, address, runtime().nestedRead);
}

qint32 wrapped(qint64 value)
{
    return static_cast<qint32>(static_cast<quint32>(value & 0xFFFFFFFF));
}

bool hasBytes(const FRAME_PRO &request, int offset, std::initializer_list<int> expected)
{
    for (const int value : expected)
        if (request.frame[offset++] != value)
            return false;
    return true;
}

void checkHandshake(const FRAME_PRO &request)
{
    require(request.sendLen == 20 && request.rcvLen == 24 && request.dataLen == 0, "lengths of a handshake");
    require(hasBytes(request, 12, {0, 0, 0, 0, 0, 0, 0, 0}), "body of a handshake");
    require(request.regType.isEmpty(), "a handshake serves no variable");
}

void checkRead(const FRAME_PRO &request)
{
    require(request.sendLen == 34, "length of a read");
    require(request.rcvLen == wrapped(30 + 2 * qint64(request.count)), "length of a read's reply");
    require(request.dataPos == 30 && request.dataLen == wrapped(2 * qint64(request.count)), "data of a read's reply");
    require(request.frame[31] == 0, "a read is of words");
}

void checkWrite(const FRAME_PRO &request)
{
    const bool bits = namesBits(request.regType);
    require(request.sendLen == wrapped(34 + (bits ? 1 : 2) * qint64(request.count)), "length of a write");
    require(request.rcvLen == 30 && request.dataPos == 0 && request.dataLen == 0, "a write's reply");
    require(request.frame[34] == request.value[bits ? 0 : 1] || request.count < 1, "first value of a write");
    require(request.frame[1023] == (request.count < (bits ? 990 : 495) ? 0 : request.value[bits ? 989 : 988]),
            "last byte of a write's frame");
}

void checkModeChange(const FRAME_PRO &request)
{
    require(request.sendLen == 31 && request.rcvLen == 30 && request.dataLen == 0, "lengths of a mode change");
    require(hasBytes(request, 28, {0xFF, 0xFF, 2}), "parameters of a mode change");
}

void checkCommand(const FRAME_PRO &request)
{
    require(hasBytes(request, 8, {0, 0, 0, 2, 0, 0, 0, 0, 0x80, 0, 2, 0}), "headers of a command");
    require(request.frame[25] != 255, "service ID 255 is never used");
    if (hasBytes(request, 26, {1, 1}))
        checkRead(request);
    else if (hasBytes(request, 26, {1, 2}))
        checkWrite(request);
    else if (hasBytes(request, 26, {4, 1}))
        checkModeChange(request);
    else
        require(false, "unknown command");
}

void checkRequest(const FRAME_PRO &request)
{
    require(hasBytes(request, 0, {'F', 'I', 'N', 'S', 0, 0, 0, wrapped(qint64(request.sendLen) - 8) & 0xFF}),
            "start of a request");
    if (hasBytes(request, 8, {0, 0, 0, 0}))
        checkHandshake(request);
    else
        checkCommand(request);
}

bool isSame(const FRAME_PRO &a, const FRAME_PRO &b)
{
    return std::memcmp(a.frame, b.frame, sizeof a.frame) == 0 && a.sendLen == b.sendLen && a.rcvLen == b.rcvLen
        && a.dataPos == b.dataPos && a.dataLen == b.dataLen && a.requestId == b.requestId
        && a.requestTag == b.requestTag && a.regType == b.regType && a.address == b.address && a.count == b.count
        && std::memcmp(a.value, b.value, sizeof a.value) == 0;
}

void checkResult(int result, bool wasIdle, const QString &info)
{
    require(wasIdle == (result == 0), "only a reply without a request is ignored");
    require(info.isEmpty() == wasIdle, "every reply to a request has an info text");
    switch (result) {
    case 0:
        break;
    case 1:
        require(driver.errCount == 0 && driver.commFailed == 0, "an accepted reply ends a failure");
        break;
    case 2:
        require(driver.connected == 0 && driver.frameList.isEmpty() && driver.errCount == 0 && driver.commFailed == 1,
                "a dropped link");
        break;
    case 8:
        require(driver.errCount < driver.retryLimit && !driver.frameList.isEmpty(), "a rejected reply");
        break;
    default:
        require(false, "unknown result of a reply");
    }
}

} // namespace

void loadDriver()
{
    driver.~omron_fins_ethernet();
    void *storage = &driver;
    std::memset(storage, 0, sizeof driver);
    new (storage) omron_fins_ethernet;
    intf_setAddrValueChangeCallBack(&onChange);
    setNestedRead(0);
    setRecipeFlags(false, false);
}

void configureDriver(const std::string &property)
{
    qint32 status = 0;
    const qint32 result = intf_initProperty(runtime().block.address(), 5, runtime().recipe.address(), &status,
                                            property.c_str(), runtime().mutex.address());
    require(result == 1 && status == 2, "results of intf_initProperty");
    require(driver.dataAreas.isEmpty() && driver.writeList.isEmpty() && driver.conditionReadList.isEmpty()
                && driver.readList.isEmpty() && driver.frameList.isEmpty(),
            "intf_initProperty empties the queues and the image");
}

void setNestedRead(int count)
{
    runtime().nestedRead = count;
}

void setRecipeFlags(bool write, bool read)
{
    runtime().mutex->lock();
    runtime().block.data()[WRITE_FLAG] = write ? 1 : 0;
    runtime().block.data()[READ_FLAG] = read ? 1 : 0;
    runtime().mutex->unlock();
}

QString typeOf(FuzzInput &input)
{
    static const char *const NAMES[] = {
        "CIO_bit", "WR_bit", "HR_bit", "AR_bit", "DM_bit", "CIO", "WR", "HR", "AR", "T", "C", "DM",
        "DM", "DM_bit", "", "_bit", "X", "X_bit", "dm_Bit", "DM_bi", "_bitX", "CIO_bit_bit", "D_M_bit", "RWI"};
    const int choice = input.byte();
    if (choice < 240)
        return QLatin1String(NAMES[choice % 24]);
    if (choice < 248)
        return QString::fromStdString(input.text(static_cast<std::size_t>(input.upTo(20))));
    return QString(choice * 4, QLatin1Char('D')) + QLatin1String(choice < 252 ? "_bit" : "");
}

bool takeRequest(FRAME_PRO &request)
{
    const qint32 result = intf_getSendFrame(&request);
    require((result == 1) == !driver.frameList.isEmpty() && (result == 0 || result == 1), "result of a request");
    if (result == 0)
        return false;
    checkRequest(request);
    FRAME_PRO again = FRAME_PRO();
    require(intf_getSendFrame(&again) == 1 && isSame(request, again), "a request is repeated unchanged");
    return true;
}

int giveReply(const std::vector<quint8> &reply)
{
    const bool wasIdle = driver.frameList.isEmpty();
    // The bytes stay where they are, so that a sanitizer sees what reads behind them.
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(reply.data()),
                                               static_cast<int>(reply.size()));
    QString info = QLatin1String("none");
    const int result = intf_dealRcvFrame(bytes, info);
    require(static_cast<std::size_t>(bytes.size()) == reply.size(), "a reply keeps its length");
    checkResult(result, wasIdle, info);
    checkState();
    return result;
}

std::vector<quint8> replyTo(const FRAME_PRO &request, const std::vector<quint8> &data)
{
    enum { LONGEST = 4096 };
    const qint32 length = request.rcvLen < 0 || request.rcvLen > LONGEST ? 30 : request.rcvLen;
    std::vector<quint8> reply = {0x46, 0x49, 0x4E, 0x53, 0, 0, static_cast<quint8>((length - 8) >> 8 & 0xFF),
                                 static_cast<quint8>((length - 8) & 0xFF), 0, 0, 0, 2, 0, 0, 0, 0,
                                 0xC0, 0, 2, 0, 10, 0, 0, 1, 0, driver.sid, request.frame[26], request.frame[27], 0, 0};
    reply.insert(reply.end(), data.begin(), data.end());
    reply.resize(static_cast<std::size_t>(length));
    return std::vector<quint8>(reply);
}

std::vector<quint8> readValues(qint32 requestTag, const QString &regType, qint32 address, qint32 count)
{
    std::vector<quint8> values(sizeOf(regType, count), 0xA5);
    require(intf_getData(requestTag, regType, address, count, values.data()) == 1, "result of intf_getData");
    if (namesBits(regType))
        for (const quint8 value : values)
            require(value <= 1, "a bit is 0 or 1");
    return values;
}

void checkState()
{
    require(driver.writeList.size() <= QUEUE_MOST, "length of the write queue");
    require(driver.conditionReadList.size() <= QUEUE_MOST, "length of the queue of conditional reads");
    require(driver.frameList.size() <= FRAMES_MOST, "number of requests");
    require(driver.jobType >= 0 && driver.jobType <= 6 && driver.jobType != 1, "kind of the job");
    require(driver.connected <= 1 && driver.commFailed >= 0 && driver.commFailed <= 1, "state of the link");
    require(driver.sid != 255, "service ID");
    require(driver.recipeIndex >= 0, "recipe block");
    require(driver.recipeBlocks.size() == driver.recipeBlockStart.size(), "plan of the recipe");

    const quint8 *block = runtime().block.data();
    require(block[WRITE_FLAG] <= 1 && block[READ_FLAG] <= 1 && block[WRITE_FLAG - 1] == 0, "shared block");
    require(runtime().mutex->tryLock(), "the mutex is free");
    runtime().mutex->unlock();
}
