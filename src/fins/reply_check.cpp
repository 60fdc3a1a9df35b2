#include "fins/reply_check.h"

#include "fins/frame_builder.h"

#include <algorithm>

/// Takes the node addresses from a handshake reply; a FINS node address is the low byte of each.
static void acceptHandshake(const quint8 *reply, int length)
{
    driver.connected = 1;
    driver.srcNode[1] = get8(reply, length, NODE_CLIENT + 3);
    driver.dstNode[1] = get8(reply, length, NODE_SERVER + 3);
}

/// End codes 2203, 2204 and 2206: the operating mode does not allow the command.
static bool isModeRefusal(quint8 mres, quint8 sres)
{
    return mres == 0x22 && (sres == 0x03 || sres == 0x04 || sres == 0x06);
}

// The checks of the two functions are numbered through, as in docs/wire.md.
int check_rcv_data(const quint8 *reply, int length)
{
    // 1. The length is exactly the expected one.
    const FRAME_PRO &head = driver.frameList.at(0);
    if (length != head.rcvLen)
        return REPLY_REJECTED;

    // 2. Deliberate: the first reply of that length completes the handshake, whatever it holds.
    if (driver.connected == 0) {
        acceptHandshake(reply, length);
        return REPLY_ACKNOWLEDGED;
    }

    // 3. Deliberate: the service ID is compared with that of the frame built last, not with the head's. A request that
    // was overtaken by a mode change is therefore rejected until the link drops.
    if (get8(reply, length, FINS_SID) != driver.sid)
        return REPLY_REJECTED;

    // 4. Deliberate: a read's end code is not examined.
    if (head.dataLen != 0)
        return REPLY_READ;
    return checkReplyWithoutData(reply, length);
}

int checkReplyWithoutData(const quint8 *reply, int length)
{
    // 5. A handshake would be completed here, too; check 2 has always done so before.
    if (driver.connected == 0) {
        acceptHandshake(reply, length);
        return REPLY_LATE_HANDSHAKE;
    }

    // 6. Deliberate: every end code but a mode refusal, success and errors alike, counts as an accepted write.
    if (!isModeRefusal(get8(reply, length, REPLY_MRES), get8(reply, length, REPLY_SRES)))
        return REPLY_ACKNOWLEDGED;

    // 7. The PLC's mode is changed first, and the request sent again.
    if (driver.frameList.size() <= 2)
        changePLCModeToMonitor();
    return REPLY_REJECTED;
}

/// Writes `number` in decimal, and returns the place behind it. Every reply yields an info text, which is why it is not
/// left to the toolkit's formatting: that would cost as much as the reply itself.
static QChar *putDecimal(QChar *to, qint32 number)
{
    QChar digits[10];
    int count = 0;
    quint32 rest = number < 0 ? 0u - static_cast<quint32>(number) : static_cast<quint32>(number);
    do {
        digits[count++] = QLatin1Char(static_cast<char>('0' + rest % 10));
        rest /= 10;
    } while (rest != 0);

    if (number < 0)
        *to++ = QLatin1Char('-');
    while (count > 0)
        *to++ = digits[--count];
    return to;
}

/// Deliberate: the leading characters are compared, and no register type begins with "_bit", so bit addresses appear
/// as plain numbers.
static QChar *putAddress(QChar *to, const QString &regType, qint32 address)
{
    if (!regType.startsWith(QLatin1String("_bit")))
        return putDecimal(to, address);

    to = putDecimal(to, address / 16);
    *to++ = QLatin1Char('.');
    return putDecimal(to, address % 16);
}

void putErrorInfo(qint32 replySize, QString &info)
{
    // Five numbers of at most eleven characters, and six characters between them.
    enum { LONGEST = 5 * 11 + 6 };
    const FRAME_PRO &head = driver.frameList.at(0);
    const int typeSize = static_cast<int>(head.regType.size());
    info.resize(LONGEST + typeSize);

    QChar *const begin = info.data();
    QChar *to = putDecimal(begin, head.requestTag);
    *to++ = QLatin1Char('#');
    to = std::copy(head.regType.constData(), head.regType.constData() + typeSize, to);
    to = putAddress(to, head.regType, head.address);
    *to++ = QLatin1Char('(');
    to = putDecimal(to, head.count);
    *to++ = QLatin1Char(')');
    *to++ = QLatin1Char('(');
    to = putDecimal(to, replySize);
    *to++ = QLatin1Char(')');
    info.resize(static_cast<int>(to - begin));
}

QString getErrorInfo(QByteArray reply)
{
    QString info;
    putErrorInfo(static_cast<qint32>(reply.size()), info);
    return info;
}
