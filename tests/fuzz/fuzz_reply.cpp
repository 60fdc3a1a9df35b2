#include "data/write_completion.h"
#include "fins/receive.h"
#include "runtime_side.h"

// Replies of any bytes into every kind of request in flight. The first bytes of the input choose the request and its
// size, the rest are replies to it.

namespace {

FRAME_PRO inFlight;

KEY_ADDRESS item(FuzzInput &input)
{
    KEY_ADDRESS result;
    result.requestTag = 7;
    result.regType = typeOf(input);
    result.address = input.number();
    result.count = input.count(300);
    result.dataKind = input.upTo(1) - 1;
    return result;
}

/// A connected driver whose next job is up to the caller.
void connect(FuzzInput &input)
{
    static const char *const PROPERTIES[] = {"2#0#0#3#64", "2#0#0#1#500", "2#0#0#5#0", "2#0#0#3#-1"};
    configureDriver(PROPERTIES[input.upTo(3)]);
    QList<KEY_ADDRESS> watched;
    watched.append(item(input));
    intf_addrMerge(watched);
    require(takeRequest(inFlight) && inFlight.sendLen == 20, "the first request is the handshake");
    giveReply(replyTo(inFlight, std::vector<quint8>()));
    require(driver.connected == 1 && driver.frameList.isEmpty(), "the handshake connects");
}

void handshake(FuzzInput &input)
{
    connect(input);
    driver.connected = 0;
}

void pollRead(FuzzInput &input)
{
    connect(input);
}

void conditionRead(FuzzInput &input)
{
    connect(input);
    KEY_ADDRESS wanted = item(input);
    wanted.count = qMin<qint32>(wanted.count, 300);
    intf_addConditionRead(wanted, 3);
}

void write(FuzzInput &input)
{
    connect(input);
    const KEY_ADDRESS written = item(input);
    const std::vector<quint8> data(written.count < 1 ? 0 : 2 * static_cast<std::size_t>(written.count), 1);
    intf_setData(7, written.regType, written.address, written.count, data.data(), 9);
}

void recipe(FuzzInput &input, bool isWrite)
{
    connect(input);
    QVector<_RCP_VAR_PRO> variables;
    for (int i = input.upTo(3); i >= 0; --i) {
        const KEY_ADDRESS place = item(input);
        _RCP_VAR_PRO variable = {driver.stationNo, 7, place.regType, place.address, place.count, 0, 0};
        variable.bufferOffset = 4 * input.byte();
        variables.append(variable);
    }
    intf_setRcpAddress(variables);
    setRecipeFlags(isWrite, !isWrite);
}

void recipeWrite(FuzzInput &input)
{
    recipe(input, true);
}

void recipeRead(FuzzInput &input)
{
    recipe(input, false);
}

/// A write that was refused for the operating mode, once or twice.
void modeChange(FuzzInput &input)
{
    write(input);
    for (int i = input.upTo(2); i > 0 && takeRequest(inFlight); --i) {
        std::vector<quint8> refusal = replyTo(inFlight, std::vector<quint8>());
        refusal.resize(30);
        refusal[28] = 0x22;
        refusal[29] = 0x03;
        giveReply(refusal);
    }
}

/// A read and the write that it prepares, a pair that the receiving side serves although no builder queues it.
void preparedWrite(FuzzInput &input)
{
    connect(input);
    driver.jobType = JOB_WRITE;
    const KEY_ADDRESS place = item(input);
    FRAME_PRO read = FRAME_PRO();
    read.sendLen = 34;
    read.rcvLen = 30 + input.byte();
    read.dataPos = 30;
    read.dataLen = read.rcvLen - 30;
    read.regType = place.regType;
    read.address = place.address;
    read.count = input.number();
    FRAME_PRO write = FRAME_PRO();
    write.sendLen = input.number();
    driver.frameList.append(read);
    driver.frameList.append(write);
}

typedef void (*Preparation)(FuzzInput &input);
const Preparation KINDS[] = {handshake,   pollRead,   conditionRead, write,
                             recipeWrite, recipeRead, modeChange,    preparedWrite};

/// Hands a reply to the receiving side past the check, as any of the classes that the check knows, and more. For reads
/// of a bounded length: their words are walked, however short the reply.
void giveUnchecked(const std::vector<quint8> &reply, int replyClass)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(reply.data()),
                                               static_cast<int>(reply.size()));
    const qint32 result = dealCheckedReply(replyClass, bytes);
    require(result == 0 || result == 1 || result == 2 || result == 8, "result of an unchecked reply");
    checkState();
}

/// Answers with bytes of the input: as they are, with the newest service ID, of the expected length, or unchecked.
/// Returns whether what is in flight is what the builders made of it: a reply past the check may complete a write.
bool answer(FuzzInput &input, qint32 rcvLen)
{
    const int choice = input.byte();
    std::vector<quint8> reply = input.bytes(static_cast<std::size_t>(input.number() & 0x3FF));
    if ((choice & 1) != 0 && rcvLen >= 0 && rcvLen <= 4096)
        reply.resize(static_cast<std::size_t>(rcvLen), quint8(choice));
    if ((choice & 2) != 0 && reply.size() > 25)
        reply[25] = driver.sid;
    const std::vector<quint8> exact(reply);
    if ((choice & 4) != 0 && !driver.frameList.isEmpty() && driver.frameList.at(0).dataLen <= 4096) {
        giveUnchecked(exact, choice >> 5);
        return false;
    }
    giveReply(exact);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    loadDriver();
    const Preparation prepare = KINDS[input.upTo(7)];
    setNestedRead(input.upTo(2));
    prepare(input);
    bool isBuilt = prepare != preparedWrite;
    for (int i = 0; i < 6 && !input.isEmpty(); ++i) {
        if (isBuilt && !takeRequest(inFlight))
            break;
        const qint32 rcvLen = driver.frameList.isEmpty() ? 0 : driver.frameList.at(0).rcvLen;
        isBuilt = answer(input, rcvLen) && isBuilt;
    }
    loadDriver(); // what is left after it has leaked
    return 0;
}
