#include "data/area_walk.h"
#include "driver_fixture.h"

#include <limits>
#include <random>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

typedef std::vector<qint32> Positions;

_DATA_ recordOf(qint32 requestTag, const QString &regType, qint32 address)
{
    _DATA_ area = _DATA_();
    area.requestTag = requestTag;
    area.regType = regType;
    area.address = address;
    return area;
}

/// What the index answers for: a look at one record after the other.
qint32 search(qint32 requestTag, const QString &regType, qint32 address, const QList<_DATA_> &areas)
{
    for (int i = 0; i < areas.size(); ++i) {
        const _DATA_ &area = areas.at(i);
        if (area.requestTag == requestTag && area.regType == regType && area.address == address)
            return i;
    }
    return -1;
}

/// The same for a run of addresses, which may wrap.
Positions searchRun(qint32 requestTag, const QString &regType, qint32 address, int count, const QList<_DATA_> &areas)
{
    Positions found;
    for (qint64 i = 0; i < count; ++i) {
        const qint32 position = search(requestTag, regType, static_cast<qint32>(address + i), areas);
        if (position < 0)
            break;
        found.push_back(position);
    }
    return found;
}

/// The run as the index gives it: a look-up, and then from each record to the expected next one, if that has the keys.
Positions indexedRun(qint32 requestTag, const QString &regType, qint32 address, int count, QList<_DATA_> &areas)
{
    Positions found;
    qint32 position = findArea(requestTag, regType, address, areas);
    for (qint64 i = 1; position >= 0; ++i) {
        found.push_back(position);
        if (i == count)
            break;
        position = nextAreas()[position];
        if (!hasKeys(areas.at(position), requestTag, regType, static_cast<qint32>(address + i)))
            break;
    }
    return found;
}

/// Records with tag 7 and type DM, unless a test says otherwise.
class AreaIndex : public DriverTest {
protected:
    void add(qint32 address) { add(7, "DM", address); }

    void add(qint32 requestTag, const char *regType, qint32 address)
    {
        areas.append(recordOf(requestTag, QLatin1String(regType), address));
    }

    qint32 find(qint32 address) { return find(7, "DM", address); }

    qint32 find(qint32 requestTag, const char *regType, qint32 address)
    {
        return findArea(requestTag, QLatin1String(regType), address, areas);
    }

    Positions findRun(qint32 address, int count) { return findRun(7, QLatin1String("DM"), address, count); }

    Positions findRun(qint32 requestTag, const QString &regType, qint32 address, int count)
    {
        return indexedRun(requestTag, regType, address, count, areas);
    }

    /// Position of the record that the walk goes to.
    qint32 goTo(AreaWalk &walk, qint32 address)
    {
        const _DATA_ *area = &walk.to(address);
        qint32 position = 0;
        while (position < areas.size() && &areas.at(position) != area)
            ++position;
        return position;
    }

    QList<_DATA_> &areas = driver.dataAreas;
};

// ---- One record ----------------------------------------------------------------------------------------------------

TEST_F(AreaIndex, EmptyListHasNoRecord)
{
    EXPECT_EQ(find(100), -1);
    EXPECT_TRUE(areas.isEmpty());
}

TEST_F(AreaIndex, MissingRecordIsNotAppended)
{
    add(100);
    EXPECT_EQ(find(101), -1);
    EXPECT_EQ(areas.size(), 1);
}

TEST_F(AreaIndex, EveryKeyCounts)
{
    add(7, "DM", 100);
    add(8, "DM", 100);
    add(7, "HR", 100);
    add(7, "DM", 101);
    EXPECT_EQ(find(7, "DM", 100), 0);
    EXPECT_EQ(find(8, "DM", 100), 1);
    EXPECT_EQ(find(7, "HR", 100), 2);
    EXPECT_EQ(find(7, "DM", 101), 3);
    EXPECT_EQ(find(8, "HR", 100), -1);
    EXPECT_EQ(find(8, "DM", 101), -1);
    EXPECT_EQ(find(7, "HR", 101), -1);
}

TEST_F(AreaIndex, FirstOfEqualRecordsIsFound)
{
    add(99);
    add(100);
    add(100);
    EXPECT_EQ(find(100), 1);
    add(100);
    EXPECT_EQ(find(100), 1);
}

TEST_F(AreaIndex, FirstOfEqualRecordsIsFoundAfterGrowth)
{
    add(99);
    add(100);
    add(100);
    EXPECT_EQ(find(100), 1);
    for (qint32 i = 0; i < 200; ++i)
        add(100);
    EXPECT_EQ(find(100), 1);
    EXPECT_EQ(find(99), 0);
}

TEST_F(AreaIndex, RecordsThatOthersAppendedAreFound)
{
    add(100);
    EXPECT_EQ(find(100), 0);
    EXPECT_EQ(find(101), -1);
    add(101);
    add(102);
    EXPECT_EQ(find(101), 1);
    EXPECT_EQ(find(102), 2);
    EXPECT_EQ(find(100), 0);
}

TEST_F(AreaIndex, FirstRecordKeepsItsFields)
{
    add(100);
    areas[0].plcValue[0] = 0x34;
    areas[0].bitMonitor = 5;
    EXPECT_EQ(find(100), 0);
    EXPECT_EQ(areas.at(0).requestTag, 7);
    EXPECT_EQ(areas.at(0).regType.toStdString(), "DM");
    EXPECT_EQ(areas.at(0).address, 100);
    EXPECT_EQ(areas.at(0).plcValue[0], 0x34);
    EXPECT_EQ(areas.at(0).bitMonitor, 5);
}

// ---- Lists that were replaced --------------------------------------------------------------------------------------

TEST_F(AreaIndex, ListClearedAndFilledAgainWithAsManyRecords)
{
    add(100);
    add(101);
    add(102);
    EXPECT_EQ(find(101), 1);
    areas.clear();
    add(102);
    add(100);
    add(103);
    EXPECT_EQ(find(100), 1);
    EXPECT_EQ(find(102), 0);
    EXPECT_EQ(find(103), 2);
    EXPECT_EQ(find(101), -1);
}

TEST_F(AreaIndex, ListClearedAndFilledAgainWithTheSameFirstRecord)
{
    const QString sharedName = QLatin1String("DM");
    areas.append(recordOf(7, sharedName, 100));
    areas.append(recordOf(7, sharedName, 101));
    EXPECT_EQ(find(101), 1);
    areas.clear();
    areas.append(recordOf(7, sharedName, 100));
    areas.append(recordOf(7, sharedName, 102));
    EXPECT_EQ(find(100), 0);
    EXPECT_EQ(find(102), 1);
    EXPECT_EQ(find(101), -1);
}

TEST_F(AreaIndex, ClearedListHasNoRecord)
{
    add(100);
    EXPECT_EQ(find(100), 0);
    areas.clear();
    EXPECT_EQ(find(100), -1);
}

TEST_F(AreaIndex, ListThatBecameShorter)
{
    for (qint32 i = 0; i < 10; ++i)
        add(100 + i);
    EXPECT_EQ(find(109), 9);
    areas.removeLast();
    EXPECT_EQ(find(109), -1);
    EXPECT_EQ(find(108), 8);
    add(120);
    EXPECT_EQ(find(120), 9);
}

TEST_F(AreaIndex, TwoListsInTurn)
{
    QList<_DATA_> other;
    add(100);
    add(101);
    other.append(recordOf(7, QLatin1String("DM"), 101));
    other.append(recordOf(7, QLatin1String("DM"), 100));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(findArea(7, QLatin1String("DM"), 100, other), 1) << i;
        EXPECT_EQ(find(100), 0) << i;
        EXPECT_EQ(findArea(7, QLatin1String("DM"), 101, other), 0) << i;
        EXPECT_EQ(find(101), 1) << i;
    }
}

TEST_F(AreaIndex, CopyOfAListThatGoesAnotherWay)
{
    add(100);
    EXPECT_EQ(find(100), 0);
    QList<_DATA_> other = areas;
    add(101);
    other.append(recordOf(7, QLatin1String("DM"), 102));
    EXPECT_EQ(find(101), 1);
    EXPECT_EQ(findArea(7, QLatin1String("DM"), 102, other), 1);
    EXPECT_EQ(findArea(7, QLatin1String("DM"), 101, other), -1);
    EXPECT_EQ(find(101), 1);
    EXPECT_EQ(find(102), -1);
}

TEST_F(AreaIndex, ListReplacedByAnotherOfTheSameSize)
{
    add(100);
    add(101);
    EXPECT_EQ(find(101), 1);
    QList<_DATA_> other;
    other.append(recordOf(7, QLatin1String("DM"), 101));
    other.append(recordOf(7, QLatin1String("DM"), 102));
    areas = other;
    EXPECT_EQ(find(101), 0);
    EXPECT_EQ(find(102), 1);
    EXPECT_EQ(find(100), -1);
}

// ---- Size of the table ---------------------------------------------------------------------------------------------

class AreaIndexSize : public AreaIndex, public ::testing::WithParamInterface<qint32> {};

TEST_P(AreaIndexSize, EveryRecordIsFoundAndNoOther)
{
    const qint32 size = GetParam();
    for (qint32 i = 0; i < size; ++i)
        add(2 * i);
    for (qint32 i = 0; i < size; ++i) {
        ASSERT_EQ(find(2 * i), i);
        ASSERT_EQ(find(2 * i + 1), -1);
    }
}

TEST_P(AreaIndexSize, EveryRecordIsFoundWhenTheListGrowsOneByOne)
{
    const qint32 size = GetParam();
    for (qint32 i = 0; i < size; ++i) {
        ASSERT_EQ(find(16 * i), -1);
        add(16 * i);
        ASSERT_EQ(find(16 * i), i);
    }
    for (qint32 i = 0; i < size; ++i)
        ASSERT_EQ(find(16 * i), i);
}

INSTANTIATE_TEST_SUITE_P(Records, AreaIndexSize,
                         ::testing::Values(1, 31, 32, 33, 63, 64, 65, 127, 128, 129, 1000, 5000),
                         ::testing::PrintToStringParamName());

TEST_F(AreaIndex, ManyTagsOfOneAddress)
{
    for (qint32 tag = -500; tag < 500; ++tag)
        add(tag, "CIO", 5);
    for (qint32 tag = -500; tag < 500; ++tag)
        ASSERT_EQ(find(tag, "CIO", 5), tag + 500);
    EXPECT_EQ(find(500, "CIO", 5), -1);
}

// ---- Keys that collide, and odd type names -------------------------------------------------------------------------

// The table's sum of the keys is the same for both: 85EBCA6B (hex) is what it multiplies the tag by.
TEST_F(AreaIndex, TagsAndAddressesOfTheSameSumAreTold)
{
    // 32 records fill half of the smallest table, one behind the other.
    const auto addressOf = [](qint32 tag) {
        return static_cast<qint32>(0u - 0x85EBCA6Bu * static_cast<quint32>(tag));
    };
    for (qint32 tag = 0; tag < 32; ++tag)
        add(tag, "DM", addressOf(tag));
    for (qint32 tag = 0; tag < 32; ++tag)
        EXPECT_EQ(find(tag, "DM", addressOf(tag)), tag);
    EXPECT_EQ(find(32, "DM", addressOf(32)), -1);
}

TEST_F(AreaIndex, TypesOfTheSameLengthAndFirstLetterAreTold)
{
    add(7, "CIO", 100);
    add(7, "CIX", 100);
    add(7, "CAB", 100);
    EXPECT_EQ(find(7, "CIX", 100), 1);
    EXPECT_EQ(find(7, "CAB", 100), 2);
    EXPECT_EQ(find(7, "CIO", 100), 0);
    EXPECT_EQ(find(7, "COO", 100), -1);
}

TEST_F(AreaIndex, TypesThatBeginAlikeAreTold)
{
    add(7, "D", 100);
    add(7, "DM", 100);
    add(7, "DMX", 100);
    EXPECT_EQ(find(7, "DMX", 100), 2);
    EXPECT_EQ(find(7, "DM", 100), 1);
    EXPECT_EQ(find(7, "D", 100), 0);
    EXPECT_EQ(find(7, "DMXY", 100), -1);
}

TEST_F(AreaIndex, EmptyTypeName)
{
    add(7, "", 100);
    add(7, "DM", 100);
    EXPECT_EQ(find(7, "", 100), 0);
    EXPECT_EQ(findArea(7, QString(), 100, areas), 0);
    EXPECT_EQ(find(7, "DM", 100), 1);
    EXPECT_EQ(find(7, "", 101), -1);
    add(7, "", 101);
    EXPECT_EQ(findRun(7, QString(), 100, 5), (Positions{0, 2}));
}

TEST_F(AreaIndex, ListsOfEmptyTypeNamesClearedAndFilledAgain)
{
    areas.append(recordOf(7, QString(), 100));
    areas.append(recordOf(7, QString(), 101));
    EXPECT_EQ(find(7, "", 101), 1);
    areas.clear();
    areas.append(recordOf(7, QString(), 101));
    areas.append(recordOf(7, QString(), 100));
    EXPECT_EQ(find(7, "", 101), 0);
    EXPECT_EQ(find(7, "", 100), 1);
}

TEST_F(AreaIndex, LongTypeNames)
{
    const QString longName(3000, QLatin1Char('x'));
    areas.append(recordOf(7, longName + QLatin1Char('1'), 100));
    areas.append(recordOf(7, longName + QLatin1Char('2'), 100));
    areas.append(recordOf(7, longName + QLatin1Char('2'), 101));
    EXPECT_EQ(findArea(7, longName + QLatin1Char('2'), 100, areas), 1);
    EXPECT_EQ(findArea(7, longName + QLatin1Char('1'), 100, areas), 0);
    EXPECT_EQ(findArea(7, longName, 100, areas), -1);
    EXPECT_EQ(findRun(7, longName + QLatin1Char('2'), 100, 3), (Positions{1, 2}));
}

TEST_F(AreaIndex, TypeNamesThatAreNotLatin)
{
    const QString omega(2, QChar(0x03A9));
    areas.append(recordOf(7, omega, 100));
    EXPECT_EQ(findArea(7, omega, 100, areas), 0);
    EXPECT_EQ(findArea(7, QString(2, QChar(0x04A9)), 100, areas), -1);
}

TEST_F(AreaIndex, ExtremeAddressesAndTags)
{
    const qint32 extremes[] = {LOWEST, LOWEST + 1, -1, 0, 1, HIGHEST - 1, HIGHEST};
    for (qint32 tag : extremes) {
        for (qint32 address : extremes)
            add(tag, "DM", address);
    }
    qint32 position = 0;
    for (qint32 tag : extremes) {
        for (qint32 address : extremes)
            ASSERT_EQ(find(tag, "DM", address), position++);
    }
}

// ---- Runs of addresses ---------------------------------------------------------------------------------------------

TEST_F(AreaIndex, RunInAnEmptyList)
{
    EXPECT_EQ(findRun(100, 3), Positions());
}

TEST_F(AreaIndex, RunThatIsMissing)
{
    add(99);
    add(101);
    EXPECT_EQ(findRun(100, 3), Positions());
}

TEST_F(AreaIndex, RunOfRecordsInOrder)
{
    add(99);
    add(100);
    add(101);
    add(102);
    EXPECT_EQ(findRun(100, 3), (Positions{1, 2, 3}));
}

TEST_F(AreaIndex, RunOfOneRecord)
{
    add(100);
    add(101);
    EXPECT_EQ(findRun(100, 1), (Positions{0}));
    EXPECT_EQ(findRun(101, 1), (Positions{1}));
}

TEST_F(AreaIndex, RunStopsAtItsCount)
{
    for (qint32 i = 0; i < 10; ++i)
        add(100 + i);
    EXPECT_EQ(findRun(102, 2), (Positions{2, 3}));
    EXPECT_EQ(findRun(102, 3), (Positions{2, 3, 4}));
}

TEST_F(AreaIndex, RunStopsAtAGap)
{
    add(100);
    add(101);
    add(103);
    EXPECT_EQ(findRun(100, 4), (Positions{0, 1}));
    EXPECT_EQ(findRun(103, 4), (Positions{2}));
}

TEST_F(AreaIndex, RunGoesOnWhenItsGapIsFilled)
{
    add(100);
    add(101);
    add(103);
    EXPECT_EQ(findRun(100, 4), (Positions{0, 1}));
    add(102);
    EXPECT_EQ(findRun(100, 4), (Positions{0, 1, 3, 2}));
}

TEST_F(AreaIndex, RunOfRecordsThatWereCreatedBackwards)
{
    for (qint32 i = 9; i >= 0; --i)
        add(100 + i);
    EXPECT_EQ(findRun(100, 10), (Positions{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}));
}

TEST_F(AreaIndex, RunTakesTheFirstOfEqualRecords)
{
    add(100);
    add(101);
    add(100);
    add(101);
    add(102);
    add(102);
    EXPECT_EQ(findRun(100, 5), (Positions{0, 1, 4}));
}

TEST_F(AreaIndex, RunTakesTheFirstOfEqualRecordsThatWereCreatedBackwards)
{
    add(102);
    add(102);
    add(101);
    add(101);
    add(100);
    EXPECT_EQ(findRun(100, 5), (Positions{4, 2, 0}));
}

TEST_F(AreaIndex, RunKeepsToItsTag)
{
    add(7, "DM", 100);
    add(8, "DM", 101);
    add(7, "DM", 101);
    add(8, "DM", 102);
    EXPECT_EQ(findRun(100, 5), (Positions{0, 2}));
}

TEST_F(AreaIndex, RunKeepsToItsType)
{
    add(7, "DM", 100);
    add(7, "HR", 101);
    add(7, "DM", 101);
    add(7, "DX", 102);
    EXPECT_EQ(findRun(100, 5), (Positions{0, 2}));
}

TEST_F(AreaIndex, RunWrapsBehindTheHighestAddress)
{
    add(HIGHEST - 1);
    add(HIGHEST);
    add(LOWEST);
    add(LOWEST + 1);
    EXPECT_EQ(findRun(HIGHEST - 1, 5), (Positions{0, 1, 2, 3}));
}

TEST_F(AreaIndex, RunWrapsOverRecordsThatWereCreatedBackwards)
{
    add(LOWEST);
    add(HIGHEST);
    EXPECT_EQ(findRun(HIGHEST, 5), (Positions{1, 0}));
}

TEST_F(AreaIndex, RunOfTypeNamesInMemoryOfTheirOwn)
{
    for (qint32 i = 0; i < 4; ++i)
        areas.append(recordOf(7, QString::fromLatin1("DM"), 100 + i));
    EXPECT_EQ(findRun(7, QString::fromLatin1("DM"), 100, 4), (Positions{0, 1, 2, 3}));
}

TEST_F(AreaIndex, RunOfTypeNamesInTheSameMemory)
{
    const QString name = QString::fromLatin1("DM");
    for (qint32 i = 0; i < 4; ++i)
        areas.append(recordOf(7, name, 100 + i));
    EXPECT_EQ(findRun(7, name, 100, 4), (Positions{0, 1, 2, 3}));
}

TEST_F(AreaIndex, RunAfterTheTableHasGrown)
{
    for (qint32 i = 0; i < 20; ++i)
        add(100 + i);
    EXPECT_EQ(findRun(118, 3), (Positions{18, 19}));
    for (qint32 i = 20; i < 300; ++i)
        add(100 + i);
    Positions all;
    for (qint32 i = 0; i < 300; ++i)
        all.push_back(i);
    EXPECT_EQ(findRun(100, 301), all);
}

// The table is never believed: every record is compared with the keys that are asked for.
TEST_F(AreaIndex, RecordWhoseKeysOthersChangedIsNotTakenForWhatItWas)
{
    add(100);
    add(101);
    add(102);
    EXPECT_EQ(find(101), 1);
    areas[1].address = 103;
    EXPECT_EQ(find(101), -1);
    areas[1] = recordOf(8, QLatin1String("DM"), 101);
    EXPECT_EQ(find(101), -1);
    areas[1] = recordOf(7, QLatin1String("DX"), 101);
    EXPECT_EQ(find(101), -1);
}

TEST_F(AreaIndex, RunStopsAtARecordWhoseKeysOthersChanged)
{
    add(100);
    add(101);
    add(102);
    EXPECT_EQ(findRun(100, 3), (Positions{0, 1, 2}));
    areas[1].address = 103;
    EXPECT_EQ(findRun(100, 3), (Positions{0}));
    areas[1] = recordOf(8, QLatin1String("DM"), 101);
    EXPECT_EQ(findRun(100, 3), (Positions{0}));
    areas[1] = recordOf(7, QLatin1String("DX"), 101);
    EXPECT_EQ(findRun(100, 3), (Positions{0}));
    areas[1] = recordOf(7, QLatin1String("DM"), 101);
    EXPECT_EQ(findRun(100, 3), (Positions{0, 1, 2}));
}

TEST_F(AreaIndex, RunStopsAtATypeNameInTheSameMemoryOfAnotherLength)
{
    const QString name = QLatin1String("DM");
    areas.append(recordOf(7, name, 100));
    areas.append(recordOf(7, name, 101));
    EXPECT_EQ(findRun(7, name, 100, 2), (Positions{0, 1}));
    areas[1].regType = QString::fromRawData(name.constData(), 1);
    ASSERT_EQ(areas.at(1).regType.constData(), name.constData());
    EXPECT_EQ(findRun(7, name, 100, 2), (Positions{0}));
}

// ---- The driver's walk over a run ----------------------------------------------------------------------------------

TEST_F(AreaIndex, WalkAppendsWhatIsMissing)
{
    add(101);
    const QString name = QLatin1String("DM");
    AreaWalk walk(7, name);
    EXPECT_EQ(goTo(walk, 100), 1);
    EXPECT_EQ(areas.at(1).requestTag, 7);
    EXPECT_EQ(areas.at(1).regType.toStdString(), "DM");
    EXPECT_EQ(areas.at(1).address, 100);
    EXPECT_EQ(goTo(walk, 101), 0);
    EXPECT_EQ(goTo(walk, 102), 2);
    EXPECT_EQ(areas.at(2).address, 102);
    EXPECT_EQ(areas.size(), 3);
}

TEST_F(AreaIndex, WalkThatWasMadeAppendsNothing)
{
    const QString name = QLatin1String("DM");
    AreaWalk walk(7, name);
    EXPECT_TRUE(areas.isEmpty());
}

TEST_F(AreaIndex, WalkGoesWhereTheRecordsAre)
{
    for (qint32 address : {103, 100, 102, 101})
        add(address);
    const QString name = QLatin1String("DM");
    AreaWalk walk(7, name);
    const qint32 expected[] = {1, 3, 2, 0};
    for (qint32 i = 0; i < 4; ++i)
        EXPECT_EQ(goTo(walk, 100 + i), expected[i]);
    EXPECT_EQ(areas.size(), 4);
}

// What the index knew of an earlier, longer list is not looked at behind a record that the walk appends.
TEST_F(AreaIndex, WalkOverMissingRecordsAfterALongList)
{
    for (qint32 i = 0; i < 40; ++i)
        add(7, "HR", 1000 - i);
    EXPECT_EQ(find(7, "HR", 961), 39);
    areas.clear();
    const QString name = QLatin1String("DM");
    AreaWalk walk(7, name);
    for (qint32 i = 0; i < 20; ++i) {
        EXPECT_EQ(goTo(walk, 100 + i), i);
        EXPECT_EQ(areas.at(i).address, 100 + i);
    }
    EXPECT_EQ(areas.size(), 20);
}

/// Appends a thousand records, and the one behind DM 100 of tag 7.
void appendMany(qint32, qint32, QString, qint32)
{
    for (qint32 i = 0; i < 1000; ++i)
        getIndexOfDataArea(8, QLatin1String("DM"), i, driver.dataAreas);
    getIndexOfDataArea(7, QLatin1String("DM"), 101, driver.dataAreas);
}

TEST_F(AreaIndex, WalkGoesOnAfterACallbackThatAppends)
{
    driver.valueChangeCallback = appendMany;
    add(100);
    areas[0].wordMonitor = 1;
    ReportKeys keys = {7, QLatin1String("DM"), QString()};
    AreaWalk walk(7, keys.regType);
    walk.to(100);
    const _DATA_ *reported = &walk.report(1, 2, keys, 100);
    EXPECT_EQ(reported, &areas.at(0));
    ASSERT_EQ(areas.size(), 1002);
    EXPECT_EQ(goTo(walk, 101), 1001);
    EXPECT_EQ(goTo(walk, 102), 1002);
    EXPECT_EQ(areas.at(1002).requestTag, 7);
}

TEST_F(AreaIndex, WalkKeepsToItsKeys)
{
    add(7, "DM", 100);
    add(8, "DM", 101);
    add(7, "HR", 101);
    const QString name = QLatin1String("DM");
    AreaWalk walk(7, name);
    walk.to(100);
    EXPECT_EQ(goTo(walk, 101), 3);
    EXPECT_EQ(areas.at(3).requestTag, 7);
    EXPECT_EQ(areas.at(3).regType.toStdString(), "DM");
}

// ---- Random use ----------------------------------------------------------------------------------------------------

/// Few keys, so that equal ones, runs and gaps are frequent.
class AreaIndexRandom : public AreaIndex {
protected:
    qint32 number(qint32 limit) { return static_cast<qint32>(random() % static_cast<quint32>(limit)); }

    qint32 tag() { return number(3) - 1; }

    QString regType()
    {
        const char *const names[] = {"DM", "HR", "DX", "CIO", "", "a rather long name of a type that no table has"};
        return QLatin1String(names[number(6)]);
    }

    qint32 address()
    {
        const qint32 offset = number(40);
        return number(4) == 0 ? static_cast<qint32>(qint64{HIGHEST} + offset - 20) : offset;
    }

    /// Looks for one record in `list`.
    void lookUp(QList<_DATA_> &list)
    {
        const qint32 requestTag = tag();
        const QString type = regType();
        const qint32 at = address();
        ASSERT_EQ(findArea(requestTag, type, at, list), search(requestTag, type, at, list));
    }

    void lookUpRun(QList<_DATA_> &list)
    {
        const qint32 requestTag = tag();
        const QString type = regType();
        const qint32 at = address();
        const int count = 1 + number(30);
        ASSERT_EQ(indexedRun(requestTag, type, at, count, list), searchRun(requestTag, type, at, count, list));
    }

    /// The driver looks for a record and appends it if it is missing.
    void lookUpOrAppend(QList<_DATA_> &list)
    {
        const qint32 requestTag = tag();
        const QString type = regType();
        const qint32 at = address();
        const qint32 known = search(requestTag, type, at, list);
        const qint32 sizeBefore = static_cast<qint32>(list.size());
        ASSERT_EQ(getIndexOfDataArea(requestTag, type, at, list), known >= 0 ? known : sizeBefore);
        ASSERT_EQ(list.size(), known >= 0 ? sizeBefore : sizeBefore + 1);
    }

    void appendRun(QList<_DATA_> &list)
    {
        const qint32 requestTag = tag();
        const QString type = regType();
        const qint32 at = address();
        for (qint32 i = number(8); i >= 0; --i)
            list.append(recordOf(requestTag, type, static_cast<qint32>(qint64{at} + i)));
    }

    void useOnce(QList<_DATA_> &list, QList<_DATA_> &other)
    {
        const qint32 choice = number(1000);
        if (choice < 350)
            lookUp(list);
        else if (choice < 650)
            lookUpRun(list);
        else if (choice < 850)
            lookUpOrAppend(list);
        else if (choice < 975)
            appendRun(list);
        else if (choice < 985)
            list.clear();
        else
            list = other;
    }

    std::mt19937 random{20240229};
};

TEST_F(AreaIndexRandom, AgreesWithALookAtEveryRecord)
{
    QList<_DATA_> other;
    for (int i = 0; i < 25000; ++i) {
        SCOPED_TRACE(i);
        if (number(20) != 0)
            useOnce(areas, other);
        else
            useOnce(other, areas);
        if (HasFatalFailure())
            return;
    }
}

} // namespace
