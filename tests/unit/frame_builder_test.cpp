#include "driver_fixture.h"
#include "fins/frame_builder.h"

namespace {

/// Hex text without the spaces that group it by field.
std::string digits(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

/// Bytes `begin` to `end` - 1 of a frame as hex text.
std::string bytesOf(const FRAME_PRO &request, int begin, int end)
{
    static const char hexDigits[] = "0123456789ABCDEF";
    std::string text;
    for (int i = begin; i < end; ++i) {
        text += hexDigits[request.frame[i] >> 4];
        text += hexDigits[request.frame[i] & 0x0F];
    }
    return text;
}

/// All bytes of a frame that are sent.
std::string sentBytesOf(const FRAME_PRO &request) { return bytesOf(request, 0, request.sendLen); }

std::string byteOf(const FRAME_PRO &request, int offset) { return bytesOf(request, offset, offset + 1); }

VARIABLE variable(const char *regType, qint32 address, qint32 count)
{
    VARIABLE result = VARIABLE();
    result.requestId = 21;
    result.requestTag = 22;
    result.regType = QLatin1String(regType);
    result.address = address;
    result.count = count;
    return result;
}

/// The same, its value buffer filled with bytes that tell their position.
VARIABLE filledVariable(const char *regType, qint32 address, qint32 count)
{
    VARIABLE result = variable(regType, address, count);
    for (int i = 0; i < VALUE_BUFFER_SIZE; ++i)
        result.value[i] = quint8(i % 251 + 1);
    return result;
}

bool sameValues(const quint8 *a, const quint8 *b) { return std::equal(a, a + VALUE_BUFFER_SIZE, b); }

bool allZero(const quint8 *begin, const quint8 *end)
{
    return std::all_of(begin, end, [](quint8 byte) { return byte == 0; });
}

void expectServes(const FRAME_PRO &request, const VARIABLE &served)
{
    EXPECT_EQ(request.requestId, served.requestId);
    EXPECT_EQ(request.requestTag, served.requestTag);
    EXPECT_EQ(request.regType.toStdString(), served.regType.toStdString());
    EXPECT_EQ(request.address, served.address);
    EXPECT_EQ(request.count, served.count);
    EXPECT_TRUE(sameValues(request.value, served.value));
}

void expectServesNothing(const FRAME_PRO &request)
{
    EXPECT_EQ(request.dataPos, 0);
    EXPECT_EQ(request.reservedField, 0);
    EXPECT_EQ(request.requestId, 0);
    EXPECT_EQ(request.requestTag, 0);
    EXPECT_TRUE(request.regType.isEmpty());
    EXPECT_EQ(request.address, 0);
    EXPECT_EQ(request.count, 0);
    EXPECT_TRUE(allZero(request.value, request.value + VALUE_BUFFER_SIZE));
}

/// Connected, PLC node 63, own node 22, next service ID 11 (all hex).
class FrameBuilder : public DriverTest {
protected:
    FrameBuilder()
    {
        driver.connected = 1;
        driver.dstNode[1] = 0x63;
        driver.srcNode[1] = 0x22;
        driver.sid = 0x10;
    }

    static FRAME_PRO readFrame(VARIABLE request)
    {
        getReadFrame(request);
        return driver.frameList.last();
    }

    static FRAME_PRO writeFrame(VARIABLE request)
    {
        getWriteFrame(request);
        return driver.frameList.last();
    }

    static FRAME_PRO modeChangeFrame()
    {
        changePLCModeToMonitor();
        return driver.frameList.first();
    }

    static void queueMarkers()
    {
        for (int i = 0; i < 2; ++i) {
            FRAME_PRO marker = FRAME_PRO();
            marker.sendLen = 1000 + i;
            driver.frameList.append(marker);
        }
    }

    static std::vector<qint32> queuedLengths()
    {
        std::vector<qint32> lengths;
        for (int i = 0; i < driver.frameList.size(); ++i)
            lengths.push_back(driver.frameList.at(i).sendLen);
        return lengths;
    }
};

typedef std::vector<qint32> Lengths;

// ---- Service ID --------------------------------------------------------------------------------------------------

TEST_F(FrameBuilder, ServiceIdAdvancesByOneAndIsStored)
{
    driver.sid = 0;
    EXPECT_EQ(getSSID(), 1);
    EXPECT_EQ(driver.sid, 1);
    EXPECT_EQ(getSSID(), 2);
    EXPECT_EQ(driver.sid, 2);
}

TEST_F(FrameBuilder, ServiceIdSkips255)
{
    driver.sid = 253;
    EXPECT_EQ(getSSID(), 254);
    EXPECT_EQ(getSSID(), 0);
    EXPECT_EQ(driver.sid, 0);
    EXPECT_EQ(getSSID(), 1);
}

TEST_F(FrameBuilder, ServiceIdAfter255IsZero)
{
    driver.sid = 255;
    EXPECT_EQ(getSSID(), 0);
}

TEST_F(FrameBuilder, EachCommandTakesOneServiceIdAndCarriesIt)
{
    EXPECT_EQ(byteOf(readFrame(variable("DM", 0, 1)), 25), "11");
    EXPECT_EQ(byteOf(writeFrame(variable("DM", 0, 1)), 25), "12");
    EXPECT_EQ(byteOf(writeFrame(variable("DM_bit", 0, 1)), 25), "13");
    EXPECT_EQ(byteOf(modeChangeFrame(), 25), "14");
    EXPECT_EQ(driver.sid, 0x14);
}

TEST_F(FrameBuilder, HandshakeTakesNoServiceId)
{
    connectToServer();
    EXPECT_EQ(driver.sid, 0x10);
}

// ---- Handshake ---------------------------------------------------------------------------------------------------

TEST_F(FrameBuilder, HandshakeFrame)
{
    connectToServer();
    const FRAME_PRO &request = driver.frameList.first();
    EXPECT_EQ(sentBytesOf(request), digits("46494E53 0000000C 00000000 00000000 00000000"));
    EXPECT_EQ(request.sendLen, 20);
    EXPECT_EQ(request.rcvLen, 24);
    EXPECT_EQ(request.dataLen, 0);
}

TEST_F(FrameBuilder, HandshakeServesNoVariable)
{
    connectToServer();
    const FRAME_PRO &request = driver.frameList.first();
    expectServesNothing(request);
    EXPECT_TRUE(allZero(request.frame + 20, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, HandshakeIsAppended)
{
    queueMarkers();
    connectToServer();
    EXPECT_EQ(queuedLengths(), (Lengths{1000, 1001, 20}));
}

TEST_F(FrameBuilder, ReadWhileNotConnectedQueuesExactlyOneHandshake)
{
    driver.connected = 0;
    VARIABLE request = variable("DM", 100, 10);
    getReadFrame(request);
    EXPECT_EQ(queuedLengths(), Lengths{20});
    EXPECT_EQ(driver.frameList.first().rcvLen, 24);
    EXPECT_EQ(driver.sid, 0x10);
}

TEST_F(FrameBuilder, WriteWhileNotConnectedQueuesExactlyOneHandshake)
{
    driver.connected = 0;
    VARIABLE request = variable("DM", 100, 10);
    getWriteFrame(request);
    EXPECT_EQ(queuedLengths(), Lengths{20});
    EXPECT_EQ(driver.frameList.first().rcvLen, 24);
    EXPECT_EQ(driver.sid, 0x10);
}

// ---- Retired frames ----------------------------------------------------------------------------------------------

TEST_F(FrameBuilder, RetiringTheOnlyFrameLeavesNone)
{
    connectToServer();
    retireFrame();
    EXPECT_TRUE(driver.frameList.isEmpty());
}

TEST_F(FrameBuilder, RetiringRemovesTheHead)
{
    queueMarkers();
    retireFrame();
    EXPECT_EQ(queuedLengths(), Lengths{1001});
    retireFrame();
    EXPECT_EQ(queuedLengths(), Lengths{});
}

TEST_F(FrameBuilder, HandshakeAfterAWriteKeepsNothingOfIt)
{
    FRAME_PRO write = writeFrame(filledVariable("DM", 100, 495));
    write.dataPos = 1;
    write.dataLen = 2;
    write.reservedField = 3;
    driver.frameList[0] = write;
    retireFrame();
    connectToServer();
    ASSERT_EQ(queuedLengths(), Lengths{20});
    const FRAME_PRO &request = driver.frameList.first();
    EXPECT_EQ(sentBytesOf(request), digits("46494E53 0000000C 00000000 00000000 00000000"));
    EXPECT_EQ(request.rcvLen, 24);
    EXPECT_EQ(request.dataLen, 0);
    expectServesNothing(request);
    EXPECT_TRUE(allZero(request.frame + 20, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, ReadAfterAWriteKeepsNothingOfIt)
{
    writeFrame(filledVariable("DM_bit", 100, 990));
    retireFrame();
    const VARIABLE request = variable("HR", 7, 2);
    const FRAME_PRO built = readFrame(request);
    EXPECT_EQ(queuedLengths(), Lengths{34});
    expectServes(built, request);
    EXPECT_EQ(built.reservedField, 0);
    EXPECT_TRUE(allZero(built.frame + 34, built.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, WriteAfterAReadHasNoDataInItsReply)
{
    readFrame(variable("HR", 7, 2));
    retireFrame();
    const FRAME_PRO built = writeFrame(variable("HR", 7, 2));
    EXPECT_EQ(queuedLengths(), Lengths{38});
    EXPECT_EQ(built.dataPos, 0);
    EXPECT_EQ(built.dataLen, 0);
    EXPECT_EQ(built.rcvLen, 30);
}

TEST_F(FrameBuilder, FrameIsAppendedBehindOthersAlsoAfterOneWasRetired)
{
    connectToServer();
    retireFrame();
    queueMarkers();
    connectToServer();
    EXPECT_EQ(queuedLengths(), (Lengths{1000, 1001, 20}));
}

TEST_F(FrameBuilder, FramesOfOthersAreRetiredAlike)
{
    connectToServer();
    retireFrame();
    queueMarkers();
    retireFrame();
    retireFrame();
    EXPECT_EQ(queuedLengths(), Lengths{});
    readFrame(variable("DM", 0, 1));
    EXPECT_EQ(queuedLengths(), Lengths{34});
}

// ---- Memory Area Read --------------------------------------------------------------------------------------------

TEST_F(FrameBuilder, ReadOf10WordsOfDM100)
{
    const FRAME_PRO request = readFrame(variable("DM", 100, 10));
    EXPECT_EQ(sentBytesOf(request), digits("46494E53 0000001A 00000002 00000000 "
                                           "80 00 02 00 63 00 00 22 00 11 0101 82 0064 00 000A"));
    EXPECT_EQ(request.sendLen, 34);
    EXPECT_EQ(request.rcvLen, 50);
    EXPECT_EQ(request.dataPos, 30);
    EXPECT_EQ(request.dataLen, 20);
}

TEST_F(FrameBuilder, ReadServesItsVariable)
{
    const VARIABLE request = filledVariable("DM", 100, 10);
    const FRAME_PRO built = readFrame(request);
    expectServes(built, request);
    EXPECT_EQ(built.reservedField, 0);
    EXPECT_TRUE(allZero(built.frame + 34, built.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, ReadIsAppended)
{
    queueMarkers();
    readFrame(variable("DM", 100, 10));
    EXPECT_EQ(queuedLengths(), (Lengths{1000, 1001, 34}));
}

TEST_F(FrameBuilder, CounterReadCarriesTheCounterOffset)
{
    EXPECT_EQ(bytesOf(readFrame(variable("C", 5, 1)), 28, 34), digits("89 8005 00 0001"));
}

TEST_F(FrameBuilder, CounterOffsetIsSubtractedModulo256)
{
    EXPECT_EQ(bytesOf(readFrame(variable("C", 0x8105, 1)), 28, 34), digits("89 0105 00 0001"));
}

TEST_F(FrameBuilder, TimerReadCarriesNoOffset)
{
    EXPECT_EQ(bytesOf(readFrame(variable("T", 5, 1)), 28, 34), digits("89 0005 00 0001"));
}

TEST_F(FrameBuilder, ReadCountIsTwoBytes)
{
    const FRAME_PRO request = readFrame(variable("DM", 0, 0x0102));
    EXPECT_EQ(bytesOf(request, 32, 34), "0102");
    EXPECT_EQ(request.rcvLen, 546);
    EXPECT_EQ(request.dataLen, 516);
    EXPECT_EQ(byteOf(request, 7), "1A");
}

TEST_F(FrameBuilder, ReadSendsOnlyTheLowTwoBytesOfAddressAndCount)
{
    const FRAME_PRO request = readFrame(variable("DM", 0x12345, 0x23456));
    EXPECT_EQ(bytesOf(request, 28, 34), digits("82 2345 00 3456"));
    EXPECT_EQ(request.dataLen, 288940);
}

TEST_F(FrameBuilder, ReadOfABitTypeAsksForWordsAtTheBitAddress)
{
    const FRAME_PRO request = readFrame(variable("CIO_bit", 1605, 3));
    EXPECT_EQ(bytesOf(request, 28, 34), digits("30 0645 00 0003"));
    EXPECT_EQ(request.rcvLen, 36);
    EXPECT_EQ(request.dataLen, 6);
}

TEST_F(FrameBuilder, ReadOfNothingHasNoData)
{
    const FRAME_PRO request = readFrame(variable("DM", 100, 0));
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(request.dataLen, 0);
}

TEST_F(FrameBuilder, ReadOfANegativeCountKeepsTheFormulas)
{
    const FRAME_PRO request = readFrame(variable("DM", -1, -1));
    EXPECT_EQ(bytesOf(request, 28, 34), digits("82 FFFF 00 FFFF"));
    EXPECT_EQ(request.rcvLen, 28);
    EXPECT_EQ(request.dataLen, -2);
}

TEST_F(FrameBuilder, ReadLengthsOfTheLargestCountWrap)
{
    const FRAME_PRO request = readFrame(variable("DM", 0, 0x7FFFFFFF));
    EXPECT_EQ(request.sendLen, 34);
    EXPECT_EQ(request.rcvLen, 28);
    EXPECT_EQ(request.dataLen, -2);
}

TEST_F(FrameBuilder, ReadOfAnUnknownTypeSendsAreaCodeZero)
{
    EXPECT_EQ(bytesOf(readFrame(variable("EM", 100, 1)), 28, 34), digits("00 0064 00 0001"));
}

// ---- FINS header -------------------------------------------------------------------------------------------------

class FrameBuilderHeader : public FrameBuilder {
protected:
    FrameBuilderHeader()
    {
        const qint32 destination[] = {0x1D0, 0x2D1, 0x3D2};
        const qint32 source[] = {0x4A0, 0x5A1, 0x6A2};
        std::copy(destination, destination + 3, driver.dstNode);
        std::copy(source, source + 3, driver.srcNode);
    }

    static void expectHeader(const FRAME_PRO &request, const char *code)
    {
        EXPECT_EQ(bytesOf(request, 8, 16), digits("00000002 00000000"));
        EXPECT_EQ(byteOf(request, 16), "80") << "ICF";
        EXPECT_EQ(byteOf(request, 17), "00") << "RSV";
        EXPECT_EQ(byteOf(request, 18), "02") << "GCT";
        EXPECT_EQ(byteOf(request, 19), "D0") << "DNA";
        EXPECT_EQ(byteOf(request, 20), "D1") << "DA1";
        EXPECT_EQ(byteOf(request, 21), "D2") << "DA2";
        EXPECT_EQ(byteOf(request, 22), "A0") << "SNA";
        EXPECT_EQ(byteOf(request, 23), "A1") << "SA1";
        EXPECT_EQ(byteOf(request, 24), "A2") << "SA2";
        EXPECT_EQ(byteOf(request, 25), "11") << "SID";
        EXPECT_EQ(bytesOf(request, 26, 28), code) << "MRC, SRC";
    }
};

TEST_F(FrameBuilderHeader, OfARead) { expectHeader(readFrame(variable("DM", 0, 1)), "0101"); }

TEST_F(FrameBuilderHeader, OfAWordWrite) { expectHeader(writeFrame(variable("DM", 0, 1)), "0102"); }

TEST_F(FrameBuilderHeader, OfABitWrite) { expectHeader(writeFrame(variable("DM_bit", 0, 1)), "0102"); }

TEST_F(FrameBuilderHeader, OfAModeChange) { expectHeader(modeChangeFrame(), "0401"); }

// ---- Every register type, at address 773 (word 48, bit 5) ---------------------------------------------------------

struct RegisterRow {
    const char *regType;
    const char *readItem;  // area, address, bit of a read
    const char *writeItem; // the same of a write
};

const RegisterRow REGISTER_ROWS[] = {
    {"CIO_bit", "30 0305 00", "30 0030 05"},
    {"WR_bit",  "31 0305 00", "31 0030 05"},
    {"HR_bit",  "32 0305 00", "32 0030 05"},
    {"AR_bit",  "33 0305 00", "33 0030 05"},
    {"DM_bit",  "02 0305 00", "02 0030 05"},
    {"CIO",     "B0 0305 00", "B0 0305 00"},
    {"WR",      "B1 0305 00", "B1 0305 00"},
    {"HR",      "B2 0305 00", "B2 0305 00"},
    {"AR",      "B3 0305 00", "B3 0305 00"},
    {"T",       "89 0305 00", "89 0305 00"},
    {"C",       "89 8305 00", "89 8305 00"},
    {"DM",      "82 0305 00", "82 0305 00"},
};

class FrameBuilderRegister : public FrameBuilder, public ::testing::WithParamInterface<RegisterRow> {};

TEST_P(FrameBuilderRegister, Read)
{
    const FRAME_PRO request = readFrame(variable(GetParam().regType, 773, 2));
    EXPECT_EQ(bytesOf(request, 28, 34), digits(GetParam().readItem) + "0002");
    EXPECT_EQ(request.rcvLen, 34);
}

TEST_P(FrameBuilderRegister, Write)
{
    const FRAME_PRO request = writeFrame(variable(GetParam().regType, 773, 2));
    EXPECT_EQ(bytesOf(request, 28, 34), digits(GetParam().writeItem) + "0002");
    EXPECT_EQ(request.rcvLen, 30);
}

std::string registerName(const ::testing::TestParamInfo<RegisterRow> &info) { return info.param.regType; }

INSTANTIATE_TEST_SUITE_P(AllTypes, FrameBuilderRegister, ::testing::ValuesIn(REGISTER_ROWS), registerName);

// ---- Memory Area Write, words ------------------------------------------------------------------------------------

TEST_F(FrameBuilder, WordWriteFrameSwapsEachWord)
{
    VARIABLE words = variable("DM", 100, 3);
    const quint8 lowByteFirst[] = {0x34, 0x12, 0x78, 0x56, 0xCD, 0xAB};
    std::copy(lowByteFirst, lowByteFirst + 6, words.value);
    const FRAME_PRO request = writeFrame(words);
    EXPECT_EQ(sentBytesOf(request), digits("46494E53 00000020 00000002 00000000 80 00 02 00 63 00 00 22 00 11 "
                                           "0102 82 0064 00 0003 1234 5678 ABCD"));
    EXPECT_EQ(request.sendLen, 40);
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(request.dataPos, 0);
    EXPECT_EQ(request.dataLen, 0);
}

TEST_F(FrameBuilder, WordWriteServesItsVariable)
{
    const VARIABLE words = filledVariable("HR", 7, 2);
    const FRAME_PRO request = writeFrame(words);
    expectServes(request, words);
    EXPECT_EQ(request.reservedField, 0);
    EXPECT_TRUE(allZero(request.frame + 38, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, WriteIsAppended)
{
    queueMarkers();
    writeFrame(variable("DM", 0, 1));
    writeFrame(variable("DM_bit", 0, 1));
    EXPECT_EQ(queuedLengths(), (Lengths{1000, 1001, 36, 35}));
}

TEST_F(FrameBuilder, WordWriteLengthByteHolds114Words)
{
    const FRAME_PRO request = writeFrame(variable("DM", 0, 114));
    EXPECT_EQ(bytesOf(request, 4, 8), "000000FE");
    EXPECT_EQ(request.sendLen, 262);
}

TEST_F(FrameBuilder, WordWriteLengthByteWrapsAt115Words)
{
    const FRAME_PRO request = writeFrame(variable("DM", 0, 115));
    EXPECT_EQ(bytesOf(request, 4, 8), "00000000");
    EXPECT_EQ(request.sendLen, 264);
}

TEST_F(FrameBuilder, WordWriteOf120WordsSendsItsLengthModulo256)
{
    const FRAME_PRO request = writeFrame(variable("DM", 0, 120));
    EXPECT_EQ(bytesOf(request, 4, 8), "0000000A");
    EXPECT_EQ(request.sendLen, 274);
}

TEST_F(FrameBuilder, WordWriteCountIsTwoBytes)
{
    EXPECT_EQ(bytesOf(writeFrame(variable("DM", 0, 0x0102)), 32, 34), "0102");
}

TEST_F(FrameBuilder, CounterWriteCarriesTheCounterOffset)
{
    EXPECT_EQ(bytesOf(writeFrame(variable("C", 5, 1)), 28, 34), digits("89 8005 00 0001"));
}

TEST_F(FrameBuilder, WordWriteOf495WordsFillsTheFrame)
{
    const FRAME_PRO request = writeFrame(filledVariable("DM", 0, 495));
    EXPECT_EQ(request.sendLen, 1024);
    // Word 494: value bytes 988 and 989, that is 236 and 237.
    EXPECT_EQ(bytesOf(request, 1022, 1024), "EDEC");
}

TEST_F(FrameBuilder, WordWriteOf496WordsStopsAtTheEndOfTheFrame)
{
    const VARIABLE words = filledVariable("DM", 0, 496);
    const FRAME_PRO request = writeFrame(words);
    EXPECT_EQ(request.sendLen, 1026);
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(bytesOf(request, 1022, 1024), "EDEC");
    expectServes(request, words);
}

TEST_F(FrameBuilder, WordWriteLongerThanTheRecordStaysInTheFrame)
{
    const VARIABLE words = filledVariable("DM", 0, 4000);
    const FRAME_PRO request = writeFrame(words);
    EXPECT_EQ(request.sendLen, 8034);
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(request.dataPos, 0);
    EXPECT_EQ(request.dataLen, 0);
    EXPECT_EQ(request.reservedField, 0);
    expectServes(request, words);
}

TEST_F(FrameBuilder, WordWriteOfNothingCopiesNoData)
{
    const FRAME_PRO request = writeFrame(filledVariable("DM", 0, 0));
    EXPECT_EQ(request.sendLen, 34);
    EXPECT_EQ(byteOf(request, 7), "1A");
    EXPECT_TRUE(allZero(request.frame + 34, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, WordWriteOfANegativeCountCopiesNoData)
{
    const FRAME_PRO request = writeFrame(filledVariable("DM", 0, -1));
    EXPECT_EQ(request.sendLen, 32);
    EXPECT_EQ(byteOf(request, 7), "18");
    EXPECT_EQ(bytesOf(request, 32, 34), "FFFF");
    EXPECT_TRUE(allZero(request.frame + 34, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, WordWriteLengthsOfTheSmallestCountWrap)
{
    const FRAME_PRO request = writeFrame(filledVariable("DM", 0, -2147483647 - 1));
    EXPECT_EQ(request.sendLen, 34);
    EXPECT_EQ(byteOf(request, 7), "1A");
    EXPECT_TRUE(allZero(request.frame + 34, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, WriteOfAnUnknownTypeSendsAreaCodeZero)
{
    EXPECT_EQ(bytesOf(writeFrame(variable("EM", 100, 1)), 28, 34), digits("00 0064 00 0001"));
    EXPECT_EQ(bytesOf(writeFrame(variable("EM_bit", 1605, 1)), 28, 34), digits("00 0064 05 0001"));
}

TEST_F(FrameBuilder, OnlyTheExactSuffixMakesABitWrite)
{
    EXPECT_EQ(writeFrame(variable("DM_BIT", 0, 3)).sendLen, 40);
    EXPECT_EQ(writeFrame(variable("_bitDM", 0, 3)).sendLen, 40);
    EXPECT_EQ(writeFrame(variable("bit", 0, 3)).sendLen, 40);
    EXPECT_EQ(writeFrame(variable("", 0, 3)).sendLen, 40);
    EXPECT_EQ(writeFrame(variable("_bit", 0, 3)).sendLen, 37);
}

// ---- Memory Area Write, bits -------------------------------------------------------------------------------------

TEST_F(FrameBuilder, BitWriteOfCIO100Point5)
{
    VARIABLE bit = variable("CIO_bit", 1605, 1);
    bit.value[0] = 1;
    const FRAME_PRO request = writeFrame(bit);
    EXPECT_EQ(sentBytesOf(request), digits("46494E53 0000001B 00000002 00000000 80 00 02 00 63 00 00 22 00 11 "
                                           "0102 30 0064 05 0001 01"));
    EXPECT_EQ(request.sendLen, 35);
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(request.dataPos, 0);
    EXPECT_EQ(request.dataLen, 0);
}

TEST_F(FrameBuilder, BitWriteSendsOneByteABitAsStored)
{
    VARIABLE bits = variable("WR_bit", 31, 4);
    const quint8 stored[] = {1, 0, 2, 255, 9};
    std::copy(stored, stored + 5, bits.value);
    const FRAME_PRO request = writeFrame(bits);
    EXPECT_EQ(bytesOf(request, 28, 39), digits("31 0001 0F 0004 01 00 02 FF 00"));
    EXPECT_EQ(request.sendLen, 38);
}

TEST_F(FrameBuilder, BitWriteServesItsVariable)
{
    const VARIABLE bits = filledVariable("HR_bit", 23, 2);
    const FRAME_PRO request = writeFrame(bits);
    expectServes(request, bits);
    EXPECT_EQ(request.reservedField, 0);
    EXPECT_TRUE(allZero(request.frame + 36, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, BitWriteAddressesTheWordInTwoBytes)
{
    // Bit address 0x012345: word 0x1234, bit 5.
    EXPECT_EQ(bytesOf(writeFrame(variable("DM_bit", 0x12345, 0x0102)), 28, 34), digits("02 1234 05 0102"));
}

TEST_F(FrameBuilder, BitWriteCarriesNoCounterOffset)
{
    EXPECT_EQ(bytesOf(writeFrame(variable("C_bit", 1605, 1)), 29, 32), digits("0064 05"));
}

TEST_F(FrameBuilder, BitWriteDividesANegativeAddressTowardsZero)
{
    EXPECT_EQ(bytesOf(writeFrame(variable("DM_bit", -1, 1)), 29, 32), digits("0000 FF"));
    EXPECT_EQ(bytesOf(writeFrame(variable("DM_bit", -17, 1)), 29, 32), digits("FFFF FF"));
}

TEST_F(FrameBuilder, BitWriteLengthByteHolds229Bits)
{
    const FRAME_PRO request = writeFrame(variable("DM_bit", 0, 229));
    EXPECT_EQ(bytesOf(request, 4, 8), "000000FF");
    EXPECT_EQ(request.sendLen, 263);
}

TEST_F(FrameBuilder, BitWriteLengthByteWrapsAt230Bits)
{
    const FRAME_PRO request = writeFrame(variable("DM_bit", 0, 230));
    EXPECT_EQ(bytesOf(request, 4, 8), "00000000");
    EXPECT_EQ(request.sendLen, 264);
}

TEST_F(FrameBuilder, BitWriteOf990BitsFillsTheFrame)
{
    const FRAME_PRO request = writeFrame(filledVariable("DM_bit", 0, 990));
    EXPECT_EQ(request.sendLen, 1024);
    // Value byte 989 is 237.
    EXPECT_EQ(byteOf(request, 1023), "ED");
}

TEST_F(FrameBuilder, BitWriteOf991BitsStopsAtTheEndOfTheFrame)
{
    const VARIABLE bits = filledVariable("DM_bit", 0, 991);
    const FRAME_PRO request = writeFrame(bits);
    EXPECT_EQ(request.sendLen, 1025);
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(byteOf(request, 1023), "ED");
    expectServes(request, bits);
}

TEST_F(FrameBuilder, BitWriteLongerThanTheRecordStaysInTheFrame)
{
    const VARIABLE bits = filledVariable("DM_bit", 0, 8000);
    const FRAME_PRO request = writeFrame(bits);
    EXPECT_EQ(request.sendLen, 8034);
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(request.dataLen, 0);
    expectServes(request, bits);
}

TEST_F(FrameBuilder, BitWriteOfNothingCopiesNoData)
{
    const FRAME_PRO request = writeFrame(filledVariable("DM_bit", 0, 0));
    EXPECT_EQ(request.sendLen, 34);
    EXPECT_TRUE(allZero(request.frame + 34, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, BitWriteOfANegativeCountCopiesNoData)
{
    const FRAME_PRO request = writeFrame(filledVariable("DM_bit", 0, -1));
    EXPECT_EQ(request.sendLen, 33);
    EXPECT_EQ(byteOf(request, 7), "19");
    EXPECT_EQ(bytesOf(request, 32, 34), "FFFF");
    EXPECT_TRUE(allZero(request.frame + 34, request.frame + VALUE_BUFFER_SIZE));
}

// ---- RUN in MONITOR mode -----------------------------------------------------------------------------------------

TEST_F(FrameBuilder, ModeChangeFrame)
{
    const FRAME_PRO request = modeChangeFrame();
    EXPECT_EQ(sentBytesOf(request), digits("46494E53 00000017 00000002 00000000 "
                                           "80 00 02 00 63 00 00 22 00 11 0401 FFFF 02"));
    EXPECT_EQ(request.sendLen, 31);
    EXPECT_EQ(request.rcvLen, 30);
    EXPECT_EQ(request.dataLen, 0);
}

TEST_F(FrameBuilder, ModeChangeServesNoVariable)
{
    const FRAME_PRO request = modeChangeFrame();
    expectServesNothing(request);
    EXPECT_TRUE(allZero(request.frame + 31, request.frame + VALUE_BUFFER_SIZE));
}

TEST_F(FrameBuilder, ModeChangeGoesAheadOfEverythingQueued)
{
    queueMarkers();
    changePLCModeToMonitor();
    EXPECT_EQ(queuedLengths(), (Lengths{31, 1000, 1001}));
}

TEST_F(FrameBuilder, ModeChangeNeedsNoConnection)
{
    driver.connected = 0;
    changePLCModeToMonitor();
    EXPECT_EQ(queuedLengths(), Lengths{31});
}

// ---- Reply bytes -------------------------------------------------------------------------------------------------

TEST_F(FrameBuilder, ReplyBytesOutsideTheReplyReadAsZero)
{
    const quint8 reply[] = {1, 2, 3, 4};
    EXPECT_EQ(get8(reply + 1, 2, -1), 0);
    EXPECT_EQ(get8(reply + 1, 2, 0), 2);
    EXPECT_EQ(get8(reply + 1, 2, 1), 3);
    EXPECT_EQ(get8(reply + 1, 2, 2), 0);
}

} // namespace
