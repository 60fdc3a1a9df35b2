#include "driver_fixture.h"

#include "poll/poll_list.h"

#include <limits>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

/// One watched item.
struct Watch {
    qint32      requestTag;
    const char *regType;
    qint32      address;
    qint32      count;
};

/// One entry of the poll list.
struct Poll {
    qint32      requestId;
    qint32      requestTag;
    std::string regType;
    qint32      address;
    qint32      count;
};

bool operator==(const Poll &a, const Poll &b)
{
    return a.requestId == b.requestId && a.requestTag == b.requestTag && a.regType == b.regType
        && a.address == b.address && a.count == b.count;
}

std::ostream &operator<<(std::ostream &out, const Poll &poll)
{
    return out << poll.requestId << ": " << poll.requestTag << ' ' << poll.regType << ' ' << poll.address << " x "
               << poll.count;
}

/// The keys and the marks of one record of the data image.
struct Mark {
    qint32      requestTag;
    std::string regType;
    qint32      address;
    qint32      wordMonitor;
    qint32      bitMonitor;
};

bool operator==(const Mark &a, const Mark &b)
{
    return a.requestTag == b.requestTag && a.regType == b.regType && a.address == b.address
        && a.wordMonitor == b.wordMonitor && a.bitMonitor == b.bitMonitor;
}

std::ostream &operator<<(std::ostream &out, const Mark &mark)
{
    return out << mark.requestTag << ' ' << mark.regType << ' ' << mark.address << " word " << mark.wordMonitor
               << " bits " << mark.bitMonitor;
}

typedef std::vector<Poll> Polls;
typedef std::vector<Mark> Marks;

KEY_ADDRESS itemOf(const Watch &watch)
{
    KEY_ADDRESS item;
    item.requestTag = watch.requestTag;
    item.regType = watch.regType;
    item.address = watch.address;
    item.count = watch.count;
    std::fill_n(item.data, int{VALUE_BUFFER_SIZE}, quint8{0});
    return item;
}

class PollList : public DriverTest {
protected:
    PollList() { driver.maxWordsPerFrame = 64; }

    qint32 watch(const std::vector<Watch> &watches)
    {
        list.clear();
        for (const Watch &item : watches)
            list.append(itemOf(item));
        return intf_addrMerge(list);
    }

    static Polls polls()
    {
        Polls entries;
        for (int i = 0; i < driver.readList.size(); ++i) {
            const VARIABLE &entry = driver.readList.at(i);
            entries.push_back({entry.requestId, entry.requestTag, entry.regType.toStdString(), entry.address,
                               entry.count});
        }
        return entries;
    }

    static Marks marks()
    {
        Marks records;
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_ &area = driver.dataAreas.at(i);
            records.push_back({area.requestTag, area.regType.toStdString(), area.address, area.wordMonitor,
                               area.bitMonitor});
        }
        return records;
    }

    /// A record as it stands after some use, with every field set.
    static _DATA_ usedArea(qint32 requestTag, const char *regType, qint32 address)
    {
        _DATA_ area = _DATA_();
        area.rcvFlag = 3;
        area.writePending = 1;
        area.pendingBits = 0x11;
        area.requestTag = requestTag;
        area.regType = regType;
        area.address = address;
        area.plcValue[0] = 5;
        area.plcValue[1] = 6;
        area.writeValue[0] = 7;
        area.writeValue[1] = 8;
        return area;
    }

    static void expectUsed(const _DATA_ &area)
    {
        EXPECT_EQ(area.rcvFlag, 3);
        EXPECT_EQ(area.writePending, 1);
        EXPECT_EQ(area.pendingBits, 0x11);
        EXPECT_EQ(area.plcValue[0], 5);
        EXPECT_EQ(area.plcValue[1], 6);
        EXPECT_EQ(area.writeValue[0], 7);
        EXPECT_EQ(area.writeValue[1], 8);
    }

    static void expectZeroButMarks(const _DATA_ &area)
    {
        EXPECT_EQ(area.rcvFlag, 0);
        EXPECT_EQ(area.writePending, 0);
        EXPECT_EQ(area.pendingBits, 0);
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(area.plcValue[i], 0);
            EXPECT_EQ(area.writeValue[i], 0);
        }
    }

    QList<KEY_ADDRESS> list; // the runtime's list
};

// ---- The whole call ------------------------------------------------------------------------------------------------

TEST_F(PollList, WordsAndABitOfTheFirstWord)
{
    EXPECT_EQ(watch({{0, "DM", 100, 3}, {0, "DM_bit", 1605, 1}}), 1);

    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 1, 0x20}, {0, "DM", 101, 1, 0}, {0, "DM", 102, 1, 0}}));
    EXPECT_EQ(polls(), (Polls{{4, 0, "DM", 100, 1}}));
}

TEST_F(PollList, ABitOfTheFirstWordAndTheWords)
{
    EXPECT_EQ(watch({{0, "DM_bit", 1605, 1}, {0, "DM", 100, 3}}), 1);

    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 1, 0x20}, {0, "DM", 101, 1, 0}, {0, "DM", 102, 1, 0}}));
    EXPECT_EQ(polls(), (Polls{{4, 0, "DM", 100, 3}}));
}

TEST_F(PollList, SecondCallReplacesMarksAndPolls)
{
    watch({{0, "DM", 100, 3}, {0, "DM_bit", 1605, 1}});

    EXPECT_EQ(watch({{0, "DM", 101, 1}}), 1);
    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 0, 0}, {0, "DM", 101, 1, 0}, {0, "DM", 102, 0, 0}}));
    EXPECT_EQ(polls(), (Polls{{4, 0, "DM", 101, 1}}));
}

TEST_F(PollList, ThirtyTwoBits)
{
    EXPECT_EQ(watch({{0, "CIO_bit", 0, 32}}), 1);

    EXPECT_EQ(marks(), (Marks{{0, "CIO", 0, 0, 0xFFFF}, {0, "CIO", 1, 0, 0xFFFF}}));
    EXPECT_EQ(polls(), (Polls{{4, 0, "CIO", 0, 2}}));
}

TEST_F(PollList, OneWordWithTwoTagsHasTwoRecordsButMayShareABlock)
{
    EXPECT_EQ(watch({{7, "DM", 100, 1}, {8, "DM", 100, 1}}), 1);

    EXPECT_EQ(marks(), (Marks{{7, "DM", 100, 1, 0}, {8, "DM", 100, 1, 0}}));
    EXPECT_EQ(polls(), (Polls{{4, 7, "DM", 100, 1}}));
}

TEST_F(PollList, EmptyListClearsPollsAndMarks)
{
    watch({{0, "DM", 100, 1}, {0, "DM_bit", 1605, 1}});

    EXPECT_EQ(watch({}), 0);
    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 0, 0}}));
    EXPECT_EQ(polls(), Polls());
}

TEST_F(PollList, OneEntryPerBlockInTheirOrder)
{
    EXPECT_EQ(watch({{3, "DM", 500, 2}, {2, "DM", 100, 10}, {1, "CIO_bit", 37, 20}, {4, "DM", 110, 1}}), 3);

    EXPECT_EQ(polls(), (Polls{{4, 1, "CIO", 2, 2}, {4, 2, "DM", 100, 11}, {4, 3, "DM", 500, 2}}));
}

TEST_F(PollList, RuntimesListBecomesTheBlocks)
{
    watch({{3, "DM", 120, 5}, {2, "DM_bit", 1600, 1}});

    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list.at(0).requestTag, 2);
    EXPECT_EQ(list.at(0).regType.toStdString(), "DM");
    EXPECT_EQ(list.at(0).address, 100);
    EXPECT_EQ(list.at(0).count, 25);
}

TEST_F(PollList, BlocksFitTheFrame)
{
    driver.maxWordsPerFrame = 10;
    EXPECT_EQ(watch({{0, "DM", 0, 6}, {0, "DM", 6, 4}, {0, "DM", 10, 6}}), 2);
    EXPECT_EQ(polls(), (Polls{{4, 0, "DM", 0, 10}, {4, 0, "DM", 10, 6}}));
}

TEST_F(PollList, RecordsAreCreatedInTheRuntimesOrder)
{
    watch({{0, "DM", 300, 1}, {0, "CIO", 5, 1}, {0, "DM_bit", 16, 1}});

    EXPECT_EQ(marks(), (Marks{{0, "DM", 300, 1, 0}, {0, "CIO", 5, 1, 0}, {0, "DM", 1, 0, 1}}));
}

TEST_F(PollList, WordsReadOverAreNotMarked)
{
    watch({{0, "DM", 0, 1}, {0, "DM", 3, 1}});

    EXPECT_EQ(polls(), (Polls{{4, 0, "DM", 0, 4}}));
    EXPECT_EQ(marks(), (Marks{{0, "DM", 0, 1, 0}, {0, "DM", 3, 1, 0}}));
}

TEST_F(PollList, CountBelow1MarksNothingButIsMerged)
{
    EXPECT_EQ(watch({{0, "DM", 100, 0}, {0, "WR_bit", 160, 0}, {0, "HR", 7, -3}}), 3);

    EXPECT_EQ(marks(), Marks());
    EXPECT_EQ(polls(), (Polls{{4, 0, "WR", 10, 0}, {4, 0, "HR", 7, -3}, {4, 0, "DM", 100, 0}}));
}

TEST_F(PollList, UnknownTypesGoUnderTheirOwnName)
{
    EXPECT_EQ(watch({{0, "EM", 5, 1}, {0, "FM_bit", 33, 1}}), 2);

    EXPECT_EQ(marks(), (Marks{{0, "EM", 5, 1, 0}, {0, "FM", 2, 0, 2}}));
    EXPECT_EQ(polls(), (Polls{{4, 0, "FM", 2, 1}, {4, 0, "EM", 5, 1}}));
}

TEST_F(PollList, CachedValuesStay)
{
    driver.dataAreas.append(usedArea(0, "DM", 100));
    driver.dataAreas.append(usedArea(0, "DM", 200));

    watch({{0, "DM", 100, 1}});
    ASSERT_EQ(driver.dataAreas.size(), 2);
    expectUsed(driver.dataAreas.at(0));
    expectUsed(driver.dataAreas.at(1));
}

TEST_F(PollList, OldMarksAreClearedWhole)
{
    _DATA_ area = usedArea(0, "DM", 100);
    area.wordMonitor = 7;
    area.bitMonitor = -1;
    driver.dataAreas.append(area);

    watch({{0, "DM", 100, 1}});
    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 1, 0}}));
}

TEST_F(PollList, OtherQueuesStayAndNothingIsReported)
{
    driver.writeList.append(VARIABLE());
    driver.conditionReadList.append(VARIABLE());
    driver.frameList.append(FRAME_PRO());

    watch({{0, "DM", 100, 1}});
    EXPECT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.conditionReadList.size(), 1);
    EXPECT_EQ(driver.frameList.size(), 1);
    EXPECT_TRUE(notifications().empty());
}

TEST_F(PollList, LongTable)
{
    std::vector<Watch> watches;
    for (qint32 word = 299; word >= 0; --word)
        watches.push_back({0, "DM", word * 100, 1});

    EXPECT_EQ(watch(watches), 300);
    ASSERT_EQ(driver.readList.size(), 300);
    EXPECT_EQ(driver.readList.at(0).address, 0);
    EXPECT_EQ(driver.readList.at(299).address, 29900);
    EXPECT_EQ(driver.dataAreas.size(), 300);
}

// ---- Marking of one item -------------------------------------------------------------------------------------------

TEST_F(PollList, MarkingGives0)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(0, "DM", 100, 2), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(0, "DM", 100, 0), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(0, "DM_bit", 100, 2), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(0, "DM_bit", 100, 0), 0);
}

TEST_F(PollList, NewRecordIsZeroButItsKeysAndMarks)
{
    _setDataAreaMonitorFlag(9, "DM", 100, 1);
    _setDataAreaMonitorFlag(9, "HR_bit", 17, 1);

    EXPECT_EQ(marks(), (Marks{{9, "DM", 100, 1, 0}, {9, "HR", 1, 0, 2}}));
    expectZeroButMarks(driver.dataAreas.at(0));
    expectZeroButMarks(driver.dataAreas.at(1));
}

TEST_F(PollList, MarksAreAdded)
{
    _DATA_ area = usedArea(0, "DM", 100);
    area.wordMonitor = 2;
    area.bitMonitor = 0x40;
    driver.dataAreas.append(area);

    _setDataAreaMonitorFlag(0, "DM", 100, 1);
    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 3, 0x40}}));
    _setDataAreaMonitorFlag(0, "DM_bit", 1605, 1);
    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 3, 0x60}}));
    expectUsed(driver.dataAreas.at(0));
}

TEST_F(PollList, AllThreeKeysMustMatch)
{
    driver.dataAreas.append(usedArea(1, "DM", 100));
    driver.dataAreas.append(usedArea(0, "HR", 100));
    driver.dataAreas.append(usedArea(0, "DM", 101));

    _setDataAreaMonitorFlag(0, "DM", 100, 1);
    EXPECT_EQ(marks(), (Marks{{1, "DM", 100, 0, 0}, {0, "HR", 100, 0, 0}, {0, "DM", 101, 0, 0}, {0, "DM", 100, 1, 0}}));
}

TEST_F(PollList, FirstMatchingRecordIsMarked)
{
    driver.dataAreas.append(usedArea(0, "DM", 100));
    driver.dataAreas.append(usedArea(0, "DM", 100));

    _setDataAreaMonitorFlag(0, "DM", 100, 1);
    _setDataAreaMonitorFlag(0, "DM_bit", 1600, 1);
    EXPECT_EQ(marks(), (Marks{{0, "DM", 100, 1, 1}, {0, "DM", 100, 0, 0}}));
}

TEST_F(PollList, BitsOverTheEndOfAWord)
{
    _setDataAreaMonitorFlag(0, "CIO_bit", 30, 4);
    EXPECT_EQ(marks(), (Marks{{0, "CIO", 1, 0, 0xC000}, {0, "CIO", 2, 0, 3}}));
}

TEST_F(PollList, WordTypeOfABitTypeEndsAtTheFirstUnderscore)
{
    _setDataAreaMonitorFlag(0, "E_M_bit", 0, 1);
    EXPECT_EQ(marks(), (Marks{{0, "E", 0, 0, 1}}));
}

TEST_F(PollList, OnlyTheExactSuffixMakesABitItem)
{
    _setDataAreaMonitorFlag(0, "DM_BIT", 33, 1);
    _setDataAreaMonitorFlag(0, "DM_bits", 33, 1);
    EXPECT_EQ(marks(), (Marks{{0, "DM_BIT", 33, 1, 0}, {0, "DM_bits", 33, 1, 0}}));
}

TEST_F(PollList, CountBelow1MarksNothing)
{
    for (qint32 count : {0, -1, LOWEST}) {
        SCOPED_TRACE(count);
        _setDataAreaMonitorFlag(0, "DM", 100, count);
        _setDataAreaMonitorFlag(0, "DM_bit", 1600, count);
        EXPECT_EQ(marks(), Marks());
    }
}

TEST_F(PollList, NegativeBitAddressIsDividedTowardsZeroAndMarksOnlyWholeWords)
{
    _setDataAreaMonitorFlag(0, "DM_bit", -17, 3);
    EXPECT_EQ(marks(), (Marks{{0, "DM", -1, 0, 1}, {0, "DM", 0, 0, 0}}));
}

TEST_F(PollList, NegativeWordAddressIsMarked)
{
    _setDataAreaMonitorFlag(0, "DM", -1, 2);
    EXPECT_EQ(marks(), (Marks{{0, "DM", -1, 1, 0}, {0, "DM", 0, 1, 0}}));
}

TEST_F(PollList, HighestAddress)
{
    _setDataAreaMonitorFlag(0, "DM", HIGHEST, 1);
    _setDataAreaMonitorFlag(0, "HR_bit", HIGHEST, 1);
    EXPECT_EQ(marks(), (Marks{{0, "DM", HIGHEST, 1, 0}, {0, "HR", 134217727, 0, 0x8000}}));
}

TEST_F(PollList, AddressesWrap)
{
    _setDataAreaMonitorFlag(0, "DM", HIGHEST, 2);
    _setDataAreaMonitorFlag(0, "HR_bit", HIGHEST, 2);
    EXPECT_EQ(marks(), (Marks{{0, "DM", HIGHEST, 1, 0},
                              {0, "DM", LOWEST, 1, 0},
                              {0, "HR", 134217727, 0, 0x8000},
                              {0, "HR", -134217728, 0, 1}}));
}

} // namespace
