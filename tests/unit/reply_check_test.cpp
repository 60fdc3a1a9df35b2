#include "driver_fixture.h"
#include "fins/frame_builder.h"
#include "fins/reply_check.h"

namespace {

typedef std::vector<quint8> Reply;

/// A request of which the reply check knows the lengths.
FRAME_PRO request(qint32 sendLen, qint32 rcvLen, qint32 dataLen)
{
    FRAME_PRO result = FRAME_PRO();
    result.sendLen = sendLen;
    result.rcvLen = rcvLen;
    result.dataLen = dataLen;
    return result;
}

/// `length` bytes AA with a service ID and an end code.
Reply reply(std::size_t length, quint8 serviceId, int endCode)
{
    Reply bytes(length, 0xAA);
    bytes[25] = serviceId;
    bytes[28] = quint8(endCode >> 8);
    bytes[29] = quint8(endCode & 0xFF);
    return bytes;
}

int check(const Reply &bytes) { return check_rcv_data(bytes.data(), static_cast<int>(bytes.size())); }

/// Connected, newest service ID C8 (hex).
class ReplyCheck : public DriverTest {
protected:
    ReplyCheck()
    {
        driver.connected = 1;
        driver.sid = 0xC8;
    }

    static void queueRead() { driver.frameList.append(request(34, 50, 20)); }
    static void queueWrite() { driver.frameList.append(request(36, 30, 0)); }

    static std::vector<qint32> queuedLengths()
    {
        std::vector<qint32> lengths;
        for (int i = 0; i < driver.frameList.size(); ++i)
            lengths.push_back(driver.frameList.at(i).sendLen);
        return lengths;
    }
};

typedef std::vector<qint32> Lengths;

// ---- Length and service ID -----------------------------------------------------------------------------------------

TEST_F(ReplyCheck, ReadReplyOfTheRightLengthAndServiceIdCarriesData)
{
    queueRead();
    EXPECT_EQ(check(reply(50, 0xC8, 0x0000)), REPLY_READ);
}

TEST_F(ReplyCheck, ReadReplyOneByteTooShortOrTooLongIsRejected)
{
    queueRead();
    EXPECT_EQ(check(reply(49, 0xC8, 0x0000)), REPLY_REJECTED);
    EXPECT_EQ(check(reply(51, 0xC8, 0x0000)), REPLY_REJECTED);
}

TEST_F(ReplyCheck, EmptyReplyIsRejected)
{
    queueRead();
    EXPECT_EQ(check_rcv_data(nullptr, 0), REPLY_REJECTED);
}

TEST_F(ReplyCheck, WriteReplyOneByteTooShortOrTooLongIsRejected)
{
    queueWrite();
    // The wrong length is judged before the end code, so that no mode change is queued.
    EXPECT_EQ(check(reply(31, 0xC8, 0x2203)), REPLY_REJECTED);
    EXPECT_EQ(check_rcv_data(reply(30, 0xC8, 0x2203).data(), 29), REPLY_REJECTED);
    EXPECT_EQ(queuedLengths(), Lengths{36});
}

TEST_F(ReplyCheck, OnlyTheHeadIsLookedAt)
{
    queueWrite();
    queueRead();
    EXPECT_EQ(check(reply(50, 0xC8, 0x0000)), REPLY_REJECTED);
    EXPECT_EQ(check(reply(30, 0xC8, 0x0000)), REPLY_ACKNOWLEDGED);
}

TEST_F(ReplyCheck, StaleServiceIdIsRejected)
{
    queueRead();
    EXPECT_EQ(check(reply(50, 0xC7, 0x0000)), REPLY_REJECTED);
    EXPECT_EQ(check(reply(50, 0xC9, 0x0000)), REPLY_REJECTED);
}

TEST_F(ReplyCheck, StaleServiceIdOfAWriteIsRejectedBeforeItsEndCode)
{
    queueWrite();
    EXPECT_EQ(check(reply(30, 0xC7, 0x2203)), REPLY_REJECTED);
    EXPECT_EQ(queuedLengths(), Lengths{36});
}

TEST_F(ReplyCheck, ServiceIdIsComparedWithTheNewestRequestNotWithTheHead)
{
    queueRead();
    driver.frameList.first().frame[25] = 0x11;
    EXPECT_EQ(check(reply(50, 0x11, 0x0000)), REPLY_REJECTED);
    EXPECT_EQ(check(reply(50, 0xC8, 0x0000)), REPLY_READ);
}

TEST_F(ReplyCheck, BytesOutsideTheReplyReadAsZero)
{
    Reply bytes = reply(50, 0xC8, 0x2203);
    driver.frameList.append(request(36, 25, 0));
    EXPECT_EQ(check_rcv_data(bytes.data(), 25), REPLY_REJECTED) << "service ID";
    driver.sid = 0;
    EXPECT_EQ(check_rcv_data(bytes.data(), 25), REPLY_ACKNOWLEDGED) << "service ID";
    driver.sid = 0xC8;
    driver.frameList.first().rcvLen = 28;
    EXPECT_EQ(check_rcv_data(bytes.data(), 28), REPLY_ACKNOWLEDGED) << "main end code";
    driver.frameList.first().rcvLen = 29;
    EXPECT_EQ(check_rcv_data(bytes.data(), 29), REPLY_ACKNOWLEDGED) << "sub end code";
}

// ---- Handshake -----------------------------------------------------------------------------------------------------

class ReplyCheckHandshake : public ReplyCheck {
protected:
    ReplyCheckHandshake()
    {
        driver.connected = 0;
        driver.frameList.append(request(20, 24, 0));
    }

    static Reply handshakeReply()
    {
        Reply bytes(24, 0xAA);
        bytes[19] = 0x9C;
        bytes[23] = 0xE1;
        return bytes;
    }

    static void expectNodes(const std::vector<qint32> &source, const std::vector<qint32> &destination)
    {
        EXPECT_TRUE(std::equal(source.begin(), source.end(), driver.srcNode));
        EXPECT_TRUE(std::equal(destination.begin(), destination.end(), driver.dstNode));
    }
};

TEST_F(ReplyCheckHandshake, GivesTheNodesAndConnects)
{
    EXPECT_EQ(check(handshakeReply()), REPLY_ACKNOWLEDGED);
    EXPECT_EQ(driver.connected, 1);
    expectNodes({0, 0x9C, 0}, {0, 0xE1, 0});
    EXPECT_EQ(driver.frameList.size(), 1);
}

TEST_F(ReplyCheckHandshake, OneByteTooShortOrTooLongIsRejected)
{
    Reply bytes = handshakeReply();
    bytes.push_back(0);
    EXPECT_EQ(check(bytes), REPLY_REJECTED);
    EXPECT_EQ(check_rcv_data(bytes.data(), 23), REPLY_REJECTED);
    EXPECT_EQ(driver.connected, 0);
    expectNodes({0, 0, 0}, {0, 0, 0});
}

TEST_F(ReplyCheckHandshake, WhateverReplyOfThatLengthArrivesFirstCompletesIt)
{
    EXPECT_EQ(check(Reply(24, 0)), REPLY_ACKNOWLEDGED);
    EXPECT_EQ(driver.connected, 1);
}

TEST_F(ReplyCheckHandshake, BytesOutsideTheReplyReadAsZero)
{
    driver.srcNode[1] = 1;
    driver.dstNode[1] = 2;
    driver.frameList.first().rcvLen = 19;
    EXPECT_EQ(check_rcv_data(handshakeReply().data(), 19), REPLY_ACKNOWLEDGED);
    expectNodes({0, 0, 0}, {0, 0, 0});
}

TEST_F(ReplyCheckHandshake, FirstReplyToAnyHeadCompletesIt)
{
    driver.frameList.clear();
    queueRead();
    Reply bytes = reply(50, 0x00, 0x0000);
    bytes[19] = 3;
    bytes[23] = 4;
    EXPECT_EQ(check(bytes), REPLY_ACKNOWLEDGED);
    expectNodes({0, 3, 0}, {0, 4, 0});
    EXPECT_EQ(check(reply(50, 0xC8, 0x0000)), REPLY_READ);
    expectNodes({0, 3, 0}, {0, 4, 0});
}

// The part of the check for replies without data would complete a handshake, too, if it were ever reached.
TEST_F(ReplyCheckHandshake, CompletedByAReplyWithoutDataIsLate)
{
    const Reply bytes = handshakeReply();
    EXPECT_EQ(checkReplyWithoutData(bytes.data(), 24), REPLY_LATE_HANDSHAKE);
    EXPECT_EQ(driver.connected, 1);
    expectNodes({0, 0x9C, 0}, {0, 0xE1, 0});
    EXPECT_EQ(driver.frameList.size(), 1);
}

TEST_F(ReplyCheckHandshake, LateOneIsNotLookedAtForAModeRefusal)
{
    EXPECT_EQ(checkReplyWithoutData(reply(30, 0xC8, 0x2203).data(), 30), REPLY_LATE_HANDSHAKE);
    EXPECT_EQ(queuedLengths(), Lengths{20});
}

TEST_F(ReplyCheck, ReplyWithoutDataOfALinkThatStandsIsNoHandshake)
{
    driver.connected = 1;
    queueWrite();
    EXPECT_EQ(checkReplyWithoutData(reply(30, 0xC8, 0x0000).data(), 30), REPLY_ACKNOWLEDGED);
    EXPECT_EQ(checkReplyWithoutData(reply(30, 0xC8, 0x2203).data(), 30), REPLY_REJECTED);
}

// ---- End codes -----------------------------------------------------------------------------------------------------

// Deliberate: the end code of a read is not examined.
TEST_F(ReplyCheck, ReadReplyCarriesDataWhateverItsEndCode)
{
    queueRead();
    EXPECT_EQ(check(reply(50, 0xC8, 0x1101)), REPLY_READ);
    EXPECT_EQ(check(reply(50, 0xC8, 0x2203)), REPLY_READ);
    EXPECT_EQ(queuedLengths(), Lengths{34});
}

class ReplyCheckEndCode : public ReplyCheck, public ::testing::WithParamInterface<int> {};

// Deliberate: an end code outside the three mode refusals counts as an accepted write.
class ReplyCheckAcceptedEndCode : public ReplyCheckEndCode {};

TEST_P(ReplyCheckAcceptedEndCode, AcknowledgesTheWrite)
{
    queueWrite();
    EXPECT_EQ(check(reply(30, 0xC8, GetParam())), REPLY_ACKNOWLEDGED);
    EXPECT_EQ(queuedLengths(), Lengths{36});
}

std::string endCodeName(const ::testing::TestParamInfo<int> &info)
{
    return "x" + QString::number(info.param, 16).rightJustified(4, QLatin1Char('0')).toStdString();
}

INSTANTIATE_TEST_SUITE_P(OfAWrite, ReplyCheckAcceptedEndCode,
                         ::testing::Values(0x0000, 0x1101, 0x2200, 0x2201, 0x2202, 0x2205, 0x2207, 0x2103, 0x2303,
                                           0x0003, 0x0322, 0xA203),
                         endCodeName);

class ReplyCheckModeRefusal : public ReplyCheckEndCode {
protected:
    static int checkWithQueued(int writes)
    {
        for (int i = 0; i < writes; ++i)
            queueWrite();
        return check(reply(30, 0xC8, GetParam()));
    }
};

TEST_P(ReplyCheckModeRefusal, PutsTheModeChangeAheadOfTheRefusedWrite)
{
    EXPECT_EQ(checkWithQueued(1), REPLY_REJECTED);
    EXPECT_EQ(queuedLengths(), (Lengths{31, 36}));
    EXPECT_EQ(driver.frameList.first().frame[26], 0x04);
    EXPECT_EQ(driver.frameList.first().frame[27], 0x01);
}

TEST_P(ReplyCheckModeRefusal, PutsTheModeChangeAheadOfTwoRequests)
{
    EXPECT_EQ(checkWithQueued(2), REPLY_REJECTED);
    EXPECT_EQ(queuedLengths(), (Lengths{31, 36, 36}));
}

TEST_P(ReplyCheckModeRefusal, QueuesNothingWithThreeRequests)
{
    EXPECT_EQ(checkWithQueued(3), REPLY_REJECTED);
    EXPECT_EQ(queuedLengths(), (Lengths{36, 36, 36}));
    EXPECT_EQ(driver.sid, 0xC8);
}

INSTANTIATE_TEST_SUITE_P(OfAWrite, ReplyCheckModeRefusal, ::testing::Values(0x2203, 0x2204, 0x2206), endCodeName);

// Deliberate: the refused write keeps its old service ID.
TEST_F(ReplyCheck, RefusedWriteIsNotAcknowledgedAfterTheModeChange)
{
    VARIABLE variable = VARIABLE();
    variable.regType = QLatin1String("DM");
    variable.count = 1;
    getWriteFrame(variable);
    ASSERT_EQ(driver.sid, 0xC9);
    EXPECT_EQ(check(reply(30, 0xC9, 0x2203)), REPLY_REJECTED);
    ASSERT_EQ(driver.sid, 0xCA);
    EXPECT_EQ(check(reply(30, 0xCA, 0x0000)), REPLY_ACKNOWLEDGED);
    driver.frameList.removeFirst();
    EXPECT_EQ(driver.frameList.first().frame[25], 0xC9);
    EXPECT_EQ(check(reply(30, 0xC9, 0x0000)), REPLY_REJECTED);
}

// ---- Info text -----------------------------------------------------------------------------------------------------

class ReplyCheckInfo : public ReplyCheck {
protected:
    static std::string info(qint32 requestTag, const char *regType, qint32 address, qint32 count, int replyLength)
    {
        FRAME_PRO head = FRAME_PRO();
        head.requestTag = requestTag;
        head.regType = QLatin1String(regType);
        head.address = address;
        head.count = count;
        driver.frameList.clear();
        driver.frameList.append(head);
        queueRead();
        return getErrorInfo(QByteArray(replyLength, '%')).toStdString();
    }
};

TEST_F(ReplyCheckInfo, Of10WordsOfDM100)
{
    EXPECT_EQ(info(1, "DM", 100, 10, 50), "1#DM100(10)(50)");
}

TEST_F(ReplyCheckInfo, OfAnEmptyReply)
{
    EXPECT_EQ(info(2, "T", 0, 1, 0), "2#T0(1)(0)");
}

// Deliberate: the text of a bit address is the plain number.
TEST_F(ReplyCheckInfo, OfABitTypeShowsThePlainBitAddress)
{
    EXPECT_EQ(info(1, "CIO_bit", 1605, 1, 30), "1#CIO_bit1605(1)(30)");
}

// Deliberate: the test for bits looks at the start of the type's name.
TEST_F(ReplyCheckInfo, OnlyATypeThatStartsWithTheSuffixShowsWordAndBit)
{
    EXPECT_EQ(info(1, "_bitCIO", 1605, 1, 30), "1#_bitCIO100.5(1)(30)");
    EXPECT_EQ(info(1, "_bit", 1615, 1, 30), "1#_bit100.15(1)(30)");
    EXPECT_EQ(info(1, "_bitCIO", -1605, 1, 30), "1#_bitCIO-100.-5(1)(30)");
    EXPECT_EQ(info(1, "_BITCIO", 1605, 1, 30), "1#_BITCIO1605(1)(30)");
    EXPECT_EQ(info(1, "_bi", 1605, 1, 30), "1#_bi1605(1)(30)");
    EXPECT_EQ(info(1, "C_bitIO", 1605, 1, 30), "1#C_bitIO1605(1)(30)");
}

TEST_F(ReplyCheckInfo, KeepsPlaceMarkersInTheTypeName)
{
    EXPECT_EQ(info(7, "%1", 100, 10, 50), "7#%1100(10)(50)");
    EXPECT_EQ(info(7, "%5%4%3%2%1", 100, 10, 50), "7#%5%4%3%2%1100(10)(50)");
    EXPECT_EQ(info(7, "_bit%1%2", 1605, 10, 50), "7#_bit%1%2100.5(10)(50)");
}

TEST_F(ReplyCheckInfo, HoldsTheLongestNumbers)
{
    const qint32 smallest = -2147483647 - 1;
    EXPECT_EQ(info(smallest, "HR", smallest, smallest, 1024), "-2147483648#HR-2147483648(-2147483648)(1024)");
    EXPECT_EQ(info(2147483647, "HR", 2147483647, 2147483647, 1024), "2147483647#HR2147483647(2147483647)(1024)");
}

TEST_F(ReplyCheckInfo, OfAHandshakeDescribesAnEmptyRecord)
{
    connectToServer();
    EXPECT_EQ(getErrorInfo(QByteArray(24, '\0')).toStdString(), "0#0(0)(24)");
}

TEST_F(ReplyCheckInfo, OfAModeChangeDescribesAnEmptyRecord)
{
    queueRead();
    changePLCModeToMonitor();
    EXPECT_EQ(getErrorInfo(QByteArray(30, '\0')).toStdString(), "0#0(0)(30)");
}

// The runtime hands the same text over for every reply, and may keep a copy of the last one.
TEST_F(ReplyCheckInfo, LeavesACopyOfTheFormerTextAsItWas)
{
    connectToServer();
    QString info = QLatin1String("7#DM100(64)(158), or a longer text than that");
    const QString kept = info;
    putErrorInfo(8, info);
    EXPECT_EQ(info.toStdString(), "0#0(0)(8)");
    EXPECT_EQ(kept.toStdString(), "7#DM100(64)(158), or a longer text than that");
}

} // namespace
