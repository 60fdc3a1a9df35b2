#include "data/data_image.h"
#include "data/write_completion.h"
#include "driver_fixture.h"
#include "fins/receive.h"

namespace {

const qint32 LARGEST = 2147483647;
const qint32 SMALLEST = -2147483647 - 1;

typedef std::vector<quint8> Bytes;
typedef std::vector<Notification> Notifications;
typedef std::vector<qint32> Lengths;

QByteArray byteArray(const Bytes &bytes)
{
    QByteArray result;
    for (const quint8 byte : bytes)
        result.append(static_cast<char>(byte));
    return result;
}

VARIABLE variable(qint32 requestTag, const char *regType, qint32 address, qint32 count)
{
    VARIABLE result = VARIABLE();
    result.requestTag = requestTag;
    result.regType = QLatin1String(regType);
    result.address = address;
    result.count = count;
    return result;
}

_RCP_VAR_PRO recipeVariable(qint32 address, qint32 count, qint32 bufferOffset)
{
    _RCP_VAR_PRO result = _RCP_VAR_PRO();
    result.regType = QLatin1String("DM");
    result.address = address;
    result.count = count;
    result.bufferOffset = bufferOffset;
    return result;
}

/// Connected, service ID 77 (hex), retry limit 3, tag 7 for every variable, a poll in progress.
class Receive : public DriverTest {
protected:
    Receive()
    {
        driver.connected = 1;
        driver.sid = 0x77;
        driver.retryLimit = 3;
        driver.stationNo = 2;
        driver.jobType = JOB_POLL;
    }

    static void queueRead(const char *regType, qint32 address, qint32 count)
    {
        FRAME_PRO request = FRAME_PRO();
        request.sendLen = 34;
        request.rcvLen = 30 + 2 * count;
        request.dataPos = 30;
        request.dataLen = 2 * count;
        request.requestTag = 7;
        request.regType = QLatin1String(regType);
        request.address = address;
        request.count = count;
        driver.frameList.append(request);
    }

    /// A request without data in its reply, and its length as a mark.
    static void queueWrite(qint32 sendLen = 36)
    {
        FRAME_PRO request = FRAME_PRO();
        request.sendLen = sendLen;
        request.rcvLen = 30;
        request.requestTag = 7;
        request.regType = QLatin1String("DM");
        request.address = 100;
        request.count = 1;
        driver.frameList.append(request);
    }

    /// The write that queueWrite sends, of the value 5 over the PLC's 3.
    static void writePending()
    {
        driver.jobType = JOB_WRITE;
        driver.writeList.append(variable(7, "DM", 100, 1));
        word("DM", 100).plcValue[0] = 3;
        word("DM", 100).writeValue[0] = 5;
        word("DM", 100).writePending = 1;
    }

    static void poll(int blocks)
    {
        for (int i = 0; i < blocks; ++i)
            driver.readList.append(variable(7, "DM", 1000 + i, 1));
    }

    static Bytes header(quint8 serviceId)
    {
        Bytes reply(30, 0);
        reply[25] = serviceId;
        return reply;
    }

    static Bytes readReply(const Bytes &data)
    {
        Bytes reply = header(0x77);
        for (quint8 byte : data)
            reply.push_back(byte);
        return reply;
    }

    // The words 0x0100, 0x0101 and so on, as they come from the wire.
    static Bytes numberedWords(int count)
    {
        Bytes data;
        for (int i = 0; i < count; ++i) {
            data.push_back(0x01);
            data.push_back(quint8(i));
        }
        return data;
    }

    int deal(const Bytes &bytes)
    {
        reply = byteArray(bytes);
        return intf_dealRcvFrame(reply, info);
    }

    int dealAcknowledgement() { return deal(header(0x77)); }
    int dealStale() { return deal(header(0x76)); }

    static _DATA_ &word(const char *regType, qint32 address)
    {
        const int index = getIndexOfDataArea(7, QLatin1String(regType), address, driver.dataAreas);
        return driver.dataAreas[index];
    }

    static int plcWord(const char *regType, qint32 address)
    {
        const _DATA_ &area = word(regType, address);
        return area.plcValue[0] + 256 * area.plcValue[1];
    }

    static Lengths queuedLengths()
    {
        Lengths lengths;
        for (int i = 0; i < driver.frameList.size(); ++i)
            lengths.push_back(driver.frameList.at(i).sendLen);
        return lengths;
    }

    static qint32 firstPolled() { return driver.readList.first().address; }

    QByteArray reply;
    QString    info = QLatin1String("from before");
};

// ---- No request, and the info text ---------------------------------------------------------------------------------

TEST_F(Receive, WithoutARequestReturnsZeroAndAnEmptyInfo)
{
    driver.errCount = 2;
    EXPECT_EQ(dealAcknowledgement(), 0);
    EXPECT_EQ(info.toStdString(), "");
    EXPECT_EQ(driver.errCount, 2);
}

TEST_F(Receive, InfoDescribesTheRequestOfAnAcceptedRead)
{
    queueRead("HR", 20, 1);
    EXPECT_EQ(deal(readReply({0, 0})), 1);
    EXPECT_EQ(info.toStdString(), "7#HR20(1)(32)");
}

TEST_F(Receive, InfoDescribesTheRequestOfAnAcknowledgedWrite)
{
    queueWrite();
    queueRead("HR", 20, 1);
    EXPECT_EQ(dealAcknowledgement(), 1);
    EXPECT_EQ(info.toStdString(), "7#DM100(1)(30)");
}

TEST_F(Receive, InfoDescribesTheRequestOfARejectedReply)
{
    queueWrite();
    EXPECT_EQ(deal({1, 2, 3}), 8);
    EXPECT_EQ(info.toStdString(), "7#DM100(1)(3)");
}

TEST_F(Receive, InfoDescribesTheRequestThatDroppedTheLink)
{
    queueWrite();
    driver.retryLimit = 1;
    EXPECT_EQ(deal({}), 2);
    EXPECT_EQ(info.toStdString(), "7#DM100(1)(0)");
}

// Deliberate: the text describes the head before a mode refusal puts the mode change ahead of it.
TEST_F(Receive, InfoOfAModeRefusalDescribesTheRefusedWrite)
{
    queueWrite();
    Bytes refusal = header(0x77);
    refusal[28] = 0x22;
    refusal[29] = 0x03;
    EXPECT_EQ(deal(refusal), 8);
    EXPECT_EQ(info.toStdString(), "7#DM100(1)(30)");
    EXPECT_EQ(queuedLengths(), (Lengths{31, 36}));
}

// ---- Rejected replies ----------------------------------------------------------------------------------------------

TEST_F(Receive, RejectedReplyLeavesTheRequestAtTheHead)
{
    queueRead("DM", 100, 1);
    queueWrite();
    poll(2);
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(queuedLengths(), (Lengths{34, 36}));
    EXPECT_EQ(driver.errCount, 1);
    EXPECT_EQ(driver.connected, 1);
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_EQ(firstPolled(), 1000);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(Receive, RejectedReplyKeepsTheFailureOfTheLink)
{
    queueWrite();
    driver.commFailed = 1;
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(driver.commFailed, 1);
}

TEST_F(Receive, ThirdRejectedReplyOfThreeDropsTheLink)
{
    queueWrite();
    queueWrite(38);
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(driver.connected, 1);
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_EQ(driver.errCount, 2);
    EXPECT_EQ(dealStale(), 2);
    EXPECT_EQ(driver.connected, 0);
    EXPECT_EQ(driver.commFailed, 1);
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_EQ(driver.errCount, 0);
}

TEST_F(Receive, EmptyRepliesCountTowardsTheLimit)
{
    queueWrite();
    EXPECT_EQ(deal({}), 8);
    EXPECT_EQ(deal({}), 8);
    EXPECT_EQ(deal({}), 2);
}

TEST_F(Receive, FirstRejectedReplyDropsTheLinkWithALimitOfOneOrLess)
{
    for (const qint32 limit : {1, 0, -1, SMALLEST}) {
        driver.connected = 1;
        driver.retryLimit = limit;
        queueWrite();
        EXPECT_EQ(dealStale(), 2) << limit;
        EXPECT_EQ(driver.connected, 0) << limit;
    }
}

TEST_F(Receive, LossOfTheLinkFailsTheWriteInProgress)
{
    driver.retryLimit = 1;
    queueWrite();
    writePending();
    driver.writeList.append(variable(7, "DM", 101, 1));
    EXPECT_EQ(dealStale(), 2);
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.writeList.first().address, 101);
    EXPECT_EQ(plcWord("DM", 100), 3);
    EXPECT_EQ(word("DM", 100).writePending, 0);
}

TEST_F(Receive, LossOfTheLinkClosesThePollInProgress)
{
    driver.retryLimit = 1;
    queueRead("DM", 1000, 1);
    poll(2);
    EXPECT_EQ(dealStale(), 2);
    EXPECT_EQ(firstPolled(), 1001);
}

TEST_F(Receive, RejectedRepliesCountOnlyInARow)
{
    queueWrite();
    queueWrite();
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(dealAcknowledgement(), 1);
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(dealStale(), 8);
    EXPECT_EQ(dealStale(), 2);
}

// ---- Acknowledgements and the handshake ----------------------------------------------------------------------------

TEST_F(Receive, AcknowledgedWriteIsRetiredAndItsJobClosed)
{
    queueWrite();
    writePending();
    driver.errCount = 2;
    driver.commFailed = 1;
    EXPECT_EQ(dealAcknowledgement(), 1);
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(plcWord("DM", 100), 5);
    EXPECT_EQ(driver.errCount, 0);
    EXPECT_EQ(driver.commFailed, 0);
}

TEST_F(Receive, AcknowledgementWithMoreRequestsLeavesTheJobOpen)
{
    queueWrite();
    queueWrite(38);
    writePending();
    driver.errCount = 2;
    driver.commFailed = 1;
    EXPECT_EQ(dealAcknowledgement(), 1);
    EXPECT_EQ(queuedLengths(), Lengths{38});
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.errCount, 0);
    EXPECT_EQ(driver.commFailed, 0);
}

// Deliberate: the handshake that went out in place of a job's request completes that job.
TEST_F(Receive, HandshakeClosesTheJobThatWasNeverSent)
{
    driver.connected = 0;
    driver.writeList.append(variable(7, "DM", 100, 1));
    word("DM", 100).writeValue[0] = 5;
    word("DM", 100).writePending = 1;
    FRAME_PRO sent = FRAME_PRO();
    ASSERT_EQ(intf_getSendFrame(&sent), 1);
    ASSERT_EQ(sent.sendLen, 20);
    Bytes handshake(24, 0);
    handshake[19] = 9;
    handshake[23] = 8;
    EXPECT_EQ(deal(handshake), 1);
    EXPECT_EQ(driver.connected, 1);
    EXPECT_EQ(driver.srcNode[1], 9);
    EXPECT_EQ(driver.dstNode[1], 8);
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(plcWord("DM", 100), 5);
    EXPECT_EQ(word("DM", 100).writePending, 0);
}

// ---- Replies that the check does not give -------------------------------------------------------------------------

TEST_F(Receive, LateHandshakeLeavesTheRequests)
{
    queueWrite();
    poll(2);
    driver.errCount = 2;
    driver.commFailed = 1;
    EXPECT_EQ(dealCheckedReply(3, reply), 1);
    EXPECT_EQ(queuedLengths(), Lengths{36});
    EXPECT_EQ(firstPolled(), 1000);
    EXPECT_EQ(driver.errCount, 0);
    EXPECT_EQ(driver.commFailed, 0);
}

TEST_F(Receive, UnknownClassChangesNothing)
{
    queueWrite();
    driver.errCount = 2;
    driver.commFailed = 1;
    for (const int replyClass : {4, 5, LARGEST, -1, SMALLEST}) {
        EXPECT_EQ(dealCheckedReply(replyClass, reply), 0) << replyClass;
        EXPECT_EQ(queuedLengths(), Lengths{36});
        EXPECT_EQ(driver.errCount, 2);
        EXPECT_EQ(driver.commFailed, 1);
    }
}

// ---- Read data into the data image ---------------------------------------------------------------------------------

TEST_F(Receive, ReadDataEnterTheImageHighByteFirst)
{
    queueRead("DM", 100, 2);
    EXPECT_EQ(deal(readReply({0x12, 0x34, 0xAB, 0xCD})), 1);
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(plcWord("DM", 100), 0x1234);
    EXPECT_EQ(plcWord("DM", 101), 0xABCD);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(Receive, AcceptedReadIsRetiredAndItsJobClosed)
{
    queueRead("DM", 100, 1);
    poll(2);
    driver.errCount = 2;
    driver.commFailed = 1;
    EXPECT_EQ(deal(readReply({0, 1})), 1);
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_EQ(firstPolled(), 1001);
    EXPECT_EQ(driver.errCount, 0);
    EXPECT_EQ(driver.commFailed, 0);
}

TEST_F(Receive, AcceptedReadWithMoreRequestsLeavesTheJobOpen)
{
    queueRead("DM", 100, 1);
    queueWrite(38);
    poll(2);
    driver.errCount = 2;
    driver.commFailed = 1;
    EXPECT_EQ(deal(readReply({0, 1})), 1);
    EXPECT_EQ(queuedLengths(), Lengths{38});
    EXPECT_EQ(firstPolled(), 1000);
    EXPECT_EQ(driver.errCount, 0);
    EXPECT_EQ(driver.commFailed, 0);
}

TEST_F(Receive, AcceptedReadMakesItsJobASuccess)
{
    queueRead("DM", 100, 1);
    driver.jobType = JOB_CONDITION_READ;
    driver.commFailed = 1;
    driver.conditionReadList.append(variable(7, "DM", 100, 1));
    driver.conditionReadList.append(variable(7, "DM", 101, 1));
    driver.currentRead = variable(7, "DM", 100, 1);
    EXPECT_EQ(deal(readReply({0, 1})), 1);
    EXPECT_EQ(notifications(), (Notifications{{-1, -1, "-1", 0}}));
    EXPECT_EQ(driver.conditionReadList.size(), 1);
}

// Deliberate: a read that the PLC refused is stored as data.
TEST_F(Receive, ReadDataOfARefusedReadAreStored)
{
    queueRead("DM", 100, 1);
    Bytes refused = readReply({0x11, 0x22});
    refused[28] = 0x11;
    refused[29] = 0x01;
    EXPECT_EQ(deal(refused), 1);
    EXPECT_EQ(plcWord("DM", 100), 0x1122);
}

TEST_F(Receive, EveryReceivedWordClearsItsReceiveFlag)
{
    queueRead("DM", 100, 3);
    for (int i = 0; i < 4; ++i)
        word("DM", 100 + i).rcvFlag = 1;
    EXPECT_EQ(deal(readReply({0, 0, 0, 1, 0, 0})), 1);
    EXPECT_EQ(word("DM", 100).rcvFlag, 0);
    EXPECT_EQ(word("DM", 101).rcvFlag, 0);
    EXPECT_EQ(word("DM", 102).rcvFlag, 0);
    EXPECT_EQ(word("DM", 103).rcvFlag, 1);
}

TEST_F(Receive, OnlyTheChangedWordNotifies)
{
    queueRead("DM", 100, 2);
    word("DM", 100).wordMonitor = 1;
    word("DM", 101).wordMonitor = 1;
    word("DM", 101).plcValue[0] = 0x34;
    word("DM", 101).plcValue[1] = 0x12;
    EXPECT_EQ(deal(readReply({0x00, 0x01, 0x12, 0x34})), 1);
    EXPECT_EQ(notifications(), (Notifications{{2, 7, "DM", 100}}));
}

TEST_F(Receive, AChangeOfEitherByteIsAChange)
{
    word("DM", 100).wordMonitor = 1;
    word("DM", 100).plcValue[0] = 0x34;
    word("DM", 100).plcValue[1] = 0x12;
    queueRead("DM", 100, 1);
    EXPECT_EQ(deal(readReply({0x12, 0x35})), 1);
    EXPECT_EQ(notifications().size(), 1u);
    queueRead("DM", 100, 1);
    EXPECT_EQ(deal(readReply({0x13, 0x35})), 1);
    EXPECT_EQ(notifications().size(), 2u);
    EXPECT_EQ(plcWord("DM", 100), 0x1335);
}

TEST_F(Receive, ChangedBitsNotifyThenTheWord)
{
    queueRead("DM", 100, 1);
    word("DM", 100).wordMonitor = 1;
    word("DM", 100).bitMonitor = 0xFFFF;
    word("DM", 100).plcValue[0] = 0x01;
    word("DM", 100).plcValue[1] = 0x80;
    EXPECT_EQ(deal(readReply({0x01, 0x03})), 1);
    EXPECT_EQ(notifications(), (Notifications{{2, 7, "DM_bit", 1601},
                                              {2, 7, "DM_bit", 1608},
                                              {2, 7, "DM_bit", 1615},
                                              {2, 7, "DM", 100}}));
}

TEST_F(Receive, ChangedBitsOfSeveralWordsNotifyWordByWord)
{
    queueRead("DM", 100, 3);
    for (int i = 0; i < 3; ++i)
        word("DM", 100 + i).bitMonitor = 0x0003;
    EXPECT_EQ(deal(readReply({0, 1, 0, 0, 0, 3})), 1);
    EXPECT_EQ(notifications(), (Notifications{{2, 7, "DM_bit", 1600},
                                              {2, 7, "DM_bit", 1632},
                                              {2, 7, "DM_bit", 1633}}));
}

TEST_F(Receive, LongReadEndsAtItsCount)
{
    for (int i = 0; i < 140; ++i) {
        word("DM", 100 + i).rcvFlag = 1;
        word("DM", 100 + i).plcValue[0] = 0xEE;
    }
    queueRead("DM", 100, 130);
    EXPECT_EQ(deal(readReply(numberedWords(130))), 1);
    for (int i = 0; i < 130; ++i)
        EXPECT_EQ(plcWord("DM", 100 + i), 0x0100 + i);
    for (int i = 130; i < 140; ++i) {
        EXPECT_EQ(plcWord("DM", 100 + i), 0xEE) << i;
        EXPECT_EQ(word("DM", 100 + i).rcvFlag, 1) << i;
    }
}

TEST_F(Receive, TheSameHighAndLowByteLeaveAPendingWrite)
{
    queueRead("DM", 100, 1);
    word("DM", 100).plcValue[0] = 0x34;
    word("DM", 100).plcValue[1] = 0x12;
    word("DM", 100).writePending = 1;
    EXPECT_EQ(deal(readReply({0x12, 0x34})), 1);
    EXPECT_EQ(word("DM", 100).writePending, 1);
}

TEST_F(Receive, ADifferentValueEndsAPendingWrite)
{
    queueRead("DM", 100, 1);
    word("DM", 100).writePending = 1;
    word("DM", 100).writeValue[0] = 5;
    EXPECT_EQ(deal(readReply({0, 9})), 1);
    EXPECT_EQ(word("DM", 100).writePending, 0);
    EXPECT_EQ(plcWord("DM", 100), 9);
}

TEST_F(Receive, TheSameValueLeavesAPendingWrite)
{
    queueRead("DM", 100, 1);
    word("DM", 100).plcValue[0] = 9;
    word("DM", 100).writePending = 1;
    word("DM", 100).writeValue[0] = 5;
    EXPECT_EQ(deal(readReply({0, 9})), 1);
    EXPECT_EQ(word("DM", 100).writePending, 1);
    EXPECT_EQ(word("DM", 100).writeValue[0], 5);
    EXPECT_EQ(plcWord("DM", 100), 9);
}

TEST_F(Receive, ChangeIsJudgedAgainstThePlcValueNotThePendingWrite)
{
    queueRead("DM", 100, 1);
    word("DM", 100).bitMonitor = 0xFFFF;
    word("DM", 100).plcValue[0] = 0x02;
    word("DM", 100).writePending = 1;
    word("DM", 100).writeValue[0] = 0x01;
    EXPECT_EQ(deal(readReply({0, 0x01})), 1);
    EXPECT_EQ(notifications(), (Notifications{{2, 7, "DM_bit", 1600}, {2, 7, "DM_bit", 1601}}));
}

TEST_F(Receive, CallbackSeesThePlcValueFromBeforeTheStore)
{
    driver.valueChangeCallback = &Receive::readBack;
    queueRead("DM", 100, 1);
    word("DM", 100).wordMonitor = 1;
    word("DM", 100).plcValue[0] = 3;
    word("DM", 100).writePending = 1;
    word("DM", 100).writeValue[0] = 5;
    EXPECT_EQ(deal(readReply({0, 9})), 1);
    EXPECT_EQ(seen(), std::vector<int>{3});
    EXPECT_EQ(plcWord("DM", 100), 9);
}

TEST_F(Receive, CallbackMayMakeTheImageLonger)
{
    driver.valueChangeCallback = &Receive::readBack;
    queueRead("DM", 100, 3);
    for (int i = 0; i < 3; ++i)
        word("DM", 100 + i).wordMonitor = 1;
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22, 0x31, 0x32})), 1);
    EXPECT_EQ(driver.dataAreas.size(), 603);
    EXPECT_EQ(plcWord("DM", 100), 0x1112);
    EXPECT_EQ(plcWord("DM", 101), 0x2122);
    EXPECT_EQ(plcWord("DM", 102), 0x3132);
    EXPECT_EQ(notifications(), (Notifications{{2, 7, "DM", 100}, {2, 7, "DM", 101}, {2, 7, "DM", 102}}));
}

TEST_F(Receive, CallbacksRunWithTheMutexFree)
{
    driver.valueChangeCallback = &Receive::tryMutex;
    queueRead("DM", 100, 1);
    word("DM", 100).wordMonitor = 1;
    EXPECT_EQ(deal(readReply({0, 1})), 1);
    EXPECT_EQ(seen(), std::vector<int>{1});
}

TEST_F(Receive, WordAddressesWrap)
{
    queueRead("DM", LARGEST, 2);
    EXPECT_EQ(deal(readReply({0, 1, 0, 2})), 1);
    EXPECT_EQ(plcWord("DM", LARGEST), 1);
    EXPECT_EQ(plcWord("DM", SMALLEST), 2);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

// The read builder asks for words under the bit type's own name.
TEST_F(Receive, ReadOfABitTypeIsStoredUnderItsOwnName)
{
    queueRead("CIO_bit", 1605, 1);
    EXPECT_EQ(deal(readReply({0x12, 0x34})), 1);
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(plcWord("CIO_bit", 1605), 0x1234);
    EXPECT_EQ(driver.dataAreas.size(), 1);
}

TEST_F(Receive, DataOutsideTheReplyReadAsZero)
{
    queueRead("DM", 100, 3);
    driver.frameList.first().rcvLen = 33;
    for (int i = 0; i < 3; ++i) {
        word("DM", 100 + i).plcValue[0] = 0xEE;
        word("DM", 100 + i).plcValue[1] = 0xEE;
    }
    EXPECT_EQ(deal(readReply({0x12, 0x34, 0x56})), 1);
    EXPECT_EQ(plcWord("DM", 100), 0x1234);
    EXPECT_EQ(plcWord("DM", 101), 0x5600);
    EXPECT_EQ(plcWord("DM", 102), 0);
    EXPECT_EQ(driver.dataAreas.size(), 3);
}

TEST_F(Receive, DataMissingFromALongReplyReadAsZero)
{
    // Of 70 words the reply holds 66 and the first byte of the next.
    queueRead("DM", 100, 70);
    driver.frameList.first().rcvLen = 30 + 2 * 66 + 1;
    for (int i = 0; i < 70; ++i)
        word("DM", 100 + i).plcValue[0] = 0xEE;
    Bytes data = numberedWords(70);
    data.resize(2 * 66 + 1);
    EXPECT_EQ(deal(readReply(data)), 1);
    for (int i = 0; i < 66; ++i)
        EXPECT_EQ(plcWord("DM", 100 + i), 0x0100 + i);
    EXPECT_EQ(plcWord("DM", 166), 0x0100);
    for (int i = 67; i < 70; ++i)
        EXPECT_EQ(plcWord("DM", 100 + i), 0) << i;
}

TEST_F(Receive, LastWordMissingReadsAsZero)
{
    queueRead("DM", 100, 64);
    driver.frameList.first().rcvLen = 30 + 2 * 63;
    for (int i = 0; i < 64; ++i)
        word("DM", 100 + i).plcValue[0] = 0xEE;
    EXPECT_EQ(deal(readReply(numberedWords(63))), 1);
    for (int i = 0; i < 63; ++i)
        EXPECT_EQ(plcWord("DM", 100 + i), 0x0100 + i);
    EXPECT_EQ(plcWord("DM", 163), 0);
}

TEST_F(Receive, WordsThatTheImageLacksMoveNoOther)
{
    for (int i = 1; i < 4; ++i)
        word("DM", 100 + i).plcValue[0] = 0xEE;
    queueRead("DM", 100, 10);
    EXPECT_EQ(deal(readReply(numberedWords(10))), 1);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(plcWord("DM", 100 + i), 0x0100 + i);
}

TEST_F(Receive, DataBeforeTheReplyReadAsZero)
{
    // Of the words at -4, -2 and 0 only the last lies in the reply.
    queueRead("DM", 100, 3);
    driver.frameList.first().rcvLen = 33;
    driver.frameList.first().dataPos = -4;
    for (int i = 0; i < 3; ++i)
        word("DM", 100 + i).plcValue[0] = 0xEE;
    Bytes bytes = readReply({0x12, 0x34, 0x56});
    bytes[0] = 0x46;
    bytes[1] = 0x49;
    EXPECT_EQ(deal(bytes), 1);
    EXPECT_EQ(plcWord("DM", 100), 0);
    EXPECT_EQ(plcWord("DM", 101), 0);
    EXPECT_EQ(plcWord("DM", 102), 0x4649);
}

TEST_F(Receive, ReadWithANegativeLengthStoresNothing)
{
    queueRead("DM", 100, -15);
    driver.sid = 0;
    poll(2);
    EXPECT_EQ(deal({}), 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_EQ(firstPolled(), 1001);
}

// ---- Recipe reads --------------------------------------------------------------------------------------------------

/// Three blocks: DM 100 to 103 (variables at 100 and 103), DM 200 to 202 (200 with two words, 202), DM 300.
class ReceiveRecipe : public Receive {
protected:
    ReceiveRecipe()
    {
        driver.jobType = JOB_RECIPE_READ;
        driver.recipeVars << recipeVariable(100, 1, 0) << recipeVariable(103, 1, 10) << recipeVariable(200, 2, 20)
                          << recipeVariable(202, 1, 5) << recipeVariable(300, 1, 30);
        driver.recipeBlockStart << 0 << 2 << 4;
        driver.recipeBlocks << recipeVariable(100, 4, 0) << recipeVariable(200, 3, 20) << recipeVariable(300, 1, 30);
        std::fill(recipeWords.begin(), recipeWords.end(), quint16(0xEEEE));
        sharedBlock[RECIPE_READ_FLAG] = 1;
    }

    /// Word of the recipe buffer, low byte first.
    int recipeWord(int index) const
    {
        const quint8 *bytes = reinterpret_cast<const quint8 *>(recipeWords.data()) + 2 * index;
        return bytes[0] + 256 * bytes[1];
    }

    int changedRecipeWords() const
    {
        return static_cast<int>(recipeWords.size() - static_cast<std::size_t>(
            std::count(recipeWords.begin(), recipeWords.end(), quint16(0xEEEE))));
    }

    static void readRecipeBuffer(qint32, qint32, QString regType, qint32 index)
    {
        if (regType != QLatin1String("RWI"))
            return;
        seen().push_back(driver.recipeBuffer[index]);
        seen().push_back(driver.recipeBuffer[20] == 0xEEEE);
    }
};

TEST_F(ReceiveRecipe, PlacesEachVariableAtItsOwnOffset)
{
    queueRead("DM", 100, 4);
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22, 0x31, 0x32, 0x41, 0x42})), 1);
    EXPECT_EQ(recipeWord(0), 0x1112);
    EXPECT_EQ(recipeWord(10), 0x4142);
    EXPECT_EQ(changedRecipeWords(), 2);
    EXPECT_EQ(notifications(), (Notifications{{0, -1, "RWI", 0}, {0, -1, "RWI", 10}}));
}

TEST_F(ReceiveRecipe, PlacesEveryWordOfAMiddleBlock)
{
    driver.recipeIndex = 1;
    queueRead("DM", 200, 3);
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22, 0x31, 0x32})), 1);
    EXPECT_EQ(recipeWord(20), 0x1112);
    EXPECT_EQ(recipeWord(21), 0x2122);
    EXPECT_EQ(recipeWord(5), 0x3132);
    EXPECT_EQ(changedRecipeWords(), 3);
    EXPECT_EQ(notifications(), (Notifications{{0, -1, "RWI", 20}, {0, -1, "RWI", 21}, {0, -1, "RWI", 5}}));
}

TEST_F(ReceiveRecipe, LastBlockEndsWithTheVariables)
{
    driver.recipeIndex = 2;
    driver.recipeVars << recipeVariable(301, 1, 40);
    queueRead("DM", 300, 2);
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22})), 1);
    EXPECT_EQ(recipeWord(30), 0x1112);
    EXPECT_EQ(recipeWord(40), 0x2122);
    EXPECT_EQ(changedRecipeWords(), 2);
}

TEST_F(ReceiveRecipe, WordsEnterTheImageToo)
{
    queueRead("DM", 100, 4);
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22, 0x31, 0x32, 0x41, 0x42})), 1);
    EXPECT_EQ(driver.dataAreas.size(), 4);
    EXPECT_EQ(plcWord("DM", 100), 0x1112);
    EXPECT_EQ(plcWord("DM", 103), 0x4142);
}

TEST_F(ReceiveRecipe, ChangesOfWatchedWordsAreReportedFirst)
{
    word("DM", 103).wordMonitor = 1;
    queueRead("DM", 100, 4);
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22, 0x31, 0x32, 0x41, 0x42})), 1);
    EXPECT_EQ(notifications(), (Notifications{{2, 7, "DM", 103}, {0, -1, "RWI", 0}, {0, -1, "RWI", 10}}));
}

TEST_F(ReceiveRecipe, UnchangedWordsArePlacedAndReported)
{
    for (int i = 0; i < 4; ++i)
        word("DM", 100 + i).plcValue[0] = 1;
    queueRead("DM", 100, 4);
    EXPECT_EQ(deal(readReply({0, 1, 0, 1, 0, 1, 0, 1})), 1);
    EXPECT_EQ(recipeWord(0), 1);
    EXPECT_EQ(notifications(), (Notifications{{0, -1, "RWI", 0}, {0, -1, "RWI", 10}}));
}

TEST_F(ReceiveRecipe, EachWordIsReportedAfterItsOwnStore)
{
    driver.valueChangeCallback = &ReceiveRecipe::readRecipeBuffer;
    driver.recipeIndex = 1;
    driver.recipeVars[2].bufferOffset = 19;
    queueRead("DM", 200, 3);
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22, 0x31, 0x32})), 1);
    // Words 19, 20 and 5; word 20 is still untouched when word 19 is reported.
    EXPECT_EQ(seen(), (std::vector<int>{0x1112, 1, 0x2122, 0, 0x3132, 0}));
}

TEST_F(ReceiveRecipe, CallbacksRunWithTheMutexFree)
{
    driver.valueChangeCallback = &Receive::tryMutex;
    driver.recipeIndex = 2;
    queueRead("DM", 300, 1);
    EXPECT_EQ(deal(readReply({0, 1})), 1);
    EXPECT_EQ(seen(), std::vector<int>{1});
    EXPECT_EQ(sharedBlock[RECIPE_READ_FLAG], 0);
    ASSERT_TRUE(mutex.tryLock());
    mutex.unlock();
}

TEST_F(ReceiveRecipe, BlockIsRetiredAndTheNextIsDue)
{
    driver.errCount = 1;
    queueRead("DM", 100, 4);
    EXPECT_EQ(deal(readReply(Bytes(8, 0))), 1);
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_EQ(driver.recipeIndex, 1);
    EXPECT_EQ(driver.errCount, 0);
    EXPECT_EQ(sharedBlock[RECIPE_READ_FLAG], 1);
}

TEST_F(ReceiveRecipe, OtherJobsPlaceNothing)
{
    driver.jobType = JOB_POLL;
    queueRead("DM", 100, 4);
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21, 0x22, 0x31, 0x32, 0x41, 0x42})), 1);
    EXPECT_EQ(plcWord("DM", 100), 0x1112);
    EXPECT_EQ(changedRecipeWords(), 0);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(ReceiveRecipe, IndexOutsideTheBlocksPlacesNothing)
{
    for (const qint32 index : {3, 4, -1, -100}) {
        driver.recipeIndex = index;
        queueRead("DM", 100, 1);
        EXPECT_EQ(deal(readReply({0x11, 0x12})), 1) << index;
        EXPECT_EQ(plcWord("DM", 100), 0x1112) << index;
        EXPECT_EQ(changedRecipeWords(), 0) << index;
    }
    EXPECT_TRUE(notifications().empty());
}

TEST_F(ReceiveRecipe, WithoutABufferPlacesNothing)
{
    driver.recipeBuffer = nullptr;
    queueRead("DM", 100, 1);
    EXPECT_EQ(deal(readReply({0x11, 0x12})), 1);
    EXPECT_EQ(plcWord("DM", 100), 0x1112);
    EXPECT_TRUE(notifications().empty());
    EXPECT_EQ(driver.recipeIndex, 1);
}

TEST_F(ReceiveRecipe, WithoutAPlanPlacesNothing)
{
    driver.recipeBlockStart.clear();
    driver.recipeVars.clear();
    queueRead("DM", 100, 1);
    EXPECT_EQ(deal(readReply({0x11, 0x12})), 1);
    EXPECT_EQ(plcWord("DM", 100), 0x1112);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(ReceiveRecipe, WordsOutsideTheReplyReadAsZero)
{
    // The reply holds word 100 and the high byte of word 101.
    driver.recipeVars[0].count = 2;
    queueRead("DM", 100, 1);
    driver.frameList.first().rcvLen = 33;
    EXPECT_EQ(deal(readReply({0x11, 0x12, 0x21})), 1);
    EXPECT_EQ(recipeWord(0), 0x1112);
    EXPECT_EQ(recipeWord(1), 0x2100);
    EXPECT_EQ(recipeWord(10), 0);
    EXPECT_EQ(notifications(), (Notifications{{0, -1, "RWI", 0}, {0, -1, "RWI", 1}, {0, -1, "RWI", 10}}));
}

TEST_F(ReceiveRecipe, VariableFarOutsideTheReplyReadsAsZero)
{
    driver.recipeVars[1].address = SMALLEST;
    queueRead("DM", 100, 1);
    EXPECT_EQ(deal(readReply({0x11, 0x12})), 1);
    EXPECT_EQ(recipeWord(0), 0x1112);
    EXPECT_EQ(recipeWord(10), 0);
}

// ---- Read-modify-write ---------------------------------------------------------------------------------------------

/// A write job whose read is answered: DM_bit from 100.5 on, and behind it the prepared frame "123456789...".
class ReceiveReadModifyWrite : public Receive {
protected:
    ReceiveReadModifyWrite() { driver.jobType = JOB_WRITE; }

    static void queuePair(qint32 bitAddress, const Bytes &bits, qint32 words, qint32 sendLen)
    {
        queueRead("DM_bit", bitAddress, words);
        driver.frameList.first().count = static_cast<qint32>(bits.size());
        std::copy(bits.begin(), bits.end(), driver.frameList.first().value);
        FRAME_PRO prepared = FRAME_PRO();
        prepared.sendLen = sendLen;
        for (int i = 0; i < VALUE_BUFFER_SIZE; ++i)
            prepared.frame[i] = quint8('1' + i % 9);
        driver.frameList.append(prepared);
    }

    /// Bytes `begin` to `end` - 1 of the frame that is left in the queue.
    static Bytes prepared(int begin, int end)
    {
        const FRAME_PRO &request = driver.frameList.first();
        return Bytes(request.frame + begin, request.frame + end);
    }

    Bytes replyBytes(int begin, int end) const
    {
        Bytes bytes;
        for (int i = begin; i < end; ++i)
            bytes.push_back(static_cast<quint8>(reply.at(i)));
        return bytes;
    }
};

// 123456789 is the usual check text of this CRC; its check value is 4B37.
TEST_F(ReceiveReadModifyWrite, PutsTheBitsIntoTheWordAndClosesTheFrame)
{
    // Bits 5 to 11 of the word 37D9 become 1, 0, 0, 0, 0, 0, 1: 3839, "89".
    queuePair(1605, {1, 0, 0, 0, 0, 0, 2}, 1, 11);
    EXPECT_EQ(deal(readReply({0x37, 0xD9})), 1);
    EXPECT_EQ(prepared(0, 12), (Bytes{'1', '2', '3', '4', '5', '6', '7', 0x38, 0x39, 0x37, 0x4B, '3'}));
}

TEST_F(ReceiveReadModifyWrite, SwapsTheReplysWordsInPlace)
{
    queuePair(1605, {1, 0, 0, 0, 0, 0, 2}, 1, 11);
    EXPECT_EQ(deal(readReply({0x37, 0xD9})), 1);
    EXPECT_EQ(replyBytes(30, 32), (Bytes{0x39, 0x38}));
}

TEST_F(ReceiveReadModifyWrite, LeavesWhatStandsBeforeTheData)
{
    queuePair(1605, {1, 0, 0, 0, 0, 0, 2}, 1, 11);
    Bytes bytes = readReply({0x37, 0xD9});
    bytes[28] = 0x12;
    bytes[29] = 0x34;
    EXPECT_EQ(deal(bytes), 1);
    EXPECT_EQ(replyBytes(28, 32), (Bytes{0x12, 0x34, 0x39, 0x38}));
}

TEST_F(ReceiveReadModifyWrite, ReadsBackWhatItWroteIntoAReplyOfWhichTheRuntimeHoldsACopy)
{
    queuePair(1605, {1, 0, 0, 0, 0, 0, 2}, 1, 11);
    reply = byteArray(readReply({0x37, 0xD9}));
    const QByteArray copy = reply;
    EXPECT_EQ(intf_dealRcvFrame(reply, info), 1);
    EXPECT_EQ(prepared(7, 9), (Bytes{0x38, 0x39}));
    EXPECT_EQ(copy, byteArray(readReply({0x37, 0xD9})));
}

TEST_F(ReceiveReadModifyWrite, BitsMayCrossIntoTheNextWord)
{
    // Bits 14 to 17 of 1234 ABCD become 1, 0, 0, 1: 5234 ABCE; the CRC of "1234567" and these is B824.
    queuePair(1614, {1, 0, 0, 1}, 2, 13);
    EXPECT_EQ(deal(readReply({0x12, 0x34, 0xAB, 0xCD})), 1);
    EXPECT_EQ(prepared(6, 14), (Bytes{'7', 0x52, 0x34, 0xAB, 0xCE, 0x24, 0xB8, '5'}));
}

TEST_F(ReceiveReadModifyWrite, OddLengthLeavesTheByteBeforeTheCrc)
{
    // The CRC is taken over ten bytes, "1234567891": 02CB.
    queuePair(1605, {1, 0, 0, 0, 0, 0, 2}, 1, 12);
    EXPECT_EQ(deal(readReply({0x37, 0xD9})), 1);
    EXPECT_EQ(prepared(7, 13), (Bytes{0x38, 0x39, '1', 0xCB, 0x02, '4'}));
}

TEST_F(ReceiveReadModifyWrite, BytesOutsideTheReplyReadAsZero)
{
    queuePair(1600, {}, 1, 13);
    EXPECT_EQ(deal(readReply({0x38, 0x39})), 1);
    EXPECT_EQ(prepared(7, 11), (Bytes{0x38, 0x39, 0, 0}));
}

TEST_F(ReceiveReadModifyWrite, LeavesTheWriteInTheQueueAndTheJobOpen)
{
    driver.writeList.append(variable(7, "DM_bit", 1605, 1));
    driver.errCount = 2;
    driver.commFailed = 1;
    queuePair(1605, {1}, 1, 11);
    EXPECT_EQ(deal(readReply({0, 0})), 1);
    EXPECT_EQ(queuedLengths(), Lengths{11});
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.errCount, 0);
    EXPECT_EQ(driver.commFailed, 0);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(ReceiveReadModifyWrite, TouchesOnlyTheReceiveFlagOfTheWord)
{
    word("DM", 100).rcvFlag = 1;
    word("DM", 100).wordMonitor = 1;
    word("DM", 100).writePending = 1;
    queuePair(1605, {1}, 1, 11);
    EXPECT_EQ(deal(readReply({0x37, 0xD9})), 1);
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(word("DM", 100).rcvFlag, 0);
    EXPECT_EQ(word("DM", 100).writePending, 1);
    EXPECT_EQ(plcWord("DM", 100), 0);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(ReceiveReadModifyWrite, CreatesTheWord)
{
    queuePair(1605, {1}, 1, 11);
    EXPECT_EQ(deal(readReply({0, 0})), 1);
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().requestTag, 7);
    EXPECT_EQ(driver.dataAreas.first().regType.toStdString(), "DM");
    EXPECT_EQ(driver.dataAreas.first().address, 100);
}

TEST_F(ReceiveReadModifyWrite, WithoutAPreparedFrameClosesTheJob)
{
    driver.writeList.append(variable(7, "DM_bit", 1605, 1));
    queueRead("DM_bit", 1605, 1);
    EXPECT_EQ(deal(readReply({0, 0})), 1);
    EXPECT_TRUE(driver.frameList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
}

TEST_F(ReceiveReadModifyWrite, ShortestFrameIsOnlyItsCrc)
{
    queuePair(1605, {1}, 1, 2);
    EXPECT_EQ(deal(readReply({0x37, 0xD9})), 1);
    EXPECT_EQ(prepared(0, 3), (Bytes{0xFF, 0xFF, '3'}));
    EXPECT_EQ(prepared(7, 9), (Bytes{'8', '9'}));
}

TEST_F(ReceiveReadModifyWrite, FrameLengthsOutsideTheBufferAreSafe)
{
    for (const qint32 sendLen : {1, 0, -1, SMALLEST, 1025, 1026, 1027, 5000, LARGEST}) {
        driver.frameList.clear();
        queuePair(1605, {1}, 1, sendLen);
        EXPECT_EQ(deal(readReply({0x37, 0xD9})), 1) << sendLen;
        EXPECT_EQ(queuedLengths(), Lengths{sendLen});
        EXPECT_EQ(driver.frameList.first().rcvLen, 0) << sendLen;
    }
}

TEST_F(ReceiveReadModifyWrite, LongestFrameKeepsItsCrcInTheBuffer)
{
    queuePair(1600, {}, 1, 1024);
    EXPECT_EQ(deal(readReply({0x38, 0x39})), 1);
    // (1024 - 9) / 2 = 507 words end at byte 1020; byte 1021 stays; the CRC of the first 1022 bytes is 2A47.
    EXPECT_EQ(prepared(7, 11), (Bytes{0x38, 0x39, 0, 0}));
    EXPECT_EQ(prepared(1019, 1022), (Bytes{0, 0, '5'}));
    EXPECT_EQ(prepared(1022, 1024), (Bytes{0x47, 0x2A}));
}

TEST_F(ReceiveReadModifyWrite, BitsOutsideTheReplyAreDropped)
{
    queuePair(1614, {0, 0, 1, 1, 1, 1}, 1, 13);
    EXPECT_EQ(deal(readReply({0xFF, 0xFF})), 1);
    EXPECT_EQ(prepared(7, 11), (Bytes{0x3F, 0xFF, 0, 0}));
}

TEST_F(ReceiveReadModifyWrite, ByteBehindTheReplyIsDropped)
{
    queuePair(1600, {}, 1, 11);
    driver.frameList.first().rcvLen = 31;
    EXPECT_EQ(deal(readReply({0x37})), 1);
    EXPECT_EQ(reply.size(), 31);
    EXPECT_EQ(reply.constData()[30], 0);
    EXPECT_EQ(reply.constData()[31], 0) << "the array's own end mark";
}

TEST_F(ReceiveReadModifyWrite, WordsBehindTheRequestedOnesStayAsTheyCame)
{
    queuePair(1600, {1}, 1, 11);
    driver.frameList.first().rcvLen = 34;
    EXPECT_EQ(deal(readReply({0x37, 0xD8, 0x12, 0x34})), 1);
    EXPECT_EQ(replyBytes(30, 34), (Bytes{0xD9, 0x37, 0x12, 0x34}));
}

TEST_F(ReceiveReadModifyWrite, BitsBelowAddressZeroAreDropped)
{
    // Bits -3 to 1: the first three have no place, the others are bits 0 and 1 of the word.
    queuePair(-3, {1, 1, 1, 1, 0}, 1, 11);
    EXPECT_EQ(deal(readReply({0x00, 0x02})), 1);
    EXPECT_EQ(prepared(7, 9), (Bytes{0x00, 0x01}));
    EXPECT_EQ(replyBytes(26, 30), (Bytes{0, 0, 0, 0}));
}

TEST_F(ReceiveReadModifyWrite, WordsBeforeTheReplyAreDropped)
{
    queuePair(1600, {1, 1}, 1, 11);
    driver.frameList.first().dataPos = -1;
    Bytes bytes = readReply({0x37, 0xD9});
    bytes[0] = 0x46;
    EXPECT_EQ(deal(bytes), 1);
    // The word's first byte lies before the reply, so the second, which it takes in its place, becomes 0.
    EXPECT_EQ(replyBytes(0, 2), (Bytes{0, 0}));
    EXPECT_EQ(prepared(7, 9), (Bytes{0, 0}));
}

TEST_F(ReceiveReadModifyWrite, MoreBitsThanTheValueBufferAreSafe)
{
    queuePair(1600, {1}, 1, 11);
    driver.frameList.first().count = 100000;
    EXPECT_EQ(deal(readReply({0x38, 0x38})), 1);
    EXPECT_EQ(prepared(7, 9), (Bytes{0x00, 0x01}));
}

TEST_F(ReceiveReadModifyWrite, RecipePlanIsNotTouched)
{
    driver.recipeVars << recipeVariable(100, 1, 0);
    driver.recipeBlockStart << 0;
    queuePair(1605, {1}, 1, 11);
    EXPECT_EQ(deal(readReply({0x37, 0xD9})), 1);
    EXPECT_EQ(recipeWords[0], 0);
    EXPECT_TRUE(notifications().empty());
}

} // namespace
