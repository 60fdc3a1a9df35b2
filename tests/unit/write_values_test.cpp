#include "data/data_image.h"
#include "data/write_values.h"
#include "driver_fixture.h"

namespace {

const qint32 LARGEST = 2147483647;
const qint32 SMALLEST = -2147483647 - 1;

typedef std::vector<quint8> Bytes;
typedef std::vector<Notification> Notifications;
typedef std::vector<std::string> Entries;

/// `size` bytes that tell their position.
Bytes ramp(std::size_t size)
{
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = quint8(i % 251);
    return bytes;
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

/// Entries as "tag type address count", in their order.
Entries entriesOf(const QList<VARIABLE> &queue)
{
    Entries entries;
    for (int i = 0; i < queue.size(); ++i) {
        const VARIABLE &entry = queue.at(i);
        entries.push_back(std::to_string(entry.requestTag) + " " + entry.regType.toStdString() + " "
                          + std::to_string(entry.address) + " " + std::to_string(entry.count));
    }
    return entries;
}

// ---- The queue -----------------------------------------------------------------------------------------------------

class WriteQueue : public ::testing::Test {
protected:
    /// DM 0, DM 1 and so on, of tag 1, one word each.
    void fill(int size)
    {
        for (int i = 0; i < size; ++i)
            queue.append(variable(1, "DM", i, 1));
    }

    void put(const VARIABLE &entry) { putIntoQueue(queue, entry); }

    /// Puts a marked entry for DM `address`, and returns the positions of marked entries.
    std::vector<int> putMarked(qint32 address)
    {
        VARIABLE entry = variable(1, "DM", address, 1);
        entry.requestId = 99;
        put(entry);
        std::vector<int> marked;
        for (int i = 0; i < queue.size(); ++i)
            if (queue.at(i).requestId == 99)
                marked.push_back(i);
        return marked;
    }

    QList<VARIABLE> queue;
};

TEST_F(WriteQueue, FirstEntryIsAppended)
{
    EXPECT_EQ(putMarked(0), std::vector<int>{0});
    EXPECT_EQ(queue.size(), 1);
}

TEST_F(WriteQueue, OtherEntryIsAppended)
{
    fill(2);
    EXPECT_EQ(putMarked(2), std::vector<int>{2});
    EXPECT_EQ(queue.size(), 3);
}

// Deliberate: the head is the write in progress and does not change under it.
TEST_F(WriteQueue, HeadIsNeverReplaced)
{
    fill(1);
    EXPECT_EQ(putMarked(0), std::vector<int>{1});
    EXPECT_EQ(queue.size(), 2);
}

TEST_F(WriteQueue, EntryBehindTheHeadIsReplacedInPlace)
{
    fill(3);
    EXPECT_EQ(putMarked(1), std::vector<int>{1});
    EXPECT_EQ(queue.size(), 3);
}

TEST_F(WriteQueue, LastEntryIsReplacedInPlace)
{
    fill(3);
    EXPECT_EQ(putMarked(2), std::vector<int>{2});
    EXPECT_EQ(queue.size(), 3);
}

TEST_F(WriteQueue, OfTwoEqualEntriesTheOneNearestTheEndIsReplaced)
{
    fill(2);
    queue.append(variable(1, "DM", 1, 1));
    queue.append(variable(1, "DM", 5, 1));
    EXPECT_EQ(putMarked(1), std::vector<int>{2});
    EXPECT_EQ(queue.size(), 4);
}

TEST_F(WriteQueue, ReplacingTakesEveryField)
{
    fill(2);
    VARIABLE entry = variable(1, "DM", 1, 1);
    entry.requestId = 12;
    std::fill_n(entry.value, int(VALUE_BUFFER_SIZE), quint8(0x5A));
    put(entry);
    ASSERT_EQ(queue.size(), 2);
    EXPECT_EQ(queue.at(1).requestId, 12);
    EXPECT_TRUE(std::equal(entry.value, entry.value + VALUE_BUFFER_SIZE, queue.at(1).value));
}

TEST_F(WriteQueue, AppendingTakesEveryField)
{
    VARIABLE entry = variable(3, "HR", 4, 5);
    entry.requestId = 12;
    std::fill_n(entry.value, int(VALUE_BUFFER_SIZE), quint8(0x5A));
    put(entry);
    EXPECT_EQ(entriesOf(queue), Entries{"3 HR 4 5"});
    EXPECT_EQ(queue.first().requestId, 12);
    EXPECT_TRUE(std::equal(entry.value, entry.value + VALUE_BUFFER_SIZE, queue.first().value));
}

TEST_F(WriteQueue, EveryKeyDistinguishes)
{
    fill(2);
    put(variable(2, "DM", 1, 1));
    put(variable(1, "HR", 1, 1));
    put(variable(1, "DM", 2, 1));
    put(variable(1, "DM", 1, 2));
    put(variable(1, "dm", 1, 1));
    EXPECT_EQ(entriesOf(queue), (Entries{"1 DM 0 1", "1 DM 1 1", "2 DM 1 1", "1 HR 1 1", "1 DM 2 1", "1 DM 1 2",
                                         "1 dm 1 1"}));
}

TEST_F(WriteQueue, FiveHundredThirteenthEntryIsAppended)
{
    fill(512);
    EXPECT_EQ(putMarked(1000), std::vector<int>{512});
    EXPECT_EQ(queue.size(), 513);
}

// Deliberate: under a flood of writes the newest keep replacing the last.
TEST_F(WriteQueue, FiveHundredFourteenthEntryReplacesTheLast)
{
    fill(513);
    EXPECT_EQ(putMarked(1000), std::vector<int>{512});
    EXPECT_EQ(queue.size(), 513);
    EXPECT_EQ(putMarked(1001), std::vector<int>{512});
    EXPECT_EQ(queue.at(512).address, 1001);
    EXPECT_EQ(queue.at(511).address, 511);
}

TEST_F(WriteQueue, FullQueueStillReplacesAnEqualEntryInPlace)
{
    fill(513);
    EXPECT_EQ(putMarked(1), std::vector<int>{1});
    EXPECT_EQ(queue.size(), 513);
    EXPECT_EQ(queue.at(512).address, 512);
}

TEST_F(WriteQueue, LongerQueueReplacesEntry512)
{
    fill(515);
    EXPECT_EQ(putMarked(1000), std::vector<int>{512});
    EXPECT_EQ(queue.size(), 515);
}

// ---- Queueing of a write -------------------------------------------------------------------------------------------

class WriteValues : public DriverTest {
protected:
    WriteValues()
    {
        driver.stationNo = 3;
        driver.wordsPerFrame = 64;
    }

    /// A write of tag 7 with requestId 41.
    static void write(const char *regType, qint32 address, qint32 count, const Bytes &data)
    {
        EXPECT_EQ(intf_setData(7, QLatin1String(regType), address, count, data.data(), 41), 1);
    }

    static Entries queued() { return entriesOf(driver.writeList); }

    /// The first bytes of a queued entry's value.
    static Bytes queuedBytes(int index, int count)
    {
        const VARIABLE &entry = driver.writeList.at(index);
        return Bytes(entry.value, entry.value + count);
    }

    static bool queuedRestIsZero(int index, int from)
    {
        const VARIABLE &entry = driver.writeList.at(index);
        return std::all_of(entry.value + from, entry.value + VALUE_BUFFER_SIZE, [](quint8 byte) { return byte == 0; });
    }

    static _DATA_ &word(qint32 address)
    {
        const int index = getIndexOfDataArea(7, QLatin1String("DM"), address, driver.dataAreas);
        return driver.dataAreas[index];
    }

    static void setPlcWord(qint32 address, int value)
    {
        word(address).plcValue[0] = quint8(value & 0xFF);
        word(address).plcValue[1] = quint8(value >> 8);
    }

    static void setPendingWord(qint32 address, int value)
    {
        word(address).writePending = 1;
        word(address).writeValue[0] = quint8(value & 0xFF);
        word(address).writeValue[1] = quint8(value >> 8);
    }

    static int writtenWord(qint32 address) { return word(address).writeValue[0] + 256 * word(address).writeValue[1]; }
    static int plcWord(qint32 address) { return word(address).plcValue[0] + 256 * word(address).plcValue[1]; }
};

Bytes slice(const Bytes &bytes, int begin, int end) { return Bytes(bytes.begin() + begin, bytes.begin() + end); }

TEST_F(WriteValues, WriteThatFitsIsOnePiece)
{
    write("HR", 20, 2, {1, 2, 3, 4});
    EXPECT_EQ(queued(), Entries{"7 HR 20 2"});
    EXPECT_EQ(driver.writeList.first().requestId, 41);
    EXPECT_EQ(queuedBytes(0, 4), (Bytes{1, 2, 3, 4}));
    EXPECT_TRUE(queuedRestIsZero(0, 4));
}

TEST_F(WriteValues, WriteOf150WordsIsCutIntoThreePieces)
{
    const Bytes data = ramp(300);
    write("DM", 1000, 150, data);
    EXPECT_EQ(queued(), (Entries{"7 DM 1000 64", "7 DM 1064 64", "7 DM 1128 22"}));
    EXPECT_EQ(queuedBytes(0, 128), slice(data, 0, 128));
    EXPECT_EQ(queuedBytes(1, 128), slice(data, 128, 256));
    EXPECT_EQ(queuedBytes(2, 44), slice(data, 256, 300));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(driver.writeList.at(i).requestId, 41) << i;
}

TEST_F(WriteValues, WriteOf128WordsIsTwoPieces)
{
    write("DM", 1000, 128, ramp(256));
    EXPECT_EQ(queued(), (Entries{"7 DM 1000 64", "7 DM 1064 64"}));
}

TEST_F(WriteValues, PiecesOnBothSidesOfTheLimit)
{
    write("DM", 0, 63, ramp(126));
    write("DM", 1000, 64, ramp(128));
    write("DM", 2000, 65, ramp(130));
    EXPECT_EQ(queued(), (Entries{"7 DM 0 63", "7 DM 1000 64", "7 DM 2000 64", "7 DM 2064 1"}));
}

TEST_F(WriteValues, BitsAreCutByTheSameLimitAtAnyBit)
{
    const Bytes data = ramp(130);
    write("DM_bit", 1605, 130, data);
    EXPECT_EQ(queued(), (Entries{"7 DM_bit 1605 64", "7 DM_bit 1669 64", "7 DM_bit 1733 2"}));
    EXPECT_EQ(queuedBytes(0, 64), slice(data, 0, 64));
    EXPECT_TRUE(queuedRestIsZero(0, 64));
    EXPECT_EQ(queuedBytes(1, 64), slice(data, 64, 128));
    EXPECT_EQ(queuedBytes(2, 2), slice(data, 128, 130));
    EXPECT_TRUE(queuedRestIsZero(2, 2));
}

TEST_F(WriteValues, LongWriteEndsAtItsCountInTheImage)
{
    for (int i = 0; i < 140; ++i)
        getIndexOfDataArea(7, QLatin1String("DM"), 100 + i, driver.dataAreas);
    write("DM", 100, 130, Bytes(280, 1));
    ASSERT_EQ(driver.dataAreas.size(), 140);
    for (int i = 0; i < 130; ++i)
        EXPECT_EQ(driver.dataAreas.at(i).writePending, 1) << i;
    for (int i = 130; i < 140; ++i)
        EXPECT_EQ(driver.dataAreas.at(i).writePending, 0) << i;
}

TEST_F(WriteValues, WriteOfNothingChangesNothing)
{
    write("DM", 100, 0, Bytes(2, 1));
    write("DM", 100, -1, Bytes(2, 1));
    write("DM", 100, -64, Bytes(2, 1));
    write("DM_bit", 100, 0, Bytes(2, 1));
    write("DM_bit", 100, -65, Bytes(2, 1));
    write("DM", 100, SMALLEST, Bytes(2, 1));
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(WriteValues, RepeatedWriteBehindTheHeadKeepsTheLastValue)
{
    write("HR", 1, 1, {1, 0});
    write("DM", 100, 1, {5, 0});
    write("DM", 100, 1, {6, 1});
    EXPECT_EQ(queued(), (Entries{"7 HR 1 1", "7 DM 100 1"}));
    EXPECT_EQ(queuedBytes(1, 2), (Bytes{6, 1}));
}

TEST_F(WriteValues, RepeatedWriteOfTheHeadIsAppended)
{
    write("DM", 100, 1, {5, 0});
    write("DM", 100, 1, {6, 0});
    EXPECT_EQ(queued(), (Entries{"7 DM 100 1", "7 DM 100 1"}));
    EXPECT_EQ(queuedBytes(0, 1), Bytes{5});
    EXPECT_EQ(queuedBytes(1, 1), Bytes{6});
}

TEST_F(WriteValues, QueueStopsAt513Writes)
{
    driver.wordsPerFrame = 1;
    write("DM", 0, 513, ramp(1026));
    EXPECT_EQ(driver.writeList.size(), 513);
    write("HR", 9, 1, {1, 2});
    EXPECT_EQ(driver.writeList.size(), 513);
    EXPECT_EQ(queued().at(512), "7 HR 9 1");
    EXPECT_EQ(queued().at(511), "7 DM 511 1");
}

TEST_F(WriteValues, WithoutALimitNothingIsCut)
{
    driver.wordsPerFrame = 0;
    write("DM", 1000, 150, ramp(300));
    write("DM_bit", 0, 150, ramp(150));
    EXPECT_EQ(queued(), (Entries{"7 DM 1000 150", "7 DM_bit 0 150"}));
    EXPECT_EQ(queuedBytes(0, 300), ramp(300));
}

TEST_F(WriteValues, WithoutALimitNothingIsNotQueued)
{
    driver.wordsPerFrame = 0;
    write("DM", 100, 0, Bytes(2, 1));
    write("DM", 100, -1, Bytes(2, 1));
    EXPECT_TRUE(driver.writeList.isEmpty());
}

TEST_F(WriteValues, NegativeLimitIsSafe)
{
    driver.wordsPerFrame = -1;
    write("DM", 100, SMALLEST, Bytes(2, 1));
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    driver.wordsPerFrame = -64;
    write("DM", 100, 1, {5, 6});
    EXPECT_EQ(writtenWord(100), 0x0605);
}

TEST_F(WriteValues, PieceOf512WordsFillsTheValueBuffer)
{
    driver.wordsPerFrame = 1000;
    write("DM", 0, 512, ramp(1024));
    EXPECT_EQ(queued(), Entries{"7 DM 0 512"});
    EXPECT_EQ(queuedBytes(0, 1024), ramp(1024));
}

TEST_F(WriteValues, PieceOf513WordsStopsAtTheEndOfTheValueBuffer)
{
    driver.wordsPerFrame = 1000;
    const Bytes data = ramp(1026);
    write("DM", 0, 513, data);
    EXPECT_EQ(queued(), Entries{"7 DM 0 513"});
    EXPECT_EQ(queuedBytes(0, 1024), ramp(1024));
    EXPECT_EQ(writtenWord(512), data[1024] + 256 * data[1025]);
}

TEST_F(WriteValues, PieceOf1024BitsFillsTheValueBuffer)
{
    driver.wordsPerFrame = 2000;
    write("DM_bit", 0, 1024, ramp(1024));
    EXPECT_EQ(queuedBytes(0, 1024), ramp(1024));
}

TEST_F(WriteValues, PieceOf1025BitsStopsAtTheEndOfTheValueBuffer)
{
    driver.wordsPerFrame = 2000;
    Bytes data(1025, 0);
    data[1023] = 9;
    data[1024] = 1;
    write("DM_bit", 0, 1025, data);
    EXPECT_EQ(queued(), Entries{"7 DM_bit 0 1025"});
    EXPECT_EQ(queuedBytes(0, 1024), slice(data, 0, 1024));
    EXPECT_EQ(writtenWord(64), 1);
}

TEST_F(WriteValues, PieceAddressesWrap)
{
    driver.wordsPerFrame = 1;
    write("DM", LARGEST, 2, {1, 0, 2, 0});
    EXPECT_EQ(queued(), (Entries{"7 DM 2147483647 1", "7 DM -2147483648 1"}));
    EXPECT_EQ(writtenWord(SMALLEST), 2);
}

TEST_F(WriteValues, DirectWriteIsStoredButNotQueued)
{
    driver.writeDirect = 1;
    word(100).wordMonitor = 1;
    write("DM", 100, 1, {5, 6});
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_EQ(writtenWord(100), 0x0605);
    EXPECT_EQ(word(100).writePending, 1);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM", 100}}));
}

TEST_F(WriteValues, AnyNonzeroSwitchMakesWritesDirect)
{
    driver.writeDirect = -1;
    write("DM", 100, 1, {5, 6});
    EXPECT_TRUE(driver.writeList.isEmpty());
}

// ---- Words in the data image ---------------------------------------------------------------------------------------

TEST_F(WriteValues, WrittenWordsArePendingInTheImage)
{
    setPlcWord(100, 0x1111);
    write("DM", 100, 2, {0x34, 0x12, 0xCD, 0xAB});
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(writtenWord(100), 0x1234);
    EXPECT_EQ(writtenWord(101), 0xABCD);
    EXPECT_EQ(word(100).writePending, 1);
    EXPECT_EQ(word(101).writePending, 1);
    EXPECT_EQ(plcWord(100), 0x1111);
    EXPECT_EQ(word(100).pendingBits, 0);
}

TEST_F(WriteValues, AllPiecesEnterTheImage)
{
    driver.wordsPerFrame = 1;
    write("DM", 100, 3, {1, 0, 2, 0, 3, 0});
    EXPECT_EQ(writtenWord(100), 1);
    EXPECT_EQ(writtenWord(101), 2);
    EXPECT_EQ(writtenWord(102), 3);
    EXPECT_EQ(driver.dataAreas.size(), 3);
}

TEST_F(WriteValues, WriteSavesUnderTheTypesOwnNameWithoutTheExactSuffix)
{
    write_saveDataToArea(7, QLatin1String("DM_Bit"), 100, 1, Bytes({5, 6}).data());
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().regType.toStdString(), "DM_Bit");
    EXPECT_EQ(driver.dataAreas.first().address, 100);
    EXPECT_EQ(driver.dataAreas.first().writeValue[1], 6);
}

TEST_F(WriteValues, ChangedWordNotifiesBitsAndWord)
{
    word(100).wordMonitor = 1;
    word(100).bitMonitor = 0x8001;
    write("DM", 100, 1, {0x01, 0x80});
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1600}, {3, 7, "DM_bit", 1615}, {3, 7, "DM", 100}}));
}

TEST_F(WriteValues, WriteOfThePlcsValueNotifiesNothingButIsPending)
{
    setPlcWord(100, 0x1234);
    word(100).wordMonitor = 1;
    word(100).writeValue[0] = 0x99;
    write("DM", 100, 1, {0x34, 0x12});
    EXPECT_TRUE(notifications().empty());
    EXPECT_EQ(word(100).writePending, 1);
    EXPECT_EQ(writtenWord(100), 0x1234);
}

TEST_F(WriteValues, WriteOfThePendingValueNotifiesNothing)
{
    setPlcWord(100, 0x9999);
    setPendingWord(100, 0x1234);
    word(100).wordMonitor = 1;
    write("DM", 100, 1, {0x34, 0x12});
    EXPECT_TRUE(notifications().empty());
}

TEST_F(WriteValues, WriteOverAPendingValueNotifies)
{
    setPlcWord(100, 0x1234);
    setPendingWord(100, 0x9999);
    word(100).wordMonitor = 1;
    write("DM", 100, 1, {0x34, 0x12});
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM", 100}}));
}

TEST_F(WriteValues, ChangeOfTheHighByteAloneNotifies)
{
    setPlcWord(100, 0x1234);
    word(100).bitMonitor = 0x0100;
    write("DM", 100, 1, {0x34, 0x13});
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1608}}));
}

TEST_F(WriteValues, HighByteOfThePendingValueIsCompared)
{
    setPendingWord(100, 0x1300);
    word(100).bitMonitor = 0xFFFF;
    write("DM", 100, 1, {0x00, 0x12});
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1608}}));
}

TEST_F(WriteValues, CallbackSeesTheWordFromBeforeTheStore)
{
    driver.valueChangeCallback = &WriteValues::readBack;
    setPlcWord(100, 3);
    word(100).wordMonitor = 1;
    write("DM", 100, 1, {5, 0});
    write("DM", 100, 1, {6, 0});
    EXPECT_EQ(seen(), (std::vector<int>{3, 5}));
}

TEST_F(WriteValues, CallbackMayMakeTheImageLonger)
{
    driver.valueChangeCallback = &WriteValues::readBack;
    for (int i = 0; i < 3; ++i)
        word(100 + i).wordMonitor = 1;
    write("DM", 100, 3, {1, 0, 2, 0, 3, 0});
    EXPECT_EQ(driver.dataAreas.size(), 603);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(writtenWord(100 + i), 1 + i);
        EXPECT_EQ(word(100 + i).writePending, 1);
    }
}

TEST_F(WriteValues, CallbackRunsWithTheMutexFree)
{
    driver.valueChangeCallback = &WriteValues::tryMutex;
    word(100).wordMonitor = 1;
    write("DM", 100, 1, {5, 0});
    EXPECT_EQ(seen(), std::vector<int>{1});
}

// ---- Bits in the data image ----------------------------------------------------------------------------------------

TEST_F(WriteValues, WrittenBitIsPendingInItsWord)
{
    setPlcWord(100, 0x00F0);
    word(100).bitMonitor = 0x0020;
    write("DM_bit", 1605, 1, {1});
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(writtenWord(100), 0x00F0);
    EXPECT_EQ(plcWord(100), 0x00F0);
    EXPECT_EQ(word(100).pendingBits, 0x0020);
    EXPECT_EQ(word(100).writePending, 1);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(WriteValues, EveryBitIsSetAndClearedAlone)
{
    for (qint32 bit = 0; bit < 16; ++bit) {
        driver.dataAreas.clear();
        write("DM_bit", 1600 + bit, 1, {1});
        EXPECT_EQ(writtenWord(100), 1 << bit);
        EXPECT_EQ(word(100).pendingBits, 1 << bit);
        driver.dataAreas.clear();
        setPlcWord(100, 0xFFFF);
        write("DM_bit", 1600 + bit, 1, {0});
        EXPECT_EQ(writtenWord(100), 0xFFFF - (1 << bit));
        EXPECT_EQ(word(100).pendingBits, 1 << bit);
    }
}

TEST_F(WriteValues, FirstRecordOfTheImageIsNotTakenForTheWordOfABit)
{
    getIndexOfDataArea(7, QLatin1String("HR"), 100, driver.dataAreas);
    write("DM_bit", 1600, 1, {1});
    ASSERT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(driver.dataAreas.at(0).writePending, 0);
    EXPECT_EQ(driver.dataAreas.at(1).writePending, 1);
}

// Deliberate: only the value 1 sets a bit.
TEST_F(WriteValues, OnlyTheValueOneSetsABit)
{
    setPlcWord(100, 0x000F);
    write("DM_bit", 1600, 5, {0, 2, 255, 128, 1});
    EXPECT_EQ(writtenWord(100), 0x0010);
    EXPECT_EQ(word(100).pendingBits, 0x001F);
}

TEST_F(WriteValues, BitWriteTakesTheOtherByteFromThePlc)
{
    setPlcWord(100, 0x1234);
    word(100).writeValue[0] = 0x99;
    word(100).writeValue[1] = 0x99;
    write("DM_bit", 1600, 1, {1});
    EXPECT_EQ(writtenWord(100), 0x1235);
}

TEST_F(WriteValues, BitWriteIntoTheHighByteTakesTheLowByteFromThePlc)
{
    setPlcWord(100, 0x1234);
    word(100).writeValue[0] = 0x99;
    word(100).writeValue[1] = 0x99;
    write("DM_bit", 1608, 1, {1});
    EXPECT_EQ(writtenWord(100), 0x1334);
}

TEST_F(WriteValues, BitWriteOverAPendingWordKeepsItsOtherBits)
{
    setPlcWord(100, 0x1234);
    setPendingWord(100, 0x5678);
    write("DM_bit", 1600, 1, {1});
    EXPECT_EQ(writtenWord(100), 0x5679);
    write("DM_bit", 1608, 1, {1});
    EXPECT_EQ(writtenWord(100), 0x5779);
    EXPECT_EQ(word(100).pendingBits, 0x0101);
}

TEST_F(WriteValues, BitsCrossIntoTheNextWord)
{
    write("DM_bit", 1614, 4, {1, 1, 1, 0});
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(writtenWord(100), 0xC000);
    EXPECT_EQ(writtenWord(101), 0x0001);
    EXPECT_EQ(word(100).pendingBits, 0xC000);
    EXPECT_EQ(word(101).pendingBits, 0x0003);
}

TEST_F(WriteValues, ChangedBitNotifiesUnderItsOwnNameThenTheWord)
{
    word(100).wordMonitor = 1;
    word(100).bitMonitor = 0xFFFF;
    write("DM_bit", 1613, 1, {1});
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1613}, {3, 7, "DM", 100}}));
}

TEST_F(WriteValues, UnwatchedBitNotifiesOnlyTheWord)
{
    word(100).wordMonitor = 1;
    write("DM_bit", 1600, 2, {1, 1});
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM", 100}, {3, 7, "DM", 100}}));
}

TEST_F(WriteValues, BitChangeIsJudgedAgainstThePendingValue)
{
    setPlcWord(100, 0x0001);
    setPendingWord(100, 0x0000);
    word(100).bitMonitor = 0xFFFF;
    write("DM_bit", 1600, 1, {1});
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 1600}}));
}

TEST_F(WriteValues, CallbackSeesTheBitFromBeforeTheStore)
{
    driver.valueChangeCallback = &WriteValues::readBack;
    setPlcWord(100, 0x0010);
    word(100).wordMonitor = 1;
    write("DM_bit", 1600, 2, {1, 1});
    EXPECT_EQ(seen(), (std::vector<int>{0x0010, 0x0011}));
    EXPECT_EQ(writtenWord(100), 0x0013);
    EXPECT_EQ(word(100).pendingBits, 0x0003);
    EXPECT_EQ(driver.dataAreas.size(), 401);
}

TEST_F(WriteValues, BitBelowAddressZeroStoresNothing)
{
    setPlcWord(0, 0x00F0);
    word(0).bitMonitor = 0xFFFF;
    write("DM_bit", -1, 2, {1, 1});
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(writtenWord(0), 0x00F1);
    EXPECT_EQ(word(0).pendingBits, 0x0001);
    EXPECT_EQ(notifications(), (Notifications{{3, 7, "DM_bit", 0}}));
}

TEST_F(WriteValues, BitBelowAddressZeroCreatesItsWordAndIsQueued)
{
    write("DM_bit", -17, 1, {1});
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.first().address, -1);
    EXPECT_EQ(driver.dataAreas.first().pendingBits, 0);
    EXPECT_EQ(driver.dataAreas.first().writePending, 0);
    EXPECT_EQ(writtenWord(-1), 0);
    EXPECT_EQ(queued(), Entries{"7 DM_bit -17 1"});
}

TEST_F(WriteValues, BitAddressesWrap)
{
    write("DM_bit", LARGEST, 2, {1, 1});
    EXPECT_EQ(writtenWord(0x07FFFFFF), 0x8000);
    EXPECT_EQ(writtenWord(-0x08000000), 0x0001);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

// Division truncates, so bit -16 lies in word -1 and bit -15 in word 0.
TEST_F(WriteValues, LooksUpTheWordOfEachBitBelowZero)
{
    const quint8 bits[3] = {1, 1, 1};
    write_saveDataToArea(7, QLatin1String("DM_bit"), -17, 3, bits);
    ASSERT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(driver.dataAreas.at(0).address, -1);
    EXPECT_EQ(driver.dataAreas.at(0).pendingBits, 1);
    EXPECT_EQ(driver.dataAreas.at(1).address, 0);
    EXPECT_EQ(driver.dataAreas.at(1).pendingBits, 0);
}

} // namespace
