#include "data/data_image.h"
#include "driver_fixture.h"

namespace {

typedef std::vector<Notification> Notifications;

class DataImage : public DriverTest {
protected:
    DataImage() { driver.stationNo = 3; }

    static qint32 find(qint32 requestTag, const char *regType, qint32 address)
    {
        return getIndexOfDataArea(requestTag, QLatin1String(regType), address, driver.dataAreas);
    }

    /// Tag 7, word type DM.
    static void watch(qint32 address, qint32 wordMonitor, qint32 bitMonitor)
    {
        _DATA_ &area = driver.dataAreas[find(7, "DM", address)];
        area.wordMonitor = wordMonitor;
        area.bitMonitor = bitMonitor;
    }

    static Notifications change(qint32 address, qint32 from, qint32 to, qint32 wordOnly = 0)
    {
        notifications().clear();
        _wordDataChange(&from, &to, 7, QLatin1String("DM"), address, wordOnly);
        return notifications();
    }

    static Notifications changeByte(qint32 address, quint8 from, quint8 to)
    {
        notifications().clear();
        _byteDataChange(&from, &to, 7, QLatin1String("DM"), address);
        return notifications();
    }

    /// A callback that reads values that the image does not hold yet.
    static void growImage(qint32 stationNo, qint32 requestTag, QString regType, qint32 address)
    {
        notifications().push_back({stationNo, requestTag, regType.toStdString(), address});
        quint8 other[2 * 200];
        intf_getData(1000 + address, QLatin1String("WR"), 0, 200, other);
    }
};

// ---- Look-up -------------------------------------------------------------------------------------------------------

TEST_F(DataImage, UnknownWordIsAppendedAllZeroButItsKeys)
{
    find(1, "DM", 1);
    EXPECT_EQ(find(7, "CIO", 100), 1);
    ASSERT_EQ(driver.dataAreas.size(), 2);
    const _DATA_ &area = driver.dataAreas.at(1);
    EXPECT_EQ(area.requestTag, 7);
    EXPECT_EQ(area.regType.toStdString(), "CIO");
    EXPECT_EQ(area.address, 100);
    EXPECT_EQ(area.rcvFlag, 0);
    EXPECT_EQ(area.writePending, 0);
    EXPECT_EQ(area.pendingBits, 0);
    EXPECT_EQ(area.wordMonitor, 0);
    EXPECT_EQ(area.bitMonitor, 0);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(area.plcValue[i], 0) << i;
        EXPECT_EQ(area.writeValue[i], 0) << i;
    }
}

TEST_F(DataImage, KnownWordIsFoundAgain)
{
    EXPECT_EQ(find(7, "DM", 100), 0);
    EXPECT_EQ(find(7, "DM", 101), 1);
    EXPECT_EQ(find(7, "DM", 100), 0);
    EXPECT_EQ(find(7, "DM", 101), 1);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(DataImage, EveryKeyDistinguishes)
{
    EXPECT_EQ(find(7, "DM", 100), 0);
    EXPECT_EQ(find(8, "DM", 100), 1);
    EXPECT_EQ(find(7, "HR", 100), 2);
    EXPECT_EQ(find(7, "DM", 101), 3);
    EXPECT_EQ(find(7, "dm", 100), 4);
}

TEST_F(DataImage, FirstOfTwoEqualRecordsIsFound)
{
    find(1, "DM", 1);
    find(7, "DM", 100);
    driver.dataAreas.append(driver.dataAreas.at(1));
    EXPECT_EQ(find(7, "DM", 100), 1);
}

TEST_F(DataImage, LookUpUsesTheListThatIsGiven)
{
    QList<_DATA_> areas;
    EXPECT_EQ(getIndexOfDataArea(7, QLatin1String("DM"), 100, areas), 0);
    EXPECT_EQ(areas.size(), 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

// ---- Change of a word ----------------------------------------------------------------------------------------------

TEST_F(DataImage, EqualWordsNotifyNothing)
{
    watch(100, 1, 0xFFFF);
    EXPECT_EQ(change(100, 0x1234, 0x1234), Notifications());
}

TEST_F(DataImage, EqualWordsStillCreateTheRecord)
{
    change(100, 5, 5);
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().requestTag, 7);
    EXPECT_EQ(driver.dataAreas.first().regType.toStdString(), "DM");
    EXPECT_EQ(driver.dataAreas.first().address, 100);
}

TEST_F(DataImage, ChangeOfAnUnknownWordCreatesItsRecordAndNotifiesNothing)
{
    EXPECT_EQ(change(100, 0, 1), Notifications());
    EXPECT_EQ(driver.dataAreas.size(), 1);
}

TEST_F(DataImage, ChangeStoresNothing)
{
    watch(100, 1, 0xFFFF);
    change(100, 0, 0xFFFF);
    const _DATA_ &area = driver.dataAreas.first();
    EXPECT_EQ(area.plcValue[0], 0);
    EXPECT_EQ(area.writeValue[0], 0);
    EXPECT_EQ(area.writePending, 0);
    EXPECT_EQ(area.wordMonitor, 1);
    EXPECT_EQ(area.bitMonitor, 0xFFFF);
}

TEST_F(DataImage, WatchedWordNotifiesOnce)
{
    watch(100, 1, 0);
    EXPECT_EQ(change(100, 0x0001, 0x0003), (Notifications{{3, 7, "DM", 100}}));
}

TEST_F(DataImage, WatchedBitsNotifyInOrderAndThenTheWord)
{
    watch(100, 1, 0x0003);
    EXPECT_EQ(change(100, 0x0000, 0x0003),
              (Notifications{{3, 7, "DM_bit", 1600}, {3, 7, "DM_bit", 1601}, {3, 7, "DM", 100}}));
}

TEST_F(DataImage, WatchedBitsNotifyWithoutTheWord)
{
    watch(100, 0, 0x8001);
    EXPECT_EQ(change(100, 0x8001, 0x0000), (Notifications{{3, 7, "DM_bit", 1600}, {3, 7, "DM_bit", 1615}}));
}

TEST_F(DataImage, EveryOneOfTheSixteenBitsNotifies)
{
    watch(2, 0, 0xFFFF);
    for (qint32 bit = 0; bit < 16; ++bit)
        EXPECT_EQ(change(2, 0, 1 << bit), (Notifications{{3, 7, "DM_bit", 32 + bit}}));
}

TEST_F(DataImage, UnchangedWatchedBitDoesNotNotify)
{
    watch(100, 0, 0x0003);
    EXPECT_EQ(change(100, 0x0001, 0x0003), (Notifications{{3, 7, "DM_bit", 1601}}));
}

TEST_F(DataImage, UnwatchedBitNotifiesOnlyTheWord)
{
    watch(100, 1, 0x0001);
    EXPECT_EQ(change(100, 0x0000, 0x0002), (Notifications{{3, 7, "DM", 100}}));
}

TEST_F(DataImage, BitsAbove15NotifyNothing)
{
    watch(100, 0, 0x10000);
    EXPECT_EQ(change(100, 0x00000, 0x10000), Notifications());
}

TEST_F(DataImage, WordsAreComparedInFull)
{
    watch(100, 1, 0xFFFF);
    EXPECT_EQ(change(100, 0x10000, 0x00000), (Notifications{{3, 7, "DM", 100}}));
}

TEST_F(DataImage, WordOnlyLeavesTheBitsOut)
{
    watch(100, 1, 0xFFFF);
    EXPECT_EQ(change(100, 0, 0xFFFF, 1), (Notifications{{3, 7, "DM", 100}}));
    EXPECT_EQ(change(100, 0, 0xFFFF, -1), (Notifications{{3, 7, "DM", 100}}));
}

TEST_F(DataImage, WordOnlyNotifiesNothingOfEqualWords)
{
    watch(100, 1, 0xFFFF);
    EXPECT_EQ(change(100, 0x1234, 0x1234, 1), Notifications());
}

TEST_F(DataImage, OnlyBit0OfTheWordMonitorCounts)
{
    watch(100, 2, 0);
    EXPECT_EQ(change(100, 0, 1), Notifications());
    watch(100, 3, 0);
    EXPECT_EQ(change(100, 0, 1), (Notifications{{3, 7, "DM", 100}}));
}

// Deliberate: the remainder has the sign of the monitor.
TEST_F(DataImage, NegativeWordMonitorNotifiesNothing)
{
    watch(100, -1, 0);
    EXPECT_EQ(change(100, 0, 1), Notifications());
}

TEST_F(DataImage, WordOnlyLooksAtTheSameBitOfTheWordMonitor)
{
    watch(100, 2, 0xFFFF);
    EXPECT_EQ(change(100, 0, 1, 1), Notifications());
    watch(100, -1, 0xFFFF);
    EXPECT_EQ(change(100, 0, 1, 1), Notifications());
    watch(100, 0, 0xFFFF);
    EXPECT_EQ(change(100, 0, 1, 1), Notifications());
}

TEST_F(DataImage, BitAddressesWrap)
{
    watch(0x08000001, 0, 0x0004);
    EXPECT_EQ(change(0x08000001, 0, 4), (Notifications{{3, 7, "DM_bit", -2147483630}}));
    watch(0x10000001, 0, 0x0001);
    EXPECT_EQ(change(0x10000001, 0, 1), (Notifications{{3, 7, "DM_bit", 16}}));
}

TEST_F(DataImage, CallbackMayMakeTheImageLonger)
{
    driver.valueChangeCallback = &DataImage::growImage;
    watch(100, 1, 0x8003);
    EXPECT_EQ(change(100, 0x0000, 0xFFFF), (Notifications{{3, 7, "DM_bit", 1600},
                                                          {3, 7, "DM_bit", 1601},
                                                          {3, 7, "DM_bit", 1615},
                                                          {3, 7, "DM", 100}}));
    EXPECT_EQ(driver.dataAreas.size(), 801);
}

// ---- Change of a byte ----------------------------------------------------------------------------------------------

TEST_F(DataImage, EqualBytesNotifyNothingButCreateTheRecord)
{
    EXPECT_EQ(changeByte(100, 5, 5), Notifications());
    EXPECT_EQ(driver.dataAreas.size(), 1);
    watch(100, 1, 0xFFFF);
    EXPECT_EQ(changeByte(100, 5, 5), Notifications());
}

// Deliberate: a byte's bits go by the type's own name and by address + bit.
TEST_F(DataImage, EveryBitOfAByteNotifiesUnderTheTypesOwnName)
{
    watch(2, 0, 0xFFFF);
    for (qint32 bit = 0; bit < 8; ++bit)
        EXPECT_EQ(changeByte(2, 0, quint8(1 << bit)), (Notifications{{3, 7, "DM", 2 + bit}}));
}

TEST_F(DataImage, BitsOfAByteNotifyInOrderWithoutTheWord)
{
    watch(100, 1, 0x00FF);
    EXPECT_EQ(changeByte(100, 0x80, 0x01), (Notifications{{3, 7, "DM", 100}, {3, 7, "DM", 107}}));
}

TEST_F(DataImage, UnwatchedBitsOfAByteNotifyNothing)
{
    watch(100, 1, 0);
    EXPECT_EQ(changeByte(100, 0x00, 0xFF), Notifications());
    watch(100, 1, 0xFF02);
    EXPECT_EQ(changeByte(100, 0x00, 0xFF), (Notifications{{3, 7, "DM", 101}}));
}

TEST_F(DataImage, AddressesOfAByteWrap)
{
    watch(2147483647, 0, 0x0002);
    EXPECT_EQ(changeByte(2147483647, 0, 2), (Notifications{{3, 7, "DM", -2147483647 - 1}}));
}

TEST_F(DataImage, CallbackOfAByteMayMakeTheImageLonger)
{
    driver.valueChangeCallback = &DataImage::growImage;
    watch(100, 0, 0x0081);
    EXPECT_EQ(changeByte(100, 0x00, 0xFF), (Notifications{{3, 7, "DM", 100}, {3, 7, "DM", 107}}));
}

} // namespace
