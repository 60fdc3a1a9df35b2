#include "data/data_image.h"
#include "driver_fixture.h"

namespace {

const qint32 LARGEST = 2147483647;
const qint32 SMALLEST = -2147483647 - 1;
const quint8 UNTOUCHED = 0xEE;

typedef std::vector<quint8> Bytes;

class ReadValues : public DriverTest {
protected:
    /// The image's record of tag 7, with its PLC value.
    static _DATA_ &word(const char *regType, qint32 address, int plcValue)
    {
        const int index = getIndexOfDataArea(7, QLatin1String(regType), address, driver.dataAreas);
        _DATA_ &area = driver.dataAreas[index];
        area.plcValue[0] = quint8(plcValue & 0xFF);
        area.plcValue[1] = quint8(plcValue >> 8);
        return area;
    }

    static void pendingWord(const char *regType, qint32 address, int plcValue, int writeValue)
    {
        _DATA_ &area = word(regType, address, plcValue);
        area.writePending = 1;
        area.writeValue[0] = quint8(writeValue & 0xFF);
        area.writeValue[1] = quint8(writeValue >> 8);
    }

    /// Ten bytes of the runtime's buffer after a read for tag 7.
    static Bytes read(const char *regType, qint32 address, qint32 count)
    {
        Bytes out(10, UNTOUCHED);
        EXPECT_EQ(intf_getData(7, QLatin1String(regType), address, count, out.data()), 1);
        return out;
    }

    /// The bytes, and behind them the untouched rest of the runtime's buffer.
    static Bytes only(Bytes bytes)
    {
        bytes.resize(10, UNTOUCHED);
        return bytes;
    }

    /// The records of the image.
    static std::vector<std::string> image()
    {
        std::vector<std::string> records;
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_ &area = driver.dataAreas.at(i);
            records.push_back(std::to_string(area.requestTag) + " " + area.regType.toStdString() + " "
                              + std::to_string(area.address));
        }
        return records;
    }
};

typedef std::vector<std::string> Records;

// ---- Runs that are longer than what is looked up at once -----------------------------------------------------------

TEST_F(ReadValues, LongRunEndsAtItsCount)
{
    for (int i = 0; i < 140; ++i)
        word("DM", 100 + i, 0x0100 + i);
    Bytes out(300, UNTOUCHED);
    intf_getData(7, QLatin1String("DM"), 100, 130, out.data());
    for (std::size_t i = 0; i < 130; ++i) {
        EXPECT_EQ(out[2 * i], quint8(i)) << i;
        EXPECT_EQ(out[2 * i + 1], 0x01) << i;
    }
    EXPECT_EQ(Bytes(out.begin() + 260, out.end()), Bytes(40, UNTOUCHED));
}

// ---- Words ---------------------------------------------------------------------------------------------------------

TEST_F(ReadValues, NoWordsLeaveTheBufferUntouched)
{
    EXPECT_EQ(read("DM", 100, 0), only({}));
    EXPECT_EQ(read("DM", 100, -1), only({}));
    EXPECT_EQ(read("DM", 100, SMALLEST), only({}));
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(ReadValues, UnknownWordsAreCreatedAndReadAsZero)
{
    EXPECT_EQ(read("DM", 100, 2), only({0, 0, 0, 0}));
    EXPECT_EQ(image(), (Records{"7 DM 100", "7 DM 101"}));
}

TEST_F(ReadValues, WordsComeLowByteFirst)
{
    word("DM", 100, 0x1234);
    word("DM", 101, 0xABCD);
    EXPECT_EQ(read("DM", 100, 2), only({0x34, 0x12, 0xCD, 0xAB}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(ReadValues, PendingWordReadsAsWritten)
{
    pendingWord("DM", 100, 0x1234, 0x5678);
    EXPECT_EQ(read("DM", 100, 1), only({0x78, 0x56}));
}

TEST_F(ReadValues, AnyNonzeroPendingFlagCounts)
{
    pendingWord("DM", 100, 0x1234, 0x5678);
    driver.dataAreas[0].writePending = 2;
    EXPECT_EQ(read("DM", 100, 1), only({0x78, 0x56}));
    EXPECT_EQ(read("DM_bit", 1604, 4), only({1, 1, 1, 0}));
}

TEST_F(ReadValues, SettledWordReadsAsThePlcHasIt)
{
    pendingWord("DM", 100, 0x1234, 0x5678);
    driver.dataAreas[0].writePending = 0;
    EXPECT_EQ(read("DM", 100, 1), only({0x34, 0x12}));
}

TEST_F(ReadValues, WordsOfAnotherTagAreOthers)
{
    word("DM", 100, 0x1234);
    driver.dataAreas[0].requestTag = 8;
    EXPECT_EQ(read("DM", 100, 1), only({0, 0}));
    EXPECT_EQ(image(), (Records{"8 DM 100", "7 DM 100"}));
}

TEST_F(ReadValues, UnknownTypeIsCreatedAndReadsAsZero)
{
    EXPECT_EQ(read("EM", 100, 1), only({0, 0}));
    EXPECT_EQ(image(), Records{"7 EM 100"});
}

TEST_F(ReadValues, WordAddressesWrap)
{
    word("DM", SMALLEST, 0x1234);
    EXPECT_EQ(read("DM", LARGEST, 2), only({0, 0, 0x34, 0x12}));
    EXPECT_EQ(image(), (Records{"7 DM -2147483648", "7 DM 2147483647"}));
}

TEST_F(ReadValues, ReadingNotifiesNothing)
{
    word("DM", 100, 0x1234).wordMonitor = 1;
    read("DM", 100, 2);
    read("DM_bit", 1600, 2);
    EXPECT_TRUE(notifications().empty());
}

// ---- Bits ----------------------------------------------------------------------------------------------------------

TEST_F(ReadValues, NoBitsLeaveTheBufferUntouched)
{
    EXPECT_EQ(read("DM_bit", 1600, 0), only({}));
    EXPECT_EQ(read("DM_bit", 1600, -1), only({}));
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(ReadValues, FirstRecordOfTheImageIsNotTakenForTheWordOfABit)
{
    word("HR", 100, 0xFFFF);
    EXPECT_EQ(read("DM_bit", 1600, 2), only({0, 0}));
    EXPECT_EQ(image(), (Records{"7 HR 100", "7 DM 100"}));
}

TEST_F(ReadValues, UnknownBitsCreateTheirWordAndReadAsZero)
{
    EXPECT_EQ(read("CIO_bit", 1600, 3), only({0, 0, 0}));
    EXPECT_EQ(image(), Records{"7 CIO 100"});
}

TEST_F(ReadValues, Bit5IsInTheLowByte)
{
    word("DM", 100, 0x0020);
    EXPECT_EQ(read("DM_bit", 1605, 1), only({1}));
    EXPECT_EQ(read("DM_bit", 1613, 1), only({0}));
}

TEST_F(ReadValues, Bit13IsInTheHighByte)
{
    word("DM", 100, 0x2000);
    EXPECT_EQ(read("DM_bit", 1605, 1), only({0}));
    EXPECT_EQ(read("DM_bit", 1613, 1), only({1}));
}

TEST_F(ReadValues, EveryBitReadsOnlyItself)
{
    for (qint32 bit = 0; bit < 16; ++bit) {
        word("DM", 100, 1 << bit);
        EXPECT_EQ(read("DM_bit", 1600 + bit, 1), only({1})) << bit;
        word("DM", 100, 0xFFFF - (1 << bit));
        EXPECT_EQ(read("DM_bit", 1600 + bit, 1), only({0})) << bit;
    }
}

TEST_F(ReadValues, BitsCrossIntoTheNextWord)
{
    word("DM", 100, 0x8000);
    EXPECT_EQ(read("DM_bit", 1614, 4), only({0, 1, 0, 0}));
    EXPECT_EQ(image(), (Records{"7 DM 100", "7 DM 101"}));
    word("DM", 101, 0x0001);
    EXPECT_EQ(read("DM_bit", 1614, 4), only({0, 1, 1, 0}));
}

TEST_F(ReadValues, BitsAcrossTheByteBoundary)
{
    word("DM", 100, 0x0180);
    EXPECT_EQ(read("DM_bit", 1606, 4), only({0, 1, 1, 0}));
}

TEST_F(ReadValues, PendingBitsReadAsWritten)
{
    pendingWord("DM", 100, 0xFF00, 0x00FF);
    EXPECT_EQ(read("DM_bit", 1607, 2), only({1, 0}));
    driver.dataAreas[0].writePending = 0;
    EXPECT_EQ(read("DM_bit", 1607, 2), only({0, 1}));
}

TEST_F(ReadValues, WordTypeOfABitTypeIsTheTextBeforeTheFirstUnderscore)
{
    word("A", 0, 0x0001);
    EXPECT_EQ(read("A_B_bit", 0, 1), only({1}));
    EXPECT_EQ(read("_bit", 0, 1), only({0}));
    EXPECT_EQ(image(), (Records{"7 A 0", "7  0"}));
}

TEST_F(ReadValues, SuffixInAnotherCaseIsAWordType)
{
    EXPECT_EQ(read("dm_Bit", 100, 1), only({0, 0}));
    EXPECT_EQ(read("DM_BIT", 100, 1), only({0, 0}));
    EXPECT_EQ(read("DM_bits", 100, 1), only({0, 0}));
    EXPECT_EQ(image(), (Records{"7 dm_Bit 100", "7 DM_BIT 100", "7 DM_bits 100"}));
}

TEST_F(ReadValues, BitBelowAddressZeroReadsAsZero)
{
    word("DM", 0, 0xFFFF);
    word("DM", -1, 0xFFFF);
    EXPECT_EQ(read("DM_bit", -1, 2), only({0, 1}));
    EXPECT_EQ(read("DM_bit", -17, 3), only({0, 1, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(ReadValues, BitBelowAddressZeroCreatesItsWord)
{
    EXPECT_EQ(read("DM_bit", -1, 1), only({0}));
    EXPECT_EQ(read("DM_bit", -17, 1), only({0}));
    EXPECT_EQ(image(), (Records{"7 DM 0", "7 DM -1"}));
}

TEST_F(ReadValues, BitAddressesWrap)
{
    word("DM", 0x07FFFFFF, 0x8000);
    word("DM", -0x08000000, 0x0001);
    EXPECT_EQ(read("DM_bit", LARGEST, 2), only({1, 1}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

// Division truncates, so bit -16 lies in word -1 and bit -15 in word 0.
TEST_F(ReadValues, LooksUpTheWordOfEachBitBelowZero)
{
    EXPECT_EQ(read("DM_bit", -17, 3), only({0, 0, 0}));
    EXPECT_EQ(image(), (Records{"7 DM -1", "7 DM 0"}));
}

} // namespace
